// SPDX-License-Identifier: Apache-2.0
// Hue, saturation and lightness against the geometric definition, at the edges of the circle and outside 0 to 1.

#include "marlo110k/hsl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "testing/random.h"

namespace {

tZRHSL FromFloats(float r, float g, float b, bool wide = false) {
  const tZRPIXEL128 pixel = {b, g, r, 0.25f};
  tZRHSL hsl;
  (wide ? ZRDIBPIXEL_To_ZRHSL_Float : ZRRGBAFLOAT_To_ZRHSL)(&hsl, &pixel);
  return hsl;
}

TEST(Hsl, PrimariesAndGrays) {
  struct {
    float r, g, b;
    double hue, saturation, lightness;
  } const cases[] = {{1, 0, 0, 1.0, 1, 0.5},        {0, 1, 0, 1 / 3., 1, 0.5}, {0, 0, 1, 2 / 3., 1, 0.5},
                     {1, 1, 0, 1 / 6., 1, 0.5},     {0, 1, 1, 0.5, 1, 0.5},    {1, 0, 1, 5 / 6., 1, 0.5},
                     {0.5f, 0.5f, 0.5f, 0, 0, 0.5}, {0, 0, 0, 0, 0, 0},        {1, 1, 1, 0, 0, 1}};
  for (const auto& c : cases) {
    for (bool wide : {false, true}) {
      const tZRHSL hsl = FromFloats(c.r, c.g, c.b, wide);
      EXPECT_NEAR(c.hue, hsl.hue, 1e-12) << c.r << c.g << c.b;
      EXPECT_NEAR(c.saturation, hsl.saturation, 1e-12);
      EXPECT_NEAR(c.lightness, hsl.lightness, 1e-12);
      EXPECT_EQ(0.25, hsl.alpha);
    }
  }
}

TEST(Hsl, HueIsTheAngleAroundGray) {
  testing_support::Random random(21);
  SCOPED_TRACE(random.Label());
  for (int trial = 0; trial < 2000; ++trial) {
    const bool wide = trial % 2 == 1;
    float c[3];
    for (float& value : c) value = static_cast<float>(wide ? random.Real(-2, 3) : random.Real(0, 1));
    const auto [low, high] = std::minmax({c[0], c[1], c[2]});
    const double sum = double(high) + low, delta = double(high) - low;
    if (delta < 1e-3 || std::fabs(sum) < 1e-3 || std::fabs(sum - 2) < 1e-3) continue;
    // The hexagon unrolled: the middle channel's part of the way between two corners.
    const int top = int(std::max_element(c, c + 3) - c);
    const double sixths = 2 * top + (double(c[(top + 1) % 3]) - c[(top + 2) % 3]) / delta;
    const tZRHSL hsl = FromFloats(c[0], c[1], c[2], wide);
    EXPECT_NEAR(std::fmod(sixths + 6, 6) / 6, std::fmod(hsl.hue, 1.0), 1e-9);
    EXPECT_NEAR(delta / (1 - std::fabs(sum - 1)) * (sum < 0 || sum > 2 ? -1 : 1), hsl.saturation, 1e-9);
    tZRPIXEL128 back = {9, 9, 9, 9};
    (wide ? ZRHSL_To_ZRDIBPIXEL_Float : ZRHSL_To_ZRRGBAFLOAT)(&back, &hsl);
    EXPECT_NEAR(c[0], back.r, 1e-5);
    EXPECT_NEAR(c[1], back.g, 1e-5);
    EXPECT_NEAR(c[2], back.b, 1e-5);
    EXPECT_EQ(0.25f, back.a);
  }
}

TEST(Hsl, NearlyNoSum) {
  // The sum of opposite channels is moved off 0, that of channels around 1 off 2.
  const tZRHSL dark = FromFloats(0.5f, 0, -0.5f, true);
  EXPECT_NEAR(1e6, dark.saturation, 1);
  EXPECT_NEAR(5e-7, dark.lightness, 1e-15);
  const tZRHSL light = FromFloats(1.5f, 1, 0.5f, true);
  EXPECT_NEAR(1e6, light.saturation, 1);
  EXPECT_NEAR(1 - 5e-7, light.lightness, 1e-15);
  EXPECT_EQ(0.0, FromFloats(0.5f, 0.5f, 0.5f + 5.9604645e-8f, true).hue);
}

TEST(Hsl, BytesAreCut) {
  const tZRPIXEL32 pixel = {50, 100, 200, 7};
  tZRHSL hsl;
  ZRRGBA_To_ZRHSL(&hsl, &pixel);
  tZRPIXEL32 back = {};
  ZRHSL_To_ZRRGBA(&back, &hsl);
  EXPECT_EQ(200, back.r);
  EXPECT_EQ(100, back.g);
  EXPECT_EQ(49, back.b);
  EXPECT_EQ(7, back.a);

  struct {
    tZRHSL hsl;
    bool written;
    int r, g, b, a;
  } const cases[] = {{{1.0, 1, 0.5, 2}, true, 255, 0, 0, 255}, {{7 / 6. + 1e-9, 1, 0.5, 1}, false, 0, 0, 0, 0},
                     {{-0.17, 1, 0.5, 1}, false, 0, 0, 0, 0},  {{NAN, 1, 0.5, 1}, false, 0, 0, 0, 0},
                     {{99, 1, 0, -1}, true, 0, 0, 0, 0},       {{0.5, 1, 0.25, 0.5}, true, 0, 127, 127, 127}};
  for (const auto& c : cases) {
    tZRPIXEL32 out = {1, 2, 3, 4};
    ZRHSL_To_ZRDIBPIXEL(&out, &c.hsl);
    EXPECT_EQ(c.written ? c.r : 3, out.r) << c.hsl.hue;
    EXPECT_EQ(c.written ? c.g : 2, out.g) << c.hsl.hue;
    EXPECT_EQ(c.written ? c.b : 1, out.b) << c.hsl.hue;
    EXPECT_EQ(c.written ? c.a : 4, out.a) << c.hsl.hue;
  }
}

}  // namespace
