// SPDX-License-Identifier: Apache-2.0
// Groups digits and places the decimal sign, on the text of a number so that no digit is lost to arithmetic.
#include "kernel/number_grouping.h"

#include "kernel/internationals.h"
#include "marlo110k/locale.h"

namespace marlo {
namespace {

bool IsDigit(char16_t character) noexcept { return character >= u'0' && character <= u'9'; }

/// The digits of a number, whole part and fraction, with what rounding makes of them.
class Digits {
 public:
  /// @param text starts at the first digit or at the decimal point. @param fractionDigits as in NumberStyle.
  Digits(const char16_t* text, int32_t fractionDigits) noexcept : text_(text) {
    while (IsDigit(text[wholeDigits_])) ++wholeDigits_;
    end_ = wholeDigits_;
    if (text[end_] == u'.') {
      ++end_;
      while (IsDigit(text[end_])) ++end_;
      textFraction_ = end_ - wholeDigits_ - 1;
    }
    fraction_ = fractionDigits < 0 ? textFraction_ : static_cast<size_t>(fractionDigits);
    if (fraction_ < textFraction_ && text[wholeDigits_ + 1 + fraction_] >= u'5') RoundUp();
  }

  bool Any() const noexcept { return wholeDigits_ + textFraction_ > 0; }
  size_t Fraction() const noexcept { return fraction_; }
  const char16_t* End() const noexcept { return text_ + end_; }

  /// Digits of the whole part; one more than the text has when rounding carried out of it.
  size_t Whole() const noexcept { return wholeDigits_ + (carriesOut_ ? 1 : 0); }
  char16_t WholeDigit(size_t index) const noexcept {
    if (!carriesOut_) return Rounded(index);
    return index == 0 ? u'1' : u'0';
  }
  char16_t FractionDigit(size_t index) const noexcept {
    return index < textFraction_ ? Rounded(wholeDigits_ + index) : u'0';
  }

 private:
  /// Digit `index` of the text, the decimal point left out.
  char16_t Raw(size_t index) const noexcept { return text_[index < wholeDigits_ ? index : index + 1]; }
  char16_t Rounded(size_t index) const noexcept {
    if (!roundsUp_ || index < lifted_) return Raw(index);
    return index == lifted_ && !carriesOut_ ? static_cast<char16_t>(Raw(index) + 1) : u'0';
  }
  /// The last kept digit that isn't 9 goes up by one, and the nines behind it become zeros.
  void RoundUp() noexcept {
    roundsUp_ = true;
    for (lifted_ = wholeDigits_ + fraction_; lifted_ > 0; --lifted_) {
      if (Raw(lifted_ - 1) != u'9') {
        --lifted_;
        return;
      }
    }
    carriesOut_ = true;
  }

  const char16_t* text_;
  size_t wholeDigits_ = 0;
  size_t textFraction_ = 0;
  size_t fraction_ = 0;
  size_t end_ = 0;
  size_t lifted_ = 0;  ///< The digit that rounding raises.
  bool roundsUp_ = false;
  bool carriesOut_ = false;
};

void PutWhole(TextOutput* output, const Digits& digits, bool grouped) noexcept {
  const size_t count = digits.Whole();
  const size_t group = grouped ? internationals.grouping : 0;
  if (count == 0 && internationals.leadingZero != 0) output->Put(u'0');
  const bool isBareZero = count == 1 && digits.WholeDigit(0) == u'0';
  if (isBareZero && internationals.leadingZero == 0 && digits.Fraction() > 0) return;
  for (size_t i = 0; i < count; ++i) {
    output->Put(digits.WholeDigit(i));
    const size_t left = count - 1 - i;
    if (group != 0 && left > 0 && left % group == 0) output->Put(internationals.thousandsSeparator.text);
  }
}

/// Copies zeros that have a digit behind them: they are padding and stay out of the groups.
const char16_t* PutPaddingZeros(TextOutput* output, const char16_t* text) noexcept {
  for (; *text == u'0' && IsDigit(text[1]); ++text) output->Put(*text);
  return text;
}

}  // namespace

void PutNumber(TextOutput* output, const char16_t* text, NumberStyle style) noexcept {
  while (*text == u' ' || *text == u'+') output->Put(*text++);
  const bool isNegative = *text == u'-';
  const char16_t* number = isNegative ? text + 1 : text;
  if (!IsDigit(*number) && !(*number == u'.' && IsDigit(number[1]))) {
    output->Put(text);
    return;
  }
  // Every locale gets the same negative sign: a text that was shown can be read again.
  if (isNegative) output->Put(internationals.neutralNegativeSign.text);
  number = PutPaddingZeros(output, number);
  const Digits digits(number, style.fractionDigits);
  PutWhole(output, digits, style.grouped);
  if (digits.Fraction() > 0) {
    output->Put(internationals.decimalSeparator.text);
    for (size_t i = 0; i < digits.Fraction(); ++i) output->Put(digits.FractionDigit(i));
  }
  output->Put(digits.End());
}

namespace {

int32_t WriteNumber(const char16_t* text, char16_t* destination, uint32_t size, NumberStyle style) noexcept {
  if (destination == nullptr || size == 0) return 0;
  TextOutput output(destination, size);
  if (text != nullptr) PutNumber(&output, text, style);
  return static_cast<int32_t>(output.End());
}

}  // namespace
}  // namespace marlo

int32_t ZrFormatNumber(const char16_t* text, char16_t* destination, uint32_t size) noexcept {
  return marlo::WriteNumber(text, destination, size, {true, 0});
}

int32_t ZrFormatDecimalNumber(const char16_t* text, char16_t* destination, uint32_t size) noexcept {
  return marlo::WriteNumber(text, destination, size, {false, marlo::kDigitsOfText});
}

int32_t ZrFormatGroupDecimalNumber(const char16_t* text, char16_t* destination, uint32_t size,
                                   int32_t digits) noexcept {
  if (digits == -2) digits = marlo::kDigitsOfText;
  if (digits < marlo::kDigitsOfText) digits = 0;
  return marlo::WriteNumber(text, destination, size, {true, digits});
}
