// SPDX-License-Identifier: Apache-2.0
// Which rows of a 4:2:0 picture share a chroma line.
#pragma once

#include <cstdint>

namespace marlo::pixel {

inline bool IsInterlaced(int32_t fieldMode) noexcept { return fieldMode == 1 || fieldMode == 2; }

/// Fields have chroma of their own within each four rows; two rows left over are a progressive pair.
inline bool IsFieldRow(int32_t row, int32_t height, bool interlaced) noexcept {
  return interlaced && row < height / 4 * 4;
}
inline int32_t ChromaLineOfRow(int32_t row, int32_t height, bool interlaced) noexcept {
  return IsFieldRow(row, height, interlaced) ? row / 4 * 2 + row % 2 : row / 2;
}

/// The two rows of a chroma line.
struct RowPair {
  int32_t first, second;
};
inline RowPair RowsOfChromaLine(int32_t line, int32_t height, bool interlaced) noexcept {
  if (!IsFieldRow(line * 2, height, interlaced)) return {line * 2, line * 2 + 1};
  const int32_t first = line / 2 * 4 + line % 2;
  return {first, first + 2};
}

}  // namespace marlo::pixel
