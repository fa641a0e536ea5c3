// SPDX-License-Identifier: Apache-2.0
// The queue on one thread: order, results, and the state of its event.
#include "marlo110k/queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "platform/sys/thread.h"
#include "testing/random.h"

namespace {

struct Element {
  tZRQELM links{};
  int number = 0;
};

int NumberOf(const tZRQELM* element) {
  return element != nullptr ? reinterpret_cast<const Element*>(element)->number : -1;
}

int32_t HasNumber(tZRQELM* element, void* number) { return NumberOf(element) == *static_cast<int*>(number) ? 1 : 0; }

int32_t HasRemainder(tZRQELM* element, void* remainder) {
  return NumberOf(element) % 5 == *static_cast<int*>(remainder) ? 1 : 0;
}

class QueueTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(1, ZrQueueInitialize(&queue_));
    for (int i = 0; i < 100; ++i) elements_[i].number = i;
  }
  void TearDown() override { ZrQueueDelete(&queue_); }

  tZRQELM* Link(int number) { return &elements_[number].links; }
  void Insert(std::initializer_list<int> numbers) {
    for (int number : numbers) ZrQueueInsert(&queue_, Link(number));
  }
  bool IsSet() const { return plat::WaitOne(queue_.event, 0) == plat::kWaitObject0; }
  std::vector<int> Numbers() const {
    std::vector<int> forward, backward;
    const auto* head = reinterpret_cast<const tZRQELM*>(&queue_);
    for (const tZRQELM* e = head->next; e != head; e = e->next) forward.push_back(NumberOf(e));
    for (const tZRQELM* e = head->prev; e != head; e = e->prev) backward.push_back(NumberOf(e));
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(forward, backward);
    return forward;
  }

  tZRQHEAD queue_{};
  Element elements_[100];
};

