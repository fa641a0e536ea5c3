// SPDX-License-Identifier: Apache-2.0
// What the sources of the list share: validity, locking and slots.
#pragma once

#include <cstdint>
#include <cstring>

#include "marlo110k/list.h"

namespace marlo {

inline bool IsLiveList(const tZRLIST* list) noexcept { return list != nullptr && list->magic == kZrListMagic; }

/// The lock of a synchronised list, null of another: for plat::LockGuard.
inline plat::CriticalSection* LockOf(tZRLIST* list) noexcept {
  return (list->options & ZRLIST_SYNCHRONIZED) != 0 ? &list->lock : nullptr;
}

inline bool IsArray(const tZRLIST* list) noexcept { return (list->options & ZRLIST_ARRAY) != 0; }
inline bool IsHeapList(const tZRLIST* list) noexcept { return (list->options & ZRLIST_HEAPLIST) != 0; }

inline char* SlotAt(const tZRLIST* list, int64_t index) noexcept {
  return static_cast<char*>(list->items) + static_cast<uint64_t>(index) * list->itemSize;
}

/// What the slot of a heap list or pointer list holds.
inline void*& PointerAt(const tZRLIST* list, int64_t index) noexcept { return static_cast<void**>(list->items)[index]; }

/// The item as comparisons see it: an array's slot address, otherwise the pointer that the slot holds.
inline const void* ItemAt(const tZRLIST* list, int64_t index) noexcept {
  return IsArray(list) ? SlotAt(list, index) : PointerAt(list, index);
}

inline void ZeroSlots(tZRLIST* list, int64_t first, int64_t slots) noexcept {
  if (slots > 0) std::memset(SlotAt(list, first), 0, static_cast<uint64_t>(slots) * list->itemSize);
}

// The operations behind the boundary, for a live list whose lock is held.

/// Adds room for `items` slots, rounded up to the growth unit; below 1 adds one unit.
HRESULT GrowList(tZRLIST* list, int64_t items) noexcept;
/// Gives up to `items` spare slots back, negative all of them, by the rule of ZrList_ShrinkAllocated.
HRESULT ShrinkList(tZRLIST* list, int64_t items) noexcept;
/// Gives all spare slots back when more than the growth unit are spare.
void ShrinkIfSpare(tZRLIST* list) noexcept;
/// Copies `n` slots from `slots` to `index`, which must lie in 0..count.
HRESULT InsertSlots(tZRLIST* list, int32_t index, const void* slots, int64_t n) noexcept;
/// Where `key` belongs in a sorted range.
int32_t SortedInsertIndex(const tZRLIST* list, const void* key, int32_t start, int32_t n,
                          ZRLISTSORTCALLBACK callback) noexcept;

}  // namespace marlo
