// SPDX-License-Identifier: Apache-2.0
// Sorted searches and sorts: results, the order of comparing, and how often the callback runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "marlo110k/list.h"
#include "testing/random.h"

namespace {

struct Item {
  int32_t key;
  uint32_t id;
  uint32_t padding;
};

/// Every comparison of a run, as ids of both sides.
std::vector<std::pair<uint32_t, uint32_t>> comparisons;
uint64_t criteriaSeen = 0;

int32_t ByKey(uint64_t criteria, const void* key, const void* item) {
  const Item* left = static_cast<const Item*>(key);
  const Item* right = static_cast<const Item*>(item);
  comparisons.emplace_back(left->id, right->id);
  criteriaSeen = criteria;
  return left->key < right->key ? -1 : left->key > right->key ? 1 : 0;
}

class ListSortTest : public testing::TestWithParam<bool> {
 protected:
  bool IsArray() const { return GetParam(); }
  tZRLIST* Fill(const std::vector<Item>& items) {
    ZrList_Destroy(list_);
    items_ = items;
    EXPECT_EQ(S_OK, ZrList_CreateExZ(&list_, sizeof(Item), 0, 0, IsArray() ? ZRLIST_ARRAY : 0U, 0, 0, 0));
    for (Item& item : items_) {
      const Item* pointer = &item;
      ZrList_InsertList(list_, -1, IsArray() ? static_cast<const void*>(&item) : &pointer, 1);
    }
    comparisons.clear();
    return list_;
  }
  std::vector<uint32_t> Ids() const {
    std::vector<uint32_t> ids;
    for (int32_t i = 0; i < list_->count; ++i) {
      ids.push_back(IsArray() ? static_cast<const Item*>(list_->items)[i].id
                              : static_cast<const Item* const*>(list_->items)[i]->id);
    }
    return ids;
  }
  void TearDown() override { ZrList_Destroy(list_); }

  std::vector<Item> items_;
  tZRLIST* list_ = nullptr;
};

std::vector<Item> RandomItems(testing_support::Random* random, size_t count, int32_t keys) {
  std::vector<Item> items(count);
  for (size_t i = 0; i < count; ++i) {
    items[i] = {static_cast<int32_t>(random->Between(0, keys)), static_cast<uint32_t>(i), 0};
  }
  return items;
}

/// The published selection sort on a vector, noting comparisons.
std::vector<Item> ReferenceSelection(std::vector<Item> v, std::vector<std::pair<uint32_t, uint32_t>>* notes) {
  for (size_t end = v.size(); end-- > 1;) {
    size_t m = 0;
    for (size_t k = 1; k <= end; ++k) {
      notes->emplace_back(v[k].id, v[m].id);
      if (v[k].key > v[m].key) m = k;
    }
    if (m != end) std::swap(v[m], v[end]);
  }
  return v;
}

/// The published heap sort with positions from 1, as recursion over children.
struct ReferenceHeap {
  std::vector<Item> v;  // v[0] unused
  std::vector<std::pair<uint32_t, uint32_t>>* notes;

