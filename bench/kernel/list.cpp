// SPDX-License-Identifier: Apache-2.0
// What do appending to a list and searching it cost, against the standard vector?
#include "marlo110k/list.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "harness/harness.h"

namespace {

constexpr int32_t kItems = 1'000'000;

bench::Contender Append(const char* name, int32_t growBy) {
  return {name,
          [growBy] {
            tZRLIST* list = nullptr;
            ZrList_CreateExZ(&list, sizeof(uint64_t), 0, growBy, ZRLIST_ARRAY, 0, 0, 0);
            for (uint64_t i = 0; i < kItems; ++i) ZrList_InsertList(list, -1, &i, 1);
            bench::Use(list->items);
            ZrList_Destroy(list);
          },
          kItems};
}

bench::Contender AppendToVector() {
  return {"std::vector push_back",
          [] {
            std::vector<uint64_t> items;
            for (uint64_t i = 0; i < kItems; ++i) {
              items.push_back(i);
              bench::Use(items.data());
            }
          },
          kItems};
}

uint64_t comparisons = 0;

int32_t ByValue(uint64_t, const void* key, const void* item) {
  ++comparisons;
  const uint64_t left = *static_cast<const uint64_t*>(key);
  const uint64_t right = *static_cast<const uint64_t*>(item);
  return left < right ? -1 : left > right ? 1 : 0;
}

constexpr uint64_t kSearches = 100'000;
constexpr uint64_t kStep = 7919;

}  // namespace

int main() {
  bool met = true;
  for (const int32_t growBy : {16, 66560}) {
    bench::Question question("Append a million 8-byte items, growth unit " + std::to_string(growBy), "items");
    question.Ours(Append("ZrList_InsertList", growBy));
    question.Peer(AppendToVector());
    met = question.Print(9) && met;
  }

  tZRLIST* list = nullptr;
  ZrList_CreateExZ(&list, sizeof(uint64_t), kItems, 66560, ZRLIST_ARRAY, 0, 0, 0);
  std::vector<uint64_t> vector;
  for (uint64_t i = 0; i < kItems; ++i) {
    ZrList_InsertList(list, -1, &i, 1);
    vector.push_back(i);
  }
  bench::Question question("Find in a million sorted items", "searches");
  question.Ours({"ZrList_FindSortedItemRange",
                 [&] {
                   int64_t sum = 0;
                   for (uint64_t i = 0; i < kSearches; ++i) {
                     const uint64_t key = i * kStep % kItems;
                     sum += ZrList_FindSortedItemRange(list, &key, 0, -1, ByValue);
                   }
                   bench::Use(&sum);
                 },
                 kSearches});
  question.Peer({"std::lower_bound",
                 [&] {
                   int64_t sum = 0;
                   for (uint64_t i = 0; i < kSearches; ++i) {
                     sum += std::lower_bound(vector.begin(), vector.end(), i * kStep % kItems) - vector.begin();
                   }
                   bench::Use(&sum);
                 },
                 kSearches});
  met = question.Print() && met;

  uint64_t most = 0;
  for (uint64_t key = 0; key < kItems; key += 3) {
    comparisons = 0;
    ZrList_FindSortedItemRange(list, &key, 0, -1, ByValue);
    most = std::max(most, comparisons);
  }
  std::printf("  comparisons of one search: at most %llu (goal 20 + 1)\n", static_cast<unsigned long long>(most));
  ZrList_Destroy(list);
  return met && most <= 21 ? 0 : 1;
}
