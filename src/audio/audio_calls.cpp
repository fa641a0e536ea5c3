// SPDX-License-Identifier: Apache-2.0
// The calls on formats: getters for two descriptors, and look-up and run in one step.
#include "audio/format_sides.h"
#include "audio/mix.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

HRESULT Copy(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames, float gain) noexcept {
  if (frames <= 0) return S_OK;
  const auto copy = ZrAudio_GetCopyFunction2(to.sampleType, from.sampleType);
  if (!copy) return E_NOTIMPL;
  copy(dest, source, frames * from.channels, gain);
  return S_OK;
}

/// Whether a map sends a source channel to a channel that the destination has.
bool IsMapped(const int32_t* map, uint32_t channel, FormatSide to) noexcept {
  return map[channel] >= 0 && static_cast<uint32_t>(map[channel]) < to.channels;
}

HRESULT CopyChannels(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames,
                     const int32_t* map) noexcept {
  if (!map) return Copy(to, dest, from, source, frames, 1.0f);
  if (frames <= 0) return S_OK;
  const auto copy = ZrAudio_GetCopyChannelsFunction2(to.sampleType, from.sampleType);
  if (!copy) return E_NOTIMPL;
  for (uint32_t channel = 0; channel < from.channels; ++channel) {
    if (!IsMapped(map, channel, to)) continue;
    copy(dest, to.channels, static_cast<uint32_t>(map[channel]), source, from.channels, channel, frames);
  }
  return S_OK;
}

HRESULT Mix(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames,
            const double* gains) noexcept {
  if (frames <= 0) return S_OK;
  const auto mix = ZrAudio_GetMixFunction2(to.sampleType, from.sampleType);
  if (!mix) return E_NOTIMPL;
  mix(dest, source, frames * from.channels, from.channels, gains);
  return S_OK;
}

HRESULT MixChannels(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames, const int32_t* map,
                    const double* gains) noexcept {
  if (!map) return Mix(to, dest, from, source, frames, gains);
  if (frames <= 0) return S_OK;
  const auto mix = ZrAudio_GetMixChannelsFunction2(to.sampleType, from.sampleType);
  if (!mix) return E_NOTIMPL;
  for (uint32_t channel = 0; channel < from.channels; ++channel) {
    if (!IsMapped(map, channel, to)) continue;
    mix(dest, to.channels, static_cast<uint32_t>(map[channel]), source, from.channels, channel, frames, gains[channel]);
  }
  return S_OK;
}

/// Mix at gain 1.0. Wider frames share a table of four entries: the gains are all the same.
HRESULT MixAtUnity(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames) noexcept {
  static constexpr double kUnity[4] = {1.0, 1.0, 1.0, 1.0};
  const auto mix = ZrAudio_GetMixFunction2(to.sampleType, from.sampleType);
  if (!mix) return E_NOTIMPL;
  mix(dest, source, frames * from.channels, from.channels < 4 ? from.channels : 4, kUnity);
  return S_OK;
}

/// Bytes of one sample, 0 for what no kernel knows.
uint32_t BytesOf(uint32_t sampleType) noexcept {
  uint32_t bytes = 0;
  VisitRule(AllRules{}, sampleType, [&bytes](auto rule) { bytes = decltype(rule)::kBytes; });
  return bytes;
}

