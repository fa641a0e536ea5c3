// SPDX-License-Identifier: Apache-2.0
// Getting a picture's alpha ready for compositing.
//
// Bare rows of 4-byte pixels (four bytes) or 16-byte pixels (four floats); another width gives E_NOTIMPL, null bits
// E_POINTER. Nothing visible is a success. [any thread; one call at a time writes a picture]
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// What a picture's alpha means.
enum ZRALPHA : int32_t {
  ZRALPHA_UNKNOWN = -1,       ///< Counts as none.
  ZRALPHA_NONE = 0,           ///< Becomes opaque.
  ZRALPHA_STRAIGHT = 1,       ///< Is premultiplied.
  ZRALPHA_PREMULTIPLIED = 2,  ///< Loses what colour exceeds alpha, and its matte.
  ZRALPHA_MATTED = 3,         ///< The same.
};

/// Multiplies colour by alpha; bytes are cut.
ZR_API HRESULT ZrDibPremultiply(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                                int32_t bytesPerPixel) noexcept;
/// Cuts colour to alpha.
ZR_API HRESULT ZrDibPatchPreMultiplied(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                                       int32_t bytesPerPixel) noexcept;
/// Does what a picture with an alpha of this kind needs.
/// @param matte three doubles, blue first, or null. @return E_NOTIMPL for another kind.
ZR_API HRESULT ZrDibPrepAlpha(void* bits, int32_t width, int32_t height, int32_t stride, const RECT* rect,
                              int32_t alphaType, const double matte[3], int32_t bytesPerPixel, double gammaA,
                              double gammaB) noexcept;
/// Takes out the matte colour that a picture was flattened on; without one (null, or black) colour is cut to alpha.
/// An opaque byte loses a step where the matte isn't black.
/// @param reserved not read. @param gammaA, gammaB display exponents: where they differ, 16-byte pixels are un-matted
/// on the curve of gammaB / gammaA.
/// @return also E_OUTOFMEMORY.
ZR_API HRESULT ZrDibPrepAlphaImage(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t reserved,
                                   const double matte[3], int32_t bytesPerPixel, double gammaA, double gammaB) noexcept;
