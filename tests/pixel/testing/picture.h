// SPDX-License-Identifier: Apache-2.0
// Pictures for pixel tests: each ends at an unreadable page, with its descriptor apart from its pixels.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "marlo110k/dib.h"
#include "testing/random.h"

namespace testing_support {

/// Bytes between two unreadable pages; they end (or start) right at one.
class GuardedBytes {
 public:
  explicit GuardedBytes(size_t bytes, bool atStart = false) : bytes_(bytes) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t inner = (bytes + page - 1) / page * page;
    mappedBytes_ = inner + 2 * page;
    base_ =
        static_cast<uint8_t*>(mmap(nullptr, mappedBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_, page, PROT_NONE);
    mprotect(base_ + page + inner, page, PROT_NONE);
    data_ = base_ + page + (atStart ? 0 : inner - bytes);
  }
  ~GuardedBytes() { munmap(base_, mappedBytes_); }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  uint8_t* data() const { return data_; }
  size_t size() const { return bytes_; }

 private:
  size_t bytes_;
  size_t mappedBytes_;
  uint8_t* base_;
  uint8_t* data_;
};

/// A picture of any exchange type. The descriptor has room for 256 colours.
class Picture {
 public:
  Picture(int32_t type, int32_t width, int32_t height, int32_t extraRowBytes = 0, bool guardAtStart = false,
          const RGBQUAD* palette = nullptr, int32_t colors = 0)
      : header_(sizeof(BITMAPINFOHEADER) + 1024),
        stride_(Init(type, width, height, palette, colors) + extraRowBytes),
        bytes_(static_cast<size_t>(std::abs(stride_)) * static_cast<size_t>(height), guardAtStart) {}

  BITMAPINFOHEADER* header() { return reinterpret_cast<BITMAPINFOHEADER*>(header_.data()); }
  uint8_t* bits() { return bytes_.data(); }
  int32_t stride() const { return stride_; }
  size_t size() const { return bytes_.size(); }
  int32_t width() { return header()->biWidth; }
  int32_t height() { return header()->biHeight; }
  /// Row counted from the picture's top.
  uint8_t* top(int32_t row = 0) { return bits() + int64_t{stride_} * (height() - 1 - row); }
  std::vector<uint8_t> Copy() const { return {bytes_.data(), bytes_.data() + bytes_.size()}; }

  void Randomize(Random& random) {
    for (size_t index = 0; index < size(); ++index) bits()[index] = static_cast<uint8_t>(random.Bits());
  }
  /// Floats in low..high.
  void RandomizeFloats(Random& random, double low, double high) {
    for (size_t index = 0; index + 4 <= size(); index += 4) {
      const float value = static_cast<float>(random.Real(low, high));
      std::memcpy(bits() + index, &value, 4);
    }
  }

 private:
  int32_t Init(int32_t type, int32_t width, int32_t height, const RGBQUAD* palette, int32_t colors) {
    ZrVideo_InitBitmapInfo(header(), type, width, height, palette, colors, nullptr);
    return (header()->biBitCount * width + 31) / 32 * 4;
  }

  std::vector<uint8_t> header_;
  int32_t stride_;
  GuardedBytes bytes_;
};

}  // namespace testing_support
