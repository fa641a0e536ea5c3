// SPDX-License-Identifier: Apache-2.0
// Walks of a block for the level measures: lanes that a compiler turns into vectors, and strided channels.
//
// One- and two-channel blocks run through sixteen lanes side by side: lane k of a group of sixteen samples
// belongs to channel k mod channels, so neither a call nor a channel index is in the loop. Lanes are folded
// once a block. A measure is a small type:
//
//   Value            what a lane holds; Value{} is its start
//   Add(lane, sample) takes a sample in
//   Fold(lane, other) joins two lanes
#pragma once

#include <cstddef>
#include <cstdint>

namespace marlo {

inline constexpr int64_t kLevelLanes = 16;
/// Frames of a block; a multiple of the lanes.
inline constexpr int64_t kLevelBlockFrames = 256;

/// One value a channel over kLevelBlockFrames frames of `kChannels` (1 or 2) channels.
template <class Measure, size_t kSampleBytes, size_t kChannels>
inline void MeasureBlock(const uint8_t* samples, typename Measure::Value* results) noexcept {
  static_assert(kChannels == 1 || kChannels == 2);
  typename Measure::Value lanes[kLevelLanes] = {};
  constexpr size_t kGroups = kLevelBlockFrames * kChannels / kLevelLanes;
  for (size_t group = 0; group < kGroups; ++group) {
    for (size_t lane = 0; lane < kLevelLanes; ++lane) Measure::Add(lanes[lane], samples + lane * kSampleBytes);
    samples += kLevelLanes * kSampleBytes;
  }
  for (size_t lane = kChannels; lane < kLevelLanes; ++lane) Measure::Fold(lanes[lane % kChannels], lanes[lane]);
  for (size_t channel = 0; channel < kChannels; ++channel) results[channel] = lanes[channel];
}

/// One channel over any number of frames, in four lanes. `stride` in bytes.
template <class Measure>
inline typename Measure::Value MeasureStrided(const uint8_t* first, size_t stride, int64_t frames) noexcept {
  typename Measure::Value lanes[4] = {};
  int64_t frame = 0;
  for (; frame + 4 <= frames; frame += 4) {
    for (size_t lane = 0; lane < 4; ++lane) Measure::Add(lanes[lane], first + lane * stride);
    first += 4 * stride;
  }
  for (; frame < frames; ++frame, first += stride) Measure::Add(lanes[0], first);
  for (size_t lane = 1; lane < 4; ++lane) Measure::Fold(lanes[0], lanes[lane]);
  return lanes[0];
}

/// Measures a block of up to kLevelBlockFrames frames for `count` channels from the one that `samples` points at.
template <class Measure, size_t kSampleBytes>
inline void MeasureChannels(const uint8_t* samples, size_t channels, size_t count, int64_t frames,
                            typename Measure::Value* results) noexcept {
  if (frames == kLevelBlockFrames && channels == 1) return MeasureBlock<Measure, kSampleBytes, 1>(samples, results);
  if (frames == kLevelBlockFrames && channels == 2) return MeasureBlock<Measure, kSampleBytes, 2>(samples, results);
  for (size_t channel = 0; channel < count; ++channel) {
    results[channel] = MeasureStrided<Measure>(samples + channel * kSampleBytes, channels * kSampleBytes, frames);
  }
}

/// Channels that are measured side by side; the rest of a wide frame follows in further passes.
inline constexpr size_t kLevelChannels = 8;

}  // namespace marlo
