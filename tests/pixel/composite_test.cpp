// SPDX-License-Identifier: Apache-2.0
// Composites: all modes against their arithmetic, between pixels, clipped, custom and refused.

#include <gtest/gtest.h>

#include <cmath>

#include "marlo110k/dib_composite.h"
#include "pixel/composite_rows.h"
#include "pixel/testing/composite_reference.h"
#include "pixel/testing/picture.h"
#include "platform/base/cpu.h"

namespace {

using testing_support::Picture;
using testing_support::Random;
using testing_support::ReferenceComposite;

constexpr int32_t kModes = 13;

tZRDIBCOMPOSITEPARAMS Request(int32_t mode, float opacity, const tZRCOMPOSITORFUNCS* functions = nullptr) {
  return {0, mode, opacity, functions};
}

HRESULT Composite(Picture& dst, const RECT* dstRect, Picture& src, const RECT* srcRect,
                  const tZRDIBCOMPOSITEPARAMS& params, uint32_t flags = 0) {
  return ZrDibComposite(dst.header(), dst.bits(), dstRect, dst.stride(), src.header(), src.bits(), srcRect,
                        src.stride(), &params, flags);
}

tZRPIXEL32 PixelAt(Picture& picture, int32_t column, int32_t row) {
  tZRPIXEL32 pixel;
  std::memcpy(&pixel, picture.top(row) + column * 4, 4);
  return pixel;
}
void SetPixel(Picture& picture, int32_t column, int32_t row, tZRPIXEL32 pixel) {
  std::memcpy(picture.top(row) + column * 4, &pixel, 4);
}
void Fill(Picture& picture, tZRPIXEL32 pixel) {
  for (int32_t row = 0; row < picture.height(); ++row) {
    for (int32_t column = 0; column < picture.width(); ++column) SetPixel(picture, column, row, pixel);
  }
}
std::vector<int> Values(tZRPIXEL32 pixel) { return {pixel.b, pixel.g, pixel.r, pixel.a}; }

struct PixelComposite : ::testing::Test {
  ~PixelComposite() override { plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512); }
};

/// d (40, 90, 200, 128) under s (100, 50, 30, 160), worked out by hand for opacities 1, 0.5 and 0.3.
constexpr uint8_t kWorked[kModes][3][4] = {
    {{100, 50, 30, 160}, {69, 71, 116, 143}, {57, 79, 150, 137}},
    {{140, 140, 230, 255}, {90, 115, 215, 208}, {70, 105, 209, 176}},
    {{0, 40, 170, 128}, {0, 65, 185, 128}, {10, 75, 191, 128}},
    {{16, 18, 24, 80}, {8, 9, 12, 40}, {5, 5, 6, 24}},
    {{115, 84, 105, 208}, {77, 87, 152, 168}, {62, 88, 171, 152}},
    {{115, 84, 105, 208}, {70, 70, 115, 144}, {58, 78, 149, 138}},
    {{119, 106, 156, 223}, {79, 120, 194, 175}, {63, 108, 206, 156}},
    {{119, 94, 130, 255}, {93, 117, 180, 192}, {71, 114, 200, 166}},
    {{119, 94, 131, 255}, {92, 117, 181, 191}, {71, 114, 200, 166}},
    {{107, 111, 168, 208}, {73, 115, 199, 168}, {59, 104, 204, 151}},
    {{111, 78, 93, 255}, {113, 109, 162, 215}, {83, 121, 190, 180}},
    {{114, 84, 105, 255}, {107, 111, 168, 208}, {79, 120, 194, 175}},
    {{119, 94, 130, 255}, {93, 117, 180, 192}, {71, 114, 200, 166}},
};

