// SPDX-License-Identifier: Apache-2.0
// Running smallest and largest values, and how one becomes a peak.
#pragma once

#include <algorithm>
#include <cstdint>

#include "audio/sample_rules.h"

namespace marlo::peak {

/// Fixed-point phase of one frame: 14 fractional bits.
inline constexpr int kPhaseBits = 14;
inline constexpr int64_t kFramePhase = int64_t{1} << kPhaseBits;
inline constexpr int64_t kMostStep = 0x7FFFFFFF;

using PeakRules = RuleList<Pcm16Rule, Float32Rule, Pcm8SignedRule>;
using KernelRules = RuleList<Pcm8Rule, Pcm16Rule, Pcm24Rule, Pcm32Rule, Float32Rule, Float64Rule, Pcm8SignedRule>;

/// 0 stands for 16 bits.
inline uint32_t NamedPeakType(uint32_t peakType) noexcept { return peakType == 0 ? ZRSAMPLETYPE_PCM16 : peakType; }
inline bool IsPeakType(uint32_t peakType) noexcept {
  return VisitRule(PeakRules{}, NamedPeakType(peakType), [](auto) {});
}
/// Bytes of a peak's value; 0 for an unknown type.
inline uint32_t PeakValueBytes(uint32_t peakType) noexcept {
  uint32_t bytes = 0;
  VisitRule(PeakRules{}, NamedPeakType(peakType), [&bytes](auto rule) { bytes = decltype(rule)::kBytes; });
  return bytes;
}

/// A sample as it is compared: what is not a number counts as 0, and 0 has one sign, so that every order of
/// comparisons gives the same bits.
template <class Rule>
typename Rule::Raw Comparable(const uint8_t* sample) noexcept {
  const typename Rule::Raw raw = Rule::Read(sample);
  if constexpr (Rule::kInteger) {
    return raw;
  } else {
    return (raw == raw ? raw : 0) + typename Rule::Raw{0};
  }
}

/// From one type's raw value to another's: integers keep their high bits, without rounding; floats follow the write
/// rule.
template <class Dest, class Source>
typename Dest::Raw ConvertValue(typename Source::Raw raw) noexcept {
  if constexpr (!Dest::kInteger) {
    return static_cast<typename Dest::Raw>(static_cast<double>(raw) * Source::kReadFactor);
  } else if constexpr (!Source::kInteger) {
    return ClampAndRound<Dest>(static_cast<double>(raw) * Dest::kWriteFactor);
  } else if constexpr (Source::kBits >= Dest::kBits) {
    return raw >> (Source::kBits - Dest::kBits);
  } else {
    return raw * (1 << (Dest::kBits - Source::kBits));
  }
}

/// Widens a channel's pair in place.
template <class Rule>
void WidenPair(uint8_t* pair, typename Rule::Raw low, typename Rule::Raw high) noexcept {
  Rule::Write(pair, std::min(Rule::Read(pair), low));
  Rule::Write(pair + Rule::kBytes, std::max(Rule::Read(pair + Rule::kBytes), high));
}

/// Widens the pairs by interleaved frames.
using WidenFunction = void (*)(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept;

template <class Rule>
void WidenPlain(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept {
  if (frames <= 0) return;
  const size_t stride = size_t{channels} * Rule::kBytes;
  for (uint32_t channel = 0; channel < channels; ++channel) {
    const uint8_t* sample = samples + size_t{channel} * Rule::kBytes;
    auto low = Comparable<Rule>(sample);
    auto high = low;
    for (int64_t frame = 1; frame < frames; ++frame) {
      sample += stride;
      const auto value = Comparable<Rule>(sample);
      low = std::min(low, value);
      high = std::max(high, value);
    }
    WidenPair<Rule>(pairs + size_t{2} * channel * Rule::kBytes, low, high);
  }
}

/// The same by AVX2, same bits.
template <class Rule>
void WidenAvx2(const uint8_t* samples, int64_t frames, uint32_t channels, uint8_t* pairs) noexcept;

/// Big-endian types run as their little-endian twins; other types stay.
uint32_t LittleEndianTwin(uint32_t sampleType) noexcept;

}  // namespace marlo::peak
