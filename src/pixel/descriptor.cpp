// SPDX-License-Identifier: Apache-2.0
// Descriptors: filling, measuring and allocating them.

#include "pixel/descriptor.h"

#include <cstring>

#include "marlo110k/yuv.h"
#include "platform/base/memory.h"

namespace marlo::pixel {

namespace {

constexpr uint32_t kStrideMask = 0x1FFFFFFC;

int64_t RowBytes(int32_t bitCount, int32_t widthPixels) noexcept { return (int64_t{bitCount} * widthPixels + 31) >> 3; }

bool HasVideoSize(uint32_t compression) noexcept {
  return compression == ZRDIB_FOURCC_V210 || compression == ZRDIB_FOURCC_I420 || compression == ZRDIB_FOURCC_YUYV ||
         compression == ZRDIB_FOURCC_UYVY;
}

/// A filled descriptor and what stands around it.
struct Layout {
  BITMAPINFOHEADER header;
  uint32_t masks[3];
  uint32_t headerBytes;
};

HRESULT LayOut(Layout* layout, int32_t type, int32_t width, int32_t height, bool hasPalette, int32_t clrUsed) noexcept {
  uint32_t compression = 0;
  const int32_t bitCount = ZrPixelTypeToBitAttribs(type, &compression, nullptr, 0, layout->masks);
  if (bitCount == 0 || width < 0 || height < 0) return E_INVALIDARG;

  BITMAPINFOHEADER& header = layout->header;
  header = {};
  header.biSize = kHeaderBytes;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<uint16_t>(bitCount);
  header.biCompression = compression;
  if (compression != BI_BITFIELDS) {
    header.biClrUsed = clrUsed > 0 ? static_cast<uint32_t>(clrUsed) : 0;
    if (header.biClrUsed == 0 && !hasPalette && bitCount <= 8) header.biClrUsed = (1u << bitCount) - 1;
  }

  if (!RowFits(bitCount, width)) return E_INVALIDARG;
  if (HasVideoSize(compression)) {
    header.biSizeImage = ZrYUVImageBytesAndOffsets(&header, nullptr);
    if (header.biSizeImage == 0 && width > 0 && height > 0) return E_INVALIDARG;
  } else {
    const uint64_t imageBytes = static_cast<uint64_t>(ComputedStride(bitCount, width)) * static_cast<uint64_t>(height);
    if (imageBytes > UINT32_MAX) return E_INVALIDARG;
    header.biSizeImage = static_cast<uint32_t>(imageBytes);
  }
  const size_t headerBytes = PixelsOffset(header);
  if (headerBytes > UINT32_MAX) return E_INVALIDARG;
  layout->headerBytes = static_cast<uint32_t>(headerBytes);
  return S_OK;
}

void Store(BITMAPINFOHEADER* header, const Layout& layout, const RGBQUAD* palette) noexcept {
  std::memcpy(header, &layout.header, sizeof layout.header);
  uint8_t* behind = reinterpret_cast<uint8_t*>(header) + kHeaderBytes;
  if (layout.header.biCompression == BI_BITFIELDS) {
    std::memcpy(behind, layout.masks, kMaskBytes);
  } else if (palette && layout.header.biClrUsed != 0) {
    std::memcpy(behind, palette, size_t{layout.header.biClrUsed} * sizeof(RGBQUAD));
  }
}

}  // namespace

int32_t ComputedStride(int32_t bitCount, int32_t widthPixels) noexcept {
  return static_cast<int32_t>(static_cast<uint32_t>(RowBytes(bitCount, widthPixels)) & kStrideMask);
}

bool RowFits(int32_t bitCount, int32_t widthPixels) noexcept {
  return RowBytes(bitCount, widthPixels) <= int64_t{kStrideMask} + 3;
}

size_t PixelsOffset(const BITMAPINFOHEADER& header) noexcept {
  if (header.biCompression == BI_BITFIELDS) return kHeaderBytes + kMaskBytes;
  if (header.biCompression == BI_RGB && header.biClrUsed == 0 && header.biBitCount >= 1 && header.biBitCount <= 8) {
    return size_t{header.biSize} + (sizeof(RGBQUAD) << header.biBitCount);
  }
  return size_t{header.biSize} + sizeof(RGBQUAD) * size_t{header.biClrUsed};
}

const RGBQUAD* ColorTable(const BITMAPINFOHEADER& header) noexcept {
  if (header.biClrUsed == 0) return nullptr;
  return reinterpret_cast<const RGBQUAD*>(reinterpret_cast<const uint8_t*>(&header) + header.biSize);
}

FullPalette::FullPalette(const BITMAPINFOHEADER& header) noexcept : entries{} {
  if (const RGBQUAD* table = ColorTable(header)) {
    const size_t count = header.biClrUsed < 256 ? header.biClrUsed : 256;
    std::memcpy(entries, table, count * sizeof(RGBQUAD));
  }
}

}  // namespace marlo::pixel

using namespace marlo::pixel;

HRESULT ZrDib_Initialize() noexcept { return S_OK; }

HRESULT ZrDibInfo(uint32_t* headerBytes, uint32_t* imageBytes, BITMAPINFOHEADER* header, int32_t type, int32_t width,
                  int32_t height, const RGBQUAD* palette, int32_t clrUsed) noexcept {
  Layout layout;
  const HRESULT result = LayOut(&layout, type, width, height, palette != nullptr, clrUsed);
  if (FAILED(result)) return result;
  if (headerBytes) *headerBytes = layout.headerBytes;
  if (imageBytes) *imageBytes = layout.header.biSizeImage;
  if (header) Store(header, layout, palette);
  return S_OK;
}

HRESULT ZrVideo_InitBitmapInfo(BITMAPINFOHEADER* header, int32_t type, int32_t width, int32_t height,
                               const RGBQUAD* palette, int32_t clrUsed, uint32_t* imageBytes) noexcept {
  if (!header) return E_INVALIDARG;
  return ZrDibInfo(nullptr, imageBytes, header, type, width, height, palette, clrUsed);
}

HRESULT ZrDibAlloc(BITMAPINFOHEADER** dib, int32_t type, int32_t width, int32_t height, const RGBQUAD* palette,
                   int32_t clrUsed, uint32_t /*flags*/, uint32_t /*tag*/) noexcept {
  if (!dib) return E_POINTER;
  *dib = nullptr;
  Layout layout;
  const HRESULT result = LayOut(&layout, type, width, height, palette != nullptr, clrUsed);
  if (FAILED(result)) return result;
  // The heap gives zeroed blocks, with or without ZRDIB_ALLOC_ZEROED.
  void* block = plat::AllocateZeroed(size_t{layout.headerBytes} + layout.header.biSizeImage);
  if (!block) return E_OUTOFMEMORY;
  *dib = static_cast<BITMAPINFOHEADER*>(block);
  Store(*dib, layout, palette);
  return S_OK;
}

HRESULT ZrDibFree(BITMAPINFOHEADER* dib, uint32_t /*flags*/) noexcept {
  plat::FreeBlock(dib);
  return S_OK;
}
