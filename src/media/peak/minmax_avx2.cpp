// SPDX-License-Identifier: Apache-2.0
// Smallest and largest values 32 bytes of samples at a time: lane k of a group belongs to channel k mod channels, so
// that no sample is moved before the fold at the end. Minima and maxima are exact in any order, so the bits are the
// plain member's.
#include "audio/lanes_avx2.h"
#include "media/peak/minmax.h"

namespace marlo::peak {
namespace {

using avx2::LoadWhole;

/// A register full of samples as they are compared. Lanes hold values in the form of LaneRule.
template <class Rule>
struct Lanes;

template <>
struct Lanes<Pcm8Rule> {
  using LaneRule = Pcm8Rule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept { return LoadWhole(samples); }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept { return _mm256_min_epu8(a, b); }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept { return _mm256_max_epu8(a, b); }
};

template <>
struct Lanes<Pcm8SignedRule> {
  using LaneRule = Pcm8SignedRule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept { return LoadWhole(samples); }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept { return _mm256_min_epi8(a, b); }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept { return _mm256_max_epi8(a, b); }
};

template <>
struct Lanes<Pcm16Rule> {
  using LaneRule = Pcm16Rule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept { return LoadWhole(samples); }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept { return _mm256_min_epi16(a, b); }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept { return _mm256_max_epi16(a, b); }
};

template <>
struct Lanes<Pcm32Rule> {
  using LaneRule = Pcm32Rule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept { return LoadWhole(samples); }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept { return _mm256_min_epi32(a, b); }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept { return _mm256_max_epi32(a, b); }
};

/// 24 bytes become eight 32-bit lanes.
template <>
struct Lanes<Pcm24Rule> : Lanes<Pcm32Rule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept { return avx2::LoadPacked24<false>(samples); }
};

template <>
struct Lanes<Float32Rule> {
  using LaneRule = Float32Rule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept {
    const __m256 raw = _mm256_castsi256_ps(LoadWhole(samples));
    const __m256 number = _mm256_and_ps(raw, _mm256_cmp_ps(raw, raw, _CMP_ORD_Q));
    return _mm256_castps_si256(_mm256_add_ps(number, _mm256_setzero_ps()));
  }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept {
    return _mm256_castps_si256(_mm256_min_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b)));
  }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept {
    return _mm256_castps_si256(_mm256_max_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b)));
  }
};

template <>
struct Lanes<Float64Rule> {
  using LaneRule = Float64Rule;
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* samples) noexcept {
    const __m256d raw = _mm256_castsi256_pd(LoadWhole(samples));
    const __m256d number = _mm256_and_pd(raw, _mm256_cmp_pd(raw, raw, _CMP_ORD_Q));
    return _mm256_castpd_si256(_mm256_add_pd(number, _mm256_setzero_pd()));
  }
  MARLO_AVX2_INLINE static __m256i Min(__m256i a, __m256i b) noexcept {
    return _mm256_castpd_si256(_mm256_min_pd(_mm256_castsi256_pd(a), _mm256_castsi256_pd(b)));
  }
  MARLO_AVX2_INLINE static __m256i Max(__m256i a, __m256i b) noexcept {
    return _mm256_castpd_si256(_mm256_max_pd(_mm256_castsi256_pd(a), _mm256_castsi256_pd(b)));
  }
};

/// The smallest and the largest of each lane.
struct Extremes {
  __m256i low, high;
};

template <class Of>
MARLO_AVX2_INLINE void Take(Extremes& extremes, const uint8_t* samples) noexcept {
  const __m256i values = Of::Load(samples);
  extremes.low = Of::Min(extremes.low, values);
  extremes.high = Of::Max(extremes.high, values);
}

template <class Of>
MARLO_AVX2_INLINE Extremes Joined(const Extremes& a, const Extremes& b) noexcept {
  return {Of::Min(a.low, b.low), Of::Max(a.high, b.high)};
}

/// Folds lanes that stand kBytes apart within each half of the register.
template <class Of, int kBytes>
MARLO_AVX2_INLINE Extremes FoldedBy(const Extremes& extremes) noexcept {
  return Joined<Of>(extremes, {_mm256_alignr_epi8(extremes.low, extremes.low, kBytes),
                               _mm256_alignr_epi8(extremes.high, extremes.high, kBytes)});
}

