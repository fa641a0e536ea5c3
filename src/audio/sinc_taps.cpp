// SPDX-License-Identifier: Apache-2.0
// Plain and two-lane sums over the taps of a windowed sinc.
#include "audio/sinc_taps.h"

#include <emmintrin.h>

#include <cmath>

#include "marlo110k/cpu.h"
#include "platform/base/cpu.h"

namespace marlo {
namespace {

constexpr int kPairedTaps = kSincTaps - 1;  ///< All but the oldest: none of them can pass the table's end.

void SumWeighted(const double* weights, const double* newest, int32_t channels, double* out) {
  for (int32_t channel = 0; channel < channels; ++channel) {
    double sums[4] = {};
    for (int tap = 0; tap < kSincTaps; ++tap) sums[tap % 4] += weights[tap] * newest[tap * channels + channel];
    out[channel] = (sums[0] + sums[1]) + (sums[2] + sums[3]);
  }
}

}  // namespace

void FillSincEntries(SincEntry* entries, int32_t count) noexcept {
  for (int32_t k = 0; k < count; ++k) entries[k].value = SincTableValue(k, count);
  for (int32_t k = 0; k + 1 < count; ++k) entries[k].step = entries[k + 1].value - entries[k].value;
  entries[count - 1].step = 0;
}

void SumTapsPlain(const SincTable& table, double place, const double* newest, int32_t channels, double* out) {
  double weights[kSincTaps];
  for (int tap = 0; tap < kSincTaps; ++tap) weights[tap] = SincWeight(table, std::abs(place - tap));
  SumWeighted(weights, newest, channels, out);
}

void SumTapsSse2(const SincTable& table, double place, const double* newest, int32_t channels, double* out) {
  const __m128d signBit = _mm_set1_pd(-0.0);
  const __m128d scale = _mm_set1_pd(table.scale);
  const __m128d almostHalf = _mm_set1_pd(kAlmostHalf);
  double weights[kSincTaps];
  for (int tap = 0; tap < kPairedTaps; tap += 2) {
    const __m128d distance = _mm_sub_pd(_mm_set1_pd(place), _mm_set_pd(tap + 1, tap));
    const __m128d entry = _mm_mul_pd(_mm_andnot_pd(signBit, distance), scale);
    const __m128i index = _mm_cvtpd_epi32(_mm_sub_pd(entry, almostHalf));
    const __m128d fraction = _mm_sub_pd(entry, _mm_cvtepi32_pd(index));
    const __m128d low = _mm_loadu_pd(&table.entries[_mm_cvtsi128_si32(index)].value);
    const __m128d high = _mm_loadu_pd(&table.entries[_mm_cvtsi128_si32(_mm_shuffle_epi32(index, 1))].value);
    const __m128d weight = _mm_add_pd(_mm_unpacklo_pd(low, high), _mm_mul_pd(_mm_unpackhi_pd(low, high), fraction));
    _mm_storeu_pd(weights + tap, weight);
  }
  weights[kPairedTaps] = SincWeight(table, std::abs(place - kPairedTaps));
  if (channels != 2) return SumWeighted(weights, newest, channels, out);
  __m128d sums[4] = {};
  for (int tap = 0; tap < kSincTaps; ++tap) {
    sums[tap % 4] = _mm_add_pd(sums[tap % 4], _mm_mul_pd(_mm_set1_pd(weights[tap]), _mm_loadu_pd(newest + 2 * tap)));
  }
  _mm_storeu_pd(out, _mm_add_pd(_mm_add_pd(sums[0], sums[1]), _mm_add_pd(sums[2], sums[3])));
}

SincSum ChooseSincSum(int32_t channels, bool scalar) noexcept {
  if (scalar || (ZrGetCPUSupport(ZRCPU_SSE2) & ZRCPU_SSE2) == 0) return SumTapsPlain;
  return plat::DetectedVectorLevel() >= plat::VectorLevel::kAvx2 && channels <= 2 ? SumTapsAvx2 : SumTapsSse2;
}

}  // namespace marlo
