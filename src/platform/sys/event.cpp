// SPDX-License-Identifier: Apache-2.0
// Events and semaphores in user space: a state, a lock and a list of waiting threads.
//
// A waiting thread stands in the list of each of its objects with one node and sleeps on one wait cell. Whoever
// signals an object claims the cell of the first waiter that is still open and takes the signal on its behalf,
// so that an auto-reset signal reaches exactly one thread. Waits for all objects stand in lists of their own
// under one lock, since only a look at all objects at once can satisfy them; they are rare.
#include "marlo110k/platform/event.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

#include "platform/base/wait_cell.h"
#include "platform/sys/file_backend.h"
#include "platform/sys/inbox.h"

namespace plat {
namespace {

constexpr uint32_t kErrorBadHandle = 6;
constexpr uint32_t kErrorOutOfMemory = 14;
constexpr uint32_t kErrorBadParameter = 87;
constexpr uint32_t kErrorTooManyPosts = 298;

enum class Kind : uint8_t { kManualEvent, kAutoEvent, kSemaphore };

struct AllWait;

/// A thread's place in the list of one object.
struct WaitNode {
  WaitNode* next;
  WaitNode* prev;
  Waitable* object;
  WaitCell* cell;
  AllWait* all;    ///< The wait this node is part of when it is for all objects.
  uint32_t index;  ///< The result that this object gives.
};

/// The waiting threads of one object, first come first.
struct WaitList {
  WaitNode* first = nullptr;
  WaitNode* last = nullptr;

  void Append(WaitNode* node) {
    node->next = nullptr;
    node->prev = last;
    (last != nullptr ? last->next : first) = node;
    last = node;
  }
  void Remove(WaitNode* node) {
    (node->prev != nullptr ? node->prev->next : first) = node->next;
    (node->next != nullptr ? node->next->prev : last) = node->prev;
  }
};

class ScopedLock {
 public:
  explicit ScopedLock(pthread_mutex_t* mutex) : mutex_(mutex) { pthread_mutex_lock(mutex_); }
  ~ScopedLock() { pthread_mutex_unlock(mutex_); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  pthread_mutex_t* mutex_;
};

}  // namespace

class Waitable {
 public:
  Waitable(Kind objectKind, int32_t initialUnits, int32_t maximumUnits)
      : kind(objectKind), units(initialUnits), maximum(maximumUnits) {}

  const Kind kind;
  int32_t units;  ///< Of a semaphore; an event is 1 (set) or 0.
  const int32_t maximum;
  uint32_t allWaits = 0;  ///< Nodes in `allNodes`.
  std::atomic<uint32_t> owners{1};
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;  ///< Guards all but `allNodes`.
  WaitList nodes;
  WaitList allNodes;  ///< Guarded by allLock.

