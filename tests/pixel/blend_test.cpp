// SPDX-License-Identifier: Apache-2.0
// Blends, fades, alpha preparation, fields and the keyer against their arithmetic, worked out by hand or anew here.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "marlo110k/dib_alpha.h"
#include "marlo110k/dib_blend.h"
#include "marlo110k/dib_fields.h"
#include "marlo110k/dib_key.h"
#include "pixel/blend_rows.h"
#include "pixel/testing/picture.h"
#include "platform/base/cpu.h"

namespace {

using testing_support::GuardedBytes;
using testing_support::Picture;
using testing_support::Random;

using Bytes = std::vector<int>;

tZRPIXEL32 PixelAt(Picture& picture, int32_t column, int32_t row) {
  tZRPIXEL32 pixel;
  std::memcpy(&pixel, picture.top(row) + column * 4, 4);
  return pixel;
}
Bytes Values(tZRPIXEL32 pixel) { return {pixel.b, pixel.g, pixel.r, pixel.a}; }

constexpr tZRPIXEL32 kBelow{10, 20, 30, 40}, kAbove{200, 100, 50, 128};

/// Runs a call on one pixel over another, in bytes or floats.
template <typename Pixel, typename Call>
Pixel OnePixel(Pixel below, const Pixel& above, const Call& call) {
  const RECT bounds{0, 0, 1, 1};
  EXPECT_EQ(S_OK, call(&below, &bounds, &above, static_cast<int32_t>(sizeof(Pixel))));
  return below;
}

TEST(Blend, WorkedBytes) {
  const double matte[3] = {0.5, 0.25, 0.0};
  using Call = std::function<HRESULT(void*, const RECT*, const void*, int32_t)>;
  const auto over = [](const double* colors) -> Call {
    return
        [=](void* d, const RECT* r, const void* s, int32_t n) { return ZrDibOver(d, r, n, r, s, r, n, r, n, colors); };
  };
  const Call under = [](void* d, const RECT* r, const void* s, int32_t n) {
    return ZrDibUnder(d, r, n, r, s, r, n, r, n);
  };
  const auto absolute = [](double alpha) -> Call {
    return [=](void* d, const RECT* r, const void* s, int32_t n) {
      return ZrDibAbsoluteAlphaValueBlend(d, r, n, r, s, r, n, r, n, alpha);
    };
  };
  const auto relative = [](double alpha) -> Call {
    return [=](void* d, const RECT* r, const void* s, int32_t n) {
      return ZrDibRelativeAlphaValueBlend(d, r, n, r, s, r, n, r, n, alpha);
    };
  };
  const auto fade = [](double dst, double src) -> Call {
    return [=](void* d, const RECT* r, const void* s, int32_t n) {
      return ZrDibWeightedCrossFade(d, r, n, r, dst, s, r, n, r, src, n);
    };
  };
  constexpr tZRPIXEL32 kBlack{0, 0, 0, 0}, kWhite{255, 255, 255, 255};
  struct Case {
    const char* name;
    Call call;
    tZRPIXEL32 below, above;
    Bytes expected;
  };
  const Case cases[] = {
      {"over", over(nullptr), kBelow, kAbove, {105, 60, 40, 84}},
      {"over opaque stays a step short", over(nullptr), kBlack, kWhite, {254, 254, 254, 254}},
      {"over with matte", over(matte), kBelow, kAbove, {141, 78, 65, 40}},
      {"under", under, kBelow, kAbove, {171, 88, 47, 115}},
      {"under opaque", under, {10, 20, 30, 255}, kAbove, {11, 21, 31, 254}},
      {"absolute half", absolute(0.5), kBlack, kWhite, {127, 127, 127, 127}},
      {"absolute whole", absolute(1.0), kBlack, kWhite, {254, 254, 254, 254}},
      {"absolute NaN is 0", absolute(std::nan("")), kBelow, kWhite, {10, 20, 30, 40}},
      {"relative whole", relative(1.0), kBlack, kWhite, {253, 253, 253, 253}},
      {"relative half", relative(0.5), kBelow, kAbove, {56, 39, 34, 61}},
      {"fade halves", fade(0.5, 0.5), kBelow, kAbove, {105, 60, 40, 84}},
      {"fade that passes full", fade(0.75, 0.75), {200, 200, 200, 0}, {200, 200, 200, 10}, {255, 255, 255, 8}},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(test.expected, Values(OnePixel(test.below, test.above, test.call))) << test.name;
    // The same in floats, within what bytes can tell.
    const auto real = [](tZRPIXEL32 p) { return tZRPIXEL128{p.b / 255.0f, p.g / 255.0f, p.r / 255.0f, p.a / 255.0f}; };
    const tZRPIXEL128 got = OnePixel(real(test.below), real(test.above), test.call);
    const float channels[4] = {got.b, got.g, got.r, got.a};
    for (int channel = 0; channel < 4; ++channel) {
      EXPECT_NEAR(test.expected[channel] / 255.0, channels[channel], 2.6 / 255) << test.name << " in floats";
    }
  }
}

TEST(Blend, CrossFadeAndPremultiplyHaveTheSameBytesInEveryMember) {
  Random random(6260);
  SCOPED_TRACE(random.Label());
  const int32_t weights[][2] = {{8192, 8192}, {16384, 16384}, {32767, 1},    {5000, 11384},
                                {0, 16384},   {16383, 1},     {12288, 12288}};
  for (size_t pixels = 0; pixels < 40; ++pixels) {
    GuardedBytes first(pixels * 4), second(pixels * 4), source(pixels * 4);
    const auto fill = [&](GuardedBytes& bytes) {
      for (size_t index = 0; index < bytes.size(); ++index) bytes.data()[index] = static_cast<uint8_t>(random.Bits());
    };
    fill(source);
    const auto count = static_cast<int32_t>(pixels);
    for (const auto& weight : weights) {
      fill(first);
      std::memcpy(second.data(), first.data(), first.size());
      std::vector<uint8_t> expected(first.size());
      for (size_t index = 0; index < expected.size(); ++index) {
        const int sum = (source.data()[index] * weight[1] + first.data()[index] * weight[0] + 8192) >> 14;
        expected[index] = static_cast<uint8_t>(std::min(sum, 255));
      }
      marlo::pixel::CrossFadeRowPlain(first.data(), source.data(), count * 4, weight[0], weight[1]);
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), first.data())) << pixels << " pixels";
      if (plat::DetectedVectorLevel() < plat::VectorLevel::kAvx2) continue;
      marlo::pixel::CrossFadeRowAvx2(second.data(), source.data(), count * 4, weight[0], weight[1]);
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), second.data())) << pixels << " pixels";
    }
    if (plat::DetectedVectorLevel() < plat::VectorLevel::kAvx2) continue;
    std::memcpy(second.data(), source.data(), source.size());
    std::memcpy(first.data(), source.data(), source.size());
    marlo::pixel::PremultiplyRowPlain(reinterpret_cast<tZRPIXEL32*>(first.data()), count);
    marlo::pixel::PremultiplyRowAvx2(reinterpret_cast<tZRPIXEL32*>(second.data()), count);
    ASSERT_EQ(0, std::memcmp(first.data(), second.data(), first.size())) << pixels << " pixels";
  }
  // Every pair of colour and alpha.
  std::vector<tZRPIXEL32> all;
  for (int value = 0; value < 65536; ++value) {
    all.push_back(
        {static_cast<uint8_t>(value), 255, static_cast<uint8_t>(255 - value % 256), static_cast<uint8_t>(value >> 8)});
  }
  const RECT bounds{0, 0, 65536, 1};
  std::vector<tZRPIXEL32> got = all;
  ASSERT_EQ(S_OK, ZrDibPremultiply(got.data(), &bounds, 65536 * 4, nullptr, 4));
  for (size_t index = 0; index < all.size(); ++index) {
    const int alpha = all[index].a;
    const Bytes expected{all[index].b * alpha / 255, alpha, all[index].r * alpha / 255, alpha};
    ASSERT_EQ(expected, Values(got[index])) << index;
  }
}

