// SPDX-License-Identifier: Apache-2.0
// The first resampler's windowed sinc: 25 taps around each output, read from one shared table.
#include <algorithm>

#include "audio/resample.h"

namespace marlo {
namespace {

struct SharedTable {
  SincEntry entries[kFirstTableEntries];
  SincTable table = {entries, kFirstTableScale, kFirstTableEntries - 2};
  SharedTable() { FillSincEntries(entries, kFirstTableEntries); }
};

/// Pushes frames into the history, newest first in memory.
template <typename Sample>
class Feeder {
 public:
  Feeder(SincHistory& history, int32_t channels, const Sample* source, int64_t frames)
      : history_(history), channels_(channels), source_(source), left_(frames) {}
  int64_t Left() const { return left_; }
  /// The next source frame, or a frame of zeros when `silent`.
  void Push(bool silent) {
    history_.head = (history_.head - 1) & (kSincRingFrames - 1);
    double* slot = history_.frames + static_cast<ptrdiff_t>(history_.head) * channels_;
    double* twin = slot + static_cast<ptrdiff_t>(kSincRingFrames) * channels_;
    for (int32_t channel = 0; channel < channels_; ++channel) {
      slot[channel] = twin[channel] = silent ? 0.0 : static_cast<double>(source_[channel]);
    }
    if (silent) return;
    source_ += channels_;
    --left_;
  }

 private:
  SincHistory& history_;
  int32_t channels_;
  const Sample* source_;
  int64_t left_;
};

template <typename Sample>
int64_t Run(tZRRESAMPLEINSTANCE& instance, Sample* dest, int64_t destFrames, const Sample* source, int64_t sourceFrames,
            double step) {
  const SincTable& table = SharedSincTable();
  const SincSum sum = ChooseSincSum(instance.channels, false);
  SincHistory& history = instance.sinc;
  Feeder<Sample> feeder(history, instance.channels, source, sourceFrames);
  const bool flush = sourceFrames == 0;
  if (history.first) {
    history.time = 0;
    history.tail = 0;
    for (int frame = 0; frame < kSincCrossings && feeder.Left() > 0; ++frame) {
      feeder.Push(false);
      ++history.tail;
    }
    // A first block shorter than the taps ahead leaves the newest frames still to come.
    history.time -= kSincCrossings - history.tail;
    history.first = false;
  }
  int64_t written = 0;
  double time = 0;
  double frame[kMaxResampleChannels];
  while (written < destFrames) {
    bool starved = false;
    while (time - history.time - 1 >= -1.5e-8) {
      if (feeder.Left() == 0 && !flush) {
        starved = true;
        break;
      }
      if (history.tail < kSincCrossings && !flush) ++history.tail;
      feeder.Push(flush);
      history.time += 1;
    }
    if (starved) break;
    if (flush) {
      if (history.tail < 1) break;
      --history.tail;
    }
    // Frames pushed while the destination was full lie ahead of the taps: they are passed over.
    double behind = time - history.time;
    int32_t ahead = 0;
    if (behind < -1.5e-8) {
      ahead = std::min(kSincSpareFrames, static_cast<int32_t>(CeilPosition(-behind)));
      behind += ahead;
    }
    const double* newest = history.frames + static_cast<ptrdiff_t>(history.head + ahead) * instance.channels;
    sum(table, kSincCentre - behind, newest, instance.channels, frame);
    for (int32_t channel = 0; channel < instance.channels; ++channel)
      dest[channel] = static_cast<Sample>(frame[channel]);
    dest += instance.channels;
    ++written;
    time = static_cast<double>(written) * step;
  }
  while (feeder.Left() > 0) {
    feeder.Push(false);
    history.time += 1;
  }
  history.time -= time;
  return written;
}

}  // namespace

const SincTable& SharedSincTable() noexcept {
  static const SharedTable shared;
  return shared.table;
}

int64_t RunSinc(tZRRESAMPLEINSTANCE& instance, void* dest, int64_t destFrames, const void* source, int64_t sourceFrames,
                double step) noexcept {
  if (instance.sampleType == ZRSAMPLETYPE_FLOAT32) {
    return Run(instance, static_cast<float*>(dest), destFrames, static_cast<const float*>(source), sourceFrames, step);
  }
  return Run(instance, static_cast<double*>(dest), destFrames, static_cast<const double*>(source), sourceFrames, step);
}

}  // namespace marlo
