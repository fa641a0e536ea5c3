// SPDX-License-Identifier: Apache-2.0
// Closing a gap in a file.
#include "media/riff/tail_move.h"

#include <algorithm>

#include "media/riff/byte_source.h"
#include "platform/base/memory.h"

namespace marlo::riff {

HRESULT CloseGap(plat::File* file, uint64_t destination, uint64_t source, uint8_t* block) noexcept {
  const FileBytes bytes(file);
  uint64_t length = 0;
  if (!plat::GetFileBytes(file, &length)) return ZR_E_FILE_READ;
  while (source < length) {
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(length - source, kTailBlockBytes));
    if (!bytes.Seek(source) || !bytes.Read(block, count)) return ZR_E_FILE_READ;
    if (!bytes.Seek(destination) || !bytes.Write(block, count)) return ZR_E_FILE_WRITE;
    source += count;
    destination += count;
  }
  return bytes.Seek(destination) && plat::SetEndOfFile(file) ? S_OK : ZR_E_FILE_WRITE;
}

HRESULT CloseGap(plat::File* file, uint64_t destination, uint64_t source) noexcept {
  uint64_t length = 0;
  if (!plat::GetFileBytes(file, &length)) return ZR_E_FILE_READ;
  uint8_t* block = nullptr;
  if (source < length) {
    block = static_cast<uint8_t*>(plat::AllocateZeroed(kTailBlockBytes));
    if (block == nullptr) return E_OUTOFMEMORY;
  }
  const HRESULT result = CloseGap(file, destination, source, block);
  plat::FreeBlock(block);
  return result;
}

}  // namespace marlo::riff
