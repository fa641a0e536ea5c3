// SPDX-License-Identifier: Apache-2.0
// Conversions between the library's own descriptor and WAVEFORMATEX, and copies of either.
#include <algorithm>
#include <cstring>

#include "audio/wave_format.h"
#include "platform/base/memory.h"

namespace marlo {
namespace {

/// Size of the record that a shape change of a WAVEFORMATEX goes through.
constexpr uint32_t kPassingRecordBytes = 128;

uint32_t MaskFor(const _zrwaveformat& format, uint32_t copyDest) noexcept {
  return copyDest == ZRWFCOPY_WFX_NOMASK ? 0 : format.channelMask;
}

/// Whether `copyDest` itself asks for extensible, whatever the speakers need.
bool AsksForExtensible(const _zrwaveformat& format, uint32_t copyDest) noexcept {
  switch (copyDest) {
    case ZRWFCOPY_AUTO:
      return (format.flags & ZRWF_FROM_EXTENSIBLE) || IsSpecialMask(format.channelMask, format.channels);
    case ZRWFCOPY_EXT_MULTICHANNEL:
      return format.channels > 2;
    case ZRWFCOPY_WFEXT:
      return true;
    default:
      return false;
  }
}

/// Whether the result is extensible in a destination of `destSize` bytes. A compressed format is made so for
/// its speakers only when all of its extra bytes have room too.
bool BecomesExtensible(const _zrwaveformat& format, uint32_t copyDest, uint32_t destSize) noexcept {
  constexpr uint32_t kHeadBytes = sizeof(WAVEFORMATEXTENSIBLE);
  if (destSize < kHeadBytes) return false;
  if (AsksForExtensible(format, copyDest)) return true;
  const uint32_t mask = MaskFor(format, copyDest);
  if (!format.IsCompressed()) return SpeakersNeedExtensible(mask, format.channels);
  return IsSpecialMask(mask, format.channels) && destSize - kHeadBytes >= ExtraOf(format).bytes;
}

/// Turns a plain head extensible; the head's tag becomes the SubFormat.
void MakeExtensible(WAVEFORMATEXTENSIBLE& wfext, uint32_t mask) noexcept {
  wfext.SubFormat = SubFormatOf(wfext.Format.wFormatTag);
  wfext.Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
  wfext.Format.cbSize = kExtensibleBytes;
  wfext.Samples.wValidBitsPerSample = wfext.Format.wBitsPerSample;
  wfext.dwChannelMask = mask;
}

void CopyCompressed(uint8_t* dest, uint32_t destSize, const _zrwaveformat& format, uint32_t copyDest) noexcept {
  const ExtraBytes extra = ExtraOf(format);
  const bool extensible = BecomesExtensible(format, copyDest, destSize);
  WAVEFORMATEXTENSIBLE wfext = {};
  wfext.Format.wFormatTag = format.formatTag;
  wfext.Format.nChannels = format.channels;
  wfext.Format.nSamplesPerSec = format.samplesPerSec;
  wfext.Format.nAvgBytesPerSec = format.avgBytesPerSec;
  wfext.Format.nBlockAlign = format.blockAlign;
  wfext.Format.wBitsPerSample = format.bitsPerSample;
  if (extensible) MakeExtensible(wfext, MaskFor(format, copyDest));

  // A plain tag 1 or 3 ends before cbSize: its extra bytes take that place.
  const bool shortHead =
      !extensible && (format.formatTag == WAVE_FORMAT_PCM || format.formatTag == WAVE_FORMAT_IEEE_FLOAT);
  const uint32_t headBytes = extensible ? sizeof(WAVEFORMATEXTENSIBLE) : sizeof(WAVEFORMATEX);
  const uint32_t extraOffset = shortHead ? offsetof(WAVEFORMATEX, cbSize) : headBytes;
  const uint32_t appended = std::min(extra.bytes, destSize - extraOffset);
  wfext.Format.cbSize = static_cast<uint16_t>(wfext.Format.cbSize + appended);
  std::memcpy(dest, &wfext, headBytes);
  if (appended > 0) std::memcpy(dest + extraOffset, extra.data, appended);
}

void CopySampleFormat(WAVEFORMATEX* dest, uint32_t destSize, const _zrwaveformat& format, uint32_t copyDest) noexcept {
  const uint32_t mask = MaskFor(format, copyDest);
  if (!AsksForExtensible(format, copyDest) || destSize < sizeof(WAVEFORMATEXTENSIBLE)) {
    ZrAudio_InitWfxFlex(dest, format.FormatTag(), format.samplesPerSec, format.BitsPerSample(), format.channels, mask,
                        destSize);
    return;
  }
  WAVEFORMATEXTENSIBLE wfext = {};
  ZrAudio_InitWfx(&wfext.Format, format.samplesPerSec, format.sampleType, format.channels);
  MakeExtensible(wfext, mask ? mask : DefaultChannelMask(format.channels));
  std::memcpy(static_cast<void*>(dest), &wfext, sizeof(wfext));
}

/// The bytes that a format takes as a WAVEFORMATEX when nothing has to be left out.
uint32_t BytesAsWfx(const _zrwaveformat& format, uint32_t copyDest) noexcept {
  const bool extensible = BecomesExtensible(format, copyDest, UINT32_MAX);
  const uint32_t headBytes = extensible ? sizeof(WAVEFORMATEXTENSIBLE) : sizeof(WAVEFORMATEX);
  return headBytes + ExtraOf(format).bytes;
}

}  // namespace
}  // namespace marlo

