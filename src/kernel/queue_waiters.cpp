// SPDX-License-Identifier: Apache-2.0
// Keeps the waiters of all queues in a few lists. Only threads that are about to block come here.
#include "kernel/queue_waiters.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace marlo {
namespace {

/// Waiters of the queues whose address falls here. The mutex is held for pointer work only and never while a
/// queue's lock is waited for.
struct alignas(64) Stripe {
  std::mutex mutex;
  QueueWaiter* first = nullptr;
  std::atomic<uint32_t> departures{0};  ///< Counts waiters that went; a deletion waits for the next one.
};

constexpr size_t kStripes = 16;
constinit Stripe stripes[kStripes];

Stripe& StripeOf(const tZRQHEAD* queue) noexcept {
  return stripes[(reinterpret_cast<uintptr_t>(queue) >> 6) % kStripes];
}

}  // namespace

void QueueWaiter::Begin(tZRQHEAD* queue, plat::Waitable* event) noexcept {
  queue_ = queue;
  event_ = event;
  state_ = State::kWaiting;
  prev_ = nullptr;
  Stripe& stripe = StripeOf(queue);
  std::lock_guard<std::mutex> guard(stripe.mutex);
  next_ = stripe.first;
  if (next_ != nullptr) next_->prev_ = this;
  stripe.first = this;
}

/// The stripe's mutex is held. An orphan that is the last one of its event closes it.
void QueueWaiter::Unlink() noexcept {
  Stripe& stripe = StripeOf(queue_);
  (prev_ != nullptr ? prev_->next_ : stripe.first) = next_;
  if (next_ != nullptr) next_->prev_ = prev_;
  if (state_ != State::kOrphaned) return;
  for (const QueueWaiter* other = stripe.first; other != nullptr; other = other->next_) {
    if (other->event_ == event_) return;
  }
  plat::CloseWaitable(event_);
}

bool QueueWaiter::Return() noexcept {
  Stripe& stripe = StripeOf(queue_);
  {
    std::lock_guard<std::mutex> guard(stripe.mutex);
    if (state_ == State::kOrphaned) {
      Unlink();
      return false;
    }
    state_ = State::kReturning;  // from here on EndWaiters waits until this thread has the queue's lock
  }
  plat::EnterLock(&queue_->lock);
  {
    std::lock_guard<std::mutex> guard(stripe.mutex);
    Unlink();
  }
  stripe.departures.fetch_add(1, std::memory_order_release);
  stripe.departures.notify_all();
  return true;
}

void QueueWaiter::Abandon() noexcept {
  std::lock_guard<std::mutex> guard(StripeOf(queue_).mutex);
  Unlink();
}

void EndWaiters(tZRQHEAD* queue, plat::Waitable* event) noexcept {
  // The deletion counts as an orphan itself: whoever of them leaves last closes the event.
  QueueWaiter deletion;
  deletion.Begin(queue, event);
  Stripe& stripe = StripeOf(queue);
  for (;;) {
    const uint32_t departures = stripe.departures.load(std::memory_order_acquire);
    bool anyReturning = false;
    {
      std::lock_guard<std::mutex> guard(stripe.mutex);
      for (QueueWaiter* waiter = stripe.first; waiter != nullptr; waiter = waiter->next_) {
        if (waiter->event_ != event) continue;
        if (waiter->state_ == QueueWaiter::State::kReturning) {
          anyReturning = true;
        } else {
          waiter->state_ = QueueWaiter::State::kOrphaned;
        }
      }
    }
    if (!anyReturning) break;
    stripe.departures.wait(departures, std::memory_order_acquire);
  }
  deletion.Abandon();
  // A waiter that was returning has the lock now; its turn ends before the lock does.
  plat::EnterLock(&queue->lock);
  plat::LeaveLock(&queue->lock);
}

size_t CountWaiters(const tZRQHEAD* queue) noexcept {
  Stripe& stripe = StripeOf(queue);
  std::lock_guard<std::mutex> guard(stripe.mutex);
  size_t waiters = 0;
  for (const QueueWaiter* waiter = stripe.first; waiter != nullptr; waiter = waiter->next_) {
    if (waiter->queue_ == queue) ++waiters;
  }
  return waiters;
}

}  // namespace marlo
