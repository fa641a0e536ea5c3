// SPDX-License-Identifier: Apache-2.0
// The growable sequence: one record, three kinds of storage.
//
// An array list (ZRLIST_ARRAY) holds its items in the buffer. A heap list (ZRLIST_HEAPLIST) owns
// separately allocated blocks that never move. A pointer list (neither bit) holds plain pointers it
// doesn't own. Clients read count, itemSize and items directly.
//
// Threads: a ZRLIST_SYNCHRONIZED list may be used from any thread and holds its lock for each
// operation, also while it calls a comparison; an unsynchronised one belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/lock.h"

/// What kind of list it is and how it behaves; kept in the record as ZrList_CreateExZ completed it.
enum ZRLIST_OPTIONS : uint32_t {
  ZRLIST_HEAPLIST = 0x00000002,      ///< Items are blocks owned by the list; the buffer holds pointers.
  ZRLIST_ARRAY = 0x00000004,         ///< Items stand in the buffer.
  ZRLIST_INPLACE = 0x00000008,       ///< The record belongs to the caller.
  ZRLIST_PRIVATEHEAP = 0x10000000,   ///< Items of a heap list come from a heap of their own.
  ZRLIST_ANYTHREAD = 0x40000000,     ///< Always added: no list refuses a thread.
  ZRLIST_SYNCHRONIZED = 0x80000000,  ///< Every operation takes the list's lock.
};

/// "CURT" in memory order: a live list's magic.
inline constexpr uint32_t kZrListMagic = 0x54525543;

struct ZrListHeap;

/// A list. Clients read count, itemSize and items and leave the other fields to the functions.
struct tZRLIST {
  int32_t count;               ///< Items in use.
  uint64_t itemSize;           ///< Bytes from one slot to the next.
  void* items;                 ///< The slots; those behind count are zero.
  plat::CriticalSection lock;  ///< Valid with ZRLIST_SYNCHRONIZED; clients may hold it over several calls.
  uint32_t magic;
  uint32_t options;
  uint64_t userData;
  uint64_t sortCriteria;
  uint32_t ownerThread;
  int32_t allocated;  ///< Capacity in items.
  int32_t growBy;     ///< Growth unit in items.
  ZrListHeap* heap;
  uint32_t heapAllocFlags;
  uint32_t heapFreeFlags;
  void* pendingItem;  ///< Allocated by ZrList_AllocItem and not inserted yet.
};
static_assert(sizeof(tZRLIST) == 128);
static_assert(offsetof(tZRLIST, itemSize) == 8 && offsetof(tZRLIST, items) == 16 && offsetof(tZRLIST, lock) == 24);
static_assert(offsetof(tZRLIST, magic) == 64 && offsetof(tZRLIST, options) == 68);
static_assert(offsetof(tZRLIST, userData) == 72 && offsetof(tZRLIST, sortCriteria) == 80);
static_assert(offsetof(tZRLIST, ownerThread) == 88 && offsetof(tZRLIST, allocated) == 92);
static_assert(offsetof(tZRLIST, growBy) == 96 && offsetof(tZRLIST, heap) == 104);
static_assert(offsetof(tZRLIST, heapAllocFlags) == 112 && offsetof(tZRLIST, heapFreeFlags) == 116);
static_assert(offsetof(tZRLIST, pendingItem) == 120);

/// Compares a key with an item: 0 on a match. For an array the item is the slot's address, otherwise the
/// pointer it holds. Runs under the lock of a synchronised list.
using ZRLISTSEARCHCALLBACK = int32_t (*)(const void* key, const void* item);
/// Orders a key and an item as memcmp does. `criteria` is what the sort stored in the list.
using ZRLISTSORTCALLBACK = int32_t (*)(uint64_t criteria, const void* key, const void* item);

// ---- Life ------------------------------------------------------------------------------------------

