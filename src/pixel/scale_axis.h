// SPDX-License-Identifier: Apache-2.0
// Which source pixels each destination pixel of an axis takes, and with what weights.
#pragma once

#include <cstdint>

#include "pixel/coverage.h"

namespace marlo::pixel {

enum class Filter { kLinear, kCubic, kBox };

/// Interpolation of an axis, an entry a destination pixel: the first of two or four neighbouring taps, and their
/// weights either in 14 bits or as floats. The 14-bit weights of linear taps are the doubled fraction four times,
/// as a rounding high multiply wants it.
struct TapTable {
  int32_t* first;
  int16_t (*weights14)[4];
  float (*weights)[4];
};

/// A box: `firstWeight` of the first pixel, 16384 of each between, `lastWeight` of the last. The two may be the
/// same pixel at the source's edge; pixels past the edge count as the last.
struct Box {
  int32_t first;
  int32_t last;
  int32_t firstWeight;
  int32_t lastWeight;
};

/// The sample grid of one axis.
struct Grid {
  Filter filter;
  bool fineTable;         ///< Cubic weights by the whole fraction.
  int32_t count;          ///< Destination pixels.
  int64_t start;          ///< 18.14: the first sample's position, or where the first box begins.
  int32_t step;           ///< 18.14, not negative: also the boxes' length.
  int32_t firstCoverage;  ///< Scales the step behind the first pixel.
  int32_t srcFirst;       ///< Pixels that may be read, both included.
  int32_t srcLast;

  int32_t TapCount() const noexcept { return filter == Filter::kLinear ? 2 : 4; }
  /// Fills `count` entries, of weights those whose array isn't null. Taps reach at most four pixels past the
  /// readable ones: callers clamp.
  void Fill(const TapTable& taps) const noexcept;
  void Fill(Box* boxes) const noexcept;
};

}  // namespace marlo::pixel
