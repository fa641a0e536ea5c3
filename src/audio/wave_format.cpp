// SPDX-License-Identifier: Apache-2.0
// The members of the library's own format descriptor.
#include "audio/wave_format.h"

#include <algorithm>
#include <cstring>

namespace marlo {

ExtraBytes ExtraOf(const _zrwaveformat& format) noexcept {
  if (format.size < offsetof(_zrwaveformat, extra) || format.extraSize == 0) return {nullptr, 0};
  return {format.extra, std::min<uint32_t>(format.extraSize, kZrWaveFormatMaxExtraBytes)};
}

namespace {

/// Zeroes the part of a record that its owner made room for, and states that size.
void Clear(_zrwaveformat& format, uint32_t structSize) noexcept {
  const uint32_t bytes = std::max(structSize, kZrWaveFormatFixedBytes);
  std::memset(static_cast<void*>(&format), 0, bytes);
  format.size = bytes;
}

bool SameBytes(const ExtraBytes& left, const ExtraBytes& right) noexcept {
  return left.bytes == right.bytes && (left.bytes == 0 || std::memcmp(left.data, right.data, left.bytes) == 0);
}

}  // namespace
}  // namespace marlo

void _zrwaveformat::Init(uint32_t rate, uint32_t type, uint16_t channelCount, uint32_t mask,
                         uint32_t structSize) noexcept {
  marlo::Clear(*this, structSize);
  sampleType = type;
  samplesPerSec = rate;
  channels = channelCount;
  channelMask = mask;
  blockAlign = static_cast<uint16_t>(ZrAudio_BytesFromSampleType(type) * channelCount);
  avgBytesPerSec = blockAlign * rate;
}

void _zrwaveformat::Init(uint32_t structSize, const WAVEFORMATEX* wfx) noexcept {
  marlo::Clear(*this, structSize);
  size = kZrWaveFormatFixedBytes;
  if (!wfx) return;
  sampleType = ZrAudio_GetSampleType(wfx);
  samplesPerSec = wfx->nSamplesPerSec;
  channels = wfx->nChannels;
  blockAlign = wfx->nBlockAlign;
  avgBytesPerSec = wfx->nAvgBytesPerSec;
  if (wfx->wFormatTag == WAVE_FORMAT_PCM) {
    WAVEFORMATEX fixed = *wfx;
    ZrAudio_FixBadWfx(&fixed);
    blockAlign = fixed.nBlockAlign;
  }
  if (wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
    flags |= ZRWF_FROM_EXTENSIBLE;
    channelMask = marlo::ChannelMaskOf(wfx);
  }
  if (sampleType != ZRSAMPLETYPE_NONE) return;

  flags |= ZRWF_COMPRESSED;
  formatTag = ZrAudio_GetWaveFormatTag(wfx);
  bitsPerSample = wfx->wBitsPerSample;
  constexpr uint32_t kExtraOffset = offsetof(_zrwaveformat, extra);
  const uint32_t room = structSize > kExtraOffset ? structSize - kExtraOffset : 0;
  const marlo::ExtraBytes source = marlo::ExtraOf(wfx);
  const uint32_t kept = std::min({source.bytes, room, kZrWaveFormatMaxExtraBytes});
  if (kept == 0) return;
  extraSize = static_cast<uint16_t>(kept);
  std::memcpy(extra, source.data, kept);
  size = kZrWaveFormatFixedBytes + kept;
}

void _zrwaveformat::InitAsWfx(uint16_t tag, uint32_t rate, uint16_t bits, uint16_t channelCount, uint32_t mask,
                              uint32_t structSize) noexcept {
  marlo::Clear(*this, structSize);
  sampleType = ZrAudio_GetSampleType2(tag, bits);
  if (bits == 20 && sampleType == ZRSAMPLETYPE_PCM24) bits = 24;
  samplesPerSec = rate;
  channels = channelCount;
  channelMask = mask;
  if (sampleType == ZRSAMPLETYPE_NONE) {
    flags |= ZRWF_COMPRESSED;
    formatTag = tag;
    bitsPerSample = bits;
  }
  // All bits of a frame, then bytes: three channels of 12 bits are four bytes.
  blockAlign = static_cast<uint16_t>(static_cast<uint32_t>(channelCount) * bits / 8);
  avgBytesPerSec = blockAlign * rate;
}

uint16_t _zrwaveformat::UpdateBlockAlign() noexcept {
  if (sampleType != ZRSAMPLETYPE_NONE) {
    blockAlign = static_cast<uint16_t>(ZrAudio_BytesFromSampleType(sampleType) * channels);
    avgBytesPerSec = blockAlign * samplesPerSec;
  }
  return blockAlign;
}

uint16_t _zrwaveformat::FormatTag() const noexcept {
  return IsCompressed() ? formatTag : ZrAudio_FormatTagFromSampleType(sampleType);
}

uint16_t _zrwaveformat::BitsPerSample() const noexcept {
  return IsCompressed() ? bitsPerSample : ZrAudio_BitsFromSampleType(sampleType);
}

uint16_t _zrwaveformat::BytesPerSample() const noexcept {
  return IsCompressed() ? static_cast<uint16_t>(bitsPerSample / 8) : ZrAudio_BytesFromSampleType(sampleType);
}

bool _zrwaveformat::IsCompressed() const noexcept { return (flags & ZRWF_COMPRESSED) != 0; }

bool _zrwaveformat::operator==(const _zrwaveformat& other) const noexcept {
  if (sampleType != other.sampleType || samplesPerSec != other.samplesPerSec || channels != other.channels) {
    return false;
  }
  if (IsCompressed() != other.IsCompressed()) return false;
  if (!marlo::SameSpeakers(channelMask, other.channelMask, channels)) return false;
  if (!IsCompressed()) return true;
  return formatTag == other.formatTag && avgBytesPerSec == other.avgBytesPerSec &&
         bitsPerSample == other.bitsPerSample && marlo::SameBytes(marlo::ExtraOf(*this), marlo::ExtraOf(other));
}

bool _zrwaveformat::operator==(const WAVEFORMATEX& other) const noexcept {
  if (samplesPerSec != other.nSamplesPerSec || channels != other.nChannels) return false;
  if (!marlo::SameSpeakers(channelMask, marlo::ChannelMaskOf(&other), channels)) return false;
  if (!IsCompressed()) return sampleType == ZrAudio_GetSampleType(&other);
  return formatTag == ZrAudio_GetWaveFormatTag(&other) && avgBytesPerSec == other.nAvgBytesPerSec &&
         bitsPerSample == other.wBitsPerSample && marlo::SameBytes(marlo::ExtraOf(*this), marlo::ExtraOf(&other));
}
