// SPDX-License-Identifier: Apache-2.0
// Scalers against the rules one pixel at a time, over all filters, edges, strides and vector levels.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marlo110k/dib_scale.h"
#include "pixel/testing/picture.h"
#include "pixel/testing/scale_reference.h"
#include "platform/base/cpu.h"
#include "platform/base/memory.h"
#include "platform/parallel/rows.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using testing_support::GuardedBytes;
using testing_support::Picture;
using testing_support::Random;
using testing_support::ReferenceScale;

constexpr plat::VectorLevel kLevels[] = {plat::VectorLevel::kPlain, plat::VectorLevel::kSse2, plat::VectorLevel::kAvx2};

/// Restores the vector level and the thread count.
struct Scale : ::testing::Test {
  ~Scale() override {
    plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512);
    plat::SetParallelThreads(0);
  }
};

using Scaler = HRESULT (*)(void*, const SIZE*, int32_t, const RECT*, const void*, const SIZE*, int32_t, const RECT*,
                           int32_t, int32_t, int32_t) noexcept;

/// One row of gray values onto a row of `before`, one channel looked at.
std::vector<int> ScaleRow(Scaler scaler, std::vector<uint8_t> source, std::vector<uint8_t> before, double left,
                          double right, bool noEdgeBlend, bool area = false) {
  std::vector<uint8_t> src, dst;
  for (uint8_t value : source) src.insert(src.end(), 4, value);
  for (uint8_t value : before) dst.insert(dst.end(), 4, value);
  const SIZE srcSize = {static_cast<int32_t>(source.size()), 1};
  const SIZE dstSize = {static_cast<int32_t>(before.size()), 1};
  const RECT rect = {static_cast<int32_t>(left * 16384), 0, static_cast<int32_t>(right * 16384), 16384};
  EXPECT_EQ(0, scaler(dst.data(), &dstSize, 0, &rect, src.data(), &srcSize, 0, nullptr, 4, area, noEdgeBlend));
  std::vector<int> result;
  for (size_t index = 0; index < before.size(); ++index) result.push_back(dst[index * 4 + index % 4]);
  return result;
}

TEST_F(Scale, PublishedRows) {
  const std::vector<uint8_t> step = {50, 50, 200, 200};
  const std::vector<uint8_t> black5(5, 0), black11(11, 0);
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, step, black5, 0.5, 4.5, true), ElementsAre(50, 50, 125, 200, 200));
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, step, black5, 0.5, 4.5, false), ElementsAre(25, 50, 125, 200, 100));
  EXPECT_THAT(ScaleRow(ZrDibScale_BiCubicSubPixel, step, black5, 0.5, 4.5, true), ElementsAre(50, 41, 125, 209, 200));
  EXPECT_THAT(ScaleRow(ZrDibScale_BiCubicSubPixel, {0, 0, 255, 255}, black5, 0.5, 4.5, true),
              ElementsAre(0, 0, 128, 255, 255));
  const std::vector<uint8_t> ramp = {0, 10, 20, 30, 40, 50, 60, 70, 80, 90};
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, ramp, std::vector<uint8_t>(11, 100), 0.25, 10.25, false),
              ElementsAre(25, 8, 18, 28, 38, 48, 58, 68, 78, 88, 98));
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, std::vector<uint8_t>(10, 200), black11, 0.25, 10.75, false),
              ElementsAre(150, 200, 200, 200, 200, 200, 200, 200, 200, 200, 150));
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, std::vector<uint8_t>(10, 200), black11, 0.25, 10.75, true),
              ElementsAreArray(std::vector<int>(11, 200)));
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, {0, 255}, std::vector<uint8_t>(4, 9), 0, 4, false),
              ElementsAre(0, 0, 85, 170));
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, {0, 0, 255, 255}, std::vector<uint8_t>(8, 9), 0, 8, false),
              ElementsAre(0, 0, 0, 0, 109, 219, 255, 255));
  // Boxes of three pixels from four: the second hangs over the edge and repeats it.
  EXPECT_THAT(ScaleRow(ZrDibScale_BilinearSubPixel, {0, 0, 240, 90}, {0, 0}, 0, 2, false, true), ElementsAre(80, 90));
}

/// The shapes of a random trial: a large share sits near scale 1, where the filters change.
struct Shape {
  int32_t srcWidth, srcHeight, dstWidth, dstHeight;
  RECT src, dst;
};

RECT RandomRect(Random& random, int32_t width, int32_t height) {
  const auto span = [&](int32_t size, int32_t* low, int32_t* high) {
    const int64_t most = int64_t{size} * 16384;
    const int64_t overhang = random.Between(0, 3) == 0 ? 40000 : 0;
    *low = static_cast<int32_t>(random.Between(-overhang, most / 2));
    *high = static_cast<int32_t>(random.Between(*low + 1000, most + overhang));
    if (random.Between(0, 1)) *low &= ~16383;
    if (random.Between(0, 1)) *high &= ~16383;
  };
  RECT rect;
  span(width, &rect.left, &rect.right);
  span(height, &rect.top, &rect.bottom);
  return rect;
}

