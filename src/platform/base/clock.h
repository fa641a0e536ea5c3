// SPDX-License-Identifier: Apache-2.0
// Monotonic time, replaceable by a clock that tests step by hand.
#pragma once

#include <cstdint>

namespace plat {

/// A source of time; waits with a time-out also go through it.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual int64_t Counter() = 0;    ///< Monotonic count.
  virtual int64_t Frequency() = 0;  ///< Counts a second; constant.
};

int64_t Counter() noexcept;
int64_t CounterFrequency() noexcept;  ///< 10,000,000 with the system's clock.
/// Milliseconds since an arbitrary start; wraps after 49.7 days.
uint32_t Milliseconds() noexcept;

/// Date and time of day in the local zone.
struct LocalTime {
  uint16_t year, month, day, hour, minute, second, milliseconds;
};
LocalTime GetLocalTime() noexcept;

/// Puts a clock in place of the system's, null restores it. @return the one before (null: the system's).
Clock* SetClock(Clock* clock) noexcept;

/// A clock that stands still until it is stepped. While it is in place every timed wait measures
/// its time-out on it: a step wakes the waits whose time has come.
class FakeClock : public Clock {
 public:
  FakeClock();
  ~FakeClock() override;  ///< Restores the former clock.
  int64_t Counter() override;
  int64_t Frequency() override;
  void StepMilliseconds(uint32_t milliseconds);
  /// Blocks until `waiters` threads are in timed waits, so that a test can step without a race.
  void AwaitTimedWaiters(uint32_t waiters);

 private:
  struct State;
  State* state_;
};

}  // namespace plat
