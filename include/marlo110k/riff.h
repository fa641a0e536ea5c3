// SPDX-License-Identifier: Apache-2.0
// RIFF chunks in an open file: read, write, find, count and remove them.
//
// A chunk is four id bytes, an unsigned 32-bit size and the data; a pad byte follows data of odd size. The
// size counts neither the header nor the pad. Ids are the four file bytes as a little-endian number.
// Every call starts at the file position, which must be a chunk boundary, and leaves it where its line says.
// The layer keeps no state and takes no lock; one thread at a time uses a file.
//
// A *bound* counts the bytes that a search may still pass in the enclosing RIFF or LIST: in and out, and
// null for a search that only the end of the file stops. Not found reads as ZR_E_NOT_FOUND with a bound and
// as ZR_E_FILE_READ without one. The data of a chunk that was found isn't taken off.
//
// Results, where a line names no others: S_OK; ZR_E_FILE_READ for a read or seek that failed or came short,
// ZR_E_FILE_WRITE for a write; E_INVALIDARG for a null argument that isn't marked optional. A null or
// closed file fails as a read or write does.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/file.h"

/// The id of four characters as the file holds them.
constexpr uint32_t ZrChunkId(const char (&text)[5]) noexcept {
  uint32_t id = 0;
  for (int i = 3; i >= 0; --i) id = id << 8 | static_cast<uint8_t>(text[i]);
  return id;
}

/// A chunk's data in a block of its own.
struct tZRCHUNKDATA {
  uint32_t size;  ///< In: bytes of data.
  void* data;     ///< Out: a block of the house heap, or null.
};
static_assert(sizeof(tZRCHUNKDATA) == 16 && offsetof(tZRCHUNKDATA, data) == 8);

/// The format chunk of a CD audio descriptor. Frames are 1/75 s.
struct tZRCDDA {
  uint16_t version;
  uint16_t track;
  uint32_t discSerial;
  uint32_t startSector;
  uint32_t lengthSectors;
  uint8_t startFrame;
  uint8_t startSecond;
  uint8_t startMinute;
  uint8_t unused;
  uint32_t lengthTime;  ///< As it stands in the file; nothing reads it.
};
static_assert(sizeof(tZRCDDA) == 24 && offsetof(tZRCDDA, startFrame) == 16);

// ---- Headers ---------------------------------------------------------------------------------------

/// Judges a size that a reader is about to trust: ZR_E_BAD_STREAM when negative, ZR_E_EMPTY_CHUNK for 0.
/// The id is not looked at.
ZR_API HRESULT riff_ValidateChunkHeader(uint32_t id, int32_t size) noexcept;
/// Reads the 8 bytes of a chunk header.
ZR_API HRESULT riff_ReadChunkHeader(plat::File* file, uint32_t* id, uint32_t* size) noexcept;
/// Reads "LIST", size and list type. @param size receives the bytes of the entries: the size field less 4.
/// @return ZR_E_NO_LIST_HEADER when 8 bytes came and the id is another.
ZR_API HRESULT riff_ReadListHeader(plat::File* file, uint32_t* listType, uint32_t* size) noexcept;
/// Reads the 12 bytes of a RIFF header at the position.
/// @param size optional; the bytes of chunks behind the form type: the RIFF size less 4. 0 on failure. A RIFF
/// size below 4, as an interrupted writer leaves it, wraps, and so bounds a search by the file only.
/// @param formType optional. @return ZR_E_NO_RIFF_HEADER when 8 bytes came and the id is another.
ZR_API HRESULT riff_ReadFileID(plat::File* file, uint32_t* size, uint32_t* formType) noexcept;
/// Writes the 8 bytes of a chunk header.
ZR_API HRESULT riff_WriteChunkHeader(plat::File* file, uint32_t id, uint32_t size) noexcept;
/// Writes "LIST", the size as given and the list type: `size` must count the four bytes of the type.
ZR_API HRESULT riff_WriteListHeader(plat::File* file, uint32_t listType, uint32_t size) noexcept;
/// Writes "RIFF", the size as given and the form type: `size` must count the four bytes of the type.
ZR_API HRESULT riff_WriteFileID(plat::File* file, uint32_t formType, uint32_t size) noexcept;

// ---- Data ------------------------------------------------------------------------------------------

/// Reads `count` bytes and skips the pad byte of an odd count.
ZR_API HRESULT riff_ReadData(plat::File* file, void* buffer, uint32_t count) noexcept;
/// Reads what fits of a chunk, then skips its unread rest and its pad byte.
ZR_API HRESULT riff_ReadDataBounded(plat::File* file, void* buffer, uint32_t bufferSize, uint32_t chunkSize) noexcept;
/// Reads chunk->size bytes as riff_ReadData does into a new block of the house heap; free it as such a block.
/// Size 0 gives a null pointer and success, a failure a null pointer. A size beyond the end of the file
/// fails as the short read would, without the allocation.
/// @return also E_OUTOFMEMORY.
ZR_API HRESULT riff_ReadDataAlloc(plat::File* file, tZRCHUNKDATA* chunk) noexcept;
/// Writes a chunk with its pad byte. @param total optional; the bytes it takes in the file: 8 and the padded size.
ZR_API HRESULT riff_WriteChunk(plat::File* file, uint32_t id, const void* data, uint32_t size,
                               uint32_t* total) noexcept;