TEST_F(QueueTest, RandomOperationsAgainstADeque) {
  testing_support::Random random(30);
  SCOPED_TRACE(random.Label());
  std::deque<int> model;
  bool flushed = false;
  for (int step = 0; step < 20000; ++step) {
    SCOPED_TRACE(step);
    int number = static_cast<int>(random.Between(0, 99));
    int remainder = static_cast<int>(random.Between(0, 4));
    const auto hasRemainder = [&](int n) { return n % 5 == remainder; };
    const bool queued = std::find(model.begin(), model.end(), number) != model.end();
    const auto match = std::find_if(model.begin(), model.end(), hasRemainder);
    const auto lastMatch = std::find_if(model.rbegin(), model.rend(), hasRemainder);
    const int matched = match != model.end() ? *match : -1;
    const int lastMatched = lastMatch != model.rend() ? *lastMatch : -1;
    const bool wasEmpty = model.empty();
    ASSERT_EQ(queued && elements_[number].links.next != nullptr ? 1 : 0, IsInZrQueue(&queue_, Link(number)));
    switch (random.Between(0, 12)) {
      case 0:
        if (queued) break;
        ZrQueueInsert(&queue_, Link(number));
        model.push_back(number);
        break;
      case 1:
        if (queued) break;
        ZrQueueInsertHead(&queue_, Link(number));
        model.push_front(number);
        break;
      case 2:
        if (queued) break;
        ZrQueueInsertEx(&queue_, HasRemainder, &remainder, Link(number));
        model.insert(match, number);
        break;
      case 3:
        if (queued) break;
        ZrQueueInsertExRev(&queue_, HasRemainder, &remainder, Link(number));
        // "Before" is towards the head also from this side.
        model.insert(lastMatch == model.rend() ? model.end() : lastMatch.base() - 1, number);
        break;
      case 4:
        ASSERT_EQ(model.empty() ? -1 : model.front(), NumberOf(ZrQueueRemove(&queue_, 0)));
        if (!model.empty()) model.pop_front();
        break;
      case 5:
        ASSERT_EQ(model.empty() ? -1 : model.back(), NumberOf(ZrQueueRemoveTail(&queue_, 0)));
        if (!model.empty()) model.pop_back();
        break;
      case 6:
        ASSERT_EQ(matched, NumberOf(ZrQueueFindAndRemove(&queue_, HasRemainder, &remainder)));
        if (matched >= 0) model.erase(match);
        break;
      case 7:
        ASSERT_EQ(lastMatched, NumberOf(ZrQueueFindAndRemoveRev(&queue_, HasRemainder, &remainder)));
        if (lastMatched >= 0) model.erase(lastMatch.base() - 1);
        break;
      case 8:
        ASSERT_EQ(matched, NumberOf(ZrQueueFind(&queue_, HasRemainder, &remainder)));
        ASSERT_EQ(lastMatched, NumberOf(ZrQueueFindRev(&queue_, HasRemainder, &remainder)));
        ASSERT_EQ(model.empty() ? 0 : 1, ZrQueueWait(&queue_, 0));
        break;
      case 9:
        ASSERT_EQ(matched, NumberOf(ZrQueueFindAndMoveToHead(&queue_, HasRemainder, &remainder)));
        if (matched >= 0) {
          model.erase(match);
          model.push_front(matched);
        }
        break;
      case 10:
        ASSERT_EQ(matched, NumberOf(ZrQueueFindAndMoveToTail(&queue_, HasRemainder, &remainder)));
        if (matched >= 0) {
          model.erase(match);
          model.push_back(matched);
        }
        break;
      case 11: {
        const bool toHead = random.Between(0, 1) != 0;
        const bool moves = queued && number != (toHead ? model.front() : model.back());
        ASSERT_EQ(moves ? 1 : 0,
                  toHead ? ZrQueueMoveToHead(&queue_, Link(number)) : ZrQueueMoveToTail(&queue_, Link(number)));
        if (!moves) break;
        model.erase(std::find(model.begin(), model.end(), number));
        if (toHead) {
          model.push_front(number);
        } else {
          model.push_back(number);
        }
        break;
      }
      default:
        if (random.Between(0, 40) != 0) break;
        ZrQueueFlush(&queue_);
        for (int left : model) elements_[left].links = {};  // stale links are the owner's to clear
        model.clear();
        flushed = true;
        break;
    }
    if (model.empty() && !wasEmpty && !IsSet()) flushed = false;
    if (!model.empty()) flushed = false;
    ASSERT_EQ(std::vector<int>(model.begin(), model.end()), Numbers());
    ASSERT_EQ(!model.empty() || flushed, IsSet());
  }
}

TEST_F(QueueTest, TakenElementsHaveNullLinks) {
  Insert({1, 2, 3, 4, 5});
  int two = 2, four = 4;
  for (tZRQELM* taken :
       {ZrQueueRemove(&queue_, 0), ZrQueueRemoveTail(&queue_, 0), ZrQueueFindAndRemove(&queue_, HasNumber, &two),
        ZrQueueFindAndRemoveRev(&queue_, HasNumber, &four), ZrQueueRemoveAlertable(&queue_, 0)}) {
    ASSERT_NE(nullptr, taken);
    EXPECT_EQ(nullptr, taken->next);
    EXPECT_EQ(nullptr, taken->prev);
    EXPECT_EQ(0, IsInZrQueue(&queue_, taken));
  }
  EXPECT_FALSE(IsSet());
}

TEST_F(QueueTest, InsertsBeforeAMatchFromEitherEnd) {
  Insert({1, 2, 3});
  int one = 1, three = 3;
  plat::ResetEvent(queue_.event);
  ZrQueueInsertEx(&queue_, HasNumber, &one, Link(10));
  EXPECT_FALSE(IsSet()) << "a new first element of a queue that had one leaves the event alone";
  ZrQueueInsertExRev(&queue_, HasNumber, &three, Link(30));
  EXPECT_EQ((std::vector<int>{10, 1, 2, 30, 3}), Numbers());
  ZrQueueInsertEx(&queue_, HasNumber, &one, nullptr);
  EXPECT_EQ(5U, Numbers().size());
}

