// SPDX-License-Identifier: Apache-2.0
// Video and colour pictures as the conversions by header see them: checked rows, video top-down, colour bottom-up.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/dib.h"
#include "marlo110k/yuv.h"
#include "pixel/descriptor.h"
#include "pixel/v210.h"

namespace marlo::pixel {

/// Order of the samples in memory.
enum class YuvLayout { kUyvy, kYuyv, kI420, kV210, kOther };

inline YuvLayout LayoutOf(const BITMAPINFOHEADER& header) noexcept {
  switch (header.biCompression) {
    case ZRDIB_FOURCC_UYVY:
      return YuvLayout::kUyvy;
    case ZRDIB_FOURCC_YUYV:
      return YuvLayout::kYuyv;
    case ZRDIB_FOURCC_I420:
      return YuvLayout::kI420;
    case ZRDIB_FOURCC_V210:
      return YuvLayout::kV210;
    default:
      return YuvLayout::kOther;
  }
}

/// The rows of a video picture; `Byte` is const for a source.
template <typename Byte>
struct YuvPicture {
  YuvLayout layout;
  int32_t width, height;
  Byte* first;
  int64_t lumaRowBytes;
  Byte* u;
  int64_t uRowBytes;
  Byte* v;
  int64_t vRowBytes;

  Byte* Luma(int64_t row) const noexcept { return first + row * lumaRowBytes; }
  Byte* U(int64_t line) const noexcept { return u + line * uRowBytes; }
  Byte* V(int64_t line) const noexcept { return v + line * vRowBytes; }

  /// @param planes null computes them. @return E_INVALIDARG for a size or rows that don't fit the layout.
  HRESULT Open(const BITMAPINFOHEADER& header, Byte* bits, const uint32_t planes[5]) noexcept {
    layout = LayoutOf(header);
    width = header.biWidth;
    height = header.biHeight;
    const bool planar = layout == YuvLayout::kI420;
    if (width <= 0 || height <= 0 || width % 2 != 0 || (planar && height % 2 != 0)) return E_INVALIDARG;
    uint32_t computed[5];
    if (!planes) {
      if (ZrYUVImageBytesAndOffsets(&header, computed) == 0) return E_INVALIDARG;
      planes = computed;
    }
    first = bits;
    lumaRowBytes = planes[0];
    u = bits + planes[1];
    uRowBytes = planes[2];
    v = bits + planes[3];
    vRowBytes = planes[4];
    const int64_t chromaBytes = planar ? width / 2 : 0;
    return lumaRowBytes >= LumaBytes() && uRowBytes >= chromaBytes && vRowBytes >= chromaBytes ? S_OK : E_INVALIDARG;
  }

 private:
  /// Bytes of a row that are read or written.
  int64_t LumaBytes() const noexcept {
    if (layout == YuvLayout::kI420) return width;
    return layout == YuvLayout::kV210 ? V210Bytes(width / 2) : int64_t{width} * 2;
  }
};

/// The rows of a colour picture from its top: its first row in memory is the lowest.
template <typename Byte>
struct ColorPicture {
  Byte* top;
  int64_t stepBytes;

  Byte* Row(int64_t row) const noexcept { return top + row * stepBytes; }

  HRESULT Open(const BITMAPINFOHEADER& header, Byte* bits, int32_t stride, int32_t pixelBytes) noexcept {
    if (header.biWidth <= 0 || header.biHeight <= 0 || !RowsFit(header, stride)) return E_INVALIDARG;
    const int64_t rowBytes = StrideOf(header, stride);
    if (rowBytes < int64_t{header.biWidth} * pixelBytes) return E_INVALIDARG;
    top = bits + rowBytes * (header.biHeight - 1);
    stepBytes = -rowBytes;
    return S_OK;
  }
};

}  // namespace marlo::pixel
