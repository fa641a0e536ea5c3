// SPDX-License-Identifier: Apache-2.0
// Straight lines between frames: exact positions for integer types, double precision for float types.
#include <algorithm>
#include <type_traits>

#include "audio/resample.h"
#include "audio/sample_rules.h"

namespace marlo {
namespace {

/// A source position as the frame before it and how far the way to the next frame has gone.
struct FloatPlace {
  int64_t frame;
  double fraction;
};

/// Integer types: the fraction is `part` of `whole`.
struct IntegerPlace {
  int64_t frame;
  int64_t part;
};

template <class Rule>
class Line {
 public:
  using Raw = typename Rule::Raw;
  using Place = std::conditional_t<Rule::kInteger, IntegerPlace, FloatPlace>;

  explicit Line(const LinearRun& run)
      : run_(run),
        source_(static_cast<const uint8_t*>(run.source)),
        dest_(static_cast<uint8_t*>(run.dest)),
        frameBytes_(static_cast<int64_t>(Rule::kBytes) * run.channels) {}

  void Run() {
    if (run_.goingUp) {
      for (int64_t n = run_.destFrames; n-- > 0;) WriteFrame(n, FrameAt(n, -1));
    } else if (source_ == dest_) {
      // A written frame may be read once more as the frame before: it is kept aside.
      int64_t keptIndex = -1;
      for (int64_t n = 0; n < run_.destFrames; ++n) {
        const uint8_t* const* frames = FrameAt(n, keptIndex);
        std::copy_n(source_ + n * frameBytes_, n < run_.sourceFrames ? frameBytes_ : 0, nextKept_);
        WriteFrame(n, frames);
        std::copy_n(nextKept_, frameBytes_, kept_);
        keptIndex = n;
      }
    } else {
      for (int64_t n = 0; n < run_.destFrames; ++n) WriteFrame(n, FrameAt(n, -1));
    }
  }

 private:
  Place PlaceOf(int64_t n) const {
    if constexpr (Rule::kInteger) {
      const int64_t position = n * run_.srcRate + run_.intPhase;
      int64_t frame = position / run_.dstRate;
      int64_t part = position % run_.dstRate;
      if (part < 0) {
        part += run_.dstRate;
        --frame;
      }
      return {frame, part};
    } else {
      const double position = run_.phase + static_cast<double>(n) * run_.inverse;
      const int64_t frame = FloorPosition(position);
      return {frame, position - static_cast<double>(frame)};
    }
  }

  /// The two frames around output n; null stands for the frame before the block.
  const uint8_t* const* FrameAt(int64_t n, int64_t keptIndex) {
    place_ = PlaceOf(n);
    const int64_t last = run_.sourceFrames - 1;
    const auto pointer = [&](int64_t index) -> const uint8_t* {
      index = std::min(index, last);
      if (index < 0) return nullptr;
      return index == keptIndex ? kept_ : source_ + index * frameBytes_;
    };
    pair_[0] = pointer(place_.frame);
    pair_[1] = pointer(place_.frame + 1);
    return pair_;
  }

  Raw ReadSample(const uint8_t* frame, int32_t channel) const {
    return frame == nullptr ? static_cast<Raw>(run_.lastFrame[channel]) : Rule::Read(frame + channel * Rule::kBytes);
  }

  void WriteFrame(int64_t n, const uint8_t* const* frames) {
    uint8_t* out = dest_ + n * frameBytes_;
    for (int32_t channel = 0; channel < run_.channels; ++channel) {
      const Raw from = ReadSample(frames[0], channel);
      Raw value = from;
      if constexpr (Rule::kInteger) {
        if (place_.part != 0) {
          const int64_t difference = static_cast<int64_t>(ReadSample(frames[1], channel)) - from;
          value = static_cast<Raw>(
              from + static_cast<int64_t>(static_cast<__int128>(difference) * place_.part / run_.dstRate));
        }
      } else {
        if (place_.fraction != 0) {
          const double start = from;
          value = static_cast<Raw>(start + place_.fraction * (ReadSample(frames[1], channel) - start));
        }
      }
      Rule::Write(out + channel * Rule::kBytes, value);
    }
  }

