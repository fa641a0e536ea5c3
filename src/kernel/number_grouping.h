// SPDX-License-Identifier: Apache-2.0
// Writes numbers in plain form by the conventions of the user's locale.
#pragma once

#include <cstdint>

#include "kernel/text_output.h"

namespace marlo {

inline constexpr int32_t kDigitsOfText = -1;  ///< As many fraction digits as the text has.

/// How much of the locale's conventions a number gets.
struct NumberStyle {
  bool grouped;
  int32_t fractionDigits;  ///< kDigitsOfText or a count.
};

/// Writes the terminated `text`. Blanks, a plus sign and leading zeros in front, and whatever follows the number,
/// are kept as they are.
void PutNumber(TextOutput* output, const char16_t* text, NumberStyle style) noexcept;

}  // namespace marlo
