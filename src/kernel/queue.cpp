// SPDX-License-Identifier: Apache-2.0
// The blocking queue: ring operations under the lock, waits outside it.
#include "marlo110k/queue.h"

#include <atomic>
#include <cstring>

#include "kernel/queue_waiters.h"
#include "platform/base/clock.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

// ZrQueueWait peeks at the first link without the lock, so that link is a relaxed atomic word of plain layout; the
// event field changes without the lock in ZrQueueDelete.

tZRQELM* Load(tZRQELM* const& link) noexcept {
  return std::atomic_ref<tZRQELM*>(const_cast<tZRQELM*&>(link)).load(std::memory_order_relaxed);
}

void Store(tZRQELM*& link, tZRQELM* element) noexcept {
  std::atomic_ref<tZRQELM*>(link).store(element, std::memory_order_relaxed);
}

plat::Waitable* EventOf(tZRQHEAD* queue) noexcept {
  return std::atomic_ref<plat::Waitable*>(queue->event).load(std::memory_order_acquire);
}

bool Exists(tZRQHEAD* queue) noexcept { return queue != nullptr && EventOf(queue) != nullptr; }

/// The head as a member of its ring. Its links are read and written only through this type, as those of all members
/// are: the compiler takes fields of two structs for distinct places.
tZRQELM* Sentinel(tZRQHEAD* queue) noexcept { return reinterpret_cast<tZRQELM*>(queue); }
const tZRQELM* Sentinel(const tZRQHEAD* queue) noexcept { return reinterpret_cast<const tZRQELM*>(queue); }

tZRQELM* First(tZRQHEAD* queue) noexcept { return Sentinel(queue)->next; }
tZRQELM* Last(tZRQHEAD* queue) noexcept { return Sentinel(queue)->prev; }

// From here on the queue's lock is held.

bool IsEmpty(tZRQHEAD* queue) noexcept { return First(queue) == Sentinel(queue); }

void Clear(tZRQHEAD* queue) noexcept {
  Store(Sentinel(queue)->next, Sentinel(queue));
  Sentinel(queue)->prev = Sentinel(queue);
}

void Link(tZRQELM* element, tZRQELM* before) noexcept {
  tZRQELM* prev = before->prev;
  element->next = before;
  element->prev = prev;
  Store(prev->next, element);
  before->prev = element;
}

void Unlink(tZRQELM* element) noexcept {
  Store(element->prev->next, element->next);
  element->next->prev = element->prev;
  element->next = nullptr;
  element->prev = nullptr;
}

/// Links the element and sets the event when it is the first one of an empty ring.
void Insert(tZRQHEAD* queue, tZRQELM* element, tZRQELM* before) noexcept {
  const bool wasEmpty = IsEmpty(queue);
  Link(element, before);
  if (wasEmpty) plat::SetEvent(EventOf(queue));
}

/// Takes the element out and resets the event when it was the last one.
tZRQELM* Take(tZRQHEAD* queue, tZRQELM* element) noexcept {
  Unlink(element);
  if (IsEmpty(queue)) plat::ResetEvent(EventOf(queue));
  return element;
}

tZRQELM* FirstMatch(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  for (tZRQELM* element = First(queue); element != Sentinel(queue); element = element->next) {
    if (predicate(element, argument) != 0) return element;
  }
  return nullptr;
}

tZRQELM* LastMatch(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  for (tZRQELM* element = Last(queue); element != Sentinel(queue); element = element->prev) {
    if (predicate(element, argument) != 0) return element;
  }
  return nullptr;
}

bool Contains(const tZRQHEAD* queue, const tZRQELM* element) noexcept {
  if (element->next == nullptr || element->prev == nullptr) return false;
  const tZRQELM* walk = Sentinel(queue)->next;
  while (walk != Sentinel(queue) && walk != element) walk = walk->next;
  return walk == element;
}

using Search = tZRQELM* (*)(tZRQHEAD*, ZRQUEUEPREDICATE, void*);