TEST_F(PixelComposite, WorkedBytes) {
  const float opacities[] = {1.0f, 0.5f, 0.3f};
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (int index = 0; index < 3; ++index) {
      Picture dst(29, 9, 2), src(28, 9, 2);
      Fill(dst, {40, 90, 200, 128});
      Fill(src, {100, 50, 30, 160});
      ASSERT_EQ(0, Composite(dst, nullptr, src, nullptr, Request(mode, opacities[index])));
      const uint8_t* worked = kWorked[mode][index];
      const std::vector<int> expected(worked, worked + 4);
      EXPECT_EQ(expected, Values(PixelAt(dst, 0, 0))) << "mode " << mode << " opacity " << opacities[index];
      EXPECT_EQ(expected, Values(PixelAt(dst, 8, 1))) << "mode " << mode << " opacity " << opacities[index];
    }
  }
}

TEST_F(PixelComposite, AllBytePairs) {
  const uint8_t alphas[] = {0, 1, 90, 128, 254, 255};
  Picture dst(29, 256, 256), src(29, 256, 256);
  for (float opacity : {1.0f, 0.5f, 0.3f, 0.00007f}) {
    const int32_t weight14 = static_cast<int32_t>(opacity * 16384.0f);
    for (int32_t mode = 0; mode < kModes; ++mode) {
      for (uint8_t srcAlpha : alphas) {
        for (uint8_t dstAlpha : alphas) {
          for (int32_t y = 0; y < 256; ++y) {
            for (int32_t x = 0; x < 256; ++x) {
              const uint8_t a = static_cast<uint8_t>(x), b = static_cast<uint8_t>(y);
              SetPixel(dst, x, y, {a, b, srcAlpha, dstAlpha});
              SetPixel(src, x, y, {b, a, dstAlpha, srcAlpha});
            }
          }
          ASSERT_EQ(0, Composite(dst, nullptr, src, nullptr, Request(mode, opacity)));
          int32_t wrong = 0;
          for (int32_t y = 0; y < 256; ++y) {
            for (int32_t x = 0; x < 256; ++x) {
              const uint8_t a = static_cast<uint8_t>(x), b = static_cast<uint8_t>(y);
              const tZRPIXEL32 expected =
                  ReferenceComposite(mode, weight14, {a, b, srcAlpha, dstAlpha}, {b, a, dstAlpha, srcAlpha});
              const tZRPIXEL32 got = PixelAt(dst, x, y);
              wrong += std::memcmp(&expected, &got, 4) != 0;
            }
          }
          ASSERT_EQ(0, wrong) << "mode " << mode << " opacity " << opacity << " alphas " << int{srcAlpha} << " "
                              << int{dstAlpha};
        }
      }
    }
  }
}

TEST_F(PixelComposite, PlainAndVectorRowsGiveTheSameBytes) {
  if (plat::DetectedVectorLevel() < plat::VectorLevel::kAvx2) GTEST_SKIP() << "no AVX2 here";
  Random random(6200);
  SCOPED_TRACE(random.Label());
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (int32_t pixels = 0; pixels < 40; ++pixels) {
      for (int32_t weight14 : {16384, 0, static_cast<int32_t>(random.Between(1, 16383))}) {
        // The pictures end at unreadable pages, so that a row that reads on dies here.
        Picture plain(29, 41, 1), vector(29, 41, 1), src(29, 41, 1);
        plain.Randomize(random);
        src.Randomize(random);
        std::memcpy(vector.bits(), plain.bits(), plain.size());
        const int64_t first = 41 - pixels;
        const auto at = [first](Picture& picture) { return reinterpret_cast<tZRPIXEL32*>(picture.bits()) + first; };
        marlo::pixel::kByteCompositePlain[mode](at(plain), at(src), pixels, weight14);
        marlo::pixel::kByteCompositeAvx2[mode](at(vector), at(src), pixels, weight14);
        ASSERT_EQ(plain.Copy(), vector.Copy()) << "mode " << mode << " pixels " << pixels << " weight " << weight14;
      }
    }
  }
}

