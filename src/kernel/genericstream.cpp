// SPDX-License-Identifier: Apache-2.0
// The stream over a list of ready-made items.
#include "kernel/item_place.h"
#include "kernel/item_stream.h"

namespace marlo {
namespace {

class GenericStream final : public CZrGenericStreamBase<GenericStream> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    return ReadItems(&place_, list_, buffer, bytes, bytesRead, *this);
  }
  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    return SeekItems(&place_, list_, move, origin, newPosition, *this);
  }

  /// The bytes of an item, -1 for the header.
  HRESULT PartAt(int32_t item, ItemBytes* part) {
    if (item < 0) {
      if (place_.offset == 0) header_.itemCount = static_cast<uint32_t>(list_->count);
      *part = {&header_, sizeof header_};
      return S_OK;
    }
    if (item >= list_->count) return E_FAIL;
    const auto* ready = static_cast<const tZRSTREAMITEM*>(ItemAt(list_, item));
    if (ready == nullptr) return E_FAIL;
    *part = {ready, uint64_t{ready->headerSize} + ready->dataSize};
    return S_OK;
  }

 private:
  friend StreamObject;
  GenericStream(tZRLIST* list, const GUID& streamType) : CZrGenericStreamBase(streamType), list_(list) {}
  ~GenericStream() = default;

  tZRLIST* list_;
  ItemPlace place_;
};

}  // namespace
}  // namespace marlo

HRESULT ZrMetaStream_CreateGeneric(tZRLIST* list, const GUID& streamType, IStream** stream) noexcept {
  if (stream == nullptr) return E_INVALIDARG;
  *stream = marlo::GenericStream::Make(list, streamType);
  return *stream == nullptr ? E_OUTOFMEMORY : S_OK;
}
