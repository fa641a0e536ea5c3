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

/// The shape that a conversion to WAVEFORMATEX produces. An extensible result needs room for 40 bytes; a
/// speaker mask of 0 and the default mask (the lowest bits, one a channel) count as the same.
enum ZRWAVEFORMAT_COPY_DEST : uint32_t {
  ZRWFCOPY_AUTO = 0,              ///< Extensible when the source was, or has a mask other than the default.
  ZRWFCOPY_WFX = 1,               ///< Plain, unless the mask calls for extensible.
  ZRWFCOPY_WFX_NOMASK = 2,        ///< Plain; the mask is dropped.
  ZRWFCOPY_EXT_MULTICHANNEL = 3,  ///< Extensible above two channels, otherwise as ZRWFCOPY_WFX.
  ZRWFCOPY_WFEXT = 4,             ///< Extensible.
};

/// Flags of a format record.
enum ZRWAVEFORMAT_FLAGS : uint32_t {
  ZRWF_COMPRESSED = 0x8,        ///< Tag, bits and extra fields are valid.
  ZRWF_FROM_EXTENSIBLE = 0x10,  ///< Made from a WAVEFORMATEXTENSIBLE.
};

/// Bytes of a record without extra data, and the most extra data that a record keeps.
inline constexpr uint32_t kZrWaveFormatFixedBytes = 32;
inline constexpr uint32_t kZrWaveFormatMaxExtraBytes = 1024;

/// The library's own format descriptor.
///
/// Records are of varying length: 32 bytes are always there, the extra bytes stand from offset 34 on, and
/// `size` counts 32 plus their number. So the last two extra bytes lie behind `size` (copy with
/// ZrAudio_GeneralCopyZrWaveFormat), and a single extra byte counts as none.
/// No member allocates; a record belongs to one thread at a time while it is written. [any thread]
struct ZR_API _zrwaveformat {
  uint32_t size;                              ///< 32, or 32 plus the extra length.
  uint32_t sampleType;                        ///< ZRSAMPLETYPE, 0 for a compressed format.
  uint32_t samplesPerSec;                     ///< Frames a second.
  uint16_t channels;                          ///< Samples in a frame.
  uint16_t blockAlign;                        ///< Bytes of one frame.
  uint32_t channelMask;                       ///< Speakers; 0 for not stated.
  uint32_t flags;                             ///< ZRWAVEFORMAT_FLAGS.
  uint16_t formatTag;                         ///< Valid when compressed.
  uint16_t bitsPerSample;                     ///< Valid when compressed.
  uint32_t avgBytesPerSec;                    ///< Bytes of one second, on average.
  uint16_t extraSize;                         ///< Present only when size is at least 34.
  uint8_t extra[kZrWaveFormatMaxExtraBytes];  ///< Records may be allocated shorter; only extraSize bytes exist.

  /// Describes samples of a type. Zeroes the record first: 32 bytes, or `structSize` when that is larger,
  /// which also becomes `size`. An unknown type gives a block align of 0.
  void Init(uint32_t rate, uint32_t type, uint16_t channelCount, uint32_t mask, uint32_t structSize) noexcept;
  /// Takes over a WAVEFORMATEX of any shape, with its mask. What has no sample type is held as compressed,
  /// with as many extra bytes as `structSize` - 34 and 1024 allow (none for 32). 20-bit PCM becomes 24-bit
  /// and a wrong block align of tag 1 is put right. Null gives an empty record.
  /// @param structSize bytes of this record that may be written; below 32 means 32.
  void Init(uint32_t structSize, const WAVEFORMATEX* wfx) noexcept;
  /// Describes a format by tag and bits: a sample type when there is one, otherwise compressed without
  /// extra bytes. 20-bit PCM becomes 24-bit. Zeroes and sizes the record as the first Init does.
  void InitAsWfx(uint16_t tag, uint32_t rate, uint16_t bits, uint16_t channelCount, uint32_t mask,
                 uint32_t structSize) noexcept;
  /// Brings block align and average rate in line with type, channels and rate; a record without a sample
  /// type stays as it is. @return the block align.
  uint16_t UpdateBlockAlign() noexcept;
  /// The tag that a WAVEFORMATEX of this format has.
  uint16_t FormatTag() const noexcept;
  /// Bits of a sample's container.
  uint16_t BitsPerSample() const noexcept;
  /// Bytes of a sample's container; of a compressed format its bits over 8.
  uint16_t BytesPerSample() const noexcept;
  /// True when the format is kept by tag, bits and extra bytes.
  bool IsCompressed() const noexcept;
  /// Same sample type, rate, channels, speakers and compression; compressed formats also need the same tag,
  /// bits, average rate and extra bytes.
  bool operator==(const _zrwaveformat& other) const noexcept;
  /// The same rule against the other description; a plain WAVEFORMATEX states no speakers.
  bool operator==(const WAVEFORMATEX& other) const noexcept;
};
static_assert(offsetof(_zrwaveformat, size) == 0 && offsetof(_zrwaveformat, sampleType) == 4);
static_assert(offsetof(_zrwaveformat, samplesPerSec) == 8);
static_assert(offsetof(_zrwaveformat, channels) == 12 && offsetof(_zrwaveformat, blockAlign) == 14);
static_assert(offsetof(_zrwaveformat, channelMask) == 16 && offsetof(_zrwaveformat, flags) == 20);
static_assert(offsetof(_zrwaveformat, formatTag) == 24 && offsetof(_zrwaveformat, bitsPerSample) == 26);
static_assert(offsetof(_zrwaveformat, avgBytesPerSec) == 28);
static_assert(offsetof(_zrwaveformat, extraSize) == 32 && offsetof(_zrwaveformat, extra) == 34);

