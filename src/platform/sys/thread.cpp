// SPDX-License-Identifier: Apache-2.0
// Threads over POSIX threads.
#include "platform/sys/thread.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <new>

#include "marlo110k/platform/event.h"
#include "platform/base/fpu.h"

namespace plat {

class Thread {
 public:
  std::atomic<uint32_t> owners{2};  ///< The handle and the running thread.
  uint32_t (*function)(void*) = nullptr;
  void* argument = nullptr;
  int32_t priority = kPriorityDefault;
  char name[16] = {};           ///< The system keeps no more than 15 characters.
  Waitable* started = nullptr;  ///< Set once `id` is known.
  Waitable* ended = nullptr;
  uint32_t exitCode = 0;
  uint32_t id = 0;
  pthread_t handle{};
  pthread_mutex_t joinLock = PTHREAD_MUTEX_INITIALIZER;
  bool joined = false;  ///< Guarded by joinLock.
};

namespace {

constexpr int kTimeCriticalFifoPriority = 10;
constexpr int kTimeCriticalNice = -11;
constexpr int kHighNice = -5;

thread_local uint32_t currentThreadId = 0;

void GiveBack(Thread* thread) {
  if (thread->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  CloseWaitable(thread->started);
  CloseWaitable(thread->ended);
  pthread_mutex_destroy(&thread->joinLock);
  delete thread;
}

void* Run(void* argument) {
  Thread* thread = static_cast<Thread*>(argument);
  // A new thread inherits its creator's control word, flush-to-zero included.
  SetFloatState(kCleanFloatState);
  thread->id = CurrentThreadId();
  SetEvent(thread->started);
  if (thread->name[0] != 0) pthread_setname_np(pthread_self(), thread->name);
  SetCurrentPriority(thread->priority);
  thread->exitCode = thread->function(thread->argument);
  SetEvent(thread->ended);
  GiveBack(thread);
  return nullptr;
}

bool SetPolicy(int policy, int priority) {
  sched_param parameters{};
  parameters.sched_priority = priority;
  // Children of the thread start with the default policy.
  return sched_setscheduler(0, policy | SCHED_RESET_ON_FORK, &parameters) == 0;
}

}  // namespace

Thread* StartThread(uint32_t (*function)(void*), void* argument, int32_t priority, const char* name) noexcept {
  Thread* thread = new (std::nothrow) Thread;
  if (thread == nullptr) return nullptr;
  thread->function = function;
  thread->argument = argument;
  thread->priority = priority;
  if (name != nullptr) std::snprintf(thread->name, sizeof thread->name, "%.15s", name);
  thread->started = CreateEvent(true, false);
  thread->ended = CreateEvent(true, false);
  const bool ready = thread->started != nullptr && thread->ended != nullptr;
  if (!ready || pthread_create(&thread->handle, nullptr, Run, thread) != 0) {
    thread->owners.store(1, std::memory_order_relaxed);
    GiveBack(thread);
    return nullptr;
  }
  return thread;
}

bool JoinThread(Thread* thread, uint32_t timeoutMs, uint32_t* exitCode) noexcept {
  if (thread == nullptr || WaitOne(thread->ended, timeoutMs) != kWaitObject0) return false;
  // The function has returned; what remains is the thread's own leaving, its detach hooks included.
  pthread_mutex_lock(&thread->joinLock);
  if (!thread->joined) {
    pthread_join(thread->handle, nullptr);
    thread->joined = true;
  }
  pthread_mutex_unlock(&thread->joinLock);
  if (exitCode != nullptr) *exitCode = thread->exitCode;
  return true;
}

void CloseThread(Thread* thread) noexcept {
  if (thread == nullptr) return;
  pthread_mutex_lock(&thread->joinLock);
  if (!thread->joined) pthread_detach(thread->handle);
  pthread_mutex_unlock(&thread->joinLock);
  GiveBack(thread);
}

uint32_t ThreadIdOf(const Thread* thread) noexcept {
  if (thread == nullptr) return 0;
  WaitOne(thread->started, kInfinite);
  return thread->id;
}

uint32_t CurrentThreadId() noexcept {
  if (currentThreadId == 0) currentThreadId = static_cast<uint32_t>(syscall(SYS_gettid));
  return currentThreadId;
}

void SetIdealProcessor(uint32_t processor) noexcept {
  cpu_set_t allowed;
  if (processor >= CPU_SETSIZE || sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
  if (!CPU_ISSET(processor, &allowed)) return;
  cpu_set_t ideal;
  CPU_ZERO(&ideal);
  CPU_SET(processor, &ideal);
  pthread_setaffinity_np(pthread_self(), sizeof ideal, &ideal);
}

void SetCurrentPriority(int32_t priority) noexcept {
  const id_t self = CurrentThreadId();
  if (priority >= kPriorityTimeCritical && SetPolicy(SCHED_FIFO, kTimeCriticalFifoPriority)) return;
  if (sched_getscheduler(0) != SCHED_OTHER) SetPolicy(SCHED_OTHER, 0);
  if (priority >= kPriorityTimeCritical) {
    setpriority(PRIO_PROCESS, self, kTimeCriticalNice);
  } else if (priority >= kPriorityHigh) {
    setpriority(PRIO_PROCESS, self, kHighNice);
  } else if (getpriority(PRIO_PROCESS, self) < 0) {
    setpriority(PRIO_PROCESS, self, 0);
  }
}

}  // namespace plat
