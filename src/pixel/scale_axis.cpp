// SPDX-License-Identifier: Apache-2.0
// The sample grid: positions at pixel centres for interpolation, from edge to edge for boxes.

#include "pixel/scale_axis.h"

#include <algorithm>

#include "pixel/cubic.h"

namespace marlo::pixel {

namespace {

constexpr float kFromFraction = 1.0f / 16384.0f;

void SetWeights(const TapTable& taps, int32_t index, int32_t fraction, const CubicRow* cubic) noexcept {
  if (cubic) {
    const CubicRow& row = *cubic;
    if (taps.weights) std::copy_n(row.weights, 4, taps.weights[index]);
    if (taps.weights14) std::copy_n(row.weights14, 4, taps.weights14[index]);
    return;
  }
  const float right = static_cast<float>(fraction) * kFromFraction;
  const float left = static_cast<float>(kOne - fraction) * kFromFraction;
  const float weights[4] = {left, right, 0.0f, 0.0f};
  if (taps.weights) std::copy_n(weights, 4, taps.weights[index]);
  if (taps.weights14) std::fill_n(taps.weights14[index], 4, static_cast<int16_t>(2 * fraction));
}

}  // namespace

void Grid::Fill(const TapTable& taps) const noexcept {
  const CubicRow* const table = fineTable ? FineCubicTable() : CubicTable();
  const int32_t before = TapCount() / 2;
  int64_t position = start;
  for (int32_t index = 0; index < count; ++index) {
    // Past the edge all taps are the edge pixel, so that two pixels past it say as much as a thousand.
    const int64_t base = std::clamp<int64_t>(position >> kFractionBits, int64_t{srcFirst} - 2, int64_t{srcLast} + 2);
    taps.first[index] = static_cast<int32_t>(base) - before;
    const int32_t fraction = static_cast<int32_t>(position & kFraction);
    const CubicRow* const cubic = &table[fineTable ? fraction : fraction >> 2];
    SetWeights(taps, index, fraction, filter == Filter::kCubic ? cubic : nullptr);
    position += index == 0 ? ScaledBy(step, firstCoverage) : step;
  }
}

void Grid::Fill(Box* boxes) const noexcept {
  int64_t position = start;
  for (int32_t index = 0; index < count; ++index) {
    const int64_t end = position + step;
    const int64_t first = position >> kFractionBits;
    const int64_t last = end >> kFractionBits;
    Box& box = boxes[index];
    box.first = static_cast<int32_t>(std::clamp<int64_t>(first, srcFirst, srcLast));
    box.last = static_cast<int32_t>(std::clamp<int64_t>(last, srcFirst, srcLast));
    box.firstWeight = static_cast<int32_t>((first + 1) * kOne - position);
    const int64_t pastEdge = std::max<int64_t>(last - std::max<int64_t>(first + 1, srcLast), 0);
    box.lastWeight = static_cast<int32_t>((end & kFraction) + pastEdge * kOne);
    position += index == 0 ? ScaledBy(step, firstCoverage) : step;
  }
}

}  // namespace marlo::pixel
