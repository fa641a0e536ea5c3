// SPDX-License-Identifier: Apache-2.0
// What the level questions are asked of: one programme in several sample types, and the peers' answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench_levels {

inline constexpr size_t kFrames = 65536;
inline constexpr size_t kChannels = 2;
inline constexpr int kRate = 48000;

/// A stereo programme that swells and fades, with its largest sample in the first half.
struct Programme {
  std::vector<int16_t> pcm16;
  std::vector<uint8_t> pcm24;
  std::vector<float> float32;
};
Programme MakeProgramme();

// Plain loops: frame by frame, channel by channel, nothing prepared.
void PlainPeaks16(const int16_t* samples, size_t frames, int32_t* peaks, int64_t* positions);
void PlainPeaks24(const uint8_t* samples, size_t frames, int32_t* peaks, int64_t* positions);
void PlainPeaksFloat(const float* samples, size_t frames, float* peaks, int64_t* positions);
void PlainRms16(const int16_t* samples, size_t frames, double* levels);
void PlainRms24(const uint8_t* samples, size_t frames, double* levels);
void PlainRmsFloat(const float* samples, size_t frames, double* levels);
void PlainExtract24(uint8_t* dest, const uint8_t* source, size_t channel, size_t frames);

#ifdef MARLO_BENCH_EBUR128
/// The larger sample peak of both channels; the meter also runs its loudness filter, which can't be left out.
double Ebur128Peak(const float* samples, size_t frames);
#endif
#ifdef MARLO_BENCH_SNDFILE
/// The largest sample of a 16-bit WAV file in memory, as the library's own scan finds it.
class SndfileScan {
 public:
  explicit SndfileScan(const std::vector<int16_t>& samples);
  ~SndfileScan();
  SndfileScan(const SndfileScan&) = delete;
  SndfileScan& operator=(const SndfileScan&) = delete;
  double Peak();

 private:
  struct State;
  State* state_;
};
#endif

}  // namespace bench_levels
