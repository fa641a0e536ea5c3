// SPDX-License-Identifier: Apache-2.0
// Wave64 over an open file: headers, data and searches.
#include "marlo110k/riff64.h"

#include "media/riff/chunk_rules.h"
#include "media/riff/riff64_write.h"

using namespace marlo::riff;

HRESULT riff64_ValidateChunkHeader(const GUID*, uint64_t size) noexcept {
  constexpr uint64_t kRefused = 0x800000007;
  if ((size & kRefused) != 0) return ZR_E_BAD_STREAM;
  return size == 0 ? ZR_E_EMPTY_CHUNK : S_OK;
}

HRESULT riff64_ReadChunkHeader(plat::File* file, GUID* label, uint64_t* size) noexcept {
  if (label == nullptr || size == nullptr) return E_INVALIDARG;
  HeaderOf<Riff64Framing> header;
  if (!Riff64Framing::Read(FileBytes(file), &header)) return ZR_E_FILE_READ;
  *label = header.id;
  *size = header.dataBytes;
  return S_OK;
}

HRESULT riff64_ReadListHeader(plat::File* file, GUID* listType, uint64_t* size) noexcept {
  if (listType == nullptr || size == nullptr) return E_INVALIDARG;
  return ReadListHeader<Riff64Framing>(FileBytes(file), listType, size);
}

HRESULT riff64_ReadFileID(plat::File* file, uint64_t* size, GUID* formLabel) noexcept {
  const FileBytes bytes(file);
  HeaderOf<Riff64Framing> header;
  // A header that came short can't carry the label: it is a mismatch, not a read error.
  if (!Riff64Framing::Read(bytes, &header) || header.id != kZrLabelRiff) return ZR_E_NO_RIFF_HEADER;
  GUID form;
  if (!bytes.Read(&form, sizeof form)) return ZR_E_FILE_READ;
  Store(formLabel, form);
  Store(size, Riff64Framing::Entries(header.dataBytes));
  return S_OK;
}

HRESULT riff64_WriteChunkHeader(plat::File* file, const GUID* label, uint64_t size) noexcept {
  if (label == nullptr) return E_INVALIDARG;
  return WriteResult(Riff64Framing::Write(FileBytes(file), *label, size));
}

HRESULT riff64_WriteListHeader(plat::File* file, const GUID* listType, uint64_t size) noexcept {
  if (listType == nullptr) return E_INVALIDARG;
  return WriteTypedHeader64(FileBytes(file), kZrLabelList, size, *listType);
}

HRESULT riff64_WriteFileID(plat::File* file, const GUID* formLabel, uint64_t size) noexcept {
  if (formLabel == nullptr) return E_INVALIDARG;
  return WriteTypedHeader64(FileBytes(file), kZrLabelRiff, size, *formLabel);
}

HRESULT riff64_getGUIDLabel() noexcept { return S_OK; }

HRESULT riff64_getGUIDLabelProperly() noexcept { return S_OK; }

HRESULT riff64_ReadData(plat::File* file, void* buffer, uint32_t count) noexcept {
  return ReadData<Riff64Framing>(FileBytes(file), buffer, count);
}

HRESULT riff64_ReadDataBounded(plat::File* file, void* buffer, uint32_t bufferSize, uint64_t chunkSize) noexcept {
  return ReadDataBounded<Riff64Framing>(FileBytes(file), buffer, bufferSize, chunkSize);
}

HRESULT riff64_ReadDataAlloc(plat::File* file, tZRCHUNKDATA* chunk) noexcept {
  return ReadDataAlloc<Riff64Framing>(FileBytes(file), chunk);
}

HRESULT riff64_SaveLocation(plat::File* file, uint64_t* position) noexcept {
  if (position == nullptr) return E_INVALIDARG;
  return ReadResult(FileBytes(file).Tell(position));
}

HRESULT riff64_RestoreLocation(plat::File* file, uint64_t position) noexcept {
  return ReadResult(FileBytes(file).Seek(position));
}

uint64_t riff64_SkipChunk(plat::File* file, uint64_t size) noexcept {
  const uint64_t padded = Riff64Framing::Padded(size);
  FileBytes(file).Skip(static_cast<int64_t>(padded));
  return padded;
}

HRESULT riff64_SeekDataStart(plat::File* file) noexcept {
  return ReadResult(FileBytes(file).Seek(Riff64Framing::kFileHeaderBytes));
}

HRESULT riff64_FindChunkHeader(plat::File* file, const GUID* label, uint64_t* size, int64_t* bound) noexcept {
  if (label == nullptr) return E_INVALIDARG;
  return FindChunk<Riff64Framing>(FileBytes(file), *label, size, bound);
}

HRESULT riff64_FindChunkHeaderInRIFF(plat::File* file, const GUID* label, uint64_t* size, int64_t* bound) noexcept {
  if (label == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint64_t chunkBytes = 0;
  HRESULT result = bytes.Seek(0) ? riff64_ReadFileID(file, &chunkBytes, nullptr) : ZR_E_FILE_READ;
  auto left = static_cast<int64_t>(chunkBytes);
  if (SUCCEEDED(result)) result = FindChunk<Riff64Framing>(bytes, *label, size, &left);
  Store(bound, left);
  return result;
}

HRESULT riff64_FindListChunk(plat::File* file, const GUID* listType, uint64_t* size, int64_t* bound) noexcept {
  if (listType == nullptr) return E_INVALIDARG;
  return FindList<Riff64Framing>(FileBytes(file), *listType, size, bound);
}

HRESULT riff64_FindListChunkFromStart(plat::File* file, const GUID* listType, uint64_t* size) noexcept {
  if (listType == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint64_t chunkBytes = 0;
  const HRESULT result = bytes.Seek(0) ? riff64_ReadFileID(file, &chunkBytes, nullptr) : ZR_E_FILE_READ;
  if (FAILED(result)) return result;
  auto left = static_cast<int64_t>(chunkBytes);
  return FindList<Riff64Framing>(bytes, *listType, size, &left);
}

HRESULT riff64_GetNumListEntries(plat::File* file, uint32_t* count, int64_t* bound) noexcept {
  return CountEntries<Riff64Framing>(FileBytes(file), count, bound);
}

HRESULT riff64_SeekListEntry(plat::File* file, uint32_t index, int64_t* bound) noexcept {
  return SeekEntry<Riff64Framing>(FileBytes(file), index, bound);
}
