// SPDX-License-Identifier: Apache-2.0
// Peak search: the largest magnitude of every channel, where it is, and whether the channel clips.
#include <algorithm>
#include <bit>
#include <limits>
#include <type_traits>

#include "audio/format_sides.h"
#include "audio/level_lanes.h"
#include "audio/sample_rules.h"
#include "marlo110k/levels.h"

namespace marlo {
namespace {

/// Magnitudes are compared as integers: of an integer type its raw value, where the most negative one counts as
/// the largest positive one; of a float type the bits without the sign, so that a NaN is above everything.
template <class Rule>
struct Magnitude {
  using Value = std::conditional_t<Rule::kBytes == 8, int64_t, int32_t>;

  static Value Of(const uint8_t* sample) noexcept {
    if constexpr (Rule::kInteger) {
      const int32_t raw = std::max(Rule::Read(sample), -Rule::kRawHigh);
      return std::max(raw, -raw);
    } else {
      return std::bit_cast<Value>(Rule::Read(sample)) & std::numeric_limits<Value>::max();
    }
  }
  static constexpr Value FullScale() noexcept {
    if constexpr (Rule::kInteger) {
      return Rule::kRawHigh;
    } else {
      return std::bit_cast<Value>(typename Rule::Raw{1});
    }
  }
  static float Level(Value magnitude) noexcept {
    if constexpr (Rule::kInteger) {
      return static_cast<float>(magnitude * Rule::kReadFactor);
    } else {
      return static_cast<float>(std::bit_cast<typename Rule::Raw>(magnitude));
    }
  }

  static void Add(Value& lane, const uint8_t* sample) noexcept { lane = std::max(lane, Of(sample)); }
  static void Fold(Value& lane, Value other) noexcept { lane = std::max(lane, other); }
};

/// The search in one channel, block by block. Only a block that holds a new peak or a sample at full scale is
/// looked at sample by sample.
template <class Rule>
class ChannelSearch {
 public:
  using Value = typename Magnitude<Rule>::Value;

  bool Stopped() const noexcept { return stopped_; }

  /// @param blockPeak the largest magnitude of the block. @param start the block's first frame.
  void TakeBlock(Value blockPeak, const uint8_t* first, size_t stride, int64_t start, int64_t frames,
                 uint32_t threshold) noexcept {
    if constexpr (Rule::kInteger) {
      if (blockPeak >= Magnitude<Rule>::FullScale()) return WalkClipping(first, stride, start, frames, threshold);
      run_ = 0;
    } else {
      clipped_ = clipped_ || blockPeak > Magnitude<Rule>::FullScale();
    }
    if (blockPeak < peak_) return;
    peak_ = blockPeak;
    // From the end: among equal peaks the last one wins.
    int64_t frame = frames - 1;
    while (Magnitude<Rule>::Of(first + static_cast<size_t>(frame) * stride) != blockPeak) --frame;
    position_ = start + frame;
  }

  void Store(tZRAUDIOPEAK& result) const noexcept {
    result.peak = Magnitude<Rule>::Level(peak_);
    // A stopped search steps back over its run, which points one before the first sample of the run.
    result.position = static_cast<int32_t>(stopped_ ? position_ - run_ : position_);
    result.clipped = clipped_ ? 1 : 0;
  }

 private:
  void WalkClipping(const uint8_t* first, size_t stride, int64_t start, int64_t frames, uint32_t threshold) noexcept {
    for (int64_t frame = 0; frame < frames; ++frame, first += stride) {
      const Value magnitude = Magnitude<Rule>::Of(first);
      if (magnitude >= peak_) {
        peak_ = magnitude;
        position_ = start + frame;
      }
      if (magnitude < Magnitude<Rule>::FullScale()) {
        run_ = 0;
      } else if (++run_ >= threshold) {
        clipped_ = stopped_ = true;
        return;
      }
    }
  }

  Value peak_ = 0;
  int64_t position_ = 0;
  int64_t run_ = 0;  ///< Samples at full scale up to the last frame seen.
  bool clipped_ = false;
  bool stopped_ = false;
};

template <class Rule>
void FindPeaks(uint32_t threshold, const void* buffer, int64_t frames, uint32_t channels,
               tZRAUDIOPEAK* results) noexcept {
  const size_t stride = size_t{channels} * Rule::kBytes;
  for (size_t base = 0; base < channels; base += kLevelChannels) {
    const size_t count = std::min(channels - base, kLevelChannels);
    const uint8_t* samples = static_cast<const uint8_t*>(buffer) + base * Rule::kBytes;
    ChannelSearch<Rule> searches[kLevelChannels];
    size_t stopped = 0;
    for (int64_t start = 0; start < frames && stopped < count; start += kLevelBlockFrames) {
      const int64_t blockFrames = std::min(frames - start, kLevelBlockFrames);
      typename Magnitude<Rule>::Value peaks[kLevelChannels];
      MeasureChannels<Magnitude<Rule>, Rule::kBytes>(samples, channels, count, blockFrames, peaks);
      for (size_t channel = 0; channel < count; ++channel) {
        if (searches[channel].Stopped()) continue;
        searches[channel].TakeBlock(peaks[channel], samples + channel * Rule::kBytes, stride, start, blockFrames,
                                    threshold);
        stopped += searches[channel].Stopped();
      }
      samples += stride * kLevelBlockFrames;
    }
    for (size_t channel = 0; channel < count; ++channel) searches[channel].Store(results[base + channel]);
  }
}

ZRAUDIOFINDPEAKSFUNCTION FindPeaksFunction(uint32_t sampleType) noexcept {
  ZRAUDIOFINDPEAKSFUNCTION function = nullptr;
  VisitRule(LittleEndianRules{}, sampleType, [&](auto rule) { function = FindPeaks<decltype(rule)>; });
  return function;
}

HRESULT FindPeaksOf(const FormatSide& side, uint32_t threshold, const void* buffer, int64_t frames,
                    tZRAUDIOPEAK* results) noexcept {
  if (frames <= 0) return S_OK;
  const ZRAUDIOFINDPEAKSFUNCTION function = FindPeaksFunction(side.sampleType);
  if (!function) return E_NOTIMPL;
  function(threshold, buffer, frames, side.channels, results);
  return S_OK;
}

}  // namespace
}  // namespace marlo

using marlo::SideOf;

ZRAUDIOFINDPEAKSFUNCTION ZrAudio_GetFindPeaksFunction(const WAVEFORMATEX* format) noexcept {
  return marlo::FindPeaksFunction(SideOf(format).sampleType);
}

ZRAUDIOFINDPEAKSFUNCTION ZrAudio_GetFindPeaksFunction(const _zrwaveformat* format) noexcept {
  return marlo::FindPeaksFunction(SideOf(format).sampleType);
}

HRESULT ZrAudio_FindPeaks(const WAVEFORMATEX* format, uint32_t threshold, const void* buffer, int64_t frames,
                          tZRAUDIOPEAK* results) noexcept {
  return marlo::FindPeaksOf(SideOf(format), threshold, buffer, frames, results);
}

HRESULT ZrAudio_FindPeaks(const _zrwaveformat* format, uint32_t threshold, const void* buffer, int64_t frames,
                          tZRAUDIOPEAK* results) noexcept {
  return marlo::FindPeaksOf(SideOf(format), threshold, buffer, frames, results);
}
