// SPDX-License-Identifier: Apache-2.0
// A destination between guard bytes, at any alignment.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace testing_support {

/// `bytes` bytes filled with a pattern, `offset` bytes off a 64-byte boundary, with guards on both sides.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(size_t bytes, size_t offset = 0) : storage_(bytes + 4 * kGuardBytes, kPattern), bytes_(bytes) {
    const auto address = reinterpret_cast<uintptr_t>(storage_.data()) + kGuardBytes;
    start_ = kGuardBytes + (64 - address % 64) % 64 + offset % 64;
  }
  uint8_t* Data() { return storage_.data() + start_; }
  size_t Bytes() const { return bytes_; }
  template <typename T>
  T* As() {
    return reinterpret_cast<T*>(Data());
  }
  std::vector<uint8_t> Copy() { return {Data(), Data() + bytes_}; }
  void Fill(const std::vector<uint8_t>& content) {
    std::copy_n(content.begin(), std::min(bytes_, content.size()), Data());
  }
  /// True while nothing around the buffer was written.
  bool Intact() const {
    const auto isPattern = [](uint8_t byte) { return byte == kPattern; };
    return std::all_of(storage_.begin(), storage_.begin() + static_cast<ptrdiff_t>(start_), isPattern) &&
           std::all_of(storage_.begin() + static_cast<ptrdiff_t>(start_ + bytes_), storage_.end(), isPattern);
  }

  static constexpr uint8_t kPattern = 0xCD;

 private:
  static constexpr size_t kGuardBytes = 64;
  std::vector<uint8_t> storage_;
  size_t bytes_;
  size_t start_ = 0;
};

}  // namespace testing_support
