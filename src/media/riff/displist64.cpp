// SPDX-License-Identifier: Apache-2.0
// The display list in Wave64: a chunk an item.
#include "marlo110k/displist.h"
#include "marlo110k/riff64.h"
#include "media/riff/chunk_rules.h"
#include "media/riff/riff64_write.h"
#include "platform/base/memory.h"

using namespace marlo::riff;

namespace {

constexpr uint32_t kIdBytes = 4;

tZRDISPITEM* FindItem(tZRDISPLIST* list, uint32_t id) noexcept {
  for (uint32_t i = 0; i < list->count; ++i) {
    if (list->items[i].id == id) return &list->items[i];
  }
  return nullptr;
}

/// Reads the rest of a display chunk, behind its id, into the item.
HRESULT LoadItem(plat::File* file, uint64_t itemBytes, tZRDISPITEM* item) noexcept {
  // A size beyond the file would read short; it is refused before it costs memory.
  if (FileBytes(file).Remaining() < itemBytes) return ZR_E_FILE_READ;
  if (itemBytes > UINT32_MAX) return E_OUTOFMEMORY;
  void* block = plat::AllocateZeroed(itemBytes);
  if (block == nullptr) return E_OUTOFMEMORY;
  plat::FreeBlock(item->data);
  item->data = block;
  item->size = static_cast<uint32_t>(itemBytes);
  return riff_ReadData(file, block, item->size);
}

HRESULT LoadItems(plat::File* file, tZRDISPLIST* list, int64_t* left) noexcept {
  const FileBytes bytes(file);
  while (*left >= int64_t{Riff64Framing::kHeaderBytes}) {
    HeaderOf<Riff64Framing> header;
    uint64_t dataStart = 0;
    if (!Riff64Framing::Read(bytes, &header) || !bytes.Tell(&dataStart)) return ZR_E_FILE_READ;
    *left -= Riff64Framing::kHeaderBytes;
    if (header.id == kZrLabelDisplay) {
      uint32_t id = 0;
      if (!bytes.Read(&id, sizeof id)) return ZR_E_FILE_READ;
      tZRDISPITEM* const item = header.dataBytes < kIdBytes ? nullptr : FindItem(list, id);
      if (item != nullptr) {
        const HRESULT result = LoadItem(file, header.dataBytes - kIdBytes, item);
        if (FAILED(result)) return result;
      }
    }
    // From the start of the data: reading an item moves on to an even byte, not to a multiple of 8.
    if (!bytes.Seek(dataStart)) return ZR_E_FILE_READ;
    const HRESULT passed = PassData<Riff64Framing>(bytes, header.dataBytes, left, left);
    if (FAILED(passed)) return passed;
  }
  return S_OK;
}

}  // namespace

HRESULT displist64_Save(plat::File* file, const tZRDISPLIST* list, uint64_t* total) noexcept {
  if (list == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint64_t written = 0;
  Store(total, written);
  for (uint32_t i = 0; i < list->count; ++i) {
    const tZRDISPITEM& item = list->items[i];
    if (item.data == nullptr || item.size == 0) continue;
    const uint64_t usedBytes = uint64_t{kIdBytes} + item.size;
    const uint64_t padded = Riff64Framing::Padded(usedBytes);
    const bool done = Riff64Framing::Write(bytes, kZrLabelDisplay, padded) && bytes.Write(&item.id, kIdBytes) &&
                      bytes.Write(item.data, item.size) && WriteZeroBytes(bytes, padded - usedBytes);
    if (!done) return ZR_E_FILE_WRITE;
    written += padded + Riff64Framing::kHeaderBytes;
  }
  Store(total, written);
  return S_OK;
}

HRESULT displist64_Load(plat::File* file, tZRDISPLIST* list, int64_t* bound) noexcept {
  if (list == nullptr || bound == nullptr) return E_INVALIDARG;
  if (list->count == 0) return S_OK;
  const PositionKeeper<FileBytes> keeper{FileBytes(file)};
  if (!keeper.Saved()) return ZR_E_FILE_READ;
  const HRESULT result = LoadItems(file, list, bound);
  if (FAILED(result)) displist_Free(list);
  return result;
}