HRESULT MixEx(FormatSide to, void* dest, FormatSide from, const void* source, int64_t frames,
              tZRASRCOOKED* cooked) noexcept {
  if (frames <= 0) return S_OK;
  if (!cooked) return MixAtUnity(to, dest, from, source, frames);
  const auto ramp = MixRampMember(to.sampleType, from.sampleType);
  if (!ramp) {
    const HRESULT result = MixAtUnity(to, dest, from, source, frames);
    return FAILED(result) ? result : 1;
  }
  const int64_t destFrameBytes = int64_t{from.channels} * BytesOf(to.sampleType);
  const int64_t sourceFrameBytes = int64_t{from.channels} * BytesOf(from.sampleType);
  auto* destBytes = static_cast<uint8_t*>(dest);
  const auto* sourceBytes = static_cast<const uint8_t*>(source);
  for (;;) {
    const int64_t part = frames < cooked->remaining ? frames : cooked->remaining;
    if (part > 0) {
      ramp(destBytes, sourceBytes, part, from.channels, cooked);
      cooked->position += part;
      cooked->remaining -= part;
      frames -= part;
      if (frames == 0) return S_OK;
      destBytes += part * destFrameBytes;
      sourceBytes += part * sourceFrameBytes;
    }
    if (cooked->remaining <= 0) ZrAudio_ASRReCook(cooked, cooked->position);
  }
}

template <class Rule>
void MultiplySamples(uint8_t* sample, int64_t samples, uint32_t channels, const double* gains) noexcept {
  uint32_t channel = 0;
  for (int64_t n = 0; n < samples; ++n, sample += Rule::kBytes) {
    Rule::Write(sample, Rule::Read(sample) * static_cast<typename Rule::Raw>(gains[channel]));
    channel = channel + 1 == channels ? 0 : channel + 1;
  }
}

HRESULT SetGain(void* buffer, FormatSide format, int64_t frames, const double* gains) noexcept {
  HRESULT result = E_FAIL;
  VisitRule(RuleList<Float32Rule, Float64Rule>{}, format.sampleType, [&](auto rule) noexcept {
    const int64_t samples = frames * format.channels;
    MultiplySamples<decltype(rule)>(static_cast<uint8_t*>(buffer), samples, format.channels, gains);
    result = S_OK;
  });
  return result;
}

}  // namespace
}  // namespace marlo

using marlo::SideOf;

