// SPDX-License-Identifier: Apache-2.0
// The row kernels of the scalers: source rows to one line of columns, a line to destination pixels.
//
// A line holds four channels a pixel: signed words for 8-bit pixels (bicubic results overshoot), floats for
// float pixels. Members of different vector levels give the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixel/scale_axis.h"

namespace marlo::pixel {

/// Source rows of a box.
struct BoxRows {
  const uint8_t* first;  ///< Row of the box's first pixel.
  ptrdiff_t stride;
  int32_t count;  ///< Rows, the last included; 1 when first and last are the same.
  int32_t firstWeight;
  int32_t lastWeight;
  const uint8_t* Last() const noexcept { return first + (count - 1) * stride; }
};

/// 8-bit pixels.
struct ByteRowKernels {
  void (*verticalLinear)(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels);
  void (*verticalCubic)(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels);
  void (*verticalBox)(int16_t* line, const BoxRows& rows, int32_t length, int32_t pixels);
  void (*horizontalLinear)(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count);
  void (*horizontalCubic)(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count);
  void (*horizontalBox)(uint8_t* out, const int16_t* line, const Box* boxes, int32_t length, int32_t count);
  /// Both axes at once, sums below 2^32. `sums` has room for two lines of 32-bit words.
  void (*boxBoth)(uint8_t* out, uint32_t* sums, const BoxRows& rows, const Box* boxes, int64_t area, int32_t count,
                  int32_t pixels);
  /// The same with 64-bit sums.
  void (*boxBothWide)(uint8_t* out, uint32_t* sums, const BoxRows& rows, const Box* boxes, int64_t area, int32_t count,
                      int32_t pixels);
};
const ByteRowKernels& ByteKernels(bool avx2) noexcept;
extern const ByteRowKernels kByteKernelsPlain;
extern const ByteRowKernels kByteKernelsAvx2;

/// Float pixels. Box results are multiplied by the reciprocal of the length.
struct FloatRowKernels {
  void (*verticalTaps)(float* line, const uint8_t* const rows[4], const float weights[4], int32_t tapCount,
                       int32_t pixels);
  void (*verticalBox)(float* line, const BoxRows& rows, int32_t length, int32_t pixels);
  void (*horizontalTaps)(float* out, const float* line, const TapTable& taps, int32_t tapCount, int32_t count);
  void (*horizontalBox)(float* out, const float* line, const Box* boxes, int32_t length, int32_t count);
};
const FloatRowKernels& FloatKernels(bool avx2) noexcept;
extern const FloatRowKernels kFloatKernelsPlain;
extern const FloatRowKernels kFloatKernelsAvx2;

}  // namespace marlo::pixel
