// SPDX-License-Identifier: Apache-2.0
// Random operations on lists of all kinds against a plain model of items, results and capacity.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include "marlo110k/list.h"
#include "testing/random.h"

namespace {

enum class Kind { kArray, kPointer, kHeap };

/// What the contract says of items, results and capacity, without buffers.
struct Model {
  std::vector<uint64_t> items;
  int64_t allocated = 0;
  int64_t growBy = 0;

  int64_t Count() const { return static_cast<int64_t>(items.size()); }
  int64_t RoundUp(int64_t n) const {
    while (n % growBy != 0) ++n;
    return n;
  }
  void Grow(int64_t n) { allocated += RoundUp(n < 1 ? growBy : n); }
  void Shrink(int64_t n) {
    const int64_t spare = allocated - Count();
    if (n < 0 || n > spare) n = spare;
    n = RoundUp(n);
    if (n > spare) n -= growBy;
    if (n > 0) allocated = std::max<int64_t>(allocated - n, 1);
  }
  void Insert(int64_t index, const std::vector<uint64_t>& values) {
    const auto n = static_cast<int64_t>(values.size());
    if (Count() + n > allocated) Grow(n);
    if (index < 0 || index > Count()) index = Count();
    items.insert(items.begin() + index, values.begin(), values.end());
  }
  HRESULT Delete(int64_t index, int64_t n, bool shrink) {
    if (index < 0 && n < 0) return E_FAIL;  // no pending item in these runs
    if (n < 0) n = Count() - index;
    if (n < 1) return S_OK;
    if (index < 0 || index >= Count()) return E_FAIL;
    n = std::min(n, Count() - index);
    items.erase(items.begin() + index, items.begin() + index + n);
    if (shrink && allocated - Count() > growBy) Shrink(-1);
    return S_OK;
  }
  HRESULT Move(int64_t from, int64_t to, int64_t n) {
    if (from < 0) return E_INVALIDARG;
    to = std::max<int64_t>(to, 0);
    if (n < 0) n = Count() - std::max(from, to);
    if (from + n > Count() || to + n > Count()) return E_FAIL;
    if (n < 1) return S_OK;
    std::vector<uint64_t> taken(items.begin() + from, items.begin() + from + n);
    items.erase(items.begin() + from, items.begin() + from + n);
    items.insert(items.begin() + to, taken.begin(), taken.end());
    return S_OK;
  }
};

class ListModelTest : public testing::TestWithParam<Kind> {
 protected:
  /// Items are told apart by a number: an array's first 8 bytes of 12, a pointer's value, a heap block's contents.
  uint64_t NumberAt(int32_t index) const {
    uint64_t number = 0;
    const void* item = GetParam() == Kind::kArray ? static_cast<const char*>(list_->items) + index * 12
                                                  : static_cast<void* const*>(list_->items)[index];
    if (GetParam() == Kind::kPointer) return reinterpret_cast<uint64_t>(item);
    std::memcpy(&number, item, sizeof(number));
    return number;
  }

  void Create(int32_t initial, int32_t growBy) {
    const uint32_t options[] = {ZRLIST_ARRAY, 0, ZRLIST_HEAPLIST};
    ASSERT_EQ(S_OK, ZrList_CreateExZ(&list_, 10, initial, growBy, options[static_cast<int>(GetParam())], 0, 0, 0));
    model_.allocated = list_->allocated;
    model_.growBy = list_->growBy;
  }
  void TearDown() override { EXPECT_EQ(S_OK, ZrList_Destroy(list_)); }

  HRESULT Insert(int32_t index, const std::vector<uint64_t>& numbers) {
    const auto n = static_cast<int32_t>(numbers.size());
    if (GetParam() == Kind::kArray) {
      std::vector<char> bytes(numbers.size() * 12);
      for (size_t i = 0; i < numbers.size(); ++i) std::memcpy(&bytes[i * 12], &numbers[i], 8);
      return ZrList_InsertList(list_, index, bytes.data(), n);
    }
    std::vector<void*> pointers;
    for (uint64_t number : numbers) {
      if (GetParam() == Kind::kHeap) {
        pointers.push_back(std::calloc(1, 16));
        std::memcpy(pointers.back(), &number, 8);
      } else {
        pointers.push_back(reinterpret_cast<void*>(number));
      }
    }
    return ZrList_InsertList(list_, index, pointers.data(), GetParam() == Kind::kHeap ? -n : n);
  }

