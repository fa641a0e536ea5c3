// SPDX-License-Identifier: Apache-2.0
// Strict parsing of numbers, times and gains.
#include "numbers.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace host {
namespace {

bool EndsWithDecibel(std::string_view text) {
  if (text.size() < 2) return false;
  const char d = text[text.size() - 2];
  const char b = text[text.size() - 1];
  return (d == 'd' || d == 'D') && (b == 'b' || b == 'B');
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return std::nullopt;
  }
  // from_chars takes words such as "inf" and "nan" too; a number of ours has a digit or point in front.
  const size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
  if (first >= text.size() || ((text[first] < '0' || text[first] > '9') && text[first] != '.')) return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<uint64_t> ParseCount(std::string_view text) {
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> ParseSeconds(std::string_view text) {
  constexpr double kTenYears = 10 * 365.0 * 86400.0;
  const std::optional<double> value = ParseNumber(text);
  if (!value || std::signbit(*value) || *value > kTenYears) return std::nullopt;
  return value;
}

std::optional<double> ParseDecibels(std::string_view text) {
  if (EndsWithDecibel(text)) text.remove_suffix(2);
  const std::optional<double> value = ParseNumber(text);
  if (!value || std::fabs(*value) > 200) return std::nullopt;
  return std::pow(10.0, *value / 20.0);
}

std::optional<double> ParseGain(std::string_view text) {
  return EndsWithDecibel(text) ? ParseDecibels(text) : ParseNumber(text);
}

int64_t FramesFromSeconds(double seconds, uint32_t rate) { return std::llround(seconds * rate); }

DecibelText TextOfLevel(double level) {
  DecibelText result;
  if (level > 0) {
    std::snprintf(result.text, sizeof result.text, "%.2f dB", 20 * std::log10(level));
  } else {
    std::snprintf(result.text, sizeof result.text, "-inf dB");
  }
  return result;
}

}  // namespace host
