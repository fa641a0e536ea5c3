// SPDX-License-Identifier: Apache-2.0
// Where a sub-pixel kernel reads its source.
#pragma once

#include <cstdint>

#include "pixel/coverage.h"

namespace marlo::pixel {

/// Source positions along one axis, from corner to corner.
struct Walk {
  int32_t start;
  int32_t step;
  int32_t firstStep;  ///< Behind the first pixel: scaled by its coverage.
  int32_t last;       ///< The last source pixel.

  /// Of destination pixel `index` out of `count`; the last is the source's last at fraction 0.
  int64_t At(int32_t index, int32_t count) const noexcept {
    const int64_t end = int64_t{last} * kOne;
    if (index == count - 1) return end;
    const int64_t position = index == 0 ? start : start + int64_t{firstStep} + int64_t{index - 1} * step;
    return position < end ? position : end;
  }
};

inline Walk MakeWalk(int32_t finalStart, int32_t finalEnd, int32_t step, const CoverageAxis& cover) noexcept {
  const int32_t forward = step > 0 ? step : 0;
  const int32_t last = static_cast<int32_t>((int64_t{finalEnd} + kFraction) >> kFractionBits) - 1;
  return {finalStart, forward, ScaledBy(forward, cover.firstCoverage), last > 0 ? last : 0};
}

}  // namespace marlo::pixel
