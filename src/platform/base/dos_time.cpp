// SPDX-License-Identifier: Apache-2.0
// Packs calendar fields into DOS date and time.
#include "platform/base/dos_time.h"

#include <time.h>

namespace plat {
namespace {

constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;
constexpr int64_t kTicksASecond = 10'000'000;
constexpr int kFirstYear = 1980;
constexpr int kLastYear = 2107;

constexpr uint32_t Packed(int year, int month, int day, int hour, int minute, int second) {
  const int date = (year - kFirstYear) << 9 | month << 5 | day;
  const int time = hour << 11 | minute << 5 | second / 2;
  return static_cast<uint32_t>(time) << 16 | static_cast<uint32_t>(date);
}

uint32_t Pack(const tm& fields) {
  const int year = fields.tm_year + 1900;
  if (year < kFirstYear) return Packed(kFirstYear, 1, 1, 0, 0, 0);
  if (year > kLastYear) return Packed(kLastYear, 12, 31, 23, 59, 58);
  return Packed(year, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
}

}  // namespace

DosMoment DosMomentOf(uint64_t ticksSince1601) noexcept {
  const time_t seconds = static_cast<int64_t>(ticksSince1601 / kTicksASecond) - kSecondsFrom1601To1970;
  tm local{};
  tm utc{};
  localtime_r(&seconds, &local);
  gmtime_r(&seconds, &utc);
  return {Pack(local), Pack(utc)};
}

}  // namespace plat
