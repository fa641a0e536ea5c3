// SPDX-License-Identifier: Apache-2.0
// One scaling of a rectangle: geometry and filters, and the run that fills the destination.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "pixel/scale_axis.h"

namespace marlo::pixel {

/// Everything a scaler needs to know; the two grids say which source pixels are read, the coverages which
/// destination pixels are written.
struct ScaleJob {
  int32_t pixelBytes;  ///< 4 or 16.
  uint8_t* dstTop;
  int32_t dstStride;
  const uint8_t* srcTop;
  int32_t srcStride;
  CoverageAxis coverX;
  CoverageAxis coverY;
  Grid gridX;
  Grid gridY;
  bool blendEdges;   ///< Partly covered pixels go over what is there.
  bool clampFloats;  ///< Float results are cut to 0 to 1.
};

/// @return E_OUTOFMEMORY when a scratch block is refused, with part of the destination written.
HRESULT RunScaleJob(const ScaleJob& job) noexcept;

}  // namespace marlo::pixel
