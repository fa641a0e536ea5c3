// SPDX-License-Identifier: Apache-2.0
// Audio formats: the library's own descriptor, the sample types, and the way between them and WAVEFORMATEX.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"

/// Layout of a sample in memory. Full scale is 1.0 in the float types.
enum ZRSAMPLETYPE : uint32_t {
  ZRSAMPLETYPE_NONE = 0,   ///< Compressed, or a layout that no kernel knows.
  ZRSAMPLETYPE_PCM8 = 16,  ///< Unsigned, offset 128.
  ZRSAMPLETYPE_PCM16 = 17,
  ZRSAMPLETYPE_PCM24 = 18,  ///< Packed in three bytes.
  ZRSAMPLETYPE_PCM32 = 19,
  ZRSAMPLETYPE_FLOAT32 = 32,
  ZRSAMPLETYPE_FLOAT64 = 33,
  ZRSAMPLETYPE_PCM24UNPACKED = 48,  ///< Right-aligned and sign-extended in a 32-bit word.
  ZRSAMPLETYPE_PCM8SIGNED = 49,
  ZRSAMPLETYPE_PCM16BE = 64,
  ZRSAMPLETYPE_PCM24BE = 65,
  ZRSAMPLETYPE_PCM32BE = 66,
  ZRSAMPLETYPE_PCM16RA = 128,  ///< 16 bits right-aligned in a 32-bit word; device formats only.
  ZRSAMPLETYPE_PCM24RA = 129,  ///< 24 bits right-aligned in a 32-bit word; device formats only.
};

/// The shape that a conversion to WAVEFORMATEX produces.
enum ZRWAVEFORMAT_COPY_DEST : uint32_t {
  ZRWFCOPY_AUTO = 0,
  ZRWFCOPY_WFX = 1,
  ZRWFCOPY_WFX_NOMASK = 2,
  ZRWFCOPY_EXT_MULTICHANNEL = 3,
  ZRWFCOPY_WFEXT = 4,
};

enum ZRWAVEFORMAT_FLAGS : uint32_t {
  ZRWF_COMPRESSED = 0x8,  ///< Tag, bits and extra fields are valid.
  ZRWF_FROM_EXTENSIBLE = 0x10,
};

/// The library's own format descriptor.
struct ZR_API _zrwaveformat {
  uint32_t size;        ///< 32, or 32 plus the extra length.
  uint32_t sampleType;  ///< ZRSAMPLETYPE, 0 for a compressed format.
  uint32_t samplesPerSec;
  uint16_t channels;
  uint16_t blockAlign;   ///< Bytes of one frame.
  uint32_t channelMask;  ///< Speakers; 0 for not stated.
  uint32_t flags;
  uint16_t formatTag;      ///< Valid when compressed.
  uint16_t bitsPerSample;  ///< Valid when compressed.
  uint32_t avgBytesPerSec;
  uint16_t extraSize;   ///< Present only when size is at least 34.
  uint8_t extra[1024];  ///< Records may be allocated shorter; only extraSize bytes exist.

  void Init(uint32_t rate, uint32_t type, uint16_t channelCount, uint32_t mask, uint32_t structSize) noexcept;
  void Init(uint32_t structSize, const WAVEFORMATEX* wfx) noexcept;
  void InitAsWfx(uint16_t tag, uint32_t rate, uint16_t bits, uint16_t channelCount, uint32_t mask,
                 uint32_t structSize) noexcept;
  uint16_t UpdateBlockAlign() noexcept;
  uint16_t FormatTag() const noexcept;
  uint16_t BitsPerSample() const noexcept;
  uint16_t BytesPerSample() const noexcept;
  bool IsCompressed() const noexcept;
  bool operator==(const _zrwaveformat& other) const noexcept;
  bool operator==(const WAVEFORMATEX& other) const noexcept;
};
static_assert(offsetof(_zrwaveformat, channels) == 12 && offsetof(_zrwaveformat, blockAlign) == 14);
static_assert(offsetof(_zrwaveformat, channelMask) == 16 && offsetof(_zrwaveformat, flags) == 20);
static_assert(offsetof(_zrwaveformat, formatTag) == 24 && offsetof(_zrwaveformat, bitsPerSample) == 26);
static_assert(offsetof(_zrwaveformat, avgBytesPerSec) == 28);
static_assert(offsetof(_zrwaveformat, extraSize) == 32 && offsetof(_zrwaveformat, extra) == 34);
