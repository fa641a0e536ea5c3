// SPDX-License-Identifier: Apache-2.0
// 10-bit 4:2:2 cut to packed bytes.

#include "pixel/v210.h"

#include "pixel/yuv_rows.h"

HRESULT ZrYUV_v210_TO_UYVY(void* dst, const void* src, int32_t dstStride, int32_t srcStride, int32_t width,
                           int32_t height) noexcept {
  if (!dst || !src) return E_POINTER;
  if (width <= 0 || height <= 0 || width % 2 != 0) return E_INVALIDARG;
  if (dstStride < int64_t{width} * 2 || srcStride < int64_t{width} * 8 / 6) return E_INVALIDARG;
  const marlo::pixel::YuvRows& rows = marlo::pixel::YuvRowKernels();
  for (int64_t y = 0; y < height; ++y) {
    rows.cutV210(static_cast<uint8_t*>(dst) + y * dstStride, static_cast<const uint8_t*>(src) + y * srcStride,
                 width / 2);
  }
  return S_OK;
}
