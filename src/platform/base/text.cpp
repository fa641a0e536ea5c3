// SPDX-License-Identifier: Apache-2.0
// UTF-16 text: ASCII by hand, the rest of case folding by the Unicode tables of ICU.
#include "platform/base/text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <limits>

namespace plat {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Takes one code point off the text; an unpaired surrogate stands for itself.
char32_t NextCodePoint(const char16_t*& text) {
  const char32_t first = *text++;
  if (IsHighSurrogate(first) && IsLowSurrogate(*text)) {
    return 0x10000 + ((first - 0xD800) << 10) + (static_cast<char32_t>(*text++) - 0xDC00);
  }
  return first;
}

char32_t Fold(char32_t point) {
  if (point < 0x80) return point >= 'A' && point <= 'Z' ? point + 0x20 : point;
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(point), U_FOLD_CASE_DEFAULT));
}

void AppendUtf8(std::string& out, char32_t point) {
  if (point < 0x80) {
    out.push_back(static_cast<char>(point));
  } else if (point < 0x800) {
    out.push_back(static_cast<char>(0xC0 | point >> 6));
    out.push_back(static_cast<char>(0x80 | (point & 0x3F)));
  } else if (point < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | point >> 12));
    out.push_back(static_cast<char>(0x80 | (point >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (point & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | point >> 18));
    out.push_back(static_cast<char>(0x80 | (point >> 12 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (point >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (point & 0x3F)));
  }
}

/// Takes one sequence off the text: its code point, or U+FFFD for the longest part that could have begun one.
char32_t NextUtf8(const unsigned char*& text) {
  const unsigned char lead = *text++;
  if (lead < 0x80) return lead;
  if (lead < 0xC2 || lead > 0xF4) return kReplacement;
  const int followers = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  // The second byte's range keeps out overlong forms, surrogates and values above U+10FFFF.
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead == 0xE0) low = 0xA0;
  if (lead == 0xED) high = 0x9F;
  if (lead == 0xF0) low = 0x90;
  if (lead == 0xF4) high = 0x8F;
  char32_t point = lead & (0x3F >> followers);
  for (int follower = 0; follower < followers; ++follower) {
    if (*text < low || *text > high) return kReplacement;
    point = point << 6 | (*text++ & 0x3F);
    low = 0x80;
    high = 0xBF;
  }
  return point;
}

}  // namespace

size_t TextLength(const char16_t* text) noexcept {
  size_t length = 0;
  if (text != nullptr) {
    while (text[length] != 0) ++length;
  }
  return length;
}

size_t CopyText(char16_t* buffer, size_t capacity, const char16_t* text) noexcept {
  if (buffer == nullptr || capacity == 0) return 0;
  size_t written = 0;
  if (text != nullptr) {
    while (written + 1 < capacity && text[written] != 0) {
      buffer[written] = text[written];
      ++written;
    }
  }
  buffer[written] = 0;
  return written;
}

int CompareText(const char16_t* left, const char16_t* right) noexcept {
  if (left == nullptr || right == nullptr) return (left != nullptr) - (right != nullptr);
  while (*left == *right && *left != 0) {
    ++left;
    ++right;
  }
  return static_cast<int>(*left) - static_cast<int>(*right);
}

int CompareTextNoCase(const char16_t* left, const char16_t* right) noexcept {
  if (left == nullptr || right == nullptr) return (left != nullptr) - (right != nullptr);
  for (;;) {
    if (*left == *right && *left < 0x80) {
      if (*left == 0) return 0;
      ++left;
      ++right;
      continue;
    }
    const char32_t a = Fold(NextCodePoint(left));
    const char32_t b = Fold(NextCodePoint(right));
    // A terminator differs from everything else, so no walk passes an end.
    if (a != b) return a < b ? -1 : 1;
  }
}

char16_t UpperCase(char16_t character) noexcept {
  if (character < 0x80) {
    return character >= 'a' && character <= 'z' ? static_cast<char16_t>(character - 0x20) : character;
  }
  const UChar32 upper = u_toupper(character);
  return upper <= 0xFFFF ? static_cast<char16_t>(upper) : character;
}

std::string ToUtf8(const char16_t* text) {
  std::string out;
  if (text == nullptr) return out;
  out.reserve(TextLength(text));
  while (*text != 0) {
    const char32_t point = NextCodePoint(text);
    AppendUtf8(out, IsHighSurrogate(point) || IsLowSurrogate(point) ? kReplacement : point);
  }
  return out;
}

std::u16string FromUtf8(const char* text) {
  std::u16string out;
  if (text == nullptr) return out;
  const unsigned char* next = reinterpret_cast<const unsigned char*>(text);
  while (*next != 0) {
    const char32_t point = NextUtf8(next);
    if (point < 0x10000) {
      out.push_back(static_cast<char16_t>(point));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
    }
  }
  return out;
}

int32_t MulDiv(int32_t value, int32_t multiplier, int32_t divisor) noexcept {
  if (divisor == 0) return -1;
  const int64_t product = static_cast<int64_t>(value) * multiplier;
  const int64_t dividend = product < 0 ? -product : product;
  const int64_t by = divisor < 0 ? -static_cast<int64_t>(divisor) : divisor;
  const int64_t magnitude = (dividend + by / 2) / by;
  const int64_t result = (product < 0) != (divisor < 0) ? -magnitude : magnitude;
  if (result < std::numeric_limits<int32_t>::min() || result > std::numeric_limits<int32_t>::max()) return -1;
  return static_cast<int32_t>(result);
}

}  // namespace plat