TEST_F(QueueTest, FlushLeavesTheEventSetUntilTheNextEmptyingRemoval) {
  ZrQueueFlush(&queue_);
  EXPECT_TRUE(IsSet());
  EXPECT_EQ(nullptr, ZrQueueRemove(&queue_, kZrInfinite));
  EXPECT_EQ(nullptr, ZrQueueRemoveTail(&queue_, kZrInfinite));
  EXPECT_EQ(0, ZrQueueWait(&queue_, kZrInfinite));
  EXPECT_TRUE(IsSet());
  Insert({1, 2});
  EXPECT_EQ(1, NumberOf(ZrQueueRemove(&queue_, 0)));
  EXPECT_TRUE(IsSet());
  EXPECT_EQ(2, NumberOf(ZrQueueRemove(&queue_, 0)));
  EXPECT_FALSE(IsSet());
}

TEST_F(QueueTest, InitialisingAgainOnlyEmpties) {
  Insert({1, 2});
  plat::Waitable* event = queue_.event;
  EXPECT_EQ(1, ZrQueueInitialize(&queue_));
  EXPECT_EQ(event, queue_.event);
  EXPECT_EQ(0, ZrQueueWait(&queue_, 0));
  EXPECT_FALSE(IsSet());
  EXPECT_EQ(nullptr, ZrQueueRemove(&queue_, 0));
}

TEST_F(QueueTest, ADeletedQueueAnswersEmptyAndComesBack) {
  Insert({1});
  ZrQueueDelete(&queue_);
  ZrQueueDelete(&queue_);
  EXPECT_EQ(nullptr, queue_.event);
  EXPECT_EQ(nullptr, ZrQueueRemove(&queue_, kZrInfinite));
  EXPECT_EQ(0, ZrQueueWait(&queue_, kZrInfinite));
  ZrQueueFlush(&queue_);
  EXPECT_EQ(1, ZrQueueInitialize(&queue_));
  EXPECT_EQ(nullptr, ZrQueueRemove(&queue_, 0));
  elements_[2].links = {};
  Insert({2});
  EXPECT_EQ(2, NumberOf(ZrQueueRemove(&queue_, 0)));
}

TEST_F(QueueTest, ExtraHandles) {
  std::vector<plat::Waitable*> extra(63);
  for (plat::Waitable*& handle : extra) handle = plat::CreateEvent(true, false);
  uint32_t result = 12345;
  const auto remove = [&](uint32_t count, uint32_t flags, uint32_t timeoutMs) {
    return ZrQueueRemoveEx(&queue_, extra.data(), count, flags, timeoutMs, &result);
  };

  plat::SetEvent(extra[61]);
  EXPECT_EQ(nullptr, remove(63, 0, kZrInfinite));
  EXPECT_EQ(nullptr, remove(62, 0, 0));
  EXPECT_EQ(12345U, result) << "nothing was waited for";
  EXPECT_EQ(nullptr, remove(62, 0, kZrInfinite));
  EXPECT_EQ(62U, result);
  EXPECT_EQ(nullptr, remove(62, ZRQUEUE_SERVE, kZrInfinite));
  EXPECT_EQ(62U, result) << "an extra handle ends a serving wait too";
  EXPECT_EQ(nullptr, remove(3, 0, 1));
  EXPECT_EQ(plat::kWaitTimeout, result);
  EXPECT_EQ(nullptr, remove(3, ZRQUEUE_SERVE, 1));
  EXPECT_EQ(plat::kWaitTimeout, result);

  Insert({5});
  result = 12345;
  EXPECT_EQ(5, NumberOf(remove(62, 0, kZrInfinite))) << "elements come before handles";
  EXPECT_EQ(12345U, result);
  for (plat::Waitable* handle : extra) plat::CloseWaitable(handle);
}

