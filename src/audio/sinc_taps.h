// SPDX-License-Identifier: Apache-2.0
// Reading a windowed sinc around one output: the weights of 25 taps from a table, and their sums.
#pragma once

#include <cstdint>

#include "audio/resample_common.h"

namespace marlo {

/// A table entry with the step to the next one, side by side for the lookup.
struct SincEntry {
  double value;
  double step;
};

/// A table and how it is read. A place beyond the last entry is read along its step.
struct SincTable {
  const SincEntry* entries;
  double scale;       ///< Entries per source frame.
  int32_t lastEntry;  ///< The highest one that is looked up.
};

/// Fills `entries` entries; the last one has no step.
void FillSincEntries(SincEntry* entries, int32_t count) noexcept;

/// The sum for one frame of `channels` samples.
/// @param place distance of the newest tap from the output, 11 to 12 frames.
/// @param newest the newest tap's frame; older ones follow it in memory.
/// Weights are value + step * fraction. A channel's products go into four running sums in turn, joined in pairs:
/// this order is what every body below keeps, so all give the same bits.
using SincSum = void (*)(const SincTable& table, double place, const double* newest, int32_t channels, double* out);

/// The body for a number of channels on this processor. @param scalar forbids vectors.
SincSum ChooseSincSum(int32_t channels, bool scalar) noexcept;

/// Weight of one tap.
inline double SincWeight(const SincTable& table, double distance) noexcept {
  const double entry = distance * table.scale;
  const int64_t found = FloorPosition(entry);
  const int64_t index = found < table.lastEntry ? found : table.lastEntry;
  return table.entries[index].value + table.entries[index].step * (entry - static_cast<double>(index));
}

// Bodies, for tests and the getter.
void SumTapsPlain(const SincTable& table, double place, const double* newest, int32_t channels, double* out);
void SumTapsSse2(const SincTable& table, double place, const double* newest, int32_t channels, double* out);
void SumTapsAvx2(const SincTable& table, double place, const double* newest, int32_t channels, double* out);

}  // namespace marlo