/// Writes `text` in the ANSI code page with its terminator, and one more zero byte when that makes an odd count.
/// @param written optional; the padded count. @return also E_OUTOFMEMORY.
ZR_API HRESULT riff_WriteANSIString(plat::File* file, const char16_t* text, uint32_t* written) noexcept;
/// Reads text in the ANSI code page from a chunk's data and moves to the end of the chunk, past its pad byte.
/// @param characters room of `buffer` with the terminator; what doesn't fit is cut. Bytes are cut to this count
/// before the conversion.
/// @param size in: the chunk's size, at least 1; out: of no meaning (one more than it was).
/// @return E_INVALIDARG without a buffer, room or size; E_OUTOFMEMORY.
ZR_API HRESULT riff_ReadANSIString(plat::File* file, char16_t* buffer, uint32_t characters, uint32_t* size) noexcept;

// ---- Positions -------------------------------------------------------------------------------------

/// The position, its low 32 bits.
ZR_API HRESULT riff_SaveLocation(plat::File* file, uint32_t* position) noexcept;
/// Moves to a position from the start.
ZR_API HRESULT riff_RestoreLocation(plat::File* file, uint32_t position) noexcept;
/// Moves forward by `size` rounded up to even. @return that count (not a code); 64 bits, so that it can't wrap to 0.
ZR_API uint64_t riff_SkipChunk(plat::File* file, uint32_t size) noexcept;
/// Moves to offset 12, the first chunk.
ZR_API HRESULT riff_SeekDataStart(plat::File* file) noexcept;

// ---- Searches: headers are read, data never --------------------------------------------------------

/// Finds the next chunk with `id`. On success the position is at its first data byte.
/// @param size optional; the declared size, without the pad.
/// @param bound optional; stored when the chunk was found and when the bound ran out. Below 8 nothing is read. A
/// chunk that reaches past the bound leaves 0.
ZR_API HRESULT riff_FindChunkHeader(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept;
/// Finds a chunk from the start of the file, within what the RIFF header counts.
/// @param bound optional; what it held on entry is ignored, and it receives the final bound in any case.
/// @return also ZR_E_NO_RIFF_HEADER.
ZR_API HRESULT riff_FindChunkHeaderInRIFF(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept;
/// Finds the next LIST of a type, skipping those of other types. On success the position is at its first entry.
/// @param size optional; the bytes of its entries.
ZR_API HRESULT riff_FindListChunk(plat::File* file, uint32_t listType, uint32_t* size, uint32_t* bound) noexcept;
/// The same from the start of the file, within what the RIFF header counts.
ZR_API HRESULT riff_FindListChunkFromStart(plat::File* file, uint32_t listType, uint32_t* size) noexcept;
/// Counts the entries from the position on, while 8 bytes of bound are left; restores the position.
/// @param count receives the count reached, on failure too. Without a bound the count ends at the end of the
/// file, with ZR_E_FILE_READ.
ZR_API HRESULT riff_GetNumListEntries(plat::File* file, uint32_t* count, uint32_t* bound) noexcept;
/// Steps over `index` entries; the position stays where the walk ended.
/// @return ZR_E_NOT_FOUND when fewer than 8 bytes of bound are left before.
ZR_API HRESULT riff_SeekListEntry(plat::File* file, uint32_t index, uint32_t* bound) noexcept;

// ---- The RIFF as a whole ---------------------------------------------------------------------------

/// Writes the RIFF size, at offset 4; restores the position.
ZR_API HRESULT riff_SetRIFFSize(plat::File* file, uint32_t size) noexcept;
/// Adds `delta` to the RIFF size and restores the position.
/// @return ZR_E_FILE_TOO_LARGE when the sum reaches 0xFFFFFFF8: the size stays and the file ends where the old
/// size says, which undoes an append that was too much. A sum below 0 is written as 0.
ZR_API HRESULT riff_UpdateRIFFSize(plat::File* file, int64_t delta) noexcept;
/// The size of the file by its RIFF header, read at offset 0: RIFF size and 8.
ZR_API HRESULT riff_GetFileSize(plat::File* file, uint32_t* size) noexcept;
/// Removes the first chunk with `id` from the RIFF (or with `isList` the first LIST of that type), moves what
/// follows down and cuts the file. There is no temporary file: a failure on the way leaves a half-moved tail.
/// @param removed optional; the bytes that went. The position is left open.
ZR_API HRESULT riff_DeleteChunk(plat::File* file, uint32_t id, uint32_t* removed, int32_t isList) noexcept;

// ---- CD audio descriptors --------------------------------------------------------------------------

/// Reads a descriptor at the position.
/// @return ZR_E_UNKNOWN_FORMAT when the form type isn't "CDDA", ZR_E_UNSUPPORTED_VERSION when its format
/// chunk isn't 24 bytes long.
ZR_API HRESULT riff_ReadRIFFCDDA(plat::File* file, tZRCDDA* record) noexcept;
/// Opens and reads a descriptor. Every output is optional and is 0 on failure.
/// @param startFrames (minute * 60 + second) * 75 + frame. @return also ZR_E_FILE_OPEN.
ZR_API HRESULT riff_ReadCDAFile(const char16_t* path, uint32_t* track, uint32_t* startSector, uint32_t* startFrames,
                                uint32_t* lengthSectors, uint32_t* serial) noexcept;