// ---- Getters for two formats -------------------------------------------------------------------------

ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const WAVEFORMATEX* destFormat, const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetCopyFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const WAVEFORMATEX* destFormat,
                                            const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetCopyFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const _zrwaveformat* destFormat,
                                            const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetCopyFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction(const _zrwaveformat* destFormat,
                                            const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetCopyFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const WAVEFORMATEX* destFormat,
                                                            const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetCopyChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const WAVEFORMATEX* destFormat,
                                                            const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetCopyChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const _zrwaveformat* destFormat,
                                                            const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetCopyChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction(const _zrwaveformat* destFormat,
                                                            const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetCopyChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const WAVEFORMATEX* destFormat, const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetMixFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const WAVEFORMATEX* destFormat, const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetMixFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const _zrwaveformat* destFormat, const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetMixFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction(const _zrwaveformat* destFormat, const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetMixFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const WAVEFORMATEX* destFormat,
                                                          const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetMixChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const WAVEFORMATEX* destFormat,
                                                          const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetMixChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const _zrwaveformat* destFormat,
                                                          const WAVEFORMATEX* sourceFormat) noexcept {
  return ZrAudio_GetMixChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction(const _zrwaveformat* destFormat,
                                                          const _zrwaveformat* sourceFormat) noexcept {
  return ZrAudio_GetMixChannelsFunction2(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const WAVEFORMATEX* destFormat,
                                                const WAVEFORMATEX* sourceFormat) noexcept {
  return marlo::MixRampMember(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const WAVEFORMATEX* destFormat,
                                                const _zrwaveformat* sourceFormat) noexcept {
  return marlo::MixRampMember(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const _zrwaveformat* destFormat,
                                                const WAVEFORMATEX* sourceFormat) noexcept {
  return marlo::MixRampMember(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

ZRAUDIOMIXRAMPFUNCTION ZrAudio_GetMixExFunction(const _zrwaveformat* destFormat,
                                                const _zrwaveformat* sourceFormat) noexcept {
  return marlo::MixRampMember(SideOf(destFormat).sampleType, SideOf(sourceFormat).sampleType);
}

// ---- Look-up and run ---------------------------------------------------------------------------------

HRESULT ZrAudio_Copy(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                     int64_t frames, float gain) noexcept {
  return marlo::Copy(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gain);
}

HRESULT ZrAudio_Copy(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat, const void* source,
                     int64_t frames, float gain) noexcept {
  return marlo::Copy(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gain);
}

HRESULT ZrAudio_Copy(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                     int64_t frames, float gain) noexcept {
  return marlo::Copy(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gain);
}

HRESULT ZrAudio_Copy(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat, const void* source,
                     int64_t frames, float gain) noexcept {
  return marlo::Copy(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gain);
}

HRESULT ZrAudio_CopyChannels(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                             const void* source, int64_t frames, const int32_t* map) noexcept {
  return marlo::CopyChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map);
}

HRESULT ZrAudio_CopyChannels(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                             const void* source, int64_t frames, const int32_t* map) noexcept {
  return marlo::CopyChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map);
}

HRESULT ZrAudio_CopyChannels(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                             const void* source, int64_t frames, const int32_t* map) noexcept {
  return marlo::CopyChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map);
}

HRESULT ZrAudio_CopyChannels(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                             const void* source, int64_t frames, const int32_t* map) noexcept {
  return marlo::CopyChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map);
}

HRESULT ZrAudio_Mix(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                    int64_t frames, const double* gains) noexcept {
  return marlo::Mix(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gains);
}

HRESULT ZrAudio_Mix(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat, const void* source,
                    int64_t frames, const double* gains) noexcept {
  return marlo::Mix(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gains);
}

HRESULT ZrAudio_Mix(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                    int64_t frames, const double* gains) noexcept {
  return marlo::Mix(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gains);
}

HRESULT ZrAudio_Mix(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat, const void* source,
                    int64_t frames, const double* gains) noexcept {
  return marlo::Mix(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, gains);
}

HRESULT ZrAudio_MixChannels(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                            const void* source, int64_t frames, const int32_t* map, const double* gains) noexcept {
  return marlo::MixChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map, gains);
}

HRESULT ZrAudio_MixChannels(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                            const void* source, int64_t frames, const int32_t* map, const double* gains) noexcept {
  return marlo::MixChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map, gains);
}

HRESULT ZrAudio_MixChannels(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                            const void* source, int64_t frames, const int32_t* map, const double* gains) noexcept {
  return marlo::MixChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map, gains);
}

HRESULT ZrAudio_MixChannels(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                            const void* source, int64_t frames, const int32_t* map, const double* gains) noexcept {
  return marlo::MixChannels(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, map, gains);
}

HRESULT ZrAudio_MixEx(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                      int64_t frames, tZRASRCOOKED* cooked) noexcept {
  return marlo::MixEx(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, cooked);
}

HRESULT ZrAudio_MixEx(const WAVEFORMATEX* destFormat, void* dest, const _zrwaveformat* sourceFormat, const void* source,
                      int64_t frames, tZRASRCOOKED* cooked) noexcept {
  return marlo::MixEx(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, cooked);
}

HRESULT ZrAudio_MixEx(const _zrwaveformat* destFormat, void* dest, const WAVEFORMATEX* sourceFormat, const void* source,
                      int64_t frames, tZRASRCOOKED* cooked) noexcept {
  return marlo::MixEx(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, cooked);
}

HRESULT ZrAudio_MixEx(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                      const void* source, int64_t frames, tZRASRCOOKED* cooked) noexcept {
  return marlo::MixEx(SideOf(destFormat), dest, SideOf(sourceFormat), source, frames, cooked);
}

HRESULT ZrAudio_SetGain(void* buffer, const WAVEFORMATEX* format, int64_t frames, const double* gains) noexcept {
  return marlo::SetGain(buffer, SideOf(format), frames, gains);
}

HRESULT ZrAudio_SetGain(void* buffer, const _zrwaveformat* format, int64_t frames, const double* gains) noexcept {
  return marlo::SetGain(buffer, SideOf(format), frames, gains);
}
