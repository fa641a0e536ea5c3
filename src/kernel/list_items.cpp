// SPDX-License-Identifier: Apache-2.0
// Putting items into a list, taking them out and moving them.
#include <algorithm>
#include <cstdlib>

#include "kernel/list_internal.h"
#include "marlo110k/list.h"
#include "platform/base/c_heap.h"
#include "platform/base/memory.h"

namespace marlo {
namespace {

/// Ranges up to this size move over the stack.
constexpr size_t kStackBytes = 512;

int32_t InsertPlace(const tZRLIST* list, int32_t index) noexcept {
  return index < 0 || index > list->count ? list->count : index;
}

/// Closes the gap of `n` slots at `index` and zeroes what the tail leaves.
void RemoveSlots(tZRLIST* list, int32_t index, int32_t n) noexcept {
  const int32_t tail = list->count - index - n;
  std::memmove(SlotAt(list, index), SlotAt(list, int64_t{index} + n), static_cast<uint64_t>(tail) * list->itemSize);
  list->count -= n;
  ZeroSlots(list, list->count, n);
}

HRESULT AllocatePending(tZRLIST* list, uint64_t bytes) noexcept {
  if (!IsHeapList(list) || list->pendingItem != nullptr) return E_FAIL;
  list->pendingItem = std::calloc(1, std::max<uint64_t>(bytes, 1));
  return list->pendingItem != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT FreePending(tZRLIST* list) noexcept {
  if (list->pendingItem == nullptr) return E_FAIL;
  std::free(list->pendingItem);
  list->pendingItem = nullptr;
  return S_OK;
}

/// Slots as a heap list takes them: its pending item, or -n pointers of the caller.
HRESULT InsertIntoHeapList(tZRLIST* list, int32_t index, const void* items, int32_t n) noexcept {
  HRESULT result = E_FAIL;
  if (items != nullptr && n < 0) {
    result = InsertSlots(list, index, items, -int64_t{n});
  } else if (items == nullptr && n == -1 && list->pendingItem != nullptr) {
    result = InsertSlots(list, index, &list->pendingItem, 1);
  }
  // Also for pointers of the caller's: one of them may be the pending item itself, and one that isn't goes back
  // to the caller, who has its address from ZrList_AllocItem.
  if (SUCCEEDED(result)) list->pendingItem = nullptr;
  return result;
}

/// Moves `n` slots at `from` so that they start at `to`; both ranges lie inside the list.
HRESULT MoveSlots(tZRLIST* list, int32_t from, int32_t to, int32_t n) noexcept {
  const uint64_t bytes = static_cast<uint64_t>(n) * list->itemSize;
  char onStack[kStackBytes];
  void* held = bytes <= kStackBytes ? onStack : plat::AllocateZeroed(bytes);
  if (held == nullptr) return E_OUTOFMEMORY;
  std::memcpy(held, SlotAt(list, from), bytes);
  if (from < to) {
    std::memmove(SlotAt(list, from), SlotAt(list, int64_t{from} + n),
                 static_cast<uint64_t>(to - from) * list->itemSize);
  } else {
    std::memmove(SlotAt(list, int64_t{to} + n), SlotAt(list, to), static_cast<uint64_t>(from - to) * list->itemSize);
  }
  std::memcpy(SlotAt(list, to), held, bytes);
  if (held != onStack) plat::FreeBlock(held);
  return S_OK;
}

}  // namespace

HRESULT InsertSlots(tZRLIST* list, int32_t index, const void* slots, int64_t n) noexcept {
  if (list->count + n > list->allocated) {
    const HRESULT result = GrowList(list, n);
    if (FAILED(result)) return result;
  }
  if (index < list->count) {
    std::memmove(SlotAt(list, index + n), SlotAt(list, index),
                 static_cast<uint64_t>(list->count - index) * list->itemSize);
  }
  std::memcpy(SlotAt(list, index), slots, static_cast<uint64_t>(n) * list->itemSize);
  list->count += static_cast<int32_t>(n);
  return S_OK;
}

}  // namespace marlo

using namespace marlo;

HRESULT ZrList_InsertList(tZRLIST* list, int32_t index, const void* items, int32_t n) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  const int32_t place = InsertPlace(list, index);
  if (IsHeapList(list)) return InsertIntoHeapList(list, place, items, n);
  if (items == nullptr || n < 0) return E_FAIL;
  return InsertSlots(list, place, items, n);
}

