// SPDX-License-Identifier: Apache-2.0
// The kernel's clock over counters of several frequencies.
#include "marlo110k/clock.h"

#include <gtest/gtest.h>

#include "kernel/kernel_clock.h"
#include "platform/base/clock.h"

namespace {

/// A counter under the test's hand, in place while it lives.
class HandClock : public plat::Clock {
 public:
  explicit HandClock(int64_t frequency) : frequency_(frequency), former_(plat::SetClock(this)) {}
  ~HandClock() override { plat::SetClock(former_); }
  int64_t Counter() override { return counter; }
  int64_t Frequency() override { return frequency_; }

  int64_t counter = 1'000'000'000;

 private:
  int64_t frequency_;
  Clock* former_;
};

TEST(KernelClock, ConversionsByFrequency) {
  const struct {
    int64_t frequency, elapsed, milliseconds, microseconds;
  } kRows[] = {
      {10'000'000, 12'345'678, 1234, 1'234'567},
      {1'000'000'000, 1'999'999'999, 1999, 1'999'999},
      {1'000'000'000, 86'400'000'000'000, 86'400'000, 86'400'000'000},  // a day, past 32 bits of microseconds
      // 14 counts a microsecond: 143181800 / 14 = 10227271, scaled by 1000000 / 1022727 and rounded: 10000000.98.
      {14'318'180, 143'181'800, 10'000, 10'000'001},
      {14'318'180, 14'318'179, 1000, 1'000'000},  // 14318179 / 14318; 14318179 / 14 = 1022727, a whole second
      {14'318'180, 7'000'000, 488, 488'889},      // 500000 * 1000000 / 1022727 = 488889.02
      {3'579'545, 3'579'545, 1000, 1'000'000},    // 3 a microsecond; 1193181 scaled by 1000000 / 1193181
      {1'000'000, 1'234'567, 1234, 1'234'567},
      {500'000, 1000, 2, 2000},  // at least one count a microsecond; 1000 * 1000000 / 500000
      {1193, 2386, 2386, 2'000'000},
      {900, 9, 9, 10'000},  // slower than a kilohertz
      {10'000'000, 9999, 0, 999},
      {10'000'000, -12'345, -1, -1234},  // a base of the future: cut towards zero
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.frequency << ' ' << row.elapsed);
    HandClock source(row.frequency);
    marlo::KernelClock clock;
    clock.Start();
    EXPECT_EQ(source.counter, clock.Base());
    EXPECT_EQ(row.milliseconds, clock.Milliseconds(clock.Base(), clock.Base() + row.elapsed));
    EXPECT_EQ(row.microseconds, clock.Microseconds(clock.Base(), clock.Base() + row.elapsed));
  }
}

TEST(KernelClock, AZeroLowWordFallsBackToTicks) {
  HandClock source(int64_t{1} << 32);
  source.counter = (int64_t{1} << 32) * 5;  // five seconds
  marlo::KernelClock clock;
  clock.Start();
  EXPECT_EQ(5000, clock.Base());
  source.counter += int64_t{1} << 31;
  EXPECT_EQ(5500, clock.Now());
  EXPECT_EQ(500, clock.Milliseconds(clock.Base(), clock.Now()));
  EXPECT_EQ(500'000, clock.Microseconds(clock.Base(), clock.Now()));
  EXPECT_EQ(16, clock.Milliseconds(0xFFFFFFF8, 8)) << "ticks wrap";
}

TEST(Clock, BasesAndDeltas) {
  // The process's clock was started on the system's counter, which counts 10,000,000 a second.
  HandClock source(10'000'000);
  int64_t base = source.counter;
  source.counter += 25'009;
  EXPECT_EQ(2, ZrGetMillisecEx(&base));
  EXPECT_EQ(2500, ZrGetMicrosecEx(&base));
  EXPECT_EQ(2500, ZrDeltaMicrosecEx(&base));
  EXPECT_EQ(source.counter, base);
  source.counter += 19'999;
  EXPECT_EQ(1, ZrDeltaMillisecEx(&base));
  EXPECT_EQ(0, ZrGetMicrosecEx(&base));
  for (int64_t (*get)(const int64_t*) : {ZrGetMillisecEx, ZrGetMicrosecEx}) EXPECT_EQ(0, get(nullptr));
  for (int64_t (*get)(int64_t*) : {ZrDeltaMillisecEx, ZrDeltaMicrosecEx}) EXPECT_EQ(0, get(nullptr));
}

TEST(Clock, RunsSinceTheLoad) {
  const int64_t first = ZrGetMicrosec();
  EXPECT_GE(first, 0);
  EXPECT_GE(ZrGetMicrosec(), first);
  EXPECT_LE(ZrGetMillisec(), ZrGetMicrosec() / 1000 + 1);
}

}  // namespace
