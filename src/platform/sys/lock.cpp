// SPDX-License-Identifier: Apache-2.0
// The re-entrant lock: a recursive POSIX mutex in the record's 40 bytes.
#include "marlo110k/platform/lock.h"

#include <pthread.h>

#include <cstring>
#include <new>

namespace plat {
namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CriticalSection::storage));
static_assert(alignof(pthread_mutex_t) <= alignof(CriticalSection));

pthread_mutex_t* MutexOf(CriticalSection* lock) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(lock->storage));
}

}  // namespace

void InitializeLock(CriticalSection* lock) noexcept {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(new (lock->storage) pthread_mutex_t, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void DeleteLock(CriticalSection* lock) noexcept {
  pthread_mutex_destroy(MutexOf(lock));
  std::memset(lock->storage, 0, sizeof lock->storage);
}

void EnterLock(CriticalSection* lock) noexcept { pthread_mutex_lock(MutexOf(lock)); }

bool TryEnterLock(CriticalSection* lock) noexcept { return pthread_mutex_trylock(MutexOf(lock)) == 0; }

void LeaveLock(CriticalSection* lock) noexcept { pthread_mutex_unlock(MutexOf(lock)); }

}  // namespace plat
