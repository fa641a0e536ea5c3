// SPDX-License-Identifier: Apache-2.0
// The list's sorts. Their order of comparing and swapping shows in the order of equal items and in what callbacks
// see, so it is kept to the letter.
#include <utility>

#include "kernel/list_internal.h"
#include "marlo110k/list.h"

namespace marlo {
namespace {

/// Array slots are a multiple of 4 bytes and swap word by word.
void SwapItems(tZRLIST* list, int32_t left, int32_t right) noexcept {
  if (!IsArray(list)) {
    std::swap(PointerAt(list, left), PointerAt(list, right));
    return;
  }
  uint32_t* a = reinterpret_cast<uint32_t*>(list->items) + static_cast<uint64_t>(left) * (list->itemSize / 4);
  uint32_t* b = reinterpret_cast<uint32_t*>(list->items) + static_cast<uint64_t>(right) * (list->itemSize / 4);
  for (uint64_t word = 0; word < list->itemSize / 4; ++word) std::swap(a[word], b[word]);
}

class Sorter {
 public:
  Sorter(tZRLIST* list, ZRLISTSORTCALLBACK callback) noexcept : list_(list), callback_(callback) {}

  /// Of several equal largest items the earliest goes to the end.
  void SelectionSort() noexcept {
    for (int32_t end = list_->count - 1; end >= 1; --end) {
      int32_t largest = 0;
      for (int32_t k = 1; k <= end; ++k) {
        if (IsAbove(k, largest)) largest = k;
      }
      if (largest != end) SwapItems(list_, largest, end);
    }
  }

  void HeapSort() noexcept {
    const int32_t count = list_->count;
    for (int32_t i = count / 2; i >= 2; --i) SiftDown(i, count);
    for (int32_t i = count; i >= 2; --i) {
      SiftDown(1, i);
      SwapItems(list_, 0, i - 1);
    }
  }

 private:
  bool IsAbove(int32_t item, int32_t other) noexcept {
    return callback_(list_->sortCriteria, ItemAt(list_, item), ItemAt(list_, other)) > 0;
  }

  /// Positions count from 1. The first child is always visited, later ones only below `n`, and the walk goes on
  /// after a child that wasn't above its node.
  void SiftDown(int32_t node, int32_t n) noexcept {
    int64_t child = int64_t{node} * 2;
    do {
      int32_t j = static_cast<int32_t>(child);
      if (j < n && IsAbove(j, j - 1)) ++j;
      if (IsAbove(j - 1, node - 1)) SwapItems(list_, j - 1, node - 1);
      node = j;
      child = int64_t{node} * 2;
    } while (child < n);
  }

  tZRLIST* list_;
  ZRLISTSORTCALLBACK callback_;
};

/// What the view stores for one item: a pointer list the item's pointer, an array of the same layout the bytes.
const void* ViewSlot(const tZRLIST* dest, const void* const& item) noexcept {
  return IsArray(dest) ? item : static_cast<const void*>(&item);
}

}  // namespace
}  // namespace marlo

using namespace marlo;

HRESULT ZrList_Sort(tZRLIST* list, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  list->sortCriteria = criteria;
  if (callback != nullptr) Sorter(list, callback).SelectionSort();
  return S_OK;
}

HRESULT ZrList_HeapSort(tZRLIST* list, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept {
  if (!IsLiveList(list)) return E_INVALIDARG;
  plat::LockGuard guard(LockOf(list));
  list->sortCriteria = criteria;
  if (callback != nullptr) Sorter(list, callback).HeapSort();
  return S_OK;
}

HRESULT ZrList_SortTo(tZRLIST* dest, tZRLIST* source, uint64_t criteria, ZRLISTSORTCALLBACK callback) noexcept {
  if (!IsLiveList(dest) || !IsLiveList(source) || dest == source) return E_INVALIDARG;
  plat::LockGuard destGuard(LockOf(dest));
  plat::LockGuard sourceGuard(LockOf(source));
  if (IsHeapList(dest)) return E_FAIL;
  if (IsArray(dest) && (!IsArray(source) || source->itemSize != dest->itemSize)) return E_FAIL;
  dest->sortCriteria = criteria;
  for (int32_t i = 0; callback != nullptr && i < source->count; ++i) {
    const void* item = ItemAt(source, i);
    const int32_t place = SortedInsertIndex(dest, item, 0, -1, callback);
    const HRESULT result = InsertSlots(dest, place, ViewSlot(dest, item), 1);
    if (FAILED(result)) return result;
  }
  return S_OK;
}
