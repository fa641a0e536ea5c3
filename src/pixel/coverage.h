// SPDX-License-Identifier: Apache-2.0
// Coverage of border pixels: which pixels a fractional rectangle touches and how much of each.
#pragma once

#include <cstdint>

#include "pixel/geometry.h"

namespace marlo::pixel {

/// One axis of a rectangle in 18.14: the pixels it touches and the covered part of the first and the last.
struct CoverageAxis {
  int32_t first;
  int32_t end;
  int32_t firstCoverage;
  int32_t lastCoverage;

  int32_t Count() const noexcept { return end - first; }
  /// Of pixel `index`, counted from the first. A span within one pixel applies its coverage once.
  int32_t At(int32_t index) const noexcept {
    if (index == 0) return firstCoverage;
    return index == Count() - 1 ? lastCoverage : kOne;
  }
};

/// `start` and `end` must not be negative, and start below end.
inline CoverageAxis CoverAxis(int32_t start, int32_t end) noexcept {
  const int32_t first = start >> kFractionBits;
  const int32_t pastLast = static_cast<int32_t>((int64_t{end} + kFraction) >> kFractionBits);
  if (pastLast - first < 2) return {first, pastLast, end - start, end - start};
  return {first, pastLast, static_cast<int32_t>((int64_t{first} + 1) * kOne - start),
          static_cast<int32_t>(end - (int64_t{pastLast} - 1) * kOne)};
}

/// A weight or step scaled by a coverage, toward zero.
inline int32_t ScaledBy(int32_t value, int32_t coverage) noexcept {
  return static_cast<int32_t>(int64_t{value} * coverage / kOne);
}

}  // namespace marlo::pixel
