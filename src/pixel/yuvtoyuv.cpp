// SPDX-License-Identifier: Apache-2.0
// Planar 4:2:0 rearranged to other layouts.

#include "marlo110k/yuv.h"

#include <cstring>

#include "marlo110k/dib.h"

namespace {

struct PlanarSource {
  const uint8_t* bits;
  const uint32_t* planes;
  const uint8_t* Luma(int64_t row) const noexcept { return bits + row * planes[0]; }
  const uint8_t* U(int64_t line) const noexcept { return bits + planes[1] + line * planes[2]; }
  const uint8_t* V(int64_t line) const noexcept { return bits + planes[3] + line * planes[4]; }
};

/// Both are Y, U and V by offset, so that only the places of the planes differ.
void CopyPlanes(uint8_t* to, const uint32_t* planes, const PlanarSource& source, size_t width,
                int64_t height) noexcept {
  for (int64_t row = 0; row < height; ++row) std::memcpy(to + row * planes[0], source.Luma(row), width);
  for (int64_t line = 0; line < height / 2; ++line) {
    std::memcpy(to + planes[1] + line * planes[2], source.U(line), width / 2);
    std::memcpy(to + planes[3] + line * planes[4], source.V(line), width / 2);
  }
}

void Interleave(uint8_t* to, const uint32_t* planes, const PlanarSource& source, size_t width,
                int64_t height) noexcept {
  for (int64_t row = 0; row < height; ++row) {
    uint8_t* packed = to + row * planes[0];
    const uint8_t* luma = source.Luma(row);
    const uint8_t* u = source.U(row / 2);
    const uint8_t* v = source.V(row / 2);
    for (size_t pair = 0; pair < width / 2; ++pair) {
      packed[4 * pair] = u[pair];
      packed[4 * pair + 1] = luma[2 * pair];
      packed[4 * pair + 2] = v[pair];
      packed[4 * pair + 3] = luma[2 * pair + 1];
    }
  }
}

}  // namespace

HRESULT ZrYUV_YUVToYUV(const BITMAPINFOHEADER* dstHeader, void* dstBits, const uint32_t dstPlanes[5],
                       const BITMAPINFOHEADER* srcHeader, const void* srcBits, const uint32_t srcPlanes[5]) noexcept {
  if (!dstHeader || !dstBits || !dstPlanes || !srcHeader || !srcBits || !srcPlanes) return E_POINTER;
  const uint32_t from = srcHeader->biCompression;
  const uint32_t to = dstHeader->biCompression;
  const bool packed = to == ZRDIB_FOURCC_UYVY;
  if ((from != ZRDIB_FOURCC_I420 && from != ZRYUV_FOURCC_IYUV) || (!packed && to != ZRYUV_FOURCC_YV12)) return S_OK;
  const int32_t width = srcHeader->biWidth;
  const int32_t height = srcHeader->biHeight;
  if (width <= 0 || height <= 0 || width % 2 != 0 || height % 2 != 0 || dstHeader->biWidth != width ||
      dstHeader->biHeight != height) {
    return E_INVALIDARG;
  }
  const PlanarSource source = {static_cast<const uint8_t*>(srcBits), srcPlanes};
  const size_t columns = static_cast<size_t>(width);
  (packed ? Interleave : CopyPlanes)(static_cast<uint8_t*>(dstBits), dstPlanes, source, columns, height);
  return S_OK;
}
