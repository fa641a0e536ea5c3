// SPDX-License-Identifier: Apache-2.0
// The records that pixel kernels run on: whole-pixel copies, sub-pixel copies, and areas for plug-ins.

#include "marlo110k/dib.h"
#include "pixel/descriptor.h"
#include "pixel/geometry.h"

using namespace marlo::pixel;

namespace {

/// Smallest destination of a sub-pixel copy: a pixel between descriptors, a sixteenth between bare pictures.
constexpr int64_t kSmallestBetweenDescriptors = 16384;
constexpr int64_t kSmallestBetweenPictures = 1024;
constexpr double kToPixels = 6.103515625e-5;

uint8_t* FirstByte(uint8_t* bits, const BITMAPINFOHEADER& header, const RECT& rect, int32_t stride) noexcept {
  return bits + (int64_t{header.biHeight} - rect.bottom) * stride + ((int64_t{header.biBitCount} * rect.left) >> 3);
}
const uint8_t* FirstByte(const uint8_t* bits, const BITMAPINFOHEADER& header, const RECT& rect,
                         int32_t stride) noexcept {
  return FirstByte(const_cast<uint8_t*>(bits), header, rect, stride);
}

int32_t BitOffset(const BITMAPINFOHEADER& header, const RECT& rect) noexcept {
  return static_cast<int32_t>(int64_t{header.biBitCount} * rect.left % 8);
}

/// False for an empty rectangle, and for one that the proportional cuts of an inverted one pushed over the edge.
bool IsVisible(const BITMAPINFOHEADER& header, const RECT& rect) noexcept {
  return HasArea(rect) && rect.left >= 0 && rect.top >= 0 && rect.right <= header.biWidth &&
         rect.bottom <= header.biHeight;
}

/// Source advance a pixel, so that the first and the last pixels of both pictures meet.
int64_t GenericStep(int32_t srcSize, int32_t dstSize) noexcept {
  const int64_t span = (int64_t{srcSize} << kFractionBits) - kOne;
  return dstSize > 1 ? span / (dstSize - 1) : span;
}

/// Source extent projected into the destination.
int32_t Projected(int32_t dstStart, int64_t srcSize, int32_t scale) noexcept {
  return scale == 0 ? dstStart : Saturate(dstStart + int64_t{Truncate(static_cast<double>(srcSize) * 16384.0 / scale)});
}

/// A destination position taken back to the source.
int32_t BackProjected(int32_t position, int32_t dstStart, int32_t scale, int32_t srcStart) noexcept {
  const double distance = static_cast<double>(int64_t{position} - dstStart);
  return Saturate(srcStart + int64_t{Truncate(distance * scale * kToPixels)});
}

int32_t CentreStep(int64_t finalSrcSize, int64_t clippedDstSize) noexcept {
  if (clippedDstSize < 2 * kOne) return 0;
  return Truncate(static_cast<double>(finalSrcSize - kOne) * 16384.0 / static_cast<double>(clippedDstSize - kOne));
}

/// The geometry of a sub-pixel copy: fills everything that rectangles decide.
bool SolveSubpixel(tZRDIBSUBPIXELPARAMS* record, const RECT& dstBounds, const RECT& dstRect, const RECT& srcBounds,
                   const RECT& srcRect, int64_t smallestDestination) noexcept {
  record->dstRect = dstRect;
  record->srcClipped = Intersection(srcRect, srcBounds);
  const RECT& src = record->srcClipped;
  if (Width(src) < kOne || Height(src) < kOne) return false;
  if (Width(dstRect) < smallestDestination || Height(dstRect) < smallestDestination) return false;
  record->scaleX = Truncate(static_cast<double>(Width(src)) * 16384.0 / static_cast<double>(Width(dstRect)));
  record->scaleY = Truncate(static_cast<double>(Height(src)) * 16384.0 / static_cast<double>(Height(dstRect)));

  record->dstClipped = Intersection(dstRect, dstBounds);
  if (Width(record->dstClipped) < smallestDestination || Height(record->dstClipped) < smallestDestination) return false;
  const RECT projected = {dstRect.left, dstRect.top, Projected(dstRect.left, Width(src), record->scaleX),
                          Projected(dstRect.top, Height(src), record->scaleY)};
  const RECT shown = Intersection(projected, record->dstClipped);
  const RECT back = {BackProjected(shown.left, dstRect.left, record->scaleX, src.left),
                     BackProjected(shown.top, dstRect.top, record->scaleY, src.top),
                     BackProjected(shown.right, dstRect.left, record->scaleX, src.left),
                     BackProjected(shown.bottom, dstRect.top, record->scaleY, src.top)};
  record->srcFinal = Intersection(back, src);
  record->stepX = CentreStep(Width(record->srcFinal), Width(record->dstClipped));
  record->stepY = CentreStep(Height(record->srcFinal), Height(record->dstClipped));
  return true;
}

}  // namespace

