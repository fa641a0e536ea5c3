// SPDX-License-Identifier: Apache-2.0
// One thread's wait: a word that the first poster fills and the waiter sleeps on.
#pragma once

#include <atomic>
#include <cstdint>

namespace plat {

/// Lives on the waiter's stack. Whoever posts first decides the wait's result; a later post has no effect.
class WaitCell {
 public:
  WaitCell() = default;
  WaitCell(const WaitCell&) = delete;
  WaitCell& operator=(const WaitCell&) = delete;

  /// Decides the result. @return false when it was decided before.
  bool Claim(uint32_t result) noexcept {
    uint32_t open = kOpen;
    return word_.compare_exchange_strong(open, result, std::memory_order_acq_rel);
  }
  bool IsOpen() const noexcept { return word_.load(std::memory_order_acquire) == kOpen; }

  /// Wakes the waiter of a claimed cell. The cell may be gone by then: only its address is used.
  static void Wake(const WaitCell* cell) noexcept;

  /// Sleeps until somebody claims, or claims `timeoutResult` itself when the time is up.
  /// @return the result.
  uint32_t Wait(uint32_t timeoutMs, uint32_t timeoutResult) noexcept;

 private:
  static constexpr uint32_t kOpen = 0xFFFFFFFE;

  uint32_t WaitOnSystemClock(uint32_t timeoutMs, uint32_t timeoutResult) noexcept;

  std::atomic<uint32_t> word_{kOpen};
};

}  // namespace plat
