// SPDX-License-Identifier: Apache-2.0
// Strict decoding of UTF-8.
#include "unicode.h"

#include <cstdint>

#include "errors.h"

namespace host {

std::u16string ToUtf16(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  size_t index = 0;
  while (index < text.size()) {
    const auto lead = static_cast<uint8_t>(text[index++]);
    const int following = lead < 0x80                   ? 0
                          : lead >= 0xC2 && lead < 0xE0 ? 1
                          : lead >= 0xE0 && lead < 0xF0 ? 2
                          : lead >= 0xF0 && lead < 0xF5 ? 3
                                                        : -1;
    char32_t character = following <= 0 ? lead : lead & (0x3Fu >> following);
    bool sound = following >= 0 && index + static_cast<size_t>(following) <= text.size();
    for (int count = 0; sound && count < following; ++count) {
      const auto next = static_cast<uint8_t>(text[index++]);
      sound = (next & 0xC0) == 0x80;
      character = character << 6 | (next & 0x3Fu);
    }
    // The shortest form only, no surrogates, nothing past the last plane.
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    sound =
        sound && character >= kLeast[following] && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
    if (!sound) throw UsageError("A name isn't well-formed UTF-8.");
    if (character < 0x10000) {
      result.push_back(static_cast<char16_t>(character));
    } else {
      result.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
      result.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
    }
  }
  return result;
}

std::string ToUtf8(std::u16string_view text) {
  std::string result;
  for (size_t index = 0; index < text.size(); ++index) {
    char32_t character = text[index];
    if (character >= 0xD800 && character <= 0xDFFF) {
      const bool paired = character < 0xDC00 && index + 1 < text.size() && (text[index + 1] & 0xFC00) == 0xDC00;
      character = paired ? 0x10000 + ((character & 0x3FF) << 10) + (text[++index] & 0x3FFu) : 0xFFFD;
    }
    // The lead byte tells how many bytes of six bits follow.
    const int following = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    result.push_back(static_cast<char>(kLead[following] | character >> (6 * following)));
    for (int left = following - 1; left >= 0; --left) {
      result.push_back(static_cast<char>(0x80 | ((character >> (6 * left)) & 0x3F)));
    }
  }
  return result;
}

}  // namespace host
