// SPDX-License-Identifier: Apache-2.0
// Rows of video in bytes to 4-byte pixels and back; every member of the family gives the same bits.
#pragma once

#include <cstdint>

#include "pixel/yuv_matrix.h"

namespace marlo::pixel {

/// A pair is two pixels that share their chroma.
struct YuvRows {
  void (*fromUyvy)(uint8_t* pixels, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix);
  void (*fromYuyv)(uint8_t* pixels, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix);
  void (*fromPlanes)(uint8_t* pixels, const uint8_t* luma, const uint8_t* u, const uint8_t* v, int32_t pairs,
                     const DecodeMatrix& matrix);
  /// Without dither; samples stay within 1 to 254.
  void (*toUyvy)(uint8_t* packed, const uint8_t* pixels, int32_t pairs, const PackedEncodeMatrix& matrix);
  /// 10-bit samples cut to bytes, which come out in the order of UYVY. Reads no word beyond the last pair's.
  void (*cutV210)(uint8_t* packed, const uint8_t* words, int32_t pairs);
  /// Dithered luma codes of bytes, the first at a column that is a multiple of 4.
  void (*dither8Luma)(uint16_t* codes, const uint8_t* pixels, int32_t count, const DecimalMatrix& matrix, int32_t y);
  /// Dithered chroma codes of bytes. With `second`, a row of the same length, a sample is the mean of four pixels.
  void (*dither8Chroma)(uint16_t* u, uint16_t* v, const uint8_t* first, const uint8_t* second, int32_t pairs,
                        const DecimalMatrix& matrix, int32_t y);
};
extern const YuvRows kYuvRowsPlain;
extern const YuvRows kYuvRowsAvx2;
const YuvRows& YuvRowKernels() noexcept;

/// Gain of chroma from the sum of two bytes, and of four.
inline constexpr double kByteChromaGain2 = 0.51141554;
inline constexpr double kByteChromaGain4 = 0.25570777;
/// Added before a cut to whole codes, so that a product just below a code reaches it.
inline constexpr double kCodeEpsilon = 1.5e-8;

}  // namespace marlo::pixel
