// SPDX-License-Identifier: Apache-2.0
// Helpers for code that drives an exchange record.
#pragma once

#include <cstdint>

#include "marlo110k/dib_copy.h"

namespace marlo::pixel {

/// Bits 4 to 8, 12 to 26 of a copy's flags, the former replaced by a quality of 1 to 4.
uint32_t ExchangeFlags(uint32_t flags) noexcept;
inline uint32_t QualityOf(uint32_t flags) noexcept { return flags & ZRDIB_QUALITY_MASK; }

/// Bits of a pixel of an exchange type.
int32_t BitsOf(int32_t type) noexcept;

inline void SetReadCursor(tZRDIBXCHGPARAMS* exchange, const uint8_t* row, int64_t firstBit) noexcept {
  exchange->readCursor = row + (firstBit >> 3);
  exchange->readBit = static_cast<int32_t>(firstBit & 7);
}
inline void SetWriteCursor(tZRDIBXCHGPARAMS* exchange, uint8_t* row, int64_t firstBit) noexcept {
  exchange->writeCursor = row + (firstBit >> 3);
  exchange->writeBit = static_cast<int32_t>(firstBit & 7);
}

/// An exchange that reads destination pixels of `exchange` in the same form, to be blended with its working
/// pixels and written by it. Where the writer applies a gamma curve the reader undoes it.
HRESULT MakeDestinationReader(const tZRDIBXCHGPARAMS& exchange, tZRDIBXCHGPARAMS* reader) noexcept;

}  // namespace marlo::pixel
