// SPDX-License-Identifier: Apache-2.0
// Drawing by whole pixels, without smoothing.
#include "canvas.h"

#include <algorithm>
#include <cstdlib>

#include "canvas_font.h"

namespace host {
namespace {

const Glyph& GlyphOf(char character) {
  if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  for (const Glyph& glyph : kGlyphs) {
    if (glyph.character == character) return glyph;
  }
  return kMissingGlyph;
}

}  // namespace

void Canvas::Pixel(int64_t x, int64_t y, tZRPIXEL32 color) { FillRect(x, y, 1, 1, color); }

void Canvas::FillRect(int64_t x, int64_t y, int64_t width, int64_t height, tZRPIXEL32 color) {
  const int64_t left = std::max<int64_t>(x, 0);
  const int64_t right = std::min<int64_t>(x + width, image_.Width());
  const int64_t bottom = std::min<int64_t>(y + height, image_.Height());
  if (left >= right) return;
  for (int64_t row = std::max<int64_t>(y, 0); row < bottom; ++row) {
    tZRPIXEL32* pixels = image_.Row(static_cast<int32_t>(row));
    std::fill(pixels + left, pixels + right, color);
  }
}

void Canvas::FrameRect(int64_t x, int64_t y, int64_t width, int64_t height, tZRPIXEL32 color) {
  if (width <= 0 || height <= 0) return;
  FillRect(x, y, width, 1, color);
  FillRect(x, y + height - 1, width, 1, color);
  FillRect(x, y, 1, height, color);
  FillRect(x + width - 1, y, 1, height, color);
}

void Canvas::Line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, tZRPIXEL32 color) {
  const int64_t width = int64_t{x1} - x0;
  const int64_t height = int64_t{y1} - y0;
  const int64_t steps = std::max(std::abs(width), std::abs(height));
  // A half is rounded away from the start, so that mirrored lines are mirror images.
  const auto along = [steps](int64_t distance, int64_t step) {
    const int64_t twice = 2 * distance * step + (distance < 0 ? -steps : steps);
    return steps == 0 ? 0 : twice / (2 * steps);
  };
  for (int64_t step = 0; step <= steps; ++step) Pixel(x0 + along(width, step), y0 + along(height, step), color);
}

void Canvas::Text(int64_t x, int64_t y, std::string_view text, tZRPIXEL32 color, int32_t scale) {
  for (const char character : text) {
    const Glyph& glyph = GlyphOf(character);
    for (int32_t row = 0; row < 7; ++row) {
      for (int32_t column = 0; column < 5; ++column) {
        if ((glyph.rows[row] >> (4 - column) & 1) == 0) continue;
        FillRect(x + int64_t{column} * scale, y + int64_t{row} * scale, scale, scale, color);
      }
    }
    x += int64_t{kCharacterWidth} * scale;
  }
}

int64_t Canvas::TextWidth(std::string_view text, int32_t scale) {
  return static_cast<int64_t>(text.size()) * kCharacterWidth * scale;
}

}  // namespace host
