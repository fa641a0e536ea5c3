// SPDX-License-Identifier: Apache-2.0
// Drawing on an image: rectangles, lines and small bitmap text. Everything is cut to the image.
#pragma once

#include <cstdint>
#include <string_view>

#include "image.h"

namespace host {

/// Size of a character cell, the gap to the next one and the next line included, at scale 1.
inline constexpr int32_t kCharacterWidth = 6;
inline constexpr int32_t kCharacterHeight = 8;

/// Places are pixels from the top left; colours replace what is there, alpha included.
class Canvas {
 public:
  explicit Canvas(Image& image) : image_(image) {}

  void Pixel(int64_t x, int64_t y, tZRPIXEL32 color);
  void FillRect(int64_t x, int64_t y, int64_t width, int64_t height, tZRPIXEL32 color);
  /// A frame of one pixel inside the rectangle.
  void FrameRect(int64_t x, int64_t y, int64_t width, int64_t height, tZRPIXEL32 color);
  /// A line of one pixel, both ends drawn.
  void Line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, tZRPIXEL32 color);
  /// One line of text with its top left at (x, y); small letters look like capitals, and a character outside
  /// ASCII or without a shape is drawn as a box. `scale` is the side of a dot in pixels.
  void Text(int64_t x, int64_t y, std::string_view text, tZRPIXEL32 color, int32_t scale = 1);
  /// Width of a text in pixels.
  static int64_t TextWidth(std::string_view text, int32_t scale = 1);

 private:
  Image& image_;
};

}  // namespace host