TEST(Blend, FadesTowardAColour) {
  struct Case {
    double color, weight;
    int from, to;
  };
  const Case cases[] = {
      {100 / 255.0 + 1e-9, 0.5, 200, 150}, {1, 0.5, 0, 127}, {0, 0.5, 255, 128}, {0.25, 0.3, 200, 159}};
  for (const Case& test : cases) {
    Picture picture(29, 3, 2);
    std::memset(picture.bits(), test.from, picture.size());
    const double color[4] = {test.color, test.color, test.color, test.color};
    const RECT rect{1, 0, 2, 1};
    ASSERT_EQ(S_OK, ZrDibFadeToColor(picture.header(), picture.bits(), &rect, 0, color, test.weight, 1, 0));
    EXPECT_EQ((Bytes{test.to, test.to, test.to, test.from}), Values(PixelAt(picture, 1, 0)));
    EXPECT_EQ((Bytes{test.from, test.from, test.from, test.from}), Values(PixelAt(picture, 1, 1)));
    EXPECT_EQ((Bytes{test.from, test.from, test.from, test.from}), Values(PixelAt(picture, 0, 0)));
  }
  // Half covered: k' = 8192 * 255 / 16384 = 127.
  Picture picture(29, 3, 3);
  std::memset(picture.bits(), 0, picture.size());
  const double white[4] = {1, 1, 1, 1};
  const RECT half{8192, 8192, 2 * 16384 + 8192, 3 * 16384};
  ASSERT_EQ(S_OK, ZrDibFadeToColor(picture.header(), picture.bits(), &half, 0, white, 1.0, 0, ZRDIB_SUBPIXEL));
  EXPECT_EQ(63, PixelAt(picture, 0, 0).b) << "a corner: half of a half";
  EXPECT_EQ(127, PixelAt(picture, 1, 0).b);
  EXPECT_EQ(255, PixelAt(picture, 1, 1).b);
  EXPECT_EQ(127, PixelAt(picture, 2, 2).b);

  const tZRPIXEL32 pixel{10, 20, 30, 40};
  const RECT bounds{0, 0, 1, 1};
  for (const auto& [alpha, expected] : {std::pair{0.5, Bytes{131, 73, 16, 40}}, {1.0, Bytes{254, 126, 1, 40}}}) {
    tZRPIXEL32 blended = pixel;
    const double color[4] = {1, 0.5, 0, alpha};
    ASSERT_EQ(S_OK, ZrDibBlendWithColor(&blended, &bounds, 4, nullptr, 4, color));
    EXPECT_EQ(expected, Values(blended));
  }
  EXPECT_EQ(E_NOTIMPL, ZrDibFadeToColor(Picture(27, 1, 1).header(), nullptr, nullptr, 0, white, 1, 0, 0));
}

