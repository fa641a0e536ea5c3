// SPDX-License-Identifier: Apache-2.0
// One bilinear sample between pixels.

#include <cstring>

#include "marlo110k/dib_scale.h"
#include "pixel/geometry.h"

using marlo::pixel::kFraction;
using marlo::pixel::kFractionBits;
using marlo::pixel::kOne;

namespace {

template <typename Pixel>
Pixel Load(const uint8_t* pixel) noexcept {
  Pixel value;
  std::memcpy(&value, pixel, sizeof value);
  return value;
}

/// Four products of 14-bit fractions, cut to 24 bits; the sum needs all 32 bits, unsigned.
struct Weights32 {
  uint32_t topLeft, topRight, bottomLeft, bottomRight;
  Weights32(int32_t fractionX, int32_t fractionY) noexcept
      : topLeft(Product(kOne - fractionX, kOne - fractionY)),
        topRight(Product(fractionX, kOne - fractionY)),
        bottomLeft(Product(kOne - fractionX, fractionY)),
        bottomRight(Product(fractionX, fractionY)) {}
  static uint32_t Product(int32_t a, int32_t b) noexcept {
    return static_cast<uint32_t>(a) * static_cast<uint32_t>(b) >> 4;
  }
  uint8_t Blend(uint8_t a, uint8_t b, uint8_t c, uint8_t d) const noexcept {
    return static_cast<uint8_t>((a * topLeft + b * topRight + c * bottomLeft + d * bottomRight + 0x800000u) >> 24);
  }
};

tZRPIXEL32 Mix(const tZRPIXEL32& a, const tZRPIXEL32& b, int32_t fraction) noexcept {
  const auto mix = [fraction](int32_t from, int32_t to) {
    return static_cast<uint8_t>((from * (kOne - fraction) + to * fraction + 8192) >> kFractionBits);
  };
  return {mix(a.b, b.b), mix(a.g, b.g), mix(a.r, b.r), mix(a.a, b.a)};
}

tZRPIXEL128 Mix(const tZRPIXEL128& a, const tZRPIXEL128& b, int32_t fraction) noexcept {
  const float to = static_cast<float>(fraction) * (1.0f / 16384.0f);
  const float from = static_cast<float>(kOne - fraction) * (1.0f / 16384.0f);
  return {a.b * from + b.b * to, a.g * from + b.g * to, a.r * from + b.r * to, a.a * from + b.a * to};
}

void Fast(tZRPIXEL32* out, const uint8_t* pixels, int32_t stride, int32_t fractionX, int32_t fractionY) noexcept {
  const tZRPIXEL32 a = Load<tZRPIXEL32>(pixels);
  const tZRPIXEL32 b = Load<tZRPIXEL32>(pixels + 4);
  const tZRPIXEL32 c = Load<tZRPIXEL32>(pixels + stride);
  const tZRPIXEL32 d = Load<tZRPIXEL32>(pixels + stride + 4);
  const Weights32 weights(fractionX, fractionY);
  *out = {weights.Blend(a.b, b.b, c.b, d.b), weights.Blend(a.g, b.g, c.g, d.g), weights.Blend(a.r, b.r, c.r, d.r),
          weights.Blend(a.a, b.a, c.a, d.a)};
}

void Fast(tZRPIXEL128* out, const uint8_t* pixels, int32_t stride, int32_t fractionX, int32_t fractionY) noexcept {
  const tZRPIXEL128 top = Mix(Load<tZRPIXEL128>(pixels), Load<tZRPIXEL128>(pixels + 16), fractionX);
  const tZRPIXEL128 bottom =
      Mix(Load<tZRPIXEL128>(pixels + stride), Load<tZRPIXEL128>(pixels + stride + 16), fractionX);
  *out = Mix(top, bottom, fractionY);
}

template <typename Pixel>
int32_t Safe(Pixel* out, const void* pixels, int32_t width, int32_t height, int32_t stride, int32_t x,
             int32_t y) noexcept {
  if (!out) return 0;
  *out = {};
  const int32_t column = x >> kFractionBits;
  const int32_t row = y >> kFractionBits;
  if (!pixels || x < 0 || y < 0 || column >= width || row >= height) return 0;
  const uint8_t* at =
      static_cast<const uint8_t*>(pixels) + int64_t{row} * stride + int64_t{column} * int64_t{sizeof(Pixel)};
  const int32_t fractionX = x & kFraction;
  const int32_t fractionY = y & kFraction;
  const bool lastColumn = column == width - 1;
  const bool lastRow = row == height - 1;
  if (lastColumn && lastRow) {
    *out = Load<Pixel>(at);
  } else if (lastColumn) {
    *out = Mix(Load<Pixel>(at), Load<Pixel>(at + stride), fractionY);
  } else if (lastRow) {
    *out = Mix(Load<Pixel>(at), Load<Pixel>(at + sizeof(Pixel)), fractionX);
  } else {
    Fast(out, at, stride, fractionX, fractionY);
  }
  return 1;
}

}  // namespace

void ZrGetSubPixel32Fast(tZRPIXEL32* out, const void* pixels, int32_t stride, int32_t fractionX,
                         int32_t fractionY) noexcept {
  Fast(out, static_cast<const uint8_t*>(pixels), stride, fractionX, fractionY);
}

int32_t ZrGetSubPixel32Safe(tZRPIXEL32* out, const void* pixels, int32_t width, int32_t height, int32_t stride,
                            int32_t x, int32_t y) noexcept {
  return Safe(out, pixels, width, height, stride, x, y);
}

void ZrGetSubPixel128Fast(tZRPIXEL128* out, const void* pixels, int32_t stride, int32_t fractionX,
                          int32_t fractionY) noexcept {
  Fast(out, static_cast<const uint8_t*>(pixels), stride, fractionX, fractionY);
}

int32_t ZrGetSubPixel128Safe(tZRPIXEL128* out, const void* pixels, int32_t width, int32_t height, int32_t stride,
                             int32_t x, int32_t y) noexcept {
  return Safe(out, pixels, width, height, stride, x, y);
}