Shape RandomShape(Random& random) {
  Shape shape;
  const auto size = [&] { return static_cast<int32_t>(random.Between(1, random.Between(0, 2) == 0 ? 70 : 12)); };
  shape.srcWidth = size();
  shape.srcHeight = size();
  shape.dstWidth = size();
  shape.dstHeight = size();
  shape.src = RandomRect(random, shape.srcWidth, shape.srcHeight);
  shape.dst = RandomRect(random, shape.dstWidth, shape.dstHeight);
  return shape;
}

template <typename Channel>
void RunTrials(uint64_t seed, int32_t type, int trials) {
  constexpr int32_t kPixelBytes = sizeof(Channel) * 4;
  Random random(seed);
  SCOPED_TRACE(random.Label());
  int worked = 0;
  for (int trial = 0; trial < trials; ++trial) {
    SCOPED_TRACE(trial);
    const Shape shape = RandomShape(random);
    const int32_t extra = 4 * static_cast<int32_t>(random.Between(0, 3));
    Picture src(type, shape.srcWidth, shape.srcHeight, extra, random.Between(0, 1) != 0);
    Picture dst(type, shape.dstWidth, shape.dstHeight, extra);
    if constexpr (sizeof(Channel) == 4) {
      src.RandomizeFloats(random, -0.5, 1.5);
      dst.RandomizeFloats(random, -0.5, 1.5);
    } else {
      src.Randomize(random);
      dst.Randomize(random);
      // Extremes make the bicubic overshoot and the box sums large.
      if (random.Between(0, 2) == 0) {
        for (size_t index = 0; index < src.size(); ++index) src.bits()[index] = src.bits()[index] < 128 ? 0 : 255;
      }
    }
    const bool cubic = random.Between(0, 1) != 0;
    const int32_t area = static_cast<int32_t>(random.Between(0, 1));
    const int32_t noEdgeBlend = static_cast<int32_t>(random.Between(0, 1));
    const bool topDown = random.Between(0, 1) != 0;
    uint8_t* const dstTop = topDown ? dst.bits() : dst.top();
    const int32_t dstStride = topDown ? dst.stride() : -dst.stride();
    const SIZE srcSize = {shape.srcWidth, shape.srcHeight};
    const SIZE dstSize = {shape.dstWidth, shape.dstHeight};

    const std::vector<uint8_t> before = dst.Copy();
    tZRDIBSUBPIXELPARAMS record;
    const int32_t works = ZrPrepareSubpixelParam(&record, dstTop, &dstSize, dstStride, &shape.dst, src.top(), &srcSize,
                                                 -src.stride(), &shape.src);
    if (works) ReferenceScale<Channel>(record, cubic, area != 0, noEdgeBlend != 0);
    worked += works;
    const std::vector<uint8_t> expected = dst.Copy();

    std::vector<uint8_t> plain;
    for (plat::VectorLevel level : kLevels) {
      plat::SetVectorLevelLimit(level);
      std::copy(before.begin(), before.end(), dst.bits());
      const Scaler scaler = cubic ? ZrDibScale_BiCubicSubPixel : ZrDibScale_BilinearSubPixel;
      ASSERT_EQ(0, scaler(dstTop, &dstSize, dstStride, &shape.dst, src.top(), &srcSize, -src.stride(), &shape.src,
                          kPixelBytes, area, noEdgeBlend));
      if constexpr (sizeof(Channel) == 1) {
        ASSERT_EQ(expected, dst.Copy()) << "cubic " << cubic << " area " << area << " steps " << record.stepX << " "
                                        << record.stepY;
      } else {
        for (size_t index = 0; index < expected.size(); index += 4) {
          float want, got;
          std::memcpy(&want, &expected[index], 4);
          std::memcpy(&got, dst.bits() + index, 4);
          ASSERT_NEAR(want, got, 3e-6) << index;
        }
        if (plain.empty()) plain = dst.Copy();
        ASSERT_EQ(plain, dst.Copy());
      }
    }
  }
  // Most trials have something to show; otherwise the test would prove nothing.
  EXPECT_GT(worked, trials / 2);
}

TEST_F(Scale, BytesEqualTheRulesAtEveryLevel) { RunTrials<uint8_t>(6301, ZRPIXEL_RGBA32, 6000); }

TEST_F(Scale, FloatsFollowTheRulesAndAgreeBetweenLevels) { RunTrials<float>(6302, ZRPIXEL_RGBA128F, 3000); }

