// SPDX-License-Identifier: Apache-2.0
// Ownership of a display list's data.
#include "marlo110k/displist.h"

#include "platform/base/memory.h"

void displist_Free(tZRDISPLIST* list) noexcept {
  if (list == nullptr) return;
  for (uint32_t i = 0; i < list->count; ++i) {
    tZRDISPITEM& item = list->items[i];
    plat::FreeBlock(item.data);
    item.data = nullptr;
    item.size = 0;
  }
}
