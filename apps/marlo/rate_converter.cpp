// SPDX-License-Identifier: Apache-2.0
// The two resamplers behind one pulling interface.
#include "rate_converter.h"

#include <algorithm>

#include "errors.h"

namespace host {
namespace {

constexpr ResamplerKind kKinds[] = {
    {"linear", false, ZRRESAMPLE_LINEAR, false}, {"linear-filtered", false, ZRRESAMPLE_LINEAR_FILTERED, true},
    {"sinc", false, ZRRESAMPLE_SINC, true},      {"2-linear", true, ZRRESAMPLE2_LINEAR, true},
    {"2-cubic", true, ZRRESAMPLE2_CUBIC, true},  {"2-sinc", true, ZRRESAMPLE2_SINC, true},
};
constexpr uint32_t kFirstFilters[] = {0, ZRRESAMPLE_FILTER_2, ZRRESAMPLE_FILTER_4, ZRRESAMPLE_FILTER_6};
constexpr uint32_t kSecondFilters[] = {0, ZRRESAMPLE2_FILTER_4, ZRRESAMPLE2_FILTER_8, ZRRESAMPLE2_FILTER_11};

// Frames that one step makes at the most, beside a few of rounding.
constexpr uint32_t kMostMade = 16384;

}  // namespace

const ResamplerKind* ResamplerOfName(std::string_view name) {
  const auto* const found = std::ranges::find(kKinds, name, &ResamplerKind::name);
  return found == std::end(kKinds) ? nullptr : found;
}

RateConverter::RateConverter(const _zrwaveformat& working, uint32_t rate, const ResamplerKind& kind, uint32_t filter)
    : working_(working), rate_(rate), lookAhead_(kind.flags == ZRRESAMPLE_SINC ? 13 : 1) {
  const auto sourceRate = static_cast<int32_t>(working.samplesPerSec);
  mostTaken_ =
      static_cast<uint32_t>(std::clamp<uint64_t>(uint64_t{kMostMade} * working.samplesPerSec / rate, 1, kMostMade));
  if (kind.second) {
    tZRRESAMPLE2* instance = nullptr;
    Check(ZrAudio_Resample2Open(&instance, working.sampleType, working.channels, sourceRate, static_cast<int32_t>(rate),
                                kind.flags | kSecondFilters[filter]),
          "");
    second_.reset(instance);
    made_.resize(size_t{kMostMade} * working.blockAlign);
  } else {
    tZRRESAMPLEINSTANCE* instance = nullptr;
    Check(ZrAudio_ResampleOpen(&instance, working.sampleType, sourceRate, static_cast<int32_t>(rate), working.channels,
                               kind.flags | kFirstFilters[filter]),
          "");
    first_.reset(instance);
  }
}

void RateConverter::Feed(const void* samples, uint32_t frames) {
  source_ = static_cast<const uint8_t*>(samples);
  sourceFrames_ = frames;
  fed_ += frames;
}

void RateConverter::Finish() {
  finishing_ = true;
  sourceFrames_ = 0;
  if (!first_ || fed_ == 0) return;
  // The first resampler's own flush counts frames of the result, which leaves some out going up; silence behind
  // the source brings out every one.
  silence_.assign(size_t{lookAhead_} * working_.blockAlign, 0);
  source_ = silence_.data();
  sourceFrames_ = lookAhead_;
}

int64_t RateConverter::WholeResult() const {
  const auto product = static_cast<__int128>(fed_) * rate_;
  return static_cast<int64_t>((product + working_.samplesPerSec - 1) / working_.samplesPerSec);
}

uint32_t RateConverter::Next() {
  uint32_t made = first_ ? NextOfFirst() : NextOfSecond();
  if (finishing_) made = static_cast<uint32_t>(std::clamp<int64_t>(WholeResult() - given_, 0, made));
  given_ += made;
  return made;
}

uint32_t RateConverter::NextOfFirst() {
  while (sourceFrames_ != 0) {
    const uint32_t taken = std::min(sourceFrames_, mostTaken_);
    const size_t bytes = size_t{taken} * working_.blockAlign;
    const int64_t room = std::max<int64_t>(ZrAudio_ResampleGetDstFromSrc(first_.get(), taken), 0) + 2;
    made_.resize(static_cast<size_t>(room) * working_.blockAlign);
    // Going down the filter works on the source itself, which belongs to the caller.
    taken_.assign(source_, source_ + bytes);
    const int64_t made = ZrAudio_ResampleEx(first_.get(), made_.data(), taken_.data(), taken);
    source_ += bytes;
    sourceFrames_ -= taken;
    if (made != 0) return static_cast<uint32_t>(made);
  }
  return 0;
}

uint32_t RateConverter::NextOfSecond() {
  if (finishing_ && fed_ == 0) return 0;
  while (sourceFrames_ != 0 || finishing_) {
    int64_t made = 0, taken = 0;
    Check(ZrAudio_Resample2Process(second_.get(), made_.data(), kMostMade, &made, source_, sourceFrames_, &taken), "");
    source_ += taken * working_.blockAlign;
    sourceFrames_ -= static_cast<uint32_t>(taken);
    if (made != 0) return static_cast<uint32_t>(made);
    if (finishing_) return 0;
    if (taken == 0) throw Failure(E_FAIL, "", "The resampler takes no more samples.");
  }
  return 0;
}

}  // namespace host
