// SPDX-License-Identifier: Apache-2.0
// Filling, single pixels, mirroring, channels and transfer functions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "marlo110k/dib_copy.h"
#include "pixel/testing/exchange_reference.h"
#include "pixel/testing/picture.h"

namespace {

using ::testing::ElementsAre;
using testing_support::Picture;
using testing_support::Random;
using testing_support::ReferenceRead;
using testing_support::Words;

bool SameWords(const Words& a, const tZRPIXEL64& b) {
  return a.c[0] == b.b && a.c[1] == b.g && a.c[2] == b.r && a.c[3] == b.a;
}

constexpr RGBQUAD kPalette[4] = {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 255, 0}, {255, 0, 0, 0}};

std::unique_ptr<Picture> Make(int32_t type, int32_t width, int32_t height) {
  const bool palette = type == 23 || type == 24;
  return std::make_unique<Picture>(type, width, height, 0, false, palette ? kPalette : nullptr, palette ? 4 : 0);
}

TEST(Pixels, GetAndSetInEveryType) {
  Random random(6805);
  SCOPED_TRACE(random.Label());
  RGBQUAD palette[256] = {};
  std::copy_n(kPalette, 4, palette);
  for (int32_t type = 16; type <= 32; ++type) {
    auto picture = Make(type, 9, 5);
    if (type == 22 || type == 32) {
      picture->RandomizeFloats(random, 0, 1);
    } else {
      picture->Randomize(random);
    }
    for (int32_t y = 0; y < 5; ++y) {
      for (int32_t x = 0; x < 9; ++x) {
        tZRPIXEL64 pixel;
        ASSERT_EQ(0, ZrDibGetPixel(picture->header(), picture->bits(), 0, x, y, &pixel));
        ASSERT_TRUE(SameWords(ReferenceRead(type, picture->top(y), x, false, palette), pixel)) << type << " " << x;
      }
    }
    // Setting what was read changes nothing, except where the quantizer finds an equal colour at another index.
    const std::vector<uint8_t> before = picture->Copy();
    const tZRPIXEL64 white = {65535, 65535, 65535, 65535};
    tZRPIXEL64 pixel;
    ASSERT_EQ(0, ZrDibSetPixel(picture->header(), picture->bits(), 0, 4, 1, &white));
    ASSERT_EQ(0, ZrDibGetPixel(picture->header(), picture->bits(), 0, 4, 1, &pixel));
    EXPECT_GE(pixel.b, 0xF800) << type;
    EXPECT_GE(pixel.r, 0xF800) << type;
    size_t changed = 0;
    for (size_t index = 0; index < before.size(); ++index) changed += before[index] != picture->bits()[index];
    EXPECT_LE(changed, static_cast<size_t>(std::max(1, picture->header()->biBitCount / 8))) << type;

    for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {9, 0}, {0, 5}, {INT32_MAX, INT32_MIN}}) {
      EXPECT_EQ(E_NOTIMPL, ZrDibGetPixel(picture->header(), picture->bits(), 0, x, y, &pixel));
      EXPECT_EQ(E_INVALIDARG, ZrDibSetPixel(picture->header(), picture->bits(), 0, x, y, &white));
    }
  }
  Picture picture(ZRPIXEL_RGBA32, 1, 1);
  tZRPIXEL64 pixel;
  BITMAPINFOHEADER video = *picture.header();
  video.biCompression = ZRDIB_FOURCC_UYVY;
  EXPECT_EQ(E_NOTIMPL, ZrDibGetPixel(&video, picture.bits(), 0, 0, 0, &pixel));
  EXPECT_EQ(E_NOTIMPL, ZrDibSetPixel(&video, picture.bits(), 0, 0, 0, &pixel));
  EXPECT_EQ(E_POINTER, ZrDibGetPixel(nullptr, nullptr, 0, 0, 0, &pixel));
  EXPECT_EQ(E_POINTER, ZrDibSetPixel(picture.header(), nullptr, 0, 0, 0, nullptr));
}

