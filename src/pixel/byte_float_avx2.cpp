// SPDX-License-Identifier: Apache-2.0
// Bytes to floats and back in AVX2: the products stay in double, as the plain rows have them.

#include <immintrin.h>

#include "pixel/byte_float.h"

#define MARLO_AVX2 __attribute__((target("avx2")))

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;
constexpr float kByteStep = 0.003921569f;

/// trunc(value * 255.0) of one pixel's channels, for values of 0 to 1.
MARLO_AVX2 __m128i Truncated(__m128 values) {
  return _mm256_cvttpd_epi32(_mm256_mul_pd(_mm256_cvtps_pd(values), _mm256_set1_pd(255.0)));
}

/// NaN and values below 0 become 0, those above 1 become 1: the order of the operands decides about NaN.
MARLO_AVX2 __m128 Clamped(__m128 values) { return _mm_min_ps(_mm_max_ps(values, _mm_setzero_ps()), _mm_set1_ps(1.0f)); }

MARLO_AVX2 void StoreFour(uint8_t* to, const __m128i (&pixels)[4]) {
  const __m128i words0 = _mm_packs_epi32(pixels[0], pixels[1]);
  const __m128i words1 = _mm_packs_epi32(pixels[2], pixels[3]);
  _mm_storeu_si128(static_cast<__m128i*>(static_cast<void*>(to)), _mm_packus_epi16(words0, words1));
}

MARLO_AVX2 void ToBytes(uint8_t* to, const float* from, int32_t pixels, int32_t y) {
  int32_t pixel = 0;
  for (; pixel + 4 <= pixels; pixel += 4) {
    __m128i four[4];
    for (int index = 0; index < 4; ++index) {
      four[index] = Truncated(Clamped(_mm_loadu_ps(from + (pixel + index) * kChannels)));
    }
    StoreFour(to + pixel * kChannels, four);
  }
  kByteFloatPlain.toBytes(to + pixel * kChannels, from + pixel * kChannels, pixels - pixel, y);
}

MARLO_AVX2 void ToBytesDithered(uint8_t* to, const float* from, int32_t pixels, int32_t y) {
  __m128 dither[4];
  for (int index = 0; index < 4; ++index) dither[index] = _mm_set1_ps(DitherAt(index, y));
  int32_t pixel = 0;
  for (; pixel + 4 <= pixels; pixel += 4) {
    __m128i four[4];
    for (int index = 0; index < 4; ++index) {
      four[index] = Truncated(Clamped(_mm_add_ps(_mm_loadu_ps(from + (pixel + index) * kChannels), dither[index])));
    }
    StoreFour(to + pixel * kChannels, four);
  }
  // Four pixels are one period of the matrix, so that the rest starts at its first column again.
  kByteFloatPlain.toBytesDithered(to + pixel * kChannels, from + pixel * kChannels, pixels - pixel, y);
}

MARLO_AVX2 void ToFloats(float* to, const uint8_t* from, int32_t pixels) {
  const __m256 step = _mm256_set1_ps(kByteStep);
  int32_t pixel = 0;
  for (; pixel + 2 <= pixels; pixel += 2) {
    const __m128i bytes =
        _mm_loadl_epi64(static_cast<const __m128i*>(static_cast<const void*>(from + pixel * kChannels)));
    _mm256_storeu_ps(to + pixel * kChannels, _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(bytes)), step));
  }
  kByteFloatPlain.toFloats(to + pixel * kChannels, from + pixel * kChannels, pixels - pixel);
}

}  // namespace

const ByteFloatKernels kByteFloatAvx2 = {ToBytes, ToBytesDithered, ToFloats};

}  // namespace marlo::pixel
