// SPDX-License-Identifier: Apache-2.0
// The list's creation rules, results and ownership.
#include "marlo110k/list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/memory.h"
#include "platform/sys/thread.h"

namespace {

/// A list that ends with the test.
class OwnedList {
 public:
  OwnedList(uint32_t options, uint64_t itemSize = 8, int32_t initial = 0, int32_t growBy = 0) {
    result = ZrList_CreateExZ(&list, itemSize, initial, growBy, options, 0, 0, 0);
  }
  ~OwnedList() { ZrList_Destroy(list); }
  OwnedList(OwnedList&& other) noexcept : list(std::exchange(other.list, nullptr)), result(other.result) {}
  OwnedList(const OwnedList&) = delete;
  OwnedList& operator=(const OwnedList&) = delete;
  operator tZRLIST*() const { return list; }
  tZRLIST* operator->() const { return list; }

  tZRLIST* list = nullptr;
  HRESULT result;
};

OwnedList Letters(const char* letters) {
  OwnedList list(ZRLIST_ARRAY, 4);
  for (; *letters != 0; ++letters) {
    const uint32_t slot = static_cast<unsigned char>(*letters);
    ZrList_InsertList(list, -1, &slot, 1);
  }
  return list;
}

std::string TextOf(const tZRLIST* list) {
  std::string text;
  for (int32_t i = 0; i < list->count; ++i) text += static_cast<char>(static_cast<const uint32_t*>(list->items)[i]);
  return text;
}

TEST(ListCreate, CapacityRules) {
  const struct {
    int32_t initial, growBy, allocated, unit;
  } kRows[] = {{0, 0, 16, 16},   {5, 4, 8, 4},
               {-7, -7, 16, 16}, {1, 1, 4, 4},
               {17, 16, 32, 16}, {1, 100000, 66560, 66560},
               {9, 3, 12, 4},    {66561, 66560, 133120, 66560}};
  for (const auto& row : kRows) {
    OwnedList list(ZRLIST_ARRAY, 6, row.initial, row.growBy);
    ASSERT_EQ(S_OK, list.result);
    EXPECT_EQ(row.allocated, list->allocated) << row.initial << ' ' << row.growBy;
    EXPECT_EQ(row.unit, list->growBy);
    EXPECT_EQ(8U, list->itemSize);
    EXPECT_EQ(8U, ZrList_AllocSize(list, 0) + (list->count == 0 ? 8 : 0));
  }
}

TEST(ListCreate, RecordShowsItsFacts) {
  OwnedList list(ZRLIST_HEAPLIST | ZRLIST_SYNCHRONIZED | ZRLIST_PRIVATEHEAP, 99);
  EXPECT_EQ(0, std::memcmp(&list->magic, "CURT", 4));
  EXPECT_EQ(8U, list->itemSize);
  EXPECT_EQ(9U, list->heapAllocFlags);
  EXPECT_EQ(1U, list->heapFreeFlags);
  EXPECT_EQ(0xD0000002U, ZrList_GetCreateOptions(list));
  EXPECT_EQ(plat::CurrentThreadId(), ZrList_GetThreadOwner(list));
  EXPECT_EQ(S_OK, ZrList_SetThreadOwner(list, 77));
  EXPECT_EQ(77U, ZrList_GetThreadOwner(list));
  EXPECT_EQ(S_OK, ZrList_SetThreadOwner(list, 0));
  EXPECT_EQ(plat::CurrentThreadId(), ZrList_GetThreadOwner(list));
  EXPECT_EQ(0U, ZrList_SetUserData(list, 5));
  EXPECT_EQ(5U, ZrList_SetUserData(list, 6));
  EXPECT_EQ(6U, ZrList_GetUserData(list));
  char16_t name[4] = u"abc";
  EXPECT_EQ(-1, ZrList_GetFileAndLine(list, name));
  EXPECT_EQ(0, name[0]);
}

TEST(ListCreate, Refusals) {
  tZRLIST* list = reinterpret_cast<tZRLIST*>(1);
  EXPECT_EQ(E_FAIL, ZrList_CreateExZ(&list, 8, 0, 0, ZRLIST_ARRAY | ZRLIST_HEAPLIST, 0, 0, 0));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(E_INVALIDARG, ZrList_CreateExZ(nullptr, 8, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrList_CreateExZ(&list, 8, 0, 0, ZRLIST_INPLACE, 0, 0, 0));
  for (const uint64_t itemSize : {UINT64_MAX, UINT64_MAX - 3, UINT64_MAX / 16, UINT64_C(1) << 60}) {
    EXPECT_EQ(E_OUTOFMEMORY, ZrList_CreateExZ(&list, itemSize, 0, 0, ZRLIST_ARRAY, 0, 0, 0)) << itemSize;
    EXPECT_EQ(nullptr, list);
  }
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_CreateExZ(&list, 8, INT32_MAX, 66560, ZRLIST_ARRAY, 0, 0, 0));
  const int64_t blocks = plat::LiveBlocks();
  plat::FailAllocation(1);
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_CreateExZ(&list, 8, 0, 0, ZRLIST_ARRAY, 0, 0, 0));
  plat::FailAllocation(0);
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(blocks, plat::LiveBlocks());
}