/// Leaves the values of a frame of `frameBytes` (a power of two up to 32) in the first lanes.
template <class Of>
MARLO_AVX2_INLINE Extremes Folded(Extremes extremes, size_t frameBytes) noexcept {
  if (frameBytes <= 16) {
    extremes = Joined<Of>(extremes, {_mm256_permute2x128_si256(extremes.low, extremes.low, 1),
                                     _mm256_permute2x128_si256(extremes.high, extremes.high, 1)});
  }
  if (frameBytes <= 8) extremes = FoldedBy<Of, 8>(extremes);
  if (frameBytes <= 4) extremes = FoldedBy<Of, 4>(extremes);
  if (frameBytes <= 2) extremes = FoldedBy<Of, 2>(extremes);
  if (frameBytes <= 1) extremes = FoldedBy<Of, 1>(extremes);
  return extremes;
}

/// Widens the pairs by lanes that hold the channels in order, beginning with channel 0.
template <class Rule>
MARLO_AVX2 void WidenByLanes(const Extremes& extremes, size_t lanes, size_t firstLane, uint32_t channels,
                             uint8_t* pairs) noexcept {
  using LaneRule = typename Lanes<Rule>::LaneRule;
  uint8_t low[32];
  uint8_t high[32];
  avx2::StoreWhole(low, extremes.low);
  avx2::StoreWhole(high, extremes.high);
  for (size_t lane = 0; lane < lanes; ++lane) {
    const size_t channel = (firstLane + lane) % channels;
    WidenPair<Rule>(pairs + 2 * channel * Rule::kBytes, LaneRule::Read(low + lane * LaneRule::kBytes),
                    LaneRule::Read(high + lane * LaneRule::kBytes));
  }
}

/// Frames whose channels divide the lanes: four registers side by side. @return frames used.
template <class Rule>
MARLO_AVX2 int64_t WidenDividing(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept {
  using Of = Lanes<Rule>;
  constexpr size_t kLanes = 32 / Of::LaneRule::kBytes;
  constexpr size_t kStep = kLanes * Rule::kBytes;
  const int64_t groups = frames * channels / static_cast<int64_t>(4 * kLanes);
  if (groups == 0) return 0;
  Extremes a{Of::Load(samples), Of::Load(samples)};
  Extremes b{Of::Load(samples + kStep), Of::Load(samples + kStep)};
  Extremes c{Of::Load(samples + 2 * kStep), Of::Load(samples + 2 * kStep)};
  Extremes d{Of::Load(samples + 3 * kStep), Of::Load(samples + 3 * kStep)};
  for (int64_t group = 1; group < groups; ++group) {
    samples += 4 * kStep;
    Take<Of>(a, samples);
    Take<Of>(b, samples + kStep);
    Take<Of>(c, samples + 2 * kStep);
    Take<Of>(d, samples + 3 * kStep);
  }
  a = Joined<Of>(Joined<Of>(a, b), Joined<Of>(c, d));
  WidenByLanes<Rule>(Folded<Of>(a, channels * Of::LaneRule::kBytes), channels, 0, channels, pairs);
  return groups * static_cast<int64_t>(4 * kLanes) / channels;
}

/// Any other number of channels: as many registers as channels make a whole number of frames. @return frames used.
template <class Rule>
MARLO_AVX2 int64_t WidenCycling(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept {
  using Of = Lanes<Rule>;
  constexpr uint32_t kMostChannels = 32;
  constexpr size_t kLanes = 32 / Of::LaneRule::kBytes;
  constexpr size_t kStep = kLanes * Rule::kBytes;
  const int64_t groups = channels > kMostChannels ? 0 : frames / static_cast<int64_t>(kLanes);
  if (groups == 0) return 0;
  Extremes registers[kMostChannels];
  for (uint32_t k = 0; k < channels; ++k) {
    registers[k].low = registers[k].high = Of::Load(samples + k * kStep);
  }
  for (int64_t group = 1; group < groups; ++group) {
    samples += channels * kStep;
    for (uint32_t k = 0; k < channels; ++k) Take<Of>(registers[k], samples + k * kStep);
  }
  for (uint32_t k = 0; k < channels; ++k) WidenByLanes<Rule>(registers[k], kLanes, k * kLanes, channels, pairs);
  return groups * static_cast<int64_t>(kLanes);
}

}  // namespace

template <class Rule>
void WidenAvx2(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept {
  constexpr uint32_t kLanes = 32 / Lanes<Rule>::LaneRule::kBytes;
  const int64_t used = kLanes % channels == 0 ? WidenDividing<Rule>(samples, frames, channels, pairs)
                                              : WidenCycling<Rule>(samples, frames, channels, pairs);
  WidenPlain<Rule>(samples + used * channels * Rule::kBytes, frames - used, channels, pairs);
}

template void WidenAvx2<Pcm8Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Pcm16Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Pcm24Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Pcm32Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Float32Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Float64Rule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;
template void WidenAvx2<Pcm8SignedRule>(const uint8_t*, int64_t, uint32_t, uint8_t*) noexcept;

}  // namespace marlo::peak
