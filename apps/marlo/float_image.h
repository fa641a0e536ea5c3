// SPDX-License-Identifier: Apache-2.0
// A picture in memory as floats of 0 to 1: BGRA, rows bottom-up, for work without rounding to bytes.
#pragma once

#include "image.h"

namespace host {

class FloatImage {
 public:
  FloatImage() = default;
  /// A transparent picture. Throws a Failure when it needs more than 256 MiB or a side isn't positive.
  FloatImage(int32_t width, int32_t height);
  /// The same picture in floats; 255 becomes 1.
  explicit FloatImage(const Image& image);

  int32_t Width() const { return width_; }
  int32_t Height() const { return height_; }
  /// A row, counted from the top.
  const tZRPIXEL128* Row(int32_t y) const { return pixels_.data() + static_cast<size_t>(height_ - 1 - y) * width_; }
  std::vector<tZRPIXEL128>& Pixels() { return pixels_; }
  const std::vector<tZRPIXEL128>& Pixels() const { return pixels_; }
  /// The descriptor of these pixels, which lie apart from it.
  BITMAPINFOHEADER Header() const;

  void Premultiply();
  /// Makes premultiplied alpha straight, at most 1, and colour 0 for alpha 0.
  void Unpremultiply();
  /// Cut to 0 to 1 and rounded to bytes.
  Image ToBytes() const;

 private:
  int32_t width_ = 0;
  int32_t height_ = 0;
  std::vector<tZRPIXEL128> pixels_;
};

}  // namespace host
