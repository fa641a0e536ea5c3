// SPDX-License-Identifier: Apache-2.0
// Groups of digits in a position as a user types it: whatever stands between the groups separates them.
#pragma once

#include <cstdint>

#include "marlo110k/locale.h"

namespace marlo {

inline bool IsDigit(char16_t character) noexcept { return character >= u'0' && character <= u'9'; }
inline bool IsBlank(char16_t character) noexcept {
  return character == u' ' || (character >= u'\t' && character <= u'\r') || character == u'\u00A0';
}
inline const char16_t* SkipBlanks(const char16_t* text) noexcept {
  while (IsBlank(*text)) ++text;
  return text;
}

struct DigitGroup {
  const char16_t* start;  ///< First digit, or the separator that stands for a zero.
  uint32_t characters;    ///< 0 for a group that a separator at the end stands for.

  /// The number, held below 10^12, so that hours in milliseconds stay within 64 bits.
  int64_t Value() const noexcept {
    constexpr int64_t kMost = 999'999'999'999;
    int64_t value = 0;
    for (uint32_t i = 0; i < characters && value <= kMost; ++i) {
      if (IsDigit(start[i])) value = value * 10 + (start[i] - u'0');
    }
    return value < kMost ? value : kMost;
  }
};

/// Reads groups from left to right.
class DigitGroups {
 public:
  /// What becomes of separators behind the last digit, and of long groups.
  struct Rules {
    bool trailingZeros;  ///< Each separator behind the last digit is one more group, a zero.
    bool pairs;          ///< A group is split every two digits, counted from its end.
    const tZRLOCALESIGN* thousandsSeparator = nullptr;  ///< Between two digits, it belongs to their group.
  };

  DigitGroups(const char16_t* text, Rules rules) noexcept;

  /// @return false when there is no group left.
  bool Next(DigitGroup* group) noexcept;
  /// The first character that no group has used: the end of the text once all are read and only separators are left,
  /// the start when there is no digit at all.
  const char16_t* End() noexcept;
  /// True when a separator stood in front of the first group.
  bool StartsWithSeparator() const noexcept { return startsWithSeparator_; }

 private:
  const char16_t* EndOfRun(const char16_t* start) const noexcept;

  Rules rules_;
  const char16_t* cursor_;
  const char16_t* runEnd_;     ///< Of the run of digits that is being split.
  const char16_t* digitsEnd_;  ///< Behind the last digit of the text; the start of a text without digits.
  bool anyDigits_ = false;
  bool startsWithSeparator_ = false;
};

}  // namespace marlo
