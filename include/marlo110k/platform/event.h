// SPDX-License-Identifier: Apache-2.0
// Waitable objects that a host hands to the library or receives from it: events and semaphores.
#pragma once

#include <cstdint>

#include "marlo110k/export.h"

namespace plat {

/// An event or a semaphore. Created and closed by its owner; a null handle is harmless everywhere.
class Waitable;

inline constexpr uint32_t kInfinite = 0xFFFFFFFF;  ///< A time-out that never comes.

// Results of a wait. A satisfied wait gives the index of the object, counted from 0.
inline constexpr uint32_t kWaitObject0 = 0;
inline constexpr uint32_t kWaitIoCompletion = 0xC0;  ///< A completion routine ran on this thread.
inline constexpr uint32_t kWaitTimeout = 0x102;
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;
inline constexpr uint32_t kMaxWaitObjects = 63;  ///< Objects in one wait, without the message source.

/// Bits of WaitAny's flags.
enum WaitFlags : uint32_t {
  kWaitAll = 1,             ///< Return when all objects are signalled, not the first.
  kWaitAlertable = 2,       ///< Also return when a completion routine was queued to this thread.
  kWaitInputAvailable = 4,  ///< Return at once for messages that were already seen but not taken.
};

/// Wake mask bit for work sent to this thread by another one.
inline constexpr uint32_t kWakeSentWork = 0x40;

/// Makes an event. @return null when memory is short; LastError() tells. [any thread]
ZR_API Waitable* CreateEvent(bool manualReset, bool initiallySet) noexcept;
/// Makes a semaphore with `initial` of at most `maximum` units. @return null on bad counts or short memory.
ZR_API Waitable* CreateSemaphore(int32_t initial, int32_t maximum) noexcept;
/// Gives the owner's reference back. Threads that still wait keep the object alive until they leave.
ZR_API void CloseWaitable(Waitable* object) noexcept;

/// Signals an event; an auto-reset event lets one waiter pass. Allocates nothing. [any thread]
ZR_API bool SetEvent(Waitable* event) noexcept;
/// [any thread]
ZR_API bool ResetEvent(Waitable* event) noexcept;
/// Lets the present waiters pass (all of a manual-reset event, one of an auto-reset one) and resets.
ZR_API bool PulseEvent(Waitable* event) noexcept;
/// Adds `units`. @return false, changing nothing, when that would pass the maximum.
ZR_API bool ReleaseSemaphore(Waitable* semaphore, int32_t units) noexcept;

/// Waits for one object. @return kWaitObject0, kWaitTimeout or kWaitFailed (null handle).
ZR_API uint32_t WaitOne(Waitable* object, uint32_t timeoutMs) noexcept;

/// Waits for any (or with kWaitAll all) of `count` objects, and with a wake mask also for the
/// thread's own pending work, which ends a wait for all objects too. Pending work ends one wait: a later
/// one looks past it unless kWaitInputAvailable is given. Without objects and work the time-out passes.
/// @param wakeMask kWakeSentWork or 0; other message kinds never come on this platform yet.
/// @return the lowest signalled index, `count` for pending work, kWaitIoCompletion, kWaitTimeout,
/// or kWaitFailed for more than kMaxWaitObjects objects, a null among them, or with kWaitAll one given twice.
/// kWaitAll gives kWaitObject0.
ZR_API uint32_t WaitAny(Waitable* const* objects, uint32_t count, uint32_t timeoutMs, uint32_t wakeMask,
                        uint32_t flags) noexcept;

}  // namespace plat
