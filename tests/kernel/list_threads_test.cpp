// SPDX-License-Identifier: Apache-2.0
// Synchronised lists under several threads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "marlo110k/list.h"

namespace {

TEST(ListThreads, AppendersLoseNothing) {
  constexpr int kThreads = 4;
  constexpr uint32_t kEach = 3000;
  tZRLIST* list = nullptr;
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&list, 4, 0, 0, ZRLIST_ARRAY | ZRLIST_SYNCHRONIZED, 0, 0, 0));
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([=] {
      for (uint32_t i = 0; i < kEach; ++i) {
        const uint32_t value = t * kEach + i;
        ZrList_InsertList(list, (i & 1) != 0 ? 0 : -1, &value, 1);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(static_cast<int32_t>(kThreads * kEach), list->count);
  std::vector<bool> seen(kThreads * kEach);
  for (int32_t i = 0; i < list->count; ++i) seen[static_cast<const uint32_t*>(list->items)[i]] = true;
  EXPECT_EQ(seen.end(), std::find(seen.begin(), seen.end(), false));
  ZrList_Destroy(list);
}

int32_t LessOrMore(uint64_t context, const void* key, const void* item) {
  // The lock is re-entrant: a comparison may ask the list.
  tZRLIST* list = reinterpret_cast<tZRLIST*>(context);
  if (ZrList_IsValidIndexSlow(list, 0) == 0) return 0;
  const uint32_t left = *static_cast<const uint32_t*>(key);
  const uint32_t right = *static_cast<const uint32_t*>(item);
  return left < right ? -1 : left > right ? 1 : 0;
}

TEST(ListThreads, CompoundOperationsUnderTheLockStaySorted) {
  tZRLIST* list = nullptr;
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&list, 4, 0, 0, ZRLIST_ARRAY | ZRLIST_SYNCHRONIZED, 0, 0, 0));
  ZrList_Sort(list, reinterpret_cast<uint64_t>(list), nullptr);
  std::atomic<uint64_t> sum{0};
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (uint32_t i = 0; i < 400; ++i) {
        const uint32_t value = i * 7 % 401 * 3 + t;
        plat::LockGuard guard(&list->lock);
        const int32_t place = ZrList_FindSortedInsertIndexRange(list, &value, 0, -1, LessOrMore);
        ZrList_InsertList(list, place, &value, 1);
        ZrList_SetUserData(list, ZrList_GetUserData(list) + value);
      }
    });
    threads.emplace_back([&] {
      for (int i = 0; i < 300; ++i) sum += ZrList_GetUserData(list) & 1;
    });
  }
  for (std::thread& thread : threads) thread.join();
  const uint32_t* slots = static_cast<const uint32_t*>(list->items);
  ASSERT_EQ(1200, list->count);
  EXPECT_TRUE(std::is_sorted(slots, slots + list->count));
  uint64_t total = 0;
  for (int32_t i = 0; i < list->count; ++i) total += slots[i];
  EXPECT_EQ(total, ZrList_GetUserData(list));
  ZrList_Destroy(list);
}

TEST(ListThreads, ItemsTravelBetweenHeapLists) {
  tZRLIST* lists[2] = {};
  for (tZRLIST*& list : lists) {
    ASSERT_EQ(S_OK, ZrList_CreateExZ(&list, 0, 0, 0, ZRLIST_HEAPLIST | ZRLIST_SYNCHRONIZED, 0, 0, 0));
  }
  constexpr int kItems = 2000;
  std::thread feeder([&] {
    for (int i = 0; i < kItems; ++i) ZrList_AllocAndInsertItem(lists[0], &i, sizeof(i), -1, nullptr);
  });
  // One direction only: callers that moved both ways would have to order themselves.
  int moved = 0;
  while (moved < kItems) {
    if (SUCCEEDED(ZrList_MoveItemsBetweenHeapLists(lists[1], -1, lists[0], 0, 1))) ++moved;
  }
  feeder.join();
  EXPECT_EQ(0, lists[0]->count);
  ASSERT_EQ(kItems, lists[1]->count);
  for (int i = 0; i < kItems; ++i) EXPECT_EQ(i, *static_cast<const int* const*>(lists[1]->items)[i]);
  for (tZRLIST* list : lists) ZrList_Destroy(list);
}

}  // namespace