  bool Signalled() const { return units > 0; }
  /// What a satisfied wait takes.
  void Take() {
    if (kind != Kind::kManualEvent) --units;
  }
  /// Hands signals to waiting threads, first come first served. The mutex is held.
  /// @return the last claimed cell, which the caller wakes after the mutex is free.
  const WaitCell* HandOut() {
    const WaitCell* last = nullptr;
    for (WaitNode* node = nodes.first; node != nullptr && Signalled(); node = node->next) {
      if (!node->cell->Claim(node->index)) continue;
      Take();
      if (last != nullptr) WaitCell::Wake(last);
      last = node->cell;
    }
    return last;
  }
};

namespace {

// Outermost: taken before the mutexes of objects, which are then taken by rising address.
pthread_mutex_t allLock = PTHREAD_MUTEX_INITIALIZER;

/// A wait for all of several objects.
struct AllWait {
  Waitable* const* objects;  ///< By rising address, each once.
  uint32_t count;
  WaitCell cell;
};

/// Adds an owner to an object that the caller knows to be alive.
void Share(Waitable* object) { object->owners.fetch_add(1, std::memory_order_relaxed); }

void GiveBack(Waitable* object) {
  if (object->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  pthread_mutex_destroy(&object->mutex);
  delete object;
}

Waitable* MakeWaitable(Kind kind, int32_t units, int32_t maximum) {
  Waitable* object = new (std::nothrow) Waitable(kind, units, maximum);
  if (object == nullptr) SetLastError(kErrorOutOfMemory);
  return object;
}

/// Satisfies the wait if all its objects are signalled, `pulsed` counting as such. allLock is held.
bool TrySatisfyAll(AllWait* wait, const Waitable* pulsed) {
  for (uint32_t i = 0; i < wait->count; ++i) pthread_mutex_lock(&wait->objects[i]->mutex);
  bool ready = wait->cell.IsOpen();
  for (uint32_t i = 0; i < wait->count && ready; ++i) {
    ready = wait->objects[i]->Signalled() || wait->objects[i] == pulsed;
  }
  const bool satisfied = ready && wait->cell.Claim(kWaitObject0);
  for (uint32_t i = 0; i < wait->count; ++i) {
    if (satisfied && wait->objects[i]->Signalled()) wait->objects[i]->Take();
    pthread_mutex_unlock(&wait->objects[i]->mutex);
  }
  return satisfied;
}

/// Offers an object's signal to the waits for all; `pulse` when it lasts only as long as this call.
void HandOutToAllWaits(Waitable* object, bool pulse) {
  ScopedLock lock(&allLock);
  WaitNode* next = nullptr;
  for (WaitNode* node = object->allNodes.first; node != nullptr; node = next) {
    next = node->next;
    if (!TrySatisfyAll(node->all, pulse ? object : nullptr)) continue;
    WaitCell::Wake(&node->all->cell);
    if (pulse && object->kind == Kind::kAutoEvent) return;
  }
}

/// Changes the object's units and hands signals out.
template <typename Change>
bool Signal(Waitable* object, const Change& change) {
  pthread_mutex_lock(&object->mutex);
  if (!change(object)) {
    pthread_mutex_unlock(&object->mutex);
    return false;
  }
  const WaitCell* cell = object->HandOut();
  const bool forAllWaits = object->allWaits != 0 && object->Signalled();
  // A waiter that leaves may close the object, so a share is taken before the mutex is free.
  if (forAllWaits) Share(object);
  pthread_mutex_unlock(&object->mutex);
  if (cell != nullptr) WaitCell::Wake(cell);
  if (forAllWaits) {
    HandOutToAllWaits(object, false);
    GiveBack(object);
  }
  return true;
}

bool IsEvent(const Waitable* object) {
  if (object != nullptr && object->kind != Kind::kSemaphore) return true;
  SetLastError(kErrorBadHandle);
  return false;
}

bool TryTake(Waitable* object) {
  ScopedLock lock(&object->mutex);
  if (!object->Signalled()) return false;
  object->Take();
  return true;
}

/// Stands in the object's list unless it is signalled and the cell still open: then the wait is over.
/// @return true when the thread stands in the list.
bool Enlist(WaitNode* node) {
  Waitable* object = node->object;
  ScopedLock lock(&object->mutex);
  if (object->Signalled() && node->cell->Claim(node->index)) {
    object->Take();
    return false;
  }
  Share(object);
  object->nodes.Append(node);
  return true;
}

void Delist(WaitNode* node) {
  pthread_mutex_lock(&node->object->mutex);
  node->object->nodes.Remove(node);
  pthread_mutex_unlock(&node->object->mutex);
  GiveBack(node->object);
}

void EnlistAll(WaitNode* nodes, AllWait* wait) {
  ScopedLock lock(&allLock);
  for (uint32_t i = 0; i < wait->count; ++i) {
    Waitable* object = wait->objects[i];
    nodes[i] = {nullptr, nullptr, object, &wait->cell, wait, 0};
    Share(object);
    object->allNodes.Append(&nodes[i]);
    ScopedLock objectLock(&object->mutex);
    ++object->allWaits;
  }
  TrySatisfyAll(wait, nullptr);
}

void DelistAll(WaitNode* nodes, uint32_t count) {
  pthread_mutex_lock(&allLock);
  for (uint32_t i = 0; i < count; ++i) {
    nodes[i].object->allNodes.Remove(&nodes[i]);
    ScopedLock objectLock(&nodes[i].object->mutex);
    --nodes[i].object->allWaits;
  }
  pthread_mutex_unlock(&allLock);
  for (uint32_t i = 0; i < count; ++i) GiveBack(nodes[i].object);
}

constexpr uint32_t kInboxSources = 2;

/// One thread's own pending work beside its objects.
struct PendingWork {
  Waitable* sources[kInboxSources] = {};
  uint32_t results[kInboxSources] = {};
  uint32_t count = 0;

  PendingWork(uint32_t objectCount, uint32_t wakeMask, uint32_t flags) {
    const bool sent = (wakeMask & kWakeSentWork) != 0;
    const bool alertable = (flags & kWaitAlertable) != 0;
    if (!sent && !alertable) return;
    const InboxEvents events = CurrentInboxEvents();
    if (sent && (flags & kWaitInputAvailable) != 0) SignalPendingWork();
    if (sent) Add(events.sentWork, objectCount);
    if (alertable) Add(events.completions, kWaitIoCompletion);
  }
  void Add(Waitable* source, uint32_t result) {
    if (source == nullptr) return;
    sources[count] = source;
    results[count++] = result;
  }
};

/// Waits for the first of the objects and the thread's own work.
uint32_t WaitForFirst(Waitable* const* objects, uint32_t count, const PendingWork& work, uint32_t timeoutMs) {
  for (uint32_t i = 0; i < count; ++i) {
    if (TryTake(objects[i])) return i;
  }
  for (uint32_t i = 0; i < work.count; ++i) {
    if (TryTake(work.sources[i])) return work.results[i];
  }
  if (timeoutMs == 0) return kWaitTimeout;

  WaitCell cell;
  WaitNode nodes[kMaxWaitObjects + kInboxSources];
  uint32_t listed = 0;
  for (uint32_t i = 0; i < count + work.count && cell.IsOpen(); ++i) {
    nodes[listed] = {nullptr, nullptr, i < count ? objects[i] : work.sources[i - count],
                     &cell,   nullptr, i < count ? i : work.results[i - count]};
    if (Enlist(&nodes[listed])) ++listed;
  }
  const uint32_t result = cell.Wait(timeoutMs, kWaitTimeout);
  for (uint32_t i = 0; i < listed; ++i) Delist(&nodes[i]);
  return result;
}

/// Waits until all objects are signalled at once. The thread's own work ends the wait too.
uint32_t WaitForAll(Waitable* const* objects, uint32_t count, const PendingWork& work, uint32_t timeoutMs) {
  Waitable* sorted[kMaxWaitObjects];
  std::copy(objects, objects + count, sorted);
  std::sort(sorted, sorted + count);
  if (std::adjacent_find(sorted, sorted + count) != sorted + count) {
    SetLastError(kErrorBadParameter);
    return kWaitFailed;
  }
  AllWait wait{sorted, count, {}};
  WaitNode allNodes[kMaxWaitObjects];
  WaitNode workNodes[kInboxSources];
  uint32_t listed = 0;
  EnlistAll(allNodes, &wait);
  for (uint32_t i = 0; i < work.count && wait.cell.IsOpen(); ++i) {
    workNodes[listed] = {nullptr, nullptr, work.sources[i], &wait.cell, nullptr, work.results[i]};
    if (Enlist(&workNodes[listed])) ++listed;
  }
  const uint32_t result = wait.cell.Wait(timeoutMs, kWaitTimeout);
  for (uint32_t i = 0; i < listed; ++i) Delist(&workNodes[i]);
  DelistAll(allNodes, count);
  return result;
}

}  // namespace

Waitable* CreateEvent(bool manualReset, bool initiallySet) noexcept {
  return MakeWaitable(manualReset ? Kind::kManualEvent : Kind::kAutoEvent, initiallySet ? 1 : 0, 1);
}

Waitable* CreateSemaphore(int32_t initial, int32_t maximum) noexcept {
  if (initial < 0 || maximum < 1 || initial > maximum) {
    SetLastError(kErrorBadParameter);
    return nullptr;
  }
  return MakeWaitable(Kind::kSemaphore, initial, maximum);
}

void CloseWaitable(Waitable* object) noexcept {
  if (object != nullptr) GiveBack(object);
}

bool SetEvent(Waitable* event) noexcept {
  if (!IsEvent(event)) return false;
  return Signal(event, [](Waitable* object) {
    object->units = 1;
    return true;
  });
}

bool ResetEvent(Waitable* event) noexcept {
  if (!IsEvent(event)) return false;
  ScopedLock lock(&event->mutex);
  event->units = 0;
  return true;
}

bool PulseEvent(Waitable* event) noexcept {
  if (!IsEvent(event)) return false;
  pthread_mutex_lock(&event->mutex);
  event->units = 1;
  const WaitCell* cell = event->HandOut();
  const bool forAllWaits = event->allWaits != 0 && event->Signalled();
  event->units = 0;
  if (forAllWaits) Share(event);
  pthread_mutex_unlock(&event->mutex);
  if (cell != nullptr) WaitCell::Wake(cell);
  if (forAllWaits) {
    HandOutToAllWaits(event, true);
    GiveBack(event);
  }
  return true;
}

bool ReleaseSemaphore(Waitable* semaphore, int32_t units) noexcept {
  if (semaphore == nullptr || semaphore->kind != Kind::kSemaphore) {
    SetLastError(kErrorBadHandle);
    return false;
  }
  if (units < 1) {
    SetLastError(kErrorBadParameter);
    return false;
  }
  const bool released = Signal(semaphore, [units](Waitable* object) {
    if (units > object->maximum - object->units) return false;
    object->units += units;
    return true;
  });
  if (!released) SetLastError(kErrorTooManyPosts);
  return released;
}

uint32_t WaitOne(Waitable* object, uint32_t timeoutMs) noexcept { return WaitAny(&object, 1, timeoutMs, 0, 0); }

uint32_t WaitAny(Waitable* const* objects, uint32_t count, uint32_t timeoutMs, uint32_t wakeMask,
                 uint32_t flags) noexcept {
  if (count > kMaxWaitObjects || (count != 0 && objects == nullptr)) {
    SetLastError(kErrorBadParameter);
    return kWaitFailed;
  }
  if (std::find(objects, objects + count, nullptr) != objects + count) {
    SetLastError(kErrorBadHandle);
    return kWaitFailed;
  }
  const PendingWork work(count, wakeMask, flags);
  if (count == 0 && work.count == 0 && timeoutMs == kInfinite) {
    SetLastError(kErrorBadParameter);
    return kWaitFailed;
  }
  const bool all = (flags & kWaitAll) != 0 && count > 1;
  const uint32_t result =
      all ? WaitForAll(objects, count, work, timeoutMs) : WaitForFirst(objects, count, work, timeoutMs);
  // A routine that another wait already ran leaves the signal behind; the wait ends all the same.
  if (result == kWaitIoCompletion) RunCompletions();
  return result;
}

}  // namespace plat