TEST(ListLife, InPlaceRecordsOutliveTheirList) {
  tZRLIST record;
  std::memset(&record, 0xEE, sizeof(record));
  tZRLIST* list = &record;
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&list, 4, 0, 0, ZRLIST_ARRAY | ZRLIST_INPLACE | ZRLIST_SYNCHRONIZED, 0, 0, 0));
  ASSERT_EQ(&record, list);
  const uint32_t value = 3;
  EXPECT_EQ(S_OK, ZrList_InsertList(list, -1, &value, 1));
  EXPECT_EQ(E_FAIL, ZrList_ConvertToInPlace(&list, &record));
  EXPECT_EQ(S_OK, ZrList_Destroy(list));
  EXPECT_FALSE(ZrList_IsListFast(&record));
  EXPECT_EQ(0, record.count);
  EXPECT_EQ(E_INVALIDARG, ZrList_Destroy(list));
  EXPECT_EQ(E_INVALIDARG, ZrList_InsertList(list, -1, &value, 1));
  EXPECT_EQ(-1, ZrList_FindSpecificItemRange(list, 0, -1, &value));
  EXPECT_EQ(S_OK, ZrList_Destroy(nullptr));
}

TEST(ListLife, ConvertToInPlaceMovesEverything) {
  tZRLIST* list = nullptr;
  ASSERT_EQ(S_OK, ZrList_CreateExZ(&list, 0, 0, 0, ZRLIST_HEAPLIST, 0, 0, 0));
  ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, "abc", 4, -1, nullptr));
  ZrList_SetUserData(list, 9);
  tZRLIST record{};
  EXPECT_EQ(E_INVALIDARG, ZrList_ConvertToInPlace(&list, nullptr));
  ASSERT_EQ(S_OK, ZrList_ConvertToInPlace(&list, &record));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(E_INVALIDARG, ZrList_ConvertToInPlace(&list, &record));
  EXPECT_EQ(9U, ZrList_GetUserData(&record));
  EXPECT_STREQ("abc", static_cast<const char* const*>(record.items)[0]);
  EXPECT_EQ(uint32_t{ZRLIST_HEAPLIST | ZRLIST_INPLACE | ZRLIST_ANYTHREAD}, ZrList_GetCreateOptions(&record));
  EXPECT_EQ(S_OK, ZrList_Destroy(&record));

  OwnedList synchronised(ZRLIST_SYNCHRONIZED);
  EXPECT_EQ(E_FAIL, ZrList_ConvertToInPlace(&synchronised.list, &record));
  EXPECT_TRUE(ZrList_IsListFast(synchronised));
}

TEST(ListLife, IsListSurvivesAnyPointer) {
  OwnedList list(ZRLIST_ARRAY);
  EXPECT_TRUE(ZrList_IsList(list.list, sizeof(tZRLIST)));
  EXPECT_FALSE(ZrList_IsList(list.list, sizeof(tZRLIST) - 1));
  EXPECT_FALSE(ZrList_IsList(nullptr, sizeof(tZRLIST)));
  EXPECT_FALSE(ZrList_IsList(reinterpret_cast<const void*>(16), sizeof(tZRLIST)));
  const std::vector<char> other(sizeof(tZRLIST));
  EXPECT_FALSE(ZrList_IsList(other.data(), sizeof(tZRLIST)));
}

