// SPDX-License-Identifier: Apache-2.0
// Wave64 over an open file: writing chunks, the size of the whole, and taking a chunk out.
#include "marlo110k/riff64.h"
#include "media/riff/chunk_rules.h"
#include "media/riff/riff64_write.h"
#include "media/riff/tail_move.h"

using namespace marlo::riff;

namespace {

/// Of the size field in a chunk or in the file header.
constexpr uint64_t kSizeOffset = 16;

bool WriteField(FileBytes bytes, uint64_t chunkStart, uint64_t field) noexcept {
  return bytes.Seek(chunkStart + kSizeOffset) && bytes.Write(&field, sizeof field);
}

}  // namespace

HRESULT riff64_WriteChunk(plat::File* file, const GUID* label, const void* data, uint32_t size,
                          uint64_t* total) noexcept {
  if (label == nullptr) return E_INVALIDARG;
  if (data == nullptr && size != 0) return E_INVALIDARG;
  if (!Riff64Framing::Write(FileBytes(file), *label, size)) return ZR_E_FILE_WRITE;
  uint64_t padded = 0;
  const HRESULT result = riff64_WriteData(file, data, size, &padded);
  if (FAILED(result)) return result;
  Store(total, padded + Riff64Framing::kHeaderBytes);
  return S_OK;
}

HRESULT riff64_WriteData(plat::File* file, const void* data, uint32_t count, uint64_t* total) noexcept {
  if (data == nullptr && count != 0) return E_INVALIDARG;
  const FileBytes bytes(file);
  const uint64_t padded = Riff64Framing::Padded(count);
  if (!bytes.Write(data, count) || !WriteZeroBytes(bytes, padded - count)) return ZR_E_FILE_WRITE;
  Store(total, padded);
  return S_OK;
}

HRESULT riff64_WriteToFile(plat::File* file, const void* data, uint32_t count) noexcept {
  if (data == nullptr && count != 0) return E_INVALIDARG;
  return WriteResult(FileBytes(file).Write(data, count));
}

HRESULT riff64_PrepareChunk(plat::File* file, const GUID* label, uint64_t* start) noexcept {
  if (label == nullptr || start == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  if (!bytes.Tell(start)) return ZR_E_FILE_READ;
  return WriteResult(Riff64Framing::Write(bytes, *label, 0));
}

HRESULT riff64_PrepareList(plat::File* file, const GUID* listType, uint64_t* start) noexcept {
  if (listType == nullptr || start == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  if (!bytes.Tell(start)) return ZR_E_FILE_WRITE;
  return WriteTypedHeader64(bytes, kZrLabelList, 0, *listType);
}

HRESULT riff64_CompleteChunk(plat::File* file, uint64_t start) noexcept {
  HRESULT result = riff64_Pad(file, start);
  if (FAILED(result)) return result;
  const FileBytes bytes(file);
  uint64_t end = 0;
  if (!bytes.Tell(&end)) return ZR_E_FILE_READ;
  result = WriteResult(WriteField(bytes, start, end - start));
  return bytes.Seek(end) ? result : ZR_E_FILE_READ;
}

HRESULT riff64_WriteChunkToFile(plat::File* file, const GUID* label, const void* data, uint32_t count) noexcept {
  if (data == nullptr && count != 0) return E_INVALIDARG;
  uint64_t start = 0;
  HRESULT result = riff64_PrepareChunk(file, label, &start);
  if (SUCCEEDED(result)) result = riff64_WriteToFile(file, data, count);
  return SUCCEEDED(result) ? riff64_CompleteChunk(file, start) : result;
}

int64_t riff64_AmountWritten(plat::File* file, uint64_t start) noexcept {
  uint64_t position = 0;
  return FileBytes(file).Tell(&position) ? static_cast<int64_t>(position - start) : 0;
}

HRESULT riff64_Pad(plat::File* file, uint64_t start) noexcept {
  const FileBytes bytes(file);
  uint64_t position = 0;
  if (!bytes.Tell(&position)) return ZR_E_FILE_READ;
  return WriteResult(WriteZeroBytes(bytes, (start - position) & 7));
}

HRESULT riff64_SetRIFFSize(plat::File* file, uint64_t size) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  return WriteResult(keeper.Saved() && WriteField(bytes, 0, size + Riff64Framing::kHeaderBytes));
}

HRESULT riff64_UpdateRIFFSize(plat::File* file, int64_t delta) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  uint64_t field = 0;
  if (!keeper.Saved() || !bytes.Seek(kSizeOffset) || !bytes.Read(&field, sizeof field)) return ZR_E_FILE_READ;
  return WriteResult(WriteField(bytes, 0, field + static_cast<uint64_t>(delta)));
}

HRESULT riff64_DeleteChunk(plat::File* file, const GUID* label, uint64_t* removed) noexcept {
  if (label == nullptr) return E_INVALIDARG;
  uint64_t dataBytes = 0;
  HRESULT result = riff64_FindChunkHeaderInRIFF(file, label, &dataBytes, nullptr);
  if (FAILED(result)) return result;
  uint64_t position = 0;
  if (!FileBytes(file).Tell(&position)) return ZR_E_FILE_READ;

  const uint64_t start = position - Riff64Framing::kHeaderBytes;
  const uint64_t removedBytes = Riff64Framing::Padded(dataBytes) + Riff64Framing::kHeaderBytes;
  result = CloseGap(file, start, start + removedBytes);
  if (FAILED(result)) return result;
  // A declared size at its limit makes 2^63, which only unsigned arithmetic can negate.
  result = riff64_UpdateRIFFSize(file, static_cast<int64_t>(0 - removedBytes));
  if (FAILED(result)) return result;
  Store(removed, removedBytes);
  return S_OK;
}
