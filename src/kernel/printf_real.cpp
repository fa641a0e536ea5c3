// SPDX-License-Identifier: Apache-2.0
// Prints floating-point numbers, exactly and without the C library's locale.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "kernel/number_grouping.h"
#include "kernel/printf_conversion.h"
#include "platform/base/fpu.h"

namespace marlo {
namespace {

constexpr int kMostDecimals = 200;
constexpr int kDefaultDecimals = 6;
constexpr size_t kRealBytes = 640;  // 309 whole digits, the point and 200 decimals fit

/// The digits of a magnitude as the standard conversions write them, in ASCII without a sign.
class RealText {
 public:
  RealText(double magnitude, const Conversion& conversion) noexcept {
    const int precision = conversion.precision < 0 ? kDefaultDecimals : std::min(conversion.precision, kMostDecimals);
    const char16_t type = conversion.type;
    if (!std::isfinite(magnitude)) {
      Take(std::to_chars(text_, text_ + kRealBytes, magnitude));
    } else if (type == u'f') {
      Print(magnitude, std::chars_format::fixed, precision);
    } else if (type == u'e' || type == u'E') {
      Print(magnitude, std::chars_format::scientific, precision);
    } else if (conversion.alternate) {
      PrintGeneralWithZeros(magnitude, std::max(precision, 1));
    } else {
      Print(magnitude, std::chars_format::general, std::max(precision, 1));
    }
    if (conversion.alternate && std::isfinite(magnitude)) AddPoint();
    if (type == u'E' || type == u'G') {
      std::for_each(text_, text_ + bytes_, [](char& c) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
      });
    }
  }

  const char* Data() const noexcept { return text_; }
  size_t Size() const noexcept { return bytes_; }

 private:
  void Take(const std::to_chars_result& result) noexcept { bytes_ = static_cast<size_t>(result.ptr - text_); }
  void Print(double magnitude, std::chars_format format, int precision) noexcept {
    Take(std::to_chars(text_, text_ + kRealBytes, magnitude, format, precision));
  }
  /// "%#g": the shorter of the two forms by the usual rule, with all its digits.
  void PrintGeneralWithZeros(double magnitude, int digits) noexcept {
    Print(magnitude, std::chars_format::scientific, digits - 1);
    const char* exponentSign = std::find(text_, text_ + bytes_, 'e') + 1;
    int exponent = 0;
    std::from_chars(exponentSign + 1, text_ + bytes_, exponent);
    if (*exponentSign == '-') exponent = -exponent;
    if (exponent >= -4 && exponent < digits) Print(magnitude, std::chars_format::fixed, digits - 1 - exponent);
  }
  /// "#" wants a decimal point, also where no digit follows it.
  void AddPoint() noexcept {
    char* end = text_ + bytes_;
    if (std::find(text_, end, '.') != end) return;
    char* exponent = std::find(text_, end, 'e');
    std::copy_backward(exponent, end, end + 1);
    *exponent = '.';
    ++bytes_;
  }

  char text_[kRealBytes + 1];
  size_t bytes_ = 0;
};

void PutPlainReal(TextOutput* output, const Conversion& conversion, double value) noexcept {
  // The library's own threads may read denormals as zero; a number's text is the same on all of them.
  const plat::FloatStateGuard guard(plat::kCleanFloatState);
  const RealText text(std::fabs(value), conversion);
  const bool negative = std::signbit(value) && !std::isnan(value);
  const char16_t sign = negative ? u'-' : conversion.plus ? u'+' : conversion.blank ? u' ' : u'\0';
  const size_t characters = text.Size() + (sign != 0 ? 1 : 0);
  const size_t width = std::min<size_t>(conversion.width, kConversionCharacters - 1);
  const size_t padding = width > characters ? width - characters : 0;
  const bool zeroPadded = conversion.zero && !conversion.left && std::isfinite(value);
  if (!conversion.left && !zeroPadded) output->Fill(u' ', padding);
  if (sign != 0) output->Put(sign);
  if (zeroPadded) output->Fill(u'0', padding);
  for (size_t i = 0; i < text.Size(); ++i) output->Put(static_cast<char16_t>(text.Data()[i]));
  if (conversion.left) output->Fill(u' ', padding);
}

}  // namespace

void PutReal(TextOutput* output, const Conversion& conversion, double value) noexcept {
  char16_t buffer[kConversionCharacters];
  TextOutput plain(buffer, kConversionCharacters);
  PutPlainReal(&plain, conversion, value);
  const size_t characters = plain.End();
  if (plain.ItemCut()) output->NoteCut();

  const bool isExponent = std::any_of(buffer, buffer + characters, [](char16_t c) { return c == u'e' || c == u'E'; });
  const bool isGeneral = conversion.type == u'g' || conversion.type == u'G';
  if (!conversion.localised || isExponent || !(isGeneral || conversion.type == u'f')) {
    output->Put(buffer, characters);
  } else {
    PutNumber(output, buffer, {!isGeneral, kDigitsOfText});
  }
}

}  // namespace marlo
