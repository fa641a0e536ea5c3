// SPDX-License-Identifier: Apache-2.0
// Merging and smoothing the fields of interlaced pictures.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "marlo110k/dib_fields.h"
#include "pixel/areas.h"
#include "pixel/copy_kernels.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/geometry.h"

using namespace marlo::pixel;

namespace {

bool AreAlike(const BITMAPINFOHEADER& left, const BITMAPINFOHEADER& right) noexcept {
  return left.biWidth == right.biWidth && left.biHeight == right.biHeight && left.biBitCount == right.biBitCount;
}

/// The first memory row or column that belongs to the field, seen from the end that is counted first.
int32_t FirstOfField(int32_t field, int32_t count) noexcept { return field == (~count & 1) ? 1 : 0; }

/// Channels of bytes and floats under the binomial filters.
struct ByteSums {
  using Channel = uint8_t;
  using Sum = int32_t;
  static Channel Sixteenth(Sum sum) noexcept { return static_cast<Channel>(sum >> 4); }
  static Channel Quarter(Sum sum) noexcept { return static_cast<Channel>(sum >> 2); }
};
struct FloatSums {
  using Channel = float;
  using Sum = float;
  static Channel Sixteenth(Sum sum) noexcept { return sum * 0.0625f; }
  static Channel Quarter(Sum sum) noexcept { return sum * 0.25f; }
};

/// 1, 2, 1 down a column of three rows.
template <typename Sums>
typename Sums::Sum Down(const typename Sums::Channel* above, const typename Sums::Channel* here,
                        const typename Sums::Channel* below, int32_t index) noexcept {
  using Sum = typename Sums::Sum;
  return static_cast<Sum>(above[index]) + static_cast<Sum>(2) * static_cast<Sum>(here[index]) +
         static_cast<Sum>(below[index]);
}

template <typename Sums>
void FieldBlend(const Areas& areas) noexcept {
  using Channel = typename Sums::Channel;
  for (int32_t row = 0; row < areas.height; ++row) {
    const Channel* const above = areas.Source<Channel>(std::max(row - 1, 0));
    const Channel* const here = areas.Source<Channel>(row);
    const Channel* const below = areas.Source<Channel>(std::min(row + 1, areas.height - 1));
    Channel* const destination = areas.Destination<Channel>(row);
    for (int32_t column = 0; column < areas.width; ++column) {
      const int32_t left = std::max(column - 1, 0) * 4;
      const int32_t right = std::min(column + 1, areas.width - 1) * 4;
      for (int32_t channel = 0; channel < 4; ++channel) {
        const auto middle = Down<Sums>(above, here, below, column * 4 + channel);
        destination[column * 4 + channel] = Sums::Sixteenth(Down<Sums>(above, here, below, left + channel) + middle +
                                                            middle + Down<Sums>(above, here, below, right + channel));
      }
    }
  }
}

constexpr size_t kStackRowBytes = 4096;

/// Filters from the first row on; the row above is kept as it was.
template <typename Sums>
void InterlaceFilter(const Area& area, uint8_t* scratch, size_t rowBytes) noexcept {
  using Channel = typename Sums::Channel;
  auto* above = reinterpret_cast<Channel*>(scratch);
  auto* here = reinterpret_cast<Channel*>(scratch + rowBytes);
  std::memcpy(above, area.Row<Channel>(0), rowBytes);
  for (int32_t row = 0; row < area.height; ++row) {
    Channel* const destination = area.Row<Channel>(row);
    std::memcpy(here, destination, rowBytes);
    const Channel* const below = row + 1 < area.height ? area.Row<Channel>(row + 1) : here;
    for (int32_t index = 0; index < area.width * 4; ++index) {
      destination[index] = Sums::Quarter(Down<Sums>(above, here, below, index));
    }
    std::swap(above, here);
  }
}

/// A copy of whole pixels in which one field's rows come through and the others are made of their neighbours.
class InterlacedCopy {
 public:
  InterlacedCopy(const tZRDIBGENERICPARAMS& record, int32_t field) noexcept
      : record_(record), field_(field), srcPalette_(*record.srcHeader), dstPalette_(*record.dstHeader) {}

