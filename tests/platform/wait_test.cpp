// SPDX-License-Identifier: Apache-2.0
// Events, semaphores and waits, with time-outs on the fake clock.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "marlo110k/platform/event.h"
#include "platform/base/clock.h"
#include "platform/sys/thread.h"
#include "testing/worker.h"

namespace plat {
namespace {

using testing_support::Worker;

/// A waitable that closes itself.
class Object {
 public:
  explicit Object(Waitable* object) : object_(object) { EXPECT_NE(object, nullptr); }
  ~Object() { CloseWaitable(object_); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  operator Waitable*() const { return object_; }

 private:
  Waitable* object_;
};

TEST(Wait, AutoResetEventLetsOneWaitPass) {
  Object event(CreateEvent(false, true));
  EXPECT_EQ(WaitOne(event, 0), kWaitObject0);
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  EXPECT_TRUE(SetEvent(event));
  EXPECT_TRUE(SetEvent(event));
  EXPECT_EQ(WaitOne(event, kInfinite), kWaitObject0);
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
}

TEST(Wait, ManualResetEventStaysSetUntilReset) {
  Object event(CreateEvent(true, false));
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  SetEvent(event);
  EXPECT_EQ(WaitOne(event, 0), kWaitObject0);
  EXPECT_EQ(WaitOne(event, kInfinite), kWaitObject0);
  ResetEvent(event);
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
}

TEST(Wait, SemaphoreCountsAndRefusesMoreThanItsMaximum) {
  EXPECT_EQ(CreateSemaphore(2, 1), nullptr);
  EXPECT_EQ(CreateSemaphore(-1, 1), nullptr);
  EXPECT_EQ(CreateSemaphore(0, 0), nullptr);
  Object semaphore(CreateSemaphore(1, 3));
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitObject0);
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitTimeout);
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 0));
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 4));
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitTimeout) << "a refused release changed the count";
  EXPECT_TRUE(ReleaseSemaphore(semaphore, 2));
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 2));
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitObject0);
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitObject0);
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitTimeout);
}

TEST(Wait, EachCallRefusesTheOtherKindAndNull) {
  Object event(CreateEvent(false, false));
  Object semaphore(CreateSemaphore(0, 1));
  EXPECT_FALSE(SetEvent(semaphore));
  EXPECT_FALSE(ResetEvent(semaphore));
  EXPECT_FALSE(PulseEvent(semaphore));
  EXPECT_FALSE(ReleaseSemaphore(event, 1));
  EXPECT_FALSE(SetEvent(nullptr));
  EXPECT_FALSE(ResetEvent(nullptr));
  EXPECT_FALSE(PulseEvent(nullptr));
  EXPECT_FALSE(ReleaseSemaphore(nullptr, 1));
  EXPECT_EQ(WaitOne(nullptr, 0), kWaitFailed);
  CloseWaitable(nullptr);
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitTimeout);
}

TEST(WaitAny, GivesTheLowestSignalledIndexAndTakesOnlyThat) {
  Object a(CreateEvent(false, false));
  Object b(CreateEvent(false, true));
  Object c(CreateEvent(false, true));
  Waitable* objects[] = {a, b, c};
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, 0), 1u);
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, 0), 2u);
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, 0), kWaitTimeout);
}

TEST(WaitAny, TheSameObjectMayStandTwiceInAWaitForAny) {
  Object event(CreateEvent(false, false));
  Waitable* objects[] = {event, event};
  Worker worker([&] { EXPECT_EQ(WaitAny(objects, 2, kInfinite, 0, 0), 0u); });
  SetEvent(event);
  worker.Join();
  EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
}

TEST(WaitAny, LimitsAndBadHandlesFail) {
  Object event(CreateEvent(true, true));
  std::vector<Waitable*> objects(64, event);
  EXPECT_EQ(WaitAny(objects.data(), 63, 0, 0, 0), 0u);
  EXPECT_EQ(WaitAny(objects.data(), 64, 0, 0, 0), kWaitFailed);
  EXPECT_EQ(WaitAny(objects.data(), 2, 0, 0, kWaitAll), kWaitFailed);
  objects[62] = nullptr;
  EXPECT_EQ(WaitAny(objects.data(), 63, 0, 0, 0), kWaitFailed);
  EXPECT_EQ(WaitAny(nullptr, 1, 0, 0, 0), kWaitFailed);
  EXPECT_EQ(WaitAny(nullptr, 0, kInfinite, 0, 0), kWaitFailed) << "nothing could ever end this wait";
}