TEST_F(PixelComposite, FloatRowsFollowTheRuleAndTheLevelsAgree) {
  Random random(6201);
  SCOPED_TRACE(random.Label());
  const bool hasAvx2 = plat::DetectedVectorLevel() >= plat::VectorLevel::kAvx2;
  for (int32_t mode = 0; mode < kModes; ++mode) {
    for (int32_t pixels = 0; pixels < 12; ++pixels) {
      for (float opacity : {1.0f, 0.5f, 0.0f, static_cast<float>(random.Real(0, 1))}) {
        Picture plain(32, 12, 1), vector(32, 12, 1), src(32, 12, 1);
        plain.RandomizeFloats(random, 0, 1);
        src.RandomizeFloats(random, 0, 1.5);
        if (pixels > 4) {  // Weights of exactly 0 and 1.
          float* const s = reinterpret_cast<float*>(src.bits());
          s[47] = 1.0f;
          s[43] = 0.0f;
          reinterpret_cast<float*>(plain.bits())[47] = 0.0f;
        }
        std::memcpy(vector.bits(), plain.bits(), plain.size());
        const std::vector<uint8_t> before = plain.Copy();
        const int64_t first = 12 - pixels;
        const auto at = [first](Picture& picture) { return reinterpret_cast<tZRPIXEL128*>(picture.bits()) + first; };
        marlo::pixel::kFloatCompositePlain[mode](at(plain), at(src), pixels, opacity);
        if (hasAvx2) {
          marlo::pixel::kFloatCompositeAvx2[mode](at(vector), at(src), pixels, opacity);
          ASSERT_EQ(plain.Copy(), vector.Copy()) << "mode " << mode << " pixels " << pixels << " opacity " << opacity;
        }
        for (int64_t pixel = first; pixel < 12; ++pixel) {
          double d[4], s[4];
          float was[4];
          std::memcpy(was, before.data() + pixel * 16, 16);
          const float* const from = reinterpret_cast<const float*>(src.bits()) + pixel * 4;
          const float* const now = reinterpret_cast<const float*>(plain.bits()) + pixel * 4;
          for (int c = 0; c < 4; ++c) d[c] = was[c], s[c] = from[c];
          ReferenceComposite(mode, opacity, d, s);
          for (int c = 0; c < 4; ++c) ASSERT_NEAR(d[c], now[c], 2e-6) << "mode " << mode << " opacity " << opacity;
        }
      }
    }
  }
}

TEST_F(PixelComposite, HalfCoveredColumns) {
  // From 1.5 to 3.5: three columns, the outer ones with half the weight.
  const RECT place = {24576, 0, 57344, 16384};
  Picture dst(29, 6, 1), src(29, 2, 1);
  Fill(dst, {0, 0, 0, 0});
  Fill(src, {255, 255, 255, 255});
  ASSERT_EQ(0, Composite(dst, &place, src, nullptr, Request(0, 1), ZRDIB_SUBPIXEL));
  const int expected[] = {0, 126, 255, 126, 0, 0};
  for (int32_t column = 0; column < 6; ++column) {
    EXPECT_EQ(std::vector<int>(4, expected[column]), Values(PixelAt(dst, column, 0))) << column;
  }
  Fill(dst, {10, 20, 30, 255});
  ASSERT_EQ(0, Composite(dst, &place, src, nullptr, Request(4, 1), ZRDIB_SUBPIXEL));
  EXPECT_EQ((std::vector<int>{133, 138, 143, 255}), Values(PixelAt(dst, 1, 0)));
  EXPECT_EQ((std::vector<int>{255, 255, 255, 255}), Values(PixelAt(dst, 2, 0)));
  EXPECT_EQ((std::vector<int>{133, 138, 143, 255}), Values(PixelAt(dst, 3, 0)));
  EXPECT_EQ((std::vector<int>{10, 20, 30, 255}), Values(PixelAt(dst, 4, 0)));
}