TEST_F(Scale, TallAndWideBoxesKeepExactSums) {
  // White stays white whatever the accumulator: 1500 rows overflow words, a 3000-pixel box 32 bits.
  struct Case {
    int32_t srcWidth, srcHeight, dstWidth, dstHeight;
  };
  for (const Case& c : {Case{40, 1500, 8, 2}, Case{3000, 20, 3, 5}, Case{1500, 900, 2, 2}, Case{70, 70, 2, 2}}) {
    Picture src(ZRPIXEL_RGBA32, c.srcWidth, c.srcHeight);
    Picture dst(ZRPIXEL_RGBA32, c.dstWidth, c.dstHeight);
    Picture reference(ZRPIXEL_RGBA32, c.dstWidth, c.dstHeight);
    const SIZE srcSize = {c.srcWidth, c.srcHeight};
    const SIZE dstSize = {c.dstWidth, c.dstHeight};
    for (int pass = 0; pass < 2; ++pass) {
      Random random(6303);
      std::fill_n(src.bits(), src.size(), uint8_t{255});
      if (pass == 1) src.Randomize(random);
      tZRDIBSUBPIXELPARAMS record;
      ASSERT_EQ(1, ZrPrepareSubpixelParam(&record, reference.bits(), &dstSize, reference.stride(), nullptr, src.bits(),
                                          &srcSize, src.stride(), nullptr));
      ReferenceScale<uint8_t>(record, false, true, false);
      for (plat::VectorLevel level : kLevels) {
        plat::SetVectorLevelLimit(level);
        ASSERT_EQ(0, ZrDibScale_Bilinear(dst.bits(), &dstSize, dst.stride(), nullptr, src.bits(), &srcSize,
                                         src.stride(), nullptr, 4, 1, 0));
        ASSERT_EQ(reference.Copy(), dst.Copy()) << c.srcWidth;
        if (pass == 0) {
          ASSERT_EQ(std::vector<uint8_t>(dst.size(), 255), dst.Copy());
        }
      }
    }
  }
}

TEST_F(Scale, ScaleOneCopiesAndBothBoxesAgreeBetweenEntries) {
  Random random(6304);
  SCOPED_TRACE(random.Label());
  Picture src(ZRPIXEL_RGBA32, 33, 17, 8);
  src.Randomize(random);
  const SIZE size = {33, 17};
  for (Scaler scaler :
       {ZrDibScale_Bilinear, ZrDibScale_BiCubic, ZrDibScale_BilinearSubPixel, ZrDibScale_BiCubicSubPixel}) {
    Picture dst(ZRPIXEL_RGBA32, 33, 17, 8);
    ASSERT_EQ(0, scaler(dst.top(), &size, -dst.stride(), nullptr, src.top(), &size, -src.stride(), nullptr, 4, 0, 0));
    for (int32_t row = 0; row < 17; ++row) ASSERT_EQ(0, std::memcmp(dst.top(row), src.top(row), 33 * 4)) << row;
  }
  Picture bilinear(ZRPIXEL_RGBA32, 12, 5), bicubic(ZRPIXEL_RGBA32, 12, 5);
  const SIZE small = {12, 5};
  ZrDibScale_Bilinear(bilinear.bits(), &small, bilinear.stride(), nullptr, src.bits(), &size, src.stride(), nullptr, 4,
                      1, 0);
  ZrDibScale_BiCubic(bicubic.bits(), &small, bicubic.stride(), nullptr, src.bits(), &size, src.stride(), nullptr, 4, 1,
                     0);
  EXPECT_EQ(bilinear.Copy(), bicubic.Copy());
}