TEST(WaitAll, TakesNothingUntilAllAreSignalled) {
  Object a(CreateEvent(false, true));
  Object b(CreateSemaphore(0, 5));
  Object c(CreateEvent(true, false));
  Waitable* objects[] = {c, a, b};
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, kWaitAll), kWaitTimeout);
  ReleaseSemaphore(b, 2);
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, kWaitAll), kWaitTimeout);
  EXPECT_EQ(WaitOne(a, 0), kWaitObject0) << "the failed wait kept the event";
  SetEvent(a);
  SetEvent(c);
  EXPECT_EQ(WaitAny(objects, 3, 0, 0, kWaitAll), kWaitObject0);
  EXPECT_EQ(WaitOne(a, 0), kWaitTimeout);
  EXPECT_EQ(WaitOne(b, 0), kWaitObject0) << "only one unit is taken";
  EXPECT_EQ(WaitOne(c, 0), kWaitObject0) << "manual reset stays";
}

TEST(WaitAll, PassesWhenTheLastObjectComesFromAnotherThread) {
  FakeClock clock;
  Object a(CreateEvent(false, false));
  Object b(CreateEvent(false, false));
  Waitable* objects[] = {a, b};
  Worker worker([&] { EXPECT_EQ(WaitAny(objects, 2, 1000, 0, kWaitAll), kWaitObject0); });
  clock.AwaitTimedWaiters(1);
  SetEvent(b);
  EXPECT_EQ(WaitOne(b, 0), kWaitObject0) << "a wait for all must leave b until a comes";
  SetEvent(a);
  SetEvent(b);
  worker.Join();
  EXPECT_EQ(WaitOne(a, 0), kWaitTimeout);
  EXPECT_EQ(WaitOne(b, 0), kWaitTimeout);
}

TEST(WaitAll, APulsePassesTheWaitOnlyWhenTheRestIsSignalled) {
  FakeClock clock;
  Object pulsed(CreateEvent(true, false));
  Object other(CreateEvent(false, false));
  Waitable* objects[] = {pulsed, other};
  uint32_t result = 0;
  Worker first([&] { result = WaitAny(objects, 2, 100, 0, kWaitAll); });
  clock.AwaitTimedWaiters(1);
  PulseEvent(pulsed);
  clock.StepMilliseconds(100);
  first.Join();
  EXPECT_EQ(result, kWaitTimeout);
  SetEvent(other);
  Worker second([&] { result = WaitAny(objects, 2, 100, 0, kWaitAll); });
  clock.AwaitTimedWaiters(1);
  PulseEvent(pulsed);
  second.Join();
  EXPECT_EQ(result, kWaitObject0);
  EXPECT_EQ(WaitOne(other, 0), kWaitTimeout);
}

TEST(PulseEvent, WithoutWaitersLeavesTheEventReset) {
  for (const bool manual : {false, true}) {
    Object event(CreateEvent(manual, true));
    EXPECT_TRUE(PulseEvent(event));
    EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  }
}

TEST(PulseEvent, FreesAllWaitersOfAManualEventAndOneOfAnAutoEvent) {
  for (const bool manual : {true, false}) {
    FakeClock clock;
    Object event(CreateEvent(manual, false));
    std::atomic<uint32_t> passed{0};
    std::vector<Worker> workers;
    for (int i = 0; i < 3; ++i) {
      workers.emplace_back([&] { passed += WaitOne(event, 1000) == kWaitObject0; });
    }
    clock.AwaitTimedWaiters(3);
    PulseEvent(event);
    clock.StepMilliseconds(1000);
    for (Worker& worker : workers) worker.Join();
    EXPECT_EQ(passed, manual ? 3u : 1u);
    EXPECT_EQ(WaitOne(event, 0), kWaitTimeout);
  }
}

TEST(ReleaseSemaphore, FreesAsManyWaitersAsUnits) {
  FakeClock clock;
  Object semaphore(CreateSemaphore(0, 10));
  std::atomic<uint32_t> passed{0};
  std::vector<Worker> workers;
  for (int i = 0; i < 4; ++i) {
    workers.emplace_back([&] { passed += WaitOne(semaphore, 50) == kWaitObject0; });
  }
  clock.AwaitTimedWaiters(4);
  ReleaseSemaphore(semaphore, 2);
  clock.StepMilliseconds(50);
  for (Worker& worker : workers) worker.Join();
  EXPECT_EQ(passed, 2u);
  EXPECT_EQ(WaitOne(semaphore, 0), kWaitTimeout);
}

