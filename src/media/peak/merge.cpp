// SPDX-License-Identifier: Apache-2.0
// The smallest minimum and the largest maximum of a run of peaks.
#include "media/peak/merge.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "media/peak/minmax.h"

namespace marlo::peak {
namespace {

/// Bytes that are merged side by side. A frame of pairs of 1, 2, 4, 8 or 16 values divides them.
constexpr size_t kGroupBytes = 32;

/// Values as lanes: flipping the bits of the maxima turns both halves of a pair into minima. Bytes are compared without
/// sign, which the processor does in one step, so their top bit is flipped too.
template <class Rule>
struct LaneForm;

template <>
struct LaneForm<Pcm16Rule> {
  using Lane = int16_t;
  static constexpr int kFlipLow = 0;
  static constexpr int kFlipHigh = -1;
};

template <>
struct LaneForm<Pcm8SignedRule> {
  using Lane = uint8_t;
  static constexpr int kFlipLow = 0x80;
  static constexpr int kFlipHigh = 0x7F;
};

/// Merges whole groups. @return values used.
template <class Rule>
size_t MergeGroups(const uint8_t* bytes, size_t values, size_t period, uint8_t* pairs) noexcept {
  using Form = LaneForm<Rule>;
  using Lane = typename Form::Lane;
  constexpr size_t kLanes = kGroupBytes / sizeof(Lane);
  const size_t groups = values / kLanes;
  if (kLanes % period != 0 || groups == 0) return 0;
  Lane flips[kLanes];
  for (size_t lane = 0; lane < kLanes; ++lane) {
    flips[lane] = static_cast<Lane>(lane % 2 == 0 ? Form::kFlipLow : Form::kFlipHigh);
  }
  Lane lowest[kLanes];
  std::fill_n(lowest, kLanes, std::numeric_limits<Lane>::max());
  for (size_t group = 0; group < groups; ++group) {
    Lane lanes[kLanes];
    std::memcpy(lanes, bytes + group * kGroupBytes, kGroupBytes);
    for (size_t lane = 0; lane < kLanes; ++lane) {
      lowest[lane] = std::min(lowest[lane], static_cast<Lane>(lanes[lane] ^ flips[lane]));
    }
  }
  for (size_t lane = 0; lane < kLanes; ++lane) {
    const auto value = static_cast<Lane>(lowest[lane] ^ flips[lane]);
    uint8_t* at = pairs + lane % period * sizeof(Lane);
    const auto raw = Rule::Read(reinterpret_cast<const uint8_t*>(&value));
    Rule::Write(at, lane % 2 == 0 ? std::min(Rule::Read(at), raw) : std::max(Rule::Read(at), raw));
  }
  return groups * kLanes;
}

template <class Rule>
void Merge(const StoredPeaks& peaks, int64_t first, int64_t count, bool begun, MergedPeak* merged) noexcept {
  const size_t period = size_t{2} * peaks.channels;
  const uint8_t* bytes = peaks.entries + static_cast<size_t>(first) * peaks.EntryBytes();
  if (!begun) std::memcpy(merged->pairs, bytes, peaks.EntryBytes());
  const size_t values = static_cast<size_t>(count) * period;
  for (size_t at = MergeGroups<Rule>(bytes, values, period, merged->pairs); at < values; at += period) {
    for (size_t value = 0; value < period; value += 2) {
      const uint8_t* pair = bytes + (at + value) * Rule::kBytes;
      WidenPair<Rule>(merged->pairs + value * Rule::kBytes, Rule::Read(pair), Rule::Read(pair + Rule::kBytes));
    }
  }
}

template <class Rule>
void Store(const MergedPeak& merged, uint32_t channels, uint32_t type, void* buffer, int64_t column) noexcept {
  VisitRule(PeakRules{}, NamedPeakType(type), [&](auto rule) {
    using Out = decltype(rule);
    const size_t values = size_t{2} * channels;
    auto* to = static_cast<uint8_t*>(buffer) + static_cast<size_t>(column) * values * Out::kBytes;
    for (size_t value = 0; value < values; ++value) {
      Out::Write(to + value * Out::kBytes, ConvertValue<Out, Rule>(Rule::Read(merged.pairs + value * Rule::kBytes)));
    }
  });
}

}  // namespace

void MergePeaks(const StoredPeaks& peaks, int64_t first, int64_t count, bool begun, MergedPeak* merged) noexcept {
  return peaks.bits == 16 ? Merge<Pcm16Rule>(peaks, first, count, begun, merged)
                          : Merge<Pcm8SignedRule>(peaks, first, count, begun, merged);
}

void StoreColumn(const MergedPeak& merged, const StoredPeaks& peaks, uint32_t type, void* buffer,
                 int64_t column) noexcept {
  return peaks.bits == 16 ? Store<Pcm16Rule>(merged, peaks.channels, type, buffer, column)
                          : Store<Pcm8SignedRule>(merged, peaks.channels, type, buffer, column);
}

}  // namespace marlo::peak
