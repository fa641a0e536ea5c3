// SPDX-License-Identifier: Apache-2.0
// Scaling of 4-byte and 16-byte pixels, and samples between pixels.
//
// A picture comes as bits, size and stride; a bottom-up one as its top row and a negative stride. 4-byte
// pixels have four 8-bit channels, 16-byte pixels four floats. A null rectangle is the whole picture. Any
// thread; large pictures are spread over the processors inside the call.
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// Scales one rectangle of whole pixels onto another with bilinear interpolation.
/// @param pixelBytes 4 or 16, else E_NOTIMPL.
/// @param area non-zero: box filter in each axis that gets smaller.
/// @param noEdgeBlend no effect on whole pixels; see the sub-pixel form.
/// @return 0, also when nothing is visible; E_POINTER for a null size, E_INVALIDARG for coordinates beyond
/// 131071, E_OUTOFMEMORY.
ZR_API HRESULT ZrDibScale_Bilinear(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                   const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                                   int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept;
/// The same with Catmull-Rom interpolation. Where both axes get smaller under `area` the results are those of
/// the bilinear entry.
ZR_API HRESULT ZrDibScale_BiCubic(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                  const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                                  int32_t pixelBytes, int32_t area, int32_t noEdgeBlend) noexcept;
/// ZrDibScale_Bilinear with rectangles in 18.14. Border pixels that the destination rectangle covers in part
/// are blended over what is there, or overwritten with `noEdgeBlend`.
ZR_API HRESULT ZrDibScale_BilinearSubPixel(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                           const void* srcBits, const SIZE* srcSize, int32_t srcStride,
                                           const RECT* srcRect, int32_t pixelBytes, int32_t area,
                                           int32_t noEdgeBlend) noexcept;
/// ZrDibScale_BiCubic with rectangles in 18.14.
ZR_API HRESULT ZrDibScale_BiCubicSubPixel(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                          const void* srcBits, const SIZE* srcSize, int32_t srcStride,
                                          const RECT* srcRect, int32_t pixelBytes, int32_t area,
                                          int32_t noEdgeBlend) noexcept;
/// Copies with Catmull-Rom interpolation between whole-pixel rectangles, each clipped to its picture. Sample
/// positions start half a pixel in, so that a copy at scale 1 is softened; float results are clamped to 0 to 1.
/// @return E_POINTER for a null size, E_INVALIDARG for a null rectangle, E_NOTIMPL for a pixelBytes other than
/// 4 and 16.
ZR_API HRESULT ZrDibCopyBiCubic(void* dstBits, const SIZE* dstSize, int32_t dstStride, const RECT* dstRect,
                                const void* srcBits, const SIZE* srcSize, int32_t srcStride, const RECT* srcRect,
                                int32_t pixelBytes) noexcept;

/// One bilinear sample of the 2x2 pixels at `pixels`, without tests. Fractions are 14 bits.
ZR_API void ZrGetSubPixel32Fast(tZRPIXEL32* out, const void* pixels, int32_t stride, int32_t fractionX,
                                int32_t fractionY) noexcept;
/// One bilinear sample at (x, y) in 18.14. Past the last column or row the interpolation has one dimension.
/// @return 1, or 0 with a zero pixel for a place outside the picture.
ZR_API int32_t ZrGetSubPixel32Safe(tZRPIXEL32* out, const void* pixels, int32_t width, int32_t height, int32_t stride,
                                   int32_t x, int32_t y) noexcept;
/// ZrGetSubPixel32Fast for float pixels.
ZR_API void ZrGetSubPixel128Fast(tZRPIXEL128* out, const void* pixels, int32_t stride, int32_t fractionX,
                                 int32_t fractionY) noexcept;
/// ZrGetSubPixel32Safe for float pixels.
ZR_API int32_t ZrGetSubPixel128Safe(tZRPIXEL128* out, const void* pixels, int32_t width, int32_t height, int32_t stride,
                                    int32_t x, int32_t y) noexcept;