TEST(Alpha, MattesComeOut) {
  const RECT bounds{0, 0, 1, 1};
  const double matte[3] = {1, 0.5, 0}, black[3] = {0, 0, 0};
  struct Case {
    int alpha;
    const double* matte;
    Bytes expected;
  };
  const Case cases[] = {{128, matte, {72, 36, 50, 128}},
                        {255, matte, {199, 99, 50, 255}},
                        {128, nullptr, {128, 100, 50, 128}},
                        {128, black, {128, 100, 50, 128}}};
  for (const Case& test : cases) {
    tZRPIXEL32 pixel{200, 100, 50, static_cast<uint8_t>(test.alpha)};
    ASSERT_EQ(S_OK, ZrDibPrepAlpha(&pixel, 1, 1, 4, nullptr, 2, test.matte, 4, 1, 1));
    EXPECT_EQ(test.expected, Values(pixel));
  }
  tZRPIXEL32 pixel{200, 100, 50, 128};
  ASSERT_EQ(S_OK, ZrDibPrepAlpha(&pixel, 1, 1, 4, nullptr, -1, nullptr, 4, 1, 1));
  EXPECT_EQ((Bytes{200, 100, 50, 255}), Values(pixel));
  EXPECT_EQ(E_NOTIMPL, ZrDibPrepAlpha(&pixel, 1, 1, 4, nullptr, 4, nullptr, 4, 1, 1));
  tZRPIXEL128 real{0.8f, 0.4f, 0.2f, 0.5f};
  ASSERT_EQ(S_OK, ZrDibPrepAlphaImage(&real, &bounds, 16, nullptr, 0, matte, 16, 2.2, 2.2));
  EXPECT_FLOAT_EQ(0.3f, real.b);
  EXPECT_FLOAT_EQ(0.15f, real.g);
  // On a curve and back an opaque pixel keeps its colour.
  real = {0.8f, 0.4f, 0.2f, 1.0f};
  ASSERT_EQ(S_OK, ZrDibPrepAlphaImage(&real, &bounds, 16, nullptr, 0, matte, 16, 1.0, 2.2));
  EXPECT_NEAR(0.8, real.b, 2e-3);
  EXPECT_NEAR(0.2, real.r, 2e-3);
}

/// Gray rows, from the top.
void SetRows(Picture& picture, const Bytes& rows) {
  for (int32_t row = 0; row < picture.height(); ++row) {
    std::memset(picture.top(row), rows[static_cast<size_t>(row)], static_cast<size_t>(picture.width()) * 4);
  }
}
Bytes RowsOf(Picture& picture) {
  Bytes rows;
  for (int32_t row = 0; row < picture.height(); ++row) rows.push_back(picture.top(row)[0]);
  return rows;
}

