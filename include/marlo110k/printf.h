// SPDX-License-Identifier: Apache-2.0
// Formatted text: the usual conversions on UTF-16, localised numbers, named tokens and locale separators.
//
// A format is walked for "%" and "$". Both introduce the usual conversions: flags "-+ #0", width, precision, sizes
// "h", "l", "ll", "I32", "I64" and "I" (pointer size), and one of d i u o x X e E f g G c s z. All integers are 32-bit
// unless a size says otherwise; %s takes UTF-16 text, %hs text in the ANSI code page, a null prints "(null)".
//
//   $d $i $u $f       the same in the locale's groups, $f and $g with the locale's decimal sign
//   %.2z              a 32-bit number of hundredths, "123.45", always with the locale's decimal sign; $.2z with groups
//   $(Name)           the value of a token; an unknown one stays as it stands
//   $(1234.5)         the number in the locale's form
//   $* $, $:          the locale's decimal, list and time separator
//   $!: $!. $!,       time code: whole, non-drop and drop separator
//   $&: $&.           musical time: measure to beat, beat to tick
//   $$ %% $%          "$", "%", "%"
//
// The character that ends a conversion is the first of the listed letters or one of ! & * , : so "100% done" takes an
// integer, and there is no width from an argument. What ends without such a character is copied as it stands.
// Nothing is allocated. A number's text holds at most 259 characters.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

// ---- Printing --------------------------------------------------------------------------------------

/// Prints into a buffer that the caller knows to be large enough.
/// @return the characters written, without the terminator; 0 for a null destination. [any thread]
ZR_API int32_t ZrPrintF(char16_t* destination, const char16_t* format, ...) noexcept;
/// The same with an argument list.
ZR_API int32_t ZrVPrintF(char16_t* destination, const char16_t* format, va_list arguments) noexcept;
/// Prints into `characters` characters; the terminator is always stored.
/// @param written optional: the characters stored, without the terminator.
/// @return S_OK; ZR_E_BUFFER_TOO_SMALL when a conversion, token or separator was cut, or there is no buffer. A cut in
/// the plain text between them leaves S_OK, and what the walk no longer reaches isn't looked at. [any thread]
ZR_API HRESULT ZrCchPrintF(char16_t* destination, uint32_t characters, uint32_t* written, const char16_t* format,
                           ...) noexcept;
/// The same with an argument list.
ZR_API HRESULT ZrNVPrintF(char16_t* destination, uint32_t characters, uint32_t* written, const char16_t* format,
                          va_list arguments) noexcept;

// ---- Tokens: values of $(Name), known to the whole process -----------------------------------------

/// Sets a token, in the place of one with the same name; case doesn't count. Only names of at most 260 characters
/// are ever found. A null value is an empty one.
/// @return 1; 0 when memory is short (the token is then gone), the name is null or the kernel isn't up. [any thread]
ZR_API int32_t ZrPrintF_AddToken(const char16_t* name, const char16_t* value) noexcept;
/// Forgets a token. @return 1 when it existed, else 0. [any thread]
ZR_API int32_t ZrPrintF_DeleteToken(const char16_t* name) noexcept;

// ---- Numbered inserts ------------------------------------------------------------------------------

/// Composes a text whose inserts are numbered: %1 to %99, each a UTF-16 text unless a conversion follows between
/// exclamation marks, as in "%2!d!". "%n" is CR LF, "%0" ends the text, "%%", "%.", "%!" and "% " stand for their
/// last character. Arguments take one machine word each, so floating-point values have no conversion here.
/// @return the characters written, without the terminator; 0, with an empty text, when it doesn't fit. [any thread]
ZR_API uint32_t ZrComposeStr(char16_t* destination, uint32_t characters, const char16_t* format, ...) noexcept;
