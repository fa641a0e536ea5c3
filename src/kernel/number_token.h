// SPDX-License-Identifier: Apache-2.0
// Reads numbers as users type them: with the separators of the locale, or in plain form.
#pragma once

#include <cstdint>

namespace marlo {

/// Whose separators a number is read with.
enum class NumberForm {
  kPlain,   ///< "." is the decimal sign and "," is skipped.
  kLocale,  ///< The user's: thousands separators are skipped.
};

/// A whole number in parts; ends at a decimal sign.
struct WholeNumber {
  uint64_t magnitude;  ///< Held within 64 bits.
  bool negative;
};
WholeNumber ReadWhole(const char16_t* text, NumberForm form, const char16_t** end) noexcept;
/// Held within 64 bits.
int64_t ReadSigned(const char16_t* text, NumberForm form, const char16_t** end) noexcept;
/// 0 for a negative number.
uint64_t ReadUnsigned(const char16_t* text, NumberForm form, const char16_t** end) noexcept;
double ReadReal(const char16_t* text, NumberForm form, const char16_t** end) noexcept;

}  // namespace marlo