TEST(Fields, FieldOneIsTheEvenRowsAtEveryHeight) {
  for (int32_t height = 1; height <= 6; ++height) {
    for (int32_t field : {0, 1}) {
      Picture dst(29, 5, height), src(29, 5, height), mixed(29, 5, height);
      Bytes above, below;
      for (int32_t row = 0; row < height; ++row) {
        above.push_back(10 * (row + 1));
        below.push_back(100 + row);
      }
      SetRows(src, above);
      SetRows(dst, below);
      ASSERT_EQ(S_OK, ZrDibMergeFields(dst.header(), dst.bits(), 0, src.header(), src.bits(), 0, field));
      ASSERT_EQ(S_OK, ZrDibCopyInterlace(mixed.header(), mixed.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0,
                                         field, 0));
      for (int32_t row = 0; row < height; ++row) {
        const size_t at = static_cast<size_t>(row);
        const bool taken = (row % 2 == 0) == (field == 1);
        EXPECT_EQ(taken ? above[at] : below[at], RowsOf(dst)[at]) << height << " " << field << " " << row;
        if (taken || height == 1) {
          EXPECT_EQ(above[at], RowsOf(mixed)[at]) << height << " " << field << " " << row;
        } else {
          const int up = above[row == 0 ? 1 : at - 1], down = above[row == height - 1 ? at - 1 : at + 1];
          EXPECT_EQ((up + down) >> 1, RowsOf(mixed)[at]) << height << " " << field << " " << row;
        }
      }
    }
  }
  Picture dst(29, 4, 4), src(29, 4, 4);
  SetRows(src, {10, 20, 30, 41});
  ASSERT_EQ(S_OK, ZrDibCopyInterlace(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, 1, 0));
  EXPECT_EQ((Bytes{10, 20, 30, 30}), RowsOf(dst));
  Picture smaller(29, 4, 3);
  EXPECT_EQ(E_NOTIMPL, ZrDibMergeFields(dst.header(), dst.bits(), 0, smaller.header(), smaller.bits(), 0, 1));
  EXPECT_EQ(E_NOTIMPL, ZrDibCopyInterlace(dst.header(), dst.bits(), nullptr, 0, smaller.header(), smaller.bits(),
                                          nullptr, 0, 1, 0));
}

TEST(Fields, ColumnsOfARotatedPicture) {
  for (int32_t width = 1; width <= 5; ++width) {
    for (int32_t field : {0, 1}) {
      Picture dst(29, width, 2), src(29, width, 2);
      std::memset(dst.bits(), 1, dst.size());
      std::memset(src.bits(), 2, src.size());
      ASSERT_EQ(S_OK, ZrDibMergeFieldsRotated(dst.header(), dst.bits(), 0, src.header(), src.bits(), 0, field));
      const int32_t first = field == ((width & 1) ^ 1) ? 1 : 0;
      for (int32_t column = 0; column < width; ++column) {
        EXPECT_EQ(column >= first && (column - first) % 2 == 0 ? 2 : 1, PixelAt(dst, column, 1).g) << width << column;
      }
    }
  }
}

TEST(Fields, Smoothing) {
  Picture dst(29, 3, 3), src(29, 3, 3);
  std::memset(src.bits(), 0, src.size());
  src.top(1)[4] = 255;
  const RECT bounds{0, 0, 3, 3};
  ASSERT_EQ(S_OK, ZrDibFieldBlend(dst.bits(), &bounds, 12, nullptr, src.bits(), &bounds, 12, nullptr, 4));
  const int expected[3][3] = {{15, 31, 15}, {31, 63, 31}, {15, 31, 15}};
  for (int32_t row = 0; row < 3; ++row) {
    for (int32_t column = 0; column < 3; ++column) EXPECT_EQ(expected[row][column], PixelAt(dst, column, row).b);
  }
  // A row that needs scratch from the heap as well as one that doesn't.
  for (int32_t width : {2, 1500}) {
    Picture picture(29, width, 4);
    SetRows(picture, {10, 20, 60, 7});
    ASSERT_EQ(S_OK, ZrDibInterlaceFilter(picture.bits(), width, 4, width * 4, nullptr, 0, 4));
    EXPECT_EQ((Bytes{12, 27, 36, 20}), RowsOf(picture));
  }
}

