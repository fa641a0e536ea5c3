// SPDX-License-Identifier: Apache-2.0
// One conversion of a format: how it is written, and how a value is printed by it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernel/text_output.h"

namespace marlo {

/// Room for a conversion's specification and for the text of a number.
inline constexpr size_t kConversionCharacters = 260;

/// How wide an integer argument is.
enum class ArgumentSize { kInt, kChar, kShort, kWide };

struct Conversion {
  bool localised = false;
  bool left = false;
  bool plus = false;
  bool blank = false;
  bool alternate = false;
  bool zero = false;
  bool narrow = false;  ///< Text in the ANSI code page.
  ArgumentSize size = ArgumentSize::kInt;
  uint32_t width = 0;
  int32_t precision = -1;  ///< -1 when none is given.
  char16_t type = 0;
};

/// Reads what stands between the introducer and the end of the conversion's letter. Characters that mean nothing
/// there are passed over, so that a slip in a format never moves the arguments.
Conversion ParseConversion(const char16_t* text, size_t characters, bool localised) noexcept;

bool IsInteger(const Conversion& conversion) noexcept;
bool IsReal(const Conversion& conversion) noexcept;

/// Prints d, i, u, o, x, X or z. @param value the argument, sign-extended from its size where that matters.
void PutInteger(TextOutput* output, const Conversion& conversion, uint64_t value) noexcept;
/// Prints e, E, f, g or G.
void PutReal(TextOutput* output, const Conversion& conversion, double value) noexcept;
/// Prints c.
void PutCharacter(TextOutput* output, const Conversion& conversion, uint32_t value) noexcept;
/// Prints s; `text` is UTF-16, or bytes for a narrow conversion.
void PutString(TextOutput* output, const Conversion& conversion, const void* text) noexcept;

}  // namespace marlo
