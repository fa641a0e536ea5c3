// SPDX-License-Identifier: Apache-2.0
// A program outside the project that takes in the whole interface: sorts a list and prints it.
#include <cstdint>
#include <cstdio>

#include "marlo110k/marlo110k.h"

namespace {

int32_t CompareNumbers(uint64_t, const void* key, const void* item) {
  const int32_t left = *static_cast<const int32_t*>(key);
  const int32_t right = *static_cast<const int32_t*>(item);
  return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

int main() {
  if (ZrKernel_GetVersion() != kZrKernelVersion) {
    std::fprintf(stderr, "header and library differ\n");
    return 1;
  }
  tZRLIST* list = nullptr;
  if (FAILED(ZrList_CreateExZ(&list, sizeof(int32_t), 0, 0, ZRLIST_ARRAY, 0, 0, 0))) return 1;
  const int32_t numbers[] = {30, 10, 20};
  if (FAILED(ZrList_InsertList(list, -1, numbers, 3)) || FAILED(ZrList_HeapSort(list, 0, CompareNumbers))) return 1;
  const int32_t* sorted = static_cast<const int32_t*>(list->items);
  const bool right = list->count == 3 && sorted[0] == 10 && sorted[1] == 20 && sorted[2] == 30;
  std::printf("%d %d %d\n", sorted[0], sorted[1], sorted[2]);
  ZrList_Destroy(list);
  return right ? 0 : 1;
}