/// Makes a list.
/// @param list receives it; with ZRLIST_INPLACE it points at a variable that holds the caller's record.
/// @param itemSize bytes of an array's item, rounded up to a multiple of 4; ignored otherwise.
/// @param initialItems below 1 means 16; at least 4, rounded up to a multiple of the growth unit.
/// @param growBy below 1 means 16; held to 4..66560.
/// @return S_OK, E_FAIL for both ZRLIST_HEAPLIST and ZRLIST_ARRAY, E_OUTOFMEMORY. The three last
/// arguments are ignored. Free with ZrList_Destroy.
ZR_API HRESULT ZrList_CreateExZ(tZRLIST** list, uint64_t itemSize, int32_t initialItems, int32_t growBy,
                                uint32_t options, uint64_t ignored1, uint64_t ignored2, uint64_t ignored3) noexcept;
/// Frees a list with all that it owns; null gives S_OK. An in-place record stays, empty.
ZR_API HRESULT ZrList_Destroy(tZRLIST* list) noexcept;
/// Moves an allocated, unsynchronised list into the caller's record and sets `list` to null.
/// @return E_INVALIDARG when the source is no list, E_FAIL when it is in place already.
ZR_API HRESULT ZrList_ConvertToInPlace(tZRLIST** list, tZRLIST* record) noexcept;
/// True when `size` is sizeof(tZRLIST), the memory can be read and holds a live list.
ZR_API bool ZrList_IsList(const void* pointer, uint64_t size) noexcept;
/// Tests the magic only; the pointer must be readable or null (false).
ZR_API bool ZrList_IsListFast(const tZRLIST* list) noexcept;

// ---- Capacity --------------------------------------------------------------------------------------

/// Adds room for `items`, rounded up to the growth unit (below 1: one unit). A new zeroed buffer replaces
/// the old one: pointers into an array's slots end here.
ZR_API HRESULT ZrList_GrowAllocated(tZRLIST* list, int32_t items) noexcept;
/// Gives spare slots back (negative: all), rounded up to the growth unit, less one unit when that
/// exceeds what is spare; a result that isn't positive changes nothing.
ZR_API HRESULT ZrList_ShrinkAllocated(tZRLIST* list, int32_t items) noexcept;
/// Sets an array's count: new items are zero, a lower count drops the last ones.
/// @return E_FAIL for another kind of list.
ZR_API HRESULT ZrList_ArrayForceItemCount(tZRLIST* list, int32_t newCount, int32_t shrink) noexcept;

// ---- Insertion -------------------------------------------------------------------------------------

/// Inserts at `index` (negative or past the end: appends).
/// Array and pointer lists take `n` items copied from `items`. A heap list takes its pending item
/// (`items` null, n -1) or -n raw pointers from `items` (n negative), which it then owns and frees with
/// free(); a positive n is E_FAIL there.
ZR_API HRESULT ZrList_InsertList(tZRLIST* list, int32_t index, const void* items, int32_t n) noexcept;
/// Heap lists: makes a zeroed block the pending item. E_FAIL while there is one.
ZR_API HRESULT ZrList_AllocItem(tZRLIST* list, uint64_t size, void** item) noexcept;
/// Heap lists: allocates, copies `size` bytes from `source` (null: zeroes), inserts at `index`.
/// @param newIndex optional; -1 on failure.
ZR_API HRESULT ZrList_AllocAndInsertItem(tZRLIST* list, const void* source, uint64_t size, int32_t index,
                                         int32_t* newIndex) noexcept;
/// Heap lists: resizes an item; it stays as it was when memory is short.
ZR_API HRESULT ZrList_ReAllocItem(tZRLIST* list, int32_t index, uint64_t size) noexcept;
/// Moves `n` items (negative: as many as the source holds) between heap lists, keeping their order and
/// addresses. Takes the lock of `dest`, then that of `source`.
ZR_API HRESULT ZrList_MoveItemsBetweenHeapLists(tZRLIST* dest, int32_t destIndex, tZRLIST* source, int32_t sourceIndex,
                                                int32_t n) noexcept;

// ---- Removal and moves -----------------------------------------------------------------------------

