// SPDX-License-Identifier: Apache-2.0
// Tables made at compile time from the names of the catalogue's texts, which hold numbers where texts belong to
// numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kernel/catalogue/texts.h"

namespace marlo {

/// Calls `function` with what follows `prefix` in each name that starts with it, and the text.
template <class Function>
constexpr void ForEachName(std::u16string_view prefix, Function function) {
  for (uint32_t i = 0; i < kTexts; ++i) {
    if (kTextNames[i].starts_with(prefix)) function(kTextNames[i].substr(prefix.size()), static_cast<Text>(i));
  }
}

constexpr size_t CountNames(std::u16string_view prefix) {
  size_t count = 0;
  ForEachName(prefix, [&](std::u16string_view, Text) { ++count; });
  return count;
}

/// The number that a name begins with; it ends at the next point.
constexpr uint32_t ParseNumber(std::u16string_view name, uint32_t base) noexcept {
  uint32_t number = 0;
  for (const char16_t c : name.substr(0, name.find(u'.')))
    number = number * base + (c <= u'9' ? c - u'0' : c - u'A' + 10);
  return number;
}

}  // namespace marlo
