// SPDX-License-Identifier: Apache-2.0
// What the user's locale says about numbers, times and names.
#pragma once

#include <cstdint>

namespace plat {

inline constexpr uint32_t kLocaleNameCharacters = 64;
inline constexpr uint32_t kLocaleSignCharacters = 8;

/// One locale's conventions. Texts are terminated and cut to fit.
struct LocaleFacts {
  uint32_t lcid = 0;           ///< Number of the locale in the published numbering, 0x0409 for en-US.
  uint32_t countryNumber = 0;  ///< The country's telephone prefix; 0 when not known.
  char16_t languageName[kLocaleNameCharacters] = {};
  char16_t englishLanguageName[kLocaleNameCharacters] = {};
  char16_t countryName[kLocaleNameCharacters] = {};
  char16_t englishCountryName[kLocaleNameCharacters] = {};
  char16_t negativeSign[kLocaleSignCharacters] = {};
  char16_t thousandsSeparator[kLocaleSignCharacters] = {};
  char16_t decimalSeparator[kLocaleSignCharacters] = {};
  char16_t timeSeparator[kLocaleSignCharacters] = {};
  char16_t listSeparator[kLocaleSignCharacters] = {};
  uint32_t grouping = 0;        ///< Digits of a group; 0 for no groups.
  uint32_t fractionDigits = 0;  ///< Digits behind the decimal sign where a value doesn't say.
  bool leadingZero = false;     ///< "0.5" rather than ".5".
  uint32_t measureSystem = 0;   ///< 0 metric, 1 United States.
};

/// The facts of the locale that the environment names (LC_ALL, then LANG); en-US when it names none.
LocaleFacts UserLocale() noexcept;
/// The facts of a locale by name, "de-DE" or "de_DE.UTF-8".
LocaleFacts NamedLocale(const char* name) noexcept;
/// Makes UserLocale give a copy of `facts`; null restores the environment's. For tests, not while others read.
void OverrideUserLocale(const LocaleFacts* facts) noexcept;

}  // namespace plat