TEST(Key, EveryOperationOnAPixelAndTheTwoStages) {
  tZRDIBBLENDPARAMS params{};
  params.weight = 0.5f;
  struct Case {
    int32_t op;
    Bytes expected;  // d (10, 20, 30, 40) and s (200, 100, 50, 128) in bytes, weight 127 of 256.
  };
  const Case cases[] = {
      {0, {200, 100, 50, 128}}, {3, {104, 59, 39, 83}}, {8, {190, 80, 20, 88}}, {16, {10, 20, 30, 40}}};
  for (const Case& test : cases) {
    Picture dst(29, 1, 1), src(29, 1, 1);
    std::memcpy(dst.bits(), &kBelow, 4);
    std::memcpy(src.bits(), &kAbove, 4);
    params.op = test.op;
    ASSERT_EQ(S_OK, ZrDibBlend(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, &params, 0));
    EXPECT_EQ(test.expected, Values(PixelAt(dst, 0, 0))) << test.op;
  }
  params.op = 20;
  Picture dst(29, 9, 1), src(29, 9, 1);
  EXPECT_EQ(E_NOTIMPL,
            ZrDibBlend(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, &params, 0));

  // A picture of pure green but for one white pixel, keyed on green: the matte is the distance, sqrt(2/3) of full.
  for (int32_t column = 0; column < 9; ++column) {
    const tZRPIXEL32 pixel = column == 4 ? tZRPIXEL32{255, 255, 255, 255} : tZRPIXEL32{0, 255, 0, 255};
    std::memcpy(src.bits() + column * 4, &pixel, 4);
  }
  std::memset(dst.bits(), 0, dst.size());
  params = {};
  params.twoStage = 1;
  params.keyGreen = 1.0;
  params.maskOp = ZRKEYMASK_DISTANCE;
  params.output = 1;
  ASSERT_EQ(S_OK, ZrDibBlend(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, &params, 0));
  EXPECT_EQ(0, PixelAt(dst, 3, 0).g);
  EXPECT_NEAR(255 * std::sqrt(2.0 / 3), PixelAt(dst, 4, 0).g, 1.5);
  params.blurRadius = 1.0;  // A third of it on each side.
  ASSERT_EQ(S_OK, ZrDibBlend(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, &params, 3));
  for (int32_t column = 0; column < 9; ++column) {
    EXPECT_NEAR(column >= 3 && column <= 5 ? 255 * std::sqrt(2.0 / 3) / 3 : 0, PixelAt(dst, column, 0).g, 1.5)
        << column;
  }
  // Laid through the matte as a weight: green stays away, white comes by its distance.
  params.output = 0;
  params.matteAction = 1;
  params.blurRadius = 0;
  std::memset(dst.bits(), 0, dst.size());
  ASSERT_EQ(S_OK, ZrDibBlend(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, &params, 0));
  EXPECT_EQ(0, PixelAt(dst, 3, 0).g);
  EXPECT_NEAR(255 * std::sqrt(2.0 / 3), PixelAt(dst, 4, 0).r, 2.5);
}

void AddOne(void* destination, const void* source, void* context) {
  *static_cast<uint8_t*>(destination) = static_cast<uint8_t>(*static_cast<const uint8_t*>(source) + 1);
  ++*static_cast<int*>(context);
}

TEST(Blend, CallbacksSeeTheVisibleAreaOnly) {
  Picture dst(29, 4, 3), src(29, 4, 3);
  std::memset(dst.bits(), 0, dst.size());
  std::memset(src.bits(), 7, src.size());
  const RECT bounds{0, 0, 4, 3}, dstRect{2, 1, 6, 3}, srcRect{0, 0, 4, 2};
  int calls = 0;
  ASSERT_EQ(S_OK, ZrDibChannelOp(dst.bits(), &bounds, 16, &dstRect, 2, src.bits(), &bounds, 16, &srcRect, 0, 4, AddOne,
                                 &calls));
  EXPECT_EQ(4, calls);
  EXPECT_EQ((Bytes{0, 0, 8, 0}), (Bytes{dst.bits()[24], dst.bits()[25], dst.bits()[26], dst.bits()[27]}));
  EXPECT_EQ(E_POINTER,
            ZrDibCustomBlend(dst.bits(), &bounds, 16, nullptr, src.bits(), &bounds, 16, nullptr, 4, nullptr, nullptr));
  EXPECT_EQ(E_INVALIDARG, ZrDibChannelOp(dst.bits(), &bounds, 16, nullptr, 4, src.bits(), &bounds, 16, nullptr, 0, 4,
                                         AddOne, &calls));
  EXPECT_EQ(E_NOTIMPL, ZrDibUnder(dst.bits(), &bounds, 16, nullptr, src.bits(), &bounds, 16, nullptr, 3));
  EXPECT_EQ(E_POINTER, ZrDibUnder(nullptr, &bounds, 16, nullptr, src.bits(), &bounds, 16, nullptr, 4));
  EXPECT_EQ(E_POINTER, ZrDibPremultiply(dst.bits(), nullptr, 16, nullptr, 4));
}

}  // namespace