/// Removes `n` items at `index` (n negative: all from there on); a heap list frees them. Both negative: the
/// pending item is freed. n below 1 does nothing and is S_OK, whatever the index.
/// @param shrink non-zero gives spare slots back when more than the growth unit are spare.
ZR_API HRESULT ZrList_DeleteList(tZRLIST* list, int32_t index, int32_t n, int32_t shrink) noexcept;
/// Takes `n` items at `from` out and puts them so that they start at `to` in the result.
/// @param to negative means 0. @param n negative means count less the larger of the two places.
/// @return E_INVALIDARG for a negative `from`, E_FAIL for a range past the end.
ZR_API HRESULT ZrList_MoveRange(tZRLIST* list, int32_t from, int32_t to, int32_t n) noexcept;

// ---- Search: an index, or -1. A start below 0 means 0; a count below 0 or too large means to the end --

/// First slot that holds `item`: by bytes in an array, by pointer otherwise.
ZR_API int32_t ZrList_FindSpecificItemRange(tZRLIST* list, int32_t start, int32_t n, const void* item) noexcept;
/// First item for which the callback gives 0.
ZR_API int32_t ZrList_FindItemRange(tZRLIST* list, int32_t start, int32_t n, const void* key,
                                    ZRLISTSEARCHCALLBACK callback) noexcept;
/// Binary search in a sorted range; mind the order of the arguments.
ZR_API int32_t ZrList_FindSortedItemRange(tZRLIST* list, const void* key, int32_t start, int32_t n,
                                          ZRLISTSORTCALLBACK callback) noexcept;
/// Where `key` belongs in a sorted range: 0 for an empty one, -1 when `start` lies behind the list.
ZR_API int32_t ZrList_FindSortedInsertIndexRange(tZRLIST* list, const void* key, int32_t start, int32_t n,
                                                 ZRLISTSORTCALLBACK callback) noexcept;
/// 1 for 0 <= index < count, else 0.
ZR_API int32_t ZrList_IsValidIndexSlow(tZRLIST* list, int32_t index) noexcept;

// ---- Sorting: the criteria are stored; a null callback or fewer than 2 items does nothing more -----

/// Selection sort, not stable; its order of comparing and swapping is part of the contract.
ZR_API HRESULT ZrList_Sort(tZRLIST* list, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept;
/// Heap sort, for lists where quadratic time won't do.
ZR_API HRESULT ZrList_HeapSort(tZRLIST* list, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept;
/// Inserts the items of `source`, in order, each at its sorted place in `dest`, a pointer list used as a
/// sorted view. A heap list can't be the destination.
ZR_API HRESULT ZrList_SortTo(tZRLIST* dest, tZRLIST* source, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept;

// ---- Attributes: no lock is taken ------------------------------------------------------------------

/// The client's own value, 0 in a new list.
ZR_API uint64_t ZrList_GetUserData(const tZRLIST* list) noexcept;
/// Exchanges atomically. @return the former value.
ZR_API uint64_t ZrList_SetUserData(tZRLIST* list, uint64_t value) noexcept;
/// The options in force, with those that were added at creation.
ZR_API uint32_t ZrList_GetCreateOptions(const tZRLIST* list) noexcept;
/// The criteria of the last sort.
ZR_API uint64_t ZrList_GetSortCriteria(const tZRLIST* list) noexcept;
/// The id of the thread that made the list, or that ZrList_SetThreadOwner named.
ZR_API uint32_t ZrList_GetThreadOwner(const tZRLIST* list) noexcept;
/// @param threadId 0 means the calling thread.
ZR_API HRESULT ZrList_SetThreadOwner(tZRLIST* list, uint32_t threadId) noexcept;
/// Bytes of one item (an array: itemSize), or with a negative index of the whole list.
/// The size of a heap item is what the allocator set aside, so at least what was asked for.
ZR_API uint64_t ZrList_AllocSize(tZRLIST* list, int32_t index) noexcept;
/// The creation site isn't recorded: writes an empty string (when there is room for one) and gives -1.
ZR_API int32_t ZrList_GetFileAndLine(const tZRLIST* list, char16_t* fileName) noexcept;