TEST(Fill, ThroughTheExchangeRoundsAndUnscaledTruncates) {
  Picture bytes(ZRPIXEL_RGBA32, 5, 4), floats(ZRPIXEL_RGBA128F, 5, 4);
  const RECT rect = {1, 1, 3, 2};
  ASSERT_EQ(0, ZrDibSet(bytes.header(), bytes.bits(), &rect, 0, 1.0f, 0.5f, 0.0f, 2.0f, 0));
  EXPECT_THAT(std::vector<uint8_t>(bytes.top(1) + 4, bytes.top(1) + 12),
              ElementsAre(0, 128, 255, 255, 0, 128, 255, 255));
  EXPECT_EQ(0, bytes.top(1)[3]);
  EXPECT_EQ(0, bytes.top(1)[12 + 3]);
  EXPECT_EQ(0, bytes.top(2)[4 + 3]);
  const RECT bounds = {0, 0, 5, 4};
  ASSERT_EQ(0, ZrDibSetUnscaled(bytes.top(), &bounds, -bytes.stride(), &rect, 4, 1.0, 0.5, 0.0, 2.0));
  EXPECT_EQ(127, bytes.top(1)[5]);
  ASSERT_EQ(0, ZrDibSetUnscaled(floats.top(), &bounds, -floats.stride(), &rect, 16, 1.5, 0.5, NAN, 0.25));
  const float* pixel = reinterpret_cast<float*>(floats.top(1)) + 4;
  EXPECT_THAT(std::vector<float>(pixel, pixel + 4), ElementsAre(0.0f, 0.5f, 1.0f, 0.25f));
  EXPECT_EQ(E_NOTIMPL, ZrDibSetUnscaled(bytes.top(), &bounds, 20, &rect, 3, 1, 1, 1, 1));

  const float color[4] = {0.25f, 0.5f, 0.75f, 1.0f};
  const RECT fractional = {16384 + 9000, 0, 3 * 16384 + 9000, 16384 + 16383};
  ASSERT_EQ(0, ZrDibFillRect(floats.header(), floats.bits(), &fractional, 0, color, ZRDIB_SUBPIXEL));
  EXPECT_EQ(0.25f, reinterpret_cast<float*>(floats.top(0))[4]);
  EXPECT_EQ(1.0f, reinterpret_cast<float*>(floats.top(0))[11]);
  EXPECT_EQ(0.0f, reinterpret_cast<float*>(floats.top(0))[12]);
  EXPECT_EQ(0, ZrDibSet(bytes.header(), bytes.bits(), nullptr, 0, 0, 0, 0, 0, 0));
  const RECT outside = {9, 9, 10, 10};
  EXPECT_EQ(0, ZrDibSet(bytes.header(), bytes.bits(), &outside, 0, 1, 1, 1, 1, 0));
  EXPECT_EQ(std::vector<uint8_t>(bytes.size(), 0), bytes.Copy());
  EXPECT_EQ(E_NOTIMPL, ZrDibFillRectChannel(bytes.header(), bytes.bits(), nullptr, 0, 0, 1, 0));
  EXPECT_EQ(E_POINTER, ZrDibFillRect(bytes.header(), bytes.bits(), nullptr, 0, nullptr, 0));
}

TEST(Fill, EveryTypeTakesRedInsideARectangleOnly) {
  RGBQUAD palette[256] = {};
  std::copy_n(kPalette, 4, palette);
  for (int32_t type = 16; type <= 32; ++type) {
    auto picture = Make(type, 11, 4);
    const RECT rect = {3, 1, 8, 3};
    ASSERT_EQ(0, ZrDibSet(picture->header(), picture->bits(), &rect, 0, 1.0f, 0.0f, 0.0f, 1.0f, 0)) << type;
    const bool gray = type <= 22;
    for (int32_t y = 0; y < 4; ++y) {
      for (int32_t x = 0; x < 11; ++x) {
        const bool inside = x >= 3 && x < 8 && y >= 1 && y < 3;
        const Words words = ReferenceRead(type, picture->top(y), x, false, palette);
        if (!inside) {
          ASSERT_EQ(0u, words.c[2]) << type << " " << x << "," << y;
        } else if (gray) {
          // A third of full, in as many bits as there are: none is left of one.
          ASSERT_NEAR(type <= 17 ? 0 : 21845, words.c[2], 0x1600) << type;
        } else {
          ASSERT_GE(words.c[2], 0xF800u) << type << " " << x << "," << y;
          ASSERT_EQ(0u, words.c[1]) << type;
        }
      }
    }
  }
}

