// SPDX-License-Identifier: Apache-2.0
// Numbers and colours of any characters: the reading stops within the text, and a whole number that was read comes
// back from its own text.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "marlo110k/numtext.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const size_t characters = bytes / sizeof(char16_t);
  std::vector<char16_t> text(characters + 1);
  if (characters > 0) std::memcpy(text.data(), data, characters * sizeof(char16_t));
  const char16_t* end = nullptr;
  const auto require = [&](bool holds) { Require(holds && end >= text.data() && end <= text.data() + characters); };

  const int64_t whole = ZrTextToLongLongToken(text.data(), &end);
  require(true);
  char16_t shown[400];
  ZrLongLongToTextN(whole, shown, 64, 1);
  Require(ZrTextToLongLongToken(shown, nullptr) == whole);
  const uint64_t magnitude = ZrTextToDWordLongToken(text.data(), &end);
  require(whole >= 0 || magnitude == 0);
  for (const int32_t localised : {0, 1}) {
    const double real = ZrTextToDoubleToken(text.data(), &end, localised);
    require(std::isfinite(real));
    Require(ZrDoubleToTextN(shown, 400, real, 9, localised) > 0);
  }
  const uint64_t hexadecimal = ZrHexToDWordLongToken(text.data(), &end);
  require(ZrHexToDWordToken(text.data(), nullptr) == (hexadecimal > UINT32_MAX ? UINT32_MAX : hexadecimal));
  const int32_t held = ZrTextToLongTokenEx(text.data(), 5, -9, 9, &end);
  require(held >= -9 && held <= 9);
  const uint32_t color = ZrTextToColorrefTokenEx(text.data(), 1, &end);
  require(end != text.data() || color == 1);
  return 0;
}
