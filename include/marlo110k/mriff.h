// SPDX-License-Identifier: Apache-2.0
// RIFF chunks in a block of memory that the caller owns: the rules of riff.h over a cursor.
//
// Reads stop at the end of the data, writes at the end of the block, and a seek is held to the data.
// Results, where a line names no others: S_OK; ZR_E_FILE_READ for a read that came short (what was there has
// been copied and the cursor is at the end of the data), ZR_E_FILE_WRITE for a write that didn't fit;
// E_INVALIDARG for a null cursor or a null argument that isn't marked optional. Bounds are those of riff.h.
// Nothing is allocated but by mriff_ReadDataAlloc. One thread at a time uses a cursor.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/export.h"
#include "marlo110k/riff.h"
#include "marlo110k/waveformat.h"

/// A cursor over a block. base <= current <= dataEnd <= capacityEnd.
struct _tMRIFF {
  uint8_t* base;
  uint8_t* current;
  uint8_t* dataEnd;      ///< Grows when writing passes it.
  uint8_t* capacityEnd;  ///< End of the block.
  uint32_t dataSize;     ///< As given to mriff_Init.
  uint32_t capacity;     ///< As given to mriff_Init.
};
static_assert(sizeof(_tMRIFF) == 40 && offsetof(_tMRIFF, dataEnd) == 16 && offsetof(_tMRIFF, dataSize) == 32);

// ---- The cursor ------------------------------------------------------------------------------------

/// Sets a cursor at the start of a block. The block must outlive it.
/// @return E_POINTER for a null cursor, E_INVALIDARG when the data is larger than the block or a block with
/// capacity is null.
ZR_API HRESULT mriff_Init(_tMRIFF* cursor, void* block, uint32_t dataSize, uint32_t capacity) noexcept;
/// The cursor's place itself, not an offset; null for a null cursor.
ZR_API uint8_t* mriff_GetFilePointer(_tMRIFF* cursor) noexcept;
/// Moves the cursor by `offset` from the base (method 0), the cursor (1) or the end of the data (2), held to the
/// data; any other method keeps it. @param ignoredHigh not used. @return the offset from the base.
ZR_API uint32_t mriff_SetFilePointer(_tMRIFF* cursor, int64_t offset, int32_t* ignoredHigh, uint32_t method) noexcept;
/// The same without the unused argument.
ZR_API uint32_t mriff_ZrSetFilePointer(_tMRIFF* cursor, int64_t offset, uint32_t method) noexcept;
/// Copies what is there of `count` bytes. @param got optional. @return 1 when all came, else 0.
ZR_API int32_t mriff_ReadFile(_tMRIFF* cursor, void* buffer, uint32_t count, uint32_t* got) noexcept;
/// Copies what fits of `count` bytes. @param written optional, the only sign of a shortfall.
/// @return 1; 0 for a null argument.
ZR_API int32_t mriff_WriteFile(_tMRIFF* cursor, const void* data, uint32_t count, uint32_t* written) noexcept;
/// Moves the end of the data up by at most `count`, for callers that filled the block themselves.
/// @return the count by which it moved.
ZR_API uint32_t mriff_UpdateDataSize(_tMRIFF* cursor, uint32_t count) noexcept;

// ---- Headers and data, as in riff.h ----------------------------------------------------------------

/// As riff_ReadChunkHeader.
ZR_API HRESULT mriff_ReadChunkHeader(_tMRIFF* cursor, uint32_t* id, uint32_t* size) noexcept;
/// As riff_ReadListHeader.
ZR_API HRESULT mriff_ReadListHeader(_tMRIFF* cursor, uint32_t* listType, uint32_t* size) noexcept;
/// As riff_ReadFileID, but fewer than 4 bytes of data are ZR_E_NO_RIFF_HEADER: the id is compared first.
ZR_API HRESULT mriff_ReadFileID(_tMRIFF* cursor, uint32_t* size, uint32_t* formType) noexcept;
/// As riff_WriteChunkHeader.
ZR_API HRESULT mriff_WriteChunkHeader(_tMRIFF* cursor, uint32_t id, uint32_t size) noexcept;
/// As riff_WriteListHeader.
ZR_API HRESULT mriff_WriteListHeader(_tMRIFF* cursor, uint32_t listType, uint32_t size) noexcept;
/// As riff_WriteFileID.
ZR_API HRESULT mriff_WriteFileID(_tMRIFF* cursor, uint32_t formType, uint32_t size) noexcept;
/// As riff_ReadData.
ZR_API HRESULT mriff_ReadData(_tMRIFF* cursor, void* buffer, uint32_t count) noexcept;
/// As riff_ReadDataBounded.
ZR_API HRESULT mriff_ReadDataBounded(_tMRIFF* cursor, void* buffer, uint32_t bufferSize, uint32_t chunkSize) noexcept;
/// As riff_ReadDataAlloc.
ZR_API HRESULT mriff_ReadDataAlloc(_tMRIFF* cursor, tZRCHUNKDATA* chunk) noexcept;

