// SPDX-License-Identifier: Apache-2.0
// One thread writes levels and now and then empties or trims the rings, another reads them.
#include <gtest/gtest.h>

#include <atomic>

#include "media/testing/meter.h"
#include "testing/worker.h"

using namespace media_testing;

namespace {

TEST(MeterThreads, ReaderSeesOnlyWhatWasWritten) {
  constexpr int64_t kBlocks = 4000;
  const Meter meter = MakeMeter(8);
  std::atomic<bool> ended{false};
  {
    // A block's level is 1/2, 1/4 or 1/8; anything else would be a torn record.
    testing_support::Worker writer([&] {
      std::vector<float> samples(1024);
      for (int64_t block = 0; block < kBlocks; ++block) {
        std::fill(samples.begin(), samples.end(), 0.5f / static_cast<float>(1 << block % 3));
        meter->Writer()->WritePeaks(block * 1024, samples.data(), 1024, 0, 0, block % 50 == 0, 0, 0);
        meter->WritePower(block * 1024, samples.data(), 1024, 0, 0, 0, 0);
        if (block % 7 == 0) meter->Writer()->Trim(block * 1024 + 512);
        if (block % 11 == 0) meter->TrimPower(block * 1024 + 512);
        if (block % 13 == 0) meter->Writer()->Reset();
        if (block % 17 == 0) meter->ResetPower();
      }
      ended.store(true);
    });
    for (int64_t read = 0; !ended.load() || read < 100; ++read) {
      float peak = 9;
      uint32_t clipped = 9;
      ASSERT_EQ(meter->ReadPeaks(read * 512 % (kBlocks * 1024), &peak, &clipped), S_OK);
      ASSERT_TRUE(peak == 0 || peak == 0.5f || peak == 0.25f || peak == 0.125f) << peak;
      ASSERT_EQ(clipped, 0u);
      float power = 9;
      ASSERT_EQ(meter->ReadPower(read % 2 != 0 ? -1 : read * 512, &power), S_OK);
      ASSERT_TRUE(power >= 0 && power <= 0.5f) << power;
    }
  }
  // Both sides still agree.
  meter->Writer()->Reset();
  const std::vector<float> samples(512, 0.75f);
  meter->Writer()->WritePeaks(0, samples.data(), 512, 0, 0, 0, 0, 0);
  float peak = 0;
  uint32_t clipped = 0;
  ASSERT_EQ(meter->ReadPeaks(512, &peak, &clipped), S_OK);
  EXPECT_EQ(peak, 0.75f);
}

}  // namespace
