// SPDX-License-Identifier: Apache-2.0
// The stream over a caller's block: it never grows, and its position never leaves the block.
#include <algorithm>
#include <cstring>

#include "marlo110k/streams.h"
#include "platform/base/stream_object.h"

namespace marlo {
namespace {

/// The slot behind those of IStream.
struct MemoryStreamSlots : IStream {
  virtual HRESULT Init(void* block, uint64_t capacity, uint64_t size) = 0;

 protected:
  ~MemoryStreamSlots() = default;
};

class MemoryStream final : public plat::StreamObject<MemoryStream, MemoryStreamSlots> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (bytesRead != nullptr) *bytesRead = 0;
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    if (position_ >= size_) return S_FALSE;
    const auto taken = static_cast<uint32_t>(std::min<uint64_t>(bytes, size_ - position_));
    std::memcpy(buffer, block_ + position_, taken);
    position_ += taken;
    if (bytesRead != nullptr) *bytesRead = taken;
    return S_OK;
  }

  HRESULT Write(const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    if (bytesWritten != nullptr) *bytesWritten = 0;
    if (data == nullptr) return STG_E_INVALIDPOINTER;
    if (position_ >= capacity_) return S_FALSE;
    const auto taken = static_cast<uint32_t>(std::min<uint64_t>(bytes, capacity_ - position_));
    if (position_ > size_) std::memset(block_ + size_, 0, position_ - size_);
    std::memcpy(block_ + position_, data, taken);
    position_ += taken;
    size_ = std::max(size_, position_);
    if (bytesWritten != nullptr) *bytesWritten = taken;
    return S_OK;
  }

  HRESULT Seek(int64_t move, uint32_t origin, uint64_t* newPosition) override {
    const uint64_t bases[] = {0, position_, size_};
    const bool known = origin <= STREAM_SEEK_END && !(origin == STREAM_SEEK_END && move > 0);
    // A step below 0 wraps to more than any capacity.
    const uint64_t target = known ? bases[origin] + static_cast<uint64_t>(move) : 0;
    const bool valid = known && target <= capacity_;
    if (valid) position_ = target;
    if (newPosition != nullptr) *newPosition = position_;
    return valid ? S_OK : STG_E_INVALIDFUNCTION;
  }

  HRESULT Stat(STATSTG* stat, uint32_t) override {
    if (stat == nullptr) return STG_E_INVALIDPOINTER;
    *stat = {};
    stat->cbSize = size_;
    return S_OK;
  }

  HRESULT Clone(IStream** stream) override {
    if (stream == nullptr) return STG_E_INVALIDPOINTER;
    MemoryStream* clone = Make();
    *stream = clone;
    if (clone == nullptr) return E_OUTOFMEMORY;
    clone->Init(block_, capacity_, size_);
    clone->position_ = position_;
    return S_OK;
  }

  HRESULT Init(void* block, uint64_t capacity, uint64_t size) override {
    if (block == nullptr || capacity == 0 || capacity > INT64_MAX || size > capacity) return E_INVALIDARG;
    block_ = static_cast<uint8_t*>(block);
    position_ = 0;
    capacity_ = capacity;
    size_ = size;
    return S_OK;
  }

  static HRESULT Create(void* block, uint64_t capacity, uint64_t size, IStream** stream) {
    if (stream == nullptr) return E_INVALIDARG;
    *stream = nullptr;
    MemoryStream* made = Make();
    if (made == nullptr) return E_OUTOFMEMORY;
    const HRESULT result = made->Init(block, capacity, size);
    if (FAILED(result)) {
      made->Destroy();
    } else {
      *stream = made;
    }
    return result;
  }

 private:
  friend StreamObject;
  MemoryStream() = default;
  ~MemoryStream() = default;

  uint8_t* block_ = nullptr;
  uint64_t position_ = 0;
  uint64_t capacity_ = 0;
  uint64_t size_ = 0;
  std::atomic<uint32_t> references_{1};
};

}  // namespace
}  // namespace marlo

HRESULT ZrCreateStreamFromMemory(void* block, uint64_t capacity, uint64_t size, IStream** stream) noexcept {
  return marlo::MemoryStream::Create(block, capacity, size, stream);
}

HRESULT ZrCreateStreamFromMemory(void* block, uint32_t capacity, uint32_t size, IStream** stream) noexcept {
  return ZrCreateStreamFromMemory(block, uint64_t{capacity}, uint64_t{size}, stream);
}
