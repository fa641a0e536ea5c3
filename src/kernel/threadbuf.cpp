// SPDX-License-Identifier: Apache-2.0
// Keeps the scratch buffers of threads in one synchronised list.
#include "kernel/threadbuf.h"

#include <cstddef>

#include "marlo110k/list.h"
#include "platform/base/memory.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

struct Entry {
  uint32_t threadId;
  uint32_t bytes;
  void* block;
};
static_assert(sizeof(Entry) == 16 && offsetof(Entry, block) == 8);

constinit tZRLIST* buffers = nullptr;

int32_t IsOfThread(const void* threadId, const void* item) {
  return *static_cast<const uint32_t*>(threadId) == static_cast<const Entry*>(item)->threadId ? 0 : 1;
}

int32_t FindEntry(uint32_t threadId) noexcept { return ZrList_FindItemRange(buffers, 0, -1, &threadId, IsOfThread); }

Entry* EntryAt(int32_t index) noexcept { return static_cast<Entry*>(buffers->items) + index; }

void FreeBufferOfLeavingThread() {
  if (buffers == nullptr) return;
  plat::LockGuard guard(&buffers->lock);
  const int32_t index = FindEntry(plat::CurrentThreadId());
  if (index < 0) return;
  plat::FreeBlock(EntryAt(index)->block);
  ZrList_DeleteList(buffers, index, 1, 0);
}

}  // namespace

void* ThreadBuffer(uint32_t* bytes) noexcept {
  if (bytes != nullptr) *bytes = 0;
  if (buffers == nullptr) return nullptr;
  plat::LockGuard guard(&buffers->lock);
  int32_t index = FindEntry(plat::CurrentThreadId());
  if (index < 0) {
    const Entry entry{plat::CurrentThreadId(), kThreadBufferBytes, plat::AllocateZeroed(kThreadBufferBytes)};
    if (entry.block == nullptr) return nullptr;
    index = buffers->count;
    if (FAILED(ZrList_InsertList(buffers, index, &entry, 1))) {
      plat::FreeBlock(entry.block);
      return nullptr;
    }
    plat::TouchThread();
  }
  if (bytes != nullptr) *bytes = EntryAt(index)->bytes;
  return EntryAt(index)->block;
}

bool CreateThreadBuffers() noexcept {
  if (FAILED(ZrList_CreateExZ(&buffers, sizeof(Entry), 0, 0, ZRLIST_SYNCHRONIZED | ZRLIST_ARRAY, 0, 0, 0))) {
    return false;
  }
  return plat::AddThreadDetachHook(FreeBufferOfLeavingThread);
}

void DestroyThreadBuffers() noexcept {
  plat::RemoveThreadDetachHook(FreeBufferOfLeavingThread);
  if (buffers == nullptr) return;
  for (int32_t i = 0; i < buffers->count; ++i) plat::FreeBlock(EntryAt(i)->block);
  ZrList_Destroy(buffers);
  buffers = nullptr;
}

}  // namespace marlo