TEST_F(PixelComposite, OtherSizesScaleFromCornerToCorner) {
  Picture dst(29, 4, 1), src(29, 2, 1);
  SetPixel(src, 1, 0, {255, 255, 255, 255});
  ASSERT_EQ(0, Composite(dst, nullptr, src, nullptr, Request(0, 1)));
  // Steps of 5461: the second pixel is 255 * 5461 / 16384, the third 255 * 10922 / 16384.
  const int expected[] = {0, 84, 169, 255};
  for (int32_t column = 0; column < 4; ++column) EXPECT_EQ(expected[column], PixelAt(dst, column, 0).g) << column;

  // Four weights each cut to 14 bits miss two units where both axes have a fraction.
  Picture square(29, 5, 5), white(29, 3, 3);
  Fill(white, {255, 255, 255, 255});
  ASSERT_EQ(0, Composite(square, nullptr, white, nullptr, Request(0, 1)));
  for (int32_t row = 0; row < 5; ++row) {
    for (int32_t column = 0; column < 5; ++column) {
      const bool border = row == 0 || row == 4 || column == 0 || column == 4;
      EXPECT_EQ(border ? 255 : 254, PixelAt(square, column, row).r) << column << " " << row;
    }
  }
}

TEST_F(PixelComposite, QuarterCoveredCorners) {
  const RECT place = {8192, 8192, 40960, 40960};
  Picture dst(29, 3, 3), src(29, 2, 2);
  Fill(dst, {0, 0, 0, 255});
  Fill(src, {200, 100, 50, 255});
  ASSERT_EQ(0, Composite(dst, &place, src, nullptr, Request(4, 1), ZRDIB_SUBPIXEL));
  EXPECT_EQ((std::vector<int>{50, 25, 13, 255}), Values(PixelAt(dst, 0, 0)));
  EXPECT_EQ((std::vector<int>{100, 50, 25, 255}), Values(PixelAt(dst, 1, 0)));
  EXPECT_EQ((std::vector<int>{200, 100, 50, 255}), Values(PixelAt(dst, 1, 1)));
  EXPECT_EQ((std::vector<int>{50, 25, 13, 255}), Values(PixelAt(dst, 2, 2)));
}

TEST_F(PixelComposite, FloatsAddWithoutClampInColour) {
  Picture dst(32, 3, 1), src(32, 3, 1);
  for (int index = 0; index < 12; ++index) {
    reinterpret_cast<float*>(dst.bits())[index] = 0.75f;
    reinterpret_cast<float*>(src.bits())[index] = 0.5f;
  }
  ASSERT_EQ(0, Composite(dst, nullptr, src, nullptr, Request(1, 1)));
  const float* const result = reinterpret_cast<const float*>(dst.bits());
  EXPECT_EQ(1.25f, result[0]);
  EXPECT_EQ(1.0f, result[3]);
}

/// One axis of a composite between pixels, by its rule: where a destination pixel reads, and how much of it is covered.
struct AxisReference {
  int64_t first, count, start, step, lastSource, leading, trailing;

  AxisReference(int32_t low, int32_t high, int32_t sourceLow, int32_t sourceHigh, int32_t stepOf)
      : first(low >> 14), start(sourceLow), step(std::max(stepOf, 0)) {
    const int64_t end = (int64_t{high} + 16383) >> 14;
    count = end - first;
    leading = count < 2 ? high - low : (first + 1) * 16384 - low;
    trailing = count < 2 ? leading : high - (end - 1) * 16384;
    lastSource = std::max<int64_t>(((int64_t{sourceHigh} + 16383) >> 14) - 1, 0);
  }
  int64_t Scaled(int64_t weight, int64_t index) const {
    if (index == 0) return weight * leading / 16384;
    return index == count - 1 ? weight * trailing / 16384 : weight;
  }
  /// In 18.14; the last pixel reads the last source pixel alone.
  int64_t Place(int64_t index) const {
    if (index == count - 1) return lastSource * 16384;
    const int64_t place = index == 0 ? start : start + step * leading / 16384 + (index - 1) * step;
    return std::min(place, lastSource * 16384);
  }
};

