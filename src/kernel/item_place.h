// SPDX-License-Identifier: Apache-2.0
// A place in a stream over a list: reading it and moving it, the same for every kind of item.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kernel/list_internal.h"
#include "marlo110k/contract/stream.h"

namespace marlo {

/// Bytes that stand in memory as the stream gives them.
struct ItemBytes {
  const void* data = nullptr;
  uint64_t bytes = 0;
};

/// Where an item stream stands: an item's index, -1 in the header, and a byte in it.
struct ItemPlace {
  int32_t item = -1;
  uint64_t offset = 0;

  void Rewind() { *this = {}; }

  /// Moves `bytes` forward over what `items.PartAt(index, &itemBytes)` gives, and copies to `buffer` unless
  /// that is null. Stops at the first part that fails.
  /// @param moved receives what was passed.
  template <class Items>
  HRESULT Advance(void* buffer, uint64_t bytes, uint64_t* moved, Items& items) {
    *moved = 0;
    while (*moved < bytes) {
      ItemBytes present;
      const HRESULT result = items.PartAt(item, &present);
      if (FAILED(result)) return result;
      // A client may have shortened the item meanwhile.
      const uint64_t left = offset < present.bytes ? present.bytes - offset : 0;
      const uint64_t taken = std::min(left, bytes - *moved);
      if (buffer != nullptr && taken != 0) {
        std::memcpy(static_cast<uint8_t*>(buffer) + *moved, static_cast<const uint8_t*>(present.data) + offset, taken);
      }
      *moved += taken;
      offset += taken;
      if (taken == left) {
        ++item;
        offset = 0;
      }
    }
    return S_OK;
  }
};

/// Reads on for a stream's Read slot. `items` gives the header for -1, and E_FAIL behind the last item.
template <class Items>
HRESULT ReadItems(ItemPlace* place, const tZRLIST* list, void* buffer, uint32_t bytes, uint32_t* bytesRead,
                  Items& items) {
  if (bytesRead != nullptr) *bytesRead = 0;
  if (buffer == nullptr || bytes == 0) return E_INVALIDARG;
  if (!IsLiveList(list)) return ZR_E_END_OF_STREAM;
  uint64_t moved = 0;
  const HRESULT result = place->Advance(buffer, bytes, &moved, items);
  if (bytesRead != nullptr) *bytesRead = static_cast<uint32_t>(moved);
  return result;
}

/// Moves for a stream's Seek slot; the position told is the item's index.
template <class Items>
HRESULT SeekItems(ItemPlace* place, const tZRLIST* list, int64_t move, uint32_t origin, uint64_t* newPosition,
                  Items& items) {
  HRESULT result = S_OK;
  if (!IsLiveList(list)) {
    result = ZR_E_END_OF_STREAM;
  } else if (origin == STREAM_SEEK_SET) {
    place->Rewind();
  } else if (origin == STREAM_SEEK_END) {
    *place = {list->count, 0};
  } else if (origin == STREAM_SEEK_CUR && move >= 0 && place->item >= 0) {
    uint64_t moved = 0;
    if (FAILED(place->Advance(nullptr, static_cast<uint64_t>(move), &moved, items))) result = ZR_E_END_OF_STREAM;
  } else {
    result = STG_E_INVALIDFUNCTION;
  }
  if (newPosition != nullptr) *newPosition = static_cast<uint64_t>(std::max(place->item, 0));
  return result;
}

}  // namespace marlo
