// SPDX-License-Identifier: Apache-2.0
// RIFF files of any bytes: the file family and the memory family agree, and a removal leaves what it should.
#include <algorithm>

#include "marlo110k/mriff.h"
#include "marlo110k/riff.h"
#include "media_input.h"
#include "platform/base/memory.h"

using fuzzing::MemoryFile;
using fuzzing::Require;

namespace {

/// The file may be behind its end, where the memory family stops.
void SamePlace(const MemoryFile& file, const _tMRIFF& cursor, size_t bytes) {
  Require(std::min<uint64_t>(file.Position(), bytes) == static_cast<uint64_t>(cursor.current - cursor.base),
          "position");
}

void Compare(const uint8_t* data, size_t bytes, uint32_t id, uint32_t bound) {
  const MemoryFile file(data, bytes);
  std::vector<uint8_t> block(data, data + bytes);
  _tMRIFF cursor;
  Require(mriff_Init(&cursor, block.data(), static_cast<uint32_t>(bytes), static_cast<uint32_t>(bytes)) == S_OK,
          "init");
  uint32_t left = bound, right = bound, leftSize = 1, rightSize = 1;
  Require(riff_FindChunkHeader(file, id, &leftSize, &left) == mriff_FindChunkHeader(&cursor, id, &rightSize, &right),
          "find");
  Require(left == right && leftSize == rightSize, "bound and size");
  SamePlace(file, cursor, bytes);
  tZRCHUNKDATA leftData = {leftSize, nullptr}, rightData = {rightSize, nullptr};
  Require(riff_ReadDataAlloc(file, &leftData) == mriff_ReadDataAlloc(&cursor, &rightData), "data");
  Require((leftData.data == nullptr) == (rightData.data == nullptr), "block");
  if (leftData.data != nullptr) Require(std::memcmp(leftData.data, rightData.data, leftSize) == 0, "bytes");
  plat::FreeBlock(leftData.data);
  plat::FreeBlock(rightData.data);
  SamePlace(file, cursor, bytes);

  file.MoveTo(0);
  mriff_ZrSetFilePointer(&cursor, 0, 0);
  Require(riff_FindListChunk(file, id, &leftSize, nullptr) == mriff_FindListChunk(&cursor, id, &rightSize, nullptr),
          "list");
  SamePlace(file, cursor, bytes);
  left = right = bound;
  Require(riff_GetNumListEntries(file, &leftSize, &left) == mriff_GetNumListEntries(&cursor, &rightSize, &right),
          "count");
  Require(leftSize == rightSize && left == right, "entries");
  SamePlace(file, cursor, bytes);
}

void Remove(const uint8_t* data, size_t bytes, uint32_t id, bool isList) {
  const MemoryFile file(data, bytes);
  uint32_t removed = 0;
  const HRESULT result = riff_DeleteChunk(file, id, &removed, isList ? 1 : 0);
  if (FAILED(result)) {
    Require(file.Length() == bytes, "a failed removal keeps the length");
    return;
  }
  Require(removed >= 8, "removed");
  const uint64_t expected = bytes - std::min<uint64_t>(removed, bytes);
  Require(file.Length() >= expected && file.Length() < bytes, "length");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const uint32_t id = fuzzing::TakeWord(data, &bytes);
  const uint32_t bound = fuzzing::TakeWord(data, &bytes);
  if (bytes > (1 << 16)) return 0;
  Compare(data, bytes, id, bound);
  if (bytes > 12) Compare(data + 12, bytes - 12, id, bound);
  Remove(data, bytes, id, false);
  Remove(data, bytes, id, true);
  const MemoryFile file(data, bytes);
  tZRCDDA record;
  riff_ReadRIFFCDDA(file, &record);
  char16_t text[32];
  uint32_t size = bound | 1;
  file.MoveTo(0);
  if (riff_ReadANSIString(file, text, 32, &size) == S_OK) Require(text[31] == 0 || bound < 31, "terminator");
  return 0;
}
