// SPDX-License-Identifier: Apache-2.0
// Times as old file formats keep them: a date and a time of day in 32 bits, in steps of two seconds.
#pragma once

#include <cstdint>

namespace plat {

/// A moment as DOS time in the high 16 bits and DOS date in the low ones. Never 0: what lies outside the years 1980 to
/// 2107 becomes their first or last moment. An odd second is cut.
struct DosMoment {
  uint32_t local;  ///< In the zone of this machine.
  uint32_t utc;
};
DosMoment DosMomentOf(uint64_t ticksSince1601) noexcept;

}  // namespace plat
