// SPDX-License-Identifier: Apache-2.0
// ZrDibCopy as a whole: fast paths, gamma, dither, scaling, feathering and fractional rectangles.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "marlo110k/dib_copy.h"
#include "marlo110k/dib_scale.h"
#include "pixel/testing/exchange_reference.h"
#include "pixel/testing/picture.h"
#include "platform/base/cpu.h"
#include "platform/base/memory.h"

namespace {

using ::testing::ElementsAre;
using testing_support::Picture;
using testing_support::Random;

constexpr int kDither[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

struct Copy : ::testing::Test {
  ~Copy() override { plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512); }
};

HRESULT CopyAll(Picture& dst, Picture& src, uint32_t flags, double dstGamma = 0, double srcGamma = 0) {
  return ZrDibCopy(dst.header(), dst.bits(), nullptr, dst.stride(), src.header(), src.bits(), nullptr, src.stride(),
                   flags, dstGamma, srcGamma);
}

float* Floats(Picture& picture, int32_t row) { return reinterpret_cast<float*>(picture.top(row)); }

TEST_F(Copy, FloatsToBytesAtEveryQualityGammaAndLevel) {
  Random random(6802);
  SCOPED_TRACE(random.Label());
  for (int32_t type : {27, 28, 29}) {
    const int channels = type == 27 ? 3 : 4;
    Picture src(ZRPIXEL_RGBA128F, 37, 9);
    Picture dst(type, 37, 9);
    src.RandomizeFloats(random, -0.3, 1.3);
    const float special[] = {0.0f, 1.0f, 0.999f, 0.5f, -0.0f, 1.0000001f, INFINITY, -INFINITY, NAN, 1e30f};
    std::memcpy(src.bits(), special, sizeof special);
    for (plat::VectorLevel level : {plat::VectorLevel::kPlain, plat::VectorLevel::kAvx2}) {
      plat::SetVectorLevelLimit(level);
      for (uint32_t quality : {0u, 2u, 3u, 4u}) {
        ASSERT_EQ(0, CopyAll(dst, src, quality));
        for (int32_t row = 0; row < 9; ++row) {
          const float* from = reinterpret_cast<float*>(src.bits() + row * src.stride());
          const uint8_t* to = dst.bits() + row * dst.stride();
          for (int32_t x = 0; x < 37; ++x) {
            for (int c = 0; c < channels; ++c) {
              float value = from[x * 4 + c];
              if (quality >= 3) value += static_cast<float>(kDither[row % 4][x % 4] / 4080.0);
              const double scaled = std::isnan(value) ? 0 : std::clamp(std::trunc(value * 255.0), 0.0, 255.0);
              ASSERT_EQ(static_cast<int>(scaled), to[x * channels + c])
                  << "type " << type << " quality " << quality << " at " << x << "," << row << " value " << value;
            }
          }
        }
      }
    }
  }
}

TEST_F(Copy, EveryByteSurvivesTheFloats) {
  Picture bytes(ZRPIXEL_RGBA32, 256, 4), floats(ZRPIXEL_RGBA128F, 256, 4), back(ZRPIXEL_RGBA32, 256, 4);
  for (size_t index = 0; index < bytes.size(); ++index) bytes.bits()[index] = static_cast<uint8_t>(index / 4);
  for (plat::VectorLevel level : {plat::VectorLevel::kPlain, plat::VectorLevel::kAvx2}) {
    plat::SetVectorLevelLimit(level);
    ASSERT_EQ(0, CopyAll(floats, bytes, 3));
    EXPECT_EQ(200 * 0.003921569f, Floats(floats, 1)[200 * 4]);
    for (uint32_t quality : {0u, 3u}) {
      ASSERT_EQ(0, CopyAll(back, floats, quality));
      ASSERT_EQ(bytes.Copy(), back.Copy()) << quality;
    }
  }
}

TEST_F(Copy, GammaCurvesAndTheirTables) {
  // Curve values worked out in double from the construction; 1 over the default is exponent 0.45.
  struct Case {
    double srcGamma, dstGamma, x, y;
  };
  const Case curve[] = {
      {1, 0, .01, .045},     {1, 0, .18, .4088482},  {1, 0, .5, .7054356},    {1, 0, 1, 1},
      {1, 0, 1.5, 1.220041}, {1, 0, -.5, -.7054356}, {0, 1, .01, .0022222},   {0, 1, .18, .0476067},
      {0, 1, .5, .2597193},  {0, 1, 1.5, 2.3004308}, {0, 1.8, .18, .1303345}, {0, 1.8, 1.5, 1.6397769},
      {1, 4, .01, .136159},  {1, 4, .5, .7993024},   {0.1, 90, .5, 0},  // Clamped to 0.5 and 4: exponent 1/8.
  };
  for (const Case& c : curve) {
    Picture src(ZRPIXEL_RGBA128F, 1, 1), dst(ZRPIXEL_RGBA128F, 1, 1), gray(ZRPIXEL_GRAY32F, 1, 1);
    for (int channel = 0; channel < 4; ++channel) Floats(src, 0)[channel] = static_cast<float>(c.x);
    ASSERT_EQ(0, CopyAll(dst, src, 0, c.dstGamma, c.srcGamma));
    const double want = c.y != 0 ? c.y : 0.5 / 0.5 * Floats(dst, 0)[0];
    // The table's 2048 steps are linear between entries.
    EXPECT_NEAR(want, Floats(dst, 0)[0], 2e-5) << c.srcGamma << " " << c.dstGamma << " " << c.x;
    EXPECT_EQ(Floats(dst, 0)[0], Floats(dst, 0)[3]);
    // Through the exchange the curve is evaluated, and cut to 0 to 1 in words.
    ASSERT_EQ(0, CopyAll(gray, src, 0, c.dstGamma, c.srcGamma));
    EXPECT_NEAR(std::clamp(want, 0.0, 1.0), *Floats(gray, 0), 3e-5);
  }

  Picture src(ZRPIXEL_RGBA128F, 4, 4), bytes(ZRPIXEL_RGBA32, 4, 4), floats(ZRPIXEL_RGBA128F, 4, 4);
  for (int row = 0; row < 4; ++row) std::fill_n(Floats(src, row), 16, 0.18f);
  ASSERT_EQ(0, CopyAll(bytes, src, 0, 0, 1));
  EXPECT_EQ(104, bytes.bits()[0]);  // round(.4088 * 255)
  for (int row = 0; row < 4; ++row) std::fill_n(Floats(src, row), 16, 0.5f);
  ASSERT_EQ(0, CopyAll(bytes, src, 0, 0, 1));
  EXPECT_EQ(180, bytes.bits()[0]);
  ASSERT_EQ(0, CopyAll(bytes, src, 0, 1, 0));
  EXPECT_EQ(66, bytes.bits()[0]);
  ASSERT_EQ(0, CopyAll(bytes, src, 3, 0, 1));
  for (int row = 0; row < 4; ++row) {
    for (int x = 0; x < 4; ++x) {
      // .70543 * 255 = 179.886, and up to 15/16 of a step more.
      const int want = 179.886 + kDither[row][x] / 16.0 >= 180 ? 180 : 179;
      EXPECT_EQ(want, bytes.bits()[row * 16 + x * 4 + 3]) << x << "," << row;
    }
  }
  // Bytes are the table's own entries.
  std::fill_n(bytes.bits(), bytes.size(), uint8_t{128});
  ASSERT_EQ(0, CopyAll(floats, bytes, 0, 0, 1));
  EXPECT_NEAR(std::pow(128 / 255.0, .45) * 1.0992966 - 0.0992966, Floats(floats, 0)[1], 1e-6);
  // A gray of floats copied to itself is a block, whatever the gammas.
  Picture gray(ZRPIXEL_GRAY32F, 2, 1), grayCopy(ZRPIXEL_GRAY32F, 2, 1);
  *Floats(gray, 0) = 7.25f;
  ASSERT_EQ(0, CopyAll(grayCopy, gray, 0, 0, 1));
  EXPECT_EQ(7.25f, *Floats(grayCopy, 0));
  plat::FailAllocation(1);
  EXPECT_EQ(E_OUTOFMEMORY, CopyAll(floats, src, 0, 0, 1));
  plat::FailAllocation(0);
}

std::vector<int> Row(Picture& picture, int32_t row, int32_t bytesPerPixel) {
  std::vector<int> values;
  for (int32_t x = 0; x < picture.width(); ++x) {
    const uint8_t* at = picture.top(row) + x * bytesPerPixel;
    values.push_back(bytesPerPixel == 8 ? at[0] | at[1] << 8 : at[0]);
  }
  return values;
}

TEST_F(Copy, ScaledCopiesThroughTheExchange) {
  // Below quality 3 points are taken, and the last column is the source's last.
  const auto points = [](std::vector<uint8_t> source, int32_t width) {
    Picture src(ZRPIXEL_GRAY8, static_cast<int32_t>(source.size()), 1, 0, false), dst(ZRPIXEL_GRAY8, width, 1);
    std::copy(source.begin(), source.end(), src.bits());
    EXPECT_EQ(0, CopyAll(dst, src, 0));
    return Row(dst, 0, 1);
  };
  EXPECT_THAT(points({10, 20, 30, 40}, 2), ElementsAre(10, 40));
  EXPECT_THAT(points({10, 20, 30, 40}, 3), ElementsAre(10, 20, 40));
  EXPECT_THAT(points({10, 20, 30, 40}, 8), ElementsAre(10, 10, 20, 20, 30, 30, 40, 40));
  EXPECT_THAT(points({0, 10, 20, 30, 40, 50}, 4), ElementsAre(0, 10, 30, 50));
  EXPECT_THAT(points({77}, 3), ElementsAre(77, 77, 77));
  EXPECT_THAT(points({1, 2, 3}, 1), ElementsAre(3));

  Picture src(ZRPIXEL_RGBA64, 2, 1, 0, false), dst(ZRPIXEL_RGBA64, 4, 1);
  std::memset(src.bits(), 0, 8);
  std::memset(src.bits() + 8, 255, 8);
  ASSERT_EQ(0, CopyAll(dst, src, 3));
  EXPECT_THAT(Row(dst, 0, 8), ElementsAre(0, 21843, 43687, 65535));
  // Rows: the first in memory is the source's first, the last the last.
  Picture tall(ZRPIXEL_RGBA64, 1, 4), column(ZRPIXEL_RGBA64, 1, 2);
  std::memset(column.top(0), 255, 8);
  std::memset(column.top(1), 0, 8);
  ASSERT_EQ(0, CopyAll(tall, column, 3));
  EXPECT_EQ(65535, Row(tall, 0, 8)[0]);
  EXPECT_EQ(43687, Row(tall, 1, 8)[0]);
  EXPECT_EQ(21843, Row(tall, 2, 8)[0]);
  EXPECT_EQ(0, Row(tall, 3, 8)[0]);

  // White stays white in the last row and column, which have no second fraction; between, four weights that were
  // cut one by one leave a little less: 16382 of 16384.
  Picture white(ZRPIXEL_RGBA64, 3, 3), large(ZRPIXEL_RGBA64, 7, 7);
  std::fill_n(white.bits(), white.size(), uint8_t{255});
  ASSERT_EQ(0, CopyAll(large, white, 3));
  EXPECT_THAT(Row(large, 0, 8), ::testing::Each(65535));
  EXPECT_EQ(65535, Row(large, 3, 8)[6]);
  EXPECT_EQ(65535 * 16382 / 16384, Row(large, 5, 8)[1]);
}

TEST_F(Copy, PalettesInterpolateColoursNotIndices) {
  const RGBQUAD palette[2] = {{0, 0, 0, 0}, {255, 200, 100, 0}};
  Picture src(ZRPIXEL_PAL8, 2, 1, 0, false, palette, 2), dst(ZRPIXEL_RGBA32, 3, 1);
  src.bits()[0] = 0;
  src.bits()[1] = 1;
  ASSERT_EQ(0, CopyAll(dst, src, 3));
  const uint8_t want[12] = {0, 0, 0, 255, 127, 100, 50, 255, 255, 200, 100, 255};
  EXPECT_EQ(0, std::memcmp(want, dst.bits(), 12));
}

TEST_F(Copy, FastPairsGoToTheScalers) {
  Random random(6803);
  SCOPED_TRACE(random.Label());
  for (uint32_t flags : {3u, 3u | ZRDIB_BICUBIC, 4u | ZRDIB_AREA}) {
    Picture src(ZRPIXEL_RGB32, 13, 11, 8), dst(ZRPIXEL_RGBA32, 9, 20), want(ZRPIXEL_RGBA32, 9, 20);
    src.Randomize(random);
    ASSERT_EQ(0, CopyAll(dst, src, flags));
    const SIZE srcSize = {13, 11}, dstSize = {9, 20};
    const auto scaler = flags & ZRDIB_BICUBIC ? ZrDibScale_BiCubic : ZrDibScale_Bilinear;
    ASSERT_EQ(0, scaler(want.top(), &dstSize, -want.stride(), nullptr, src.top(), &srcSize, -src.stride(), nullptr, 4,
                        flags & ZRDIB_AREA ? 1 : 0, 0));
    EXPECT_EQ(want.Copy(), dst.Copy()) << flags;
  }
}

TEST_F(Copy, FractionalRectangles) {
  struct Case {
    int32_t type;
    uint32_t flags;
    std::vector<int> row;
  };
  const RECT rect = {8192, 0, 40960, 16384}, source = {0, 0, 32768, 16384};
  const Case cases[] = {
      {31, 3 | ZRDIB_SUBPIXEL, {32766, 65535, 32766}},
      {31, 3 | ZRDIB_SUBPIXEL | ZRDIB_NO_EDGE_BLEND, {65535, 65535, 65535}},
      {31, 0 | ZRDIB_SUBPIXEL, {65535, 65535, 0}},  // Truncated to whole pixels.
      {29, 3 | ZRDIB_SUBPIXEL, {127, 255, 127}},    // The scaler's own blend.
      {29, 3 | ZRDIB_SUBPIXEL | ZRDIB_NO_EDGE_BLEND, {255, 255, 255}},
  };
  for (const Case& c : cases) {
    Picture src(c.type, 2, 1), dst(c.type, 3, 1);
    std::fill_n(src.bits(), src.size(), uint8_t{255});
    ASSERT_EQ(0, ZrDibCopy(dst.header(), dst.bits(), &rect, 0, src.header(), src.bits(), &source, 0, c.flags, 0, 0));
    EXPECT_EQ(c.row, Row(dst, 0, c.type == 31 ? 8 : 4)) << c.type << " " << c.flags;
  }
  // 24 bits in the byte form: weight 127 of 256 for half a pixel.
  Picture src(ZRPIXEL_RGB24, 2, 1), dst(ZRPIXEL_RGB24, 3, 1);
  std::fill_n(src.bits(), src.size(), uint8_t{255});
  ASSERT_EQ(
      0, ZrDibCopy(dst.header(), dst.bits(), &rect, 0, src.header(), src.bits(), &source, 0, 3 | ZRDIB_SUBPIXEL, 0, 0));
  EXPECT_THAT(Row(dst, 0, 3), ElementsAre(126, 255, 126));
  // Black then white, from corner to corner: steps of (2 - 1) / (2 - 1), the first halved by its coverage.
  std::fill_n(src.bits(), 3, uint8_t{0});
  std::fill_n(dst.bits(), dst.size(), uint8_t{100});
  ASSERT_EQ(0, ZrDibCopy(dst.header(), dst.bits(), &rect, 0, src.header(), src.bits(), &source, 0,
                         3 | ZRDIB_SUBPIXEL | ZRDIB_NO_EDGE_BLEND, 0, 0));
  EXPECT_THAT(Row(dst, 0, 3), ElementsAre(0, 127, 255));
  // Nothing visible is success here, and a refusal among whole pixels.
  const RECT outside = {5 * 16384 + 1, 0, 7 * 16384, 16384}, outsidePixels = {5, 0, 7, 1};
  EXPECT_EQ(0, ZrDibCopy(dst.header(), dst.bits(), &outside, 0, src.header(), src.bits(), &source, 0,
                         3 | ZRDIB_SUBPIXEL, 0, 0));
  EXPECT_EQ(ZR_E_UNSUPPORTED_MEDIA,
            ZrDibCopy(dst.header(), dst.bits(), &outsidePixels, 0, src.header(), src.bits(), nullptr, 0, 0, 0, 0));
}

TEST_F(Copy, FeatheredEdges) {
  Picture src(ZRPIXEL_RGBA64, 6, 5), dst(ZRPIXEL_RGBA64, 6, 5);
  std::fill_n(src.bits(), src.size(), uint8_t{255});
  const uint32_t width3 = 3u << 16;
  ASSERT_EQ(0, CopyAll(dst, src, ZRDIB_FEATHER_LEFT | width3));
  EXPECT_THAT(Row(dst, 2, 8), ElementsAre(16386, 32769, 49152, 65535, 65535, 65535));
  std::fill_n(dst.bits(), dst.size(), uint8_t{0});
  ASSERT_EQ(0, CopyAll(dst, src, ZRDIB_FEATHER_RIGHT | ZRDIB_FEATHER_FIRST_ROWS | width3));
  EXPECT_THAT(Row(dst, 4, 8), ElementsAre(16386, 16386, 16386, 16386, 16386, 16386));  // The first row in memory.
  EXPECT_THAT(Row(dst, 3, 8), ElementsAre(32769, 32769, 32769, 32769, 32769, 16386));  // The larger weight counts.
  EXPECT_THAT(Row(dst, 0, 8), ElementsAre(65535, 65535, 65535, 49152, 32769, 16386));
  std::fill_n(dst.bits(), dst.size(), uint8_t{0});
  ASSERT_EQ(0, CopyAll(dst, src, ZRDIB_FEATHER_LAST_ROWS | width3));
  EXPECT_EQ(16386, Row(dst, 0, 8)[3]);
  EXPECT_EQ(65535, Row(dst, 3, 8)[3]);

  // Five columns, then five rows, hang over an edge: what is seen begins five pixels inside the picture's own
  // edge, at distance 8 - 5 of the 9 parts.
  Picture source(ZRPIXEL_RGBA64, 20, 20), seen(ZRPIXEL_RGBA64, 20, 20);
  std::fill_n(source.bits(), source.size(), uint8_t{255});
  const RECT overLeft = {-5, 0, 15, 20}, overTop = {0, -5, 20, 15}, whole = {0, 0, 20, 20};
  ASSERT_EQ(0, ZrDibCopy(seen.header(), seen.bits(), &overLeft, 0, source.header(), source.bits(), &whole, 0,
                         ZRDIB_FEATHER_LEFT | (8u << 16), 0, 0));
  EXPECT_EQ(43692, Row(seen, 7, 8)[0]);
  EXPECT_EQ(65535, Row(seen, 7, 8)[3]);
  std::fill_n(seen.bits(), seen.size(), uint8_t{0});
  ASSERT_EQ(0, ZrDibCopy(seen.header(), seen.bits(), &overTop, 0, source.header(), source.bits(), &whole, 0,
                         ZRDIB_FEATHER_LAST_ROWS | (8u << 16), 0, 0));
  EXPECT_EQ(43692, Row(seen, 0, 8)[4]);
  EXPECT_EQ(65535, Row(seen, 3, 8)[4]);
  const RECT overBottom = {0, 5, 20, 25};
  std::fill_n(seen.bits(), seen.size(), uint8_t{0});
  ASSERT_EQ(0, ZrDibCopy(seen.header(), seen.bits(), &overBottom, 0, source.header(), source.bits(), &whole, 0,
                         ZRDIB_FEATHER_FIRST_ROWS | (8u << 16), 0, 0));
  EXPECT_EQ(43692, Row(seen, 19, 8)[4]);
  EXPECT_EQ(65535, Row(seen, 16, 8)[4]);

  // A width of 0 is the plain copy, fast paths included; bytes and floats have weights of their own.
  Picture floats(ZRPIXEL_RGBA128F, 4, 1), bytes(ZRPIXEL_RGBA32, 4, 1), onto(ZRPIXEL_RGBA128F, 4, 1);
  std::fill_n(Floats(floats, 0), 16, 0.5f);
  ASSERT_EQ(0, CopyAll(bytes, floats, ZRDIB_FEATHER_LEFT));
  EXPECT_THAT(Row(bytes, 0, 4), ElementsAre(127, 127, 127, 127));
  ASSERT_EQ(0, CopyAll(onto, floats, ZRDIB_FEATHER_LEFT | (1u << 16)));
  EXPECT_NEAR(0.5 * (1 - 32767 / 65535.0), Floats(onto, 0)[0], 1e-7);
  EXPECT_EQ(0.5f, Floats(onto, 0)[4]);
  Picture white(ZRPIXEL_RGB24, 4, 1), below(ZRPIXEL_RGBA32, 4, 1);
  std::fill_n(white.bits(), white.size(), uint8_t{255});
  ASSERT_EQ(0, CopyAll(below, white, ZRDIB_FEATHER_LEFT | width3));
  // Weights 49149, 32766 and 16383 shifted to 191, 127 and 63 of 256.
  EXPECT_THAT(Row(below, 0, 4), ElementsAre(255 - 255 * 191 / 256, 255 - 255 * 127 / 256, 255 - 255 * 63 / 256, 255));
}

TEST_F(Copy, FeatherLeavesFloatsUnderACurve) {
  // What lies in the destination is already in its gamma: at full feather it must come through unchanged.
  Picture src(ZRPIXEL_RGBA32, 1, 1), dst(ZRPIXEL_RGBA128F, 1, 1);
  std::fill_n(src.bits(), 4, uint8_t{0});
  std::fill_n(Floats(dst, 0), 4, 0.4f);
  ASSERT_EQ(0, CopyAll(dst, src, ZRDIB_FEATHER_LEFT | (255u << 16), 0, 1));
  EXPECT_NEAR(0.4, Floats(dst, 0)[2], 0.01);
}

TEST_F(Copy, BlocksStridesAndRefusals) {
  Random random(6804);
  SCOPED_TRACE(random.Label());
  for (int32_t type = 16; type <= 32; ++type) {
    Picture src(type, 19, 6, 16), dst(type, 19, 6, 32);
    if (type == 23 || type == 24) continue;
    src.RandomizeFloats(random, 0, 1);
    // A top-down picture is its last row with a negative stride.
    ASSERT_EQ(0, ZrDibCopy(dst.header(), dst.bits() + 5 * dst.stride(), nullptr, -dst.stride(), src.header(),
                           src.bits(), nullptr, src.stride(), 4, 0, 0))
        << type;
    const size_t rowBytes = static_cast<size_t>(src.header()->biBitCount * 19 / 8);
    for (int32_t row = 0; row < 6; ++row) {
      EXPECT_EQ(0, std::memcmp(dst.top(row), src.top(5 - row), rowBytes)) << type << " row " << row;
    }
  }
  Picture dst(ZRPIXEL_RGBA32, 4, 4), palette(ZRPIXEL_PAL8, 4, 4);
  palette.header()->biClrUsed = 0;
  BITMAPINFOHEADER video = *dst.header();
  video.biCompression = ZRDIB_FOURCC_UYVY;
  uint8_t pixels[256] = {};
  EXPECT_EQ(E_POINTER, ZrDibCopy(nullptr, pixels, nullptr, 0, dst.header(), pixels, nullptr, 0, 0, 0, 0));
  EXPECT_EQ(ZR_E_UNSUPPORTED_MEDIA, ZrDibCopy(&video, pixels, nullptr, 0, dst.header(), pixels, nullptr, 0, 0, 0, 0));
  EXPECT_EQ(ZR_E_UNSUPPORTED_MEDIA, CopyAll(palette, dst, 0));
  EXPECT_EQ(0, CopyAll(dst, palette, 0));  // Without colours every index is black.
  EXPECT_EQ(0, dst.bits()[0]);
  EXPECT_EQ(255, dst.bits()[3]);
  palette.header()->biClrUsed = 2;
  plat::FailAllocation(1);
  EXPECT_EQ(ZR_E_UNSUPPORTED_MEDIA, CopyAll(palette, dst, 0));
  plat::FailAllocation(0);
  const RECT bounds = {0, 0, 4, 4}, a = {0, 0, 2, 2}, b = {2, 2, 4, 4}, c = {0, 0, 3, 2};
  std::fill_n(dst.bits(), dst.size(), uint8_t{1});
  EXPECT_EQ(0, ZrDibCopyUnscaled(dst.top(), &bounds, -16, &a, pixels, &bounds, 16, &b, 4));
  EXPECT_EQ(0, dst.top(1)[7]);
  EXPECT_EQ(1, dst.top(2)[0]);
  EXPECT_EQ(E_INVALIDARG, ZrDibCopyUnscaled(dst.top(), &bounds, -16, &a, pixels, &bounds, 16, &c, 4));
}

}  // namespace
