// SPDX-License-Identifier: Apache-2.0
// The queue between threads: nothing lost, every waiter woken, deletion under waiters.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "kernel/queue_waiters.h"
#include "marlo110k/queue.h"
#include "platform/base/clock.h"
#include "platform/sys/thread.h"

namespace {

struct Element {
  tZRQELM links{};
  uint32_t number = 0;
};

TEST(QueueThreads, ProducersAndConsumersLoseNothing) {
  constexpr uint32_t kProducers = 3;
  constexpr uint32_t kConsumers = 3;
  constexpr uint32_t kEach = 4000;
  tZRQHEAD queue{};
  ASSERT_EQ(1, ZrQueueInitialize(&queue));
  std::vector<Element> elements(kProducers * kEach);
  std::vector<std::atomic<uint32_t>> taken(elements.size());
  std::atomic<uint32_t> total{0};
  std::vector<std::thread> threads;
  for (uint32_t p = 0; p < kProducers; ++p) {
    threads.emplace_back([&, p] {
      for (uint32_t i = 0; i < kEach; ++i) {
        Element& element = elements[p * kEach + i];
        element.number = p * kEach + i;
        if (i % 7 == 0) {
          ZrQueueInsertHead(&queue, &element.links);
        } else {
          ZrQueueInsert(&queue, &element.links);
        }
      }
    });
  }
  for (uint32_t c = 0; c < kConsumers; ++c) {
    threads.emplace_back([&, c] {
      while (total.load() < elements.size()) {
        // A wake that finds nothing gives null: consumers loop. The last flush below ends them.
        tZRQELM* element = c == 0   ? ZrQueueRemoveTail(&queue, kZrInfinite)
                           : c == 1 ? ZrQueueRemove(&queue, kZrInfinite)
                                    : ZrQueueRemoveAlertable(&queue, kZrInfinite);
        if (element == nullptr) continue;
        ++taken[reinterpret_cast<Element*>(element)->number];
        if (++total == elements.size()) ZrQueueFlush(&queue);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& count : taken) ASSERT_EQ(1U, count.load());
  ZrQueueDelete(&queue);
}

TEST(QueueThreads, OneConsumerSeesInsertionOrder) {
  tZRQHEAD queue{};
  ASSERT_EQ(1, ZrQueueInitialize(&queue));
  std::vector<Element> elements(20000);
  std::thread producer([&] {
    for (uint32_t i = 0; i < elements.size(); ++i) {
      elements[i].number = i;
      ZrQueueInsert(&queue, &elements[i].links);
    }
  });
  for (uint32_t next = 0; next < elements.size();) {
    if (tZRQELM* element = ZrQueueRemove(&queue, kZrInfinite)) {
      ASSERT_EQ(next++, reinterpret_cast<Element*>(element)->number);
    }
  }
  producer.join();
  ZrQueueDelete(&queue);
}

void AwaitWaiters(const tZRQHEAD* queue, size_t waiters) {
  while (marlo::CountWaiters(queue) < waiters) std::this_thread::yield();
}

TEST(QueueThreads, BlockedConsumersWakeForInsertFlushAndDelete) {
  tZRQHEAD queue{};
  ASSERT_EQ(1, ZrQueueInitialize(&queue));
  Element element;
  const auto remove = [&](tZRQELM** taken) { *taken = ZrQueueRemove(&queue, kZrInfinite); };
  const struct {
    void (*wake)(tZRQHEAD*, tZRQELM*);
    bool gives;
  } kRows[] = {{[](tZRQHEAD* q, tZRQELM* e) { ZrQueueInsert(q, e); }, true},
               {[](tZRQHEAD* q, tZRQELM*) { ZrQueueFlush(q); }, false},
               {[](tZRQHEAD* q, tZRQELM*) { ZrQueueDelete(q); }, false}};
  for (const auto& row : kRows) {
    tZRQELM* taken = &element.links;
    plat::ResetEvent(queue.event);
    std::thread consumer(remove, &taken);
    AwaitWaiters(&queue, 1);
    row.wake(&queue, &element.links);
    consumer.join();
    EXPECT_EQ(row.gives ? &element.links : nullptr, taken);
  }
}

// Waiters in every kind of wait, on their way in or out: each comes back with nothing, and the queue's memory goes
// as soon as the deletion returns, so that a late look at it is a fault that the sanitizers see.
TEST(QueueThreads, DeletionReleasesWaitersAndFreesTheQueue) {
  for (int round = 0; round < 300; ++round) {
    auto queue = std::make_unique<tZRQHEAD>();
    ASSERT_EQ(1, ZrQueueInitialize(queue.get()));
    plat::Waitable* extra = plat::CreateEvent(true, false);
    tZRQHEAD* head = queue.get();
    std::vector<std::thread> waiters;
    waiters.emplace_back([=] { EXPECT_EQ(nullptr, ZrQueueRemove(head, kZrInfinite)); });
    waiters.emplace_back([=] { EXPECT_EQ(nullptr, ZrQueueRemoveTail(head, kZrInfinite)); });
    waiters.emplace_back([=] { EXPECT_EQ(0, ZrQueueWait(head, kZrInfinite)); });
    waiters.emplace_back([=] { EXPECT_EQ(nullptr, ZrQueueRemoveAlertable(head, kZrInfinite)); });
    waiters.emplace_back([=] { EXPECT_EQ(nullptr, ZrQueueRemoveEx(head, &extra, 1, 0, kZrInfinite, nullptr)); });
    AwaitWaiters(head, waiters.size());
    if (round % 3 == 1) ZrQueueFlush(head);     // some are between their wait and the lock when the deletion comes
    if (round % 3 == 2) plat::SetEvent(extra);  // one leaves without the lock
    ZrQueueDelete(head);
    queue.reset();
    for (std::thread& waiter : waiters) waiter.join();
    plat::CloseWaitable(extra);
  }
}

// Short-lived queues at the same addresses, with waiters of the former life still leaving.
TEST(QueueThreads, AQueueMayBeMadeAgainUnderLateWaiters) {
  tZRQHEAD queue{};
  std::vector<std::thread> waiters;
  for (int round = 0; round < 200; ++round) {
    ASSERT_EQ(1, ZrQueueInitialize(&queue));
    waiters.emplace_back([&] { EXPECT_EQ(nullptr, ZrQueueRemove(&queue, kZrInfinite)); });
    while (marlo::CountWaiters(&queue) == 0) std::this_thread::yield();
    ZrQueueDelete(&queue);
    waiters.back().join();
    waiters.pop_back();
  }
}

// A serving wait goes on after sent work with what is left of its time, not with the whole of it.
TEST(QueueThreads, ServedWorkUsesUpTheTimeOut) {
  plat::FakeClock clock;
  tZRQHEAD queue{};
  ASSERT_EQ(1, ZrQueueInitialize(&queue));
  Element element;
  std::atomic<uint32_t> consumerId{0};
  std::atomic<bool> served{false};
  std::thread consumer([&] {
    plat::OpenInbox();
    consumerId = plat::CurrentThreadId();
    EXPECT_EQ(nullptr, ZrQueueRemoveAlertable(&queue, 1000));
  });
  clock.AwaitTimedWaiters(1);
  clock.StepMilliseconds(600);
  ASSERT_TRUE(plat::SendWork(
      consumerId.load(), [](void* flag) { static_cast<std::atomic<bool>*>(flag)->store(true); }, &served));
  while (!served.load()) std::this_thread::yield();
  clock.AwaitTimedWaiters(1);
  clock.StepMilliseconds(399);
  EXPECT_EQ(1U, marlo::CountWaiters(&queue));
  clock.StepMilliseconds(1);
  // Too late for a consumer whose time is up; one that began its time anew would take it.
  ZrQueueInsert(&queue, &element.links);
  consumer.join();
  EXPECT_EQ(&element.links, ZrQueueRemove(&queue, 0));
  ZrQueueDelete(&queue);
}

TEST(QueueThreads, FlushesAndProducersLeaveAnOrderlyQueue) {
  tZRQHEAD queue{};
  ASSERT_EQ(1, ZrQueueInitialize(&queue));
  std::vector<Element> elements(6000);
  std::atomic<bool> done{false};
  std::thread flusher([&] {
    while (!done.load()) {
      ZrQueueFlush(&queue);
      std::this_thread::yield();
    }
  });
  std::vector<std::thread> consumers;
  std::atomic<uint32_t> received{0};
  for (int c = 0; c < 2; ++c) {
    consumers.emplace_back([&] {
      while (!done.load()) {
        if (ZrQueueRemove(&queue, kZrInfinite) != nullptr) ++received;
      }
    });
  }
  for (Element& element : elements) {
    ZrQueueInsert(&queue, &element.links);
    ZrQueueWait(&queue, 0);
  }
  done.store(true);
  flusher.join();
  ZrQueueFlush(&queue);
  for (std::thread& consumer : consumers) consumer.join();
  EXPECT_LE(received.load(), elements.size());
  Element last;
  ZrQueueInsert(&queue, &last.links);
  EXPECT_EQ(&last.links, ZrQueueRemove(&queue, kZrInfinite));
  ZrQueueDelete(&queue);
}

}  // namespace