HRESULT ZrList_AllocItem(tZRLIST* list, uint64_t size, void** item) noexcept {
  if (!IsLiveList(list) || item == nullptr) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  const HRESULT result = AllocatePending(list, size);
  *item = SUCCEEDED(result) ? list->pendingItem : nullptr;
  return result;
}

HRESULT ZrList_AllocAndInsertItem(tZRLIST* list, const void* source, uint64_t size, int32_t index,
                                  int32_t* newIndex) noexcept {
  if (newIndex != nullptr) *newIndex = -1;
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  HRESULT result = AllocatePending(list, size);
  if (FAILED(result)) return result;
  if (source != nullptr && size > 0) std::memcpy(list->pendingItem, source, size);
  const int32_t place = InsertPlace(list, index);
  result = InsertIntoHeapList(list, place, nullptr, -1);
  if (FAILED(result)) {
    FreePending(list);
  } else if (newIndex != nullptr) {
    *newIndex = place;
  }
  return result;
}

HRESULT ZrList_ReAllocItem(tZRLIST* list, int32_t index, uint64_t size) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  if (!IsHeapList(list) || index < 0 || index >= list->count) return E_FAIL;
  const uint64_t formerBytes = plat::CHeapBytes(PointerAt(list, index));
  void* block = std::realloc(PointerAt(list, index), std::max<uint64_t>(size, 1));
  if (block == nullptr) return E_OUTOFMEMORY;
  PointerAt(list, index) = block;
  if (size > formerBytes) std::memset(static_cast<char*>(block) + formerBytes, 0, size - formerBytes);
  return S_OK;
}

HRESULT ZrList_MoveItemsBetweenHeapLists(tZRLIST* dest, int32_t destIndex, tZRLIST* source, int32_t sourceIndex,
                                         int32_t n) noexcept {
  if (!IsLiveList(dest) || !IsLiveList(source) || dest == source) return E_INVALIDARG;
  plat::LockGuard destGuard(LockOf(dest));
  plat::LockGuard sourceGuard(LockOf(source));
  if (!IsHeapList(dest) || !IsHeapList(source) || dest->pendingItem != nullptr) return E_FAIL;
  const int32_t items = n < 0 ? source->count : n;
  if (items == 0) return S_OK;
  if (sourceIndex < 0 || int64_t{sourceIndex} + items > source->count) return E_FAIL;
  const HRESULT result = InsertSlots(dest, InsertPlace(dest, destIndex), SlotAt(source, sourceIndex), items);
  if (SUCCEEDED(result)) RemoveSlots(source, sourceIndex, items);
  return result;
}

HRESULT ZrList_DeleteList(tZRLIST* list, int32_t index, int32_t n, int32_t shrink) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  if (index < 0 && n < 0) return FreePending(list);
  const int64_t wanted = n < 0 ? int64_t{list->count} - index : n;
  // Before the test of the index: nothing to remove is no failure, wherever it isn't removed.
  if (wanted < 1) return S_OK;
  if (index < 0 || index >= list->count) return E_FAIL;
  const int32_t items = static_cast<int32_t>(std::min<int64_t>(wanted, list->count - index));
  if (IsHeapList(list)) {
    for (int32_t i = 0; i < items; ++i) std::free(PointerAt(list, int64_t{index} + i));
  }
  RemoveSlots(list, index, items);
  if (shrink != 0) ShrinkIfSpare(list);
  return S_OK;
}

HRESULT ZrList_MoveRange(tZRLIST* list, int32_t from, int32_t to, int32_t n) noexcept {
  if (!IsLiveList(list) || from < 0) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  const int32_t place = std::max(to, 0);
  const int64_t items = n < 0 ? int64_t{list->count} - std::max(from, place) : n;
  if (from + items > list->count || place + items > list->count) return E_FAIL;
  if (items < 1 || from == place) return S_OK;
  return MoveSlots(list, from, place, static_cast<int32_t>(items));
}
