// SPDX-License-Identifier: Apache-2.0
// Threads of the library: a clean float state at the start, a priority where the system allows it.
#pragma once

#include <cstdint>

namespace plat {

class Thread;

/// Priority words as published; 15 is time critical. What the system refuses is left out silently.
inline constexpr int32_t kPriorityDefault = 0;
inline constexpr int32_t kPriorityHigh = 2;
inline constexpr int32_t kPriorityTimeCritical = 15;

/// Starts function(argument) on a new thread. @return null when no thread could be made.
Thread* StartThread(uint32_t (*function)(void*), void* argument, int32_t priority, const char* name) noexcept;
/// Waits for the end, detach hooks included. @return false on time-out. Either way the thread still
/// belongs to the caller, who gives it back with CloseThread.
bool JoinThread(Thread* thread, uint32_t timeoutMs, uint32_t* exitCode) noexcept;
/// Gives the handle back; the thread runs on if it hasn't ended.
void CloseThread(Thread* thread) noexcept;
/// 0 for null. Waits until a thread that was just started runs.
uint32_t ThreadIdOf(const Thread* thread) noexcept;

uint32_t CurrentThreadId() noexcept;
/// Keeps the calling thread on a processor; one that it may not use changes nothing.
void SetIdealProcessor(uint32_t processor) noexcept;
void SetCurrentPriority(int32_t priority) noexcept;

/// Calls `hook` on every thread that ends from now on and ever called TouchThread. At most 16 hooks.
bool AddThreadDetachHook(void (*hook)()) noexcept;
/// Waits for other threads that are inside the hook: hold no lock that the hook takes.
void RemoveThreadDetachHook(void (*hook)()) noexcept;
/// Arms the detach hooks for the calling thread.
void TouchThread() noexcept;

/// Work sent to a thread runs there in RunSentWork; a WaitAny with kWakeSentWork comes back for it.
/// @return false when the thread isn't known (it never touched the inbox) or memory is short.
bool SendWork(uint32_t threadId, void (*function)(void*), void* argument) noexcept;
/// Queues a completion routine; it runs in an alertable wait of that thread.
bool QueueCompletion(uint32_t threadId, void (*function)(void*), void* argument) noexcept;
/// Runs what was sent to the calling thread. @return how many ran.
uint32_t RunSentWork() noexcept;
/// Makes the calling thread known to SendWork and QueueCompletion. A wait with kWakeSentWork or
/// kWaitAlertable does so too. What is still queued when the thread ends never runs.
/// A thread that outlives the library loses its inbox.
void OpenInbox() noexcept;

}  // namespace plat