// ---- Positions: offsets from the base --------------------------------------------------------------

/// As riff_SaveLocation.
ZR_API HRESULT mriff_SaveLocation(_tMRIFF* cursor, uint32_t* position) noexcept;
/// As riff_RestoreLocation, held to the data.
ZR_API HRESULT mriff_RestoreLocation(_tMRIFF* cursor, uint32_t position) noexcept;
/// As riff_SkipChunk: the count is the rounded size even where the end of the data stops the cursor.
ZR_API uint64_t mriff_SkipChunk(_tMRIFF* cursor, uint32_t size) noexcept;
/// As riff_SeekDataStart.
ZR_API HRESULT mriff_SeekDataStart(_tMRIFF* cursor) noexcept;

// ---- Searches --------------------------------------------------------------------------------------

/// As riff_FindChunkHeader.
ZR_API HRESULT mriff_FindChunkHeader(_tMRIFF* cursor, uint32_t id, uint32_t* size, uint32_t* bound) noexcept;
/// Reads the RIFF header at the cursor (it doesn't go to the base) and finds a chunk behind it.
/// @param size optional; stored on success only. @param bound optional; counts from the RIFF header on, so it must
/// be 12 at least (else ZR_E_NOT_FOUND).
ZR_API HRESULT mriff_FindChunkHeaderInRIFF(_tMRIFF* cursor, uint32_t id, uint32_t* size, uint32_t* bound) noexcept;
/// As riff_FindListChunk.
ZR_API HRESULT mriff_FindListChunk(_tMRIFF* cursor, uint32_t listType, uint32_t* size, uint32_t* bound) noexcept;
/// As riff_FindListChunkFromStart, from the base.
ZR_API HRESULT mriff_FindListChunkFromStart(_tMRIFF* cursor, uint32_t listType, uint32_t* size) noexcept;
/// As riff_GetNumListEntries.
ZR_API HRESULT mriff_GetNumListEntries(_tMRIFF* cursor, uint32_t* count, uint32_t* bound) noexcept;
/// Reads what fits of the chunk `id` in the next LIST "INFO"; the cursor stays where it was. No terminator is
/// added. @param bound as for mriff_FindListChunk.
ZR_API HRESULT mriff_GetInfoString(_tMRIFF* cursor, uint32_t id, void* buffer, uint32_t bufferSize,
                                   uint32_t* bound) noexcept;

// ---- Wave images -----------------------------------------------------------------------------------

/// Writes the front of a wave file and leaves the cursor at the first data byte. A PCM format is written with 16
/// bytes, its block align and average rate made from channels, rate and bits; any other with its first 18.
/// @param dataBytes size of the data chunk. @param trailingBytes bytes of chunks that will follow it.
/// @return ZR_E_FILE_WRITE when the block is too small; pieces that fitted have been written.
ZR_API HRESULT mriff_WriteWaveHeader(_tMRIFF* cursor, const WAVEFORMATEX* format, uint32_t dataBytes,
                                     uint32_t trailingBytes) noexcept;
/// The same; the format is first made a plain 18-byte one.
ZR_API HRESULT mriff_WriteWaveHeader(_tMRIFF* cursor, const _zrwaveformat* format, uint32_t dataBytes,
                                     uint32_t trailingBytes) noexcept;
/// Reads the format of a wave image; format and data chunk may stand in either order.
/// @param format receives 18 bytes at most, cleared before; untouched on failure.
/// @param dataSize optional; the declared size of the data chunk.
/// @return ZR_E_NO_RIFF_HEADER; E_FAIL for another form type; ZR_E_NOT_FOUND. The search takes the RIFF header off
/// what the RIFF size counts: a chunk with fewer than 12 bytes behind its header isn't found.
ZR_API HRESULT mriff_GetWfx(WAVEFORMATEX* format, const void* block, uint32_t blockSize, uint32_t* dataSize) noexcept;
/// The same; the record, of full length, is made from the 18-byte form without extra bytes.
ZR_API HRESULT mriff_GetWfx(_zrwaveformat* format, const void* block, uint32_t blockSize, uint32_t* dataSize) noexcept;
