// SPDX-License-Identifier: Apache-2.0
// Wave format headers as files, devices and plug-ins speak them: packed, little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/guid.h"

inline constexpr uint16_t WAVE_FORMAT_PCM = 1;
inline constexpr uint16_t WAVE_FORMAT_IEEE_FLOAT = 3;
inline constexpr uint16_t WAVE_FORMAT_EXTENSIBLE = 0xFFFE;

// Private tags: how the library's further sample layouts travel inside a WAVEFORMATEX.
inline constexpr uint16_t ZR_FORMAT_PCM_UNPACKED = 0xFE00;
inline constexpr uint16_t ZR_FORMAT_PCM_SIGNED = 0xFE01;
inline constexpr uint16_t ZR_FORMAT_PCM_BIG_ENDIAN = 0xFE02;
inline constexpr uint16_t ZR_FORMAT_PCM_RIGHT_ALIGNED = 0xFE03;

#pragma pack(push, 1)

/// The 18-byte head; `cbSize` bytes of format-specific data follow it.
struct WAVEFORMATEX {
  uint16_t wFormatTag;
  uint16_t nChannels;
  uint32_t nSamplesPerSec;
  uint32_t nAvgBytesPerSec;
  uint16_t nBlockAlign;
  uint16_t wBitsPerSample;
  uint16_t cbSize;
};
static_assert(sizeof(WAVEFORMATEX) == 18);

/// The 40-byte form with valid bits, speaker mask and sub-format; cbSize is 22 or more.
struct WAVEFORMATEXTENSIBLE {
  WAVEFORMATEX Format;
  union {
    uint16_t wValidBitsPerSample;
    uint16_t wSamplesPerBlock;
    uint16_t wReserved;
  } Samples;
  uint32_t dwChannelMask;
  GUID SubFormat;
};
static_assert(sizeof(WAVEFORMATEXTENSIBLE) == 40);
static_assert(offsetof(WAVEFORMATEXTENSIBLE, dwChannelMask) == 20);
static_assert(offsetof(WAVEFORMATEXTENSIBLE, SubFormat) == 24);

#pragma pack(pop)

/// Bytes 2 to 15 of every standard SubFormat; the first two hold the format tag.
inline constexpr uint8_t kWaveSubFormatBase[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                   0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

/// Flags of a WAVEHDR.
enum WAVEHDR_FLAGS : uint32_t {
  WHDR_DONE = 1,      ///< The device has given the buffer back.
  WHDR_PREPARED = 2,  ///< Known to the device.
  WHDR_INQUEUE = 16,  ///< With the device.
};

/// A buffer of a wave device.
struct WAVEHDR {
  void* lpData;
  uint32_t dwBufferLength;
  uint32_t dwBytesRecorded;
  uint64_t dwUser;
  uint32_t dwFlags;
  uint32_t dwLoops;
  WAVEHDR* lpNext;
  uint64_t reserved;
};
static_assert(sizeof(WAVEHDR) == 48 && offsetof(WAVEHDR, dwUser) == 16 && offsetof(WAVEHDR, lpNext) == 32);
