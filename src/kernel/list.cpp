// SPDX-License-Identifier: Apache-2.0
// The list's life, its capacity and its attributes.
#include "marlo110k/list.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>

#include "kernel/list_internal.h"
#include "platform/base/c_heap.h"
#include "platform/base/memory.h"
#include "platform/sys/fault.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

constexpr int32_t kDefaultItems = 16;
constexpr int32_t kLeastItems = 4;
constexpr int32_t kMostGrowth = 0x10400;
constexpr uint32_t kHeapAllocFlags = 9;  // no serialisation, zeroed
constexpr uint32_t kHeapFreeFlags = 1;   // no serialisation

int64_t RoundUp(int64_t value, int64_t unit) noexcept { return (value + unit - 1) / unit * unit; }

bool BufferBytes(int64_t slots, uint64_t itemSize, uint64_t* bytes) noexcept {
  return slots <= INT32_MAX && !__builtin_mul_overflow(static_cast<uint64_t>(slots), itemSize, bytes);
}

/// Gives the list a buffer of `slots` slots, whose kept part keeps its contents and whose new part is zero.
HRESULT Reallocate(tZRLIST* list, int64_t slots) noexcept {
  uint64_t bytes = 0;
  if (!BufferBytes(slots, list->itemSize, &bytes)) return E_OUTOFMEMORY;
  void* buffer = plat::ReallocateZeroed(list->items, bytes);
  if (buffer == nullptr) return E_OUTOFMEMORY;
  list->items = buffer;
  list->allocated = static_cast<int32_t>(slots);
  return S_OK;
}

/// Fills a zeroed record. The options' bits are stored last, as the getters show them.
HRESULT Construct(tZRLIST* list, uint64_t itemSize, int32_t initialItems, int32_t growBy, uint32_t options) noexcept {
  uint64_t stride = sizeof(void*);
  if ((options & ZRLIST_ARRAY) != 0) {
    if (itemSize > UINT64_MAX - 3) return E_OUTOFMEMORY;
    stride = (itemSize + 3) & ~UINT64_C(3);
  }
  const int32_t unit = growBy < 1 ? kDefaultItems : std::clamp(growBy, kLeastItems, kMostGrowth);
  const int64_t slots = RoundUp(initialItems < 1 ? kDefaultItems : std::max(initialItems, kLeastItems), unit);
  uint64_t bytes = 0;
  if (!BufferBytes(slots, stride, &bytes)) return E_OUTOFMEMORY;
  void* buffer = plat::AllocateZeroed(bytes);
  if (buffer == nullptr) return E_OUTOFMEMORY;

  list->itemSize = stride;
  list->items = buffer;
  list->growBy = unit;
  list->allocated = static_cast<int32_t>(slots);
  if ((options & ZRLIST_SYNCHRONIZED) != 0) plat::InitializeLock(&list->lock);
  list->options = options | ZRLIST_ANYTHREAD;
  list->ownerThread = plat::CurrentThreadId();
  // A private heap needs no object here: its items are freed one by one, so that blocks may move between lists.
  list->heapAllocFlags = kHeapAllocFlags;
  list->heapFreeFlags = kHeapFreeFlags;
  list->magic = kZrListMagic;
  return S_OK;
}

}  // namespace

HRESULT GrowList(tZRLIST* list, int64_t items) noexcept {
  return Reallocate(list, list->allocated + RoundUp(items < 1 ? list->growBy : items, list->growBy));
}

HRESULT ShrinkList(tZRLIST* list, int64_t items) noexcept {
  const int64_t spare = list->allocated - list->count;
  // More than is spare can't be given back, whatever was asked for.
  int64_t slots = RoundUp(items < 0 ? spare : std::min(items, spare), list->growBy);
  if (slots > spare) slots -= list->growBy;
  if (slots <= 0) return S_OK;
  return Reallocate(list, std::max<int64_t>(list->allocated - slots, 1));
}

void ShrinkIfSpare(tZRLIST* list) noexcept {
  if (list->allocated - list->count > list->growBy) ShrinkList(list, -1);
}

}  // namespace marlo

using namespace marlo;

HRESULT ZrList_CreateExZ(tZRLIST** list, uint64_t itemSize, int32_t initialItems, int32_t growBy, uint32_t options,
                         uint64_t, uint64_t, uint64_t) noexcept {
  if (list == nullptr) return E_INVALIDARG;
  const bool inPlace = (options & ZRLIST_INPLACE) != 0;
  if (inPlace) {
    if (*list == nullptr) return E_INVALIDARG;
    **list = tZRLIST{};
  } else {
    *list = nullptr;
  }
  if ((options & ZRLIST_HEAPLIST) != 0 && (options & ZRLIST_ARRAY) != 0) return E_FAIL;

  tZRLIST* record = inPlace ? *list : static_cast<tZRLIST*>(std::calloc(1, sizeof(tZRLIST)));
  if (record == nullptr) return E_OUTOFMEMORY;
  const HRESULT result = Construct(record, itemSize, initialItems, growBy, options);
  if (SUCCEEDED(result)) {
    *list = record;
  } else if (!inPlace) {
    std::free(record);
  }
  return result;
}