  bool Above(size_t a, size_t b) {
    notes->emplace_back(v[a].id, v[b].id);
    return v[a].key > v[b].key;
  }
  void Sift(size_t i, size_t n) {
    size_t j = 2 * i;
    if (j < n && Above(j + 1, j)) j = j + 1;
    if (Above(j, i)) std::swap(v[i], v[j]);
    if (2 * j < n) Sift(j, n);
  }
  void Run() {
    const size_t count = v.size() - 1;
    for (size_t i = count / 2; i >= 2; --i) Sift(i, count);
    for (size_t i = count; i >= 2; --i) {
      Sift(1, i);
      std::swap(v[1], v[i]);
    }
  }
};

std::vector<uint32_t> IdsOf(const std::vector<Item>& items) {
  std::vector<uint32_t> ids;
  for (const Item& item : items) ids.push_back(item.id);
  return ids;
}

TEST_P(ListSortTest, SelectionSortOfEqualItems) {
  Fill({{1, 'a', 0}, {1, 'b', 0}, {1, 'c', 0}});
  EXPECT_EQ(S_OK, ZrList_Sort(list_, 42, ByKey));
  EXPECT_EQ((std::vector<uint32_t>{'b', 'c', 'a'}), Ids());
  EXPECT_EQ(42U, ZrList_GetSortCriteria(list_));
  EXPECT_EQ(42U, criteriaSeen);
}

TEST_P(ListSortTest, SortsKeepTheirOrderOfComparingAndSwapping) {
  testing_support::Random random(21);
  SCOPED_TRACE(random.Label());
  for (size_t count = 0; count < 80; ++count) {
    SCOPED_TRACE(count);
    const std::vector<Item> items = RandomItems(&random, count, static_cast<int32_t>(random.Between(0, 60)));
    std::vector<std::pair<uint32_t, uint32_t>> notes;

    Fill(items);
    ASSERT_EQ(S_OK, ZrList_Sort(list_, 1, ByKey));
    ASSERT_EQ(IdsOf(ReferenceSelection(items, &notes)), Ids());
    ASSERT_EQ(notes, comparisons);
    ASSERT_EQ(count * (count > 0 ? count - 1 : 0) / 2, comparisons.size());

    notes.clear();
    ReferenceHeap heap{{Item{}}, &notes};
    heap.v.insert(heap.v.end(), items.begin(), items.end());
    if (count > 1) heap.Run();
    Fill(items);
    ASSERT_EQ(S_OK, ZrList_HeapSort(list_, 1, ByKey));
    ASSERT_EQ(IdsOf({heap.v.begin() + 1, heap.v.end()}), Ids());
    ASSERT_EQ(notes, comparisons);
    std::vector<int32_t> keys;
    for (uint32_t id : Ids()) keys.push_back(items[id].key);
    ASSERT_TRUE(std::is_sorted(keys.begin(), keys.end()));
  }
}

TEST_P(ListSortTest, NullCallbackOnlyStoresTheCriteria) {
  Fill({{2, 0, 0}, {1, 1, 0}});
  EXPECT_EQ(S_OK, ZrList_Sort(list_, 7, nullptr));
  EXPECT_EQ(S_OK, ZrList_HeapSort(list_, 8, nullptr));
  EXPECT_EQ(8U, ZrList_GetSortCriteria(list_));
  EXPECT_EQ((std::vector<uint32_t>{0, 1}), Ids());
}

/// The slots that the published binary search visits in first..first + count - 1, by its own halving rule.
std::vector<uint32_t> ReferencePath(const std::vector<Item>& v, int32_t key, int64_t first, int64_t count, int64_t* hit,
                                    int64_t* place) {
  std::vector<uint32_t> path;
  int64_t lo = first, hi = first + count - 1, num = count;
  *hit = -1;
  *place = count == 0 ? 0 : first;
  const auto at = [&](int64_t i) {
    path.push_back(v[static_cast<size_t>(i)].id);
    return v[static_cast<size_t>(i)].key;
  };
  while (lo <= hi) {
    const int64_t half = num / 2;
    if (half == 0) {
      if (num == 1) {
        const int32_t found = at(lo);
        if (key == found) *hit = lo;
        *place = key > found ? lo + 1 : lo;
      }
      break;
    }
    const int64_t mid = num % 2 == 1 ? lo + half : lo + half - 1;
    const int32_t found = at(mid);
    if (key == found) {
      *hit = *place = mid;
      break;
    }
    if (key < found) {
      *place = mid;
      hi = mid - 1;
      num = num % 2 == 1 ? half : half - 1;
    } else {
      *place = mid + 1;
      lo = mid + 1;
      num = half;
    }
  }
  return path;
}

TEST_P(ListSortTest, SortedSearchWalksThePublishedPath) {
  testing_support::Random random(22);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 400; ++round) {
    const auto count = static_cast<size_t>(random.Between(1, 40));
    std::vector<Item> items = RandomItems(&random, count, 30);
    std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) { return a.key < b.key; });
    Fill(items);
    const int64_t start = random.Between(0, static_cast<int64_t>(count) - 1);
    const int64_t n = random.Between(-1, static_cast<int64_t>(count) + 3);
    const int64_t rest = static_cast<int64_t>(count) - start;
    const int64_t range = n < 0 ? rest : std::min(n, rest);
    const Item key{static_cast<int32_t>(random.Between(-1, 31)), 999, 0};
    int64_t hit = 0, place = 0;
    const std::vector<uint32_t> path = ReferencePath(items, key.key, start, range, &hit, &place);

    ASSERT_EQ(hit,
              ZrList_FindSortedItemRange(list_, &key, static_cast<int32_t>(start), static_cast<int32_t>(n), ByKey));
    std::vector<uint32_t> visited;
    for (const auto& [left, right] : comparisons) {
      ASSERT_EQ(999U, left) << "the key is the first argument";
      visited.push_back(right);
    }
    ASSERT_EQ(path, visited);
    comparisons.clear();
    ASSERT_EQ(place, ZrList_FindSortedInsertIndexRange(list_, &key, static_cast<int32_t>(start),
                                                       static_cast<int32_t>(n), ByKey));
    ASSERT_EQ(path.size(), comparisons.size());
  }
}

