// SPDX-License-Identifier: Apache-2.0
// The visible areas of calls on bare pixels, row by row.
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

namespace marlo::pixel {

inline bool IsKernelWidth(int32_t bytesPerPixel) noexcept { return bytesPerPixel == 4 || bytesPerPixel == 16; }

/// Two areas of equal size.
struct Areas {
  uint8_t* dstFirst = nullptr;
  int32_t dstStride = 0;
  const uint8_t* srcFirst = nullptr;
  int32_t srcStride = 0;
  int32_t width = 0;
  int32_t height = 0;

  /// @return as ZrDibPrepareCopy; E_POINTER for null bits. A width of 0: nothing is visible.
  HRESULT Prepare(void* dstBits, const RECT* dstBounds, int32_t dstRowBytes, const RECT* dstRect, const void* srcBits,
                  const RECT* srcBounds, int32_t srcRowBytes, const RECT* srcRect, int32_t bytesPerPixel) noexcept {
    if (!dstBits || !srcBits) return E_POINTER;
    dstStride = dstRowBytes;
    srcStride = srcRowBytes;
    return ZrDibPrepareCopy(&width, &height, &srcFirst, &dstFirst, dstBits, dstBounds, dstRowBytes, dstRect, srcBits,
                            srcBounds, srcRowBytes, srcRect, bytesPerPixel);
  }
  bool IsEmpty() const noexcept { return width <= 0 || height <= 0; }

  template <typename Pixel>
  Pixel* Destination(int32_t row) const noexcept {
    return reinterpret_cast<Pixel*>(dstFirst + int64_t{row} * dstStride);
  }
  template <typename Pixel>
  const Pixel* Source(int32_t row) const noexcept {
    return reinterpret_cast<const Pixel*>(srcFirst + int64_t{row} * srcStride);
  }
  /// Runs lay(destination row, source row) for all rows, spread over threads.
  template <typename Pixel, typename Lay>
  void ForRows(const Lay& lay) const noexcept {
    plat::ParallelRows(height, RowsPerThread(width), [&](int32_t first, int32_t end) {
      for (int32_t row = first; row < end; ++row) lay(Destination<Pixel>(row), Source<Pixel>(row));
    });
  }
  /// The same on the calling thread.
  template <typename Pixel, typename Lay>
  void ForRowsHere(const Lay& lay) const {
    for (int32_t row = 0; row < height; ++row) lay(Destination<Pixel>(row), Source<Pixel>(row));
  }
};

/// One area.
struct Area {
  uint8_t* first = nullptr;
  int32_t stride = 0;
  int32_t width = 0;
  int32_t height = 0;

  /// @return as ZrDibPrepareSet; E_POINTER for null bits. A width of 0: nothing is visible.
  HRESULT Prepare(void* bits, const RECT* bounds, int32_t rowBytes, const RECT* rect, int32_t bytesPerPixel) noexcept {
    if (!bits) return E_POINTER;
    stride = rowBytes;
    return ZrDibPrepareSet(&width, &height, &first, bits, bounds, rowBytes, rect, bytesPerPixel);
  }
  template <typename Pixel>
  Pixel* Row(int32_t row) const noexcept {
    return reinterpret_cast<Pixel*>(first + int64_t{row} * stride);
  }
  template <typename Pixel, typename Work>
  void ForRowsHere(const Work& work) const {
    for (int32_t row = 0; row < height; ++row) work(Row<Pixel>(row));
  }
};

/// Runs work(pixel) over the visible area of either pixel width. @return as Area::Prepare; E_NOTIMPL for another width.
template <typename Work>
HRESULT ForPixelsInPlace(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                         const Work& work) {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Area area;
  const HRESULT result = area.Prepare(bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result)) return result;
  const auto row = [&](auto* pixels) {
    for (int32_t column = 0; column < area.width; ++column) work(pixels + column);
  };
  if (bytesPerPixel == 4) {
    area.ForRowsHere<tZRPIXEL32>(row);
  } else {
    area.ForRowsHere<tZRPIXEL128>(row);
  }
  return S_OK;
}

}  // namespace marlo::pixel
