// SPDX-License-Identifier: Apache-2.0
// Hooks at the end of threads, on a thread-specific key that goes with the library: a thread-local object
// with a destructor would keep the library mapped after its unload.
#include <pthread.h>

#include <atomic>

#include "platform/base/unload.h"
#include "platform/sys/thread.h"

namespace plat {
namespace {

constexpr uint32_t kMaxHooks = 16;

struct Hook {
  void (*function)();
  uint32_t running;  ///< Threads inside it.
};

pthread_mutex_t hookLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t hookReturned = PTHREAD_COND_INITIALIZER;
Hook hooks[kMaxHooks];

pthread_key_t threadKey;
std::atomic<bool> keyMade{false};
thread_local const Hook* hookOfThisThread = nullptr;

/// Runs on the leaving thread.
void RunHooks(void*) {
  for (Hook& hook : hooks) {
    pthread_mutex_lock(&hookLock);
    void (*function)() = hook.function;
    if (function != nullptr) ++hook.running;
    pthread_mutex_unlock(&hookLock);
    if (function == nullptr) continue;
    hookOfThisThread = &hook;
    function();
    hookOfThisThread = nullptr;
    pthread_mutex_lock(&hookLock);
    --hook.running;
    pthread_cond_broadcast(&hookReturned);
    pthread_mutex_unlock(&hookLock);
  }
}

bool MakeKey() {
  if (keyMade.load(std::memory_order_acquire)) return true;
  pthread_mutex_lock(&hookLock);
  bool made = keyMade.load(std::memory_order_relaxed);
  if (!made) {
    made = pthread_key_create(&threadKey, RunHooks) == 0;
    keyMade.store(made, std::memory_order_release);
  }
  pthread_mutex_unlock(&hookLock);
  return made;
}

/// After this no leaving thread calls into the library.
[[gnu::destructor(kStopAtUnload)]] void DeleteKey() {
  if (keyMade.exchange(false, std::memory_order_acq_rel)) pthread_key_delete(threadKey);
}

}  // namespace

bool AddThreadDetachHook(void (*hook)()) noexcept {
  if (hook == nullptr || !MakeKey()) return false;
  pthread_mutex_lock(&hookLock);
  Hook* free = nullptr;
  for (Hook& entry : hooks) {
    if (entry.function == nullptr && entry.running == 0) {
      free = &entry;
      break;
    }
  }
  if (free != nullptr) free->function = hook;
  pthread_mutex_unlock(&hookLock);
  return free != nullptr;
}

void RemoveThreadDetachHook(void (*hook)()) noexcept {
  if (hook == nullptr) return;
  pthread_mutex_lock(&hookLock);
  for (Hook& entry : hooks) {
    if (entry.function != hook) continue;
    entry.function = nullptr;
    const uint32_t ours = hookOfThisThread == &entry ? 1 : 0;
    while (entry.running > ours) pthread_cond_wait(&hookReturned, &hookLock);
    break;
  }
  pthread_mutex_unlock(&hookLock);
}

void TouchThread() noexcept {
  if (MakeKey() && pthread_getspecific(threadKey) == nullptr) pthread_setspecific(threadKey, hooks);
}

}  // namespace plat
