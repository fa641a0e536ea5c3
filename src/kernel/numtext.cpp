// SPDX-License-Identifier: Apache-2.0
// Writes and reads plain numbers.
#include "marlo110k/numtext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "kernel/digit_groups.h"
#include "kernel/number_token.h"
#include "marlo110k/locale.h"

namespace marlo {
namespace {

constexpr uint32_t kUnbounded = INT32_MAX;
// The whole part of the largest real has 309 digits, and each may get a separator of its own length.
constexpr uint32_t kPlainCharacters = 340;
constexpr uint32_t kLocalCharacters = 4 * kPlainCharacters;
constexpr uint32_t kMostDigits = 9;

// Hands a text over whole or not at all.
uint32_t PutWhole(char16_t* destination, uint32_t size, const char16_t* text, size_t characters) noexcept {
  if (destination == nullptr || size == 0) return 0;
  if (size == 1 || characters >= size) {
    *destination = 0;
    return 0;
  }
  std::copy_n(text, characters, destination);
  destination[characters] = 0;
  return static_cast<uint32_t>(characters);
}

// `digits` below 0 for a whole number.
uint32_t PutPlain(char16_t* destination, uint32_t size, const char* plain, size_t characters, bool localised,
                  int32_t digits) noexcept {
  char16_t text[kPlainCharacters];
  std::copy_n(plain, characters, text);
  text[characters] = 0;
  if (!localised) return PutWhole(destination, size, text, characters);
  char16_t local[kLocalCharacters];
  const int32_t written = digits < 0 ? ZrFormatNumber(text, local, kLocalCharacters)
                                     : ZrFormatGroupDecimalNumber(text, local, kLocalCharacters, digits);
  return PutWhole(destination, size, local, static_cast<size_t>(written));
}

template <class Number>
uint32_t PutWholeNumber(Number value, char16_t* destination, uint32_t size, bool localised) noexcept {
  char plain[kPlainCharacters];
  const auto characters = static_cast<size_t>(std::to_chars(plain, plain + kPlainCharacters, value).ptr - plain);
  return PutPlain(destination, size, plain, characters, localised, -1);
}

// Cuts after adding half a unit, on the magnitude, so that halves round away from zero.
uint32_t PutReal(char16_t* destination, uint32_t size, double value, uint32_t digits, bool localised) noexcept {
  if (value == 0 || !std::isfinite(value)) return PutWhole(destination, size, u"0", 1);
  digits = std::min(digits, kMostDigits);
  double scale = 1;
  for (uint32_t i = 0; i < digits; ++i) scale *= 10;
  const double magnitude = std::min(std::fabs(value) + 0.5 / scale, std::numeric_limits<double>::max());
  const double whole = std::floor(magnitude);
  // The fraction's product may round up to the scale itself, which belongs to no digit.
  const auto fraction = static_cast<uint64_t>(std::min((magnitude - whole) * scale, scale - 1));

  char plain[kPlainCharacters];
  char* cursor = plain;
  if (value < 0 && (whole > 0 || fraction > 0)) *cursor++ = '-';
  cursor = std::to_chars(cursor, plain + kPlainCharacters, whole, std::chars_format::fixed, 0).ptr;
  if (digits > 0) {
    *cursor++ = '.';
    uint64_t rest = fraction;
    for (uint32_t i = digits; i > 0; --i, rest /= 10) cursor[i - 1] = static_cast<char>('0' + rest % 10);
    cursor += digits;
  }
  return PutPlain(destination, size, plain, static_cast<size_t>(cursor - plain), localised,
                  static_cast<int32_t>(digits));
}

uint32_t DigitValue(char16_t character) noexcept {
  if (IsDigit(character)) return character - u'0';
  const char16_t lower = character | 0x20;
  return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10u : 16;
}

uint64_t ReadHexadecimal(const char16_t* text, const char16_t** end) noexcept {
  uint64_t value = 0;
  const char16_t* cursor = text;
  if (text != nullptr) {
    cursor = SkipBlanks(text);
    if (cursor[0] == u'0' && (cursor[1] | 0x20) == u'x' && DigitValue(cursor[2]) < 16) cursor += 2;
    if (DigitValue(*cursor) == 16) cursor = text;
    for (; DigitValue(*cursor) < 16; ++cursor) value = value >> 60 != 0 ? UINT64_MAX : value << 4 | DigitValue(*cursor);
  }
  if (end != nullptr) *end = cursor;
  return value;
}

template <class Number>
Number Settle(Number value, const char16_t* end, Number defaultValue, Number minimum, Number maximum,
              const char16_t** endOut) noexcept {
  if (endOut != nullptr) *endOut = end;
  if (value == 0 && end != nullptr && *SkipBlanks(end) != 0) value = defaultValue;
  if (value < minimum) return minimum;
  return value > maximum ? maximum : value;
}

}  // namespace
}  // namespace marlo

