// SPDX-License-Identifier: Apache-2.0
// Level measures of any length from block measures of the library.
#include "level_meter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "errors.h"
#include "marlo110k/levels.h"
#include "marlo110k/samples.h"
#include "sample_format.h"

namespace host {
namespace {

// So many full-scale samples in a row are a clipped sound and no mere peak.
constexpr uint32_t kClippedRun = 3;

}  // namespace

double ChannelLevel::Rms(int64_t frames) const {
  return std::sqrt(squares / static_cast<double>(std::max<int64_t>(frames, 1)));
}

LevelMeter::LevelMeter(const _zrwaveformat& format) : source_(format), levels_(format.channels) {
  const auto type = static_cast<ZRSAMPLETYPE>(format.sampleType);
  const bool measured = ZrAudio_GetFindPeaksFunction(&format) != nullptr;
  peakFormat_ =
      MakeFormat(format.samplesPerSec, measured ? type : *TypeInContainer(type, Container::kWave), format.channels, 0);
  doubles_ = MakeFormat(format.samplesPerSec, ZRSAMPLETYPE_FLOAT64, format.channels, 0);
}

void LevelMeter::Add(const void* samples, uint32_t frames) {
  if (frames == 0) return;
  FindPeaks(samples, frames);
  AddSquares(samples, frames);
  frames_ += frames;
}

// A run of full-scale samples may cross blocks, so each search begins in the end of the block before.
void LevelMeter::FindPeaks(const void* samples, uint32_t frames) {
  const size_t frameBytes = peakFormat_.blockAlign;
  carried_.resize((carriedFrames_ + frames) * frameBytes);
  Check(ZrAudio_Copy(&peakFormat_, carried_.data() + carriedFrames_ * frameBytes, &source_, samples, frames, 1.0f), "");
  const uint32_t searched = carriedFrames_ + frames;
  std::vector<tZRAUDIOPEAK> peaks(source_.channels);
  Check(ZrAudio_FindPeaks(&peakFormat_, kClippedRun, carried_.data(), searched, peaks.data()), "");
  for (size_t channel = 0; channel < levels_.size(); ++channel) {
    ChannelLevel& level = levels_[channel];
    level.clipped = level.clipped || peaks[channel].clipped != 0;
    if (peaks[channel].peak >= level.peak) {
      level.peak = peaks[channel].peak;
      level.peakFrame = std::max<int64_t>(frames_ - carriedFrames_ + peaks[channel].position, 0);
    }
  }
  carriedFrames_ = std::min(searched, kClippedRun - 1);
  std::memmove(carried_.data(), carried_.data() + (searched - carriedFrames_) * frameBytes,
               carriedFrames_ * frameBytes);
}

void LevelMeter::AddSquares(const void* samples, uint32_t frames) {
  doubleSamples_.resize(size_t{frames} * doubles_.channels);
  Check(ZrAudio_Copy(&doubles_, doubleSamples_.data(), &source_, samples, frames, 1.0f), "");
  std::vector<float> squares(doubles_.channels);
  Check(ZrAudio_CalcPreRMS(&doubles_, doubleSamples_.data(), frames, squares.data(), 0), "");
  for (size_t channel = 0; channel < levels_.size(); ++channel) levels_[channel].squares += squares[channel];
}

}  // namespace host