TEST(ListInsert, ResultsByKind) {
  OwnedList array(ZRLIST_ARRAY);
  OwnedList pointers(0);
  OwnedList heap(ZRLIST_HEAPLIST);
  void* some[2] = {&array, &heap};
  for (tZRLIST* list : {array.list, pointers.list}) {
    EXPECT_EQ(E_FAIL, ZrList_InsertList(list, 0, nullptr, 1));
    EXPECT_EQ(E_FAIL, ZrList_InsertList(list, 0, some, -1));
    EXPECT_EQ(S_OK, ZrList_InsertList(list, 0, some, 0));
    EXPECT_EQ(0, list->count);
    void* item = nullptr;
    EXPECT_EQ(E_FAIL, ZrList_AllocItem(list, 4, &item));
    EXPECT_EQ(E_FAIL, ZrList_AllocAndInsertItem(list, "a", 1, 0, nullptr));
    EXPECT_EQ(E_FAIL, ZrList_ReAllocItem(list, 0, 4));
    EXPECT_EQ(E_FAIL, ZrList_MoveItemsBetweenHeapLists(heap, 0, list, 0, 1));
  }
  EXPECT_EQ(E_FAIL, ZrList_InsertList(heap, 0, some, 2));
  EXPECT_EQ(E_FAIL, ZrList_InsertList(heap, 0, nullptr, -1));
  EXPECT_EQ(E_FAIL, ZrList_InsertList(heap, 0, nullptr, -2));
  EXPECT_EQ(E_FAIL, ZrList_ArrayForceItemCount(heap, 3, 0));
  EXPECT_EQ(E_FAIL, ZrList_ArrayForceItemCount(pointers, 3, 0));
  EXPECT_EQ(E_FAIL, ZrList_ArrayForceItemCount(array, -1, 0));
}

TEST(ListInsert, AWildCountIsOutOfMemoryAndChangesNothing) {
  OwnedList list(ZRLIST_ARRAY, 1 << 20, 4, 4);
  const std::vector<char> slot(1 << 20);
  ASSERT_EQ(S_OK, ZrList_InsertList(list, 0, slot.data(), 1));
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_GrowAllocated(list, INT32_MAX));
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_ArrayForceItemCount(list, INT32_MAX, 0));
  plat::FailAllocation(1);
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_GrowAllocated(list, 1));
  plat::FailAllocation(0);
  EXPECT_EQ(4, list->allocated);
  EXPECT_EQ(1, list->count);
}

TEST(ListPending, TwoStepInsertion) {
  OwnedList list(ZRLIST_HEAPLIST, 0, 4, 4);
  void* first = nullptr;
  void* second = &first;
  ASSERT_EQ(S_OK, ZrList_AllocItem(list, 64, &first));
  EXPECT_EQ(first, list->pendingItem);
  EXPECT_EQ(std::vector<char>(64), std::vector<char>(static_cast<char*>(first), static_cast<char*>(first) + 64));
  EXPECT_EQ(E_FAIL, ZrList_AllocItem(list, 64, &second));
  EXPECT_EQ(nullptr, second);
  int32_t index = 7;
  EXPECT_EQ(E_FAIL, ZrList_AllocAndInsertItem(list, "abc", 4, 0, &index));
  EXPECT_EQ(-1, index);
  EXPECT_EQ(first, list->pendingItem) << "a refused second item must leave the first one";
  EXPECT_EQ(S_OK, ZrList_InsertList(list, 1000, nullptr, -1));
  EXPECT_EQ(nullptr, list->pendingItem);
  EXPECT_EQ(first, static_cast<void**>(list->items)[0]);

  ASSERT_EQ(S_OK, ZrList_AllocItem(list, 1, &first));
  EXPECT_EQ(S_OK, ZrList_DeleteList(list, -1, -1, 0));
  EXPECT_EQ(E_FAIL, ZrList_DeleteList(list, -1, -1, 0));

  // A pending item that the destruction finds is freed with the list (the leak checker watches).
  ASSERT_EQ(S_OK, ZrList_AllocItem(list, 1, &first));
}