void InsertBeforeMatch(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, tZRQELM* element,
                       Search search) noexcept {
  if (!Exists(queue) || element == nullptr) return;
  plat::LockGuard guard(&queue->lock);
  tZRQELM* match = predicate != nullptr ? search(queue, predicate, argument) : nullptr;
  Insert(queue, element, match != nullptr ? match : Sentinel(queue));
}

tZRQELM* Find(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, Search search) noexcept {
  if (!Exists(queue) || predicate == nullptr) return nullptr;
  plat::LockGuard guard(&queue->lock);
  return search(queue, predicate, argument);
}

tZRQELM* FindAndTake(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, Search search) noexcept {
  if (!Exists(queue) || predicate == nullptr) return nullptr;
  plat::LockGuard guard(&queue->lock);
  tZRQELM* match = search(queue, predicate, argument);
  return match != nullptr ? Take(queue, match) : nullptr;
}

enum class End { kHead, kTail };

tZRQELM* AtEnd(tZRQHEAD* queue, End end) noexcept { return end == End::kHead ? First(queue) : Last(queue); }

void MoveTo(tZRQHEAD* queue, tZRQELM* element, End end) noexcept {
  if (AtEnd(queue, end) == element) return;
  Unlink(element);
  Link(element, end == End::kHead ? First(queue) : Sentinel(queue));
}

int32_t MoveElement(tZRQHEAD* queue, tZRQELM* element, End end) noexcept {
  if (!Exists(queue) || element == nullptr) return 0;
  plat::LockGuard guard(&queue->lock);
  if (AtEnd(queue, end) == element || !Contains(queue, element)) return 0;
  MoveTo(queue, element, end);
  return 1;
}

tZRQELM* FindAndMove(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, End end) noexcept {
  if (!Exists(queue) || predicate == nullptr) return nullptr;
  plat::LockGuard guard(&queue->lock);
  tZRQELM* match = FirstMatch(queue, predicate, argument);
  if (match != nullptr) MoveTo(queue, match, end);
  return match;
}

// Waiting. The lock is held on entry and left on a wait.

/// What one wait watches beside the queue's event.
struct WaitPlan {
  plat::Waitable* const* extraHandles = nullptr;
  uint32_t extraCount = 0;
  uint32_t wakeMask = 0;
  uint32_t waitFlags = 0;
  bool serve = false;

  bool IsPlain() const noexcept { return extraCount == 0 && wakeMask == 0 && waitFlags == 0; }
};

WaitPlan PlanOf(plat::Waitable* const* extraHandles, uint32_t extraCount, uint32_t flags) noexcept {
  WaitPlan plan;
  plan.extraHandles = extraHandles;
  plan.extraCount = extraHandles != nullptr ? extraCount : 0;
  plan.wakeMask = flags & ZRQUEUE_WAKE_MASK;
  plan.waitFlags = (flags & (ZRQUEUE_WAIT_ALL | ZRQUEUE_ALERTABLE | ZRQUEUE_INPUT_AVAILABLE)) >> 16;
  plan.serve = (flags & ZRQUEUE_SERVE) != 0;
  if (plan.serve) plan.wakeMask |= plat::kWakeSentWork;
  return plan;
}
static_assert(ZRQUEUE_WAIT_ALL >> 16 == plat::kWaitAll && ZRQUEUE_ALERTABLE >> 16 == plat::kWaitAlertable);
static_assert(ZRQUEUE_INPUT_AVAILABLE >> 16 == plat::kWaitInputAvailable);

uint32_t WaitOutside(plat::Waitable* event, const WaitPlan& plan, uint32_t timeoutMs) noexcept {
  if (plan.IsPlain()) return plat::WaitOne(event, timeoutMs);
  plat::Waitable* objects[plat::kMaxWaitObjects] = {event};
  if (plan.extraCount != 0) std::memcpy(objects + 1, plan.extraHandles, plan.extraCount * sizeof(plat::Waitable*));
  return plat::WaitAny(objects, plan.extraCount + 1, timeoutMs, plan.wakeMask, plan.waitFlags);
}

enum class AfterWait { kGiveNull, kLookAgain, kWaitAgain };

