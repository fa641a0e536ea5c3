// SPDX-License-Identifier: Apache-2.0
// The tables of sample types and of format tags.
#include <algorithm>
#include <iterator>

#include "audio/wave_format.h"

namespace marlo {
namespace {

struct SampleTypeRow {
  uint32_t sampleType;
  uint16_t bytes;
  uint16_t bits;
  uint16_t tag;
};

// The right-aligned device types are left out on purpose: their words are wider than their bits, and only
// the device formats know how to handle them.
constexpr SampleTypeRow kSampleTypes[] = {
    {ZRSAMPLETYPE_PCM8, 1, 8, WAVE_FORMAT_PCM},
    {ZRSAMPLETYPE_PCM16, 2, 16, WAVE_FORMAT_PCM},
    {ZRSAMPLETYPE_PCM24, 3, 24, WAVE_FORMAT_PCM},
    {ZRSAMPLETYPE_PCM32, 4, 32, WAVE_FORMAT_PCM},
    {ZRSAMPLETYPE_FLOAT32, 4, 32, WAVE_FORMAT_IEEE_FLOAT},
    {ZRSAMPLETYPE_FLOAT64, 8, 64, WAVE_FORMAT_IEEE_FLOAT},
    {ZRSAMPLETYPE_PCM24UNPACKED, 4, 32, ZR_FORMAT_PCM_UNPACKED},
    {ZRSAMPLETYPE_PCM8SIGNED, 1, 8, ZR_FORMAT_PCM_SIGNED},
    {ZRSAMPLETYPE_PCM16BE, 2, 16, ZR_FORMAT_PCM_BIG_ENDIAN},
    {ZRSAMPLETYPE_PCM24BE, 3, 24, ZR_FORMAT_PCM_BIG_ENDIAN},
    {ZRSAMPLETYPE_PCM32BE, 4, 32, ZR_FORMAT_PCM_BIG_ENDIAN},
};

constexpr SampleTypeRow kNoSampleType = {ZRSAMPLETYPE_NONE, 0, 0, 0};

const SampleTypeRow& FindSampleType(uint32_t sampleType) noexcept {
  for (const SampleTypeRow& row : kSampleTypes) {
    if (row.sampleType == sampleType) return row;
  }
  return kNoSampleType;
}

struct TagRow {
  uint16_t tag;
  ZRSAMPLETYPE bits8, bits16, bits20, bits24, bits32, bits64;
};

constexpr ZRSAMPLETYPE kNone = ZRSAMPLETYPE_NONE;

// The signed tag differs from PCM at 8 bits only, the big-endian tag not at 8 bits.
constexpr TagRow kTags[] = {
    {WAVE_FORMAT_PCM, ZRSAMPLETYPE_PCM8, ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM32,
     kNone},
    {WAVE_FORMAT_IEEE_FLOAT, kNone, kNone, kNone, kNone, ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT64},
    {ZR_FORMAT_PCM_UNPACKED, kNone, kNone, kNone, ZRSAMPLETYPE_PCM24UNPACKED, ZRSAMPLETYPE_PCM24UNPACKED, kNone},
    {ZR_FORMAT_PCM_SIGNED, ZRSAMPLETYPE_PCM8SIGNED, ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24,
     ZRSAMPLETYPE_PCM32, kNone},
    {ZR_FORMAT_PCM_BIG_ENDIAN, ZRSAMPLETYPE_PCM8, ZRSAMPLETYPE_PCM16BE, kNone, ZRSAMPLETYPE_PCM24BE,
     ZRSAMPLETYPE_PCM32BE, kNone},
    {ZR_FORMAT_PCM_RIGHT_ALIGNED, kNone, ZRSAMPLETYPE_PCM16RA, kNone, ZRSAMPLETYPE_PCM24RA, kNone, kNone},
};

struct AliasRow {
  uint16_t tag;
  uint16_t canonical;
};

constexpr AliasRow kAliases[] = {
    {0x0014, 0x0002}, {0x0017, 0x0002}, {0x0040, 0x0002}, {0x00D8, 0xFFCA}, {0x00FF, 0xA106},
    {0x0180, 0xA106}, {0x0215, 0x0216}, {0x2003, 0x2002}, {0x4143, 0xA106}, {0x674F, 0x6771},
    {0x6750, 0x6771}, {0x6751, 0x6771}, {0x676F, 0x6771}, {0x6770, 0x6771}, {0x706D, 0xA106},
};
static_assert(std::is_sorted(std::begin(kAliases), std::end(kAliases),
                             [](const AliasRow& left, const AliasRow& right) { return left.tag < right.tag; }));

}  // namespace
}  // namespace marlo

uint16_t ZrAudio_BytesFromSampleType(uint32_t sampleType) noexcept { return marlo::FindSampleType(sampleType).bytes; }

uint16_t ZrAudio_BitsFromSampleType(uint32_t sampleType) noexcept { return marlo::FindSampleType(sampleType).bits; }

uint16_t ZrAudio_FormatTagFromSampleType(uint32_t sampleType) noexcept { return marlo::FindSampleType(sampleType).tag; }

ZRSAMPLETYPE ZrAudio_GetSampleType2(uint16_t tag, uint16_t bits) noexcept {
  for (const marlo::TagRow& row : marlo::kTags) {
    if (row.tag != tag) continue;
    switch (bits) {
      case 8:
        return row.bits8;
      case 16:
        return row.bits16;
      case 20:
        return row.bits20;
      case 24:
        return row.bits24;
      case 32:
        return row.bits32;
      case 64:
        return row.bits64;
      default:
        return ZRSAMPLETYPE_NONE;
    }
  }
  return ZRSAMPLETYPE_NONE;
}

ZRSAMPLETYPE ZrAudio_GetSampleType(const WAVEFORMATEX* wfx) noexcept {
  if (!wfx) return ZRSAMPLETYPE_NONE;
  if (wfx->wFormatTag != WAVE_FORMAT_EXTENSIBLE) return ZrAudio_GetSampleType2(wfx->wFormatTag, wfx->wBitsPerSample);
  const WAVEFORMATEXTENSIBLE* extensible = marlo::AsExtensible(wfx);
  uint16_t tag = 0;
  if (!extensible || !marlo::TagOfSubFormat(*extensible, tag)) return ZRSAMPLETYPE_NONE;
  const ZRSAMPLETYPE sampleType = ZrAudio_GetSampleType2(tag, wfx->wBitsPerSample);
  const bool unpacked = sampleType == ZRSAMPLETYPE_PCM32 && extensible->Samples.wValidBitsPerSample == 24;
  return unpacked ? ZRSAMPLETYPE_PCM24UNPACKED : sampleType;
}

uint16_t ZrAudio_ConvertToCanonicalWaveFormatTag(uint16_t tag) noexcept {
  const marlo::AliasRow* found =
      std::lower_bound(std::begin(marlo::kAliases), std::end(marlo::kAliases), tag,
                       [](const marlo::AliasRow& row, uint16_t wanted) { return row.tag < wanted; });
  return found != std::end(marlo::kAliases) && found->tag == tag ? found->canonical : tag;
}