  const LinearRun& run_;
  const uint8_t* source_;
  uint8_t* dest_;
  int64_t frameBytes_;
  Place place_ = {};
  const uint8_t* pair_[2] = {};
  uint8_t kept_[kMaxResampleChannels * 8];
  uint8_t nextKept_[kMaxResampleChannels * 8];
};

/// The body that moves most audio: float types, source and destination apart or growing in place, with one or two
/// channels known at compile time. Gives what Line gives.
template <class Raw, int kChannels>
void RunFloat(const LinearRun& run) {
  const Raw* source = static_cast<const Raw*>(run.source);
  Raw* dest = static_cast<Raw*>(run.dest);
  const int64_t last = run.sourceFrames - 1;
  const auto write = [&](int64_t n) {
    const double position = run.phase + static_cast<double>(n) * run.inverse;
    const int64_t frame = FloorPosition(position);
    const double fraction = position - static_cast<double>(frame);
    for (int channel = 0; channel < kChannels; ++channel) {
      const double from = source[frame * kChannels + channel];
      const double to = source[(frame + 1) * kChannels + channel];
      const double line = from + fraction * (to - from);
      dest[n * kChannels + channel] = static_cast<Raw>(fraction != 0 ? line : from);
    }
  };
  // Frames whose two neighbours both lie in the block; the others go the general way.
  const auto inside = [&](int64_t n) {
    const int64_t frame = FloorPosition(run.phase + static_cast<double>(n) * run.inverse);
    return frame >= 0 && frame < last;
  };
  int64_t first = 0;
  int64_t end = run.destFrames;
  while (first < end && !inside(first)) ++first;
  while (end > first && !inside(end - 1)) --end;
  LinearRun edge = run;
  const auto general = [&](int64_t from, int64_t to) {
    for (int64_t n = to; n-- > from;) {
      // One frame at a time from the high end, which is right for both directions: the edges are few.
      edge.dest = dest + n * kChannels;
      edge.destFrames = 1;
      edge.phase = run.phase + static_cast<double>(n) * run.inverse;
      edge.goingUp = true;
      if constexpr (sizeof(Raw) == 4) {
        Line<Float32Rule>(edge).Run();
      } else {
        Line<Float64Rule>(edge).Run();
      }
    }
  };
  general(end, run.destFrames);
  if (run.goingUp) {
    for (int64_t n = end; n-- > first;) write(n);
  } else {
    for (int64_t n = first; n < end; ++n) write(n);
  }
  general(0, first);
}

template <class Raw>
bool RunFastFloat(const LinearRun& run) {
  if (!run.goingUp && run.source == run.dest) return false;
  if (run.channels == 1) {
    RunFloat<Raw, 1>(run);
  } else if (run.channels == 2) {
    RunFloat<Raw, 2>(run);
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool RunLinear(const LinearRun& run) noexcept {
  if (run.sampleType == ZRSAMPLETYPE_FLOAT32 && RunFastFloat<float>(run)) return true;
  if (run.sampleType == ZRSAMPLETYPE_FLOAT64 && RunFastFloat<double>(run)) return true;
  return VisitRule(MemoryRules{}, run.sampleType, [&](auto rule) { Line<decltype(rule)>(run).Run(); });
}

void ReadFrame(uint32_t sampleType, int32_t channels, const void* source, int64_t index, double* frame) noexcept {
  VisitRule(MemoryRules{}, sampleType, [&](auto rule) {
    using Rule = decltype(rule);
    const uint8_t* sample = static_cast<const uint8_t*>(source) + index * channels * Rule::kBytes;
    for (int32_t channel = 0; channel < channels; ++channel) {
      frame[channel] = static_cast<double>(Rule::Read(sample + channel * Rule::kBytes));
    }
  });
}

}  // namespace marlo
