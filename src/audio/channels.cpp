// SPDX-License-Identifier: Apache-2.0
// Moving channels as they are: inside frames, and between interleaved and single-channel buffers.
#include "marlo110k/channels.h"

#include "audio/format_sides.h"
#include "audio/sample_bytes.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

uint32_t BytesOf(const FormatSide& side) noexcept { return ZrAudio_BytesFromSampleType(side.sampleType); }

HRESULT CopyChannelToChannel(void* buffer, const FormatSide& side, uint32_t from, uint32_t to,
                             int64_t frames) noexcept {
  if (frames <= 0 || side.channels == 1) return S_OK;
  if (side.sampleType > ZRSAMPLETYPE_FLOAT64 || from >= side.channels || to >= side.channels) return E_FAIL;
  return VisitSampleBytes(BytesOf(side), [&](auto bytes) {
    const size_t stride = side.channels * bytes;
    auto* first = static_cast<uint8_t*>(buffer);
    MoveStrided<bytes>(first + to * bytes, stride, first + from * bytes, stride, frames);
  });
}

/// Both samples are read before either is written, so that a buffer may be copied onto itself.
template <size_t kBytes>
void SwapPairs(uint8_t* dest, const uint8_t* source, size_t stride, int64_t frames) noexcept {
  for (int64_t frame = 0; frame < frames; ++frame, dest += stride, source += stride) {
    uint8_t left[kBytes];
    MoveSample<kBytes>(left, source);
    MoveSample<kBytes>(dest, source + kBytes);
    MoveSample<kBytes>(dest + kBytes, left);
  }
}

HRESULT CopySwapStereoChannels(void* dest, const void* source, const FormatSide& side, int64_t frames) noexcept {
  if (frames <= 0 || side.channels == 1) return S_OK;
  if (side.channels == 0) return E_FAIL;
  return VisitSampleBytes(BytesOf(side), [&](auto bytes) {
    const size_t stride = side.channels * bytes;
    auto* to = static_cast<uint8_t*>(dest);
    const auto* from = static_cast<const uint8_t*>(source);
    if (side.channels > 2 && dest != source) std::memcpy(dest, source, stride * static_cast<size_t>(frames));
    SwapPairs<bytes>(to, from, stride, frames);
  });
}

HRESULT ExtractChannel(void* dest, uint32_t channel, const void* source, const FormatSide& side,
                       int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (channel >= side.channels) return E_FAIL;
  if (side.channels == 1) {
    const ZRAUDIOCOPYFUNCTION copy = ZrAudio_GetCopyFunction2(side.sampleType, side.sampleType);
    if (!copy) return E_FAIL;
    copy(dest, source, frames, 1.0f);
    return S_OK;
  }
  return VisitSampleBytes(BytesOf(side), [&](auto bytes) {
    auto* to = static_cast<uint8_t*>(dest);
    const auto* from = static_cast<const uint8_t*>(source) + channel * bytes;
    // A stride that the compiler knows is worth a body of its own.
    if (side.channels == 2) {
      MoveStrided<bytes>(to, bytes, from, 2 * bytes, frames);
    } else {
      MoveStrided<bytes>(to, bytes, from, side.channels * bytes, frames);
    }
  });
}

template <size_t kBytes>
void MovePairs(uint8_t* dest, const uint8_t* source, size_t sourceStride, int64_t frames) noexcept {
  for (int64_t frame = 0; frame < frames; ++frame, dest += 2 * kBytes, source += sourceStride) {
    MoveSample<kBytes>(dest, source);
    MoveSample<kBytes>(dest + kBytes, source + kBytes);
  }
}

template <class Format>
HRESULT ExtractChannelPair(void* dest, uint32_t firstChannel, const void* source, const Format* format,
                           int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  const FormatSide side = SideOf(format);
  if (side.channels < 2 || firstChannel > side.channels - 2) return E_FAIL;
  if (side.channels == 2) return ZrAudio_Copy(format, dest, format, source, frames, 1.0f);
  return VisitSampleBytes(BytesOf(side), [&](auto bytes) {
    const auto* from = static_cast<const uint8_t*>(source) + firstChannel * bytes;
    MovePairs<bytes>(static_cast<uint8_t*>(dest), from, side.channels * bytes, frames);
  });
}

