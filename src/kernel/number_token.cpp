// SPDX-License-Identifier: Apache-2.0
// Cleans the text of a number and reads it.
#include "kernel/number_token.h"

#include <charconv>
#include <limits>

#include "kernel/digit_groups.h"
#include "kernel/internationals.h"

namespace marlo {
namespace {

constexpr uint32_t kTokenCharacters = 64;

bool StartsWith(const char16_t* text, const tZRLOCALESIGN& sign) noexcept {
  for (uint32_t i = 0; i < sign.length; ++i) {
    if (text[i] != sign.text[i]) return false;
  }
  return sign.length != 0;
}

// A number reduced to "-", digits and ".". It ends at the first character of another kind, at a second decimal sign
// and where the token is full.
struct Token {
  char characters[kTokenCharacters];
  uint32_t length = 0;
  const char16_t* end;

  Token(const char16_t* text, NumberForm form, bool decimals) noexcept {
    const bool ofLocale = form == NumberForm::kLocale;
    end = SkipBlanks(text);
    const char16_t* const start = end;
    bool anyDigits = false;
    bool anyDecimal = false;
    while (length < kTokenCharacters - 1) {
      if (IsDigit(*end)) {
        Put(static_cast<char>('0' + (*end - u'0')), 1);
        anyDigits = true;
      } else if (*end == u'-' && end == start) {
        Put('-', 1);
      } else if (ofLocale && StartsWith(end, internationals.thousandsSeparator)) {
        end += internationals.thousandsSeparator.length;
      } else if (!ofLocale && *end == u',') {
        ++end;
      } else if (decimals && !anyDecimal && ofLocale && StartsWith(end, internationals.decimalSeparator)) {
        Put('.', internationals.decimalSeparator.length);
        anyDecimal = true;
      } else if (decimals && !anyDecimal && !ofLocale && *end == u'.') {
        Put('.', 1);
        anyDecimal = true;
      } else {
        break;
      }
    }
    // Signs and separators alone are no number, and nothing of them is used.
    if (!anyDigits) {
      length = 0;
      end = text;
    }
  }

 private:
  void Put(char character, uint32_t used) noexcept {
    characters[length++] = character;
    end += used;
  }
};

void StoreEnd(const char16_t** end, const char16_t* value) noexcept {
  if (end != nullptr) *end = value;
}

}  // namespace

WholeNumber ReadWhole(const char16_t* text, NumberForm form, const char16_t** end) noexcept {
  if (text == nullptr) {
    StoreEnd(end, nullptr);
    return {0, false};
  }
  const Token token(text, form, false);
  StoreEnd(end, token.end);
  WholeNumber number{0, token.length > 0 && token.characters[0] == '-'};
  const char* const last = token.characters + token.length;
  const auto result = std::from_chars(token.characters + number.negative, last, number.magnitude);
  if (result.ec == std::errc::result_out_of_range) number.magnitude = std::numeric_limits<uint64_t>::max();
  return number;
}

int64_t ReadSigned(const char16_t* text, NumberForm form, const char16_t** end) noexcept {
  const WholeNumber number = ReadWhole(text, form, end);
  constexpr uint64_t kMost = INT64_MAX;
  if (number.negative) return number.magnitude > kMost ? INT64_MIN : -static_cast<int64_t>(number.magnitude);
  return number.magnitude > kMost ? INT64_MAX : static_cast<int64_t>(number.magnitude);
}

uint64_t ReadUnsigned(const char16_t* text, NumberForm form, const char16_t** end) noexcept {
  const WholeNumber number = ReadWhole(text, form, end);
  return number.negative ? 0 : number.magnitude;
}

double ReadReal(const char16_t* text, NumberForm form, const char16_t** end) noexcept {
  if (text == nullptr) {
    StoreEnd(end, nullptr);
    return 0;
  }
  const Token token(text, form, true);
  StoreEnd(end, token.end);
  // At most 63 digits: no exponent, so no overflow.
  double value = 0;
  std::from_chars(token.characters, token.characters + token.length, value, std::chars_format::fixed);
  return value;
}

}  // namespace marlo
