// SPDX-License-Identifier: Apache-2.0
// Threads, locks and detach hooks, and a library that goes while threads that used it live on.
#include "platform/sys/thread.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <cstring>
#include <vector>

#include "marlo110k/platform/event.h"
#include "marlo110k/platform/lock.h"
#include "platform/base/clock.h"
#include "platform/base/fpu.h"
#include "testing/worker.h"

namespace plat {
namespace {

using testing_support::Worker;

uint32_t ReturnArgument(void* argument) { return *static_cast<uint32_t*>(argument); }

TEST(Thread, GivesItsExitCodeToEveryJoin) {
  uint32_t code = 0xDEADBEEF;
  Thread* thread = StartThread(ReturnArgument, &code, kPriorityDefault, "a name longer than the system keeps");
  ASSERT_NE(thread, nullptr);
  const uint32_t id = ThreadIdOf(thread);
  EXPECT_NE(id, 0u);
  EXPECT_NE(id, CurrentThreadId());
  uint32_t exitCode = 0;
  EXPECT_TRUE(JoinThread(thread, kInfinite, &exitCode));
  EXPECT_EQ(exitCode, code);
  EXPECT_TRUE(JoinThread(thread, 0, nullptr));
  EXPECT_EQ(ThreadIdOf(thread), id);
  CloseThread(thread);
  CloseThread(nullptr);
  EXPECT_FALSE(JoinThread(nullptr, 0, nullptr));
  EXPECT_EQ(ThreadIdOf(nullptr), 0u);
}

TEST(Thread, AJoinTimesOutOnTheFakeClockAndAClosedThreadRunsOn) {
  FakeClock clock;
  Waitable* release = CreateEvent(true, false);
  Waitable* done = CreateEvent(true, false);
  struct Events {
    Waitable* release;
    Waitable* done;
  } events{release, done};
  Thread* thread = StartThread(
      [](void* argument) -> uint32_t {
        const Events* given = static_cast<Events*>(argument);
        WaitOne(given->release, kInfinite);
        SetEvent(given->done);
        return 0;
      },
      &events, kPriorityDefault, nullptr);
  Worker joiner([&] { EXPECT_FALSE(JoinThread(thread, 2000, nullptr)); });
  clock.AwaitTimedWaiters(1);
  clock.StepMilliseconds(2000);
  joiner.Join();
  CloseThread(thread);
  SetEvent(release);
  EXPECT_EQ(WaitOne(done, kInfinite), kWaitObject0);
  CloseWaitable(release);
  CloseWaitable(done);
}

TEST(Thread, StartsWithACleanFloatStateWhateverItsCreatorHas) {
  FloatStateGuard guard(kRenderFloatState | 0x6000);
  uint32_t state = 0;
  Worker worker([&] { state = FloatState(); });
  worker.Join();
  EXPECT_EQ(state, kCleanFloatState);
  EXPECT_EQ(FloatState(), kRenderFloatState | 0x6000);
}

TEST(Thread, APriorityIsNeverAFailureAndIsNotHandedOn) {
  for (const int32_t priority : {kPriorityTimeCritical, kPriorityHigh, kPriorityDefault, -15}) {
    int child = -1;
    Worker worker(
        [&] {
          Worker inner([&] { child = sched_getscheduler(0) & ~SCHED_RESET_ON_FORK; });
          inner.Join();
        },
        priority);
    worker.Join();
    EXPECT_EQ(child, SCHED_OTHER) << priority;
  }
}

TEST(Thread, TheIdealProcessorIsKeptAndABadOneIgnored) {
  Worker worker([] {
    cpu_set_t before;
    sched_getaffinity(0, sizeof before, &before);
    SetIdealProcessor(0xFFFFFFFF);
    SetIdealProcessor(CPU_SETSIZE - 1);
    cpu_set_t after;
    sched_getaffinity(0, sizeof after, &after);
    EXPECT_TRUE(CPU_EQUAL(&before, &after));
    uint32_t first = 0;
    while (!CPU_ISSET(first, &before)) ++first;
    SetIdealProcessor(first);
    EXPECT_EQ(sched_getcpu(), static_cast<int>(first));
  });
}

// ---- Lock ------------------------------------------------------------------------------------------

TEST(Lock, IsReEntrantForItsHolderOnly) {
  CriticalSection lock{};
  InitializeLock(&lock);
  EnterLock(&lock);
  EXPECT_TRUE(TryEnterLock(&lock));
  bool entered = true;
  Worker([&] { entered = TryEnterLock(&lock); }).Join();
  EXPECT_FALSE(entered);
  LeaveLock(&lock);
  Worker([&] { entered = TryEnterLock(&lock); }).Join();
  EXPECT_FALSE(entered) << "held once more";
  LeaveLock(&lock);
  Worker([&] {
    entered = TryEnterLock(&lock);
    LeaveLock(&lock);
  }).Join();
  EXPECT_TRUE(entered);
  DeleteLock(&lock);
  const CriticalSection zero{};
  EXPECT_EQ(memcmp(&lock, &zero, sizeof lock), 0);
  InitializeLock(&lock);
  { LockGuard guard(&lock); }
  { LockGuard guard(nullptr); }
  DeleteLock(&lock);
}

TEST(Lock, GuardsAPlainCounter) {
  CriticalSection lock{};
  InitializeLock(&lock);
  int64_t counter = 0;
  std::vector<Worker> workers;
  for (int i = 0; i < 4; ++i) {
    workers.emplace_back([&] {
      for (int round = 0; round < 5'000; ++round) {
        LockGuard outer(&lock);
        LockGuard inner(&lock);
        ++counter;
      }
    });
  }
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(counter, 20'000);
  DeleteLock(&lock);
}

// ---- Detach hooks ----------------------------------------------------------------------------------

std::atomic<int> leaves{0};
std::atomic<int> otherLeaves{0};
void CountLeave() { ++leaves; }
void CountOtherLeave() { ++otherLeaves; }
void RemoveItself() {
  ++leaves;
  RemoveThreadDetachHook(RemoveItself);
}

TEST(DetachHook, RunsForThreadsThatTouchedAndNotAfterRemoval) {
  leaves = otherLeaves = 0;
  ASSERT_TRUE(AddThreadDetachHook(CountLeave));
  ASSERT_TRUE(AddThreadDetachHook(CountOtherLeave));
  Worker([] {}).Join();
  EXPECT_EQ(leaves, 0);
  Worker([] {
    TouchThread();
    TouchThread();
  }).Join();
  EXPECT_EQ(leaves, 1);
  EXPECT_EQ(otherLeaves, 1);
  RemoveThreadDetachHook(CountLeave);
  Worker([] { TouchThread(); }).Join();
  EXPECT_EQ(leaves, 1);
  EXPECT_EQ(otherLeaves, 2);
  RemoveThreadDetachHook(CountOtherLeave);
  RemoveThreadDetachHook(CountOtherLeave);
  EXPECT_FALSE(AddThreadDetachHook(nullptr));
  ASSERT_TRUE(AddThreadDetachHook(RemoveItself));
  Worker([] { TouchThread(); }).Join();
  Worker([] { TouchThread(); }).Join();
  EXPECT_EQ(leaves, 2) << "a hook may remove itself";
}

TEST(DetachHook, TheLibraryMayGoBeforeTheThreadsThatUsedIt) {
  void* library = dlopen(PLATFORM_PROBE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto symbol = [&](const char* name) { return dlsym(library, name); };
  const auto hook = reinterpret_cast<bool (*)(int*)>(symbol("ProbeHook"));
  const auto unhook = reinterpret_cast<void (*)()>(symbol("ProbeUnhook"));
  const auto touch = reinterpret_cast<void (*)()>(symbol("ProbeTouch"));
  const auto openInbox = reinterpret_cast<void (*)()>(symbol("ProbeOpenInbox"));
  const auto useAll = reinterpret_cast<bool (*)()>(symbol("ProbeUseAll"));
  ASSERT_TRUE(hook != nullptr && unhook != nullptr && touch != nullptr && openInbox != nullptr && useAll != nullptr);
  int counted = 0;
  ASSERT_TRUE(hook(&counted));
  Worker([&] {
    openInbox();
    touch();
  }).Join();
  EXPECT_EQ(counted, 1);

  Waitable* used = CreateEvent(true, false);
  Waitable* unloaded = CreateEvent(true, false);
  Worker survivor([&] {
    EXPECT_TRUE(useAll());
    touch();
    SetEvent(used);
    WaitOne(unloaded, kInfinite);
  });
  WaitOne(used, kInfinite);
  unhook();
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_EQ(dlopen(PLATFORM_PROBE_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr) << "something pins the library";
  SetEvent(unloaded);
  survivor.Join();
  EXPECT_EQ(counted, 1);
  CloseWaitable(used);
  CloseWaitable(unloaded);
}

// ---- Waits under load ------------------------------------------------------------------------------

TEST(WaitStress, EachAutoResetSignalReachesExactlyOneWait) {
  Waitable* requests = CreateSemaphore(0, 1'000'000);
  Waitable* turn = CreateEvent(false, true);
  Waitable* stop = CreateEvent(true, false);
  constexpr int kRounds = 3'000;
  std::atomic<int> served{0};
  int64_t guarded = 0;  // Plain: the auto-reset event is the lock.
  std::vector<Worker> workers;
  for (int i = 0; i < 4; ++i) {
    workers.emplace_back([&] {
      Waitable* sources[] = {requests, stop};
      while (WaitAny(sources, 2, kInfinite, 0, 0) == 0) {
        EXPECT_EQ(WaitOne(turn, kInfinite), kWaitObject0);
        ++guarded;
        SetEvent(turn);
        ++served;
      }
    });
  }
  for (int i = 0; i < kRounds; ++i) ReleaseSemaphore(requests, 1);
  while (served < kRounds) sched_yield();
  SetEvent(stop);
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(guarded, kRounds);
  EXPECT_EQ(WaitOne(requests, 0), kWaitTimeout);
  CloseWaitable(requests);
  CloseWaitable(turn);
  CloseWaitable(stop);
}

TEST(WaitStress, WaitsForAllAndForAnyShareTheSignalsWithoutLoss) {
  Waitable* a = CreateSemaphore(0, 1'000'000);
  Waitable* b = CreateSemaphore(0, 1'000'000);
  Waitable* stop = CreateEvent(true, false);
  constexpr int kRounds = 2'000;
  std::atomic<int> pairs{0};
  std::atomic<int> singles{0};
  std::vector<Worker> workers;
  for (int i = 0; i < 2; ++i) {
    workers.emplace_back([&, i] {
      // In opposite orders, which must not deadlock.
      Waitable* both[] = {i == 0 ? a : b, i == 0 ? b : a};
      for (uint32_t result = 0; result == 0;) {
        result = WaitAny(both, 2, 1, 0, kWaitAll);
        if (result == 0) ++pairs;
        if (result == kWaitTimeout) result = WaitOne(stop, 0) == 0 ? kWaitTimeout : 0;
      }
    });
  }
  workers.emplace_back([&] {
    Waitable* any[] = {a, b, stop};
    while (WaitAny(any, 3, kInfinite, 0, 0) < 2) ++singles;
  });
  for (int i = 0; i < kRounds; ++i) {
    ReleaseSemaphore(a, 1);
    ReleaseSemaphore(b, 1);
  }
  while (2 * pairs + singles < 2 * kRounds) sched_yield();
  SetEvent(stop);
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(2 * pairs + singles, 2 * kRounds);
  CloseWaitable(a);
  CloseWaitable(b);
  CloseWaitable(stop);
}

TEST(WaitStress, AnEventMayBeClosedByTheThreadItWoke) {
  for (int i = 0; i < 2'000; ++i) {
    Waitable* event = CreateEvent(false, false);
    Worker setter([event] { SetEvent(event); });
    EXPECT_EQ(WaitOne(event, kInfinite), kWaitObject0);
    CloseWaitable(event);
  }
}

TEST(WaitStress, PulsesMeetComingAndGoingWaiters) {
  Waitable* event = CreateEvent(true, false);
  Waitable* other = CreateEvent(true, true);
  std::atomic<bool> stop{false};
  std::vector<Worker> workers;
  for (int i = 0; i < 3; ++i) {
    workers.emplace_back([&, i] {
      Waitable* objects[] = {event, other};
      while (!stop) {
        const uint32_t result = i == 0 ? WaitAny(objects, 2, 1, 0, kWaitAll) : WaitOne(event, 1);
        EXPECT_TRUE(result == kWaitObject0 || result == kWaitTimeout);
      }
    });
  }
  for (int i = 0; i < 3'000; ++i) PulseEvent(event);
  stop = true;
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  CloseWaitable(event);
  CloseWaitable(other);
}

TEST(SentWorkStress, EveryItemRunsOnceInOrder) {
  struct State {
    std::vector<int> order;
    int next = 0;
  } state;
  struct Item {
    State* state;
    int number;
  };
  constexpr int kItems = 2'000;
  std::atomic<uint32_t> id{0};
  Worker receiver([&] {
    OpenInbox();
    id = CurrentThreadId();
    while (state.order.size() < kItems) {
      EXPECT_EQ(WaitAny(nullptr, 0, kInfinite, kWakeSentWork, 0), 0u);
      RunSentWork();
    }
  });
  while (id == 0) sched_yield();
  std::vector<Item> items;
  for (int i = 0; i < kItems; ++i) items.push_back({&state, i});
  for (Item& item : items) {
    EXPECT_TRUE(SendWork(
        id,
        [](void* argument) {
          const Item* sent = static_cast<Item*>(argument);
          sent->state->order.push_back(sent->number);
        },
        &item));
  }
  receiver.Join();
  for (int i = 0; i < kItems; ++i) ASSERT_EQ(state.order[static_cast<size_t>(i)], i);
}

}  // namespace
}  // namespace plat