using namespace marlo;

uint32_t ZrLongToText(int32_t value, char16_t* destination, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, kUnbounded, localised != 0);
}

uint32_t ZrLongToTextN(int32_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, size, localised != 0);
}

uint32_t ZrLongLongToText(int64_t value, char16_t* destination, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, kUnbounded, localised != 0);
}

uint32_t ZrLongLongToTextN(int64_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, size, localised != 0);
}

uint32_t ZrDWordToText(uint32_t value, char16_t* destination, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, kUnbounded, localised != 0);
}

uint32_t ZrDWordToTextN(uint32_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, size, localised != 0);
}

uint32_t ZrDWordLongToText(uint64_t value, char16_t* destination, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, kUnbounded, localised != 0);
}

uint32_t ZrDWordLongToTextN(uint64_t value, char16_t* destination, uint32_t size, int32_t localised) noexcept {
  return PutWholeNumber(value, destination, size, localised != 0);
}

uint32_t ZrDoubleToText(char16_t* destination, double value, uint32_t digits, int32_t localised) noexcept {
  return PutReal(destination, kUnbounded, value, digits, localised != 0);
}

uint32_t ZrDoubleToTextN(char16_t* destination, uint32_t size, double value, uint32_t digits,
                         int32_t localised) noexcept {
  return PutReal(destination, size, value, digits, localised != 0);
}

uint32_t ZrTextToDWordToken(const char16_t* text, const char16_t** end) noexcept {
  return static_cast<uint32_t>(std::min<uint64_t>(ReadUnsigned(text, NumberForm::kLocale, end), UINT32_MAX));
}

uint64_t ZrTextToDWordLongToken(const char16_t* text, const char16_t** end) noexcept {
  return ReadUnsigned(text, NumberForm::kLocale, end);
}

int32_t ZrTextToLongToken(const char16_t* text, const char16_t** end) noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(ReadSigned(text, NumberForm::kLocale, end), INT32_MIN, INT32_MAX));
}

int64_t ZrTextToLongLongToken(const char16_t* text, const char16_t** end) noexcept {
  return ReadSigned(text, NumberForm::kLocale, end);
}

double ZrTextToDoubleToken(const char16_t* text, const char16_t** end, int32_t localised) noexcept {
  return ReadReal(text, localised != 0 ? NumberForm::kLocale : NumberForm::kPlain, end);
}

uint32_t ZrHexToDWordToken(const char16_t* text, const char16_t** end) noexcept {
  return static_cast<uint32_t>(std::min<uint64_t>(ReadHexadecimal(text, end), UINT32_MAX));
}

uint64_t ZrHexToDWordLongToken(const char16_t* text, const char16_t** end) noexcept {
  return ReadHexadecimal(text, end);
}

uint32_t ZrTextToDWordTokenEx(const char16_t* text, uint32_t defaultValue, uint32_t minimum, uint32_t maximum,
                              const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const uint32_t value = ZrTextToDWordToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

uint64_t ZrTextToDWordLongTokenEx(const char16_t* text, uint64_t defaultValue, uint64_t minimum, uint64_t maximum,
                                  const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const uint64_t value = ZrTextToDWordLongToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

int32_t ZrTextToLongTokenEx(const char16_t* text, int32_t defaultValue, int32_t minimum, int32_t maximum,
                            const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const int32_t value = ZrTextToLongToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

int64_t ZrTextToLongLongTokenEx(const char16_t* text, int64_t defaultValue, int64_t minimum, int64_t maximum,
                                const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const int64_t value = ZrTextToLongLongToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

double ZrTextToDoubleTokenEx(const char16_t* text, double defaultValue, double minimum, double maximum,
                             const char16_t** end, int32_t localised) noexcept {
  const char16_t* rest = nullptr;
  const double value = ZrTextToDoubleToken(text, &rest, localised);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

uint32_t ZrHexToDWordTokenEx(const char16_t* text, uint32_t defaultValue, uint32_t minimum, uint32_t maximum,
                             const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const uint32_t value = ZrHexToDWordToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}

uint64_t ZrHexToDWordLongTokenEx(const char16_t* text, uint64_t defaultValue, uint64_t minimum, uint64_t maximum,
                                 const char16_t** end) noexcept {
  const char16_t* rest = nullptr;
  const uint64_t value = ZrHexToDWordLongToken(text, &rest);
  return Settle(value, rest, defaultValue, minimum, maximum, end);
}