TEST(ListPending, AllocAndInsertReportsItsPlaceAndCleansUp) {
  OwnedList list(ZRLIST_HEAPLIST, 0, 4, 4);
  int32_t index = -5;
  for (int32_t i = 0; i < 4; ++i) {
    ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, nullptr, 0, -1, &index));
    EXPECT_EQ(i, index);
  }
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_AllocAndInsertItem(list, nullptr, SIZE_MAX / 2, 1, &index));
  EXPECT_EQ(-1, index);
  plat::FailAllocation(1);  // the growth to a fifth slot
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_AllocAndInsertItem(list, nullptr, 8, 1, &index));
  plat::FailAllocation(0);
  EXPECT_EQ(-1, index);
  EXPECT_EQ(nullptr, list->pendingItem);
  EXPECT_EQ(4, list->count);
  ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, "xyz", 4, 2, &index));
  EXPECT_EQ(2, index);
  EXPECT_STREQ("xyz", static_cast<const char**>(list->items)[2]);
}

TEST(ListHeap, ReAllocKeepsContentsAndZeroesTheRest) {
  OwnedList list(ZRLIST_HEAPLIST);
  ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, "0123456789", 10, -1, nullptr));
  ASSERT_EQ(S_OK, ZrList_ReAllocItem(list, 0, 5000));
  const char* item = static_cast<const char**>(list->items)[0];
  EXPECT_EQ(std::string("0123456789"), std::string(item, 10));
  EXPECT_EQ(std::string(4900, '\0'), std::string(item + 100, 4900));
  EXPECT_GE(ZrList_AllocSize(list, 0), 5000U);
  EXPECT_EQ(E_OUTOFMEMORY, ZrList_ReAllocItem(list, 0, SIZE_MAX / 2));
  EXPECT_EQ(item, static_cast<const char**>(list->items)[0]);
  EXPECT_EQ(E_FAIL, ZrList_ReAllocItem(list, 1, 5));
  EXPECT_EQ(E_FAIL, ZrList_ReAllocItem(list, -1, 5));
  EXPECT_EQ(S_OK, ZrList_ReAllocItem(list, 0, 0));
}

TEST(ListHeap, ItemsNeverMoveWithTheBuffer) {
  OwnedList list(ZRLIST_HEAPLIST, 0, 4, 4);
  std::vector<void*> addresses;
  for (int i = 0; i < 500; ++i) {
    ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, &i, sizeof(i), -1, nullptr));
    addresses.push_back(static_cast<void**>(list->items)[i]);
  }
  EXPECT_EQ(addresses, std::vector<void*>(static_cast<void**>(list->items), static_cast<void**>(list->items) + 500));
}

TEST(ListHeap, AllocSizeSumsEverything) {
  OwnedList list(ZRLIST_HEAPLIST, 0, 4, 4);
  ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, nullptr, 100, -1, nullptr));
  ASSERT_EQ(S_OK, ZrList_AllocAndInsertItem(list, nullptr, 200, -1, nullptr));
  const uint64_t items = ZrList_AllocSize(list, 0) + ZrList_AllocSize(list, 1);
  EXPECT_GE(items, 300U);
  EXPECT_EQ(items + 4 * sizeof(void*) + sizeof(tZRLIST), ZrList_AllocSize(list, -1));
  EXPECT_EQ(0U, ZrList_AllocSize(list, 2));
}

