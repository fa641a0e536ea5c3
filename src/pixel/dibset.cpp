// SPDX-License-Identifier: Apache-2.0
// Filling pictures and channels, and single pixels.

#include <algorithm>
#include <cstring>

#include "marlo110k/dib_copy.h"
#include "pixel/areas.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "pixel/unit.h"
#include "platform/parallel/rows.h"

using namespace marlo::pixel;

namespace {

/// A quantizer that lives for one call.
class OwnedQuantizer {
 public:
  OwnedQuantizer() noexcept = default;
  ~OwnedQuantizer() { ZrDibFreeColorQuantizer(table_); }
  OwnedQuantizer(const OwnedQuantizer&) = delete;
  OwnedQuantizer& operator=(const OwnedQuantizer&) = delete;
  HRESULT MakeFor(const BITMAPINFOHEADER& header, int32_t type) noexcept {
    return IsPaletteType(type) ? ZrDibCreateColorQuantizer(&table_, &header) : S_OK;
  }
  const uint8_t* table() const noexcept { return table_; }

 private:
  uint8_t* table_ = nullptr;
};

/// Runs row(first byte of the row) for the rows of a visible rectangle.
template <typename Row>
void ForRows(uint8_t* first, int32_t width, int32_t height, int32_t stride, const Row& row) noexcept {
  plat::ParallelRows(height, RowsPerThread(width), [&](int32_t begin, int32_t end) {
    for (int32_t index = begin; index < end; ++index) row(first + int64_t{index} * stride);
  });
}

/// Fills rows with one pixel of the exchange's slot 0. Types of whole bytes copy the first row.
void FillRows(tZRDIBXCHGPARAMS* exchange, uint8_t* first, int64_t firstBit, int32_t width, int32_t height,
              int32_t stride) noexcept {
  const int32_t bits = BitsOf(exchange->dstType);
  const int32_t written = bits % 8 == 0 ? 1 : height;
  for (int32_t row = 0; row < written; ++row) {
    SetWriteCursor(exchange, first + int64_t{row} * stride, firstBit);
    for (int32_t column = 0; column < width; ++column) exchange->write(exchange);
  }
  if (written == height) return;
  const uint8_t* const model = first + (firstBit >> 3);
  const size_t rowBytes = static_cast<size_t>(int64_t{width} * bits / 8);
  ForRows(first + stride + (firstBit >> 3), width, height - 1, stride,
          [&](uint8_t* row) { std::memcpy(row, model, rowBytes); });
}

/// Where a pixel stands, as an exchange's cursor takes it; null outside the picture.
const uint8_t* RowOf(const BITMAPINFOHEADER& header, const void* bits, int32_t stride, int32_t x, int32_t y) noexcept {
  if (x < 0 || y < 0 || x >= header.biWidth || y >= header.biHeight) return nullptr;
  return PixelsOf(header, bits) + (int64_t{header.biHeight} - 1 - y) * StrideOf(header, stride);
}

}  // namespace

HRESULT ZrDibSet(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride, float red, float green,
                 float blue, float alpha, uint32_t flags) noexcept {
  if (!header) return E_POINTER;
  const int32_t type = ZrGetPixelType(header);
  if (!IsExchangeType(type)) return E_NOTIMPL;
  if (!RowsFit(*header, stride)) return E_INVALIDARG;
  const RECT bounds = BoundsOf(*header);
  RECT area = rect ? *rect : bounds;
  if (rect && (flags & ZRDIB_SUBPIXEL)) area = ToPixels(area);
  area = Intersection(area, bounds);
  if (!HasArea(area)) return S_OK;

  tZRDIBXCHGPARAMS exchange;
  HRESULT result = ZrXCHGGetFunctionPointers(type, ZRPIXEL_RGBA128F, flags, &exchange, nullptr, 0.0, 0.0);
  if (FAILED(result)) return result;
  OwnedQuantizer quantizer;
  result = quantizer.MakeFor(*header, type);
  if (FAILED(result)) return result;
  exchange.quantizer = quantizer.table();
  const tZRPIXEL128 color = {blue, green, red, alpha};
  SetReadCursor(&exchange, reinterpret_cast<const uint8_t*>(&color), 0);
  exchange.read(&exchange);
  const int32_t rowStride = StrideOf(*header, stride);
  uint8_t* const first = PixelsOf(*header, bits) + (int64_t{header->biHeight} - area.bottom) * rowStride;
  FillRows(&exchange, first, int64_t{area.left} * header->biBitCount, Saturate(Width(area)), Saturate(Height(area)),
           rowStride);
  return S_OK;
}

HRESULT ZrDibFillRect(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                      const float color[4], uint32_t flags) noexcept {
  if (!color) return E_POINTER;
  return ZrDibSet(header, bits, rect, stride, color[2], color[1], color[0], color[3], flags);
}

HRESULT ZrDibFillRectChannel(const BITMAPINFOHEADER* /*header*/, void* /*bits*/, const RECT* /*rect*/,
                             int32_t /*stride*/, int32_t /*channel*/, double /*value*/, uint32_t /*flags*/) noexcept {
  return E_NOTIMPL;
}

