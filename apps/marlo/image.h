// SPDX-License-Identifier: Apache-2.0
// A picture in memory: 8-bit BGRA, straight alpha, rows bottom-up as the library stores them.
#pragma once

#include <cstdint>
#include <vector>

#include "marlo110k/dib.h"

namespace host {

/// Pixels that a picture may have: 256 MiB of memory.
inline constexpr uint64_t kMostPixels = uint64_t{1} << 26;

class Image {
 public:
  Image() = default;
  /// A transparent picture. Throws a Failure when it has more than kMostPixels or a side isn't positive.
  Image(int32_t width, int32_t height);

  int32_t Width() const { return width_; }
  int32_t Height() const { return height_; }
  /// A row, counted from the top.
  tZRPIXEL32* Row(int32_t y) { return pixels_.data() + static_cast<size_t>(height_ - 1 - y) * width_; }
  const tZRPIXEL32* Row(int32_t y) const { return pixels_.data() + static_cast<size_t>(height_ - 1 - y) * width_; }
  std::vector<tZRPIXEL32>& Pixels() { return pixels_; }
  const std::vector<tZRPIXEL32>& Pixels() const { return pixels_; }
  /// The descriptor of these pixels, which lie apart from it.
  BITMAPINFOHEADER Header() const;
  /// The rectangle of the whole picture.
  RECT Bounds() const { return {0, 0, width_, height_}; }

  /// Makes the alpha premultiplied: c * a / 255, cut.
  void Premultiply();
  /// Makes premultiplied alpha straight: (c * 255 + a / 2) / a, at most 255, and 0 for a = 0.
  void Unpremultiply();

 private:
  int32_t width_ = 0;
  int32_t height_ = 0;
  std::vector<tZRPIXEL32> pixels_;
};

}  // namespace host