TEST_F(Scale, ErrorsAndNothingVisible) {
  uint8_t pixels[64] = {};
  const SIZE size = {2, 2};
  const RECT outside = {5 * 16384, 0, 7 * 16384, 16384};
  const RECT huge = {0, 0, 131072, 1};
  const RECT rect = {0, 0, 2, 2};
  EXPECT_EQ(E_POINTER, ZrDibScale_Bilinear(pixels, nullptr, 8, nullptr, pixels, &size, 8, nullptr, 4, 0, 0));
  EXPECT_EQ(E_POINTER, ZrDibScale_Bilinear(pixels, &size, 8, nullptr, nullptr, &size, 8, nullptr, 4, 0, 0));
  EXPECT_EQ(E_NOTIMPL, ZrDibScale_Bilinear(pixels, &size, 8, nullptr, pixels, &size, 8, nullptr, 3, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrDibScale_BiCubic(pixels, &size, 8, &huge, pixels, &size, 8, nullptr, 4, 0, 0));
  EXPECT_EQ(0, ZrDibScale_BiCubicSubPixel(pixels, &size, 8, &outside, pixels, &size, 8, nullptr, 4, 0, 0));
  EXPECT_EQ(E_POINTER, ZrDibCopyBiCubic(pixels, &size, 8, &rect, pixels, nullptr, 8, &rect, 4));
  EXPECT_EQ(E_INVALIDARG, ZrDibCopyBiCubic(pixels, &size, 8, nullptr, pixels, &size, 8, &rect, 4));
  EXPECT_EQ(E_INVALIDARG, ZrDibCopyBiCubic(pixels, &size, 8, &rect, pixels, &size, 8, nullptr, 4));
  plat::FailAllocation(1);
  const SIZE one = {1, 1};
  EXPECT_EQ(E_OUTOFMEMORY, ZrDibScale_Bilinear(pixels, &size, 8, nullptr, pixels + 32, &one, 4, nullptr, 4, 0, 0));
  plat::FailAllocation(0);
}

TEST_F(Scale, BicubicCopySamplesHalfAPixelIn) {
  // At scale 1 every position lies between two pixels: weights -1024, 9216, 9216, -1024 on pixels x - 2 to x + 1.
  const std::vector<int> source = {0, 40, 200, 90, 90, 255};
  std::vector<uint8_t> src, dst(6 * 4);
  std::vector<float> srcFloat, dstFloat(6 * 4);
  for (int value : source) src.insert(src.end(), 4, static_cast<uint8_t>(value));
  for (int value : source) srcFloat.insert(srcFloat.end(), 4, static_cast<float>(value) / 200.0f);
  const SIZE size = {6, 1};
  const RECT rect = {-3, 0, 6, 9};
  ASSERT_EQ(0, ZrDibCopyBiCubic(dst.data(), &size, 24, &rect, src.data(), &size, 24, &rect, 4));
  ASSERT_EQ(0, ZrDibCopyBiCubic(dstFloat.data(), &size, 96, &rect, srcFloat.data(), &size, 96, &rect, 16));
  const auto at = [&](int index) { return source[static_cast<size_t>(std::clamp(index, 0, 5))]; };
  for (int x = 0; x < 6; ++x) {
    const int sum = -1024 * at(x - 2) + 9216 * at(x - 1) + 9216 * at(x) - 1024 * at(x + 1);
    EXPECT_EQ(std::clamp((sum + 8192) / 16384, 0, 255), dst[static_cast<size_t>(x * 4)]) << x;
    EXPECT_NEAR(std::clamp(sum / 16384.0 / 200.0, 0.0, 1.0), dstFloat[static_cast<size_t>(x * 4 + 3)], 1e-6) << x;
  }
}

TEST(SubPixel, FastAndSafeSamples) {
  const uint8_t pixels[16] = {0, 0, 0, 0, 100, 100, 100, 255, 200, 200, 200, 255, 255, 255, 255, 255};
  tZRPIXEL32 out;
  ZrGetSubPixel32Fast(&out, pixels, 8, 4096, 12288);
  EXPECT_EQ(167, out.b);  // (100 * .25 * .25 + 200 * .75 * .75 + 255 * .25 * .75), rounded.
  EXPECT_EQ(207, out.a);
  const std::vector<uint8_t> white(16, 255);
  ZrGetSubPixel32Fast(&out, white.data(), 8, 8192, 8192);
  EXPECT_EQ(255, out.r);

  struct Case {
    int32_t x, y, result;
    int value;
  };
  const Case cases[] = {
      {-1, 0, 0, 0},         {0, -1, 0, 0},          {32768, 0, 0, 0},      {0, 32768, 0, 0}, {0, 0, 1, 0},
      {16384, 0, 1, 100},    {8192, 0, 1, 50},       {16384, 8192, 1, 178},  // (100 + 255) / 2 rounded up
      {8192, 16384, 1, 228}, {24576, 24576, 1, 255}, {4096, 12288, 1, 167},
  };
  for (const Case& c : cases) {
    const GuardedBytes guarded(16);
    std::copy_n(pixels, 16, guarded.data());
    out = {1, 1, 1, 1};
    EXPECT_EQ(c.result, ZrGetSubPixel32Safe(&out, guarded.data(), 2, 2, 8, c.x, c.y)) << c.x << "," << c.y;
    EXPECT_EQ(c.value, out.b) << c.x << "," << c.y;
    const GuardedBytes floats(64);
    for (int index = 0; index < 16; ++index) reinterpret_cast<float*>(floats.data())[index] = pixels[index];
    tZRPIXEL128 outFloat = {1, 1, 1, 1};
    EXPECT_EQ(c.result, ZrGetSubPixel128Safe(&outFloat, floats.data(), 2, 2, 32, c.x, c.y));
    EXPECT_NEAR(c.value, outFloat.b, 0.51) << c.x << "," << c.y;
  }
}

}  // namespace
