// SPDX-License-Identifier: Apache-2.0
// Blends of two pictures, of a picture and a colour, and work on single channels.

#include <algorithm>
#include <cmath>

#include "marlo110k/dib_blend.h"
#include "pixel/areas.h"
#include "pixel/blend_rows.h"
#include "pixel/blendops.h"
#include "pixel/byte_rounding.h"
#include "pixel/geometry.h"
#include "pixel/unit.h"

using namespace marlo::pixel;

namespace {

/// The channels of a pixel as an array.
uint8_t* ChannelsOf(tZRPIXEL32* pixel) noexcept { return &pixel->b; }
const uint8_t* ChannelsOf(const tZRPIXEL32* pixel) noexcept { return &pixel->b; }
float* ChannelsOf(tZRPIXEL128* pixel) noexcept { return &pixel->b; }
const float* ChannelsOf(const tZRPIXEL128* pixel) noexcept { return &pixel->b; }

/// Runs blend(destination pixel, source pixel) over the visible areas of either width.
template <typename Blend>
HRESULT ForPixels(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect, const void* srcBits,
                  const RECT* srcBounds, int32_t srcStride, const RECT* srcRect, int32_t bytesPerPixel,
                  const Blend& blend) {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Areas areas;
  const HRESULT result =
      areas.Prepare(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || areas.IsEmpty()) return result;
  const auto row = [&](auto* destination, const auto* source) {
    for (int32_t column = 0; column < areas.width; ++column) blend(destination + column, source + column);
  };
  if (bytesPerPixel == 4) {
    areas.ForRowsHere<tZRPIXEL32>(row);
  } else {
    areas.ForRowsHere<tZRPIXEL128>(row);
  }
  return S_OK;
}

struct Over {
  void operator()(tZRPIXEL32* d, const tZRPIXEL32* s) const noexcept { *d = Moved(*d, *s, s->a); }
  void operator()(tZRPIXEL128* d, const tZRPIXEL128* s) const noexcept { *d = Moved(*d, *s, s->a); }
};

/// Takes the matte out of the source while laying it over.
struct OverMatte : UnitColor {
  using UnitColor::UnitColor;

  void operator()(tZRPIXEL32* d, const tZRPIXEL32* s) const noexcept {
    uint8_t* const to = ChannelsOf(d);
    const uint8_t* const from = ChannelsOf(s);
    for (int channel = 0; channel < 3; ++channel) {
      const int32_t matte = bytes[channel];
      const int32_t below = to[channel];
      to[channel] = ClampedByte((matte - below) * s->a / 256 + from[channel] - matte + below);
    }
  }
  void operator()(tZRPIXEL128* d, const tZRPIXEL128* s) const noexcept {
    float* const to = ChannelsOf(d);
    const float* const from = ChannelsOf(s);
    for (int channel = 0; channel < 3; ++channel) {
      const float matte = floats[channel];
      const float below = to[channel];
      to[channel] = std::clamp((matte - below) * s->a + from[channel] - matte + below, 0.0f, 1.0f);
    }
  }
};

struct Under {
  template <typename Pixel>
  void operator()(Pixel* d, const Pixel* s) const noexcept {
    *d = Moved(*s, *d, d->a);
  }
};

struct MoveBy {
  int32_t weight255;
  float weight;
  void operator()(tZRPIXEL32* d, const tZRPIXEL32* s) const noexcept { *d = Moved(*d, *s, weight255); }
  void operator()(tZRPIXEL128* d, const tZRPIXEL128* s) const noexcept { *d = Moved(*d, *s, weight); }
};

struct MoveBySourceAlpha {
  int32_t weight255;
  float weight;
  void operator()(tZRPIXEL32* d, const tZRPIXEL32* s) const noexcept { *d = Moved(*d, *s, (s->a * weight255) >> 8); }
  void operator()(tZRPIXEL128* d, const tZRPIXEL128* s) const noexcept { *d = Moved(*d, *s, weight * s->a); }
};

struct BlendToward : UnitColor {
  int32_t alphaByte;
  float alpha;

