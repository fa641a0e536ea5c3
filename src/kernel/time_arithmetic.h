// SPDX-License-Identifier: Apache-2.0
// Conversions of times that no value, however wild, takes out of range.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace marlo {

inline constexpr double kTicksPerSecond = 10'000'000;

/// Truncates towards zero, held within 64 bits; 0 for what is no number.
inline int64_t Truncate(double value) noexcept {
  constexpr double kPastGreatest = 0x1p63;
  if (value >= kPastGreatest) return std::numeric_limits<int64_t>::max();
  if (value <= -kPastGreatest) return std::numeric_limits<int64_t>::min();
  return std::isnan(value) ? 0 : static_cast<int64_t>(value);
}

/// Rounds down, held within 64 bits; 0 for what is no number.
inline int64_t RoundDown(double value) noexcept { return Truncate(std::floor(value)); }

/// The sum of two times, held within 64 bits.
inline int64_t AddTicks(int64_t left, int64_t right) noexcept {
  int64_t sum = 0;
  if (!__builtin_add_overflow(left, right, &sum)) return sum;
  return left < 0 ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
}

/// The negative of a time, held within 64 bits.
inline int64_t Negate(int64_t ticks) noexcept {
  return ticks == std::numeric_limits<int64_t>::min() ? std::numeric_limits<int64_t>::max() : -ticks;
}

}  // namespace marlo
