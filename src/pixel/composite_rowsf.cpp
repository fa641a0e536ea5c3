// SPDX-License-Identifier: Apache-2.0
// The composite modes on float pixels: the rule of each mode. Colour is never clamped.

#include <algorithm>

#include "pixel/blendops.h"
#include "pixel/composite_rows.h"
#include "pixel/kernel_level.h"

namespace marlo::pixel {

namespace {

using Pixel = tZRPIXEL128;

/// NaN counts as 0.
float Unit(float value) noexcept { return value > 0.0f ? std::min(value, 1.0f) : 0.0f; }

struct Source {
  static Pixel Full(const Pixel&, const Pixel& s) noexcept { return s; }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept { return Moved(d, s, op); }
};
struct Add {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return Partial(d, s, 1.0f); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept {
    return {d.b + s.b * op, d.g + s.g * op, d.r + s.r * op, Unit(d.a + s.a * op)};
  }
};
struct Subtract {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return Partial(d, s, 1.0f); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept {
    return {d.b - s.b * op, d.g - s.g * op, d.r - s.r * op, d.a};
  }
};
struct Multiply {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return Partial(d, s, 1.0f); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept {
    return {d.b * (s.b * op), d.g * (s.g * op), d.r * (s.r * op), d.a * (s.a * op)};
  }
};

Pixel Sum(float keep, const Pixel& d, float op, const Pixel& s) noexcept {
  return {keep * d.b + op * s.b, keep * d.g + op * s.g, keep * d.r + op * s.r, keep * d.a + op * s.a};
}

struct OverPremultiplied {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return Partial(d, s, 1.0f); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept { return Sum(1.0f - op * s.a, d, op, s); }
};
struct OverPremultipliedFade {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return OverPremultiplied::Full(d, s); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept { return Sum(1.0f - op, d, op, s); }
};

/// A move toward the source divided by the weight: opacity fades the destination's part only.
template <typename WeightRule>
struct Weighted {
  static Pixel Full(const Pixel& d, const Pixel& s) noexcept { return Partial(d, s, 1.0f); }
  static Pixel Partial(const Pixel& d, const Pixel& s, float op) noexcept {
    const float k = WeightRule::Of(s.a, d.a) * op;
    const auto move = [k](float from, float to) { return k != 0.0f ? from + (to / k - from) * k : from; };
    return {move(d.b, s.b), move(d.g, s.g), move(d.r, s.r), Unit(d.a + k)};
  }
};
struct InverseSource {
  static float Of(float source, float) noexcept { return 1.0f - source; }
};
struct Destination {
  static float Of(float, float destination) noexcept { return destination; }
};
struct InverseDestination {
  static float Of(float, float destination) noexcept { return 1.0f - destination; }
};
struct Product {
  static float Of(float source, float destination) noexcept { return source * destination; }
};
struct InverseProduct {
  static float Of(float source, float destination) noexcept { return 1.0f - source * destination; }
};
struct Maximum {
  static float Of(float source, float destination) noexcept { return source > destination ? source : destination; }
};
struct Minimum {
  static float Of(float source, float destination) noexcept { return source < destination ? source : destination; }
};

template <typename Mode>
void Row(Pixel* destination, const Pixel* source, int32_t pixels, float opacity) {
  if (opacity == 1.0f) {
    for (int32_t pixel = 0; pixel < pixels; ++pixel) {
      destination[pixel] = Mode::Full(destination[pixel], source[pixel]);
    }
    return;
  }
  for (int32_t pixel = 0; pixel < pixels; ++pixel) {
    destination[pixel] = Mode::Partial(destination[pixel], source[pixel], opacity);
  }
}

}  // namespace

const FloatCompositeRow kFloatCompositePlain[kCompositeModes] = {
    Row<Source>,
    Row<Add>,
    Row<Subtract>,
    Row<Multiply>,
    Row<OverPremultiplied>,
    Row<OverPremultipliedFade>,
    Row<Weighted<InverseSource>>,
    Row<Weighted<Destination>>,
    Row<Weighted<InverseDestination>>,
    Row<Weighted<Product>>,
    Row<Weighted<InverseProduct>>,
    Row<Weighted<Maximum>>,
    Row<Weighted<Minimum>>,
};

FloatCompositeRow FindFloatCompositeRow(int32_t mode) noexcept {
  return UseAvx2() ? kFloatCompositeAvx2[mode] : kFloatCompositePlain[mode];
}

}  // namespace marlo::pixel
