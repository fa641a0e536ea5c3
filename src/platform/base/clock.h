// SPDX-License-Identifier: Apache-2.0
// Monotonic time, replaceable by a clock that tests step by hand.
#pragma once

#include <cstdint>

namespace plat {

/// A source of time. Time-outs of waits are measured on the system's clock, or on a FakeClock in place.
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

/// A clock that stands still until it is stepped. It starts one second after its zero and counts in
/// 100-ns units. While it is in place every timed wait measures its time-out on it: a step wakes the
/// waits whose time has come. The latest one made is the one that waits follow.
class FakeClock : public Clock {
 public:
  FakeClock();
  /// Restores the former clock. Timed waits that still run on this one end as timed out.
  ~FakeClock() override;
  FakeClock(const FakeClock&) = delete;
  FakeClock& operator=(const FakeClock&) = delete;
  int64_t Counter() override;
  int64_t Frequency() override;
  void StepMilliseconds(uint32_t milliseconds);
  /// Blocks until `waiters` threads are in timed waits, so that a test can step without a race.
  void AwaitTimedWaiters(uint32_t waiters);

  struct State;

 private:
  State* state_;
};

}  // namespace plat
