// SPDX-License-Identifier: Apache-2.0
// One or two copy kernels in a row.
#include "sample_converter.h"

#include "errors.h"
#include "marlo110k/samples.h"
#include "sample_format.h"

namespace host {

SampleConverter::SampleConverter(const _zrwaveformat& source, const _zrwaveformat& target, float gain)
    : source_(source), target_(target), between_{}, gain_(gain) {
  twoSteps_ = ZrAudio_GetCopyFunction(&target, &source) == nullptr;
  // Doubles hold every integer sample and its product with the gain, so the result is rounded once.
  if (twoSteps_) between_ = MakeFormat(source.samplesPerSec, ZRSAMPLETYPE_FLOAT64, source.channels, 0);
}

const void* SampleConverter::Convert(const void* samples, uint32_t frames) {
  targetSamples_.resize(size_t{frames} * target_.blockAlign);
  if (twoSteps_) {
    betweenSamples_.resize(size_t{frames} * between_.blockAlign);
    Check(ZrAudio_Copy(&between_, betweenSamples_.data(), &source_, samples, frames, gain_), "");
    Check(ZrAudio_Copy(&target_, targetSamples_.data(), &between_, betweenSamples_.data(), frames, 1.0f), "");
  } else {
    Check(ZrAudio_Copy(&target_, targetSamples_.data(), &source_, samples, frames, gain_), "");
  }
  return targetSamples_.data();
}

}  // namespace host
