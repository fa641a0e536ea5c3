// SPDX-License-Identifier: Apache-2.0
// ZrDibCopy: which of the scalers and kernels a copy takes; and copies without conversion.

#include <cstring>

#include "marlo110k/dib_copy.h"
#include "marlo110k/dib_scale.h"
#include "pixel/copy_kernels.h"
#include "pixel/descriptor.h"
#include "pixel/exchange.h"
#include "pixel/geometry.h"
#include "pixel/kernel_level.h"
#include "platform/parallel/rows.h"

using namespace marlo::pixel;

namespace {

constexpr uint32_t kInterpolatingQuality = 3;

/// A picture as the scalers take it: from its top row downward.
struct TopDown {
  uint8_t* top;
  SIZE size;
  int32_t stride;
  TopDown(const BITMAPINFOHEADER& header, const void* bits, int32_t stride0) noexcept
      : top(const_cast<uint8_t*>(PixelsOf(header, bits))), size{header.biWidth, header.biHeight} {
    const int32_t row = StrideOf(header, stride0);
    top += (int64_t{header.biHeight} - 1) * row;
    stride = -row;
  }
};

struct CopyRequest {
  const BITMAPINFOHEADER* dstHeader;
  void* dstBits;
  RECT dstRect;
  const RECT* dstGiven;  ///< Null for the whole picture, which clipping treats differently.
  int32_t dstStride;
  const BITMAPINFOHEADER* srcHeader;
  const void* srcBits;
  RECT srcRect;
  const RECT* srcGiven;
  int32_t srcStride;
  uint32_t flags;
  double dstGamma;
  double srcGamma;
  int32_t dstType;
  int32_t srcType;

  bool IsFastPair() const noexcept {
    return (IsByteKernelType(dstType) && IsByteKernelType(srcType)) ||
           (dstType == ZRPIXEL_RGBA128F && srcType == ZRPIXEL_RGBA128F);
  }
  bool SizesDiffer() const noexcept { return Width(dstRect) != Width(srcRect) || Height(dstRect) != Height(srcRect); }
};

HRESULT RunScaler(const CopyRequest& request, bool subpixel) noexcept {
  const bool bicubic = (request.flags & ZRDIB_BICUBIC) != 0;
  const auto whole = bicubic ? ZrDibScale_BiCubic : ZrDibScale_Bilinear;
  const auto fractional = bicubic ? ZrDibScale_BiCubicSubPixel : ZrDibScale_BilinearSubPixel;
  const TopDown dst(*request.dstHeader, request.dstBits, request.dstStride);
  const TopDown src(*request.srcHeader, request.srcBits, request.srcStride);
  const int32_t pixelBytes = request.dstType == ZRPIXEL_RGBA128F ? 16 : 4;
  const int32_t area = request.flags & ZRDIB_AREA ? 1 : 0;
  const int32_t noEdgeBlend = request.flags & ZRDIB_NO_EDGE_BLEND ? 1 : 0;
  return (subpixel ? fractional : whole)(dst.top, &dst.size, dst.stride, &request.dstRect, src.top, &src.size,
                                         src.stride, &request.srcRect, pixelBytes, area, noEdgeBlend);
}

HRESULT RunSubpixel(const CopyRequest& request) noexcept {
  if (request.IsFastPair()) return RunScaler(request, true);
  tZRDIBSUBPIXELPARAMS record;
  const int32_t works = DibPrepareSubpixelParam(
      &record, request.dstHeader, request.dstGamma, request.dstBits, &request.dstRect, request.dstStride,
      request.srcHeader, request.srcGamma, request.srcBits, &request.srcRect, request.srcStride, request.flags);
  const HRESULT result = works ? CopySubpixel(record) : S_OK;
  DibCleanupSubpixelParam(&record);
  return result;
}

HRESULT RunWhole(const CopyRequest& request) noexcept {
  const bool interpolates = QualityOf(request.flags) >= kInterpolatingQuality;
  if (interpolates && request.SizesDiffer() && request.IsFastPair()) return RunScaler(request, false);
  tZRDIBGENERICPARAMS record;
  HRESULT result = ZR_E_UNSUPPORTED_MEDIA;
  if (DibPrepareGenericParam(&record, request.dstHeader, request.dstGamma, request.dstBits, request.dstGiven,
                             request.dstStride, request.srcHeader, request.srcGamma, request.srcBits, request.srcGiven,
                             request.srcStride, request.flags)) {
    const uint32_t feather = request.flags & ZRDIB_FEATHER_WIDTH_MASK ? request.flags & 0xF000 : 0;
    result = record.scaled || feather ? S_FALSE : CopyFast(record);
    if (result == S_FALSE) result = CopyThroughExchange(record);
  }
  DibCleanupGenericParam(&record);
  return result;
}

}  // namespace

HRESULT ZrDibCopy(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                  const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect, int32_t srcStride,
                  uint32_t flags, double dstGamma, double srcGamma) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  CopyRequest request = {dstHeader, dstBits,   {},    dstRect,  dstStride, srcHeader, srcBits, {},
                         srcRect,   srcStride, flags, dstGamma, srcGamma,  0,         0};
  request.dstType = ZrGetPixelType(dstHeader);
  request.srcType = ZrGetPixelType(srcHeader);
  if (!IsExchangeType(request.dstType) || !IsExchangeType(request.srcType)) return ZR_E_UNSUPPORTED_MEDIA;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return ZR_E_UNSUPPORTED_MEDIA;
  const bool subpixel = (flags & ZRDIB_SUBPIXEL) != 0;
  const RECT dstBounds = subpixel ? ToSubpixels(BoundsOf(*dstHeader)) : BoundsOf(*dstHeader);
  const RECT srcBounds = subpixel ? ToSubpixels(BoundsOf(*srcHeader)) : BoundsOf(*srcHeader);
  request.dstRect = dstRect ? *dstRect : dstBounds;
  request.srcRect = srcRect ? *srcRect : srcBounds;
  if (!subpixel) return RunWhole(request);

  const bool fractional = HasFraction(request.dstRect) || HasFraction(request.srcRect);
  if (fractional && QualityOf(flags) >= kInterpolatingQuality) return RunSubpixel(request);
  request.dstRect = dstRect ? ToPixels(*dstRect) : BoundsOf(*dstHeader);
  request.srcRect = srcRect ? ToPixels(*srcRect) : BoundsOf(*srcHeader);
  if (dstRect) request.dstGiven = &request.dstRect;
  if (srcRect) request.srcGiven = &request.srcRect;
  return RunWhole(request);
}

HRESULT ZrDibCopyUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                          const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                          int32_t bytesPerPixel) noexcept {
  int32_t width = 0, height = 0;
  const uint8_t* src = nullptr;
  uint8_t* dst = nullptr;
  const HRESULT result = ZrDibPrepareCopy(&width, &height, &src, &dst, dstBits, dstBounds, dstStride, dstRect, srcBits,
                                          srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || width == 0 || bytesPerPixel <= 0) return result;
  const size_t rowBytes = static_cast<size_t>(width) * static_cast<size_t>(bytesPerPixel);
  plat::ParallelRows(height, RowsPerThread(width), [&](int32_t first, int32_t end) {
    for (int32_t row = first; row < end; ++row) {
      std::memmove(dst + int64_t{row} * dstStride, src + int64_t{row} * srcStride, rowBytes);
    }
  });
  return S_OK;
}