TEST_F(PixelComposite, BetweenPixelsFollowsTheRule) {
  Random random(6203);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 600; ++round) {
    const bool floats = random.Between(0, 1) != 0;
    const auto size = [&](int64_t most) { return static_cast<int32_t>(random.Between(1, most)); };
    Picture dst(floats ? 32 : 29, size(14), size(7)), src(floats ? 32 : 29, size(14), size(7));
    for (Picture* picture : {&dst, &src}) floats ? picture->RandomizeFloats(random, 0, 1) : picture->Randomize(random);
    const auto place = [&](Picture& picture) {
      const auto at = [&](int32_t extent) { return static_cast<int32_t>(random.Between(-9000, (extent + 1) * 16384)); };
      RECT rect = {at(picture.width()), at(picture.height()), at(picture.width()), at(picture.height())};
      if (rect.left > rect.right) std::swap(rect.left, rect.right);
      if (rect.top > rect.bottom) std::swap(rect.top, rect.bottom);
      rect.left |= 1;  // Never whole pixels, which go another way.
      return rect;
    };
    const RECT to = place(dst), from = place(src);
    const SIZE dstSize = {dst.width(), dst.height()}, srcSize = {src.width(), src.height()};
    tZRDIBSUBPIXELPARAMS record;
    const bool visible = ZrPrepareSubpixelParam(&record, dst.top(), &dstSize, -dst.stride(), &to, src.top(), &srcSize,
                                                -src.stride(), &from) != 0;
    const auto mode = static_cast<int32_t>(random.Between(0, 12));
    const float opacity = random.Between(0, 2) == 0 ? 1.0f : static_cast<float>(random.Real(0, 1));
    const std::vector<uint8_t> before = dst.Copy();
    ASSERT_EQ(0, Composite(dst, &to, src, &from, Request(mode, opacity), ZRDIB_SUBPIXEL));
    if (!visible) {
      ASSERT_EQ(before, dst.Copy());
      continue;
    }
    const AxisReference x(record.dstClipped.left, record.dstClipped.right, record.srcFinal.left, record.srcFinal.right,
                          record.stepX);
    const AxisReference y(record.dstClipped.top, record.dstClipped.bottom, record.srcFinal.top, record.srcFinal.bottom,
                          record.stepY);
    const int32_t bytes = floats ? 16 : 4;
    for (int64_t row = 0; row < y.count; ++row) {
      for (int64_t column = 0; column < x.count; ++column) {
        SCOPED_TRACE(testing::Message() << "round " << round << " mode " << mode << " at " << column << ", " << row);
        const int64_t weight = x.Scaled(y.Scaled(static_cast<int64_t>(opacity * 16384.0), row), column);
        const int64_t placeX = x.Place(column), placeY = y.Place(row);
        const int64_t fx = placeX & 16383, fy = placeY & 16383;
        const int64_t weights[4] = {(16384 - fx) * (16384 - fy), fx * (16384 - fy), (16384 - fx) * fy, fx * fy};
        const uint8_t* corners[4];
        for (int corner = 0; corner < 4; ++corner) {
          const int64_t sx = std::min((placeX >> 14) + corner % 2, x.lastSource);
          const int64_t sy = std::min((placeY >> 14) + corner / 2, y.lastSource);
          corners[corner] = src.top(static_cast<int32_t>(sy)) + sx * bytes;
        }
        const uint8_t* got = dst.top(static_cast<int32_t>(y.first + row)) + (x.first + column) * bytes;
        const uint8_t* was = before.data() + (got - dst.bits());
        if (floats) {
          double s[4], d[4];
          float value;
          for (int channel = 0; channel < 4; ++channel) {
            s[channel] = 0;
            for (int corner = 0; corner < 4; ++corner) {
              std::memcpy(&value, corners[corner] + channel * 4, 4);
              s[channel] += value * (static_cast<double>(weights[corner]) / (16384.0 * 16384.0));
            }
            std::memcpy(&value, was + channel * 4, 4);
            d[channel] = value;
          }
          ReferenceComposite(mode, static_cast<double>(weight) / 16384, d, s);
          for (int channel = 0; channel < 4; ++channel) {
            std::memcpy(&value, got + channel * 4, 4);
            ASSERT_NEAR(d[channel], value, 1e-5 * (1 + std::abs(d[channel])));
          }
          continue;
        }
        uint8_t s[4];
        for (int channel = 0; channel < 4; ++channel) {
          int64_t sum = 0;
          for (int corner = 0; corner < 4; ++corner) sum += corners[corner][channel] * (weights[corner] / 16384);
          s[channel] = static_cast<uint8_t>(sum / 16384);
        }
        const tZRPIXEL32 expected = ReferenceComposite(mode, static_cast<int32_t>(weight),
                                                       {was[0], was[1], was[2], was[3]}, {s[0], s[1], s[2], s[3]});
        ASSERT_EQ(Values(expected), (std::vector<int>{got[0], got[1], got[2], got[3]}));
      }
    }
  }
}

