// SPDX-License-Identifier: Apache-2.0
// Wave64 chunks in an open file: the calls of riff.h with 16-byte labels and 64-bit sizes.
//
// A chunk is a label, an unsigned 64-bit size that counts the 24 header bytes and the data, then the data, then
// zero bytes up to a multiple of 8. A size field written by riff64_WriteChunkHeader or riff64_WriteChunk doesn't
// count the zero bytes, one closed by riff64_CompleteChunk does; readers round up and so take both. Sizes handed to
// and from these calls are those of the data alone; a field below 24 (or with its top bit set) reads as 0.
//
// Positions, bounds and results are those of riff.h, with bounds that are signed and may run negative, and
// chunk headers of 24 bytes. A label is 16 raw bytes; null is E_INVALIDARG. One thread at a time uses a file.
#pragma once

#include <cstdint>

#include "marlo110k/contract/guid.h"
#include "marlo110k/contract/hresult.h"
#include "marlo110k/displist.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/riff.h"

// The labels that the library itself writes and looks for.
/// The file header.
inline constexpr GUID kZrLabelRiff = {0x66666972, 0x912E, 0x11CF, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
/// A list chunk.
inline constexpr GUID kZrLabelList = {0x7473696C, 0x912F, 0x11CF, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
/// The form of an audio file.
inline constexpr GUID kZrLabelWave = {0x65766177, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
/// The format chunk.
inline constexpr GUID kZrLabelFmt = {0x20746D66, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
/// The samples.
inline constexpr GUID kZrLabelData = {0x61746164, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
/// Padding. Its third group is 113D, not the 11D3 of its neighbours.
inline constexpr GUID kZrLabelJunk = {0x6B6E756A, 0xACF3, 0x113D, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
/// Broadcast Wave description.
inline constexpr GUID kZrLabelBext = {0x74786562, 0xACF3, 0x11D3, {0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A}};
/// An item of the display list.
inline constexpr GUID kZrLabelDisplay = {0x612CCA25, 0x92BB, 0x4C55, {0x84, 0x08, 0x7B, 0xDA, 0x2F, 0x15, 0xBD, 0x27}};

// ---- Headers ---------------------------------------------------------------------------------------

/// Judges a size: ZR_E_BAD_STREAM with any bit of 0x800000007 set, ZR_E_EMPTY_CHUNK for 0. The label isn't looked at.
ZR_API HRESULT riff64_ValidateChunkHeader(const GUID* label, uint64_t size) noexcept;
/// Reads the 24 bytes of a chunk header.
ZR_API HRESULT riff64_ReadChunkHeader(plat::File* file, GUID* label, uint64_t* size) noexcept;
/// Reads a list's header and type. @param size receives the bytes of the entries, 0 for a list too short for its type.
/// @return ZR_E_NO_LIST_HEADER for another label.
ZR_API HRESULT riff64_ReadListHeader(plat::File* file, GUID* listType, uint64_t* size) noexcept;
/// Reads the 40 bytes of a file header at the position.
/// @param size optional; the bytes of chunks behind the form label. @param formLabel optional. Both stay as they were
/// on failure. @return ZR_E_NO_RIFF_HEADER for another label and for fewer than 24 bytes.
ZR_API HRESULT riff64_ReadFileID(plat::File* file, uint64_t* size, GUID* formLabel) noexcept;
/// Writes the 24 bytes of a chunk header.
ZR_API HRESULT riff64_WriteChunkHeader(plat::File* file, const GUID* label, uint64_t size) noexcept;
/// Writes the list label, the size and the list type: `size` must count the 16 bytes of the type.
ZR_API HRESULT riff64_WriteListHeader(plat::File* file, const GUID* listType, uint64_t size) noexcept;
/// Writes the riff label, the size and the form label: `size` must count the 16 bytes of the label.
ZR_API HRESULT riff64_WriteFileID(plat::File* file, const GUID* formLabel, uint64_t size) noexcept;
/// Does nothing; 0.
ZR_API HRESULT riff64_getGUIDLabel() noexcept;
/// Does nothing; 0.
ZR_API HRESULT riff64_getGUIDLabelProperly() noexcept;

// ---- Data ------------------------------------------------------------------------------------------

/// Reads `count` bytes and moves on to the next multiple of 8.
ZR_API HRESULT riff64_ReadData(plat::File* file, void* buffer, uint32_t count) noexcept;
/// Reads what fits of a chunk, then skips its unread rest and its padding.
ZR_API HRESULT riff64_ReadDataBounded(plat::File* file, void* buffer, uint32_t bufferSize, uint64_t chunkSize) noexcept;
/// As riff_ReadDataAlloc.
ZR_API HRESULT riff64_ReadDataAlloc(plat::File* file, tZRCHUNKDATA* chunk) noexcept;
/// Writes a chunk with its padding. @param total optional; 24 and the padded size.
ZR_API HRESULT riff64_WriteChunk(plat::File* file, const GUID* label, const void* data, uint32_t size,
                                 uint64_t* total) noexcept;
/// Writes data, then zero bytes, one a write, up to a multiple of 8. @param total optional; the padded count.
ZR_API HRESULT riff64_WriteData(plat::File* file, const void* data, uint32_t count, uint64_t* total) noexcept;
/// One plain write without padding.
ZR_API HRESULT riff64_WriteToFile(plat::File* file, const void* data, uint32_t count) noexcept;

// ---- Chunks of a length that isn't known yet: prepare, write, complete -----------------------------

/// Writes a chunk header of no data. @param start receives its position.
ZR_API HRESULT riff64_PrepareChunk(plat::File* file, const GUID* label, uint64_t* start) noexcept;
/// Writes a list header and type. @param start receives its position. @return ZR_E_FILE_WRITE for any failure.
ZR_API HRESULT riff64_PrepareList(plat::File* file, const GUID* listType, uint64_t* start) noexcept;
/// Pads the chunk that began at `start`, writes its size and returns to its end.
ZR_API HRESULT riff64_CompleteChunk(plat::File* file, uint64_t start) noexcept;
/// Prepares a chunk, writes its data and completes it.
ZR_API HRESULT riff64_WriteChunkToFile(plat::File* file, const GUID* label, const void* data, uint32_t count) noexcept;
/// Bytes from `start` to the position; 0 for a bad file.
ZR_API int64_t riff64_AmountWritten(plat::File* file, uint64_t start) noexcept;
/// Writes single zero bytes until the position is a multiple of 8 bytes away from `start`.
ZR_API HRESULT riff64_Pad(plat::File* file, uint64_t start) noexcept;

// ---- Positions -------------------------------------------------------------------------------------

/// The position.
ZR_API HRESULT riff64_SaveLocation(plat::File* file, uint64_t* position) noexcept;
/// Moves to a position from the start.
ZR_API HRESULT riff64_RestoreLocation(plat::File* file, uint64_t position) noexcept;
/// Moves forward by `size` rounded up to a multiple of 8. @return that count, not a code; it is held below 2^63.
ZR_API uint64_t riff64_SkipChunk(plat::File* file, uint64_t size) noexcept;
/// Moves to offset 40, the first chunk.
ZR_API HRESULT riff64_SeekDataStart(plat::File* file) noexcept;

// ---- Searches --------------------------------------------------------------------------------------

/// As riff_FindChunkHeader; a bound below 24 stops the search.
ZR_API HRESULT riff64_FindChunkHeader(plat::File* file, const GUID* label, uint64_t* size, int64_t* bound) noexcept;
/// As riff_FindChunkHeaderInRIFF.
ZR_API HRESULT riff64_FindChunkHeaderInRIFF(plat::File* file, const GUID* label, uint64_t* size,
                                            int64_t* bound) noexcept;
/// As riff_FindListChunk; a bound below 8 keeps the type from being read.
ZR_API HRESULT riff64_FindListChunk(plat::File* file, const GUID* listType, uint64_t* size, int64_t* bound) noexcept;
/// As riff_FindListChunkFromStart.
ZR_API HRESULT riff64_FindListChunkFromStart(plat::File* file, const GUID* listType, uint64_t* size) noexcept;
/// As riff_GetNumListEntries.
ZR_API HRESULT riff64_GetNumListEntries(plat::File* file, uint32_t* count, int64_t* bound) noexcept;
/// As riff_SeekListEntry.
ZR_API HRESULT riff64_SeekListEntry(plat::File* file, uint32_t index, int64_t* bound) noexcept;

// ---- The file as a whole ---------------------------------------------------------------------------

/// Writes `size` + 24 at offset 16; restores the position.
ZR_API HRESULT riff64_SetRIFFSize(plat::File* file, uint64_t size) noexcept;
/// Adds `delta` to the size field at offset 16; restores the position. There is no upper limit.
ZR_API HRESULT riff64_UpdateRIFFSize(plat::File* file, int64_t delta) noexcept;
/// Removes the first chunk with `label`, as riff_DeleteChunk does; lists aren't searched by type.
/// @return also E_OUTOFMEMORY.
ZR_API HRESULT riff64_DeleteChunk(plat::File* file, const GUID* label, uint64_t* removed) noexcept;

// ---- The display list ------------------------------------------------------------------------------

/// Writes a chunk for each item that has data: its id, its bytes, and zero bytes up to a multiple of 8, which the
/// chunk's size counts. @param total optional; the bytes written, 0 for an empty list.
ZR_API HRESULT displist64_Save(plat::File* file, const tZRDISPLIST* list, uint64_t* total) noexcept;
/// Fills the items whose ids the list carries from the chunks at the position; restores the position. An item's
/// former block is freed; its new size includes the padding, so it can be up to 7 bytes longer than what was saved.
/// @param bound required; below 24 nothing is read.
/// @return on ZR_E_FILE_READ and E_OUTOFMEMORY the list's data has been freed with displist_Free.
ZR_API HRESULT displist64_Load(plat::File* file, tZRDISPLIST* list, int64_t* bound) noexcept;
