// SPDX-License-Identifier: Apache-2.0
// RIFF over a block of memory: the cursor, headers, data and searches.
#include "marlo110k/mriff.h"

#include <algorithm>

#include "media/riff/chunk_rules.h"

using namespace marlo::riff;

namespace {

/// Runs a search over a copy of the cursor, which stays in registers since nothing else can see it, and moves the
/// caller's to where it ended.
template <class Search>
HRESULT OnCopy(_tMRIFF* cursor, Search search) noexcept {
  _tMRIFF copy = *cursor;
  const HRESULT result = search(MemoryBytes(&copy));
  cursor->current = copy.current;
  return result;
}

}  // namespace

HRESULT mriff_Init(_tMRIFF* cursor, void* block, uint32_t dataSize, uint32_t capacity) noexcept {
  if (cursor == nullptr) return E_POINTER;
  if (dataSize > capacity || (block == nullptr && capacity != 0)) return E_INVALIDARG;
  auto* const base = static_cast<uint8_t*>(block);
  *cursor = {base, base, base + dataSize, base + capacity, dataSize, capacity};
  return S_OK;
}

uint8_t* mriff_GetFilePointer(_tMRIFF* cursor) noexcept { return cursor != nullptr ? cursor->current : nullptr; }

uint32_t mriff_SetFilePointer(_tMRIFF* cursor, int64_t offset, int32_t*, uint32_t method) noexcept {
  return mriff_ZrSetFilePointer(cursor, offset, method);
}

uint32_t mriff_ZrSetFilePointer(_tMRIFF* cursor, int64_t offset, uint32_t method) noexcept {
  if (cursor == nullptr) return 0;
  const int64_t dataBytes = cursor->dataEnd - cursor->base;
  const int64_t current = cursor->current - cursor->base;
  const int64_t origins[] = {0, current, dataBytes};
  const int64_t origin = method < 3 ? origins[method] : current;
  if (method >= 3) offset = 0;
  // Held to the distances to both ends first, so that no sum can overflow.
  const int64_t target = origin + std::clamp(offset, -origin, dataBytes - origin);
  cursor->current = cursor->base + target;
  return static_cast<uint32_t>(target);
}

int32_t mriff_ReadFile(_tMRIFF* cursor, void* buffer, uint32_t count, uint32_t* got) noexcept {
  Store(got, 0u);
  if (cursor == nullptr || (buffer == nullptr && count != 0)) return 0;
  const uint8_t* const start = cursor->current;
  const bool all = MemoryBytes(cursor).Read(buffer, count);
  Store(got, static_cast<uint32_t>(cursor->current - start));
  return all ? 1 : 0;
}

int32_t mriff_WriteFile(_tMRIFF* cursor, const void* data, uint32_t count, uint32_t* written) noexcept {
  Store(written, 0u);
  if (cursor == nullptr || (data == nullptr && count != 0)) return 0;
  Store(written, MemoryBytes(cursor).WriteWhatFits(data, count));
  return 1;
}

uint32_t mriff_UpdateDataSize(_tMRIFF* cursor, uint32_t count) noexcept {
  if (cursor == nullptr) return 0;
  const auto room = static_cast<uint64_t>(cursor->capacityEnd - cursor->dataEnd);
  const auto applied = static_cast<uint32_t>(std::min<uint64_t>(count, room));
  cursor->dataEnd += applied;
  return applied;
}

HRESULT mriff_ReadChunkHeader(_tMRIFF* cursor, uint32_t* id, uint32_t* size) noexcept {
  if (cursor == nullptr || id == nullptr || size == nullptr) return E_INVALIDARG;
  HeaderOf<RiffFraming> header;
  if (!RiffFraming::Read(MemoryBytes(cursor), &header)) return ZR_E_FILE_READ;
  *id = header.id;
  *size = header.dataBytes;
  return S_OK;
}

HRESULT mriff_ReadListHeader(_tMRIFF* cursor, uint32_t* listType, uint32_t* size) noexcept {
  if (cursor == nullptr || listType == nullptr || size == nullptr) return E_INVALIDARG;
  return ReadListHeader<RiffFraming>(MemoryBytes(cursor), listType, size);
}

HRESULT mriff_ReadFileID(_tMRIFF* cursor, uint32_t* size, uint32_t* formType) noexcept {
  Store(size, 0u);
  if (cursor == nullptr) return E_INVALIDARG;
  const MemoryBytes bytes(cursor);
  const bool hasId = bytes.Remaining() >= sizeof(uint32_t);
  const HRESULT result = ReadRiffHeader(bytes, size, formType);
  return hasId ? result : ZR_E_NO_RIFF_HEADER;
}

