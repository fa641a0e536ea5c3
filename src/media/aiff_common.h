// SPDX-License-Identifier: Apache-2.0
// The "COMM" chunk of AIFF and AIFC.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/platform/file.h"

namespace marlo::aiff {

/// The chunk's data as it stands in the file, words swapped to native order when it has been read.
#pragma pack(push, 1)
struct Common {
  uint16_t channels;
  uint32_t frames;
  uint16_t bits;
  uint16_t rateExponent;
  uint16_t rateMantissa[4];
  uint32_t compression;  ///< AIFC only.
};
#pragma pack(pop)
inline constexpr uint32_t kCommonBytes = 18;
inline constexpr uint32_t kAifcCommonBytes = 22;
static_assert(sizeof(Common) == kAifcCommonBytes);

/// Reads kCommonBytes or kAifcCommonBytes at the position, in native order; the rest is zero.
HRESULT ReadCommon(plat::File* file, uint32_t bytes, Common* common) noexcept;

/// Writes channels, bits and rate of `format` over a chunk whose data is at the position; the frame count stays.
/// @return ZR_E_BAD_STREAM for a chunk too short for them.
HRESULT ReplaceCommon(plat::File* file, uint32_t chunkBytes, const WAVEFORMATEX& format) noexcept;

}  // namespace marlo::aiff
