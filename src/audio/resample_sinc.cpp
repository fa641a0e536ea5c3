// SPDX-License-Identifier: Apache-2.0
// The first resampler's windowed sinc: 25 taps around each output, read from one shared table.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>

#include "audio/resample.h"

namespace marlo {
namespace {

struct SharedTable {
  SincEntry entries[kFirstTableEntries];
  SharedTable() {
    double values[kFirstTableEntries];
    BuildSincTable(values, kFirstTableEntries);
    for (int k = 0; k + 1 < kFirstTableEntries; ++k) entries[k] = {values[k], values[k + 1] - values[k]};
    entries[kFirstTableEntries - 1] = {values[kFirstTableEntries - 1], 0};
  }
};

/// Weights of the 25 taps for an output `place` (12 to 13) taps behind the newest.
void TapWeights(const SincEntry* table, double place, double* weights) {
  const __m128d signBit = _mm_set1_pd(-0.0);
  const __m128d scale = _mm_set1_pd(kFirstTableScale);
  const __m128d almostHalf = _mm_set1_pd(kAlmostHalf);
  const __m128d two = _mm_set1_pd(2);
  const __m128i lastEntry = _mm_set1_epi32(kFirstTableEntries - 2);
  __m128d distance = _mm_sub_pd(_mm_set1_pd(place), _mm_set_pd(1, 0));
  for (int tap = 0; tap < kSincTaps; tap += 2) {
    const __m128d entry = _mm_mul_pd(_mm_andnot_pd(signBit, distance), scale);
    __m128i index = _mm_cvtpd_epi32(_mm_sub_pd(entry, almostHalf));
    const __m128i beyond = _mm_cmpgt_epi32(index, lastEntry);
    index = _mm_or_si128(_mm_and_si128(beyond, lastEntry), _mm_andnot_si128(beyond, index));
    const __m128d fraction = _mm_sub_pd(entry, _mm_cvtepi32_pd(index));
    const __m128d low = _mm_loadu_pd(&table[_mm_cvtsi128_si32(index)].value);
    const __m128d high = _mm_loadu_pd(&table[_mm_cvtsi128_si32(_mm_shuffle_epi32(index, 1))].value);
    const __m128d values = _mm_unpacklo_pd(low, high);
    const __m128d steps = _mm_unpackhi_pd(low, high);
    _mm_storeu_pd(weights + tap, _mm_add_pd(values, _mm_mul_pd(steps, fraction)));
    distance = _mm_sub_pd(distance, two);
  }
}

/// The weighted sum of 25 frames from `newest` on. Four running sums, joined in pairs: the order is part of what
/// every body here gives.
template <typename Sample>
void SumTaps(const double* newest, const double* weights, int32_t channels, Sample* out) {
  for (int32_t channel = 0; channel < channels; ++channel) {
    double sums[4] = {};
    for (int tap = 0; tap < kSincTaps; ++tap) sums[tap % 4] += weights[tap] * newest[tap * channels + channel];
    out[channel] = static_cast<Sample>((sums[0] + sums[1]) + (sums[2] + sums[3]));
  }
}

template <typename Sample>
void SumTapsStereo(const double* newest, const double* weights, Sample* out) {
  __m128d sums[4] = {};
  for (int tap = 0; tap < kSincTaps; ++tap) {
    sums[tap % 4] = _mm_add_pd(sums[tap % 4], _mm_mul_pd(_mm_set1_pd(weights[tap]), _mm_loadu_pd(newest + 2 * tap)));
  }
  const __m128d sum = _mm_add_pd(_mm_add_pd(sums[0], sums[1]), _mm_add_pd(sums[2], sums[3]));
  double pair[2];
  _mm_storeu_pd(pair, sum);
  out[0] = static_cast<Sample>(pair[0]);
  out[1] = static_cast<Sample>(pair[1]);
}

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
  const SincEntry* table = SharedSincTable();
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
  double weights[kSincTaps + 1];
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
    TapWeights(table, kSincCentre - behind, weights);
    const double* newest = history.frames + static_cast<ptrdiff_t>(history.head + ahead) * instance.channels;
    if (instance.channels == 2) {
      SumTapsStereo(newest, weights, dest);
    } else {
      SumTaps(newest, weights, instance.channels, dest);
    }
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

const SincEntry* SharedSincTable() noexcept {
  static const SharedTable table;
  return table.entries;
}

int64_t RunSinc(tZRRESAMPLEINSTANCE& instance, void* dest, int64_t destFrames, const void* source, int64_t sourceFrames,
                double step) noexcept {
  if (instance.sampleType == ZRSAMPLETYPE_FLOAT32) {
    return Run(instance, static_cast<float*>(dest), destFrames, static_cast<const float*>(source), sourceFrames, step);
  }
  return Run(instance, static_cast<double*>(dest), destFrames, static_cast<const double*>(source), sourceFrames, step);
}

}  // namespace marlo