TEST(ListHeap, MoveItemsKeepsOrderAndAddresses) {
  OwnedList source(ZRLIST_HEAPLIST, 0, 4, 4);
  OwnedList dest(ZRLIST_HEAPLIST | ZRLIST_SYNCHRONIZED | ZRLIST_PRIVATEHEAP, 0, 4, 4);
  for (const char* text : {"a", "b", "c", "d", "e"}) ZrList_AllocAndInsertItem(source, text, 2, -1, nullptr);
  for (const char* text : {"x", "y"}) ZrList_AllocAndInsertItem(dest, text, 2, -1, nullptr);
  void* b = static_cast<void**>(source->items)[1];

  EXPECT_EQ(E_FAIL, ZrList_MoveItemsBetweenHeapLists(dest, 0, source, 4, 2));
  EXPECT_EQ(E_FAIL, ZrList_MoveItemsBetweenHeapLists(dest, 0, source, -1, 1));
  EXPECT_EQ(E_FAIL, ZrList_MoveItemsBetweenHeapLists(dest, 0, source, 1, -1)) << "-1 means all five";
  EXPECT_EQ(S_OK, ZrList_MoveItemsBetweenHeapLists(dest, 0, source, 99, 0));
  EXPECT_EQ(E_INVALIDARG, ZrList_MoveItemsBetweenHeapLists(source, 0, source, 0, 1));
  ASSERT_EQ(S_OK, ZrList_MoveItemsBetweenHeapLists(dest, 1, source, 1, 3));
  ASSERT_EQ(5, dest->count);
  EXPECT_EQ(b, static_cast<void**>(dest->items)[1]);
  std::string order;
  for (int32_t i = 0; i < dest->count; ++i) order += static_cast<const char**>(dest->items)[i];
  EXPECT_EQ("xbcdy", order);

  void* pending = nullptr;
  ASSERT_EQ(S_OK, ZrList_AllocItem(dest, 4, &pending));
  EXPECT_EQ(E_FAIL, ZrList_MoveItemsBetweenHeapLists(dest, -1, source, 0, 1));
  ASSERT_EQ(S_OK, ZrList_InsertList(dest, -1, nullptr, -1));
  EXPECT_EQ(S_OK, ZrList_MoveItemsBetweenHeapLists(dest, -1, source, 0, -1));
  EXPECT_EQ(0, source->count);
  EXPECT_EQ(8, dest->count);
}

TEST(ListDelete, OrderOfTests) {
  const struct {
    int32_t index, n;
    HRESULT result;
    const char* rest;
  } kRows[] = {{2, 100, S_OK, "AB"},   {5, 1, E_FAIL, "ABCDE"},  {5, 0, S_OK, "ABCDE"},  {5, -1, S_OK, "ABCDE"},
               {9, -1, S_OK, "ABCDE"}, {-1, 3, E_FAIL, "ABCDE"}, {-1, 0, S_OK, "ABCDE"}, {1, -1, S_OK, "A"},
               {0, 1, S_OK, "BCDE"},   {-1, -1, E_FAIL, "ABCDE"}};
  for (const auto& row : kRows) {
    const OwnedList list = Letters("ABCDE");
    EXPECT_EQ(row.result, ZrList_DeleteList(list, row.index, row.n, 0)) << row.index << ' ' << row.n;
    EXPECT_EQ(row.rest, TextOf(list));
  }
  OwnedList empty(ZRLIST_ARRAY);
  EXPECT_EQ(S_OK, ZrList_DeleteList(empty, 0, -1, 1));
}

TEST(ListDelete, ShrinkLeavesOneUnit) {
  OwnedList list(ZRLIST_ARRAY, 4, 64, 16);
  const uint32_t slots[2] = {1, 2};
  ZrList_InsertList(list, 0, slots, 2);
  ASSERT_EQ(S_OK, ZrList_DeleteList(list, 0, 1, 1));
  EXPECT_EQ(16, list->allocated);
}

TEST(ListMove, PublishedExample) {
  const OwnedList list = Letters("ABCDEF");
  EXPECT_EQ(S_OK, ZrList_MoveRange(list, 1, 3, 2));
  EXPECT_EQ("ADEBCF", TextOf(list));
}

TEST(ListArray, ForcedItemsAreZero) {
  OwnedList list(ZRLIST_ARRAY, 4, 4, 4);
  const std::vector<uint32_t> ones(6, 0xFFFFFFFF);
  ZrList_InsertList(list, 0, ones.data(), 6);
  ASSERT_EQ(S_OK, ZrList_ArrayForceItemCount(list, 2, 0));
  ASSERT_EQ(S_OK, ZrList_ArrayForceItemCount(list, 50, 0));
  const uint32_t* slots = static_cast<const uint32_t*>(list->items);
  EXPECT_EQ(0xFFFFFFFFU, slots[1]);
  for (int32_t i = 2; i < 50; ++i) EXPECT_EQ(0U, slots[i]);
  EXPECT_EQ(52, list->allocated);
  ASSERT_EQ(S_OK, ZrList_ArrayForceItemCount(list, 0, 1));
  EXPECT_EQ(1, list->allocated) << "all 52 spare slots are whole units; a buffer keeps one slot";
}

}  // namespace
