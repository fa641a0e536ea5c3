// SPDX-License-Identifier: Apache-2.0
// Big-endian chunks over an open file.
#include "marlo110k/iff.h"

#include <algorithm>

#include "media/riff/chunk_rules.h"
#include "media/riff/tail_move.h"

using namespace marlo::riff;

void iff_ByteSwap16(uint16_t* words, uint32_t count) noexcept {
  for (uint32_t i = 0; words != nullptr && i < count; ++i) words[i] = Swap16(words[i]);
}

void iff_ByteSwap32(uint32_t* words, uint32_t count) noexcept {
  for (uint32_t i = 0; words != nullptr && i < count; ++i) words[i] = Swap32(words[i]);
}

void aiff_WriteByteSwap16(uint16_t* words, uint32_t count) noexcept { iff_ByteSwap16(words, count); }

void aiff_WriteByteSwap32(uint32_t* words, uint32_t count) noexcept { iff_ByteSwap32(words, count); }

HRESULT iff_ReadChunkHdr(plat::File* file, tIFFCHUNK* header) noexcept {
  if (header == nullptr) return E_INVALIDARG;
  HeaderOf<IffFraming> read;
  if (!IffFraming::Read(FileBytes(file), &read)) return ZR_E_FILE_READ;
  *header = {read.id, read.dataBytes};
  return S_OK;
}

HRESULT iff_ReadDWORD(plat::File* file, uint32_t* value) noexcept {
  if (value == nullptr) return E_INVALIDARG;
  uint32_t read = 0;
  if (!FileBytes(file).Read(&read, sizeof read)) return ZR_E_FILE_READ;
  *value = Swap32(read);
  return S_OK;
}

HRESULT iff_ReadWORD(plat::File* file, uint16_t* value) noexcept {
  if (value == nullptr) return E_INVALIDARG;
  uint16_t read = 0;
  if (!FileBytes(file).Read(&read, sizeof read)) return ZR_E_FILE_READ;
  *value = Swap16(read);
  return S_OK;
}

HRESULT iff_WriteChunk(plat::File* file, const tIFFCHUNK* header) noexcept {
  if (header == nullptr) return E_INVALIDARG;
  const uint32_t words[2] = {Swap32(header->id), Swap32(header->size)};
  return WriteResult(FileBytes(file).Write(words, sizeof words));
}

HRESULT iff_WriteDWORD(plat::File* file, uint32_t value) noexcept {
  const uint32_t swapped = Swap32(value);
  return WriteResult(FileBytes(file).Write(&swapped, sizeof swapped));
}

HRESULT iff_WriteWORD(plat::File* file, uint16_t value) noexcept {
  const uint16_t swapped = Swap16(value);
  return WriteResult(FileBytes(file).Write(&swapped, sizeof swapped));
}

HRESULT iff_ReadFormType(plat::File* file, tIFFCHUNK* header, uint32_t* formType) noexcept {
  if (formType == nullptr) return E_INVALIDARG;
  const HRESULT result = iff_ReadChunkHdr(file, header);
  if (FAILED(result)) return result;
  if (header->id != ZrIffId("FORM")) return ZR_E_UNKNOWN_FORMAT;
  return iff_ReadDWORD(file, formType);
}

HRESULT iff_WriteFileID(plat::File* file, uint32_t formType, uint32_t size) noexcept {
  return WriteTypedHeader(FileBytes(file), Swap32(ZrIffId("FORM")), Swap32(size), Swap32(formType));
}

uint64_t iff_SkipChunk(plat::File* file, uint32_t size) noexcept {
  const uint64_t padded = IffFraming::Padded(size);
  FileBytes(file).Skip(static_cast<int64_t>(padded));
  return padded;
}

HRESULT iff_FindChunkHeader(plat::File* file, uint32_t id, uint32_t* size, uint32_t* bound) noexcept {
  return FindChunk<IffFraming>(FileBytes(file), id, size, bound);
}

HRESULT iff_SeekChunkHeader(plat::File* file, uint32_t id, uint32_t* size) noexcept {
  return FindChunk<IffFraming>(FileBytes(file), id, size, nullptr);
}

HRESULT iff_FindChunkFromStart(plat::File* file, uint32_t id, uint32_t* size) noexcept {
  const FileBytes bytes(file);
  HeaderOf<IffFraming> header;
  uint32_t formType = 0;
  if (!bytes.Seek(0) || !IffFraming::Read(bytes, &header)) return ZR_E_FILE_READ;
  if (header.id != ZrIffId("FORM") || !bytes.Read(&formType, sizeof formType)) return ZR_E_NO_RIFF_HEADER;
  return FAILED(iff_SeekChunkHeader(file, id, size)) ? ZR_E_NOT_FOUND : S_OK;
}

HRESULT iff_DeleteChunk(plat::File* file, uint32_t id, uint32_t* removed) noexcept {
  uint32_t formBytes = 0;
  if (iff_IsAIFFFile(file, &formBytes) == 0) return ZR_E_UNKNOWN_FORMAT;
  const FileBytes bytes(file);
  uint32_t left = formBytes;
  uint32_t dataBytes = 0;
  HRESULT result = FindChunk<IffFraming>(bytes, id, &dataBytes, &left);
  if (FAILED(result)) return result;
  uint64_t position = 0;
  if (!bytes.Tell(&position)) return ZR_E_FILE_READ;

  const uint64_t start = position - IffFraming::kHeaderBytes;
  const uint64_t removedBytes = IffFraming::Padded(dataBytes) + IffFraming::kHeaderBytes;
  result = CloseGap(file, start, start + removedBytes);
  if (FAILED(result)) return result;
  constexpr uint64_t kSizeOffset = 4;
  const uint64_t newFormBytes = formBytes > removedBytes ? formBytes - removedBytes : 0;
  result = bytes.Seek(kSizeOffset) ? iff_WriteDWORD(file, static_cast<uint32_t>(newFormBytes)) : ZR_E_FILE_WRITE;
  if (FAILED(result)) return result;
  Store(removed, static_cast<uint32_t>(std::min<uint64_t>(removedBytes, UINT32_MAX)));
  return S_OK;
}
