// SPDX-License-Identifier: Apache-2.0
// The vectorised rows in AVX2: whole registers first, the plain member for the rest.

#include <immintrin.h>

#include "pixel/blend_rows.h"

#define MARLO_AVX2 __attribute__((target("avx2")))
#define MARLO_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace marlo::pixel {

namespace {

/// Both products of a channel at once: source and destination words side by side.
MARLO_AVX2_INLINE __m256i Faded(__m256i sourceAndDestination, __m256i weights) {
  const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(sourceAndDestination, weights), _mm256_set1_epi32(8192));
  return _mm256_srai_epi32(sum, 14);
}

}  // namespace

namespace {

/// Weights that sum to 1: d + (((s - d) * weight + 8192) >> 14), which one rounding multiplication of words gives
/// exactly.
MARLO_AVX2 int32_t CrossFadeWholeRow(uint8_t* destination, const uint8_t* source, int32_t channels,
                                     int32_t srcWeight14) noexcept {
  const __m256i weight = _mm256_set1_epi16(static_cast<int16_t>(srcWeight14));
  const __m256i lowBytes = _mm256_set1_epi16(0x00FF);
  int32_t index = 0;
  for (; index + 32 <= channels; index += 32) {
    auto* const at = reinterpret_cast<__m256i*>(destination + index);
    const __m256i d = _mm256_loadu_si256(at);
    const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source + index));
    const __m256i evenD = _mm256_and_si256(d, lowBytes), oddD = _mm256_srli_epi16(d, 8);
    const __m256i even = _mm256_sub_epi16(_mm256_and_si256(s, lowBytes), evenD);
    const __m256i odd = _mm256_sub_epi16(_mm256_srli_epi16(s, 8), oddD);
    const __m256i evenOut = _mm256_add_epi16(evenD, _mm256_mulhrs_epi16(_mm256_add_epi16(even, even), weight));
    const __m256i oddOut = _mm256_add_epi16(oddD, _mm256_mulhrs_epi16(_mm256_add_epi16(odd, odd), weight));
    _mm256_storeu_si256(at, _mm256_or_si256(evenOut, _mm256_slli_epi16(oddOut, 8)));
  }
  return index;
}

}  // namespace

// Saturating to a byte is right for both forms of the rule: weights that sum to 1 or less can't pass 255.
MARLO_AVX2 void CrossFadeRowAvx2(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                                 int32_t srcWeight14) noexcept {
  const __m256i weights = _mm256_set1_epi32(dstWeight14 << 16 | srcWeight14);
  const __m256i zero = _mm256_setzero_si256();
  int32_t index =
      dstWeight14 + srcWeight14 == 16384 ? CrossFadeWholeRow(destination, source, channels, srcWeight14) : 0;
  for (; index + 32 <= channels; index += 32) {
    auto* const at = reinterpret_cast<__m256i*>(destination + index);
    const __m256i d = _mm256_loadu_si256(at);
    const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source + index));
    const __m256i low = _mm256_unpacklo_epi8(s, d);
    const __m256i high = _mm256_unpackhi_epi8(s, d);
    const __m256i lowWords = _mm256_packs_epi32(Faded(_mm256_unpacklo_epi8(low, zero), weights),
                                                Faded(_mm256_unpackhi_epi8(low, zero), weights));
    const __m256i highWords = _mm256_packs_epi32(Faded(_mm256_unpacklo_epi8(high, zero), weights),
                                                 Faded(_mm256_unpackhi_epi8(high, zero), weights));
    _mm256_storeu_si256(at, _mm256_packus_epi16(lowWords, highWords));
  }
  CrossFadeRowPlain(destination + index, source + index, channels - index, dstWeight14, srcWeight14);
}

// Blue and red, then green, as words times alpha; x / 255 toward zero is x * 0x8081 >> 23 for every product of bytes.
MARLO_AVX2 void PremultiplyRowAvx2(tZRPIXEL32* pixels, int32_t count) noexcept {
  const __m256i alphaWords = _mm256_setr_epi8(3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1, 3, -1, 3, -1,
                                              7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1);
  const __m256i lowBytes = _mm256_set1_epi16(0x00FF);
  const __m256i greenByte = _mm256_set1_epi32(0x0000FF00);
  const __m256i alphaByte = _mm256_set1_epi32(static_cast<int32_t>(0xFF000000));
  const __m256i reciprocal = _mm256_set1_epi16(static_cast<int16_t>(0x8081));
  int32_t index = 0;
  for (; index + 8 <= count; index += 8) {
    auto* const at = reinterpret_cast<__m256i*>(pixels + index);
    const __m256i value = _mm256_loadu_si256(at);
    const __m256i alphas = _mm256_shuffle_epi8(value, alphaWords);
    const __m256i blueRed = _mm256_mullo_epi16(_mm256_and_si256(value, lowBytes), alphas);
    const __m256i green = _mm256_mullo_epi16(_mm256_srli_epi16(value, 8), alphas);
    const __m256i blueRedOut = _mm256_srli_epi16(_mm256_mulhi_epu16(blueRed, reciprocal), 7);
    const __m256i greenOut = _mm256_and_si256(_mm256_slli_epi16(_mm256_mulhi_epu16(green, reciprocal), 1), greenByte);
    const __m256i alphaOut = _mm256_and_si256(value, alphaByte);
    _mm256_storeu_si256(at, _mm256_or_si256(_mm256_or_si256(blueRedOut, greenOut), alphaOut));
  }
  PremultiplyRowPlain(pixels + index, count - index);
}

}  // namespace marlo::pixel