  HRESULT Run() noexcept {
    const HRESULT result =
        ZrXCHGGetFunctionPointers(ZrGetPixelType(record_.dstHeader), ZrGetPixelType(record_.srcHeader), record_.flags,
                                  &exchange_, nullptr, record_.dstGamma, record_.srcGamma);
    if (FAILED(result)) return result;
    exchange_.srcPalette = srcPalette_.entries;
    exchange_.dstPalette = dstPalette_.entries;
    exchange_.quantizer = record_.quantizer;
    plat::ParallelRows(record_.dstHeight, RowsPerThread(record_.dstWidth), [&](int32_t first, int32_t end) {
      tZRDIBXCHGPARAMS here = exchange_;
      tZRDIBXCHGPARAMS other = exchange_;
      for (int32_t row = first; row < end; ++row) {
        SetWriteCursor(&here, record_.dstFirst + int64_t{row} * record_.dstStride, record_.dstBitOffset);
        if (((record_.dstRect.bottom - row) & 1) == field_) {
          CopyRow(&here, row);
        } else {
          MeanRow(&here, &other, row);
        }
      }
    });
    return S_OK;
  }

 private:
  void Read(tZRDIBXCHGPARAMS* exchange, int32_t row) const noexcept {
    SetReadCursor(exchange, record_.srcFirst + int64_t{row} * record_.srcStride, record_.srcBitOffset);
  }

  void CopyRow(tZRDIBXCHGPARAMS* exchange, int32_t row) const noexcept {
    Read(exchange, row);
    for (int32_t column = 0; column < record_.dstWidth; ++column) {
      exchange->read(exchange);
      exchange->write(exchange);
    }
  }

  /// A row at the edge has one neighbour, which counts twice; the only row of a picture is its own.
  void MeanRow(tZRDIBXCHGPARAMS* exchange, tZRDIBXCHGPARAMS* other, int32_t row) const noexcept {
    const int32_t last = record_.dstHeight - 1;
    int32_t below = row - 1;
    int32_t above = row + 1;
    if (below < 0) below = std::min(above, last);
    if (above > last) above = below;
    Read(exchange, below);
    Read(other, above);
    for (int32_t column = 0; column < record_.dstWidth; ++column) {
      exchange->read(exchange);
      other->read(other);
      Average(&exchange->slots, other->slots, exchange->form);
      exchange->write(exchange);
    }
  }

  static void Average(tZRXCHGSLOTS* slots, const tZRXCHGSLOTS& other, int32_t form) noexcept {
    if (form == ZRXCHG_FLOATS) {
      for (int channel = 0; channel < 4; ++channel) {
        float* const value = &slots->floats[0].b + channel;
        *value = (*value + (&other.floats[0].b)[channel]) * 0.5f;
      }
    } else if (form == ZRXCHG_WORDS) {
      for (int channel = 0; channel < 4; ++channel) {
        uint16_t* const value = &slots->words[0].b + channel;
        *value = static_cast<uint16_t>((*value + (&other.words[0].b)[channel]) >> 1);
      }
    } else {
      for (int channel = 0; channel < 4; ++channel) {
        uint8_t* const value = &slots->bytes[0].b + channel;
        *value = static_cast<uint8_t>((*value + (&other.bytes[0].b)[channel]) >> 1);
      }
    }
  }

  const tZRDIBGENERICPARAMS& record_;
  const int32_t field_;
  FullPalette srcPalette_;
  FullPalette dstPalette_;
  tZRDIBXCHGPARAMS exchange_ = {};
};

}  // namespace

