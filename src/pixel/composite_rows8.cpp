// SPDX-License-Identifier: Apache-2.0
// The composite modes on 8-bit pixels: the rule of each mode, in plain integers.

#include <algorithm>
#include <cstring>

#include "pixel/blendops.h"
#include "pixel/byte_rounding.h"
#include "pixel/composite_rows.h"
#include "pixel/coverage.h"
#include "pixel/kernel_level.h"

namespace marlo::pixel {

namespace {

/// Channels as integers: 0 blue, 1 green, 2 red, 3 alpha.
struct Four {
  int32_t c[4];
  int32_t Alpha() const noexcept { return c[3]; }
};

Four Unpacked(const tZRPIXEL32& pixel) noexcept { return {{pixel.b, pixel.g, pixel.r, pixel.a}}; }
tZRPIXEL32 Packed(const Four& four) noexcept {
  return {static_cast<uint8_t>(four.c[0]), static_cast<uint8_t>(four.c[1]), static_cast<uint8_t>(four.c[2]),
          static_cast<uint8_t>(four.c[3])};
}

struct Source {
  static void Full(Four* d, const Four& s) noexcept { *d = s; }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    const int32_t k = CutPart(255, weight14);
    for (int channel = 0; channel < 4; ++channel) d->c[channel] = MovedByte(d->c[channel], s.c[channel], k);
  }
};

struct Add {
  static void Full(Four* d, const Four& s) noexcept {
    for (int channel = 0; channel < 4; ++channel) d->c[channel] = std::min(255, d->c[channel] + s.c[channel]);
  }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    for (int channel = 0; channel < 4; ++channel) {
      d->c[channel] = std::min(255, d->c[channel] + RoundedPart(s.c[channel], weight14));
    }
  }
};

/// Alpha stays as it is.
struct Subtract {
  static void Full(Four* d, const Four& s) noexcept {
    for (int channel = 0; channel < 3; ++channel) d->c[channel] = std::max(0, d->c[channel] - s.c[channel]);
  }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    for (int channel = 0; channel < 3; ++channel) {
      d->c[channel] = std::max(0, d->c[channel] - RoundedPart(s.c[channel], weight14));
    }
  }
};

/// A smaller opacity darkens: it scales the source, not the effect.
struct Multiply {
  static void Full(Four* d, const Four& s) noexcept {
    for (int channel = 0; channel < 4; ++channel) d->c[channel] = Div255(d->c[channel] * s.c[channel]);
  }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    for (int channel = 0; channel < 4; ++channel) {
      d->c[channel] = Div255(d->c[channel] * CutPart(s.c[channel], weight14));
    }
  }
};

/// Colour above its alpha is cut to it in the partial forms, but not in the full one.
void AddPremultiplied(Four* d, const Four& s, int32_t inverse, int32_t opacity255) noexcept {
  for (int channel = 0; channel < 4; ++channel) {
    d->c[channel] =
        Div255Quotient(d->c[channel] * inverse) + Div255Quotient(std::min(s.c[channel], s.Alpha()) * opacity255);
  }
}

struct OverPremultiplied {
  static void Full(Four* d, const Four& s) noexcept {
    const int32_t inverse = 255 - s.Alpha();
    for (int channel = 0; channel < 4; ++channel) {
      d->c[channel] = std::min(255, Div255(d->c[channel] * inverse) + s.c[channel]);
    }
  }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    const int32_t opacity255 = Weight8(weight14);
    AddPremultiplied(d, s, 255 - Div255Quotient(s.Alpha() * opacity255), opacity255);
  }
};

struct OverPremultipliedFade {
  static void Full(Four* d, const Four& s) noexcept { OverPremultiplied::Full(d, s); }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    const int32_t opacity255 = Weight8(weight14);
    AddPremultiplied(d, s, 255 - opacity255, opacity255);
  }
};

/// A move toward the source divided by the weight: opacity fades the destination's part only.
template <typename WeightRule>
struct Weighted {
  static void Move(Four* d, const Four& s, int32_t k) noexcept {
    if (k != 0) {
      for (int channel = 0; channel < 3; ++channel) {
        d->c[channel] = MovedByte(d->c[channel], std::min(255, s.c[channel] * 255 / k), k);
      }
    }
    d->c[3] = std::min(255, d->c[3] + k);
  }
  static void Full(Four* d, const Four& s) noexcept { Move(d, s, WeightRule::Of(s.Alpha(), d->Alpha())); }
  static void Partial(Four* d, const Four& s, int32_t weight14) noexcept {
    Move(d, s, CutPart(WeightRule::Of(s.Alpha(), d->Alpha()), weight14));
  }
};

struct InverseSource {
  static int32_t Of(int32_t source, int32_t) noexcept { return 255 - source; }
};
struct Destination {
  static int32_t Of(int32_t, int32_t destination) noexcept { return destination; }
};
struct InverseDestination {
  static int32_t Of(int32_t, int32_t destination) noexcept { return 255 - destination; }
};
struct Product {
  static int32_t Of(int32_t source, int32_t destination) noexcept { return Div255(source * destination); }
};
struct InverseProduct {
  static int32_t Of(int32_t source, int32_t destination) noexcept { return 255 - Div255(source * destination); }
};
struct Maximum {
  static int32_t Of(int32_t source, int32_t destination) noexcept { return std::max(source, destination); }
};
struct Minimum {
  static int32_t Of(int32_t source, int32_t destination) noexcept { return std::min(source, destination); }
};

template <typename Mode>
void Row(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t pixels, int32_t weight14) {
  if (weight14 == kOne) {
    for (int32_t pixel = 0; pixel < pixels; ++pixel) {
      Four value = Unpacked(destination[pixel]);
      Mode::Full(&value, Unpacked(source[pixel]));
      destination[pixel] = Packed(value);
    }
    return;
  }
  for (int32_t pixel = 0; pixel < pixels; ++pixel) {
    Four value = Unpacked(destination[pixel]);
    Mode::Partial(&value, Unpacked(source[pixel]), weight14);
    destination[pixel] = Packed(value);
  }
}

}  // namespace

const ByteCompositeRow kByteCompositePlain[kCompositeModes] = {
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

ByteCompositeRow FindByteCompositeRow(int32_t mode) noexcept {
  return UseAvx2() ? kByteCompositeAvx2[mode] : kByteCompositePlain[mode];
}

}  // namespace marlo::pixel