HRESULT ZrList_Destroy(tZRLIST* list) noexcept {
  if (list == nullptr) return S_OK;
  if (!IsLiveList(list)) return E_INVALIDARG;
  if (IsHeapList(list)) {
    for (int32_t i = 0; i < list->count; ++i) std::free(PointerAt(list, i));
    std::free(list->pendingItem);
  }
  plat::FreeBlock(list->items);
  if (plat::CriticalSection* lock = LockOf(list)) plat::DeleteLock(lock);
  const bool inPlace = (list->options & ZRLIST_INPLACE) != 0;
  *list = tZRLIST{};
  if (!inPlace) std::free(list);
  return S_OK;
}

HRESULT ZrList_ConvertToInPlace(tZRLIST** list, tZRLIST* record) noexcept {
  if (list == nullptr || record == nullptr || !IsLiveList(*list)) return E_INVALIDARG;
  tZRLIST* source = *list;
  // A lock can't move, so a synchronised list stays where it is.
  if ((source->options & (ZRLIST_INPLACE | ZRLIST_SYNCHRONIZED)) != 0) return E_FAIL;
  *record = *source;
  record->options |= ZRLIST_INPLACE;
  source->magic = 0;
  std::free(source);
  *list = nullptr;
  return S_OK;
}

bool ZrList_IsList(const void* pointer, uint64_t size) noexcept {
  tZRLIST copy;
  return size == sizeof(tZRLIST) && pointer != nullptr && plat::TryRead(pointer, &copy, sizeof(copy)) &&
         copy.magic == kZrListMagic;
}

bool ZrList_IsListFast(const tZRLIST* list) noexcept { return IsLiveList(list); }

HRESULT ZrList_GrowAllocated(tZRLIST* list, int32_t items) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  return GrowList(list, items);
}

HRESULT ZrList_ShrinkAllocated(tZRLIST* list, int32_t items) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  return ShrinkList(list, items);
}

HRESULT ZrList_ArrayForceItemCount(tZRLIST* list, int32_t newCount, int32_t shrink) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  if (!IsArray(list) || newCount < 0) return E_FAIL;
  if (newCount > list->allocated) {
    const HRESULT result = GrowList(list, int64_t{newCount} - list->allocated);
    if (FAILED(result)) return result;
  }
  // Slots behind the count are zero at all times, so that growing again shows fresh items.
  ZeroSlots(list, newCount, int64_t{list->count} - newCount);
  list->count = newCount;
  if (shrink != 0) ShrinkIfSpare(list);
  return S_OK;
}

uint64_t ZrList_GetUserData(const tZRLIST* list) noexcept {
  if (!IsLiveList(list)) return 0;
  return std::atomic_ref<uint64_t>(const_cast<tZRLIST*>(list)->userData).load(std::memory_order_acquire);
}

uint64_t ZrList_SetUserData(tZRLIST* list, uint64_t value) noexcept {
  if (!IsLiveList(list)) return 0;
  return std::atomic_ref<uint64_t>(list->userData).exchange(value);
}

uint32_t ZrList_GetCreateOptions(const tZRLIST* list) noexcept { return IsLiveList(list) ? list->options : 0; }

uint64_t ZrList_GetSortCriteria(const tZRLIST* list) noexcept { return IsLiveList(list) ? list->sortCriteria : 0; }

uint32_t ZrList_GetThreadOwner(const tZRLIST* list) noexcept { return IsLiveList(list) ? list->ownerThread : 0; }

HRESULT ZrList_SetThreadOwner(tZRLIST* list, uint32_t threadId) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  list->ownerThread = threadId != 0 ? threadId : plat::CurrentThreadId();
  return S_OK;
}

uint64_t ZrList_AllocSize(tZRLIST* list, int32_t index) noexcept {
  if (!IsLiveList(list)) return 0;
  plat::LockGuard guard(LockOf(list));
  if (index >= list->count) return 0;
  if (index >= 0) return IsHeapList(list) ? plat::CHeapBytes(PointerAt(list, index)) : list->itemSize;
  uint64_t bytes = sizeof(tZRLIST) + plat::BlockBytes(list->items);
  for (int32_t i = 0; IsHeapList(list) && i < list->count; ++i) bytes += plat::CHeapBytes(PointerAt(list, i));
  return bytes;
}

int32_t ZrList_GetFileAndLine(const tZRLIST*, char16_t* fileName) noexcept {
  if (fileName != nullptr) *fileName = 0;
  return -1;
}
