// SPDX-License-Identifier: Apache-2.0
// RMS of every channel, and the sums that an RMS over several blocks is made of.
#include <algorithm>
#include <cmath>

#include "audio/format_sides.h"
#include "audio/level_lanes.h"
#include "audio/sample_rules.h"
#include "marlo110k/levels.h"

namespace marlo {
namespace {

/// The square of an integer sample. The squares of a block have room in 64 bits up to 24 bits.
template <class Rule>
struct Square {
  using Value = uint64_t;
  using Total = unsigned __int128;
  static void Add(Value& lane, const uint8_t* sample) noexcept {
    const int32_t raw = Rule::Read(sample);
    if constexpr (Rule::kBits <= 16) {
      lane += static_cast<uint32_t>(raw * raw);
    } else {
      // Unsigned, as a foreign word of the unpacked type may hold any bits.
      const auto bits = static_cast<uint32_t>(raw);
      const uint32_t magnitude = raw < 0 ? 0 - bits : bits;
      lane += uint64_t{magnitude} * magnitude;
    }
  }
  static void Fold(Value& lane, Value other) noexcept { lane += other; }
  static Total Widen(Value value) noexcept { return value; }
};

/// Two 32-bit squares fill 64 bits: their halves are summed apart.
template <>
struct Square<Pcm32Rule> {
  struct Value {
    uint64_t low;
    uint64_t high;
  };
  using Total = unsigned __int128;
  static void Add(Value& lane, const uint8_t* sample) noexcept {
    const int64_t raw = Pcm32Rule::Read(sample);
    const auto square = static_cast<uint64_t>(raw * raw);
    lane.low += static_cast<uint32_t>(square);
    lane.high += square >> 32;
  }
  static void Fold(Value& lane, const Value& other) noexcept {
    lane.low += other.low;
    lane.high += other.high;
  }
  static Total Widen(const Value& value) noexcept { return (Total{value.high} << 32) + value.low; }
};

template <class Rule>
struct FloatSum {
  using Value = double;
  using Total = double;
  static void Fold(Value& lane, Value other) noexcept { lane += other; }
  static Total Widen(Value value) noexcept { return value; }
};

template <class Rule>
struct FloatSquare : FloatSum<Rule> {
  static void Add(double& lane, const uint8_t* sample) noexcept {
    const double value = Rule::Read(sample);
    lane += value * value;
  }
};

template <class Rule>
struct FloatMagnitude : FloatSum<Rule> {
  static void Add(double& lane, const uint8_t* sample) noexcept { lane += std::fabs(double{Rule::Read(sample)}); }
};

/// Gives the sum of every channel to store(channel, total).
template <class Measure, size_t kSampleBytes, class Store>
void SumChannels(const void* buffer, int64_t frames, uint32_t channels, Store&& store) noexcept {
  for (size_t base = 0; base < channels; base += kLevelChannels) {
    const size_t count = std::min(channels - base, kLevelChannels);
    const uint8_t* samples = static_cast<const uint8_t*>(buffer) + base * kSampleBytes;
    typename Measure::Total totals[kLevelChannels] = {};
    for (int64_t start = 0; start < frames; start += kLevelBlockFrames) {
      const int64_t blockFrames = std::min(frames - start, kLevelBlockFrames);
      typename Measure::Value sums[kLevelChannels];
      MeasureChannels<Measure, kSampleBytes>(samples, channels, count, blockFrames, sums);
      for (size_t channel = 0; channel < count; ++channel) totals[channel] += Measure::Widen(sums[channel]);
      samples += size_t{channels} * kSampleBytes * kLevelBlockFrames;
    }
    for (size_t channel = 0; channel < count; ++channel) store(base + channel, totals[channel]);
  }
}

/// Keeps the low `kBits` bits of a level, as a signed number: full scale becomes the most negative value.
template <int kBits>
int64_t WrapToWidth(int64_t level) noexcept {
  return static_cast<int64_t>(static_cast<uint64_t>(level) << (64 - kBits)) >> (64 - kBits);
}

template <class Rule>
void CalcRms(const void* buffer, int64_t frames, uint32_t channels, float* results) noexcept {
  const auto divisor = static_cast<double>(std::max<int64_t>(frames, 1));
  if constexpr (Rule::kInteger) {
    SumChannels<Square<Rule>, Rule::kBytes>(buffer, frames, channels, [&](size_t channel, auto total) {
      const double root = std::sqrt(static_cast<double>(total) / divisor + 0.5);
      const int64_t level = WrapToWidth<8 * Rule::kBytes>(static_cast<int64_t>(root));
      results[channel] = static_cast<float>(static_cast<double>(level) * Rule::kReadFactor);
    });
  } else {
    SumChannels<FloatSquare<Rule>, Rule::kBytes>(buffer, frames, channels, [&](size_t channel, double total) {
      results[channel] = static_cast<float>(std::sqrt(total / divisor));
    });
  }
}

template <class Rule>
void CalcPreRms(const void* buffer, int64_t frames, uint32_t channels, float* results, int32_t weight) noexcept {
  const auto store = [&](size_t channel, double total) { results[channel] = static_cast<float>(total); };
  if (weight) {
    SumChannels<FloatMagnitude<Rule>, Rule::kBytes>(buffer, frames, channels, store);
  } else {
    SumChannels<FloatSquare<Rule>, Rule::kBytes>(buffer, frames, channels, store);
  }
}

ZRAUDIOCALCRMSFUNCTION CalcRmsFunction(uint32_t sampleType) noexcept {
  ZRAUDIOCALCRMSFUNCTION function = nullptr;
  VisitRule(LittleEndianRules{}, sampleType, [&](auto rule) { function = CalcRms<decltype(rule)>; });
  return function;
}

ZRAUDIOCALCPRERMSFUNCTION CalcPreRmsFunction(uint32_t sampleType) noexcept {
  ZRAUDIOCALCPRERMSFUNCTION function = nullptr;
  VisitRule(RuleList<Float32Rule, Float64Rule>{}, sampleType,
            [&](auto rule) { function = CalcPreRms<decltype(rule)>; });
  return function;
}

HRESULT CalcRmsOf(const FormatSide& side, const void* buffer, int64_t frames, float* results) noexcept {
  if (frames <= 0) return S_OK;
  const ZRAUDIOCALCRMSFUNCTION function = CalcRmsFunction(side.sampleType);
  if (!function) return E_NOTIMPL;
  function(buffer, frames, side.channels, results);
  return S_OK;
}

HRESULT CalcPreRmsOf(const FormatSide& side, const void* buffer, int64_t frames, float* results,
                     int32_t weight) noexcept {
  if (frames <= 0) return S_OK;
  const ZRAUDIOCALCPRERMSFUNCTION function = CalcPreRmsFunction(side.sampleType);
  if (!function) return E_NOTIMPL;
  function(buffer, frames, side.channels, results, weight);
  return S_OK;
}

}  // namespace
}  // namespace marlo