HRESULT ZrDibSetUnscaled(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                         double red, double green, double blue, double alpha) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  int32_t width = 0, height = 0;
  uint8_t* first = nullptr;
  const HRESULT result = ZrDibPrepareSet(&width, &height, &first, bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result) || width == 0) return result;
  if (bytesPerPixel == 4) {
    const tZRPIXEL32 color = {UnitByte(blue), UnitByte(green), UnitByte(red), UnitByte(alpha)};
    ForRows(first, width, height, stride, [&](uint8_t* row) {
      for (int32_t x = 0; x < width; ++x) std::memcpy(row + int64_t{x} * 4, &color, sizeof color);
    });
  } else {
    const tZRPIXEL128 color = {static_cast<float>(Unit(blue)), static_cast<float>(Unit(green)),
                               static_cast<float>(Unit(red)), static_cast<float>(Unit(alpha))};
    ForRows(first, width, height, stride, [&](uint8_t* row) {
      for (int32_t x = 0; x < width; ++x) std::memcpy(row + int64_t{x} * 16, &color, sizeof color);
    });
  }
  return S_OK;
}

HRESULT ZrDibChannelSet(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                        int32_t channel, double value) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  if (channel < 0 || channel > 3) return E_INVALIDARG;
  int32_t width = 0, height = 0;
  uint8_t* first = nullptr;
  const HRESULT result = ZrDibPrepareSet(&width, &height, &first, bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result) || width == 0) return result;
  first += GetByteOffsetFromChannelEnum(channel, bytesPerPixel);
  if (bytesPerPixel == 4) {
    const uint8_t byte = UnitByte(value);
    ForRows(first, width, height, stride, [&](uint8_t* row) {
      for (int32_t x = 0; x < width; ++x) row[int64_t{x} * 4] = byte;
    });
  } else {
    const float number = static_cast<float>(Unit(value));
    ForRows(first, width, height, stride, [&](uint8_t* row) {
      for (int32_t x = 0; x < width; ++x) std::memcpy(row + int64_t{x} * 16, &number, sizeof number);
    });
  }
  return S_OK;
}

HRESULT ZrDibChannelCopyUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                 int32_t dstChannel, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                                 const RECT* srcRect, int32_t srcChannel, int32_t bytesPerPixel) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  if (dstChannel < 0 || dstChannel > 3 || srcChannel < 0 || srcChannel > 3) return E_INVALIDARG;
  int32_t width = 0, height = 0;
  const uint8_t* src = nullptr;
  uint8_t* dst = nullptr;
  const HRESULT result = ZrDibPrepareCopy(&width, &height, &src, &dst, dstBits, dstBounds, dstStride, dstRect, srcBits,
                                          srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || width == 0) return result;
  const size_t channelBytes = static_cast<size_t>(bytesPerPixel / 4);
  dst += GetByteOffsetFromChannelEnum(dstChannel, bytesPerPixel);
  src += GetByteOffsetFromChannelEnum(srcChannel, bytesPerPixel);
  for (int32_t row = 0; row < height; ++row) {
    uint8_t* const to = dst + int64_t{row} * dstStride;
    const uint8_t* const from = src + int64_t{row} * srcStride;
    for (int64_t at = 0; at < int64_t{width} * bytesPerPixel; at += bytesPerPixel) {
      std::memmove(to + at, from + at, channelBytes);
    }
  }
  return S_OK;
}

HRESULT ZrDibGetPixel(const BITMAPINFOHEADER* header, const void* bits, int32_t stride, int32_t x, int32_t y,
                      tZRPIXEL64* pixel) noexcept {
  if (!header || !pixel) return E_POINTER;
  const int32_t type = ZrGetPixelType(header);
  if (!IsExchangeType(type)) return E_NOTIMPL;
  const uint8_t* row = RowOf(*header, bits, stride, x, y);
  if (!row) return E_NOTIMPL;
  tZRDIBXCHGPARAMS exchange;
  const HRESULT result = ZrXCHGGetFunctionPointers(ZRPIXEL_RGBA64, type, 0, &exchange, nullptr, 0.0, 0.0);
  if (FAILED(result)) return result;
  const FullPalette palette(*header);
  exchange.srcPalette = palette.entries;
  SetReadCursor(&exchange, row, int64_t{x} * header->biBitCount);
  exchange.read(&exchange);
  *pixel = exchange.slots.words[0];
  return S_OK;
}

HRESULT ZrDibSetPixel(const BITMAPINFOHEADER* header, void* bits, int32_t stride, int32_t x, int32_t y,
                      const tZRPIXEL64* pixel) noexcept {
  if (!header || !pixel) return E_POINTER;
  const int32_t type = ZrGetPixelType(header);
  if (!IsExchangeType(type)) return E_NOTIMPL;
  const uint8_t* row = RowOf(*header, bits, stride, x, y);
  if (!row) return E_INVALIDARG;
  tZRDIBXCHGPARAMS exchange;
  HRESULT result = ZrXCHGGetFunctionPointers(type, ZRPIXEL_RGBA64, 0, &exchange, nullptr, 0.0, 0.0);
  if (FAILED(result)) return result;
  OwnedQuantizer quantizer;
  result = quantizer.MakeFor(*header, type);
  if (FAILED(result)) return result;
  exchange.quantizer = quantizer.table();
  SetWriteCursor(&exchange, const_cast<uint8_t*>(row), int64_t{x} * header->biBitCount);
  exchange.slots.words[0] = *pixel;
  exchange.write(&exchange);
  return S_OK;
}
