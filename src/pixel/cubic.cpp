// SPDX-License-Identifier: Apache-2.0
// The tables of Catmull-Rom weights.

#include "pixel/cubic.h"

namespace marlo::pixel {

namespace {

CubicRow RowAt(double t) noexcept {
  const double outerLeft = 1.0 + t;
  const double innerRight = 1.0 - t;
  const double outerRight = 2.0 - t;
  const double weights[4] = {
      ((-0.5 * outerLeft + 2.5) * outerLeft - 4.0) * outerLeft + 2.0,
      (1.5 * t - 2.5) * t * t + 1.0,
      (1.5 * innerRight - 2.5) * innerRight * innerRight + 1.0,
      ((-0.5 * outerRight + 2.5) * outerRight - 4.0) * outerRight + 2.0,
  };
  CubicRow row;
  for (int tap = 0; tap < 4; ++tap) {
    row.weights[tap] = static_cast<float>(weights[tap]);
    row.weights14[tap] = static_cast<int16_t>(weights[tap] * 16384.0);
  }
  return row;
}

template <int32_t kRows>
struct Table {
  CubicRow rows[kRows];
  Table() noexcept {
    for (int32_t index = 0; index < kRows; ++index) rows[index] = RowAt(static_cast<double>(index) / kRows);
  }
};

}  // namespace

const CubicRow* CubicTable() noexcept {
  static const Table<kCubicRows> table;
  return table.rows;
}

const CubicRow* FineCubicTable() noexcept {
  static const Table<kFineCubicRows> table;
  return table.rows;
}

}  // namespace marlo::pixel
