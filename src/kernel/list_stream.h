// SPDX-License-Identifier: Apache-2.0
// The base of streams that give a short header and then the records of a list as they stand.
#pragma once

#include <cstdint>

#include "kernel/item_place.h"
#include "marlo110k/streams.h"
#include "platform/base/stream_object.h"

namespace marlo {

/// The slots behind those of IStream.
struct ListStreamSlots : IStream {
  /// Slot 14. @param flags bit 0: frees the block too.
  virtual void* DeleteSelf(uint32_t flags) = 0;
  /// Slot 15. Enters an item: gives its data and their length. A null item forgets the last one, which otherwise
  /// gives E_FAIL when it comes again.
  virtual HRESULT GetItemData(const void* item, const void** data, uint32_t* bytes) = 0;

 protected:
  ~ListStreamSlots() = default;
};

/// What such a stream starts with.
struct ListStreamHeader {
  uint32_t headerSize;  ///< Of this record: 12.
  uint32_t version;
  uint32_t itemCount;  ///< As the list's when the header was begun.
};
static_assert(sizeof(ListStreamHeader) == 12);

/// Fills Read and Seek as the stream of ZrMetaStream_CreateGeneric does.
/// `Self` derives from this class and gives `uint32_t ItemLength(const void* item)`.
template <class Self>
class CZrListStream : public plat::StreamObject<Self, ListStreamSlots> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    return ReadItems(&place_, list_, buffer, bytes, bytesRead, *this);
  }
  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    if (origin != STREAM_SEEK_CUR) GetItemData(nullptr, nullptr, nullptr);
    return SeekItems(&place_, list_, move, origin, newPosition, *this);
  }

  void* DeleteSelf(uint32_t flags) override { return this->DeleteObject(flags); }
  HRESULT GetItemData(const void* item, const void** data, uint32_t* bytes) override {
    const bool repeated = item != nullptr && item == present_.data;
    if (!repeated) {
      entered_ = -1;
      present_ = {item, item == nullptr ? 0 : static_cast<Self*>(this)->ItemLength(item)};
    }
    if (data != nullptr) *data = repeated ? nullptr : present_.data;
    if (bytes != nullptr) *bytes = repeated ? 0 : static_cast<uint32_t>(present_.bytes);
    return repeated ? E_FAIL : S_OK;
  }

  /// The bytes of an item, -1 for the header.
  HRESULT PartAt(int32_t item, ItemBytes* part) {
    if (item < 0) {
      if (place_.offset == 0) header_.itemCount = static_cast<uint32_t>(list_->count);
      *part = {&header_, sizeof header_};
      return S_OK;
    }
    if (item >= list_->count) return E_FAIL;
    if (item != entered_) {
      const void* record = ItemAt(list_, item);
      const void* data = nullptr;
      uint32_t bytes = 0;
      if (record == nullptr || FAILED(GetItemData(record, &data, &bytes))) return E_FAIL;
      present_ = {data, bytes};
      entered_ = item;
    }
    *part = present_;
    return S_OK;
  }

 protected:
  explicit CZrListStream(tZRLIST* list) : list_(list) {}
  ~CZrListStream() = default;

  std::atomic<uint32_t> references_{1};

 private:
  tZRLIST* list_;
  ItemPlace place_;
  ListStreamHeader header_ = {sizeof(ListStreamHeader), kZrItemStreamVersion, 0};
  ItemBytes present_;     ///< The last item that was entered.
  int32_t entered_ = -1;  ///< Its index.
};

}  // namespace marlo
