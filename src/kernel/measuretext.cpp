// SPDX-License-Identifier: Apache-2.0
// Writes and reads colours, levels and sizes.
#include <algorithm>
#include <cmath>

#include "kernel/digit_groups.h"
#include "kernel/number_token.h"
#include "kernel/strings.h"
#include "kernel/time_arithmetic.h"
#include "marlo110k/numtext.h"
#include "marlo110k/printf.h"

namespace marlo {
namespace {

// ---- Colours

constexpr uint32_t kMostColor = 0xFFFFFF;

bool ReadPart(const char16_t** cursor, char16_t closing, uint32_t* part) noexcept {
  const char16_t* at = SkipBlanks(*cursor);
  if (!IsDigit(*at)) return false;
  uint32_t value = 0;
  for (; IsDigit(*at); ++at) value = std::min(value * 10 + (*at - u'0'), 256u);
  at = SkipBlanks(at);
  if (value > 255 || *at != closing) return false;
  *part = value;
  *cursor = at + 1;
  return true;
}

bool ReadRgb(const char16_t** cursor, uint32_t* color) noexcept {
  const char16_t* at = *cursor;
  for (const char16_t letter : {u'r', u'g', u'b'}) {
    if ((*at | 0x20) != letter) return false;
    ++at;
  }
  at = SkipBlanks(at);
  if (*at++ != u'(') return false;
  uint32_t red = 0;
  uint32_t green = 0;
  uint32_t blue = 0;
  if (!ReadPart(&at, u',', &red) || !ReadPart(&at, u',', &green) || !ReadPart(&at, u')', &blue)) return false;
  *color = red | green << 8 | blue << 16;
  *cursor = at;
  return true;
}

// Six digits, red first.
bool ReadHash(const char16_t** cursor, uint32_t* color) noexcept {
  const char16_t* end = nullptr;
  const uint32_t value = ZrHexToDWordToken(*cursor + 1, &end);
  if (end != *cursor + 7 || IsBlank((*cursor)[1]) || ((*cursor)[2] | 0x20) == u'x') return false;
  *color = __builtin_bswap32(value) >> 8;
  *cursor = end;
  return true;
}

bool ReadColor(const char16_t** cursor, uint32_t* color) noexcept {
  const char16_t* start = SkipBlanks(*cursor);
  const char16_t* end = start;
  bool read = false;
  if (*start == u'#') {
    read = ReadHash(&end, color);
  } else if (start[0] == u'0' && (start[1] | 0x20) == u'x') {
    *color = ZrHexToDWordToken(start, &end);
    read = end != start;
  } else if (IsDigit(*start)) {
    *color = static_cast<uint32_t>(std::min<uint64_t>(ReadUnsigned(start, NumberForm::kPlain, &end), UINT32_MAX));
    read = true;
  } else {
    read = ReadRgb(&end, color);
  }
  if (read) *cursor = end;
  return read;
}

constexpr uint32_t kColorCharacters = 17;  // "RGB(255,255,255)"

void PutColor(char16_t (&text)[kColorCharacters], uint32_t color, uint32_t form) noexcept {
  const uint32_t red = color & 0xFF;
  const uint32_t green = color >> 8 & 0xFF;
  const uint32_t blue = color >> 16 & 0xFF;
  if (color <= kMostColor && form == ZRCOLOR_RGB) {
    ZrPrintF(text, u"RGB(%d,%d,%d)", red, green, blue);
  } else if (color <= kMostColor && form == ZRCOLOR_HASH) {
    ZrPrintF(text, u"#%02x%02x%02x", red, green, blue);
  } else {
    // "#" leaves 0 without its prefix.
    ZrPrintF(text, color != 0 ? u"%#010x" : u"0x00000000", color);
  }
}

// ---- Levels

constexpr uint32_t kLevelCharacters = 24;
constexpr uint32_t kMostDecimals = 9;

// "$.Xz" or "$.Xf" with the digit in its place.
struct DecimalFormat {
  char16_t text[5];
  DecimalFormat(uint32_t decimals, char16_t conversion) noexcept
      : text{u'$', u'.', static_cast<char16_t>(u'0' + std::min(decimals, kMostDecimals)), conversion, 0} {}
};

template <class Value>
const char16_t* PutLevel(const char16_t* format, Value value, const char16_t* label) noexcept {
  char16_t* text = ZrGetTempStringBuffer(KernelLanguage(), kLevelCharacters);
  if (text == nullptr) return KernelText(Text::kLevelFailed);
  uint32_t written = 0;
  ZrCchPrintF(text, kLevelCharacters, &written, format, value);
  if (label != nullptr) ZrCchPrintF(text + written, kLevelCharacters - written, nullptr, u"%s", label);
  return text;
}

const char16_t* UnitLabel(int32_t withUnit) noexcept {
  return withUnit != 0 ? KernelText(Text::kLevelDecibels) : nullptr;
}

// ---- Sizes

struct SizeUnit {
  uint64_t below;
  uint32_t shift;
  Text text;
};
// Each row ends where the number would need a fourth digit.
constexpr SizeUnit kSizeUnits[] = {
    {0xF9C00, 10, Text::kSizeKilobytes},           {0x3E700000, 20, Text::kSizeMegabytes},
    {0xF9C0000000, 30, Text::kSizeGigabytes},      {0x3E70000000000, 40, Text::kSizeTerabytes},
    {0xF9C000000000000, 50, Text::kSizePetabytes}, {0x7000000000000000, 60, Text::kSizeExabytes},
};
constexpr int64_t kLeastDivided = 999;

// What is added keeps the last digit through the print.
uint32_t PutSizeNumber(char16_t* text, uint32_t characters, double number) noexcept {
  uint32_t written = 0;
  if (number >= 100) {
    ZrCchPrintF(text, characters, &written, u"$.0f", std::floor(number));
    return written;
  }
  const double cut = number >= 10 ? std::floor(number * 10) / 10 + 0.01 : std::floor(number * 100) / 100 + 0.001;
  ZrCchPrintF(text, characters, &written, u"$.4g", cut);
  const uint32_t most = text[0] == u'.' ? 3 : 4;
  if (written > most) text[written = most] = 0;
  return written;
}

}  // namespace
}  // namespace marlo

