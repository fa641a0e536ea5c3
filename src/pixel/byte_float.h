// SPDX-License-Identifier: Apache-2.0
// Bytes to floats and back: truncation, ordered dither, and the rows of 4-byte pixels.
#pragma once

#include <cstdint>

namespace marlo::pixel {

/// Ordered dither, in sixteenths of a byte's step.
inline constexpr uint8_t kDitherMatrix[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

/// Dither in float units: the matrix divided by 255 * 16.
inline float DitherAt(int32_t x, int32_t y) noexcept {
  return static_cast<float>(kDitherMatrix[y & 3][x & 3] / 4080.0);
}

/// trunc(value * 255.0), clamped; 0 for NaN.
inline uint8_t TruncatedByte(float value) noexcept {
  if (!(value > 0.0f)) return 0;
  const double scaled = static_cast<double>(value) * 255.0;
  return scaled >= 255.0 ? uint8_t{255} : static_cast<uint8_t>(scaled);
}

inline uint8_t DitheredByte(float value, int32_t x, int32_t y) noexcept {
  const float dithered = value + DitherAt(x, y);
  if (dithered > 1.0f) return 255;
  return TruncatedByte(dithered);
}

/// The table of k / 255.
const float* ByteFractions() noexcept;

/// Rows of pixels with four channels.
struct ByteFloatKernels {
  void (*toBytes)(uint8_t* to, const float* from, int32_t pixels, int32_t y);
  void (*toBytesDithered)(uint8_t* to, const float* from, int32_t pixels, int32_t y);
  void (*toFloats)(float* to, const uint8_t* from, int32_t pixels);
};
const ByteFloatKernels& ByteFloat(bool avx2) noexcept;
extern const ByteFloatKernels kByteFloatPlain;
extern const ByteFloatKernels kByteFloatAvx2;

}  // namespace marlo::pixel
