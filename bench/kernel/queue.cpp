// SPDX-License-Identifier: Apache-2.0
// What does handing a record to another thread cost, against a deque with a mutex and a condition variable? How
// long does a blocked consumer take to wake? Does the queue allocate?
#include "marlo110k/queue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "harness/harness.h"
#include "kernel/allocation_count.h"

namespace {

constexpr size_t kElements = 50'000;

/// The usual way to do it.
class DequeQueue {
 public:
  void Insert(tZRQELM* element) {
    {
      std::lock_guard<std::mutex> guard(mutex_);
      elements_.push_back(element);
    }
    filled_.notify_one();
  }
  tZRQELM* Remove() {
    std::unique_lock<std::mutex> guard(mutex_);
    filled_.wait(guard, [&] { return !elements_.empty(); });
    tZRQELM* element = elements_.front();
    elements_.pop_front();
    return element;
  }

 private:
  std::mutex mutex_;
  std::condition_variable filled_;
  std::deque<tZRQELM*> elements_;
};

class RingQueue {
 public:
  RingQueue() { ZrQueueInitialize(&queue_); }
  ~RingQueue() { ZrQueueDelete(&queue_); }
  void Insert(tZRQELM* element) { ZrQueueInsert(&queue_, element); }
  tZRQELM* Remove() {
    for (;;) {
      if (tZRQELM* element = ZrQueueRemove(&queue_, kZrInfinite)) return element;
    }
  }

 private:
  tZRQHEAD queue_{};
};

std::vector<tZRQELM> elements(kElements);

template <typename Queue>
bench::Contender OneThread(const char* name, Queue* queue) {
  return {name,
          [queue] {
            for (tZRQELM& element : elements) {
              queue->Insert(&element);
              bench::Use(queue->Remove());
            }
          },
          kElements};
}

/// Fills before it empties, so that no transition stands between most of the calls.
template <typename Queue>
bench::Contender Filled(const char* name, Queue* queue) {
  return {name,
          [queue] {
            for (tZRQELM& element : elements) queue->Insert(&element);
            for (size_t i = 0; i < kElements; ++i) bench::Use(queue->Remove());
          },
          kElements};
}

template <typename Queue>
bench::Contender TwoThreads(const char* name, Queue* queue) {
  return {name,
          [queue] {
            std::thread consumer([queue] {
              for (size_t i = 0; i < kElements; ++i) bench::Use(queue->Remove());
            });
            for (tZRQELM& element : elements) queue->Insert(&element);
            consumer.join();
          },
          kElements};
}

int64_t Now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

/// Time from just before the insertion until the blocked consumer has the element.
template <typename Queue>
void PrintWakeLatency(const char* name, Queue* queue) {
  constexpr size_t kWakes = 3000;
  std::vector<int64_t> latencies(kWakes);
  std::atomic<int64_t> inserted{0};
  std::atomic<size_t> taken{0};
  std::thread consumer([&] {
    for (size_t i = 0; i < kWakes; ++i) {
      queue->Remove();
      latencies[i] = Now() - inserted.load();
      taken = i + 1;
    }
  });
  tZRQELM element{};
  for (size_t i = 0; i < kWakes; ++i) {
    while (taken.load() < i) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(200));  // until it blocks again
    element = {};
    inserted = Now();
    queue->Insert(&element);
  }
  consumer.join();
  std::sort(latencies.begin(), latencies.end());
  std::printf("  wake latency  %-30s p50 %.1f us, p99 %.1f us\n", name,
              static_cast<double>(latencies[kWakes / 2]) / 1000,
              static_cast<double>(latencies[kWakes * 99 / 100]) / 1000);
}

}  // namespace

int main() {
  RingQueue ring;
  DequeQueue deque;
  bool met = true;
  const auto ask = [&](const char* title, bench::Contender ours, bench::Contender peer) {
    bench::Question question(title, "elements");
    question.Ours(std::move(ours));
    question.Peer(std::move(peer));
    met = question.Print() && met;
  };
  ask("Insert and remove on one thread, empty in between", OneThread("ZrQueue", &ring),
      OneThread("deque with a mutex", &deque));
  ask("Fill and empty on one thread", Filled("ZrQueue", &ring), Filled("deque with a mutex", &deque));
  ask("One producer, one consumer", TwoThreads("ZrQueue", &ring), TwoThreads("deque with a mutex", &deque));

  const bench::Contender work = Filled("", &ring);
  const bench::Contender transitions = OneThread("", &ring);
  const uint64_t before = bench::AllocationCount();
  work.run();
  transitions.run();
  const uint64_t allocations = bench::AllocationCount() - before;
  std::printf("  allocations over %zu insertions and removals: %llu (goal 0)\n", 2 * kElements,
              static_cast<unsigned long long>(allocations));
  PrintWakeLatency("ZrQueue", &ring);
  PrintWakeLatency("deque with a mutex", &deque);
  return met && allocations == 0 ? 0 : 1;
}
