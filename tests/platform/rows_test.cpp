// SPDX-License-Identifier: Apache-2.0
// ParallelRows: every row once, whatever the thread count, nesting and company.
#include "platform/parallel/rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/base/fpu.h"
#include "platform/sys/thread.h"
#include "testing/worker.h"

namespace plat {
namespace {

using testing_support::Worker;

/// Puts the thread count back.
struct Threads {
  explicit Threads(uint32_t count) { SetParallelThreads(count); }
  ~Threads() { SetParallelThreads(0); }
};

/// Counts the visits of each row in plain memory: a row given to two threads is a race that TSan reports.
struct Visits {
  explicit Visits(int32_t count) : rows(static_cast<size_t>(count)) {}
  void Block(int32_t first, int32_t end) {
    ++blocks;
    for (int32_t row = first; row < end; ++row) ++rows[static_cast<size_t>(row)];
  }
  bool EachOnce() const {
    return std::all_of(rows.begin(), rows.end(), [](int visits) { return visits == 1; });
  }
  std::vector<int> rows;
  std::atomic<int32_t> blocks{0};
};

TEST(ParallelRows, CoversEveryRowOnceForAnyThreadCount) {
  for (const uint32_t threads : {1u, 2u, 3u, 7u, 64u}) {
    Threads scope(threads);
    for (const int32_t rows : {1, 2, 3, 6, 7, 8, 63, 64, 65, 1080}) {
      for (const int32_t minimum : {-1, 0, 1, 2, 16, 1000}) {
        Visits visits(rows);
        ParallelRows(rows, minimum, [&](int32_t first, int32_t end) {
          EXPECT_LT(first, end);
          EXPECT_GE(end - first, std::min(minimum, rows));
          visits.Block(first, end);
        });
        EXPECT_TRUE(visits.EachOnce()) << threads << " threads, " << rows << " rows, minimum " << minimum;
        EXPECT_LE(visits.blocks, static_cast<int32_t>(threads));
      }
    }
  }
}

TEST(ParallelRows, NothingToDoCallsNothing) {
  for (const int32_t rows : {0, -5}) {
    ParallelRows(rows, 1, [](int32_t, int32_t) { FAIL(); });
  }
}

TEST(ParallelRows, SmallPicturesStayOnTheCallingThread) {
  Threads scope(4);
  const uint32_t self = CurrentThreadId();
  struct Size {
    int32_t rows;
    int32_t minimum;
  };
  for (const Size& size : {Size{1, 1}, {31, 16}, {5, 100}}) {
    int calls = 0;
    ParallelRows(size.rows, size.minimum, [&](int32_t first, int32_t end) {
      ++calls;
      EXPECT_EQ(CurrentThreadId(), self);
      EXPECT_EQ(first, 0);
      EXPECT_EQ(end, size.rows);
    });
    EXPECT_EQ(calls, 1);
  }
}

TEST(ParallelRows, HandsWorkToOtherThreads) {
  Threads scope(2);
  // Each of the two blocks waits until both are running, so one thread alone would never come back.
  std::atomic<int> running{0};
  ParallelRows(2, 1, [&](int32_t, int32_t) {
    ++running;
    running.notify_all();
    for (int seen = running; seen < 2; seen = running) running.wait(seen);
  });
  EXPECT_EQ(running, 2);
}

TEST(ParallelRows, EveryBlockRunsUnderTheCallersFloatState) {
  Threads scope(3);
  FloatStateGuard guard(kRenderFloatState);
  std::atomic<int> wrong{0};
  for (int round = 0; round < 50; ++round) {
    ParallelRows(3, 1, [&](int32_t, int32_t) { wrong += FloatState() != kRenderFloatState; });
  }
  EXPECT_EQ(wrong, 0);
}

TEST(ParallelRows, ALoopInsideABlockRunsThereAlone) {
  Threads scope(4);
  Visits outer(8);
  std::vector<std::unique_ptr<Visits>> inner;
  for (int i = 0; i < 8; ++i) inner.push_back(std::make_unique<Visits>(100));
  ParallelRows(8, 1, [&](int32_t first, int32_t end) {
    outer.Block(first, end);
    for (int32_t row = first; row < end; ++row) {
      const uint32_t self = CurrentThreadId();
      ParallelRows(100, 1, [&](int32_t innerFirst, int32_t innerEnd) {
        EXPECT_EQ(CurrentThreadId(), self);
        inner[static_cast<size_t>(row)]->Block(innerFirst, innerEnd);
      });
    }
  });
  EXPECT_TRUE(outer.EachOnce());
  for (const auto& visits : inner) EXPECT_TRUE(visits->EachOnce());
  Visits after(64);
  ParallelRows(64, 1, [&](int32_t first, int32_t end) { after.Block(first, end); });
  EXPECT_EQ(after.blocks, 4) << "nesting must not leave the caller marked as inside";
}

TEST(ParallelRows, SeveralCallersShareThePool) {
  Threads scope(3);
  std::vector<Worker> callers;
  for (int i = 0; i < 4; ++i) {
    callers.emplace_back([i] {
      FloatStateGuard guard(i % 2 == 0 ? kRenderFloatState : kCleanFloatState);
      const uint32_t state = FloatState();
      for (int round = 0; round < 300; ++round) {
        Visits visits(50 + round % 7);
        std::atomic<int> wrong{0};
        ParallelRows(50 + round % 7, 1, [&](int32_t first, int32_t end) {
          wrong += FloatState() != state;
          visits.Block(first, end);
        });
        EXPECT_TRUE(visits.EachOnce());
        EXPECT_EQ(wrong, 0);
      }
    });
  }
}

// Ends a child of fork through the exit handlers. Under the address sanitizer these look for leaks and wait for a lock
// that a thread of the parent may have held at the fork, so there it ends without them.
[[noreturn]] void EndChild(int code) {
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
  std::_Exit(code);
#endif
#endif
  std::exit(code);
}

TEST(ParallelRowsDeathTest, AForkedChildLoopsAloneAndEnds) {
  testing::FLAGS_gtest_death_test_style = "fast";  // A child of fork inherits the pool's numbers without its threads.
  Threads scope(3);
  ParallelRows(30, 1, [](int32_t, int32_t) {});
  EXPECT_EXIT(
      {
        Visits visits(30);
        ParallelRows(30, 1, [&](int32_t first, int32_t end) { visits.Block(first, end); });
        StopParallelPool();
        EndChild(visits.EachOnce() ? 7 : 8);
      },
      testing::ExitedWithCode(7), "");
}

TEST(ParallelRows, StartsAgainAfterAStop) {
  Threads scope(2);
  for (int round = 0; round < 20; ++round) {
    Visits visits(10);
    ParallelRows(10, 1, [&](int32_t first, int32_t end) { visits.Block(first, end); });
    EXPECT_TRUE(visits.EachOnce());
    StopParallelPool();
    if (round % 2 == 0) StopParallelPool();
  }
}

}  // namespace
}  // namespace plat
