// SPDX-License-Identifier: Apache-2.0
// The tap sums: every body gives the plain one's bits, at every place.
#include "audio/sinc_taps.h"

#include <gtest/gtest.h>

#include <vector>

#include "audio/resample.h"
#include "platform/base/cpu.h"
#include "testing/random.h"

namespace {

TEST(SincTaps, EveryBodyGivesThePlainBits) {
  testing_support::Random random(35);
  SCOPED_TRACE(random.Label());
  const marlo::SincTable& table = marlo::SharedSincTable();
  std::vector<double> frames(marlo::kSincTaps * 3);
  for (int round = 0; round < 20000; ++round) {
    for (double& sample : frames) sample = random.Real(-1, 1);
    double place = random.Real(11, 12);
    // Whole places and those within the tolerance of one, on either side.
    if (round % 5 == 0) place = 12 + (round % 3 - 1) * 1e-8;
    if (round % 7 == 0) place = 11 + 1e-8 * (round % 2);
    for (const int32_t channels : {1, 2, 3}) {
      double plain[3], sse2[3], avx2[3];
      marlo::SumTapsPlain(table, place, frames.data(), channels, plain);
      marlo::SumTapsSse2(table, place, frames.data(), channels, sse2);
      for (int32_t channel = 0; channel < channels; ++channel) ASSERT_EQ(sse2[channel], plain[channel]) << place;
      if (channels > 2 || plat::DetectedVectorLevel() < plat::VectorLevel::kAvx2) continue;
      marlo::SumTapsAvx2(table, place, frames.data(), channels, avx2);
      for (int32_t channel = 0; channel < channels; ++channel) ASSERT_EQ(avx2[channel], plain[channel]) << place;
    }
  }
}

}  // namespace
