// SPDX-License-Identifier: Apache-2.0
// Reads conversions and prints integers, characters and texts by them.
#include "kernel/printf_conversion.h"

#include <algorithm>

#include "kernel/number_grouping.h"
#include "platform/base/codepage.h"

namespace marlo {
namespace {

constexpr uint32_t kMaximumNumber = 65535;  // of a width or precision; far beyond every buffer

uint32_t ReadNumber(const char16_t*& cursor, const char16_t* end) noexcept {
  uint32_t value = 0;
  for (; cursor != end && *cursor >= u'0' && *cursor <= u'9'; ++cursor) {
    value = std::min<uint32_t>(value * 10 + (*cursor - u'0'), kMaximumNumber);
  }
  return value;
}

bool ReadFlag(char16_t character, Conversion* conversion) noexcept {
  switch (character) {
    case u'-':
      return conversion->left = true;
    case u'+':
      return conversion->plus = true;
    case u' ':
      return conversion->blank = true;
    case u'#':
      return conversion->alternate = true;
    case u'0':
      return conversion->zero = true;
    default:
      return false;
  }
}

/// Reads "h", "hh", "l", "ll", "I32", "I64" or "I"; anything else is passed over.
void ReadSize(const char16_t*& cursor, const char16_t* end, Conversion* conversion) noexcept {
  const char16_t letter = *cursor++;
  const bool doubled = cursor != end && *cursor == letter;
  switch (letter) {
    case u'h':
      conversion->narrow = true;
      conversion->size = doubled ? ArgumentSize::kChar : ArgumentSize::kShort;
      break;
    case u'l':
      // A plain "l" is the 32-bit long of the formats' own world.
      conversion->size = doubled ? ArgumentSize::kWide : ArgumentSize::kInt;
      break;
    case u'I':
      conversion->size = ArgumentSize::kWide;
      if (end - cursor >= 2 && cursor[0] == u'3' && cursor[1] == u'2') {
        conversion->size = ArgumentSize::kInt;
        cursor += 2;
      } else if (end - cursor >= 2 && cursor[0] == u'6' && cursor[1] == u'4') {
        cursor += 2;
      }
      return;
    default:
      return;
  }
  if (doubled) ++cursor;
}

uint64_t Truncated(const Conversion& conversion, uint64_t value) noexcept {
  switch (conversion.size) {
    case ArgumentSize::kChar:
      return static_cast<uint8_t>(value);
    case ArgumentSize::kShort:
      return static_cast<uint16_t>(value);
    case ArgumentSize::kInt:
      return static_cast<uint32_t>(value);
    default:
      return value;
  }
}

int64_t Signed(const Conversion& conversion, uint64_t value) noexcept {
  switch (conversion.size) {
    case ArgumentSize::kChar:
      return static_cast<int8_t>(value);
    case ArgumentSize::kShort:
      return static_cast<int16_t>(value);
    case ArgumentSize::kInt:
      return static_cast<int32_t>(value);
    default:
      return static_cast<int64_t>(value);
  }
}

/// An integer taken apart into what is in front of its digits and the digits.
struct IntegerText {
  static constexpr size_t kMostDigits = 22;  // 64 bits in octal
  char16_t prefix[2];
  size_t prefixCharacters = 0;
  char16_t digits[kMostDigits];
  size_t start = kMostDigits;