TEST(Flip, MirrorsARectangleInEveryType) {
  Random random(6806);
  SCOPED_TRACE(random.Label());
  RGBQUAD palette[256] = {};
  for (int index = 0; index < 256; ++index) palette[index].rgbBlue = static_cast<uint8_t>(index);
  for (int32_t type = 16; type <= 32; ++type) {
    for (int mode = 0; mode < 4; ++mode) {
      auto picture = Make(type, 12, 7);
      // Any bits are good for a mirror, but floats must compare.
      if (type == 32) {
        picture->RandomizeFloats(random, 0, 1);
      } else {
        picture->Randomize(random);
      }
      const std::vector<uint8_t> before = picture->Copy();
      const RECT rect = {3, 1, 10, 6};
      const HRESULT result = ZrDibFlip(picture->header(), picture->bits(), &rect, 0, mode & 1, mode & 2);
      if (type < 23) {
        ASSERT_EQ(E_NOTIMPL, result);
        continue;
      }
      ASSERT_EQ(0, result);
      const auto rowBefore = [&](int32_t y) { return before.data() + (picture->top(y) - picture->bits()); };
      for (int32_t y = 0; y < 7; ++y) {
        for (int32_t x = 0; x < 12; ++x) {
          const bool inside = x >= 3 && x < 10 && y >= 1 && y < 6;
          const int32_t fromX = inside && (mode & 1) ? 12 - x : x;
          const int32_t fromY = inside && (mode & 2) ? 6 - y : y;
          const Words want = ReferenceRead(type, rowBefore(fromY), fromX, false, palette);
          const Words got = ReferenceRead(type, picture->top(y), x, false, palette);
          ASSERT_TRUE(std::equal(want.c, want.c + 4, got.c)) << type << " mode " << mode << " " << x << "," << y;
        }
      }
    }
  }
}

TEST(SwapRedBlue, TwiceIsNothingAndOnceIsASwap) {
  Random random(6807);
  SCOPED_TRACE(random.Label());
  for (int32_t type = 23; type <= 32; ++type) {
    auto picture = Make(type, 10, 3);
    if (type == 32) {
      picture->RandomizeFloats(random, 0, 1);
    } else {
      picture->Randomize(random);
    }
    const std::vector<uint8_t> before = picture->Copy();
    const RECT rect = {2, 0, 7, 2};
    const HRESULT result = ZrDibSwapRB(picture->header(), picture->bits(), &rect, 0);
    if (type <= 24) {
      EXPECT_EQ(E_NOTIMPL, result);
      continue;
    }
    ASSERT_EQ(0, result);
    for (int32_t x = 0; x < 10; ++x) {
      const Words was = ReferenceRead(type, before.data() + (picture->top(1) - picture->bits()), x, false, nullptr);
      const Words is = ReferenceRead(type, picture->top(1), x, false, nullptr);
      const bool inside = x >= 2 && x < 7;
      EXPECT_EQ(was.c[inside ? 2 : 0], is.c[0]) << type;
      EXPECT_EQ(was.c[inside ? 0 : 2], is.c[2]) << type;
      EXPECT_EQ(was.c[1], is.c[1]) << type;
      EXPECT_EQ(was.c[3], is.c[3]) << type;
    }
    ASSERT_EQ(0, ZrDibSwapRB(picture->header(), picture->bits(), &rect, 0));
    EXPECT_EQ(before, picture->Copy()) << type;
  }
}

TEST(Channels, SetCopyAndDesaturate) {
  Picture a(ZRPIXEL_RGBA32, 4, 2), b(ZRPIXEL_RGBA32, 4, 2), f(ZRPIXEL_RGBA128F, 4, 2);
  const RECT bounds = {0, 0, 4, 2}, left = {0, 0, 2, 2}, right = {2, 0, 4, 2};
  ASSERT_EQ(0, ZrDibChannelSet(a.bits(), &bounds, a.stride(), &left, 4, 3, 0.5));
  EXPECT_EQ(127, a.bits()[3]);
  EXPECT_EQ(0, a.bits()[2]);
  EXPECT_EQ(0, a.bits()[11]);
  ASSERT_EQ(0, ZrDibChannelSet(f.bits(), &bounds, f.stride(), &left, 16, 1, 7.0));
  EXPECT_EQ(1.0f, reinterpret_cast<float*>(f.bits())[1]);
  ASSERT_EQ(0, ZrDibChannelCopyUnscaled(b.bits(), &bounds, b.stride(), &right, 0, a.bits(), &bounds, a.stride(), &left,
                                        3, 4));
  EXPECT_EQ(127, b.bits()[8]);
  EXPECT_EQ(0, b.bits()[9]);
  EXPECT_EQ(0, b.bits()[0]);
  EXPECT_EQ(E_INVALIDARG, ZrDibChannelSet(a.bits(), &bounds, a.stride(), &left, 4, 4, 0.5));
  EXPECT_EQ(E_NOTIMPL, ZrDibChannelSet(a.bits(), &bounds, a.stride(), &left, 8, 0, 0.5));
  EXPECT_EQ(E_INVALIDARG,
            ZrDibChannelCopyUnscaled(b.bits(), &bounds, 16, &right, -1, a.bits(), &bounds, 16, &left, 3, 4));

  const uint8_t pixel[4] = {255, 255, 253, 9};
  std::copy_n(pixel, 4, a.bits());
  ASSERT_EQ(0, ZrDibDesaturate(a.bits(), &bounds, a.stride(), &left, 4, 0));
  EXPECT_THAT(std::vector<uint8_t>(a.bits(), a.bits() + 4), ElementsAre(254, 254, 254, 9));
  const float colors[4] = {0.3f, 0.6f, 0.9f, 0.1f};
  std::memcpy(f.bits(), colors, 16);
  ASSERT_EQ(0, ZrDibDesaturate(f.bits(), &bounds, f.stride(), nullptr, 16, 0));
  EXPECT_NEAR(0.6f, reinterpret_cast<float*>(f.bits())[2], 1e-6);
  EXPECT_EQ(0.1f, reinterpret_cast<float*>(f.bits())[3]);
}