HRESULT ZrDibMergeFields(const BITMAPINFOHEADER* dstHeader, void* dstBits, int32_t dstStride,
                         const BITMAPINFOHEADER* srcHeader, const void* srcBits, int32_t srcStride,
                         int32_t field) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  if (!AreAlike(*dstHeader, *srcHeader)) return E_NOTIMPL;
  if (dstHeader->biWidth <= 0 || dstHeader->biHeight <= 0) return S_OK;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return E_INVALIDARG;
  const int64_t dstRowBytes = StrideOf(*dstHeader, dstStride);
  const int64_t srcRowBytes = StrideOf(*srcHeader, srcStride);
  const auto bytes = static_cast<size_t>((int64_t{dstHeader->biWidth} * dstHeader->biBitCount + 7) / 8);
  uint8_t* const destination = PixelsOf(*dstHeader, dstBits);
  const uint8_t* const source = PixelsOf(*srcHeader, srcBits);
  for (int32_t row = FirstOfField(field, dstHeader->biHeight); row < dstHeader->biHeight; row += 2) {
    std::memmove(destination + row * dstRowBytes, source + row * srcRowBytes, bytes);
  }
  return S_OK;
}

HRESULT ZrDibMergeFieldsRotated(const BITMAPINFOHEADER* dstHeader, void* dstBits, int32_t dstStride,
                                const BITMAPINFOHEADER* srcHeader, const void* srcBits, int32_t srcStride,
                                int32_t field) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  const int32_t bytesPerPixel = dstHeader->biBitCount / 8;
  if (!AreAlike(*dstHeader, *srcHeader) || !IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  if (dstHeader->biWidth <= 0 || dstHeader->biHeight <= 0) return S_OK;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return E_INVALIDARG;
  const int64_t dstRowBytes = StrideOf(*dstHeader, dstStride);
  const int64_t srcRowBytes = StrideOf(*srcHeader, srcStride);
  uint8_t* const destination = PixelsOf(*dstHeader, dstBits);
  const uint8_t* const source = PixelsOf(*srcHeader, srcBits);
  for (int32_t row = 0; row < dstHeader->biHeight; ++row) {
    for (int32_t column = FirstOfField(field, dstHeader->biWidth); column < dstHeader->biWidth; column += 2) {
      const int64_t offset = int64_t{column} * bytesPerPixel;
      std::memmove(destination + row * dstRowBytes + offset, source + row * srcRowBytes + offset,
                   static_cast<size_t>(bytesPerPixel));
    }
  }
  return S_OK;
}

HRESULT ZrDibFieldBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                        const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                        int32_t bytesPerPixel) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Areas areas;
  const HRESULT result =
      areas.Prepare(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || areas.IsEmpty()) return result;
  if (bytesPerPixel == 4) {
    FieldBlend<ByteSums>(areas);
  } else {
    FieldBlend<FloatSums>(areas);
  }
  return S_OK;
}

HRESULT ZrDibInterlaceFilter(void* bits, int32_t width, int32_t height, int32_t stride, const RECT* rect, int32_t,
                             int32_t bytesPerPixel) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  const RECT bounds{0, 0, width, height};
  Area area;
  const HRESULT result = area.Prepare(bits, &bounds, stride, rect, bytesPerPixel);
  if (FAILED(result) || area.width <= 0 || area.height <= 0) return result;
  const size_t rowBytes = static_cast<size_t>(area.width) * static_cast<size_t>(bytesPerPixel);
  alignas(16) uint8_t onStack[2 * kStackRowBytes];
  std::unique_ptr<uint8_t[]> allocated;
  uint8_t* scratch = onStack;
  if (rowBytes >= kStackRowBytes) {
    allocated.reset(new (std::nothrow) uint8_t[2 * rowBytes]);
    if (!allocated) return E_OUTOFMEMORY;
    scratch = allocated.get();
  }
  if (bytesPerPixel == 4) {
    InterlaceFilter<ByteSums>(area, scratch, rowBytes);
  } else {
    InterlaceFilter<FloatSums>(area, scratch, rowBytes);
  }
  return S_OK;
}

HRESULT ZrDibCopyInterlace(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                           const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect,
                           int32_t srcStride, int32_t field, uint32_t flags) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  tZRDIBGENERICPARAMS record;
  if (!DibPrepareGenericParam(&record, dstHeader, 0.0, dstBits, dstRect, dstStride, srcHeader, 0.0, srcBits, srcRect,
                              srcStride, flags)) {
    return S_OK;
  }
  const HRESULT result = record.scaled ? E_NOTIMPL : InterlacedCopy(record, field).Run();
  DibCleanupGenericParam(&record);
  return result;
}
