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

/// x / 255 toward zero for products of two bytes in words.
MARLO_AVX2_INLINE __m256i Div255Down(__m256i x) {
  const __m256i high = _mm256_srli_epi16(x, 8);
  return _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(x, high), _mm256_set1_epi16(1)), 8);
}

}  // namespace

// Saturating to a byte is right for both forms of the rule: weights that sum to 1 or less can't pass 255.
MARLO_AVX2 void CrossFadeRowAvx2(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                                 int32_t srcWeight14) noexcept {
  const __m256i weights = _mm256_set1_epi32(dstWeight14 << 16 | srcWeight14);
  const __m256i zero = _mm256_setzero_si256();
  int32_t index = 0;
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

MARLO_AVX2 void PremultiplyRowAvx2(tZRPIXEL32* pixels, int32_t count) noexcept {
  const __m256i zero = _mm256_setzero_si256();
  // Alpha is multiplied by full alpha, which leaves it.
  const __m256i alphaLanes = _mm256_set1_epi64x(static_cast<int64_t>(0x00FF000000000000));
  const __m256i colorLanes = _mm256_set1_epi64x(0x0000FFFFFFFFFFFF);
  int32_t index = 0;
  for (; index + 8 <= count; index += 8) {
    auto* const at = reinterpret_cast<__m256i*>(pixels + index);
    const __m256i value = _mm256_loadu_si256(at);
    __m256i halves[2] = {_mm256_unpacklo_epi8(value, zero), _mm256_unpackhi_epi8(value, zero)};
    for (__m256i& half : halves) {
      const __m256i alphas = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(half, 0xFF), 0xFF);
      const __m256i factors = _mm256_or_si256(_mm256_and_si256(alphas, colorLanes), alphaLanes);
      half = Div255Down(_mm256_mullo_epi16(half, factors));
    }
    _mm256_storeu_si256(at, _mm256_packus_epi16(halves[0], halves[1]));
  }
  PremultiplyRowPlain(pixels + index, count - index);
}

}  // namespace marlo::pixel
