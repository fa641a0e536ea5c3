// SPDX-License-Identifier: Apache-2.0
// A composite request after its checks.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/dib_composite.h"
#include "pixel/composite_rows.h"
#include "pixel/coverage.h"

namespace marlo::pixel {

/// The opacity of a request, cut to 0 to 1; NaN counts as 0.
inline float OpacityOf(const tZRDIBCOMPOSITEPARAMS& params) noexcept {
  return params.opacity > 0.0f ? std::min(params.opacity, 1.0f) : 0.0f;
}
inline int32_t Opacity14(float opacity) noexcept {
  return static_cast<int32_t>(static_cast<double>(opacity) * static_cast<double>(kOne));
}

/// Runs the sub-pixel kernel of the mode on a prepared record.
/// @return E_INVALIDARG for a custom compositor without the pixel function of the width.
HRESULT CompositeSubpixel(const tZRDIBSUBPIXELPARAMS& record, int32_t bytesPerPixel,
                          const tZRDIBCOMPOSITEPARAMS& params) noexcept;

}  // namespace marlo::pixel
