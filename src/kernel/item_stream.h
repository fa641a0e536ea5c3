// SPDX-License-Identifier: Apache-2.0
// The base of the read-only streams that start with a stream header and give items behind it.
#pragma once

#include <cstdint>

#include "marlo110k/streams.h"
#include "platform/base/stream_object.h"

namespace marlo {

/// The slot behind those of IStream in a stream that starts with a tZRITEMSTREAMHEADER.
struct ItemStreamSlots : IStream {
  /// Slot 14. @param flags bit 0: frees the block too.
  virtual void* DeleteSelf(uint32_t flags) = 0;

 protected:
  ~ItemStreamSlots() = default;
};

/// The base of those streams; what reads them is theirs.
template <class Self>
class CZrGenericStreamBase : public plat::StreamObject<Self, ItemStreamSlots> {
 public:
  void* DeleteSelf(uint32_t flags) override { return this->DeleteObject(flags); }

 protected:
  explicit CZrGenericStreamBase(const GUID& streamType)
      : header_{sizeof(tZRITEMSTREAMHEADER), kZrItemStreamVersion, 0, streamType} {}
  ~CZrGenericStreamBase() = default;

  tZRITEMSTREAMHEADER header_;
  std::atomic<uint32_t> references_{1};
};

}  // namespace marlo