using marlo::SideOf;

ZRAUDIOCALCRMSFUNCTION ZrAudio_GetCalcRMSFunction(const WAVEFORMATEX* format) noexcept {
  return marlo::CalcRmsFunction(SideOf(format).sampleType);
}

ZRAUDIOCALCRMSFUNCTION ZrAudio_GetCalcRMSFunction(const _zrwaveformat* format) noexcept {
  return marlo::CalcRmsFunction(SideOf(format).sampleType);
}

HRESULT ZrAudio_CalcRMS(const WAVEFORMATEX* format, const void* buffer, int64_t frames, float* results) noexcept {
  return marlo::CalcRmsOf(SideOf(format), buffer, frames, results);
}

HRESULT ZrAudio_CalcRMS(const _zrwaveformat* format, const void* buffer, int64_t frames, float* results) noexcept {
  return marlo::CalcRmsOf(SideOf(format), buffer, frames, results);
}

ZRAUDIOCALCPRERMSFUNCTION ZrAudio_GetCalcPreRMSFunction(const WAVEFORMATEX* format) noexcept {
  return marlo::CalcPreRmsFunction(SideOf(format).sampleType);
}

ZRAUDIOCALCPRERMSFUNCTION ZrAudio_GetCalcPreRMSFunction(const _zrwaveformat* format) noexcept {
  return marlo::CalcPreRmsFunction(SideOf(format).sampleType);
}

HRESULT ZrAudio_CalcPreRMS(const WAVEFORMATEX* format, const void* buffer, int64_t frames, float* results,
                           int32_t weight) noexcept {
  return marlo::CalcPreRmsOf(SideOf(format), buffer, frames, results, weight);
}

HRESULT ZrAudio_CalcPreRMS(const _zrwaveformat* format, const void* buffer, int64_t frames, float* results,
                           int32_t weight) noexcept {
  return marlo::CalcPreRmsOf(SideOf(format), buffer, frames, results, weight);
}

double ZrAudio_GetNormalizeFactor(uint32_t bits) noexcept {
  switch (bits) {
    case 8:
      return 128.0;
    case 16:
      return 32768.0;
    case 24:
      return 8388608.0;
    case 32:
      return 2147483648.0;
    default:
      return 1.0;
  }
}