TEST(FakeClock, TimedWaitsEndAtTheirStepAndNotBefore) {
  FakeClock clock;
  Object event(CreateEvent(false, false));
  std::atomic<bool> back{false};
  uint32_t result = 0;
  Worker worker([&] {
    result = WaitOne(event, 10'000);
    back = true;
  });
  clock.AwaitTimedWaiters(1);
  clock.StepMilliseconds(9'999);
  clock.AwaitTimedWaiters(1);  // Still waiting: a finished wait doesn't count.
  EXPECT_FALSE(back);
  clock.StepMilliseconds(1);
  worker.Join();
  EXPECT_EQ(result, kWaitTimeout);
}

TEST(FakeClock, CountsOnlyByStepsAndGivesWayToTheFormerClock) {
  const int64_t system = Counter();
  {
    FakeClock clock;
    const int64_t start = Counter();
    const uint32_t startMilliseconds = Milliseconds();
    EXPECT_NE(start, 0);
    EXPECT_EQ(Counter(), start);
    clock.StepMilliseconds(4'294'967'295u);
    EXPECT_EQ(Counter() - start, 4'294'967'295LL * (CounterFrequency() / 1000));
    EXPECT_EQ(Milliseconds() - startMilliseconds, 4'294'967'295u);
  }
  EXPECT_GE(Counter(), system);
  EXPECT_EQ(CounterFrequency(), 10'000'000);
}

TEST(Wait, TimesOutOnTheSystemClock) {
  Object event(CreateEvent(false, false));
  const int64_t start = Counter();
  EXPECT_EQ(WaitOne(event, 20), kWaitTimeout);
  EXPECT_GE(Counter() - start, 20 * 10'000);
}

TEST(CloseWaitable, AWaiterKeepsTheObjectUntilItLeaves) {
  FakeClock clock;
  Waitable* event = CreateEvent(true, false);
  Worker worker([&] { EXPECT_EQ(WaitOne(event, 1000), kWaitObject0); });
  clock.AwaitTimedWaiters(1);
  SetEvent(event);
  CloseWaitable(event);
  worker.Join();
}

// ---- Work of the waiting thread itself --------------------------------------------------------------

void Count(void* counter) { ++*static_cast<int*>(counter); }

TEST(SentWork, EndsOneWaitAndRunsInRunSentWork) {
  OpenInbox();
  Object event(CreateEvent(false, false));
  Waitable* objects[] = {event};
  int ran = 0;
  EXPECT_TRUE(SendWork(CurrentThreadId(), Count, &ran));
  EXPECT_TRUE(SendWork(CurrentThreadId(), Count, &ran));
  EXPECT_EQ(WaitAny(objects, 1, 0, 0, 0), kWaitTimeout) << "without the wake mask work doesn't count";
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, 0), 1u);
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, 0), kWaitTimeout) << "seen work is not new work";
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, kWaitInputAvailable), 1u);
  EXPECT_EQ(RunSentWork(), 2u);
  EXPECT_EQ(ran, 2);
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, kWaitInputAvailable), kWaitTimeout);
  EXPECT_EQ(RunSentWork(), 0u);
}

TEST(SentWork, AnObjectComesBeforePendingWork) {
  OpenInbox();
  Object event(CreateEvent(false, true));
  Waitable* objects[] = {event};
  int ran = 0;
  SendWork(CurrentThreadId(), Count, &ran);
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, 0), 0u);
  EXPECT_EQ(WaitAny(objects, 1, 0, kWakeSentWork, 0), 1u);
  EXPECT_EQ(RunSentWork(), 1u);
}

TEST(Completion, RunsInAnAlertableWaitOnly) {
  Object a(CreateEvent(false, false));
  Object b(CreateEvent(false, false));
  Waitable* objects[] = {a, b};
  OpenInbox();
  int ran = 0;
  EXPECT_TRUE(QueueCompletion(CurrentThreadId(), Count, &ran));
  EXPECT_TRUE(QueueCompletion(CurrentThreadId(), Count, &ran));
  EXPECT_EQ(WaitAny(objects, 2, 0, kWakeSentWork, 0), kWaitTimeout);
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(WaitAny(objects, 2, kInfinite, 0, kWaitAlertable | kWaitAll), kWaitIoCompletion);
  EXPECT_EQ(ran, 2);
  EXPECT_EQ(WaitAny(objects, 2, 0, 0, kWaitAlertable), kWaitTimeout);
}

TEST(SentWork, WakesAWaitInProgressAndUnknownThreadsAreRefused) {
  FakeClock clock;
  Object event(CreateEvent(false, false));
  std::atomic<uint32_t> id{0};
  int ran = 0;
  Worker worker([&] {
    Waitable* objects[] = {event};
    id = CurrentThreadId();
    EXPECT_EQ(WaitAny(objects, 1, 1000, kWakeSentWork, 0), 1u);
    EXPECT_EQ(RunSentWork(), 1u);
    EXPECT_EQ(WaitAny(objects, 1, 1000, 0, kWaitAlertable), kWaitIoCompletion);
  });
  clock.AwaitTimedWaiters(1);
  EXPECT_TRUE(SendWork(id, Count, &ran));
  clock.AwaitTimedWaiters(1);
  EXPECT_TRUE(QueueCompletion(id, Count, &ran));
  worker.Join();
  EXPECT_EQ(ran, 2);
  EXPECT_FALSE(SendWork(id, Count, &ran)) << "the thread has ended";
  EXPECT_FALSE(SendWork(0, Count, &ran));
}

}  // namespace
}  // namespace plat
