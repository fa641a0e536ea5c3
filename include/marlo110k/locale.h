// SPDX-License-Identifier: Apache-2.0
// The user's conventions for numbers, times and lists, and numbers written by them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

/// A name with its length in characters.
struct tZRLOCALENAME {
  uint32_t length;
  char16_t text[64];
};

/// A separator or sign with its length in characters.
struct tZRLOCALESIGN {
  uint32_t length;
  char16_t text[8];
};

/// The international record: what the user's locale says, and the separators of time codes and musical time.
struct tZRINTERNATIONALS {
  uint32_t size;            ///< Bytes of this record that are filled.
  uint32_t systemLcid;      ///< Number of the system's locale.
  uint32_t languageNumber;  ///< Number of the user's language.
  tZRLOCALENAME languageName;
  tZRLOCALENAME englishLanguageName;
  uint32_t countryNumber;  ///< The country's telephone prefix.
  tZRLOCALENAME countryName;
  tZRLOCALENAME englishCountryName;
  tZRLOCALESIGN negativeSign;         ///< The locale's own.
  tZRLOCALESIGN neutralNegativeSign;  ///< "-", which numbers are written with in every locale.
  tZRLOCALESIGN thousandsSeparator;
  tZRLOCALESIGN decimalSeparator;  ///< Never the thousands separator.
  uint32_t grouping;               ///< Digits of a group; 0 for no groups.
  uint32_t fractionDigits;
  uint32_t leadingZero;  ///< 1 for "0.5", 0 for ".5".
  tZRLOCALESIGN timeSeparator;
  tZRLOCALESIGN listSeparator;
  uint32_t measureSystem;       ///< 0 metric, 1 United States.
  tZRLOCALESIGN smpteWhole;     ///< ":"
  tZRLOCALESIGN smpteNonDrop;   ///< "."
  tZRLOCALESIGN smpteDrop;      ///< ","
  tZRLOCALESIGN measureToBeat;  ///< "."
  tZRLOCALESIGN beatToTick;     ///< "."
  uint8_t reserved[16];         ///< 0.
};
static_assert(sizeof(tZRINTERNATIONALS) == 796);
static_assert(offsetof(tZRINTERNATIONALS, languageName) == 12);
static_assert(offsetof(tZRINTERNATIONALS, negativeSign) == 544);
static_assert(offsetof(tZRINTERNATIONALS, reserved) == 780);

// ---- The record ------------------------------------------------------------------------------------

/// With a record: copies at most `size` bytes of the conventions into it and stores the number of bytes in its first
/// field. With null: reads the user's locale again and sets the tokens that depend on it.
/// @return S_OK. [any thread, but a re-read not while others format]
ZR_API HRESULT ZrLang_GetInternationals(tZRINTERNATIONALS* record, uint32_t size) noexcept;

/// What ZrGetInat can be asked for.
enum ZRINAT : uint32_t {
  ZRINAT_SYSTEMLCID = 0,
  ZRINAT_LANGUAGE = 1,
  ZRINAT_LANGUAGENAME = 2,
  ZRINAT_ENGLISHLANGUAGENAME = 3,
  ZRINAT_COUNTRY = 4,
  ZRINAT_DECIMAL = 24,
  ZRINAT_LIST = 40,
  ZRINAT_TIME = 60,
  ZRINAT_SMPTEWHOLE = 100,
  ZRINAT_SMPTENONDROP = 101,
  ZRINAT_SMPTEDROP = 102,
  ZRINAT_MEASURETOBEAT = 120,
  ZRINAT_BEATTOTICK = 121,
};

/// One of the conventions. @param selector a value of ZRINAT.
/// @param buffer receives a text, large enough for it (64 characters for a name, 8 for a sign); null is allowed for
/// numbers only.
/// @return the number, or the text's length; 0 for any other selector. [any thread]
ZR_API uint32_t ZrGetInat(uint32_t selector, char16_t* buffer) noexcept;
/// The same with a text cut to `size` characters, terminator included. @return what was stored.
ZR_API uint32_t ZrGetInatN(uint32_t selector, char16_t* buffer, uint32_t size) noexcept;

// ---- Numbers ---------------------------------------------------------------------------------------
//
// Each takes a number in plain form ("-1234567.5") and writes it by the user's conventions, with "-" as the negative
// sign in every locale. Blanks, a plus sign and leading zeros in front are kept and not grouped; what follows the
// number is kept, and a text that is no number comes out as it stands. The result is the characters written, cut to
// `size` with the terminator; 0 for a null text or no buffer. [any thread]

/// Groups a whole number; digits behind a decimal point are rounded away.
ZR_API int32_t ZrFormatNumber(const char16_t* text, char16_t* destination, uint32_t size) noexcept;
/// Writes the locale's decimal sign, no groups, and as many fraction digits as the text has.
ZR_API int32_t ZrFormatDecimalNumber(const char16_t* text, char16_t* destination, uint32_t size) noexcept;
/// Writes groups and the locale's decimal sign.
/// @param digits of the fraction, rounded half up; -1 or -2 for as many as the text has, other negative numbers for 0.
ZR_API int32_t ZrFormatGroupDecimalNumber(const char16_t* text, char16_t* destination, uint32_t size,
                                          int32_t digits) noexcept;
