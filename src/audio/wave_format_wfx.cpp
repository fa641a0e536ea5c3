// SPDX-License-Identifier: Apache-2.0
// WAVEFORMATEX in its plain and its extensible shape: filling it and asking it.
#include <cstring>

#include "audio/wave_format.h"

namespace marlo {

ExtraBytes ExtraOf(const WAVEFORMATEX* wfx) noexcept {
  const auto* bytes = reinterpret_cast<const uint8_t*>(wfx);
  switch (wfx->wFormatTag) {
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_IEEE_FLOAT:
      return {nullptr, 0};
    case WAVE_FORMAT_EXTENSIBLE:
      if (wfx->cbSize <= kExtensibleBytes) return {nullptr, 0};
      return {bytes + sizeof(WAVEFORMATEXTENSIBLE), wfx->cbSize - kExtensibleBytes};
    default:
      if (wfx->cbSize == 0) return {nullptr, 0};
      return {bytes + sizeof(WAVEFORMATEX), wfx->cbSize};
  }
}

GUID SubFormatOf(uint32_t tag) noexcept {
  uint8_t bytes[sizeof(GUID)];
  std::memcpy(bytes + 2, kWaveSubFormatBase, sizeof(kWaveSubFormatBase));
  std::memcpy(bytes, &tag, sizeof(tag));
  GUID subFormat;
  std::memcpy(&subFormat, bytes, sizeof(subFormat));
  return subFormat;
}

bool TagOfSubFormat(const WAVEFORMATEXTENSIBLE& wfext, uint16_t& tag) noexcept {
  uint8_t bytes[sizeof(GUID)];
  std::memcpy(bytes, reinterpret_cast<const uint8_t*>(&wfext) + offsetof(WAVEFORMATEXTENSIBLE, SubFormat),
              sizeof(bytes));
  if (std::memcmp(bytes + 2, kWaveSubFormatBase, sizeof(kWaveSubFormatBase)) != 0) return false;
  std::memcpy(&tag, bytes, sizeof(tag));
  return true;
}

namespace {

/// The head of a format without extra bytes. Whole bytes of a sample come first: 20 bits count as two.
WAVEFORMATEX PlainFormat(uint16_t tag, uint32_t samplesPerSec, uint16_t bits, uint16_t channels) noexcept {
  WAVEFORMATEX wfx = {};
  wfx.wFormatTag = tag;
  wfx.nChannels = channels;
  wfx.nSamplesPerSec = samplesPerSec;
  wfx.nBlockAlign = static_cast<uint16_t>(bits / 8 * channels);
  wfx.nAvgBytesPerSec = wfx.nBlockAlign * samplesPerSec;
  wfx.wBitsPerSample = bits;
  return wfx;
}

}  // namespace
}  // namespace marlo

using marlo::AsExtensible;

void ZrAudio_InitWfx(WAVEFORMATEX* wfx, uint32_t samplesPerSec, uint32_t sampleType, uint16_t channels) noexcept {
  if (!wfx) return;
  *wfx = marlo::PlainFormat(ZrAudio_FormatTagFromSampleType(sampleType), samplesPerSec,
                            ZrAudio_BitsFromSampleType(sampleType), channels);
}

void ZrAudio_InitWfxFlex(WAVEFORMATEX* wfx, uint16_t tag, uint32_t samplesPerSec, uint16_t bits, uint16_t channels,
                         uint32_t channelMask, uint32_t structSize) noexcept {
  if (!wfx || structSize < sizeof(WAVEFORMATEX)) return;
  WAVEFORMATEXTENSIBLE wfext = {};
  wfext.Format = marlo::PlainFormat(tag, samplesPerSec, bits, channels);
  size_t bytes = sizeof(WAVEFORMATEX);
  if (marlo::SpeakersNeedExtensible(channelMask, channels) && structSize >= sizeof(WAVEFORMATEXTENSIBLE)) {
    wfext.Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    wfext.Format.cbSize = marlo::kExtensibleBytes;
    wfext.Samples.wValidBitsPerSample = bits;
    wfext.dwChannelMask = channelMask;
    wfext.SubFormat = marlo::SubFormatOf(tag);
    bytes = sizeof(WAVEFORMATEXTENSIBLE);
  }
  std::memcpy(static_cast<void*>(wfx), &wfext, bytes);
}

int32_t ZrAudio_FixBadWfx(WAVEFORMATEX* wfx) noexcept {
  if (!wfx || wfx->wFormatTag != WAVE_FORMAT_PCM) return 0;
  int32_t changed = 0;
  if (wfx->wBitsPerSample == 20) {
    wfx->wBitsPerSample = 24;
    changed = 1;
  }
  const auto blockAlign = static_cast<uint16_t>(wfx->wBitsPerSample / 8 * wfx->nChannels);
  if (wfx->nBlockAlign != blockAlign) {
    wfx->nBlockAlign = blockAlign;
    changed = 1;
  }
  return changed;
}

int32_t ZrAudio_IsCompressed(const WAVEFORMATEX* wfx) noexcept {
  if (!wfx) return 0;
  switch (wfx->wFormatTag) {
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_IEEE_FLOAT:
    case ZR_FORMAT_PCM_UNPACKED:
    case ZR_FORMAT_PCM_SIGNED:
    case ZR_FORMAT_PCM_BIG_ENDIAN:
      return wfx->nBlockAlign != wfx->wBitsPerSample / 8 * wfx->nChannels;
    case WAVE_FORMAT_EXTENSIBLE:
      return ZrAudio_IsCompressedExtensible(reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(wfx));
    default:
      return 1;
  }
}

int32_t ZrAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* wfext) noexcept {
  if (!wfext) return 0;
  return wfext->Format.cbSize < marlo::kExtensibleBytes || !ZrAudio_GetFormatTagExtensible(wfext, nullptr);
}

uint16_t ZrAudio_GetWaveFormatTag(const WAVEFORMATEX* wfx) noexcept {
  if (!wfx) return 0;
  const WAVEFORMATEXTENSIBLE* extensible = AsExtensible(wfx);
  if (!extensible) return wfx->wFormatTag;
  uint16_t tag = 0;
  return marlo::TagOfSubFormat(*extensible, tag) ? tag : 0;
}

int32_t ZrAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* wfext, uint16_t* tag) noexcept {
  uint16_t found = 0;
  if (!wfext || !marlo::TagOfSubFormat(*wfext, found)) return 0;
  if (found != WAVE_FORMAT_PCM && found != WAVE_FORMAT_IEEE_FLOAT) return 0;
  if (tag) *tag = found;
  return 1;
}

int32_t ZrAudio_IsEqualFormat(const WAVEFORMATEX* left, const WAVEFORMATEX* right) noexcept {
  if (!left || !right) return 0;
  return left->nChannels == right->nChannels && left->nSamplesPerSec == right->nSamplesPerSec &&
         left->wBitsPerSample == right->wBitsPerSample && left->wFormatTag == right->wFormatTag;
}
