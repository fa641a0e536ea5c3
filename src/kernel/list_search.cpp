// SPDX-License-Identifier: Apache-2.0
// Linear and binary search in lists.
#include <algorithm>

#include "kernel/list_internal.h"
#include "marlo110k/list.h"

namespace marlo {
namespace {

/// A range of slots, first included, end not.
struct SlotRange {
  int32_t first;
  int32_t end;
};

SlotRange RangeOf(const tZRLIST* list, int32_t start, int32_t n) noexcept {
  const int32_t first = std::min(std::max(start, 0), list->count);
  const int32_t most = list->count - first;
  return {first, first + (n < 0 ? most : std::min(n, most))};
}

/// Where a binary search ended: on a hit, or at the place where the key belongs.
struct SearchEnd {
  int32_t index;
  bool hit;
};

/// The one walk of both sorted searches. `num` is the number of slots from lo to hi; the middle of an even number
/// is the lower one, and every slot is compared at most once, so that the path and the number of comparisons are
/// the published ones.
SearchEnd SearchSorted(const tZRLIST* list, SlotRange range, const void* key, ZRLISTSORTCALLBACK callback) noexcept {
  const uint64_t criteria = list->sortCriteria;
  int32_t lo = range.first;
  int32_t hi = range.end - 1;
  int32_t num = range.end - range.first;
  int32_t place = range.first;
  while (lo <= hi) {
    const int32_t half = num / 2;
    if (half == 0) {
      if (num == 1) {
        const int32_t order = callback(criteria, key, ItemAt(list, lo));
        if (order == 0) return {lo, true};
        place = order > 0 ? lo + 1 : lo;
      }
      break;
    }
    const bool odd = (num & 1) != 0;
    const int32_t mid = odd ? lo + half : lo + half - 1;
    const int32_t order = callback(criteria, key, ItemAt(list, mid));
    if (order == 0) return {mid, true};
    if (order < 0) {
      hi = mid - 1;
      num = odd ? half : half - 1;
      place = mid;
    } else {
      lo = mid + 1;
      num = half;
      place = mid + 1;
    }
  }
  return {place, false};
}

}  // namespace

int32_t SortedInsertIndex(const tZRLIST* list, const void* key, int32_t start, int32_t n,
                          ZRLISTSORTCALLBACK callback) noexcept {
  if (start > 0 && start >= list->count) return -1;
  const SlotRange range = RangeOf(list, start, n);
  if (range.first == range.end) return 0;
  return SearchSorted(list, range, key, callback).index;
}

}  // namespace marlo

using namespace marlo;

int32_t ZrList_FindSpecificItemRange(tZRLIST* list, int32_t start, int32_t n, const void* item) noexcept {
  if (!IsLiveList(list)) return -1;
  plat::LockGuard guard(LockOf(list));
  if (IsArray(list) && item == nullptr) return -1;
  const SlotRange range = RangeOf(list, start, n);
  for (int32_t i = range.first; i < range.end; ++i) {
    const bool same =
        IsArray(list) ? std::memcmp(SlotAt(list, i), item, list->itemSize) == 0 : PointerAt(list, i) == item;
    if (same) return i;
  }
  return -1;
}

int32_t ZrList_FindItemRange(tZRLIST* list, int32_t start, int32_t n, const void* key,
                             ZRLISTSEARCHCALLBACK callback) noexcept {
  if (!IsLiveList(list) || callback == nullptr) return -1;
  plat::LockGuard guard(LockOf(list));
  const SlotRange range = RangeOf(list, start, n);
  for (int32_t i = range.first; i < range.end; ++i) {
    if (callback(key, ItemAt(list, i)) == 0) return i;
  }
  return -1;
}

int32_t ZrList_FindSortedItemRange(tZRLIST* list, const void* key, int32_t start, int32_t n,
                                   ZRLISTSORTCALLBACK callback) noexcept {
  if (!IsLiveList(list) || callback == nullptr) return -1;
  plat::LockGuard guard(LockOf(list));
  const SearchEnd end = SearchSorted(list, RangeOf(list, start, n), key, callback);
  return end.hit ? end.index : -1;
}

int32_t ZrList_FindSortedInsertIndexRange(tZRLIST* list, const void* key, int32_t start, int32_t n,
                                          ZRLISTSORTCALLBACK callback) noexcept {
  if (!IsLiveList(list) || callback == nullptr) return -1;
  plat::LockGuard guard(LockOf(list));
  return SortedInsertIndex(list, key, start, n, callback);
}

int32_t ZrList_IsValidIndexSlow(tZRLIST* list, int32_t index) noexcept {
  if (!IsLiveList(list)) return 0;
  plat::LockGuard guard(LockOf(list));
  return index >= 0 && index < list->count ? 1 : 0;
}
