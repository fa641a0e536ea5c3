// SPDX-License-Identifier: Apache-2.0
// Merges stored peaks into the columns of a display.
#pragma once

#include <cstdint>

#include "marlo110k/peak.h"

namespace marlo::peak {

/// Peaks in the form in which a file or the memory copy holds them.
struct StoredPeaks {
  const uint8_t* entries;
  uint32_t bits;      ///< 8 or 16.
  uint32_t channels;  ///< At most kZrAudioPeakMaxChannels.

  uint32_t EntryBytes() const noexcept { return 2 * channels * bits / 8; }
};

/// Running pairs of one column, in the stored width.
struct MergedPeak {
  alignas(16) uint8_t pairs[kZrAudioPeakMaxChannels * 2 * sizeof(int16_t)];
};

/// Merges `count` (1 and more) entries from `first` on into `merged`, which holds nothing yet when `begun` is false.
void MergePeaks(const StoredPeaks& peaks, int64_t first, int64_t count, bool begun, MergedPeak* merged) noexcept;
/// Writes a merged peak as column `column` of a peak type.
void StoreColumn(const MergedPeak& merged, const StoredPeaks& peaks, uint32_t type, void* buffer,
                 int64_t column) noexcept;

}  // namespace marlo::peak
