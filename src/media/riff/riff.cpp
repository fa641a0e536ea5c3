// SPDX-License-Identifier: Apache-2.0
// RIFF over an open file: headers, data and searches.
#include "marlo110k/riff.h"

#include "media/riff/chunk_rules.h"

using namespace marlo::riff;

HRESULT riff_ValidateChunkHeader(uint32_t, int32_t size) noexcept {
  if (size < 0) return ZR_E_BAD_STREAM;
  return size == 0 ? ZR_E_EMPTY_CHUNK : S_OK;
}

HRESULT riff_ReadChunkHeader(plat::File* file, uint32_t* id, uint32_t* size) noexcept {
  if (id == nullptr || size == nullptr) return E_INVALIDARG;
  HeaderOf<RiffFraming> header;
  if (!RiffFraming::Read(FileBytes(file), &header)) return ZR_E_FILE_READ;
  *id = header.id;
  *size = header.dataBytes;
  return S_OK;
}

HRESULT riff_ReadListHeader(plat::File* file, uint32_t* listType, uint32_t* size) noexcept {
  if (listType == nullptr || size == nullptr) return E_INVALIDARG;
  return ReadListHeader<RiffFraming>(FileBytes(file), listType, size);
}

HRESULT riff_ReadFileID(plat::File* file, uint32_t* size, uint32_t* formType) noexcept {
  return ReadRiffHeader(FileBytes(file), size, formType);
}

HRESULT riff_WriteChunkHeader(plat::File* file, uint32_t id, uint32_t size) noexcept {
  return WriteResult(RiffFraming::Write(FileBytes(file), id, size));
}

HRESULT riff_WriteListHeader(plat::File* file, uint32_t listType, uint32_t size) noexcept {
  return WriteTypedHeader(FileBytes(file), RiffFraming::kList, size, listType);
}

HRESULT riff_WriteFileID(plat::File* file, uint32_t formType, uint32_t size) noexcept {
  return WriteTypedHeader(FileBytes(file), ZrChunkId("RIFF"), size, formType);
}

HRESULT riff_ReadData(plat::File* file, void* buffer, uint32_t count) noexcept {
  return ReadData<RiffFraming>(FileBytes(file), buffer, count);
}

HRESULT riff_ReadDataBounded(plat::File* file, void* buffer, uint32_t bufferSize, uint32_t chunkSize) noexcept {
  return ReadDataBounded<RiffFraming>(FileBytes(file), buffer, bufferSize, chunkSize);
}

HRESULT riff_ReadDataAlloc(plat::File* file, tZRCHUNKDATA* chunk) noexcept {
  return ReadDataAlloc<RiffFraming>(FileBytes(file), chunk);
}

HRESULT riff_WriteChunk(plat::File* file, uint32_t id, const void* data, uint32_t size, uint32_t* total) noexcept {
  if (data == nullptr && size != 0) return E_INVALIDARG;
  const FileBytes bytes(file);
  constexpr uint8_t kPad = 0;
  const bool done =
      RiffFraming::Write(bytes, id, size) && bytes.Write(data, size) && ((size & 1) == 0 || bytes.Write(&kPad, 1));
  if (!done) return ZR_E_FILE_WRITE;
  Store(total, static_cast<uint32_t>(RiffFraming::Padded(size) + RiffFraming::kHeaderBytes));
  return S_OK;
}

HRESULT riff_SaveLocation(plat::File* file, uint32_t* position) noexcept {
  if (position == nullptr) return E_INVALIDARG;
  uint64_t whole = 0;
  if (!FileBytes(file).Tell(&whole)) return ZR_E_FILE_READ;
  *position = static_cast<uint32_t>(whole);
  return S_OK;
}

HRESULT riff_RestoreLocation(plat::File* file, uint32_t position) noexcept {
  return ReadResult(FileBytes(file).Seek(position));
}

uint64_t riff_SkipChunk(plat::File* file, uint32_t size) noexcept {
  const uint64_t padded = RiffFraming::Padded(size);
  FileBytes(file).Skip(static_cast<int64_t>(padded));
  return padded;
}

HRESULT riff_SeekDataStart(plat::File* file) noexcept {
  return ReadResult(FileBytes(file).Seek(RiffFraming::kFileHeaderBytes));
}

HRESULT riff_FindChunkHeader(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept {
  return FindChunk<RiffFraming>(FileBytes(file), id, size, bound);
}

HRESULT riff_FindChunkHeaderInRIFF(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept {
  const FileBytes bytes(file);
  uint32_t left = 0;
  HRESULT result = bytes.Seek(0) ? ReadRiffHeader(bytes, &left, nullptr) : ZR_E_FILE_READ;
  if (SUCCEEDED(result)) result = FindChunk<RiffFraming>(bytes, id, size, &left);
  Store(bound, left);
  return result;
}

HRESULT riff_FindListChunk(plat::File* file, uint32_t listType, uint32_t* size, uint32_t* bound) noexcept {
  return FindList<RiffFraming>(FileBytes(file), listType, size, bound);
}

HRESULT riff_FindListChunkFromStart(plat::File* file, uint32_t listType, uint32_t* size) noexcept {
  return FindRiffListFromStart(FileBytes(file), listType, size);
}

HRESULT riff_GetNumListEntries(plat::File* file, uint32_t* count, uint32_t* bound) noexcept {
  return CountEntries<RiffFraming>(FileBytes(file), count, bound);
}

HRESULT riff_SeekListEntry(plat::File* file, uint32_t index, uint32_t* bound) noexcept {
  return SeekEntry<RiffFraming>(FileBytes(file), index, bound);
}
