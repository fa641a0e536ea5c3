// SPDX-License-Identifier: Apache-2.0
// The names of compressions and speaker layouts.
#pragma once

#include <cstdint>

namespace marlo {

/// The name of a tag, null when the table has none.
const char16_t* LongCompressionName(uint16_t tag) noexcept;
const char16_t* ShortCompressionName(uint16_t tag) noexcept;

/// A speaker layout with a name of its own.
struct SpeakerName {
  const char16_t* text;  ///< Null when number and mask have no name.
  bool withLfe;          ///< A low-frequency channel is named behind it.
};
SpeakerName FindSpeakerName(uint32_t channels, uint32_t mask) noexcept;
const char16_t* LfeSuffix() noexcept;

}  // namespace marlo
