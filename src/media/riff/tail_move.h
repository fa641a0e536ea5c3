// SPDX-License-Identifier: Apache-2.0
// Closing a gap in a file.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/platform/file.h"

namespace marlo::riff {

inline constexpr uint32_t kTailBlockBytes = 4096;

/// Moves what stands at `source` and behind it down to `destination`, through `block` of kTailBlockBytes, and cuts the
/// file at its new end. Every block is read and written in full, or the move ends with the code of what failed and
/// the file isn't cut. A source behind the end only cuts.
HRESULT CloseGap(plat::File* file, uint64_t destination, uint64_t source, uint8_t* block) noexcept;

/// The same with a block from the house heap, taken only when there is a tail. @return also E_OUTOFMEMORY.
HRESULT CloseGap(plat::File* file, uint64_t destination, uint64_t source) noexcept;

}  // namespace marlo::riff