/// A plain wait looks again whatever it gave. Otherwise only the event and, while serving, work that was done for
/// other threads lead back to the queue.
AfterWait Judge(const WaitPlan& plan, uint32_t result) noexcept {
  if (plan.IsPlain() || result == plat::kWaitObject0) return AfterWait::kLookAgain;
  if (!plan.serve) return AfterWait::kGiveNull;
  if (result == plat::kWaitIoCompletion) return AfterWait::kWaitAgain;
  if (result != plan.extraCount + 1) return AfterWait::kGiveNull;
  plat::RunSentWork();
  return AfterWait::kWaitAgain;
}

/// What is left of a time-out that began at `startMs`.
uint32_t TimeLeft(uint32_t timeoutMs, uint32_t startMs) noexcept {
  if (timeoutMs == kZrInfinite) return timeoutMs;
  const uint32_t passed = plat::Milliseconds() - startMs;
  return passed < timeoutMs ? timeoutMs - passed : 0;
}

/// Waits until the queue has elements, at most once but for work served meanwhile.
/// @return true with the lock held (elements or not), false with the lock left for good.
bool AwaitElements(tZRQHEAD* queue, const WaitPlan& plan, uint32_t timeoutMs, uint32_t* waitResult) noexcept {
  const bool timed = timeoutMs != 0 && timeoutMs != kZrInfinite;
  const uint32_t startMs = timed ? plat::Milliseconds() : 0;
  uint32_t leftMs = timeoutMs;
  bool mayWait = true;
  while (IsEmpty(queue) && mayWait && leftMs != 0) {
    plat::Waitable* event = EventOf(queue);
    if (event == nullptr) break;
    QueueWaiter waiter;
    waiter.Begin(queue, event);
    plat::LeaveLock(&queue->lock);
    const uint32_t result = WaitOutside(event, plan, leftMs);
    if (waitResult != nullptr) *waitResult = result;
    const AfterWait next = Judge(plan, result);
    if (next == AfterWait::kGiveNull) {
      waiter.Abandon();
      return false;
    }
    mayWait = next == AfterWait::kWaitAgain;
    if (mayWait) leftMs = TimeLeft(timeoutMs, startMs);
    if (!waiter.Return()) return false;
  }
  return true;
}

}  // namespace
}  // namespace marlo

using namespace marlo;

int32_t ZrQueueInitialize(tZRQHEAD* queue) noexcept {
  if (queue == nullptr) return 0;
  if (EventOf(queue) != nullptr) {
    plat::LockGuard guard(&queue->lock);
    Clear(queue);
    plat::ResetEvent(EventOf(queue));
    return 1;
  }
  plat::Waitable* event = plat::CreateEvent(true, false);
  if (event == nullptr) return 0;
  plat::InitializeLock(&queue->lock);
  Clear(queue);
  std::atomic_ref<plat::Waitable*>(queue->event).store(event, std::memory_order_release);
  return 1;
}

void ZrQueueDelete(tZRQHEAD* queue) noexcept {
  if (queue == nullptr) return;
  plat::Waitable* event = std::atomic_ref<plat::Waitable*>(queue->event).exchange(nullptr);
  if (event == nullptr) return;
  plat::SetEvent(event);
  {
    // Whoever is inside leaves first. The event closes only after that, since an insertion may be about to set it.
    plat::LockGuard guard(&queue->lock);
    Clear(queue);
  }
  EndWaiters(queue, event);
  plat::DeleteLock(&queue->lock);
}

void ZrQueueFlush(tZRQHEAD* queue) noexcept {
  if (!Exists(queue)) return;
  plat::LockGuard guard(&queue->lock);
  Clear(queue);
  plat::SetEvent(EventOf(queue));
}

void ZrQueueInsert(tZRQHEAD* queue, tZRQELM* element) noexcept {
  if (!Exists(queue) || element == nullptr) return;
  plat::LockGuard guard(&queue->lock);
  Insert(queue, element, Sentinel(queue));
}

void ZrQueueInsertHead(tZRQHEAD* queue, tZRQELM* element) noexcept {
  if (!Exists(queue) || element == nullptr) return;
  plat::LockGuard guard(&queue->lock);
  Insert(queue, element, First(queue));
}