int32_t DibPrepareGenericParam(tZRDIBGENERICPARAMS* record, const BITMAPINFOHEADER* dstHeader, double dstGamma,
                               void* dstBits, const RECT* dstRect, int32_t dstStride, const BITMAPINFOHEADER* srcHeader,
                               double srcGamma, const void* srcBits, const RECT* srcRect, int32_t srcStride,
                               uint32_t flags) noexcept {
  if (!record) return 0;
  *record = {};
  if (!dstHeader || !srcHeader) return 0;
  const int32_t dstType = ZrGetPixelType(dstHeader);
  if (!IsExchangeType(dstType) || !IsExchangeType(ZrGetPixelType(srcHeader))) return 0;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return 0;

  ZrDibPrepareRects(dstHeader, &record->dstRect, dstRect, srcHeader, &record->srcRect, srcRect, record->srcInsets);
  if (!IsVisible(*dstHeader, record->dstRect) || !IsVisible(*srcHeader, record->srcRect)) return 0;

  record->dstWidth = Saturate(Width(record->dstRect));
  record->dstHeight = Saturate(Height(record->dstRect));
  record->srcWidth = Saturate(Width(record->srcRect));
  record->srcHeight = Saturate(Height(record->srcRect));
  record->scaled = record->dstWidth != record->srcWidth || record->dstHeight != record->srcHeight;
  record->srcStepX = kOne;
  record->srcStepY = kOne;
  if (record->scaled) {
    const int64_t stepX = GenericStep(record->srcWidth, record->dstWidth);
    const int64_t stepY = GenericStep(record->srcHeight, record->dstHeight);
    if (stepX > INT32_MAX || stepY > INT32_MAX) return 0;
    record->srcStepX = static_cast<int32_t>(stepX);
    record->srcStepY = static_cast<int32_t>(stepY);
  }

  record->dstHeader = dstHeader;
  record->dstGamma = dstGamma;
  record->dstBits = PixelsOf(*dstHeader, dstBits);
  record->dstStride = StrideOf(*dstHeader, dstStride);
  record->dstFirst = FirstByte(record->dstBits, *dstHeader, record->dstRect, record->dstStride);
  record->dstBitOffset = BitOffset(*dstHeader, record->dstRect);
  record->dstPalette = ColorTable(*dstHeader);
  record->srcHeader = srcHeader;
  record->srcGamma = srcGamma;
  record->srcBits = PixelsOf(*srcHeader, srcBits);
  record->srcStride = StrideOf(*srcHeader, srcStride);
  record->srcFirst = FirstByte(record->srcBits, *srcHeader, record->srcRect, record->srcStride);
  record->srcBitOffset = BitOffset(*srcHeader, record->srcRect);
  record->srcPalette = ColorTable(*srcHeader);
  record->flags = flags;
  if (IsPaletteType(dstType) && FAILED(ZrDibCreateColorQuantizer(&record->quantizer, dstHeader))) return 0;
  return 1;
}

void DibCleanupGenericParam(tZRDIBGENERICPARAMS* record) noexcept {
  if (!record) return;
  ZrDibFreeColorQuantizer(record->quantizer);
  record->quantizer = nullptr;
}

int32_t DibPrepareSubpixelParam(tZRDIBSUBPIXELPARAMS* record, const BITMAPINFOHEADER* dstHeader, double dstGamma,
                                void* dstBits, const RECT* dstRect, int32_t dstStride,
                                const BITMAPINFOHEADER* srcHeader, double srcGamma, const void* srcBits,
                                const RECT* srcRect, int32_t srcStride, uint32_t flags) noexcept {
  if (!record) return 0;
  *record = {};
  if (!dstHeader || !srcHeader) return 0;
  const int32_t dstType = ZrGetPixelType(dstHeader);
  if (!IsExchangeType(dstType) || !IsExchangeType(ZrGetPixelType(srcHeader))) return 0;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return 0;
  const RECT dstBounds = ToSubpixels(BoundsOf(*dstHeader));
  const RECT srcBounds = ToSubpixels(BoundsOf(*srcHeader));
  if (!SolveSubpixel(record, dstBounds, dstRect ? *dstRect : dstBounds, srcBounds, srcRect ? *srcRect : srcBounds,
                     kSmallestBetweenDescriptors)) {
    return 0;
  }
  record->dstHeader = dstHeader;
  record->dstGamma = dstGamma;
  const int32_t dstRow = StrideOf(*dstHeader, dstStride);
  record->dstTop = PixelsOf(*dstHeader, dstBits) + (int64_t{dstHeader->biHeight} - 1) * dstRow;
  record->dstTopStride = -dstRow;
  record->dstPalette = ColorTable(*dstHeader);
  record->srcHeader = srcHeader;
  record->srcGamma = srcGamma;
  const int32_t srcRow = StrideOf(*srcHeader, srcStride);
  record->srcTop = PixelsOf(*srcHeader, srcBits) + (int64_t{srcHeader->biHeight} - 1) * srcRow;
  record->srcTopStride = -srcRow;
  record->srcPalette = ColorTable(*srcHeader);
  record->flags = flags;
  if (IsPaletteType(dstType) && FAILED(ZrDibCreateColorQuantizer(&record->quantizer, dstHeader))) return 0;
  return 1;
}