/// Narrower or equal frames are written from the first to the last, wider ones from the last to the first, so
/// that both pointers may stand at the start of one buffer.
template <size_t kBytes>
void SpreadSample(uint8_t* dest, uint32_t destChannels, const uint8_t* source, uint32_t sourceChannels,
                  uint32_t channel, int64_t frames) noexcept {
  const bool backward = destChannels > sourceChannels;
  for (int64_t step = 0; step < frames; ++step) {
    const auto frame = static_cast<size_t>(backward ? frames - 1 - step : step);
    uint8_t sample[kBytes];
    MoveSample<kBytes>(sample, source + (frame * sourceChannels + channel) * kBytes);
    uint8_t* to = dest + frame * destChannels * kBytes;
    for (uint32_t index = 0; index < destChannels; ++index) MoveSample<kBytes>(to + index * kBytes, sample);
  }
}

HRESULT CopyChannelToAll(void* dest, const void* source, const FormatSide& from, const FormatSide& to, uint32_t channel,
                         int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (from.sampleType != to.sampleType) return E_NOTIMPL;
  if (to.channels == 1) return ExtractChannel(dest, channel, source, from, frames);
  if (channel >= from.channels || to.channels == 0) return E_FAIL;
  return VisitSampleBytes(BytesOf(to), [&](auto bytes) {
    SpreadSample<bytes>(static_cast<uint8_t*>(dest), to.channels, static_cast<const uint8_t*>(source), from.channels,
                        channel, frames);
  });
}

HRESULT CopyChannelToMultiMono(void* dest, const FormatSide& to, const void* source, const FormatSide& from,
                               uint32_t channel, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (to.sampleType != from.sampleType) return E_INVALIDARG;
  return ZrAudio_CopyChannelToMultiMono2(dest, to.channels, source, from.channels, channel, frames, from.sampleType);
}

}  // namespace
}  // namespace marlo

using marlo::SideOf;

HRESULT ZrAudio_CopyChannelToChannel(void* buffer, const WAVEFORMATEX* format, uint32_t from, uint32_t to,
                                     int64_t frames) noexcept {
  return marlo::CopyChannelToChannel(buffer, SideOf(format), from, to, frames);
}

HRESULT ZrAudio_CopyChannelToChannel(void* buffer, const _zrwaveformat* format, uint32_t from, uint32_t to,
                                     int64_t frames) noexcept {
  return marlo::CopyChannelToChannel(buffer, SideOf(format), from, to, frames);
}

HRESULT ZrAudio_SwapStereoChannels(void* buffer, const WAVEFORMATEX* format, int64_t frames) noexcept {
  return marlo::CopySwapStereoChannels(buffer, buffer, SideOf(format), frames);
}

HRESULT ZrAudio_SwapStereoChannels(void* buffer, const _zrwaveformat* format, int64_t frames) noexcept {
  return marlo::CopySwapStereoChannels(buffer, buffer, SideOf(format), frames);
}

HRESULT ZrAudio_CopySwapStereoChannels(void* dest, const void* source, const WAVEFORMATEX* format,
                                       int64_t frames) noexcept {
  return marlo::CopySwapStereoChannels(dest, source, SideOf(format), frames);
}

HRESULT ZrAudio_CopySwapStereoChannels(void* dest, const void* source, const _zrwaveformat* format,
                                       int64_t frames) noexcept {
  return marlo::CopySwapStereoChannels(dest, source, SideOf(format), frames);
}

HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, const WAVEFORMATEX* format,
                               int64_t frames) noexcept {
  return marlo::ExtractChannel(dest, channel, source, SideOf(format), frames);
}

HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, const _zrwaveformat* format,
                               int64_t frames) noexcept {
  return marlo::ExtractChannel(dest, channel, source, SideOf(format), frames);
}

HRESULT ZrAudio_ExtractChannel(void* dest, uint32_t channel, const void* source, uint32_t sampleType, uint32_t channels,
                               int64_t frames) noexcept {
  return marlo::ExtractChannel(dest, channel, source, {sampleType, channels, 0}, frames);
}

HRESULT ZrAudio_ExtractChannelPair(void* dest, uint32_t firstChannel, const void* source, const WAVEFORMATEX* format,
                                   int64_t frames) noexcept {
  return marlo::ExtractChannelPair(dest, firstChannel, source, format, frames);
}

HRESULT ZrAudio_ExtractChannelPair(void* dest, uint32_t firstChannel, const void* source, const _zrwaveformat* format,
                                   int64_t frames) noexcept {
  return marlo::ExtractChannelPair(dest, firstChannel, source, format, frames);
}

HRESULT ZrAudio_InsertChannel(void* dest, uint32_t sampleType, uint32_t destChannels, uint32_t channel,
                              const void* source, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (channel >= destChannels) return E_FAIL;
  if (destChannels == 1) return marlo::ExtractChannel(dest, 0, source, {sampleType, 1, 0}, frames);
  return marlo::VisitSampleBytes(ZrAudio_BytesFromSampleType(sampleType), [&](auto bytes) {
    auto* to = static_cast<uint8_t*>(dest) + channel * bytes;
    marlo::MoveStrided<bytes>(to, destChannels * bytes, static_cast<const uint8_t*>(source), bytes, frames);
  });
}

HRESULT ZrAudio_CopyChannelToAll(void* dest, const void* source, const WAVEFORMATEX* sourceFormat,
                                 const WAVEFORMATEX* destFormat, uint32_t channel, int64_t frames) noexcept {
  return marlo::CopyChannelToAll(dest, source, SideOf(sourceFormat), SideOf(destFormat), channel, frames);
}

HRESULT ZrAudio_CopyChannelToAll(void* dest, const void* source, const _zrwaveformat* sourceFormat,
                                 const _zrwaveformat* destFormat, uint32_t channel, int64_t frames) noexcept {
  return marlo::CopyChannelToAll(dest, source, SideOf(sourceFormat), SideOf(destFormat), channel, frames);
}

HRESULT ZrAudio_CopyChannelToMultiMono2(void* dest, uint32_t destChannels, const void* source, uint32_t sourceChannels,
                                        uint32_t channel, int64_t frames, uint32_t sampleType) noexcept {
  if (frames <= 0) return S_OK;
  if (channel >= sourceChannels || destChannels == 0) return E_INVALIDARG;
  const HRESULT result = marlo::VisitSampleBytes(ZrAudio_BytesFromSampleType(sampleType), [&](auto bytes) {
    const auto* from = static_cast<const uint8_t*>(source) + channel * bytes;
    marlo::MoveStrided<bytes>(static_cast<uint8_t*>(dest), destChannels * bytes, from, sourceChannels * bytes, frames);
  });
  return FAILED(result) ? E_INVALIDARG : S_OK;
}

HRESULT ZrAudio_CopyChannelToMultiMono(void* dest, const WAVEFORMATEX* destFormat, const void* source,
                                       const WAVEFORMATEX* sourceFormat, uint32_t channel, int64_t frames) noexcept {
  return marlo::CopyChannelToMultiMono(dest, SideOf(destFormat), source, SideOf(sourceFormat), channel, frames);
}

HRESULT ZrAudio_CopyChannelToMultiMono(void* dest, const _zrwaveformat* destFormat, const void* source,
                                       const _zrwaveformat* sourceFormat, uint32_t channel, int64_t frames) noexcept {
  return marlo::CopyChannelToMultiMono(dest, SideOf(destFormat), source, SideOf(sourceFormat), channel, frames);
}