TEST_P(ListSortTest, SearchEdges) {
  Fill({{10, 0, 0}, {20, 1, 0}, {30, 2, 0}});
  const Item twenty{20, 9, 0}, thirtyFive{35, 9, 0};
  EXPECT_EQ(1, ZrList_FindSortedInsertIndexRange(list_, &twenty, 0, -1, ByKey));
  EXPECT_EQ(3, ZrList_FindSortedInsertIndexRange(list_, &thirtyFive, -4, 99, ByKey));
  EXPECT_EQ(-1, ZrList_FindSortedInsertIndexRange(list_, &twenty, 3, -1, ByKey));
  EXPECT_EQ(-1, ZrList_FindSortedItemRange(list_, &twenty, 4, -1, ByKey));
  EXPECT_EQ(-1, ZrList_FindSortedItemRange(list_, &twenty, 0, -1, nullptr));
  EXPECT_EQ(1, ZrList_IsValidIndexSlow(list_, 2));
  EXPECT_EQ(0, ZrList_IsValidIndexSlow(list_, 3));
  EXPECT_EQ(0, ZrList_IsValidIndexSlow(list_, -1));
  Fill({});
  EXPECT_EQ(0, ZrList_FindSortedInsertIndexRange(list_, &twenty, 0, -1, ByKey));
}

int32_t KeyIs(const void* key, const void* item) {
  return *static_cast<const int32_t*>(key) - static_cast<const Item*>(item)->key;
}

TEST_P(ListSortTest, LinearSearch) {
  Fill({{5, 0, 0}, {6, 1, 0}, {5, 2, 0}, {7, 3, 0}});
  const int32_t five = 5;
  EXPECT_EQ(0, ZrList_FindItemRange(list_, -3, -1, &five, KeyIs));
  EXPECT_EQ(2, ZrList_FindItemRange(list_, 1, 100, &five, KeyIs));
  EXPECT_EQ(-1, ZrList_FindItemRange(list_, 1, 1, &five, KeyIs));
  EXPECT_EQ(-1, ZrList_FindItemRange(list_, 3, -1, &five, KeyIs));
  const Item copy = items_[2];
  const void* sought = IsArray() ? static_cast<const void*>(&copy) : &items_[2];
  EXPECT_EQ(2, ZrList_FindSpecificItemRange(list_, 0, -1, sought));
  EXPECT_EQ(-1, ZrList_FindSpecificItemRange(list_, 0, 2, sought));
  if (!IsArray()) {
    EXPECT_EQ(-1, ZrList_FindSpecificItemRange(list_, 0, -1, &copy)) << "by address, not by bytes";
  }
}

TEST_P(ListSortTest, SortToMakesAViewAndLeavesTheSource) {
  Fill({{3, 'a', 0}, {1, 'b', 0}, {3, 'c', 0}, {2, 'd', 0}});
  tZRLIST* view = nullptr;
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&view, 0, 0, 0, 0, 0, 0, 0));
  ASSERT_EQ(S_OK, ZrList_SortTo(view, list_, 11, ByKey));
  std::string order;
  for (int32_t i = 0; i < view->count; ++i) {
    order += static_cast<char>(static_cast<const Item* const*>(view->items)[i]->id);
  }
  EXPECT_EQ("bdca", order) << "an equal item goes in front of the one it met";
  EXPECT_EQ((std::vector<uint32_t>{'a', 'b', 'c', 'd'}), Ids());
  EXPECT_EQ(11U, ZrList_GetSortCriteria(view));
  EXPECT_EQ(0U, ZrList_GetSortCriteria(list_));
  ZrList_Destroy(view);

  // One item is inserted too; a heap list can't be the view; an array only of equal slots.
  Fill({{3, 'a', 0}});
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&view, 0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(S_OK, ZrList_SortTo(view, list_, 0, ByKey));
  EXPECT_EQ(1, view->count);
  EXPECT_EQ(E_INVALIDARG, ZrList_SortTo(view, view, 0, ByKey));
  ZrList_Destroy(view);
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&view, 0, 0, 0, ZRLIST_HEAPLIST, 0, 0, 0));
  EXPECT_EQ(E_FAIL, ZrList_SortTo(view, list_, 0, ByKey));
  ZrList_Destroy(view);
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&view, 16, 0, 0, ZRLIST_ARRAY, 0, 0, 0));
  EXPECT_EQ(E_FAIL, ZrList_SortTo(view, list_, 0, ByKey));
  ZrList_Destroy(view);
}

std::string KindName(const testing::TestParamInfo<bool>& kind) { return kind.param ? "Array" : "Pointer"; }

INSTANTIATE_TEST_SUITE_P(Kinds, ListSortTest, testing::Bool(), KindName);

}  // namespace
