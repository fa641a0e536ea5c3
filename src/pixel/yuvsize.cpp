// SPDX-License-Identifier: Apache-2.0
// Sizes and plane offsets of video layouts.

#include "marlo110k/dib.h"
#include "marlo110k/yuv.h"

namespace {

/// A group of v210 holds 48 pixels in 128 bytes.
constexpr int64_t kV210GroupPixels = 48;
constexpr int64_t kV210GroupBytes = 128;

struct Planes {
  int64_t bytes;
  int64_t lumaRow;
  int64_t uOffset, uRow;
  int64_t vOffset, vRow;
};

Planes Packed(int64_t rowBytes, int64_t height) noexcept { return {rowBytes * height, rowBytes, 0, 0, 0, 0}; }

Planes Planar(int64_t width, int64_t height, int64_t chromaRow, bool vFirst) noexcept {
  const int64_t luma = width * height;
  const int64_t chroma = luma / 4;
  const int64_t first = luma;
  const int64_t second = luma + chroma;
  return {luma + 2 * chroma, width, vFirst ? second : first, chromaRow, vFirst ? first : second, chromaRow};
}

Planes PlanesOf(uint32_t compression, int64_t width, int64_t height) noexcept {
  switch (compression) {
    case ZRDIB_FOURCC_UYVY:
    case ZRDIB_FOURCC_YUYV:
      return Packed(width * 2, height);
    case ZRDIB_FOURCC_V210:
      return Packed((width + kV210GroupPixels - 1) / kV210GroupPixels * kV210GroupBytes, height);
    case ZRDIB_FOURCC_Y41B:
      return Planar(width, height, width / 4, false);
    case ZRDIB_FOURCC_I420:
    case ZRYUV_FOURCC_IYUV:
      return Planar(width, height, width / 2, false);
    case ZRYUV_FOURCC_YV12:
      return Planar(width, height, width / 2, true);
    default:
      return {};
  }
}

}  // namespace

uint32_t ZrYUVImageBytesAndOffsets(const BITMAPINFOHEADER* header, uint32_t offsets[5]) noexcept {
  Planes planes = {};
  // No layout has less than a byte a pixel, and beyond that the row lengths of some wouldn't fit the products.
  if (header && header->biWidth > 0 && header->biHeight > 0 &&
      int64_t{header->biWidth} * header->biHeight <= int64_t{UINT32_MAX}) {
    planes = PlanesOf(header->biCompression, header->biWidth, header->biHeight);
    if (planes.bytes > int64_t{UINT32_MAX}) planes = {};
  }
  if (offsets) {
    offsets[0] = static_cast<uint32_t>(planes.lumaRow);
    offsets[1] = static_cast<uint32_t>(planes.uOffset);
    offsets[2] = static_cast<uint32_t>(planes.uRow);
    offsets[3] = static_cast<uint32_t>(planes.vOffset);
    offsets[4] = static_cast<uint32_t>(planes.vRow);
  }
  return static_cast<uint32_t>(planes.bytes);
}