TEST_F(PixelComposite, RandomPlacesStayInsideAndOutsideIsKept) {
  Random random(6202);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 400; ++round) {
    const int32_t type = random.Between(0, 1) ? 29 : 32;
    Picture dst(type, static_cast<int32_t>(random.Between(1, 20)), static_cast<int32_t>(random.Between(1, 9)), 0,
                random.Between(0, 1) != 0);
    Picture src(type, static_cast<int32_t>(random.Between(1, 20)), static_cast<int32_t>(random.Between(1, 9)), 0,
                random.Between(0, 1) != 0);
    const auto place = [&](Picture& picture) {
      const auto at = [&](int32_t size) { return static_cast<int32_t>(random.Between(-16384, (size + 1) * 16384)); };
      RECT rect = {at(picture.width()), at(picture.height()), at(picture.width()), at(picture.height())};
      if (rect.left > rect.right) std::swap(rect.left, rect.right);
      if (rect.top > rect.bottom) std::swap(rect.top, rect.bottom);
      return rect;
    };
    const RECT to = place(dst);
    const RECT from = place(src);
    const std::vector<uint8_t> before = dst.Copy();
    ASSERT_EQ(
        0, Composite(dst, &to, src, &from, Request(static_cast<int32_t>(random.Between(0, 12)), 0.7f), ZRDIB_SUBPIXEL));
    const int32_t bytes = type == 29 ? 4 : 16;
    for (int32_t row = 0; row < dst.height(); ++row) {
      for (int32_t column = 0; column < dst.width(); ++column) {
        const bool touched = column * 16384 < to.right && (column + 1) * 16384 > to.left && row * 16384 < to.bottom &&
                             (row + 1) * 16384 > to.top;
        const int64_t at = dst.top(row) - dst.bits() + column * bytes;
        if (!touched) {
          ASSERT_EQ(0, std::memcmp(before.data() + at, dst.bits() + at, static_cast<size_t>(bytes)));
        }
      }
    }
  }
}

void CustomPixel8(tZRPIXEL32* d, const tZRPIXEL32* s, int32_t opacity) {
  *d = {s->b, s->g, static_cast<uint8_t>(opacity), 1};
}
void CustomRow8(tZRPIXEL32* d, const tZRPIXEL32* s, int32_t opacity, int32_t width) {
  for (int32_t x = 0; x < width; ++x) d[x] = {s[x].b, static_cast<uint8_t>(width), static_cast<uint8_t>(opacity), 2};
}
void CustomPixelFloat(tZRPIXEL128* d, const tZRPIXEL128*, float opacity) { *d = {opacity, 0, 0, 3}; }
void CustomRowFloat(tZRPIXEL128* d, const tZRPIXEL128*, float opacity, int32_t width) {
  for (int32_t x = 0; x < width; ++x) d[x] = {opacity, static_cast<float>(width), 0, 4};
}

