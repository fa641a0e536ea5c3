// SPDX-License-Identifier: Apache-2.0
// Conversions by header give the same bits on any number of threads.

#include <gtest/gtest.h>

#include <cmath>

#include "pixel/testing/video.h"
#include "platform/parallel/rows.h"

namespace {

using namespace testing_support;

TEST(YuvThreads, CountAndNotANumberDontMatter) {
  Random random(17);
  for (uint32_t layout : kLayouts) {
    std::vector<uint8_t> first[2];
    for (uint32_t threads : {1u, 2u, 7u}) {
      plat::SetParallelThreads(threads);
      Random same = random;
      Picture source(ZRPIXEL_RGBA128F, 1026, 254), back(ZRPIXEL_RGBA128F, 1026, 254);
      source.RandomizeFloats(same, -1, 2);
      const float odd[] = {NAN, INFINITY, -INFINITY, 1e30f};
      std::memcpy(source.bits(), odd, sizeof(odd));
      Video video(layout, 1026, 254);
      const tZRYUVPARAMS params = {0, 1, 1.0};
      ASSERT_EQ(S_OK, ZrYUV_RGBToYUV(&video.header, &params, video.bytes.data(), nullptr, source.header(), 0,
                                     source.bits(), 0, 0, 0));
      ASSERT_EQ(S_OK, ZrYUV_YUVToRGB(back.header(), 0, back.bits(), 0, &video.header, &params, video.bytes.data(),
                                     nullptr, 0, 0));
      const std::vector<uint8_t> results[2] = {{video.bytes.data(), video.bytes.data() + video.bytes.size()},
                                               back.Copy()};
      for (int index : {0, 1}) {
        if (threads == 1) first[index] = results[index];
        EXPECT_EQ(first[index], results[index]) << threads;
      }
    }
  }
  plat::SetParallelThreads(0);
}

}  // namespace
