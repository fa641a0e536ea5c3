// SPDX-License-Identifier: Apache-2.0
// AIFF and AIFC: big-endian chunks in an open file, formats, markers, and the 80-bit sample rate.
//
// Chunks are those of riff.h with big-endian numbers, and ids are big-endian too: "FORM" is 0x464F524D. Positions,
// bounds and results are those of riff.h, except that a bound isn't held at 0: a chunk that reaches past it wraps
// it, and only the end of the file ends that search. One thread at a time uses a file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/file.h"

/// The id of four characters as a big-endian number.
constexpr uint32_t ZrIffId(const char (&text)[5]) noexcept {
  uint32_t id = 0;
  for (int i = 0; i < 4; ++i) id = id << 8 | static_cast<uint8_t>(text[i]);
  return id;
}

/// A chunk header in native order.
struct tIFFCHUNK {
  uint32_t id;
  uint32_t size;
};
static_assert(sizeof(tIFFCHUNK) == 8);

#pragma pack(push, 1)
/// A marker in native order; its name follows in the file.
struct tIFFMARKER {
  uint16_t id;
  uint32_t position;  ///< In frames.
  uint8_t nameBytes;
};
#pragma pack(pop)
static_assert(sizeof(tIFFMARKER) == 7 && offsetof(tIFFMARKER, position) == 2);

// ---- Byte order ------------------------------------------------------------------------------------

/// Swaps the bytes of each word in place; null does nothing.
ZR_API void iff_ByteSwap16(uint16_t* words, uint32_t count) noexcept;
/// Swaps the bytes of each word in place; null does nothing.
ZR_API void iff_ByteSwap32(uint32_t* words, uint32_t count) noexcept;
/// As iff_ByteSwap16.
ZR_API void aiff_WriteByteSwap16(uint16_t* words, uint32_t count) noexcept;
/// As iff_ByteSwap32.
ZR_API void aiff_WriteByteSwap32(uint32_t* words, uint32_t count) noexcept;

// ---- Chunks ----------------------------------------------------------------------------------------

/// Reads the 8 bytes of a chunk header.
ZR_API HRESULT iff_ReadChunkHdr(plat::File* file, tIFFCHUNK* header) noexcept;
/// Reads a 32-bit number.
ZR_API HRESULT iff_ReadDWORD(plat::File* file, uint32_t* value) noexcept;
/// Reads a 16-bit number.
ZR_API HRESULT iff_ReadWORD(plat::File* file, uint16_t* value) noexcept;
/// Writes the 8 bytes of a chunk header.
ZR_API HRESULT iff_WriteChunk(plat::File* file, const tIFFCHUNK* header) noexcept;
/// Writes a 32-bit number.
ZR_API HRESULT iff_WriteDWORD(plat::File* file, uint32_t value) noexcept;
/// Writes a 16-bit number.
ZR_API HRESULT iff_WriteWORD(plat::File* file, uint16_t value) noexcept;
/// Reads a FORM header and its type. @return ZR_E_UNKNOWN_FORMAT when 8 bytes came and the id is another.
ZR_API HRESULT iff_ReadFormType(plat::File* file, tIFFCHUNK* header, uint32_t* formType) noexcept;
/// Writes "FORM", the size as given and the form type: `size` must count the four bytes of the type.
ZR_API HRESULT iff_WriteFileID(plat::File* file, uint32_t formType, uint32_t size) noexcept;
/// Moves forward by `size` rounded up to even. @return that count, not a code.
ZR_API uint64_t iff_SkipChunk(plat::File* file, uint32_t size) noexcept;
/// As riff_FindChunkHeader, but for the bound as told above.
ZR_API HRESULT iff_FindChunkHeader(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept;
/// Finds the next chunk without a bound. @param size optional.
ZR_API HRESULT iff_SeekChunkHeader(plat::File* file, uint32_t id, uint32_t* size) noexcept;
/// Finds a chunk from the start of the file, to its end. @param size optional.
/// @return ZR_E_NO_RIFF_HEADER when the file doesn't begin with a FORM and its type; ZR_E_NOT_FOUND for any failure
/// of the search.
ZR_API HRESULT iff_FindChunkFromStart(plat::File* file, uint32_t id, uint32_t* size) noexcept;
/// Removes the first chunk with `id` from an AIFF file, moves what follows down, cuts the file and corrects the form
/// size. @param removed optional. @return ZR_E_UNKNOWN_FORMAT for any other file, E_OUTOFMEMORY.
ZR_API HRESULT iff_DeleteChunk(plat::File* file, uint32_t id, uint32_t* removed) noexcept;

// ---- AIFF files ------------------------------------------------------------------------------------

/// 1 for a file that begins as an AIFF, or as an AIFC whose samples aren't compressed; the position is then at its
/// first chunk. @param formSize optional; the size field of the FORM.
ZR_API int32_t iff_IsAIFFFile(plat::File* file, uint32_t* formSize) noexcept;
/// The same. @param isAifc optional. @param isLittleEndian optional; set for the compression type "sowt". The outputs
/// are cleared first and hold what was seen, also when the result is 0.
ZR_API int32_t iff_IsAIFFFileEx(plat::File* file, uint32_t* formSize, int32_t* isAifc,
                                int32_t* isLittleEndian) noexcept;
/// Reads the format: tag 0xFE01 for 8 bits, 1 for little-endian samples, else 0xFE02.
/// @param sampleFrames receives what the file states or has room for, whichever is less.
/// @param dataOffset receives where the first sample stands. The outputs are touched on success only.
/// @return ZR_E_UNKNOWN_FORMAT when it is no AIFF file. The position is left open.
ZR_API HRESULT iff_GetAIFFWfx(plat::File* file, WAVEFORMATEX* format, int64_t* sampleFrames,
                              int64_t* dataOffset) noexcept;
/// Finds a marker by id. On success the position is at the first character of its name.
/// @return ZR_E_NOT_FOUND without such a marker or any; ZR_E_NO_RIFF_HEADER for one that is cut off.
ZR_API HRESULT iff_FindMarker(plat::File* file, tIFFMARKER* marker, uint16_t markerId) noexcept;

// ---- The 80-bit sample rate ------------------------------------------------------------------------

/// The rate in an 80-bit number, truncated; mantissa words in native order, the highest first.
/// A set sign gives 44100. No rate above 192000 survives: doubling stops above 96000, so that 352800 comes back
/// as 176400. Null gives 0.
ZR_API uint32_t aiff_ConvertRate(uint16_t exponent, const uint16_t* mantissa) noexcept;
/// The 80-bit number of a rate. @param mantissa receives four words in native order, the highest first.
ZR_API void aiff_CreateRate(uint32_t rate, uint16_t* exponent, uint16_t* mantissa) noexcept;