TEST(Transfer, AllSixInBothDirections) {
  const auto bt709 = [](double x) { return x <= .081 ? x / 4.5 : std::pow((x + .099) / 1.099, 1 / .45); };
  const auto smpte = [](double x) { return x <= .0912 ? x / 4 : std::pow((x + .1115) / 1.1115, 1 / .45); };
  Picture bytes(ZRPIXEL_RGBA32, 256, 1), linear(ZRPIXEL_RGBA128F, 256, 1);
  for (int index = 0; index < 1024; ++index) bytes.bits()[index] = static_cast<uint8_t>(index / 4);
  for (int32_t transfer = 0; transfer <= 5; ++transfer) {
    ASSERT_EQ(0, ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(linear.header(), linear.bits(), nullptr, 0, bytes.header(),
                                                      bytes.bits(), nullptr, 0, transfer, 2.0));
    const float* values = reinterpret_cast<float*>(linear.bits());
    for (int index = 0; index < 256; ++index) {
      const double x = index / 255.0;
      const double decoded[] = {std::pow(x, 1 / .45), std::pow(x, 2.8), bt709(x), smpte(x), x, std::sqrt(x)};
      ASSERT_NEAR(decoded[transfer], values[index * 4 + 3], 2e-6) << transfer << " " << index;
    }
    if (transfer == 5) continue;  // The same exponent in both directions: not inverse.
    Picture quantized(ZRPIXEL_RGBA128F, 256, 1);
    std::copy_n(linear.bits(), linear.size(), quantized.bits());
    ASSERT_EQ(0, ZrDibApplyTransferFunc_ZRRGBAFLOAT(linear.header(), linear.bits(), nullptr, 0, transfer, 2.0, 0));
    ASSERT_EQ(0,
              ZrDibApplyTransferFunc_ZRRGBAFLOAT(quantized.header(), quantized.bits(), nullptr, 0, transfer, 2.0, 1));
    for (int index = 0; index < 256; ++index) ASSERT_NEAR(index / 255.0, values[index * 4], 2e-3) << transfer;
    EXPECT_EQ(1.0f, reinterpret_cast<float*>(quantized.bits())[1023]);
    if (transfer != ZRTRANSFER_LINEAR) {
      EXPECT_EQ(0.0f, reinterpret_cast<float*>(quantized.bits())[4]);  // Linear light below one step.
    }
  }
  float* value = reinterpret_cast<float*>(linear.bits());
  *value = 0.25f;
  ASSERT_EQ(0, ZrDibApplyTransferFunc_ZRRGBAFLOAT(linear.header(), linear.bits(), nullptr, 0, ZRTRANSFER_POWER, 0, 0));
  EXPECT_EQ(0.25f, *value);  // Gamma 0 is exponent 1.
  Picture other(ZRPIXEL_RGBA128F, 255, 1);
  EXPECT_EQ(E_INVALIDARG, ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(other.header(), other.bits(), nullptr, 0, bytes.header(),
                                                               bytes.bits(), nullptr, 0, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(bytes.header(), bytes.bits(), nullptr, 0, bytes.header(),
                                                               bytes.bits(), nullptr, 0, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrDibApplyTransferFunc_ZRRGBAFLOAT(other.header(), other.bits(), nullptr, 0, 6, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrDibApplyTransferFunc_ZRRGBAFLOAT(bytes.header(), bytes.bits(), nullptr, 0, 0, 0, 0));
}

}  // namespace
