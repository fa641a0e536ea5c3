// SPDX-License-Identifier: Apache-2.0
// Clipping of one or two rectangles in whole pixels.

#include "marlo110k/dib.h"
#include "pixel/descriptor.h"
#include "pixel/geometry.h"

using marlo::pixel::BoundsOf;
using marlo::pixel::HasArea;
using marlo::pixel::Height;
using marlo::pixel::Intersection;
using marlo::pixel::Saturate;
using marlo::pixel::Width;

namespace {

/// One axis of a rectangle.
struct Span {
  int32_t* low;
  int32_t* high;
};

/// Cuts `span` to the bounds and takes a proportional part off `other`. The divisor is the size of the bounds,
/// not of the rectangle.
void CutAxis(int32_t boundsLow, int32_t boundsHigh, Span span, Span other) noexcept {
  const int64_t cutLow = boundsLow > *span.low ? int64_t{boundsLow} - *span.low : 0;
  const int64_t cutHigh = *span.high > boundsHigh ? int64_t{*span.high} - boundsHigh : 0;
  const int64_t boundsSize = int64_t{boundsHigh} - boundsLow;
  const int64_t otherSize = int64_t{*other.high} - *other.low;
  // A product of two 33-bit sizes needs more than 64 bits.
  const auto share = [&](int64_t cut) {
    return static_cast<int64_t>(static_cast<__int128>(otherSize) * cut / boundsSize);
  };
  *other.low = Saturate(*other.low + share(cutLow));
  *other.high = Saturate(*other.high - share(cutHigh));
  *span.low = Saturate(*span.low + cutLow);
  *span.high = Saturate(*span.high - cutHigh);
}

void Clip(const RECT& bounds, RECT* rect, RECT* other) noexcept {
  if (rect->left >= bounds.left && rect->top >= bounds.top && rect->right <= bounds.right &&
      rect->bottom <= bounds.bottom) {
    return;
  }
  if (!HasArea(Intersection(bounds, *rect))) {
    *rect = {};
    *other = {};
    return;
  }
  CutAxis(bounds.left, bounds.right, {&rect->left, &rect->right}, {&other->left, &other->right});
  CutAxis(bounds.top, bounds.bottom, {&rect->top, &rect->bottom}, {&other->top, &other->bottom});
}

RECT MovedBy(const RECT& rect, int64_t x, int64_t y) noexcept {
  return {Saturate(rect.left + x), Saturate(rect.top + y), Saturate(rect.right + x), Saturate(rect.bottom + y)};
}

bool SameSize(const RECT& a, const RECT& b) noexcept { return Width(a) == Width(b) && Height(a) == Height(b); }

/// The visible parts of two rectangles of equal size.
HRESULT ClipPair(const RECT& dstBounds, const RECT& dstRect, const RECT& srcBounds, const RECT& srcRect, RECT* outDst,
                 RECT* outSrc) noexcept {
  if (!SameSize(dstRect, srcRect)) return E_INVALIDARG;
  const RECT dst = Intersection(dstRect, dstBounds);
  RECT src = Intersection(srcRect, srcBounds);
  if (!SameSize(dst, src)) {
    const int64_t x = int64_t{dstRect.left} - srcRect.left;
    const int64_t y = int64_t{dstRect.top} - srcRect.top;
    src = MovedBy(Intersection(MovedBy(src, x, y), dst), -x, -y);
    if (!SameSize(dst, src)) return E_INVALIDARG;
  }
  *outDst = dst;
  *outSrc = src;
  return S_OK;
}

int64_t PixelOffset(const RECT& rect, int32_t stride, int32_t bytesPerPixel) noexcept {
  return int64_t{rect.top} * stride + int64_t{rect.left} * bytesPerPixel;
}

template <typename T>
void Give(T* out, T value) noexcept {
  if (out) *out = value;
}

}  // namespace