// Every function below may run on any thread and none keeps state; only ZrAudio_AllocAndCopyWfx allocates.
// A null source counts as a format that says nothing: results are 0 and destinations stay as they are.

// ---- Sample types ----------------------------------------------------------------------------------

/// Container bytes of one sample. 0 for anything but the types 16 to 66.
ZR_API uint16_t ZrAudio_BytesFromSampleType(uint32_t sampleType) noexcept;
/// Container bits of one sample. 0 for anything but the types 16 to 66.
ZR_API uint16_t ZrAudio_BitsFromSampleType(uint32_t sampleType) noexcept;
/// The tag under which a layout travels in a WAVEFORMATEX. 0 for anything but the types 16 to 66.
ZR_API uint16_t ZrAudio_FormatTagFromSampleType(uint32_t sampleType) noexcept;
/// The layout that a WAVEFORMATEX describes; 0 when no kernel knows it. An extensible format needs its 22
/// further bytes and a standard SubFormat; 24 valid bits in a 32-bit PCM container are unpacked 24-bit.
/// [render thread]
ZR_API ZRSAMPLETYPE ZrAudio_GetSampleType(const WAVEFORMATEX* wfx) noexcept;
/// The layout for a tag and a number of bits; 0 for any other pair. 20-bit PCM is 24-bit.
ZR_API ZRSAMPLETYPE ZrAudio_GetSampleType2(uint16_t tag, uint16_t bits) noexcept;

// ---- WAVEFORMATEX: filling -------------------------------------------------------------------------

/// Fills a plain format for a sample type, without extra bytes.
ZR_API void ZrAudio_InitWfx(WAVEFORMATEX* wfx, uint32_t samplesPerSec, uint32_t sampleType, uint16_t channels) noexcept;
/// Fills a format by tag and bits. It becomes extensible when the mask is neither 0 nor the default, or is
/// the default for three channels or more, and `structSize` has room for 40 bytes; a mask with more speakers
/// than channels counts as none. Below 18 bytes nothing is written.
ZR_API void ZrAudio_InitWfxFlex(WAVEFORMATEX* wfx, uint16_t tag, uint32_t samplesPerSec, uint16_t bits,
                                uint16_t channels, uint32_t channelMask, uint32_t structSize) noexcept;
/// Puts a tag-1 header right: 20 bits become 24, and the block align becomes bits over 8 times channels.
/// @return 1 when anything changed, else 0.
ZR_API int32_t ZrAudio_FixBadWfx(WAVEFORMATEX* wfx) noexcept;

// ---- WAVEFORMATEX: questions -----------------------------------------------------------------------

/// 1 unless the format is PCM in the wider sense: tag 1, 3 or 0xFE00 to 0xFE02 whose block align is whole
/// bytes of bits times channels, or extensible with a PCM or float SubFormat. 20-bit PCM in three bytes
/// therefore counts as compressed until ZrAudio_FixBadWfx has put it right.
ZR_API int32_t ZrAudio_IsCompressed(const WAVEFORMATEX* wfx) noexcept;
/// 1 when cbSize is below 22 or SubFormat is neither PCM nor IEEE float.
ZR_API int32_t ZrAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* wfext) noexcept;
/// The tag; of an extensible format with its 22 bytes the tag in a standard SubFormat, or 0.
ZR_API uint16_t ZrAudio_GetWaveFormatTag(const WAVEFORMATEX* wfx) noexcept;
/// Reads a PCM or float SubFormat. @param tag receives 1 or 3; may be null. @return 1, or 0 for any other
/// SubFormat, with `tag` unchanged.
ZR_API int32_t ZrAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* wfext, uint16_t* tag) noexcept;
/// 1 when channels, rate, bits and tag are equal; block align, average rate and SubFormat don't count.
ZR_API int32_t ZrAudio_IsEqualFormat(const WAVEFORMATEX* left, const WAVEFORMATEX* right) noexcept;
/// The tag under which a family of tags is known; an unknown tag gives itself.
ZR_API uint16_t ZrAudio_ConvertToCanonicalWaveFormatTag(uint16_t tag) noexcept;

