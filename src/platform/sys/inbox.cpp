// SPDX-License-Identifier: Apache-2.0
// Work and completion routines queued to a thread by other threads.
#include "platform/sys/inbox.h"

#include <pthread.h>

#include <new>

#include "platform/sys/thread.h"

namespace plat {
namespace {

struct Item {
  void (*function)(void*);
  void* argument;
  Item* next;
};

/// First in, first out.
struct ItemQueue {
  Item* first = nullptr;
  Item** end = &first;

  void Append(Item* item) {
    item->next = nullptr;
    *end = item;
    end = &item->next;
  }
  Item* TakeAll() {
    Item* items = first;
    first = nullptr;
    end = &first;
    return items;
  }
};

struct Inbox {
  uint32_t threadId = 0;
  ItemQueue sentWork;
  ItemQueue completions;
  InboxEvents events{};
  Inbox* next = nullptr;
};

// Guards the list of inboxes and what they hold. Threads and what is sent to them are few.
pthread_mutex_t inboxLock = PTHREAD_MUTEX_INITIALIZER;
Inbox* inboxes = nullptr;

thread_local Inbox* currentInbox = nullptr;

void FreeItems(Item* items) {
  while (items != nullptr) {
    Item* next = items->next;
    delete items;
    items = next;
  }
}

uint32_t RunItems(Item* items) {
  uint32_t ran = 0;
  while (items != nullptr) {
    Item* item = items;
    items = item->next;
    item->function(item->argument);
    delete item;
    ++ran;
  }
  return ran;
}

void Discard(Inbox* inbox) {
  FreeItems(inbox->sentWork.TakeAll());
  FreeItems(inbox->completions.TakeAll());
  CloseWaitable(inbox->events.sentWork);
  CloseWaitable(inbox->events.completions);
  delete inbox;
}

/// Detach hook: what is still queued to the leaving thread never runs.
void CloseInbox() {
  Inbox* inbox = currentInbox;
  if (inbox == nullptr) return;
  currentInbox = nullptr;
  pthread_mutex_lock(&inboxLock);
  for (Inbox** link = &inboxes; *link != nullptr; link = &(*link)->next) {
    if (*link == inbox) {
      *link = inbox->next;
      break;
    }
  }
  pthread_mutex_unlock(&inboxLock);
  Discard(inbox);
}

Inbox* OpenCurrentInbox() {
  if (currentInbox != nullptr) return currentInbox;
  static const bool hooked = AddThreadDetachHook(CloseInbox);
  Inbox* inbox = new (std::nothrow) Inbox;
  if (inbox == nullptr) return nullptr;
  inbox->events = {CreateEvent(false, false), CreateEvent(false, false)};
  if (!hooked || inbox->events.sentWork == nullptr || inbox->events.completions == nullptr) {
    Discard(inbox);
    return nullptr;
  }
  inbox->threadId = CurrentThreadId();
  TouchThread();
  pthread_mutex_lock(&inboxLock);
  inbox->next = inboxes;
  inboxes = inbox;
  pthread_mutex_unlock(&inboxLock);
  currentInbox = inbox;
  return inbox;
}

bool Queue(uint32_t threadId, ItemQueue Inbox::*queue, Waitable* InboxEvents::*event, Item item) {
  Item* copy = new (std::nothrow) Item(item);
  if (copy == nullptr) return false;
  pthread_mutex_lock(&inboxLock);
  Inbox* inbox = inboxes;
  while (inbox != nullptr && inbox->threadId != threadId) inbox = inbox->next;
  if (inbox != nullptr) {
    (inbox->*queue).Append(copy);
    SetEvent(inbox->events.*event);
  }
  pthread_mutex_unlock(&inboxLock);
  if (inbox == nullptr) delete copy;
  return inbox != nullptr;
}

uint32_t RunQueue(ItemQueue Inbox::*queue, Waitable* InboxEvents::*event) {
  Inbox* inbox = currentInbox;
  if (inbox == nullptr) return 0;
  pthread_mutex_lock(&inboxLock);
  Item* items = (inbox->*queue).TakeAll();
  ResetEvent(inbox->events.*event);
  pthread_mutex_unlock(&inboxLock);
  return RunItems(items);
}

}  // namespace

InboxEvents CurrentInboxEvents() noexcept {
  const Inbox* inbox = OpenCurrentInbox();
  return inbox != nullptr ? inbox->events : InboxEvents{};
}

void SignalPendingWork() noexcept {
  Inbox* inbox = currentInbox;
  if (inbox == nullptr) return;
  pthread_mutex_lock(&inboxLock);
  if (inbox->sentWork.first != nullptr) SetEvent(inbox->events.sentWork);
  pthread_mutex_unlock(&inboxLock);
}

uint32_t RunCompletions() noexcept { return RunQueue(&Inbox::completions, &InboxEvents::completions); }

bool SendWork(uint32_t threadId, void (*function)(void*), void* argument) noexcept {
  return Queue(threadId, &Inbox::sentWork, &InboxEvents::sentWork, {function, argument, nullptr});
}

bool QueueCompletion(uint32_t threadId, void (*function)(void*), void* argument) noexcept {
  return Queue(threadId, &Inbox::completions, &InboxEvents::completions, {function, argument, nullptr});
}

uint32_t RunSentWork() noexcept { return RunQueue(&Inbox::sentWork, &InboxEvents::sentWork); }

void OpenInbox() noexcept { OpenCurrentInbox(); }

}  // namespace plat
