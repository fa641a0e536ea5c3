// SPDX-License-Identifier: Apache-2.0
// The kernel's clock: conversions of a counter whose frequency is known, or of the tick count.
#pragma once

#include <cstdint>

namespace marlo {

/// A running clock. `Start` fills it; before that it counts ticks from 0.
class KernelClock {
 public:
  /// Takes plat's counter, or the tick count when the frequency's low 32 bits are zero.
  void Start() noexcept;
  int64_t Now() const noexcept;
  int64_t Base() const noexcept { return base_; }
  int64_t Milliseconds(int64_t base, int64_t now) const noexcept;
  int64_t Microseconds(int64_t base, int64_t now) const noexcept;

 private:
  int64_t Elapsed(int64_t base, int64_t now) const noexcept;

  bool usesCounter_ = false;
  int64_t base_ = 0;
  int64_t perMillisecond_ = 1;
  int64_t perMicrosecond_ = 1;
  int64_t correction_ = 0;  ///< What a second comes to in these microseconds; 0 when it is 1,000,000.
};

/// Starts the process's clock; a second call leaves it running.
void StartClock() noexcept;

}  // namespace marlo
