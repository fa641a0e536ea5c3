// SPDX-License-Identifier: Apache-2.0
// The composite entries: checks, the choice between whole and fractional pixels, and rows of whole pixels.

#include "pixel/composite.h"

#include "pixel/areas.h"
#include "pixel/descriptor.h"
#include "pixel/geometry.h"

using namespace marlo::pixel;

namespace {

HRESULT CheckMode(const tZRDIBCOMPOSITEPARAMS& params) noexcept {
  if (params.mode == kCustomMode) return params.compositor ? S_OK : E_INVALIDARG;
  return params.mode >= 0 && params.mode < kCompositeModes ? S_OK : E_NOTIMPL;
}

HRESULT CompositeCustomRows(const Areas& areas, int32_t bytesPerPixel, const tZRDIBCOMPOSITEPARAMS& params) noexcept {
  const float opacity = OpacityOf(params);
  const tZRCOMPOSITORFUNCS& functions = *params.compositor;
  if (bytesPerPixel == 4) {
    if (!functions.row8) return E_INVALIDARG;
    const int32_t opacity255 = static_cast<int32_t>(static_cast<double>(opacity) * 255.0);
    areas.ForRows<tZRPIXEL32>([&](tZRPIXEL32* destination, const tZRPIXEL32* source) {
      functions.row8(destination, source, opacity255, areas.width);
    });
    return S_OK;
  }
  // A float compositor needn't be reentrant: its rows stay on the calling thread.
  if (!functions.rowFloat) return E_INVALIDARG;
  for (int32_t row = 0; row < areas.height; ++row) {
    functions.rowFloat(areas.Destination<tZRPIXEL128>(row), areas.Source<tZRPIXEL128>(row), opacity, areas.width);
  }
  return S_OK;
}

void CompositeRows(const Areas& areas, int32_t bytesPerPixel, const tZRDIBCOMPOSITEPARAMS& params) noexcept {
  const float opacity = OpacityOf(params);
  if (bytesPerPixel == 4) {
    const ByteCompositeRow row = FindByteCompositeRow(params.mode);
    const int32_t opacity14 = Opacity14(opacity);
    areas.ForRows<tZRPIXEL32>(
        [&](tZRPIXEL32* destination, const tZRPIXEL32* source) { row(destination, source, areas.width, opacity14); });
  } else {
    const FloatCompositeRow row = FindFloatCompositeRow(params.mode);
    areas.ForRows<tZRPIXEL128>(
        [&](tZRPIXEL128* destination, const tZRPIXEL128* source) { row(destination, source, areas.width, opacity); });
  }
}

bool FitsSubpixels(const RECT& rect) noexcept {
  const auto fits = [](int32_t value) { return value >= -kWidestSubpixel && value <= kWidestSubpixel; };
  return fits(rect.left) && fits(rect.top) && fits(rect.right) && fits(rect.bottom);
}

/// Rows from the top of a bottom-up picture.
struct TopDown {
  int64_t offset;
  int32_t stride;
};
TopDown TopDownOf(const BITMAPINFOHEADER& header, int32_t stride) noexcept {
  const int32_t rowStride = StrideOf(header, stride);
  return {(int64_t{header.biHeight} - 1) * rowStride, -rowStride};
}

/// A picture's part within its bounds as a picture of its own, with a rectangle in 18.14 moved along.
struct Bounded {
  int64_t offset;
  SIZE size;
  RECT rect;
  bool hasRect;

  Bounded(const RECT& bounds, const RECT* given, int32_t stride, int32_t bytesPerPixel) noexcept
      : offset(int64_t{bounds.top} * stride + int64_t{bounds.left} * bytesPerPixel),
        size{Saturate(Width(bounds)), Saturate(Height(bounds))},
        rect{},
        hasRect(given != nullptr) {
    if (!given) return;
    const int64_t dx = int64_t{bounds.left} * kOne;
    const int64_t dy = int64_t{bounds.top} * kOne;
    rect = {Saturate(given->left - dx), Saturate(given->top - dy), Saturate(given->right - dx),
            Saturate(given->bottom - dy)};
  }
  const RECT* Rect() const noexcept { return hasRect ? &rect : nullptr; }
};

}  // namespace