  void Compare() const {
    ASSERT_EQ(model_.Count(), list_->count);
    ASSERT_EQ(model_.allocated, list_->allocated);
    for (int32_t i = 0; i < list_->count; ++i) ASSERT_EQ(model_.items[static_cast<size_t>(i)], NumberAt(i)) << i;
    const char* spare = static_cast<const char*>(list_->items) + static_cast<uint64_t>(list_->count) * list_->itemSize;
    const size_t bytes = static_cast<size_t>(list_->allocated - list_->count) * list_->itemSize;
    ASSERT_TRUE(std::all_of(spare, spare + bytes, [](char byte) { return byte == 0; }));
  }

  tZRLIST* list_ = nullptr;
  Model model_;
};

TEST_P(ListModelTest, RandomOperations) {
  testing_support::Random random(20);
  SCOPED_TRACE(random.Label());
  Create(static_cast<int32_t>(random.Between(-1, 40)), static_cast<int32_t>(random.Between(4, 9)));
  uint64_t next = 1;
  for (int step = 0; step < 6000; ++step) {
    SCOPED_TRACE(step);
    const auto index = static_cast<int32_t>(random.Between(-2, model_.Count() + 3));
    const auto other = static_cast<int32_t>(random.Between(-2, model_.Count() + 3));
    const auto n = static_cast<int32_t>(random.Between(-2, 12));
    switch (random.Between(0, 6)) {
      case 0:
      case 1: {
        std::vector<uint64_t> numbers(static_cast<size_t>(random.Between(1, 20)));
        for (uint64_t& number : numbers) number = next++;
        ASSERT_EQ(S_OK, Insert(index, numbers));
        model_.Insert(index, numbers);
        break;
      }
      case 2:
      case 3: {
        const bool shrink = random.Between(0, 1) != 0;
        ASSERT_EQ(model_.Delete(index, n, shrink), ZrList_DeleteList(list_, index, n, shrink ? 1 : 0));
        break;
      }
      case 4:
        ASSERT_EQ(model_.Move(index, other, n), ZrList_MoveRange(list_, index, other, n));
        break;
      case 5:
        ASSERT_EQ(S_OK, ZrList_ShrinkAllocated(list_, n));
        model_.Shrink(n);
        break;
      default:
        if (model_.allocated > 300) break;
        ASSERT_EQ(S_OK, ZrList_GrowAllocated(list_, n));
        model_.Grow(n);
        break;
    }
    ASSERT_NO_FATAL_FAILURE(Compare());
  }
}

TEST_P(ListModelTest, LongRangesMoveLikeShortOnes) {
  Create(0, 0);
  std::vector<uint64_t> numbers(300);
  for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = i + 1;
  ASSERT_EQ(S_OK, Insert(0, numbers));
  model_.Insert(0, numbers);
  for (const auto& [from, to, n] : {std::tuple{0, 100, 200}, {150, 3, 70}, {10, 11, 289}, {1, 0, 299}, {7, 60, -1}}) {
    ASSERT_EQ(model_.Move(from, to, n), ZrList_MoveRange(list_, from, to, n));
    ASSERT_NO_FATAL_FAILURE(Compare());
  }
}

std::string KindName(const testing::TestParamInfo<Kind>& kind) {
  const char* names[] = {"Array", "Pointer", "Heap"};
  return names[static_cast<int>(kind.param)];
}

INSTANTIATE_TEST_SUITE_P(Kinds, ListModelTest, testing::Values(Kind::kArray, Kind::kPointer, Kind::kHeap), KindName);

}  // namespace
