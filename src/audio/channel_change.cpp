// SPDX-License-Identifier: Apache-2.0
// Changes of the channel count, and the mean of all channels in each.
#include "audio/format_sides.h"
#include "audio/sample_bytes.h"
#include "audio/sample_rules.h"
#include "marlo110k/channels.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

enum class Fold { kSum, kMean };

/// Many channels to one, in double as fractions of full scale; the write rule clamps a loud sum. `kChannels` 0
/// takes the count from `channels`.
template <class Rule, Fold kFold, uint32_t kChannels>
void FoldToOne(uint8_t* dest, const uint8_t* source, uint32_t channels, int64_t frames) noexcept {
  const uint32_t count = kChannels ? kChannels : channels;
  const double divisor = kFold == Fold::kMean ? static_cast<double>(count) : 1.0;
  for (int64_t frame = 0; frame < frames; ++frame) {
    double sum = ReadUnit<Rule>(source);
    for (uint32_t channel = 1; channel < count; ++channel) sum += ReadUnit<Rule>(source + channel * Rule::kBytes);
    if constexpr (kFold == Fold::kMean) sum /= divisor;
    WriteUnit<Rule>(dest, sum);
    dest += Rule::kBytes;
    source += size_t{count} * Rule::kBytes;
  }
}

template <Fold kFold>
HRESULT FoldChannels(void* dest, const void* source, const FormatSide& side, int64_t frames) noexcept {
  const bool known = VisitRule(MemoryRules{}, side.sampleType, [&](auto rule) {
    using Rule = decltype(rule);
    auto* to = static_cast<uint8_t*>(dest);
    const auto* from = static_cast<const uint8_t*>(source);
    if (side.channels == 2) {
      FoldToOne<Rule, kFold, 2>(to, from, 2, frames);
    } else {
      FoldToOne<Rule, kFold, 0>(to, from, side.channels, frames);
    }
  });
  return known ? S_OK : E_FAIL;
}

/// One channel to many, from the last frame to the first: the source may stand at the start of `dest`.
HRESULT Spread(void* dest, uint32_t destChannels, const void* source, uint32_t sampleType, int64_t frames) noexcept {
  return VisitSampleBytes(ZrAudio_BytesFromSampleType(sampleType), [&](auto bytes) {
    for (auto frame = static_cast<size_t>(frames); frame-- > 0;) {
      uint8_t sample[bytes];
      MoveSample<bytes>(sample, static_cast<const uint8_t*>(source) + frame * bytes);
      uint8_t* to = static_cast<uint8_t*>(dest) + frame * destChannels * bytes;
      for (uint32_t channel = 0; channel < destChannels; ++channel) MoveSample<bytes>(to + channel * bytes, sample);
    }
  });
}

template <Fold kFold, class Format>
HRESULT ChannelChange(void* dest, uint32_t destChannels, const void* source, const Format* sourceFormat,
                      int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  const FormatSide side = SideOf(sourceFormat);
  if (destChannels == 0 || side.channels == 0) return E_FAIL;
  if (destChannels == side.channels) return ZrAudio_Copy(sourceFormat, dest, sourceFormat, source, frames, 1.0f);
  if (destChannels == 1) return FoldChannels<kFold>(dest, source, side, frames);
  if (side.channels == 1) return Spread(dest, destChannels, source, side.sampleType, frames);
  return E_FAIL;
}

/// The mean of a frame into each of its channels. Integers stay whole: raw values, division towards zero.
template <class Rule, uint32_t kChannels>
void MeanToAll(uint8_t* dest, const uint8_t* source, uint32_t channels, int64_t frames) noexcept {
  using Sum = std::conditional_t<Rule::kInteger, int64_t, double>;
  const uint32_t count = kChannels ? kChannels : channels;
  const size_t stride = size_t{count} * Rule::kBytes;
  for (int64_t frame = 0; frame < frames; ++frame, dest += stride, source += stride) {
    Sum sum = 0;
    for (uint32_t channel = 0; channel < count; ++channel) {
      sum += static_cast<Sum>(Rule::Read(source + channel * Rule::kBytes));
    }
    const auto mean = static_cast<typename Rule::Raw>(sum / static_cast<Sum>(count));
    for (uint32_t channel = 0; channel < count; ++channel) Rule::Write(dest + channel * Rule::kBytes, mean);
  }
}

template <class Format>
HRESULT MonoChannel(void* dest, const void* source, const Format* format, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  const FormatSide side = SideOf(format);
  if (side.channels == 0) return E_FAIL;
  if (side.channels == 1) return ZrAudio_Copy(format, dest, format, source, frames, 1.0f);
  const bool known = VisitRule(MemoryRules{}, side.sampleType, [&](auto rule) {
    using Rule = decltype(rule);
    auto* to = static_cast<uint8_t*>(dest);
    const auto* from = static_cast<const uint8_t*>(source);
    if (side.channels == 2) {
      MeanToAll<Rule, 2>(to, from, 2, frames);
    } else {
      MeanToAll<Rule, 0>(to, from, side.channels, frames);
    }
  });
  return known ? S_OK : E_FAIL;
}

}  // namespace
}  // namespace marlo

using marlo::Fold;

HRESULT ZrAudio_ChannelChange(void* dest, uint32_t destChannels, const void* source, const WAVEFORMATEX* sourceFormat,
                              int64_t frames) noexcept {
  return marlo::ChannelChange<Fold::kSum>(dest, destChannels, source, sourceFormat, frames);
}

HRESULT ZrAudio_ChannelChange(void* dest, uint32_t destChannels, const void* source, const _zrwaveformat* sourceFormat,
                              int64_t frames) noexcept {
  return marlo::ChannelChange<Fold::kSum>(dest, destChannels, source, sourceFormat, frames);
}

HRESULT ZrAudio_ChannelChangeAvg(void* dest, uint32_t destChannels, const void* source,
                                 const WAVEFORMATEX* sourceFormat, int64_t frames) noexcept {
  return marlo::ChannelChange<Fold::kMean>(dest, destChannels, source, sourceFormat, frames);
}

HRESULT ZrAudio_ChannelChangeAvg(void* dest, uint32_t destChannels, const void* source,
                                 const _zrwaveformat* sourceFormat, int64_t frames) noexcept {
  return marlo::ChannelChange<Fold::kMean>(dest, destChannels, source, sourceFormat, frames);
}

HRESULT ZrAudio_MonoChannel(void* dest, const void* source, const WAVEFORMATEX* format, int64_t frames) noexcept {
  return marlo::MonoChannel(dest, source, format, frames);
}

HRESULT ZrAudio_MonoChannel(void* dest, const void* source, const _zrwaveformat* format, int64_t frames) noexcept {
  return marlo::MonoChannel(dest, source, format, frames);
}
