// SPDX-License-Identifier: Apache-2.0
// Four taps at a time: weights stay in registers, and the four running sums are the lanes.
#include <immintrin.h>

#include <cmath>

#include "audio/sinc_taps.h"

namespace marlo {
namespace {

#define MARLO_AVX2 __attribute__((target("avx2")))

/// Weights of taps whose distances stand in the lanes; none of them passes the table's end.
MARLO_AVX2 inline __m256d FourWeights(const SincTable& table, __m256d distance, __m256d scale) {
  const __m256d entry = _mm256_mul_pd(_mm256_andnot_pd(_mm256_set1_pd(-0.0), distance), scale);
  const __m128i index = _mm256_cvtpd_epi32(_mm256_sub_pd(entry, _mm256_set1_pd(kAlmostHalf)));
  const __m256d fraction = _mm256_sub_pd(entry, _mm256_cvtepi32_pd(index));
  const auto low = static_cast<uint64_t>(_mm_cvtsi128_si64(index));
  const auto high = static_cast<uint64_t>(_mm_extract_epi64(index, 1));
  const double* base = &table.entries[0].value;
  const auto pair = [base](uint64_t entryIndex) { return _mm_loadu_pd(base + 2 * entryIndex); };
  // Lanes 0 and 2, then 1 and 3, so that the unpacks below leave the taps in order.
  const __m256d even = _mm256_insertf128_pd(_mm256_castpd128_pd256(pair(low & 0xFFFFFFFF)), pair(high & 0xFFFFFFFF), 1);
  const __m256d odd = _mm256_insertf128_pd(_mm256_castpd128_pd256(pair(low >> 32)), pair(high >> 32), 1);
  return _mm256_add_pd(_mm256_unpacklo_pd(even, odd), _mm256_mul_pd(_mm256_unpackhi_pd(even, odd), fraction));
}

MARLO_AVX2 void SumMono(const SincTable& table, double place, const double* newest, double* out) {
  const __m256d scale = _mm256_set1_pd(table.scale);
  __m256d distance = _mm256_sub_pd(_mm256_set1_pd(place), _mm256_set_pd(3, 2, 1, 0));
  __m256d sums = _mm256_setzero_pd();
  for (int tap = 0; tap < kSincTaps - 1; tap += 4) {
    const __m256d weights = FourWeights(table, distance, scale);
    sums = _mm256_add_pd(sums, _mm256_mul_pd(weights, _mm256_loadu_pd(newest + tap)));
    distance = _mm256_sub_pd(_mm256_set1_pd(place), _mm256_set_pd(tap + 7, tap + 6, tap + 5, tap + 4));
  }
  double lanes[4];
  _mm256_storeu_pd(lanes, sums);
  lanes[0] += SincWeight(table, std::abs(place - (kSincTaps - 1))) * newest[kSincTaps - 1];
  out[0] = (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

MARLO_AVX2 void SumStereo(const SincTable& table, double place, const double* newest, double* out) {
  const __m256d scale = _mm256_set1_pd(table.scale);
  __m256d distance = _mm256_sub_pd(_mm256_set1_pd(place), _mm256_set_pd(3, 2, 1, 0));
  __m256d first = _mm256_setzero_pd();   // Sums 0 and 1, both channels each.
  __m256d second = _mm256_setzero_pd();  // Sums 2 and 3.
  for (int tap = 0; tap < kSincTaps - 1; tap += 4) {
    const __m256d weights = FourWeights(table, distance, scale);
    const __m256d low = _mm256_permute4x64_pd(weights, 0x50);
    const __m256d high = _mm256_permute4x64_pd(weights, 0xFA);
    first = _mm256_add_pd(first, _mm256_mul_pd(low, _mm256_loadu_pd(newest + 2 * tap)));
    second = _mm256_add_pd(second, _mm256_mul_pd(high, _mm256_loadu_pd(newest + 2 * tap + 4)));
    distance = _mm256_sub_pd(_mm256_set1_pd(place), _mm256_set_pd(tap + 7, tap + 6, tap + 5, tap + 4));
  }
  const __m128d weight = _mm_set1_pd(SincWeight(table, std::abs(place - (kSincTaps - 1))));
  const __m128d sum0 =
      _mm_add_pd(_mm256_castpd256_pd128(first), _mm_mul_pd(weight, _mm_loadu_pd(newest + 2 * (kSincTaps - 1))));
  const __m128d sum01 = _mm_add_pd(sum0, _mm256_extractf128_pd(first, 1));
  const __m128d sum23 = _mm_add_pd(_mm256_castpd256_pd128(second), _mm256_extractf128_pd(second, 1));
  _mm_storeu_pd(out, _mm_add_pd(sum01, sum23));
}

}  // namespace

MARLO_AVX2 void SumTapsAvx2(const SincTable& table, double place, const double* newest, int32_t channels, double* out) {
  channels == 2 ? SumStereo(table, place, newest, out) : SumMono(table, place, newest, out);
}

}  // namespace marlo