void ZrDibPrepareRects(const BITMAPINFOHEADER* dstHeader, RECT* outDstRect, const RECT* dstRect,
                       const BITMAPINFOHEADER* srcHeader, RECT* outSrcRect, const RECT* srcRect,
                       int32_t insets[4]) noexcept {
  if (!dstHeader || !srcHeader || !outDstRect || !outSrcRect) return;
  const RECT dstBounds = BoundsOf(*dstHeader);
  const RECT srcBounds = BoundsOf(*srcHeader);
  RECT dst = dstRect ? *dstRect : dstBounds;
  RECT src = srcRect ? *srcRect : srcBounds;
  const RECT whole = src;
  Clip(srcBounds, &src, &dst);
  Clip(dstBounds, &dst, &src);
  // A picture that came without a rectangle is shown as a whole, whatever was cut off the other.
  if (!srcRect) src = srcBounds;
  if (!dstRect) dst = dstBounds;
  if (insets) {
    insets[0] = Saturate(int64_t{src.left} - whole.left);
    insets[1] = Saturate(int64_t{src.top} - whole.top);
    insets[2] = Saturate(int64_t{whole.right} - src.right);
    insets[3] = Saturate(int64_t{whole.bottom} - src.bottom);
  }
  *outDstRect = dst;
  *outSrcRect = src;
}

HRESULT ZrDibPrepareSet(int32_t* outWidth, int32_t* outHeight, uint8_t** outFirst, void* bits, const RECT* bounds,
                        int32_t stride, const RECT* rect, int32_t bytesPerPixel) noexcept {
  if (!bounds) return E_POINTER;
  const RECT visible = Intersection(rect ? *rect : *bounds, *bounds);
  if (!HasArea(visible)) return S_OK;
  Give(outWidth, Saturate(Width(visible)));
  Give(outHeight, Saturate(Height(visible)));
  Give(outFirst, static_cast<uint8_t*>(bits) + PixelOffset(visible, stride, bytesPerPixel));
  return S_OK;
}

HRESULT ZrDibPrepareTransform(RECT* outSrcRect, int32_t* outWidth, int32_t* outHeight, const uint8_t** outSrcFirst,
                              uint8_t** outDstFirst, void* dstBits, const RECT* dstBounds, int32_t dstStride,
                              const RECT* dstRect, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                              const RECT* srcRect, int32_t bytesPerPixel, RECT* outDstRect) noexcept {
  if (!dstBounds || !srcBounds) return E_POINTER;
  RECT dst, src;
  const HRESULT result =
      ClipPair(*dstBounds, dstRect ? *dstRect : *dstBounds, *srcBounds, srcRect ? *srcRect : *srcBounds, &dst, &src);
  if (FAILED(result)) return result;
  const bool visible = HasArea(dst);
  Give(outWidth, visible ? Saturate(Width(dst)) : 0);
  Give(outHeight, visible ? Saturate(Height(dst)) : 0);
  Give(outDstRect, visible ? dst : RECT{});
  Give(outSrcRect, visible ? src : RECT{});
  uint8_t* const dstBase = static_cast<uint8_t*>(dstBits);
  const uint8_t* const srcBase = static_cast<const uint8_t*>(srcBits);
  Give(outDstFirst, visible ? dstBase + PixelOffset(dst, dstStride, bytesPerPixel) : nullptr);
  Give(outSrcFirst, visible ? srcBase + PixelOffset(src, srcStride, bytesPerPixel) : nullptr);
  return S_OK;
}

HRESULT ZrDibPrepareCopy(int32_t* outWidth, int32_t* outHeight, const uint8_t** outSrcFirst, uint8_t** outDstFirst,
                         void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                         const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                         int32_t bytesPerPixel) noexcept {
  return ZrDibPrepareTransform(nullptr, outWidth, outHeight, outSrcFirst, outDstFirst, dstBits, dstBounds, dstStride,
                               dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel, nullptr);
}
