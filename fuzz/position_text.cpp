// SPDX-License-Identifier: Apache-2.0
// Positions of any characters in any format: the reading stops within the text, bounds hold, and what was read can be
// shown in a buffer of any size.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "marlo110k/timetext.h"

namespace {

constexpr size_t kHeaderBytes = 4;
constexpr char16_t kGuard = 0xD00D;

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  if (bytes < kHeaderBytes) return 0;
  constexpr double kRates[] = {24, 25, 29.97, 0.5};
  _zrposfmt format = {data[0] % 22u, 48000, kRates[data[1] % 4], 120, 0, 4, 4, 960};
  if (data[1] & 0x80) format.zeroOffset = INT64_MIN;
  const uint32_t flags = data[2] % 4;
  const uint32_t size = data[3] % 32;
  const size_t characters = (bytes - kHeaderBytes) / sizeof(char16_t);
  std::vector<char16_t> text(characters + 1);
  if (characters > 0) std::memcpy(text.data(), data + kHeaderBytes, characters * sizeof(char16_t));
  const auto within = [&](const char16_t* end) { return end >= text.data() && end <= text.data() + characters; };

  const char16_t* end = nullptr;
  const int64_t ticks = ZrTextToNanoTimeToken(text.data(), &format, flags, &end);
  Require(within(end));
  const int64_t held = ZrTextToNanoTimeTokenEx(text.data(), &format, flags, 7, -1000, 1000, &end);
  Require(held >= -1000 && held <= 1000 && within(end));

  _smpteval code{};
  code.type = data[2] % 8;
  end = ZRSMPTE_TextToSMPTE(text.data(), &code);
  Require((end == nullptr || within(end)) && code.hours < 24 && code.minutes < 60 && code.seconds < 60);
  ZrTextToMeasuresBeatsTicks(text.data(), &format, data[2] & 1, UINT32_MAX, nullptr, nullptr, nullptr);
  ZrTextToBeatsTicks(text.data(), &format, UINT32_MAX, nullptr, nullptr);
  ZrTextToTicks(text.data(), UINT32_MAX, nullptr);

  std::vector<char16_t> shown(size + 1, kGuard);
  const auto written = static_cast<uint32_t>(ZrNanoTimeToTextExN(shown.data(), size, &format, ticks, flags));
  Require(shown[size] == kGuard && (size == 0 ? written == 0 : written < size && shown[written] == 0));
  return 0;
}
