// SPDX-License-Identifier: Apache-2.0
// Numbers, colours, levels and sizes as users read and type them.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

// ---- Numbers to text: the characters written, without the terminator. [any thread] -----------------
//
// `localised` not 0 writes the number by the user's conventions (locale.h). The bounded forms take the destination's
// characters with the terminator, and give 0, with an empty text, for a size of 0 or 1 or a text that doesn't fit.

/// Writes a number into a buffer large enough for it.
ZR_API uint32_t ZrLongToText(int32_t value, char16_t* destination, int32_t localised) noexcept;
/// The same, bounded.
ZR_API uint32_t ZrLongToTextN(int32_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept;
/// Writes a number into a buffer large enough for it.
ZR_API uint32_t ZrLongLongToText(int64_t value, char16_t* destination, int32_t localised) noexcept;
/// The same, bounded.
ZR_API uint32_t ZrLongLongToTextN(int64_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept;
/// Writes a number into a buffer large enough for it.
ZR_API uint32_t ZrDWordToText(uint32_t value, char16_t* destination, int32_t localised) noexcept;
/// The same, bounded.
ZR_API uint32_t ZrDWordToTextN(uint32_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept;
/// Writes a number into a buffer large enough for it.
ZR_API uint32_t ZrDWordLongToText(uint64_t value, char16_t* destination, int32_t localised) noexcept;
/// The same, bounded.
ZR_API uint32_t ZrDWordLongToTextN(uint64_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept;
/// Writes a real, rounded half up to exactly `digits` decimals, at most 9, into a buffer large enough for it. A value
/// of 0 is "0"; a text of zeros has no sign. What is no number is 0.
ZR_API uint32_t ZrDoubleToText(char16_t* destination, double value, uint32_t digits, int32_t localised) noexcept;
/// The same, bounded.
ZR_API uint32_t ZrDoubleToTextN(char16_t* destination, uint32_t size, double value, uint32_t digits,
                                int32_t localised) noexcept;

// ---- Text to numbers. [any thread] -----------------------------------------------------------------
//
// Blanks in front are skipped; "-" stands first. Whole numbers are read with the user's thousands separator and end at
// a decimal sign. Numbers out of range are held to it; unsigned forms give 0 for a leading "-". A null text is 0.
// `end`, where given, receives the first character not used.

/// Reads an unsigned number.
ZR_API uint32_t ZrTextToDWordToken(const char16_t* text, const char16_t** end) noexcept;
/// Reads an unsigned number of 64 bits.
ZR_API uint64_t ZrTextToDWordLongToken(const char16_t* text, const char16_t** end) noexcept;
/// Reads a number.
ZR_API int32_t ZrTextToLongToken(const char16_t* text, const char16_t** end) noexcept;
/// Reads a number of 64 bits.
ZR_API int64_t ZrTextToLongLongToken(const char16_t* text, const char16_t** end) noexcept;
/// Reads a real. @param localised not 0 reads the user's separators; else "." is the decimal sign and "," is skipped.
ZR_API double ZrTextToDoubleToken(const char16_t* text, const char16_t** end, int32_t localised) noexcept;
/// Reads hexadecimal digits behind an optional "0x".
ZR_API uint32_t ZrHexToDWordToken(const char16_t* text, const char16_t** end) noexcept;
/// Reads hexadecimal digits behind an optional "0x", up to 64 bits.
ZR_API uint64_t ZrHexToDWordLongToken(const char16_t* text, const char16_t** end) noexcept;

// The Ex forms give the default for a 0 with more than blanks left over, then hold the result between the bounds.

/// Reads an unsigned number between bounds.
ZR_API uint32_t ZrTextToDWordTokenEx(const char16_t* text, uint32_t defaultValue, uint32_t minimum, uint32_t maximum,
                                     const char16_t** end) noexcept;
/// Reads an unsigned number of 64 bits between bounds.
ZR_API uint64_t ZrTextToDWordLongTokenEx(const char16_t* text, uint64_t defaultValue, uint64_t minimum,
                                         uint64_t maximum, const char16_t** end) noexcept;
/// Reads a number between bounds.
ZR_API int32_t ZrTextToLongTokenEx(const char16_t* text, int32_t defaultValue, int32_t minimum, int32_t maximum,
                                   const char16_t** end) noexcept;
/// Reads a number of 64 bits between bounds.
ZR_API int64_t ZrTextToLongLongTokenEx(const char16_t* text, int64_t defaultValue, int64_t minimum, int64_t maximum,
                                       const char16_t** end) noexcept;
/// Reads a real between bounds.
ZR_API double ZrTextToDoubleTokenEx(const char16_t* text, double defaultValue, double minimum, double maximum,
                                    const char16_t** end, int32_t localised) noexcept;
/// Reads a hexadecimal number between bounds.
ZR_API uint32_t ZrHexToDWordTokenEx(const char16_t* text, uint32_t defaultValue, uint32_t minimum, uint32_t maximum,
                                    const char16_t** end) noexcept;
/// Reads a hexadecimal number of 64 bits between bounds.
ZR_API uint64_t ZrHexToDWordLongTokenEx(const char16_t* text, uint64_t defaultValue, uint64_t minimum, uint64_t maximum,
                                        const char16_t** end) noexcept;

// ---- Colours: red in the low byte. [any thread] ----------------------------------------------------

/// What a colour text that can't be read gives.
inline constexpr uint32_t kZrNoColorref = 0xF000F0;

/// Reads "RGB(r,g,b)" in any case with numbers up to 255, "#rrggbb", "0x" and a hexadecimal value, or a decimal value.
/// @return the colour, or kZrNoColorref. @param end optional, as for numbers.
ZR_API uint32_t ZrTextToColorrefToken(const char16_t* text, const char16_t** end) noexcept;
/// The same with a default for a text that can't be read.
ZR_API uint32_t ZrTextToColorrefTokenEx(const char16_t* text, uint32_t defaultColor, const char16_t** end) noexcept;
/// The same for a whole text.
ZR_API uint32_t ZrTextToColorref(const char16_t* text) noexcept;

/// Ways to write a colour. Any other, and any value above 0xFFFFFF, is written as "0x" and eight digits.
enum ZRCOLORFORM : uint32_t {
  ZRCOLOR_RGB = 0,   ///< "RGB(255,128,0)"
  ZRCOLOR_HASH = 1,  ///< "#ff8000"
};
/// Writes a colour. @param length optional. @return S_OK, or ZR_E_BUFFER_TOO_SMALL with what fits.
ZR_API HRESULT ZrColorrefToTextEx(char16_t* destination, uint32_t size, uint32_t* length, uint32_t color,
                                  uint32_t form) noexcept;
/// Writes a colour. @return the characters written.
ZR_API uint32_t ZrColorrefToText(char16_t* destination, uint32_t size, uint32_t color, uint32_t form) noexcept;

// ---- Levels and sizes ------------------------------------------------------------------------------
//
// The level texts live in the library's ring of temporary texts (lang.h) and are good until it has gone round. A value
// at or below a floor that isn't 0 is the word for silence; without a ring the text is "Err.". [any thread]

/// A fixed-point value with its label. @param decimals 1 to 9 of the value's own; 0 for a whole number.
/// @param label optional.
ZR_API const char16_t* ZrGetLabeledStringFixed(int32_t value, uint32_t decimals, int32_t floor,
                                               const char16_t* label) noexcept;
/// A real with its label; without decimals it is cut to a whole number.
ZR_API const char16_t* ZrGetLabeledStringFloat(float value, uint32_t decimals, float floor,
                                               const char16_t* label) noexcept;
/// A fixed-point level. @param withUnit not 0 adds " dB".
ZR_API const char16_t* ZrGetdBStringFixed(int32_t value, uint32_t decimals, int32_t floor, int32_t withUnit) noexcept;
/// A level. @param withUnit not 0 adds " dB".
ZR_API const char16_t* ZrGetdBStringFloat(float value, uint32_t decimals, float floor, int32_t withUnit) noexcept;

/// Writes a size in bytes in the unit that needs at most three digits, in the library's language. A negative size is 0.
/// @param longText not 0 spells out "bytes".
/// @return the characters written; 0 when there is no room.
ZR_API uint32_t ZrFormatFileSize(int64_t bytes, char16_t* destination, uint32_t size, int32_t longText) noexcept;
/// Writes the four characters of a code in byte order, "." for one that isn't printable, and the terminator.
ZR_API void ZrFourCCToString(uint32_t code, char16_t* destination) noexcept;
