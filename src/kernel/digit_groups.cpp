// SPDX-License-Identifier: Apache-2.0
// Finds the groups of digits of a position.
#include "kernel/digit_groups.h"

namespace marlo {
namespace {

// Blanks and the letters of a unit are no separators; everything else that isn't a digit is one.
bool IsSeparator(char16_t character) noexcept {
  const char16_t lower = character | 0x20;
  return character != 0 && !IsDigit(character) && !IsBlank(character) && !(lower >= u'a' && lower <= u'z');
}

const char16_t* SkipSign(const char16_t* text, const tZRLOCALESIGN* sign) noexcept {
  if (sign == nullptr) return text;
  for (uint32_t i = 0; i < sign->length; ++i) {
    if (text[i] != sign->text[i]) return text;
  }
  return text + sign->length;
}

}  // namespace

DigitGroups::DigitGroups(const char16_t* text, Rules rules) noexcept
    : rules_(rules), cursor_(text), runEnd_(text), digitsEnd_(text) {
  for (const char16_t* at = text; *at != 0; ++at) {
    if (IsDigit(*at)) {
      digitsEnd_ = at + 1;
      anyDigits_ = true;
    } else if (!anyDigits_) {
      startsWithSeparator_ |= IsSeparator(*at);
    }
  }
}

const char16_t* DigitGroups::EndOfRun(const char16_t* start) const noexcept {
  const char16_t* end = start;
  for (;;) {
    while (IsDigit(*end)) ++end;
    const char16_t* const next = SkipSign(end, rules_.thousandsSeparator);
    if (next == end || !IsDigit(*next)) return end;
    end = next;
  }
}

bool DigitGroups::Next(DigitGroup* group) noexcept {
  if (!anyDigits_) return false;
  if (cursor_ < digitsEnd_) {
    while (!IsDigit(*cursor_)) ++cursor_;
    if (runEnd_ <= cursor_) runEnd_ = EndOfRun(cursor_);
    auto characters = static_cast<uint32_t>(runEnd_ - cursor_);
    if (rules_.pairs) characters = characters % 2 != 0 ? 1 : 2;
    *group = {cursor_, characters};
    cursor_ += characters;
    return true;
  }
  if (!rules_.trailingZeros) return false;
  while (*cursor_ != 0 && !IsSeparator(*cursor_)) ++cursor_;
  if (*cursor_ == 0) return false;
  *group = {cursor_++, 0};
  return true;
}

const char16_t* DigitGroups::End() noexcept {
  const char16_t* end = cursor_;
  if (!anyDigits_) return end;
  DigitGroups rest = *this;
  DigitGroup group;
  if (rest.Next(&group)) return group.start;
  // Blanks go with the text; what else stands behind the last group isn't read.
  end = SkipBlanks(end);
  return *end == 0 ? end : cursor_;
}

}  // namespace marlo
