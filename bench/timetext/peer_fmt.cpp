// SPDX-License-Identifier: Apache-2.0
// A clock text by libfmt, with the same rounding.
#include <fmt/format.h>

#include "timetext/peers.h"

namespace bench_timetext {

size_t ClockWithFmt(char* buffer, size_t capacity, int64_t ticks) {
  const int64_t milliseconds = (ticks + 5'000) / 10'000;
  const int64_t seconds = milliseconds / 1000;
  return fmt::format_to_n(buffer, capacity, fmt::runtime("{:02}:{:02}:{:02}.{:03}"), seconds / 3600 % 24,
                          seconds / 60 % 60, seconds % 60, milliseconds % 1000)
      .size;
}

}  // namespace bench_timetext
