// SPDX-License-Identifier: Apache-2.0
// RIFF over an open file: the size of the whole, and taking a chunk out.
#include <algorithm>

#include "marlo110k/riff.h"
#include "media/riff/chunk_rules.h"
#include "media/riff/tail_move.h"

using namespace marlo::riff;

namespace {

constexpr uint64_t kSizeOffset = 4;
/// The first RIFF size that is too large: the file would reach 4 GiB.
constexpr int64_t kSizeLimit = 0xFFFFFFF8;

HRESULT WriteSize(FileBytes bytes, uint32_t size) noexcept {
  return WriteResult(bytes.Seek(kSizeOffset) && bytes.Write(&size, sizeof size));
}

}  // namespace

HRESULT riff_SetRIFFSize(plat::File* file, uint32_t size) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  return keeper.Saved() ? WriteSize(bytes, size) : ZR_E_FILE_WRITE;
}

HRESULT riff_UpdateRIFFSize(plat::File* file, int64_t delta) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  uint32_t size = 0;
  if (!keeper.Saved() || !bytes.Seek(kSizeOffset) || !bytes.Read(&size, sizeof size)) return ZR_E_FILE_READ;
  // A delta at the limit already is too much for any size; below it the sum can't overflow.
  if (delta < kSizeLimit && size + delta < kSizeLimit) {
    return WriteSize(bytes, static_cast<uint32_t>(std::max<int64_t>(size + delta, 0)));
  }
  if (bytes.Seek(uint64_t{size} + 8)) plat::SetEndOfFile(file);
  return ZR_E_FILE_TOO_LARGE;
}

HRESULT riff_GetFileSize(plat::File* file, uint32_t* size) noexcept {
  if (size == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint32_t chunkBytes = 0;
  const HRESULT result = bytes.Seek(0) ? ReadRiffHeader(bytes, &chunkBytes, nullptr) : ZR_E_FILE_READ;
  if (FAILED(result)) return result;
  *size = chunkBytes + RiffFraming::kFileHeaderBytes;
  return S_OK;
}

HRESULT riff_DeleteChunk(plat::File* file, uint32_t id, uint32_t* removed, int32_t isList) noexcept {
  const FileBytes bytes(file);
  uint32_t left = 0;
  if (!bytes.Seek(0)) return ZR_E_FILE_READ;
  HRESULT result = ReadRiffHeader(bytes, &left, nullptr);
  if (FAILED(result)) return result;
  uint32_t dataBytes = 0;
  result = isList != 0 ? FindList<RiffFraming>(bytes, id, &dataBytes, &left)
                       : FindChunk<RiffFraming>(bytes, id, &dataBytes, &left);
  if (FAILED(result)) return result;
  uint64_t position = 0;
  if (!bytes.Tell(&position)) return ZR_E_FILE_READ;

  // A list's type is part of its data. Adding it back also undoes the wrap of a list too short for one.
  const uint32_t typeBytes = isList != 0 ? RiffFraming::kTypeBytes : 0;
  const uint64_t removedBytes = RiffFraming::Padded(dataBytes + typeBytes) + RiffFraming::kHeaderBytes;
  const uint64_t start = position - RiffFraming::kHeaderBytes - typeBytes;
  uint8_t block[kTailBlockBytes];
  result = CloseGap(file, start, start + removedBytes, block);
  if (FAILED(result)) return result;
  Store(removed, static_cast<uint32_t>(std::min<uint64_t>(removedBytes, UINT32_MAX)));
  return riff_UpdateRIFFSize(file, -static_cast<int64_t>(removedBytes));
}
