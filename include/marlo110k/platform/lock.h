// SPDX-License-Identifier: Apache-2.0
// The re-entrant lock that lists and queues carry and clients may take around compound operations.
#pragma once

#include <cstdint>

#include "marlo110k/export.h"

namespace plat {

/// A re-entrant mutual exclusion lock of fixed size, embedded in published records.
/// It may not be moved or copied while initialised.
struct CriticalSection {
  alignas(8) unsigned char storage[40];
};
static_assert(sizeof(CriticalSection) == 40);

/// Makes zeroed or deleted storage a lock. Never fails. [any thread]
ZR_API void InitializeLock(CriticalSection* lock) noexcept;
/// Ends a lock that nobody holds. [any thread]
ZR_API void DeleteLock(CriticalSection* lock) noexcept;
/// Waits for the lock; the holder may enter again and leaves as often. [any thread]
ZR_API void EnterLock(CriticalSection* lock) noexcept;
/// Enters without waiting. @return false when another thread holds the lock. [any thread]
ZR_API bool TryEnterLock(CriticalSection* lock) noexcept;
/// Leaves once. Only the holder may call. [any thread]
ZR_API void LeaveLock(CriticalSection* lock) noexcept;

/// Holds a lock for a scope; a null lock is not taken.
class LockGuard {
 public:
  explicit LockGuard(CriticalSection* lock) noexcept : lock_(lock) {
    if (lock_ != nullptr) EnterLock(lock_);
  }
  ~LockGuard() {
    if (lock_ != nullptr) LeaveLock(lock_);
  }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  CriticalSection* lock_;
};

}  // namespace plat
