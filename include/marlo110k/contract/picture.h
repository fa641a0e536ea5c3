// SPDX-License-Identifier: Apache-2.0
// Picture and rectangle records shared with hosts and plug-ins.
#pragma once

#include <cstddef>
#include <cstdint>

/// A rectangle; right and bottom lie outside it. Pixels, unless a call says fixed point.
struct RECT {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
};
static_assert(sizeof(RECT) == 16);

/// A place in a picture, counted from the top left corner.
struct POINT {
  int32_t x;
  int32_t y;
};

/// Width and height.
struct SIZE {
  int32_t cx;
  int32_t cy;
};

/// A colour of a picture's colour table.
struct RGBQUAD {
  uint8_t rgbBlue;
  uint8_t rgbGreen;
  uint8_t rgbRed;
  uint8_t rgbReserved;
};

/// A colour of a palette of its own.
struct PALETTEENTRY {
  uint8_t peRed;
  uint8_t peGreen;
  uint8_t peBlue;
  uint8_t peFlags;
};

inline constexpr uint32_t BI_RGB = 0;
inline constexpr uint32_t BI_BITFIELDS = 3;

/// Describes a picture in memory. A positive height means bottom-up rows.
struct BITMAPINFOHEADER {
  uint32_t biSize;
  int32_t biWidth;
  int32_t biHeight;
  uint16_t biPlanes;
  uint16_t biBitCount;
  uint32_t biCompression;
  uint32_t biSizeImage;
  int32_t biXPelsPerMeter;
  int32_t biYPelsPerMeter;
  uint32_t biClrUsed;
  uint32_t biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(offsetof(BITMAPINFOHEADER, biCompression) == 16);
