// SPDX-License-Identifier: Apache-2.0
// Milliseconds and microseconds since the start or since a base.
#include "marlo110k/clock.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "kernel/kernel_clock.h"
#include "platform/base/clock.h"

namespace marlo {
namespace {

/// value * multiplier / divisor with a wide product, rounded half away from zero.
int64_t ScaleRounded(int64_t value, int64_t multiplier, int64_t divisor) noexcept {
  const __int128 product = static_cast<__int128>(value) * multiplier;
  const __int128 half = divisor / 2;
  return static_cast<int64_t>((product >= 0 ? product + half : product - half) / divisor);
}

constinit KernelClock processClock;
constinit std::atomic<bool> started{false};

}  // namespace

void KernelClock::Start() noexcept {
  const int64_t frequency = plat::CounterFrequency();
  usesCounter_ = static_cast<uint32_t>(frequency) != 0;
  if (usesCounter_) {
    // A counter slower than a kilohertz would give 0 ticks a millisecond.
    perMillisecond_ = std::max<int64_t>(frequency / 1000, 1);
    perMicrosecond_ = std::max<int64_t>(frequency / 1000000, 1);
    correction_ = frequency / perMicrosecond_;
    if (correction_ == 1000000) correction_ = 0;
  }
  base_ = Now();
}

int64_t KernelClock::Now() const noexcept { return usesCounter_ ? plat::Counter() : plat::Milliseconds(); }

int64_t KernelClock::Elapsed(int64_t base, int64_t now) const noexcept {
  // The tick count wraps after 49.7 days, and the difference with it.
  return usesCounter_ ? now - base : static_cast<uint32_t>(now) - static_cast<uint32_t>(base);
}

int64_t KernelClock::Milliseconds(int64_t base, int64_t now) const noexcept {
  return Elapsed(base, now) / perMillisecond_;
}

int64_t KernelClock::Microseconds(int64_t base, int64_t now) const noexcept {
  if (!usesCounter_) return Elapsed(base, now) * 1000;
  const int64_t microseconds = Elapsed(base, now) / perMicrosecond_;
  return correction_ != 0 ? ScaleRounded(microseconds, 1000000, correction_) : microseconds;
}

void StartClock() noexcept {
  if (!started.exchange(true)) processClock.Start();
}

}  // namespace marlo

using marlo::processClock;

int64_t ZrGetMillisec() noexcept { return processClock.Milliseconds(processClock.Base(), processClock.Now()); }

int64_t ZrGetMicrosec() noexcept { return processClock.Microseconds(processClock.Base(), processClock.Now()); }

int64_t ZrGetMillisecEx(const int64_t* base) noexcept {
  return base != nullptr ? processClock.Milliseconds(*base, processClock.Now()) : 0;
}

int64_t ZrGetMicrosecEx(const int64_t* base) noexcept {
  return base != nullptr ? processClock.Microseconds(*base, processClock.Now()) : 0;
}

// One reading of the counter ends this span and begins the next, so that spans add up.

int64_t ZrDeltaMillisecEx(int64_t* base) noexcept {
  if (base == nullptr) return 0;
  const int64_t now = processClock.Now();
  return processClock.Milliseconds(std::exchange(*base, now), now);
}

int64_t ZrDeltaMicrosecEx(int64_t* base) noexcept {
  if (base == nullptr) return 0;
  const int64_t now = processClock.Now();
  return processClock.Microseconds(std::exchange(*base, now), now);
}
