// SPDX-License-Identifier: Apache-2.0
// Laying one picture over another in thirteen modes or with a compositor of the caller's.
//
// 4-byte pixels have four 8-bit channels, 16-byte pixels four floats. Pictures, rectangles and strides of the
// general entry are as dib.h says; the others work on rows as given, with `bounds` the picture's rectangle in
// pixels. Opacities are cut to 0 to 1, NaN counts as 0. Any thread; one picture is written by one call at a
// time. Large pictures are spread over the processors inside the call, except for a custom float compositor.
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// What a mode makes of destination d and source s at full opacity; all channels unless it says colour.
enum ZRCOMPOSITE : int32_t {
  ZRCOMPOSITE_CUSTOM = -1,              ///< tZRDIBCOMPOSITEPARAMS::compositor.
  ZRCOMPOSITE_SOURCE = 0,               ///< s.
  ZRCOMPOSITE_ADD = 1,                  ///< d + s.
  ZRCOMPOSITE_SUBTRACT = 2,             ///< Colour: d - s.
  ZRCOMPOSITE_MULTIPLY = 3,             ///< d * s; a smaller opacity darkens.
  ZRCOMPOSITE_OVER = 4,                 ///< Premultiplied s over d.
  ZRCOMPOSITE_OVER_FADE = 5,            ///< The same, but partial opacity is a plain cross-fade.
  ZRCOMPOSITE_INVERSE_SOURCE = 6,       ///< From here on colour moves toward s divided by the weight, and the
                                        ///< weight is added to alpha. Weight: 1 - s.a.
  ZRCOMPOSITE_DESTINATION = 7,          ///< d.a.
  ZRCOMPOSITE_INVERSE_DESTINATION = 8,  ///< 1 - d.a.
  ZRCOMPOSITE_PRODUCT = 9,              ///< s.a * d.a.
  ZRCOMPOSITE_INVERSE_PRODUCT = 10,     ///< 1 - s.a * d.a.
  ZRCOMPOSITE_MAXIMUM = 11,             ///< The larger alpha.
  ZRCOMPOSITE_MINIMUM = 12,             ///< The smaller alpha.
};

/// Composites pictures that are both of type 28 or 29, or both of type 32. Rectangles of different sizes are
/// scaled bilinearly and placed between pixels; border pixels that the destination covers in part are weighted
/// by their coverage.
/// @param flags ZRDIB_SUBPIXEL: rectangles are in 18.14.
/// @return E_POINTER for a null descriptor; E_INVALIDARG for null params, a custom mode without a compositor or
/// without the function it needs, other pixel types, or a scaled rectangle beyond 131071 pixels; E_NOTIMPL for a
/// mode outside -1 to 12; 0 when nothing is visible.
ZR_API HRESULT ZrDibComposite(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                              const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect,
                              int32_t srcStride, const tZRDIBCOMPOSITEPARAMS* params, uint32_t flags) noexcept;
/// Composites areas of equal size in whole pixels.
/// @param bytesPerPixel 4 or 16, else E_NOTIMPL.
/// @return E_POINTER for null bits; else as ZrDibComposite and ZrDibPrepareCopy.
ZR_API HRESULT ZrDibCompositeUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                      const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                                      const RECT* srcRect, int32_t bytesPerPixel,
                                      const tZRDIBCOMPOSITEPARAMS* params) noexcept;
/// Composites areas of any size with rectangles in 18.14; bounds are in pixels. A null rectangle is the bounds.
/// @return E_POINTER for null bits or bounds; else as ZrDibCompositeUnscaled.
ZR_API HRESULT ZrDibCompositeSP(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                int32_t bytesPerPixel, const tZRDIBCOMPOSITEPARAMS* params) noexcept;
