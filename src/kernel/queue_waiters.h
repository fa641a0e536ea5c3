// SPDX-License-Identifier: Apache-2.0
// The threads that wait outside a queue's lock, so that the queue may be deleted and its memory freed while they
// are on their way back.
#pragma once

#include <cstddef>

#include "marlo110k/queue.h"

namespace marlo {

/// One waiting thread; stands on its stack. A wait runs like this: under the queue's lock Begin; leave the lock;
/// wait for Event(); then either Abandon, or Return, which takes the queue's lock again unless the queue has been
/// deleted meanwhile: after that nothing of it may be touched.
class QueueWaiter {
 public:
  /// Notes the waiter. The queue's lock is held and its event exists.
  void Begin(tZRQHEAD* queue, plat::Waitable* event) noexcept;
  plat::Waitable* Event() const noexcept { return event_; }
  /// Takes the queue's lock again. @return false, with no lock taken, when the queue has been deleted.
  bool Return() noexcept;
  /// Leaves without looking at the queue again.
  void Abandon() noexcept;

 private:
  friend size_t CountWaiters(const tZRQHEAD* queue) noexcept;
  friend void EndWaiters(tZRQHEAD* queue, plat::Waitable* event) noexcept;
  enum class State : uint32_t { kWaiting, kReturning, kOrphaned };

  void Unlink() noexcept;

  tZRQHEAD* queue_ = nullptr;
  plat::Waitable* event_ = nullptr;
  QueueWaiter* next_ = nullptr;
  QueueWaiter* prev_ = nullptr;
  State state_ = State::kWaiting;
};

/// Cuts the waiters of a queue off it. Its event field is null, `event`, which was there, is set, and no thread is
/// inside that saw it. On return no waiter touches the queue any more, and `event` is closed or the last of the
/// waiters will close it. The queue's lock is not held.
void EndWaiters(tZRQHEAD* queue, plat::Waitable* event) noexcept;

/// Threads outside the queue's lock in a wait; for tests that act on them.
size_t CountWaiters(const tZRQHEAD* queue) noexcept;

}  // namespace marlo
