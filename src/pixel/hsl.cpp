// SPDX-License-Identifier: Apache-2.0
// Colours as hue, saturation and lightness.

#include "marlo110k/hsl.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kFullByte = 255.0;
/// What float pixels count as no difference, and how far sums are moved from where a division fails.
constexpr double kMillionth = 1e-6;
constexpr int32_t kSectors = 6;

struct Channels {
  double red, green, blue;
  double Largest() const noexcept { return std::max({red, green, blue}); }
  double Smallest() const noexcept { return std::min({red, green, blue}); }
};

/// Pure red lies at the end of the circle, 1, rather than at 0.
double Hue(const Channels& color, double largest, double smallest) noexcept {
  const double delta = largest - smallest;
  const double redGap = (largest - color.red) / delta;
  const double greenGap = (largest - color.green) / delta;
  const double blueGap = (largest - color.blue) / delta;
  double sixths;
  if (color.red == largest) {
    sixths = color.green == smallest ? 5.0 + blueGap : 1.0 - greenGap;
  } else if (color.green == largest) {
    sixths = color.blue == smallest ? 1.0 + redGap : 3.0 - blueGap;
  } else {
    sixths = color.red == smallest ? 3.0 + greenGap : 5.0 - redGap;
  }
  return sixths / kSectors;
}

double Saturation(double sum, double delta) noexcept { return delta / (sum / 2.0 <= 0.5 ? sum : 2.0 - sum); }

tZRHSL FromUnit(const Channels& color, double alpha) noexcept {
  const double largest = color.Largest();
  const double smallest = color.Smallest();
  const double delta = largest - smallest;
  tZRHSL hsl = {0.0, 0.0, (largest + smallest) / 2.0, alpha};
  if (!(hsl.lightness > 0.0) || !(delta > 0.0)) return hsl;
  hsl.saturation = Saturation(largest + smallest, delta);
  hsl.hue = Hue(color, largest, smallest);
  return hsl;
}

tZRHSL FromAny(const Channels& color, double alpha) noexcept {
  const double largest = color.Largest();
  const double smallest = color.Smallest();
  const double delta = largest - smallest;
  double sum = largest + smallest;
  if (delta != 0.0) {
    if (std::fabs(sum - 2.0) < kMillionth) {
      sum -= kMillionth;
    } else if (std::fabs(sum) < kMillionth) {
      sum += kMillionth;
    }
  }
  tZRHSL hsl = {0.0, 0.0, sum / 2.0, alpha};
  if (!(delta > 0.0)) return hsl;
  hsl.saturation = Saturation(sum, delta);
  if (hsl.lightness < 0.0 || hsl.lightness > 1.0) hsl.saturation = -hsl.saturation;
  if (delta > kMillionth) hsl.hue = Hue(color, largest, smallest);
  return hsl;
}

double Peak(double saturation, double lightness) noexcept {
  return lightness <= 0.5 ? (1.0 + saturation) * lightness : lightness + saturation - lightness * saturation;
}

/// False, with `color` as it was, where the hue lies in none of the sectors 0 to 6. The cut toward zero counts a
/// sixth below 0 to the first sector.
bool FromSector(Channels* color, double hue, double lightness, double peak) noexcept {
  const double sixths = hue * kSectors;
  if (!(sixths > -1.0 && sixths < kSectors + 1)) return false;
  const int32_t sector = static_cast<int32_t>(sixths);
  const double floor = 2.0 * lightness - peak;
  const double fraction = sixths - sector;
  const double rising = fraction * (peak - floor) + floor;
  const double falling = peak - fraction * (peak - floor);
  const Channels sectors[kSectors] = {{peak, rising, floor},  {falling, peak, floor}, {floor, peak, rising},
                                      {floor, falling, peak}, {rising, floor, peak},  {peak, floor, falling}};
  *color = sectors[sector % kSectors];
  return true;
}

/// Colour of a bounded form; false leaves the pixel's channels alone.
bool ToUnit(Channels* color, const tZRHSL& hsl) noexcept {
  const double peak = Peak(hsl.saturation, hsl.lightness);
  if (peak > 0.0) return FromSector(color, hsl.hue, hsl.lightness, peak);
  *color = {};
  return true;
}

uint8_t CutByte(double value) noexcept {
  return value > 0.0 ? static_cast<uint8_t>(std::min(value * kFullByte, kFullByte)) : uint8_t{0};
}

void Store(tZRPIXEL128* pixel, const Channels& color, double alpha) noexcept {
  *pixel = {static_cast<float>(color.blue), static_cast<float>(color.green), static_cast<float>(color.red),
            static_cast<float>(alpha)};
}

Channels ChannelsOf(const tZRPIXEL128& pixel) noexcept { return {pixel.r, pixel.g, pixel.b}; }

}  // namespace

void ZRRGBA_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL32* pixel) noexcept {
  if (!hsl || !pixel) return;
  *hsl = FromUnit({pixel->r / kFullByte, pixel->g / kFullByte, pixel->b / kFullByte}, pixel->a / kFullByte);
}

void ZRRGBAFLOAT_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL128* pixel) noexcept {
  if (hsl && pixel) *hsl = FromUnit(ChannelsOf(*pixel), pixel->a);
}

void ZRDIBPIXEL_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL32* pixel) noexcept { ZRRGBA_To_ZRHSL(hsl, pixel); }

void ZRDIBPIXEL_To_ZRHSL_Float(tZRHSL* hsl, const tZRPIXEL128* pixel) noexcept {
  if (hsl && pixel) *hsl = FromAny(ChannelsOf(*pixel), pixel->a);
}

void ZRHSL_To_ZRRGBA(tZRPIXEL32* pixel, const tZRHSL* hsl) noexcept {
  Channels color;
  if (!pixel || !hsl || !ToUnit(&color, *hsl)) return;
  *pixel = {CutByte(color.blue), CutByte(color.green), CutByte(color.red), CutByte(hsl->alpha)};
}

void ZRHSL_To_ZRRGBAFLOAT(tZRPIXEL128* pixel, const tZRHSL* hsl) noexcept {
  Channels color;
  if (pixel && hsl && ToUnit(&color, *hsl)) Store(pixel, color, hsl->alpha);
}

void ZRHSL_To_ZRDIBPIXEL(tZRPIXEL32* pixel, const tZRHSL* hsl) noexcept { ZRHSL_To_ZRRGBA(pixel, hsl); }

void ZRHSL_To_ZRDIBPIXEL_Float(tZRPIXEL128* pixel, const tZRHSL* hsl) noexcept {
  if (!pixel || !hsl) return;
  const bool outside = hsl->lightness < 0.0 || hsl->lightness > 1.0;
  const double peak = Peak(outside ? -hsl->saturation : hsl->saturation, hsl->lightness);
  Channels color;
  if (FromSector(&color, hsl->hue, hsl->lightness, peak)) Store(pixel, color, hsl->alpha);
}
