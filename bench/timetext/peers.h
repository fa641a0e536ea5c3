// SPDX-License-Identifier: Apache-2.0
// What the peers are asked.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench_timetext {

/// Writes hours, minutes, seconds and milliseconds, without a locale.
size_t ClockWithFmt(char* buffer, size_t capacity, int64_t ticks);

}  // namespace bench_timetext