HRESULT mriff_WriteChunkHeader(_tMRIFF* cursor, uint32_t id, uint32_t size) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return WriteResult(RiffFraming::Write(MemoryBytes(cursor), id, size));
}

HRESULT mriff_WriteListHeader(_tMRIFF* cursor, uint32_t listType, uint32_t size) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return WriteTypedHeader(MemoryBytes(cursor), RiffFraming::kList, size, listType);
}

HRESULT mriff_WriteFileID(_tMRIFF* cursor, uint32_t formType, uint32_t size) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return WriteTypedHeader(MemoryBytes(cursor), ZrChunkId("RIFF"), size, formType);
}

HRESULT mriff_ReadData(_tMRIFF* cursor, void* buffer, uint32_t count) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return ReadData<RiffFraming>(MemoryBytes(cursor), buffer, count);
}

HRESULT mriff_ReadDataBounded(_tMRIFF* cursor, void* buffer, uint32_t bufferSize, uint32_t chunkSize) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return ReadDataBounded<RiffFraming>(MemoryBytes(cursor), buffer, bufferSize, chunkSize);
}

HRESULT mriff_ReadDataAlloc(_tMRIFF* cursor, tZRCHUNKDATA* chunk) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return ReadDataAlloc<RiffFraming>(MemoryBytes(cursor), chunk);
}

HRESULT mriff_SaveLocation(_tMRIFF* cursor, uint32_t* position) noexcept {
  if (cursor == nullptr || position == nullptr) return E_INVALIDARG;
  *position = static_cast<uint32_t>(cursor->current - cursor->base);
  return S_OK;
}

HRESULT mriff_RestoreLocation(_tMRIFF* cursor, uint32_t position) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  MemoryBytes(cursor).Seek(position);
  return S_OK;
}

uint64_t mriff_SkipChunk(_tMRIFF* cursor, uint32_t size) noexcept {
  const uint64_t padded = RiffFraming::Padded(size);
  if (cursor != nullptr) MemoryBytes(cursor).Skip(static_cast<int64_t>(padded));
  return padded;
}

HRESULT mriff_SeekDataStart(_tMRIFF* cursor) noexcept {
  return mriff_RestoreLocation(cursor, RiffFraming::kFileHeaderBytes);
}

HRESULT mriff_FindChunkHeader(_tMRIFF* cursor, uint32_t id, uint32_t* size, uint32_t* bound) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return OnCopy(cursor, [=](MemoryBytes bytes) { return FindChunk<RiffFraming>(bytes, id, size, bound); });
}

HRESULT mriff_FindChunkHeaderInRIFF(_tMRIFF* cursor, uint32_t id, uint32_t* size, uint32_t* bound) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  if (bound != nullptr && *bound < RiffFraming::kFileHeaderBytes) return ZR_E_NOT_FOUND;
  const HRESULT result = mriff_ReadFileID(cursor, nullptr, nullptr);
  if (FAILED(result)) return result;
  if (bound != nullptr) *bound -= RiffFraming::kFileHeaderBytes;
  return mriff_FindChunkHeader(cursor, id, size, bound);
}

HRESULT mriff_FindListChunk(_tMRIFF* cursor, uint32_t listType, uint32_t* size, uint32_t* bound) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return OnCopy(cursor, [=](MemoryBytes bytes) { return FindList<RiffFraming>(bytes, listType, size, bound); });
}

HRESULT mriff_FindListChunkFromStart(_tMRIFF* cursor, uint32_t listType, uint32_t* size) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  MemoryBytes(cursor).Seek(0);
  uint32_t left = 0;
  const HRESULT result = mriff_ReadFileID(cursor, &left, nullptr);
  return FAILED(result) ? result : FindList<RiffFraming>(MemoryBytes(cursor), listType, size, &left);
}

HRESULT mriff_GetNumListEntries(_tMRIFF* cursor, uint32_t* count, uint32_t* bound) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  return OnCopy(cursor, [=](MemoryBytes bytes) { return CountEntries<RiffFraming>(bytes, count, bound); });
}

HRESULT mriff_GetInfoString(_tMRIFF* cursor, uint32_t id, void* buffer, uint32_t bufferSize, uint32_t* bound) noexcept {
  if (cursor == nullptr) return E_INVALIDARG;
  const MemoryBytes bytes(cursor);
  const PositionKeeper<MemoryBytes> keeper(bytes);
  uint32_t listBytes = 0;
  HRESULT result = FindList<RiffFraming>(bytes, ZrChunkId("INFO"), &listBytes, bound);
  if (FAILED(result)) return result;
  uint32_t chunkBytes = 0;
  result = FindChunk<RiffFraming>(bytes, id, &chunkBytes, &listBytes);
  if (FAILED(result)) return result;
  return ReadData<RiffFraming>(bytes, buffer, std::min(chunkBytes, bufferSize));
}
