// SPDX-License-Identifier: Apache-2.0
// The plain loops that the level measures and the 24-bit move are held against.
#include <cmath>
#include <cstdlib>

#include "levels/programme.h"

namespace bench_levels {
namespace {

int32_t Read24(const uint8_t* sample) {
  return static_cast<int32_t>(static_cast<uint32_t>(sample[0] << 8 | sample[1] << 16) | static_cast<uint32_t>(sample[2])
                                                                                            << 24) >>
         8;
}

template <class Value, class Read>
void Peaks(size_t frames, Value* peaks, int64_t* positions, Read read) {
  for (size_t channel = 0; channel < kChannels; ++channel) peaks[channel] = 0, positions[channel] = 0;
  for (size_t frame = 0; frame < frames; ++frame) {
    for (size_t channel = 0; channel < kChannels; ++channel) {
      const Value magnitude = std::abs(read(frame * kChannels + channel));
      if (magnitude >= peaks[channel]) {
        peaks[channel] = magnitude;
        positions[channel] = static_cast<int64_t>(frame);
      }
    }
  }
}

template <class Sum, class Read>
void Rms(size_t frames, double* levels, Read read) {
  Sum sums[kChannels] = {};
  for (size_t frame = 0; frame < frames; ++frame) {
    for (size_t channel = 0; channel < kChannels; ++channel) {
      const Sum value = read(frame * kChannels + channel);
      sums[channel] += value * value;
    }
  }
  for (size_t channel = 0; channel < kChannels; ++channel) {
    levels[channel] = std::sqrt(static_cast<double>(sums[channel]) / static_cast<double>(frames));
  }
}

}  // namespace

void PlainPeaks16(const int16_t* samples, size_t frames, int32_t* peaks, int64_t* positions) {
  Peaks(frames, peaks, positions, [&](size_t index) { return int32_t{samples[index]}; });
}

void PlainPeaks24(const uint8_t* samples, size_t frames, int32_t* peaks, int64_t* positions) {
  Peaks(frames, peaks, positions, [&](size_t index) { return Read24(samples + 3 * index); });
}

void PlainPeaksFloat(const float* samples, size_t frames, float* peaks, int64_t* positions) {
  Peaks(frames, peaks, positions, [&](size_t index) { return samples[index]; });
}

void PlainRms16(const int16_t* samples, size_t frames, double* levels) {
  Rms<int64_t>(frames, levels, [&](size_t index) { return int64_t{samples[index]}; });
}

void PlainRms24(const uint8_t* samples, size_t frames, double* levels) {
  Rms<int64_t>(frames, levels, [&](size_t index) { return int64_t{Read24(samples + 3 * index)}; });
}

void PlainRmsFloat(const float* samples, size_t frames, double* levels) {
  Rms<double>(frames, levels, [&](size_t index) { return static_cast<double>(samples[index]); });
}

void PlainExtract24(uint8_t* dest, const uint8_t* source, size_t channel, size_t frames) {
  for (size_t frame = 0; frame < frames; ++frame) {
    for (size_t byte = 0; byte < 3; ++byte) dest[3 * frame + byte] = source[3 * (frame * kChannels + channel) + byte];
  }
}

}  // namespace bench_levels