using namespace marlo;

uint32_t ZrTextToColorrefToken(const char16_t* text, const char16_t** end) noexcept {
  return ZrTextToColorrefTokenEx(text, kZrNoColorref, end);
}

uint32_t ZrTextToColorrefTokenEx(const char16_t* text, uint32_t defaultColor, const char16_t** end) noexcept {
  uint32_t color = defaultColor;
  if (text != nullptr && !ReadColor(&text, &color)) color = defaultColor;
  if (end != nullptr) *end = text;
  return color;
}

uint32_t ZrTextToColorref(const char16_t* text) noexcept {
  return ZrTextToColorrefTokenEx(text, kZrNoColorref, nullptr);
}

HRESULT ZrColorrefToTextEx(char16_t* destination, uint32_t size, uint32_t* length, uint32_t color,
                           uint32_t form) noexcept {
  char16_t text[kColorCharacters];
  PutColor(text, color, form);
  // As one item, so that a cut anywhere in it is told.
  return ZrCchPrintF(destination, size, length, u"%s", text);
}

uint32_t ZrColorrefToText(char16_t* destination, uint32_t size, uint32_t color, uint32_t form) noexcept {
  uint32_t length = 0;
  ZrColorrefToTextEx(destination, size, &length, color, form);
  return length;
}

const char16_t* ZrGetLabeledStringFixed(int32_t value, uint32_t decimals, int32_t floor,
                                        const char16_t* label) noexcept {
  if (floor != 0 && value <= floor) return KernelText(Text::kLevelSilence);
  return PutLevel(decimals > 0 ? DecimalFormat(decimals, u'z').text : u"$d", value, label);
}

const char16_t* ZrGetLabeledStringFloat(float value, uint32_t decimals, float floor, const char16_t* label) noexcept {
  if (floor != 0 && value <= floor) return KernelText(Text::kLevelSilence);
  if (decimals > 0) return PutLevel(DecimalFormat(decimals, u'f').text, static_cast<double>(value), label);
  const int64_t whole = std::clamp<int64_t>(Truncate(value), INT32_MIN, INT32_MAX);
  return PutLevel(u"$d", static_cast<int32_t>(whole), label);
}

const char16_t* ZrGetdBStringFixed(int32_t value, uint32_t decimals, int32_t floor, int32_t withUnit) noexcept {
  return ZrGetLabeledStringFixed(value, decimals, floor, UnitLabel(withUnit));
}

const char16_t* ZrGetdBStringFloat(float value, uint32_t decimals, float floor, int32_t withUnit) noexcept {
  return ZrGetLabeledStringFloat(value, decimals, floor, UnitLabel(withUnit));
}

uint32_t ZrFormatFileSize(int64_t bytes, char16_t* destination, uint32_t size, int32_t longText) noexcept {
  constexpr uint32_t kNumberCharacters = 32;
  char16_t number[kNumberCharacters];
  if (bytes < kLeastDivided) {
    constexpr uint32_t kBytesCharacters = 6;
    ZrLongLongToTextN(std::max<int64_t>(bytes, 0), number, kBytesCharacters, 1);
    const Text text = longText != 0 ? Text::kSizeBytesLong : Text::kSizeBytes;
    return ZrComposeStr(destination, size, KernelText(text), number);
  }
  for (const SizeUnit& unit : kSizeUnits) {
    if (static_cast<uint64_t>(bytes) >= unit.below) continue;
    PutSizeNumber(number, kNumberCharacters, std::ldexp(static_cast<double>(bytes), -static_cast<int>(unit.shift)));
    return ZrComposeStr(destination, size, KernelText(unit.text), number);
  }
  return ZrComposeStr(destination, size, KernelText(Text::kSizeMore));
}

void ZrFourCCToString(uint32_t code, char16_t* destination) noexcept {
  if (destination == nullptr) return;
  for (int i = 0; i < 4; ++i, code >>= 8) {
    const uint32_t character = code & 0xFF;
    destination[i] = character >= 32 && character < 127 ? static_cast<char16_t>(character) : u'.';
  }
  destination[4] = 0;
}
