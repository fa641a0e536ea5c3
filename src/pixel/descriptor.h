// SPDX-License-Identifier: Apache-2.0
// Where a picture's colour table and pixels stand, and how long its rows are.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/dib.h"

namespace marlo::pixel {

inline constexpr uint32_t kHeaderBytes = sizeof(BITMAPINFOHEADER);
inline constexpr uint32_t kMaskBytes = 12;

inline bool IsExchangeType(int32_t type) noexcept { return type >= ZRPIXEL_RGB1 && type <= ZRPIXEL_RGBA128F; }
inline bool IsByteKernelType(int32_t type) noexcept { return type == ZRPIXEL_RGB32 || type == ZRPIXEL_RGBA32; }
inline bool IsPaletteType(int32_t type) noexcept { return type == ZRPIXEL_PAL4 || type == ZRPIXEL_PAL8; }

/// Row length in bytes, rounded up to whole 32-bit words.
int32_t ComputedStride(int32_t bitCount, int32_t widthPixels) noexcept;
/// False for a width whose row length the 29-bit stride can't hold.
bool RowFits(int32_t bitCount, int32_t widthPixels) noexcept;
/// True when the caller gives a stride, or the picture's own row fits one.
inline bool RowsFit(const BITMAPINFOHEADER& header, int32_t stride) noexcept {
  return stride != 0 || RowFits(header.biBitCount, header.biWidth);
}
/// Bytes from a descriptor to the pixels behind it.
size_t PixelsOffset(const BITMAPINFOHEADER& header) noexcept;
/// The colour table, or null when biClrUsed is 0.
const RGBQUAD* ColorTable(const BITMAPINFOHEADER& header) noexcept;

/// The separate pixels, or those behind the descriptor.
inline const uint8_t* PixelsOf(const BITMAPINFOHEADER& header, const void* bits) noexcept {
  return bits ? static_cast<const uint8_t*>(bits) : reinterpret_cast<const uint8_t*>(&header) + PixelsOffset(header);
}
inline uint8_t* PixelsOf(const BITMAPINFOHEADER& header, void* bits) noexcept {
  return const_cast<uint8_t*>(PixelsOf(header, static_cast<const void*>(bits)));
}

inline int32_t StrideOf(const BITMAPINFOHEADER& header, int32_t stride) noexcept {
  return stride ? stride : ComputedStride(header.biBitCount, header.biWidth);
}

inline RECT BoundsOf(const BITMAPINFOHEADER& header) noexcept { return {0, 0, header.biWidth, header.biHeight}; }

/// A palette of full length, so that no index of a hostile picture reads past the picture's own table; the
/// entries it hasn't got are black.
struct FullPalette {
  RGBQUAD entries[256];
  explicit FullPalette(const BITMAPINFOHEADER& header) noexcept;
};

}  // namespace marlo::pixel