  void SetDigits(uint64_t value, uint32_t base, bool upperCase) noexcept {
    const char16_t* alphabet = upperCase ? u"0123456789ABCDEF" : u"0123456789abcdef";
    if (base == 10) {
      // Most numbers on a screen are small and decimal, and 32-bit division is cheap.
      while (value > UINT32_MAX) {
        digits[--start] = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
      }
      uint32_t low = static_cast<uint32_t>(value);
      do {
        digits[--start] = static_cast<char16_t>(u'0' + low % 10);
        low /= 10;
      } while (low != 0);
      return;
    }
    do {
      digits[--start] = alphabet[value % base];
      value /= base;
    } while (value != 0);
  }
  size_t Count() const noexcept { return kMostDigits - start; }
  void SetSign(const Conversion& conversion, bool negative) noexcept {
    if (negative)
      prefix[prefixCharacters++] = u'-';
    else if (conversion.plus)
      prefix[prefixCharacters++] = u'+';
    else if (conversion.blank)
      prefix[prefixCharacters++] = u' ';
  }
};

uint64_t Magnitude(int64_t value) noexcept {
  return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

size_t PaddingOf(const Conversion& conversion, size_t characters) noexcept {
  const size_t width = std::min<size_t>(conversion.width, kConversionCharacters - 1);
  return width > characters ? width - characters : 0;
}

void PutPlainInteger(TextOutput* output, const Conversion& conversion, uint64_t value) noexcept {
  IntegerText text;
  switch (conversion.type) {
    case u'u':
      text.SetDigits(Truncated(conversion, value), 10, false);
      break;
    case u'o':
      text.SetDigits(Truncated(conversion, value), 8, false);
      break;
    case u'x':
    case u'X':
      text.SetDigits(Truncated(conversion, value), 16, conversion.type == u'X');
      if (conversion.alternate && Truncated(conversion, value) != 0) {
        text.prefix[text.prefixCharacters++] = u'0';
        text.prefix[text.prefixCharacters++] = conversion.type;
      }
      break;
    default:
      text.SetDigits(Magnitude(Signed(conversion, value)), 10, false);
      text.SetSign(conversion, Signed(conversion, value) < 0);
      break;
  }
  size_t digits = text.Count();
  if (conversion.precision == 0 && Truncated(conversion, value) == 0) digits = 0;
  size_t zeros = 0;
  if (conversion.precision > 0) {
    const size_t wanted = std::min<size_t>(static_cast<size_t>(conversion.precision), kConversionCharacters - 3);
    if (wanted > digits) zeros = wanted - digits;
  }
  const bool octalNeedsZero = digits == 0 || text.digits[text.start] != u'0';
  if (conversion.type == u'o' && conversion.alternate && zeros == 0 && octalNeedsZero) zeros = 1;
  size_t padding = PaddingOf(conversion, text.prefixCharacters + zeros + digits);
  if (conversion.zero && !conversion.left && conversion.precision < 0) {
    zeros += padding;
    padding = 0;
  }
  if (!conversion.left) output->Fill(u' ', padding);
  output->Put(text.prefix, text.prefixCharacters);
  output->Fill(u'0', zeros);
  output->Put(text.digits + text.start, digits);
  if (conversion.left) output->Fill(u' ', padding);
}

/// Prints a count of 10^-precision parts in plain form.
void PutFixedPoint(TextOutput* output, const Conversion& conversion, int32_t value) noexcept {
  constexpr size_t kMostDecimals = 200;
  const size_t decimals = std::min<size_t>(static_cast<size_t>(conversion.precision), kMostDecimals);
  IntegerText text;
  text.SetDigits(Magnitude(value), 10, false);
  text.SetSign(conversion, value < 0);
  const size_t digits = text.Count();
  const size_t whole = digits > decimals ? digits - decimals : 0;
  const size_t characters = text.prefixCharacters + std::max<size_t>(whole, 1) + 1 + decimals;
  const size_t padding = PaddingOf(conversion, characters);
  const bool zeroPadded = conversion.zero && !conversion.left;
  if (!conversion.left && !zeroPadded) output->Fill(u' ', padding);
  output->Put(text.prefix, text.prefixCharacters);
  if (zeroPadded) output->Fill(u'0', padding);
  if (whole == 0) output->Put(u'0');
  output->Put(text.digits + text.start, whole);
  output->Put(u'.');
  output->Fill(u'0', decimals - (digits - whole));
  output->Put(text.digits + text.start + whole, digits - whole);
  if (conversion.left) output->Fill(u' ', padding);
}

/// Prints to a text of its own first, and that by the user's conventions.
template <class Print>
void PutLocalised(TextOutput* output, NumberStyle style, Print print) noexcept {
  char16_t buffer[kConversionCharacters];
  TextOutput plain(buffer, kConversionCharacters);
  print(&plain);
  plain.End();
  if (plain.ItemCut()) output->NoteCut();
  PutNumber(output, buffer, style);
}

constexpr uint32_t kMaximumTextWidth = 1024;

void PutPadding(TextOutput* output, const Conversion& conversion, size_t characters) noexcept {
  const size_t width = std::min(conversion.width, kMaximumTextWidth);
  if (width > characters) output->Fill(conversion.zero && !conversion.left ? u'0' : u' ', width - characters);
}

char16_t FromAnsiByte(char byte) noexcept {
  char16_t character = u'?';
  plat::FromAnsi(&byte, 1, &character, 1);
  return character;
}

template <class Character>
size_t LengthWithin(const Character* text, int32_t precision) noexcept {
  const size_t most = precision < 0 ? SIZE_MAX : static_cast<size_t>(precision);
  size_t characters = 0;
  while (characters < most && text[characters] != 0) ++characters;
  return characters;
}

}  // namespace

Conversion ParseConversion(const char16_t* text, size_t characters, bool localised) noexcept {
  Conversion conversion;
  conversion.localised = localised;
  const char16_t* cursor = text;
  const char16_t* end = text + characters - 1;
  conversion.type = *end;
  while (cursor != end && ReadFlag(*cursor, &conversion)) ++cursor;
  conversion.width = ReadNumber(cursor, end);
  if (cursor != end && *cursor == u'.') {
    ++cursor;
    conversion.precision = static_cast<int32_t>(ReadNumber(cursor, end));
  }
  while (cursor != end) ReadSize(cursor, end, &conversion);
  return conversion;
}

bool IsInteger(const Conversion& conversion) noexcept {
  switch (conversion.type) {
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X':
    case u'z':
      return true;
    default:
      return false;
  }
}

bool IsReal(const Conversion& conversion) noexcept {
  switch (conversion.type) {
    case u'e':
    case u'E':
    case u'f':
    case u'g':
    case u'G':
      return true;
    default:
      return false;
  }
}

void PutInteger(TextOutput* output, const Conversion& conversion, uint64_t value) noexcept {
  if (conversion.type == u'z' && conversion.precision > 0) {
    // Always 32 bits, and the locale's decimal sign under either introducer.
    return PutLocalised(output, {conversion.localised, kDigitsOfText},
                        [&](TextOutput* plain) { PutFixedPoint(plain, conversion, static_cast<int32_t>(value)); });
  }
  const bool isDecimal = conversion.type != u'o' && conversion.type != u'x' && conversion.type != u'X';
  if (!conversion.localised || !isDecimal) return PutPlainInteger(output, conversion, value);
  PutLocalised(output, {true, 0}, [&](TextOutput* plain) { PutPlainInteger(plain, conversion, value); });
}

void PutCharacter(TextOutput* output, const Conversion& conversion, uint32_t value) noexcept {
  const char16_t character = conversion.narrow ? FromAnsiByte(static_cast<char>(value)) : static_cast<char16_t>(value);
  const size_t characters = character != 0 ? 1 : 0;  // a zero would end the text: it is left out
  if (!conversion.left) PutPadding(output, conversion, characters);
  output->Put(&character, characters);
  if (conversion.left) PutPadding(output, conversion, characters);
}

void PutString(TextOutput* output, const Conversion& conversion, const void* text) noexcept {
  const bool narrow = conversion.narrow && text != nullptr;
  const char* bytes = static_cast<const char*>(text);
  const char16_t* wide = text != nullptr ? static_cast<const char16_t*>(text) : u"(null)";
  const bool isPlain = conversion.width == 0 && conversion.precision < 0;
  if (isPlain && !narrow) return output->Put(wide);
  const size_t characters =
      narrow ? LengthWithin(bytes, conversion.precision) : LengthWithin(wide, conversion.precision);
  if (!conversion.left) PutPadding(output, conversion, characters);
  if (narrow) {
    for (size_t i = 0; i < characters; ++i) output->Put(FromAnsiByte(bytes[i]));
  } else {
    output->Put(wide, characters);
  }
  if (conversion.left) PutPadding(output, conversion, characters);
}

}  // namespace marlo
