// SPDX-License-Identifier: Apache-2.0
// Audio formats as a user reads them. All words and separators are the user's: names from the language, numbers and
// lists from the locale.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/waveformat.h"

// Each writes at most `size` characters, the terminator included, and gives the buffer unless it says otherwise; a
// null buffer or size 0 writes nothing. [any thread]

/// "16 Bit", "32 Bit (IEEE Float)", "24 Bit (Unpacked)", "8 Bit (Signed)", "16 Bit (MAC)", "24 Bit (RA)"; empty for no
/// sample type.
ZR_API char16_t* ZrAudio_GetSampleTypeText(uint32_t sampleType, char16_t* buffer, uint32_t size) noexcept;
/// "24 Bit": the bits of a sample; empty for no sample type.
/// @param precision non-zero shows what counts: the mantissa of a float (24 or 53), and the 16 or 24 bits of a
/// right-aligned type instead of its 32-bit word.
ZR_API char16_t* ZrAudio_GetBitDepthText(uint32_t sampleType, char16_t* buffer, uint32_t size,
                                         int32_t precision) noexcept;
/// "Mono", "Stereo", "5.1", "3/2 (L, C, R, Ls, Rs)", or "7 Channel" when number and speakers have no name.
ZR_API char16_t* ZrAudio_GetChannelsText(uint32_t channels, uint32_t mask, char16_t* buffer, uint32_t size) noexcept;
/// The name of a compression, "MP3" or with `shortName` 0 "MPEG Layer 3" where there is a long one. An unknown tag
/// shows its number, in decimal behind "0x".
/// @return 0, or 1 for an unknown tag.
ZR_API int32_t ZrAudio_GetCompressionTypeName(uint16_t tag, char16_t* buffer, uint32_t size,
                                              int32_t shortName) noexcept;
/// "PCM", "PCM (float)" and so on. @return S_OK, or E_FAIL with "Unknown" for compressed formats, of which the
/// platform has no names.
ZR_API HRESULT ZrAudio_GetTagText(uint16_t tag, char16_t* buffer, uint32_t size) noexcept;
/// "44,100 Hz, 16 Bit, Stereo". @return S_OK, or E_FAIL with "Unknown" for null and for a compressed format.
ZR_API HRESULT ZrAudio_GetAttribsText(const WAVEFORMATEX* wfx, char16_t* buffer, uint32_t size) noexcept;
/// The same for the library's own description.
ZR_API HRESULT ZrAudio_GetAttribsText(const _zrwaveformat* format, char16_t* buffer, uint32_t size) noexcept;

/// How ZrAudio_GetFormatText shows a format.
enum ZRFORMATTEXT_FLAGS : uint32_t {
  ZRFORMATTEXT_AS_PCM = 1,          ///< A compressed format as the PCM format of its size.
  ZRFORMATTEXT_BITDEPTH = 2,        ///< The bits that count instead of the sample type; plain PCM without its name.
  ZRFORMATTEXT_NO_COMPRESSION = 4,  ///< Without the name of the compression.
  ZRFORMATTEXT_LONG_NAMES = 8,      ///< Long names of compressions.
  ZRFORMATTEXT_PLATFORM_TEXT = 16,  ///< A compressed format by its attributes.
  ZRFORMATTEXT_BITRATE_FIRST = 32,  ///< A compressed format's bit rate in front.
};

/// The whole of a format, "44,100 Hz, 16 Bit, Stereo, PCM"; empty for null.
/// @param flags of ZRFORMATTEXT_FLAGS.
ZR_API char16_t* ZrAudio_GetFormatText(const _zrwaveformat* format, char16_t* buffer, uint32_t size,
                                       uint32_t flags) noexcept;
