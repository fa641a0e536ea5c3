// SPDX-License-Identifier: Apache-2.0
// Catmull-Rom weights (a = -0.5) by the fraction of a position.
#pragma once

#include <cstdint>

namespace marlo::pixel {

/// Weights of the four taps around a position, as floats and in 14 bits. The 14-bit rows are truncated one by
/// one, so they sum to 16383, 16384 or 16385.
struct CubicRow {
  float weights[4];
  int16_t weights14[4];
};

/// Steps of the scalers' table; indexed by the fraction without its low two bits.
inline constexpr int32_t kCubicRows = 4096;
/// Steps of the whole-pixel copy's table; indexed by the fraction.
inline constexpr int32_t kFineCubicRows = 16384;

/// Built at first use; safe from any thread, and constant from then on.
const CubicRow* CubicTable() noexcept;
const CubicRow* FineCubicTable() noexcept;

}  // namespace marlo::pixel