TEST_F(PixelComposite, CustomCompositorGetsOpacityAndCoverage) {
  const tZRCOMPOSITORFUNCS functions = {CustomPixel8, CustomRow8, nullptr, CustomPixelFloat, CustomRowFloat};
  Picture dst(29, 4, 2), src(29, 4, 2);
  Fill(src, {9, 8, 7, 6});
  ASSERT_EQ(0, Composite(dst, nullptr, src, nullptr, Request(-1, 0.5f, &functions)));
  EXPECT_EQ((std::vector<int>{9, 4, 127, 2}), Values(PixelAt(dst, 3, 1)));
  const RECT half = {8192, 0, 49152, 32768};
  ASSERT_EQ(0, Composite(dst, &half, src, nullptr, Request(-1, 1, &functions), ZRDIB_SUBPIXEL));
  EXPECT_EQ((std::vector<int>{9, 8, 127, 1}), Values(PixelAt(dst, 0, 0)));
  EXPECT_EQ((std::vector<int>{9, 8, 255, 1}), Values(PixelAt(dst, 1, 0)));

  Picture floats(32, 4, 2), source(32, 4, 2);
  ASSERT_EQ(0, Composite(floats, nullptr, source, nullptr, Request(-1, 0.25f, &functions)));
  EXPECT_EQ(0.25f, reinterpret_cast<float*>(floats.bits())[0]);
  EXPECT_EQ(4.0f, reinterpret_cast<float*>(floats.bits())[1]);
  ASSERT_EQ(0, Composite(floats, &half, source, nullptr, Request(-1, 1, &functions), ZRDIB_SUBPIXEL));
  EXPECT_EQ(0.5f, reinterpret_cast<float*>(floats.top(0))[0]);
  EXPECT_EQ(3.0f, reinterpret_cast<float*>(floats.top(0))[3]);
}

TEST_F(PixelComposite, Refusals) {
  Picture bytes(29, 4, 4), opaque(28, 4, 4), floats(32, 4, 4), packed(27, 4, 4);
  const std::vector<uint8_t> before = bytes.Copy();
  const tZRCOMPOSITORFUNCS empty = {};
  EXPECT_EQ(E_INVALIDARG, Composite(bytes, nullptr, floats, nullptr, Request(0, 1)));
  EXPECT_EQ(E_INVALIDARG, Composite(floats, nullptr, bytes, nullptr, Request(0, 1)));
  EXPECT_EQ(E_INVALIDARG, Composite(bytes, nullptr, packed, nullptr, Request(0, 1)));
  EXPECT_EQ(E_INVALIDARG, Composite(bytes, nullptr, packed, nullptr, Request(13, 1))) << "types before modes";
  EXPECT_EQ(E_INVALIDARG, Composite(bytes, nullptr, opaque, nullptr, Request(-1, 1)));
  EXPECT_EQ(E_INVALIDARG, Composite(bytes, nullptr, opaque, nullptr, Request(-1, 1, &empty)));
  EXPECT_EQ(E_NOTIMPL, Composite(bytes, nullptr, opaque, nullptr, Request(13, 1)));
  EXPECT_EQ(E_NOTIMPL, Composite(bytes, nullptr, opaque, nullptr, Request(-2, 1)));
  const RECT half = {0, 0, 8192, 65536};
  EXPECT_EQ(E_NOTIMPL, Composite(bytes, &half, opaque, nullptr, Request(13, 1), ZRDIB_SUBPIXEL));
  const RECT whole = {0, 0, 4, 4};
  const auto params = Request(0, 1);
  EXPECT_EQ(E_INVALIDARG,
            ZrDibCompositeUnscaled(bytes.bits(), &whole, 16, nullptr, opaque.bits(), &whole, 16, nullptr, 4, nullptr));
  EXPECT_EQ(E_NOTIMPL,
            ZrDibCompositeUnscaled(bytes.bits(), &whole, 16, nullptr, opaque.bits(), &whole, 16, nullptr, 3, &params));
  EXPECT_EQ(E_POINTER,
            ZrDibCompositeUnscaled(bytes.bits(), nullptr, 16, nullptr, opaque.bits(), &whole, 16, nullptr, 4, &params));
  EXPECT_EQ(E_POINTER, ZrDibCompositeSP(nullptr, &whole, 16, nullptr, opaque.bits(), &whole, 16, nullptr, 4, &params));
  const RECT away = {40, 40, 44, 44};
  EXPECT_EQ(0, Composite(bytes, &away, opaque, nullptr, Request(0, 1)));
  EXPECT_EQ(before, bytes.Copy());
}

}  // namespace