// Work that other threads send runs in a serving wait and the wait goes on; elsewhere it ends the wait.

struct Served {
  tZRQHEAD* queue;
  tZRQELM* element;
  int runs = 0;
};

void CountRun(void* argument) { ++static_cast<Served*>(argument)->runs; }

void CountAndInsert(void* argument) {
  Served* served = static_cast<Served*>(argument);
  ++served->runs;
  ZrQueueInsert(served->queue, served->element);
}

void CountAndDelete(void* argument) {
  Served* served = static_cast<Served*>(argument);
  ++served->runs;
  ZrQueueDelete(served->queue);
}

TEST_F(QueueTest, ServesSentWorkAndCompletionsWhileItWaits) {
  plat::OpenInbox();
  Served served{&queue_, Link(8)};
  ASSERT_TRUE(plat::SendWork(plat::CurrentThreadId(), CountRun, &served));
  ASSERT_TRUE(plat::QueueCompletion(plat::CurrentThreadId(), CountRun, &served));
  EXPECT_EQ(nullptr, ZrQueueRemoveAlertable(&queue_, 1));
  EXPECT_EQ(2, served.runs);

  ASSERT_TRUE(plat::SendWork(plat::CurrentThreadId(), CountAndInsert, &served));
  EXPECT_EQ(8, NumberOf(ZrQueueRemoveAlertable(&queue_, kZrInfinite)));
  ASSERT_TRUE(plat::QueueCompletion(plat::CurrentThreadId(), CountAndInsert, &served));
  EXPECT_EQ(8, NumberOf(ZrQueueRemoveAlertable(&queue_, kZrInfinite)));
  EXPECT_EQ(4, served.runs);

  uint32_t result = 0;
  ASSERT_TRUE(plat::SendWork(plat::CurrentThreadId(), CountRun, &served));
  EXPECT_EQ(nullptr, ZrQueueRemoveEx(&queue_, nullptr, 0, plat::kWakeSentWork, kZrInfinite, &result));
  EXPECT_EQ(1U, result) << "pending work is behind the event and the extra handles";
  plat::RunSentWork();
  ASSERT_TRUE(plat::QueueCompletion(plat::CurrentThreadId(), CountRun, &served));
  EXPECT_EQ(nullptr, ZrQueueRemoveEx(&queue_, nullptr, 0, ZRQUEUE_ALERTABLE, kZrInfinite, &result));
  EXPECT_EQ(plat::kWaitIoCompletion, result);
}

TEST_F(QueueTest, ServedWorkMayDeleteTheQueue) {
  plat::OpenInbox();
  Served served{&queue_, nullptr};
  ASSERT_TRUE(plat::SendWork(plat::CurrentThreadId(), CountAndDelete, &served));
  EXPECT_EQ(nullptr, ZrQueueRemoveAlertable(&queue_, kZrInfinite));
  ASSERT_EQ(1, ZrQueueInitialize(&queue_));
  ASSERT_TRUE(plat::QueueCompletion(plat::CurrentThreadId(), CountAndDelete, &served));
  EXPECT_EQ(nullptr, ZrQueueRemoveAlertable(&queue_, kZrInfinite));
  EXPECT_EQ(2, served.runs);
}

TEST(QueueNull, NothingHappens) {
  EXPECT_EQ(0, ZrQueueInitialize(nullptr));
  ZrQueueDelete(nullptr);
  ZrQueueInsert(nullptr, nullptr);
  EXPECT_EQ(nullptr, ZrQueueRemove(nullptr, kZrInfinite));
  tZRQHEAD zeroed{};
  EXPECT_EQ(0, ZrQueueWait(&zeroed, kZrInfinite));
  EXPECT_EQ(0, ZrQueueMoveToHead(&zeroed, nullptr));
}

}  // namespace