void ZrAudio_CopyWfxToWfExt(const WAVEFORMATEX* wfx, WAVEFORMATEXTENSIBLE* wfext) noexcept {
  if (!wfx || !wfext) return;
  const size_t bytes = std::min(sizeof(WAVEFORMATEX) + wfx->cbSize, sizeof(WAVEFORMATEXTENSIBLE));
  std::memcpy(static_cast<void*>(wfext), wfx, bytes);
}

void ZrAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* wfext, WAVEFORMATEX* wfx) noexcept {
  if (!wfext || !wfx) return;
  WAVEFORMATEX plain = wfext->Format;
  if (plain.wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
    uint16_t tag = 0;
    if (!marlo::AsExtensible(&wfext->Format) || !ZrAudio_GetFormatTagExtensible(wfext, &tag)) return;
    plain.wFormatTag = tag;
    plain.cbSize = 0;
  }
  *wfx = plain;
}

void ZrAudio_GeneralCopyWfx(WAVEFORMATEX* dest, uint32_t destSize, const _zrwaveformat* format,
                            uint32_t copyDest) noexcept {
  if (!dest || !format || destSize < sizeof(WAVEFORMATEX)) return;
  if (format->IsCompressed()) {
    marlo::CopyCompressed(reinterpret_cast<uint8_t*>(dest), destSize, *format, copyDest);
  } else {
    marlo::CopySampleFormat(dest, destSize, *format, copyDest);
  }
}

void ZrAudio_GeneralCopyZrWaveFormat(_zrwaveformat* dest, uint32_t destSize, const _zrwaveformat* format,
                                     uint32_t) noexcept {
  if (!dest || !format) return;
  const marlo::ExtraBytes extra = marlo::ExtraOf(*format);
  const uint32_t withExtra = static_cast<uint32_t>(offsetof(_zrwaveformat, extra)) + extra.bytes;
  const bool keepsExtra = extra.bytes > 0 && withExtra <= destSize;
  const uint32_t bytes = keepsExtra ? withExtra : std::min(destSize, kZrWaveFormatFixedBytes);
  std::memmove(static_cast<void*>(dest), format, bytes);
  std::memset(reinterpret_cast<uint8_t*>(dest) + bytes, 0, destSize - bytes);
  if (destSize >= sizeof(dest->size)) dest->size = kZrWaveFormatFixedBytes + (keepsExtra ? extra.bytes : 0);
}

void ZrAudio_CopyWfx(WAVEFORMATEX* dest, uint32_t destSize, const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept {
  if (!wfx) return;
  _zrwaveformat format;
  format.Init(marlo::kPassingRecordBytes, wfx);
  ZrAudio_GeneralCopyWfx(dest, destSize, &format, copyDest);
}

void ZrAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* wfext, const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept {
  ZrAudio_CopyWfx(reinterpret_cast<WAVEFORMATEX*>(wfext), sizeof(*wfext), wfx, copyDest);
}

WAVEFORMATEX* ZrAudio_AllocAndCopyWfx(const _zrwaveformat* format, uint32_t copyDest) noexcept {
  if (!format) return nullptr;
  const uint32_t bytes = marlo::BytesAsWfx(*format, copyDest);
  auto* block = static_cast<WAVEFORMATEX*>(plat::AllocateZeroed(bytes));
  if (block) ZrAudio_GeneralCopyWfx(block, bytes, format, copyDest);
  return block;
}

WAVEFORMATEX* ZrAudio_AllocAndCopyWfx(const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept {
  if (!wfx) return nullptr;
  const bool extensible = wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE;
  const bool keepsShape = copyDest == ZRWFCOPY_AUTO || (extensible && copyDest == ZRWFCOPY_WFEXT) ||
                          (!extensible && (copyDest == ZRWFCOPY_WFX || copyDest == ZRWFCOPY_WFX_NOMASK));
  if (!keepsShape) {
    _zrwaveformat format;
    format.Init(sizeof(format), wfx);
    return ZrAudio_AllocAndCopyWfx(&format, copyDest);
  }
  const size_t bytes = sizeof(WAVEFORMATEX) + wfx->cbSize;
  auto* block = static_cast<WAVEFORMATEX*>(plat::AllocateZeroed(bytes));
  if (block) std::memcpy(static_cast<void*>(block), wfx, bytes);
  return block;
}

void ZrAudio_FreeWfx(WAVEFORMATEX* wfx) noexcept { plat::FreeBlock(wfx); }