void ZrQueueInsertEx(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, tZRQELM* element) noexcept {
  InsertBeforeMatch(queue, predicate, argument, element, FirstMatch);
}

void ZrQueueInsertExRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, tZRQELM* element) noexcept {
  InsertBeforeMatch(queue, predicate, argument, element, LastMatch);
}

tZRQELM* ZrQueueRemove(tZRQHEAD* queue, uint32_t timeoutMs) noexcept {
  return ZrQueueRemoveEx(queue, nullptr, 0, 0, timeoutMs, nullptr);
}

tZRQELM* ZrQueueRemoveAlertable(tZRQHEAD* queue, uint32_t timeoutMs) noexcept {
  return ZrQueueRemoveEx(queue, nullptr, 0, ZRQUEUE_ALERTABLE | ZRQUEUE_SERVE, timeoutMs, nullptr);
}

tZRQELM* ZrQueueRemoveEx(tZRQHEAD* queue, plat::Waitable* const* extraHandles, uint32_t extraCount, uint32_t flags,
                         uint32_t timeoutMs, uint32_t* waitResult) noexcept {
  if (extraHandles != nullptr && extraCount >= plat::kMaxWaitObjects) return nullptr;
  if (!Exists(queue)) return nullptr;
  plat::EnterLock(&queue->lock);
  if (!AwaitElements(queue, PlanOf(extraHandles, extraCount, flags), timeoutMs, waitResult)) return nullptr;
  tZRQELM* element = IsEmpty(queue) ? nullptr : Take(queue, First(queue));
  plat::LeaveLock(&queue->lock);
  return element;
}

tZRQELM* ZrQueueRemoveTail(tZRQHEAD* queue, uint32_t timeoutMs) noexcept {
  if (!Exists(queue)) return nullptr;
  plat::EnterLock(&queue->lock);
  if (!AwaitElements(queue, WaitPlan{}, timeoutMs, nullptr)) return nullptr;
  tZRQELM* element = IsEmpty(queue) ? nullptr : Take(queue, Last(queue));
  plat::LeaveLock(&queue->lock);
  return element;
}

tZRQELM* ZrQueueFindAndRemove(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return FindAndTake(queue, predicate, argument, FirstMatch);
}

tZRQELM* ZrQueueFindAndRemoveRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return FindAndTake(queue, predicate, argument, LastMatch);
}

tZRQELM* ZrQueueFind(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return Find(queue, predicate, argument, FirstMatch);
}

tZRQELM* ZrQueueFindRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return Find(queue, predicate, argument, LastMatch);
}

tZRQELM* ZrQueueFindAndMoveToHead(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return FindAndMove(queue, predicate, argument, End::kHead);
}

tZRQELM* ZrQueueFindAndMoveToTail(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept {
  return FindAndMove(queue, predicate, argument, End::kTail);
}

int32_t ZrQueueMoveToHead(tZRQHEAD* queue, tZRQELM* element) noexcept {
  return MoveElement(queue, element, End::kHead);
}

int32_t ZrQueueMoveToTail(tZRQHEAD* queue, tZRQELM* element) noexcept {
  return MoveElement(queue, element, End::kTail);
}

int32_t ZrQueueWait(tZRQHEAD* queue, uint32_t timeoutMs) noexcept {
  if (!Exists(queue)) return 0;
  if (Load(Sentinel(queue)->next) != Sentinel(queue)) return 1;
  if (timeoutMs == 0) return 0;
  plat::EnterLock(&queue->lock);
  if (!AwaitElements(queue, WaitPlan{}, timeoutMs, nullptr)) return 0;
  const int32_t hasElements = IsEmpty(queue) ? 0 : 1;
  plat::LeaveLock(&queue->lock);
  return hasElements;
}

int32_t IsInZrQueue(tZRQHEAD* queue, const tZRQELM* element) noexcept {
  if (!Exists(queue) || element == nullptr) return 0;
  plat::LockGuard guard(&queue->lock);
  return Contains(queue, element) ? 1 : 0;
}
