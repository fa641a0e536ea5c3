// SPDX-License-Identifier: Apache-2.0
// The kernels behind ZrDibCopy.
#pragma once

#include "marlo110k/dib_copy.h"

namespace marlo::pixel {

/// An unscaled copy of a pair that has a fast path: block copies, bytes to and from floats, 24 to 32 bits.
/// @return S_FALSE, with nothing written, for any other pair.
HRESULT CopyFast(const tZRDIBGENERICPARAMS& record) noexcept;

/// Any pair through the exchange, scaled or not, feathered where the flags say so.
HRESULT CopyThroughExchange(const tZRDIBGENERICPARAMS& record) noexcept;

/// How the working pixels of a blend meet.
struct ExchangeBlend {
  tZRDIBBLENDOP op;
  bool onSource = false;           ///< The operation works on the source's pixel; the destination is only written.
  const uint16_t* mask = nullptr;  ///< A word for each destination pixel, memory rows first: it stands for the source's
                                   ///< alpha, or in operation 3 for the weight.
};
/// Any pair in whole pixels, blended. @return E_NOTIMPL for an operation that the working form hasn't got.
HRESULT BlendThroughExchange(const tZRDIBGENERICPARAMS& record, const ExchangeBlend& blend) noexcept;

/// Any pair between fractional rectangles.
HRESULT CopySubpixel(const tZRDIBSUBPIXELPARAMS& record) noexcept;

}  // namespace marlo::pixel