HRESULT ZrDibComposite(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                       const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect, int32_t srcStride,
                       const tZRDIBCOMPOSITEPARAMS* params, uint32_t flags) noexcept {
  if (!dstHeader || !srcHeader) return E_POINTER;
  if (!params || (params->mode == kCustomMode && !params->compositor)) return E_INVALIDARG;
  bool subpixel = (flags & ZRDIB_SUBPIXEL) != 0;
  const RECT dstBounds = BoundsOf(*dstHeader);
  const RECT srcBounds = BoundsOf(*srcHeader);
  RECT dst = dstRect ? *dstRect : subpixel ? ToSubpixels(dstBounds) : dstBounds;
  RECT src = srcRect ? *srcRect : subpixel ? ToSubpixels(srcBounds) : srcBounds;
  const bool sameSize = Width(dst) == Width(src) && Height(dst) == Height(src);
  if (sameSize && subpixel && !HasFraction(dst) && !HasFraction(src)) {
    dst = ToPixels(dst);
    src = ToPixels(src);
    subpixel = false;
  } else if (!sameSize && !subpixel) {
    if (!FitsSubpixels(dst) || !FitsSubpixels(src)) return E_INVALIDARG;
    dst = ToSubpixels(dst);
    src = ToSubpixels(src);
    subpixel = true;
  }

  const int32_t dstType = ZrGetPixelType(dstHeader);
  const int32_t srcType = ZrGetPixelType(srcHeader);
  const bool bytes = IsByteKernelType(dstType) && IsByteKernelType(srcType);
  if (!bytes && (dstType != ZRPIXEL_RGBA128F || srcType != ZRPIXEL_RGBA128F)) return E_INVALIDARG;
  const HRESULT result = CheckMode(*params);
  if (FAILED(result)) return result;
  if (!RowsFit(*dstHeader, dstStride) || !RowsFit(*srcHeader, srcStride)) return E_INVALIDARG;

  const int32_t bytesPerPixel = bytes ? 4 : 16;
  const TopDown dstRows = TopDownOf(*dstHeader, dstStride);
  const TopDown srcRows = TopDownOf(*srcHeader, srcStride);
  uint8_t* const dstTop = PixelsOf(*dstHeader, dstBits) + dstRows.offset;
  const uint8_t* const srcTop = PixelsOf(*srcHeader, srcBits) + srcRows.offset;
  if (!subpixel) {
    return ZrDibCompositeUnscaled(dstTop, &dstBounds, dstRows.stride, &dst, srcTop, &srcBounds, srcRows.stride, &src,
                                  bytesPerPixel, params);
  }
  return ZrDibCompositeSP(dstTop, &dstBounds, dstRows.stride, &dst, srcTop, &srcBounds, srcRows.stride, &src,
                          bytesPerPixel, params);
}

HRESULT ZrDibCompositeUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                               const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                               int32_t bytesPerPixel, const tZRDIBCOMPOSITEPARAMS* params) noexcept {
  if (!params) return E_INVALIDARG;
  HRESULT result = CheckMode(*params);
  if (FAILED(result)) return result;
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Areas areas;
  result = areas.Prepare(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || areas.IsEmpty()) return result;
  if (params->mode == kCustomMode) return CompositeCustomRows(areas, bytesPerPixel, *params);
  CompositeRows(areas, bytesPerPixel, *params);
  return S_OK;
}

HRESULT ZrDibCompositeSP(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                         const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                         int32_t bytesPerPixel, const tZRDIBCOMPOSITEPARAMS* params) noexcept {
  if (!params) return E_INVALIDARG;
  const HRESULT result = CheckMode(*params);
  if (FAILED(result)) return result;
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  if (!dstBits || !dstBounds || !srcBits || !srcBounds) return E_POINTER;
  const Bounded dst(*dstBounds, dstRect, dstStride, bytesPerPixel);
  const Bounded src(*srcBounds, srcRect, srcStride, bytesPerPixel);
  tZRDIBSUBPIXELPARAMS record;
  if (!ZrPrepareSubpixelParam(&record, static_cast<uint8_t*>(dstBits) + dst.offset, &dst.size, dstStride, dst.Rect(),
                              static_cast<const uint8_t*>(srcBits) + src.offset, &src.size, srcStride, src.Rect())) {
    return S_OK;
  }
  return CompositeSubpixel(record, bytesPerPixel, *params);
}