// ---- Copies between the descriptions ---------------------------------------------------------------

/// Copies cbSize + 18 bytes, at most 40; the rest of the destination stays.
ZR_API void ZrAudio_CopyWfxToWfExt(const WAVEFORMATEX* wfx, WAVEFORMATEXTENSIBLE* wfext) noexcept;
/// Makes extensible PCM and float plain (tag 1 or 3, cbSize 0) and copies the head of a format that isn't
/// extensible; any other SubFormat leaves the destination alone.
ZR_API void ZrAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* wfext, WAVEFORMATEX* wfx) noexcept;
/// Converts to a WAVEFORMATEX. Writes at most `destSize` bytes and nothing below 18; what doesn't fit is
/// left out: first the extensible shape, then extra bytes.
/// Extra bytes of the plain tags 1 and 3 go behind the 16-byte head, where other formats have cbSize.
ZR_API void ZrAudio_GeneralCopyWfx(WAVEFORMATEX* dest, uint32_t destSize, const _zrwaveformat* format,
                                   uint32_t copyDest) noexcept;
/// Copies a record into one of `destSize` bytes and zeroes what is left of it. Extra bytes that don't fit
/// are dropped, all of them. `copyDest` changes nothing.
ZR_API void ZrAudio_GeneralCopyZrWaveFormat(_zrwaveformat* dest, uint32_t destSize, const _zrwaveformat* format,
                                            uint32_t copyDest) noexcept;
/// Changes the shape of a format, by way of a record that holds 94 extra bytes at most.
ZR_API void ZrAudio_CopyWfx(WAVEFORMATEX* dest, uint32_t destSize, const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept;
/// The same into a 40-byte destination.
ZR_API void ZrAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* wfext, const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept;
/// Converts into a new block that holds all extra bytes. Free with ZrAudio_FreeWfx; null when memory is short.
ZR_API WAVEFORMATEX* ZrAudio_AllocAndCopyWfx(const _zrwaveformat* format, uint32_t copyDest) noexcept;
/// The same from a WAVEFORMATEX, byte for byte when its shape is what `copyDest` asks for.
ZR_API WAVEFORMATEX* ZrAudio_AllocAndCopyWfx(const WAVEFORMATEX* wfx, uint32_t copyDest) noexcept;
/// Frees a block of ZrAudio_AllocAndCopyWfx; null is allowed.
ZR_API void ZrAudio_FreeWfx(WAVEFORMATEX* wfx) noexcept;

// ---- Converted formats in place --------------------------------------------------------------------

/// A format as a plain WAVEFORMATEX, for a call that takes one.
struct _zrwaveformat_wfxcopyhelper : WAVEFORMATEX {
  /// Converts; extra bytes have no room.
  explicit _zrwaveformat_wfxcopyhelper(const _zrwaveformat* format, uint32_t copyDest = ZRWFCOPY_AUTO) noexcept
      : WAVEFORMATEX{} {
    ZrAudio_GeneralCopyWfx(this, sizeof(*this), format, copyDest);
  }
};
static_assert(sizeof(_zrwaveformat_wfxcopyhelper) == 18);

/// A format as a WAVEFORMATEX with room for the extensible shape.
struct _zrwaveformat_wfxecopyhelper : WAVEFORMATEXTENSIBLE {
  /// Converts; up to 22 extra bytes of a plain result have room.
  explicit _zrwaveformat_wfxecopyhelper(const _zrwaveformat* format, uint32_t copyDest = ZRWFCOPY_AUTO) noexcept
      : WAVEFORMATEXTENSIBLE{} {
    ZrAudio_GeneralCopyWfx(&Format, sizeof(*this), format, copyDest);
  }
};
static_assert(sizeof(_zrwaveformat_wfxecopyhelper) == 40);

/// A format as a WAVEFORMATEX with room for extra bytes too.
struct _zrwaveformat_wfxplus : WAVEFORMATEXTENSIBLE {
  uint8_t more[96];  ///< Goes on where the extensible head ends.
  /// Converts; 118 extra bytes of a plain result and 96 of an extensible one have room.
  explicit _zrwaveformat_wfxplus(const _zrwaveformat* format, uint32_t copyDest = ZRWFCOPY_AUTO) noexcept
      : WAVEFORMATEXTENSIBLE{}, more{} {
    ZrAudio_GeneralCopyWfx(&Format, sizeof(*this), format, copyDest);
  }
};
static_assert(sizeof(_zrwaveformat_wfxplus) == 136);
