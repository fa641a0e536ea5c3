// SPDX-License-Identifier: Apache-2.0
// Numbers from a fuzzer's bytes, and pictures that end where their memory ends.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "marlo110k/dib.h"

namespace fuzzing {

/// Takes numbers from the front; zeros when the bytes are used up.
class Numbers {
 public:
  Numbers(const uint8_t* data, size_t bytes) : data_(data), left_(bytes) {}
  uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  int32_t Int() {
    uint32_t value = 0;
    for (int byte = 0; byte < 4; ++byte) value |= static_cast<uint32_t>(Byte()) << (8 * byte);
    return static_cast<int32_t>(value);
  }
  /// Within low..high, from one byte.
  int32_t Small(int32_t low, int32_t high) { return low + Byte() % (high - low + 1); }
  /// Mostly near a picture's size in `unit`, sometimes anything.
  int32_t Coordinate(int32_t unit) {
    const uint8_t kind = Byte();
    if (kind < 16) return Int();
    const int32_t fraction = kind & 1 ? Small(0, 255) * (unit / 256) : 0;
    return Small(-20, 100) * unit + fraction;
  }
  RECT Rect(int32_t unit) {
    RECT rect;
    rect.left = Coordinate(unit);
    rect.top = Coordinate(unit);
    rect.right = Coordinate(unit);
    rect.bottom = Coordinate(unit);
    return rect;
  }
  const uint8_t* Rest(size_t* bytes) const {
    *bytes = left_;
    return data_;
  }

 private:
  const uint8_t* data_;
  size_t left_;
};

/// A picture in blocks of exactly its size: the sanitizer sees a byte too far. Its pixels come from a seed, so
/// that floats hold anything, NaN included.
class Picture {
 public:
  Picture(int32_t type, int32_t width, int32_t height, int32_t extraRowBytes, int32_t colors, uint32_t seed) {
    uint32_t headerBytes = 0;
    std::vector<RGBQUAD> palette(256);
    for (RGBQUAD& color : palette) {
      seed = seed * 1664525u + 1013904223u;
      std::memcpy(&color, &seed, sizeof color);
    }
    const RGBQUAD* given = colors > 0 ? palette.data() : nullptr;
    if (FAILED(ZrDibInfo(&headerBytes, nullptr, nullptr, type, width, height, given, colors))) std::abort();
    header_.resize(headerBytes);
    ZrDibInfo(nullptr, nullptr, header(), type, width, height, given, colors);
    stride_ = (header()->biBitCount * width + 31) / 32 * 4 + extraRowBytes;
    bits_.resize(static_cast<size_t>(stride_) * static_cast<size_t>(height));
    for (uint8_t& byte : bits_) {
      seed = seed * 1664525u + 1013904223u;
      byte = static_cast<uint8_t>(seed >> 24);
    }
  }
  BITMAPINFOHEADER* header() { return reinterpret_cast<BITMAPINFOHEADER*>(header_.data()); }
  uint8_t* bits() { return bits_.data(); }
  int32_t stride() const { return stride_; }

 private:
  std::vector<uint8_t> header_;
  std::vector<uint8_t> bits_;
  int32_t stride_ = 0;
};

}  // namespace fuzzing