  explicit BlendToward(const double color[4]) noexcept
      : UnitColor(color), alphaByte(UnitByte(color[3])), alpha(static_cast<float>(Unit(color[3]))) {}
  void operator()(tZRPIXEL32* d) const noexcept {
    uint8_t* const to = ChannelsOf(d);
    for (int channel = 0; channel < 3; ++channel) {
      to[channel] = static_cast<uint8_t>(MovedByte(to[channel], bytes[channel], alphaByte));
    }
  }
  void operator()(tZRPIXEL128* d) const noexcept {
    float* const to = ChannelsOf(d);
    for (int channel = 0; channel < 3; ++channel) to[channel] += (floats[channel] - to[channel]) * alpha;
  }
};

/// A weight of a cross-fade, bounded so that no sum passes 32 bits.
double FadeWeight(double weight) noexcept { return weight == weight ? std::clamp(weight, -100.0, 100.0) : 0.0; }

void CrossFade(const Areas& areas, int32_t bytesPerPixel, double dstWeight, double srcWeight) noexcept {
  if (bytesPerPixel == 4) {
    const int32_t dst14 = Truncate(dstWeight * kOne);
    const int32_t src14 = Truncate(srcWeight * kOne);
    const auto fits = [](int32_t weight) { return weight >= 0 && weight <= 32767; };
    const CrossFadeRow row = UseAvx2() && fits(dst14) && fits(src14) ? CrossFadeRowAvx2 : CrossFadeRowPlain;
    areas.ForRowsHere<uint8_t>(
        [&](uint8_t* destination, const uint8_t* source) { row(destination, source, areas.width * 4, dst14, src14); });
    return;
  }
  const auto dst = static_cast<float>(dstWeight);
  const auto src = static_cast<float>(srcWeight);
  areas.ForRowsHere<float>([&](float* destination, const float* source) {
    for (int32_t index = 0; index < areas.width * 4; ++index) {
      const float sum = src * source[index] + dst * destination[index];
      destination[index] = sum < 1.0f ? sum : 1.0f;
    }
  });
}

bool IsChannel(int32_t channel) noexcept { return channel >= 0 && channel < 4; }

}  // namespace

HRESULT ZrDibOver(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect, const void* srcBits,
                  const RECT* srcBounds, int32_t srcStride, const RECT* srcRect, int32_t bytesPerPixel,
                  const double matte[3]) noexcept {
  if (matte) {
    return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel,
                     OverMatte(matte));
  }
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel,
                   Over{});
}

HRESULT ZrDibUnder(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect, const void* srcBits,
                   const RECT* srcBounds, int32_t srcStride, const RECT* srcRect, int32_t bytesPerPixel) noexcept {
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel,
                   Under{});
}

HRESULT ZrDibAbsoluteAlphaValueBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                     const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                     int32_t bytesPerPixel, double alpha) noexcept {
  constexpr double kHalfUp = 0.5 + 1.5e-8;  // To nearest, with halves and what is a hair below them going up.
  const MoveBy move{Truncate(Unit(alpha) * 255.0 + kHalfUp), static_cast<float>(Unit(alpha))};
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel, move);
}

HRESULT ZrDibRelativeAlphaValueBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                     const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                     int32_t bytesPerPixel, double alpha) noexcept {
  const MoveBySourceAlpha move{UnitByte(alpha), static_cast<float>(Unit(alpha))};
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel, move);
}

HRESULT ZrDibWeightedCrossFade(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                               double dstWeight, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                               const RECT* srcRect, double srcWeight, int32_t bytesPerPixel) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Areas areas;
  const HRESULT result =
      areas.Prepare(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel);
  if (FAILED(result) || areas.IsEmpty()) return result;
  CrossFade(areas, bytesPerPixel, FadeWeight(dstWeight), FadeWeight(srcWeight));
  return S_OK;
}

HRESULT ZrDibCustomBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                         const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                         int32_t bytesPerPixel, ZRDIBPIXELFN function, void* context) noexcept {
  if (!function) return E_POINTER;
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel,
                   [&](auto* destination, const auto* source) { function(destination, source, context); });
}

HRESULT ZrDibChannelOp(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect, int32_t dstChannel,
                       const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                       int32_t srcChannel, int32_t bytesPerPixel, ZRDIBCHANNELFN function, void* context) noexcept {
  if (!function) return E_POINTER;
  if (!IsChannel(dstChannel) || !IsChannel(srcChannel)) return E_INVALIDARG;
  return ForPixels(dstBits, dstBounds, dstStride, dstRect, srcBits, srcBounds, srcStride, srcRect, bytesPerPixel,
                   [&](auto* destination, const auto* source) {
                     function(ChannelsOf(destination) + dstChannel, ChannelsOf(source) + srcChannel, context);
                   });
}

HRESULT ZrDibChannelInPlaceOp(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                              int32_t channel, ZRDIBINPLACEFN function, void* context) noexcept {
  if (!function) return E_POINTER;
  if (!IsChannel(channel)) return E_INVALIDARG;
  return ForPixelsInPlace(bits, bounds, stride, rect, bytesPerPixel,
                          [&](auto* pixel) { function(ChannelsOf(pixel) + channel, context); });
}

HRESULT ZrDibBlendWithColor(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                            const double color[4]) noexcept {
  if (!color) return E_POINTER;
  return ForPixelsInPlace(bits, bounds, stride, rect, bytesPerPixel, BlendToward(color));
}