void DibCleanupSubpixelParam(tZRDIBSUBPIXELPARAMS* record) noexcept {
  if (!record) return;
  ZrDibFreeColorQuantizer(record->quantizer);
  record->quantizer = nullptr;
}

int32_t ZrPrepareSubpixelParam(tZRDIBSUBPIXELPARAMS* record, void* dstBits, const SIZE* dstSize, int32_t dstStride,
                               const RECT* dstRect, const void* srcBits, const SIZE* srcSize, int32_t srcStride,
                               const RECT* srcRect) noexcept {
  if (!record) return 0;
  *record = {};
  if (!dstSize || !srcSize) return 0;
  const RECT dstBounds = ToSubpixels({0, 0, dstSize->cx, dstSize->cy});
  const RECT srcBounds = ToSubpixels({0, 0, srcSize->cx, srcSize->cy});
  if (!SolveSubpixel(record, dstBounds, dstRect ? *dstRect : dstBounds, srcBounds, srcRect ? *srcRect : srcBounds,
                     kSmallestBetweenPictures)) {
    return 0;
  }
  record->dstTop = static_cast<uint8_t*>(dstBits);
  record->dstTopStride = dstStride;
  record->srcTop = static_cast<const uint8_t*>(srcBits);
  record->srcTopStride = srcStride;
  if (record->stepX < 0) record->stepX = 0;
  if (record->stepY < 0) record->stepY = 0;
  return 1;
}

HRESULT DibPreparePluginParam(tZRDIBPLUGINPARAMS* record, const BITMAPINFOHEADER* dstHeader, void* dstBits,
                              const RECT* dstRect, int32_t dstStride, const BITMAPINFOHEADER* srcHeader,
                              const void* srcBits, const RECT* srcRect, int32_t srcStride, uint32_t flags,
                              int32_t* outIsFloat, int32_t* outEmpty) noexcept {
  if (!record || !dstHeader || !srcHeader) return E_POINTER;
  *record = {};
  const int32_t type = ZrGetPixelType(dstHeader);
  if (type != ZrGetPixelType(srcHeader)) return E_INVALIDARG;
  if (!IsByteKernelType(type) && type != ZRPIXEL_RGBA128F) return E_INVALIDARG;
  if (outIsFloat) *outIsFloat = type == ZRPIXEL_RGBA128F ? 1 : 0;
  if (outEmpty) *outEmpty = 0;

  ZrDibPrepareRects(dstHeader, &record->dstRect, dstRect, srcHeader, &record->srcRect, srcRect, record->srcInsets);
  if (!IsVisible(*dstHeader, record->dstRect) || !IsVisible(*srcHeader, record->srcRect)) {
    if (outEmpty) *outEmpty = 1;
    return S_OK;
  }
  record->dstWidth = Saturate(Width(record->dstRect));
  record->dstHeight = Saturate(Height(record->dstRect));
  record->srcWidth = Saturate(Width(record->srcRect));
  record->srcHeight = Saturate(Height(record->srcRect));
  if (record->dstWidth != record->srcWidth || record->dstHeight != record->srcHeight) return E_INVALIDARG;

  record->dstHeader = dstHeader;
  record->dstBits = PixelsOf(*dstHeader, dstBits);
  record->dstStride = StrideOf(*dstHeader, dstStride);
  record->dstFirst = FirstByte(record->dstBits, *dstHeader, record->dstRect, record->dstStride);
  record->dstBitOffset = BitOffset(*dstHeader, record->dstRect);
  record->srcHeader = srcHeader;
  record->srcBits = PixelsOf(*srcHeader, srcBits);
  record->srcStride = StrideOf(*srcHeader, srcStride);
  record->srcFirst = FirstByte(record->srcBits, *srcHeader, record->srcRect, record->srcStride);
  record->srcBitOffset = BitOffset(*srcHeader, record->srcRect);
  record->flags = flags;
  return S_OK;
}
