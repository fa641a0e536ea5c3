// SPDX-License-Identifier: Apache-2.0
// Silence: a whole block, one channel of it, and a block that repeats one frame.
#include <algorithm>
#include <cstring>

#include "audio/format_sides.h"
#include "audio/sample_bytes.h"
#include "audio/wave_format.h"
#include "marlo110k/channels.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

constexpr int kOffsetSilence = 0x80;

int SilenceByte(uint32_t sampleType) noexcept { return sampleType == ZRSAMPLETYPE_PCM8 ? kOffsetSilence : 0; }

void Fill(void* buffer, int byte, uint32_t blockAlign, int64_t frames) noexcept {
  std::memset(buffer, byte, static_cast<size_t>(frames) * blockAlign);
}

HRESULT FillByTag(const WAVEFORMATEX* format, void* buffer, int64_t frames) noexcept {
  int byte = 0;
  switch (format->wFormatTag) {
    case WAVE_FORMAT_PCM:
    case ZR_FORMAT_PCM_BIG_ENDIAN:
      byte = format->wBitsPerSample == 8 ? kOffsetSilence : 0;
      break;
    case WAVE_FORMAT_IEEE_FLOAT:
    case ZR_FORMAT_PCM_UNPACKED:
    case ZR_FORMAT_PCM_SIGNED:
      break;
    case WAVE_FORMAT_EXTENSIBLE: {
      const WAVEFORMATEXTENSIBLE* extensible = AsExtensible(format);
      uint16_t tag = 0;
      if (!extensible || !ZrAudio_GetFormatTagExtensible(extensible, &tag)) return S_OK;
      byte = tag == WAVE_FORMAT_PCM && format->wBitsPerSample == 8 ? kOffsetSilence : 0;
      break;
    }
    default:
      return E_FAIL;
  }
  Fill(buffer, byte, format->nBlockAlign, frames);
  return S_OK;
}

HRESULT MuteChannel(void* buffer, uint32_t sampleType, uint32_t channels, uint32_t channel, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (channel >= channels) return E_FAIL;
  const uint32_t sampleBytes = ZrAudio_BytesFromSampleType(sampleType);
  const int byte = SilenceByte(sampleType);
  return VisitSampleBytes(sampleBytes, [&](auto bytes) {
    const size_t stride = size_t{channels} * bytes;
    if (channels == 1) return Fill(buffer, byte, sampleBytes, frames);
    uint8_t* sample = static_cast<uint8_t*>(buffer) + channel * bytes;
    for (int64_t frame = 0; frame < frames; ++frame, sample += stride) std::memset(sample, byte, bytes);
  });
}

/// The pairs for which a stereo frame is converted before it is repeated.
bool ConvertsFrame(uint32_t destType, uint32_t sourceType) noexcept {
  const auto isSource = [](uint32_t type) {
    return type == ZRSAMPLETYPE_PCM16 || type == ZRSAMPLETYPE_PCM24 || type == ZRSAMPLETYPE_FLOAT32 ||
           type == ZRSAMPLETYPE_FLOAT64 || type == ZRSAMPLETYPE_PCM24UNPACKED;
  };
  return isSource(sourceType) && (isSource(destType) || destType == ZRSAMPLETYPE_PCM32);
}

/// Repeats the frame at the start of `dest`, doubling what is there.
void RepeatFirstFrame(uint8_t* dest, size_t frameBytes, int64_t frames) noexcept {
  for (int64_t done = 1; done < frames;) {
    const int64_t more = std::min(done, frames - done);
    std::memcpy(dest + static_cast<size_t>(done) * frameBytes, dest, static_cast<size_t>(more) * frameBytes);
    done += more;
  }
}

template <class Format>
HRESULT FillWithSample(const Format* destFormat, void* dest, const Format* sourceFormat, const void* frame,
                       int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  const FormatSide to = SideOf(destFormat);
  const FormatSide from = SideOf(sourceFormat);
  const size_t frameBytes = size_t{ZrAudio_BytesFromSampleType(to.sampleType)} * to.channels;
  if (to.channels != from.channels || frameBytes == 0) return ZrAudio_FillSilence(destFormat, dest, frames);
  if (to.sampleType == from.sampleType) {
    std::memmove(dest, frame, frameBytes);
  } else {
    if (to.channels != 2 || !ConvertsFrame(to.sampleType, from.sampleType)) {
      return ZrAudio_FillSilence(destFormat, dest, frames);
    }
    ZrAudio_GetCopyFunction2(to.sampleType, from.sampleType)(dest, frame, 2, 1.0f);
  }
  RepeatFirstFrame(static_cast<uint8_t*>(dest), frameBytes, frames);
  return S_OK;
}

}  // namespace
}  // namespace marlo

using marlo::SideOf;

HRESULT ZrAudio_FillSilence(const WAVEFORMATEX* format, void* buffer, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  return format ? marlo::FillByTag(format, buffer, frames) : E_FAIL;
}

HRESULT ZrAudio_FillSilence(const _zrwaveformat* format, void* buffer, int64_t frames) noexcept {
  if (frames <= 0) return S_OK;
  if (!format || format->sampleType == ZRSAMPLETYPE_NONE) return E_FAIL;
  marlo::Fill(buffer, marlo::SilenceByte(format->sampleType), format->blockAlign, frames);
  return S_OK;
}

HRESULT ZrAudio_FillSilenceChannel(const WAVEFORMATEX* format, void* buffer, uint32_t channel,
                                   int64_t frames) noexcept {
  return ZrAudio_MuteChannel(buffer, format, channel, frames);
}

HRESULT ZrAudio_FillSilenceChannel(const _zrwaveformat* format, void* buffer, uint32_t channel,
                                   int64_t frames) noexcept {
  return ZrAudio_MuteChannel(buffer, format, channel, frames);
}

HRESULT ZrAudio_MuteChannel(void* buffer, const WAVEFORMATEX* format, uint32_t channel, int64_t frames) noexcept {
  const marlo::FormatSide side = SideOf(format);
  return marlo::MuteChannel(buffer, side.sampleType, side.channels, channel, frames);
}

HRESULT ZrAudio_MuteChannel(void* buffer, const _zrwaveformat* format, uint32_t channel, int64_t frames) noexcept {
  const marlo::FormatSide side = SideOf(format);
  return marlo::MuteChannel(buffer, side.sampleType, side.channels, channel, frames);
}

HRESULT ZrAudio_MuteChannel(void* buffer, uint32_t sampleType, uint32_t channels, uint32_t channel,
                            int64_t frames) noexcept {
  return marlo::MuteChannel(buffer, sampleType, channels, channel, frames);
}

HRESULT ZrAudio_FillWithSample(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                               const void* frame, int64_t frames) noexcept {
  return marlo::FillWithSample(destFormat, dest, sourceFormat, frame, frames);
}

HRESULT ZrAudio_FillWithSample(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                               const void* frame, int64_t frames) noexcept {
  return marlo::FillWithSample(destFormat, dest, sourceFormat, frame, frames);
}
