// SPDX-License-Identifier: Apache-2.0
// Blocking queue between threads: an intrusive ring whose elements the caller owns.
//
// An element is a record of the client that begins with a tZRQELM. The queue allocates nothing and only
// links, so that insertion and removal can run on render threads. All calls are for any thread; predicates
// run under the queue's lock and must not wait. Inserting an element that already is in a queue corrupts
// both: ask IsInZrQueue when in doubt.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/export.h"
#include "marlo110k/platform/event.h"
#include "marlo110k/platform/lock.h"

/// The links at the start of every element; both null while it is in no queue.
struct tZRQELM {
  tZRQELM* next;
  tZRQELM* prev;
};
static_assert(sizeof(tZRQELM) == 16);

/// The queue. It may be embedded in a larger record and must start zeroed. The head sits in the ring:
/// a walk ends where it meets the head's own address.
struct tZRQHEAD {
  tZRQELM* first;
  tZRQELM* last;
  plat::CriticalSection lock;
  plat::Waitable* event;  ///< Manual reset: set while elements are there or waiters must wake.
};
static_assert(sizeof(tZRQHEAD) == 64);
static_assert(offsetof(tZRQHEAD, last) == 8 && offsetof(tZRQHEAD, lock) == 16 && offsetof(tZRQHEAD, event) == 56);

inline constexpr uint32_t kZrInfinite = plat::kInfinite;

/// Non-zero for the element that is sought. Runs under the queue's lock.
using ZRQUEUEPREDICATE = int32_t (*)(tZRQELM* element, void* argument);

/// Flags of ZrQueueRemoveEx.
enum ZRQUEUE_WAIT : uint32_t {
  ZRQUEUE_WAKE_MASK = 0x0000FFFF,        ///< Kinds of pending work that end the wait.
  ZRQUEUE_WAIT_ALL = 0x00010000,         ///< All handles, not any.
  ZRQUEUE_ALERTABLE = 0x00020000,        ///< Completion routines run during the wait.
  ZRQUEUE_INPUT_AVAILABLE = 0x00040000,  ///< Pending work that was seen before counts too.
  ZRQUEUE_SERVE = 0x00080000,            ///< Go on waiting through sent work and completion routines.
};

// ---- Life ------------------------------------------------------------------------------------------

/// Makes a zeroed head a queue; on a live queue it only empties the ring.
/// @return 1, or 0 when the event can't be made.
ZR_API int32_t ZrQueueInitialize(tZRQHEAD* queue) noexcept;
/// Wakes all waiters, lets threads that are still inside leave, empties and ends the queue. A second call
/// does nothing. Threads that waited come back with null and touch nothing more.
ZR_API void ZrQueueDelete(tZRQHEAD* queue) noexcept;
/// Empties the ring (elements keep stale links) and wakes all waiters with no element. The event stays set
/// until the next removal that empties the queue: until then every timed removal comes back at once.
ZR_API void ZrQueueFlush(tZRQHEAD* queue) noexcept;

// ---- Adding ----------------------------------------------------------------------------------------

/// Appends. [render thread]
ZR_API void ZrQueueInsert(tZRQHEAD* queue, tZRQELM* element) noexcept;
/// Puts in front. [render thread]
ZR_API void ZrQueueInsertHead(tZRQHEAD* queue, tZRQELM* element) noexcept;
/// Inserts before the first match from the head, else appends. Null is not inserted.
ZR_API void ZrQueueInsertEx(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, tZRQELM* element) noexcept;
/// Inserts before (not after) the first match from the tail, else appends.
ZR_API void ZrQueueInsertExRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument, tZRQELM* element) noexcept;

// ---- Removing: the element with its links cleared, or null -----------------------------------------

/// Takes the first element.
/// @param timeoutMs 0 looks once and never waits; kZrInfinite waits for ever.
/// @return null on time-out, flush or deletion. A wake that finds the queue empty gives null rather than a
/// second wait: callers loop. [render thread: with timeoutMs 0]
ZR_API tZRQELM* ZrQueueRemove(tZRQHEAD* queue, uint32_t timeoutMs) noexcept;
/// The same, serving sent work and completion routines while it waits.
ZR_API tZRQELM* ZrQueueRemoveAlertable(tZRQHEAD* queue, uint32_t timeoutMs) noexcept;
/// The same with further objects to wait for.
/// @param extraHandles at most 62, or null. An extra object that signals ends the wait with null.
/// @param flags bits of ZRQUEUE_WAIT.
/// @param waitResult optional; what the last wait gave (1 to extraCount: that extra object), left alone when
/// nothing was waited for.
ZR_API tZRQELM* ZrQueueRemoveEx(tZRQHEAD* queue, plat::Waitable* const* extraHandles, uint32_t extraCount,
                                uint32_t flags, uint32_t timeoutMs, uint32_t* waitResult) noexcept;
/// Takes the last element.
ZR_API tZRQELM* ZrQueueRemoveTail(tZRQHEAD* queue, uint32_t timeoutMs) noexcept;
/// Takes the first match from the head. Never waits.
ZR_API tZRQELM* ZrQueueFindAndRemove(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;
/// Takes the first match from the tail.
ZR_API tZRQELM* ZrQueueFindAndRemoveRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;

// ---- Finding and moving ----------------------------------------------------------------------------

/// First match from the head. The lock is released before the result is given: the caller sees to the
/// element's life.
ZR_API tZRQELM* ZrQueueFind(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;
/// First match from the tail.
ZR_API tZRQELM* ZrQueueFindRev(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;
/// Moves the first match from the head to the head. @return it, or null.
ZR_API tZRQELM* ZrQueueFindAndMoveToHead(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;
/// Moves the first match from the head to the tail. @return it, or null.
ZR_API tZRQELM* ZrQueueFindAndMoveToTail(tZRQHEAD* queue, ZRQUEUEPREDICATE predicate, void* argument) noexcept;
/// Moves an element of this queue to the head.
/// @return 1 when the element was moved, 0 when it is at that end already or in no place of this queue.
ZR_API int32_t ZrQueueMoveToHead(tZRQHEAD* queue, tZRQELM* element) noexcept;
/// Moves an element of this queue to the tail; the result is as for the head.
ZR_API int32_t ZrQueueMoveToTail(tZRQHEAD* queue, tZRQELM* element) noexcept;
/// Waits once for elements without taking any. A hint: another thread may take them first.
/// @return 1 when elements are there.
ZR_API int32_t ZrQueueWait(tZRQHEAD* queue, uint32_t timeoutMs) noexcept;
/// 1 when the element is in this queue. An element with a null link gives 0 without a walk.
ZR_API int32_t IsInZrQueue(tZRQHEAD* queue, const tZRQELM* element) noexcept;
