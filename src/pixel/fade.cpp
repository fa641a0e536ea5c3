// SPDX-License-Identifier: Apache-2.0
// Moving a picture toward a colour.

#include <algorithm>
#include <array>

#include "marlo110k/dib_blend.h"
#include "pixel/byte_rounding.h"
#include "pixel/coverage.h"
#include "pixel/descriptor.h"
#include "pixel/unit.h"

using namespace marlo::pixel;

namespace {

/// A colour far outside its range gives the same result as one a little outside.
constexpr double kFarColor = 1e4;

uint8_t Faded(int32_t value, int32_t color, int32_t weight255) noexcept {
  return ClampedByte(value + Div255((color - value) * weight255));
}

/// The rectangle's pixels on both axes with the coverage of those at the border.
struct Covered {
  CoverageAxis x;
  CoverageAxis y;
};

/// One fade of either pixel kind; rows count from the top.
class Fade {
 public:
  Fade(const BITMAPINFOHEADER& header, void* bits, int32_t stride, const Covered& covered, bool colorOnly) noexcept
      : covered_(covered), channels_(colorOnly ? 3 : 4) {
    const int32_t rowBytes = StrideOf(header, stride);
    top_ = PixelsOf(header, bits) + (int64_t{header.biHeight} - 1) * rowBytes;
    toNextRow_ = -rowBytes;
  }

  void RunBytes(const double color[4], double weight) const noexcept {
    int32_t colors[4];
    const int32_t weight255 = static_cast<int32_t>(weight * 255.0);
    const int32_t weight14 = static_cast<int32_t>(weight * kOne);
    std::array<std::array<uint8_t, 256>, 4> tables;
    for (int channel = 0; channel < 4; ++channel) {
      colors[channel] = Truncate(std::clamp(color[channel], -kFarColor, kFarColor) * 255.0);
      for (int32_t value = 0; value < 256; ++value) {
        tables[channel][value] = Faded(value, colors[channel], weight255);
      }
    }
    ForPixels<uint8_t>([&](uint8_t* pixel, int32_t coverX, int32_t coverY) {
      if (coverX == kOne && coverY == kOne) {
        for (int channel = 0; channel < channels_; ++channel) pixel[channel] = tables[channel][pixel[channel]];
        return;
      }
      const int32_t part = ScaledBy(ScaledBy(weight14, coverX), coverY) * 255 / kOne;
      for (int channel = 0; channel < channels_; ++channel) {
        pixel[channel] = Faded(pixel[channel], colors[channel], part);
      }
    });
  }

  void RunFloats(const double color[4], double weight) const noexcept {
    constexpr float kPerOne = 6.1035156e-5f;
    ForPixels<float>([&](float* pixel, int32_t coverX, int32_t coverY) {
      auto part = static_cast<float>(weight);
      if (coverX != kOne) part *= static_cast<float>(coverX) * kPerOne;
      if (coverY != kOne) part *= static_cast<float>(coverY) * kPerOne;
      for (int channel = 0; channel < channels_; ++channel) {
        pixel[channel] += (static_cast<float>(color[channel]) - pixel[channel]) * part;
      }
    });
  }

 private:
  template <typename Channel, typename Work>
  void ForPixels(const Work& work) const noexcept {
    for (int32_t row = 0; row < covered_.y.Count(); ++row) {
      const int32_t coverY = covered_.y.At(row);
      uint8_t* const line = top_ + int64_t{covered_.y.first + row} * toNextRow_;
      auto* pixel = reinterpret_cast<Channel*>(line) + int64_t{covered_.x.first} * 4;
      for (int32_t column = 0; column < covered_.x.Count(); ++column, pixel += 4) {
        work(pixel, covered_.x.At(column), coverY);
      }
    }
  }

  const Covered& covered_;
  const int channels_;
  uint8_t* top_;
  int64_t toNextRow_;
};

/// Cuts the rectangle to the picture. @return false when nothing of it is visible.
bool Cover(const BITMAPINFOHEADER& header, const RECT* rect, bool subpixel, Covered* covered) noexcept {
  const RECT bounds = BoundsOf(header);
  if (!subpixel || !rect) {
    const RECT area = rect ? Intersection(*rect, bounds) : bounds;
    if (!HasArea(area)) return false;
    *covered = {{area.left, area.right, kOne, kOne}, {area.top, area.bottom, kOne, kOne}};
    return true;
  }
  const RECT area = Intersection(*rect, ToSubpixels(bounds));
  if (!HasArea(area)) return false;
  *covered = {CoverAxis(area.left, area.right), CoverAxis(area.top, area.bottom)};
  return true;
}

}  // namespace

HRESULT ZrDibFadeToColor(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                         const double color[4], double weight, int32_t colorOnly, uint32_t flags) noexcept {
  if (!header || !color) return E_POINTER;
  const int32_t type = ZrGetPixelType(header);
  if (!IsByteKernelType(type) && type != ZRPIXEL_RGBA128F) return E_NOTIMPL;
  if (!RowsFit(*header, stride)) return E_INVALIDARG;
  Covered covered;
  if (!Cover(*header, rect, (flags & ZRDIB_SUBPIXEL) != 0, &covered)) return S_OK;
  const Fade fade(*header, bits, stride, covered, colorOnly != 0);
  if (type == ZRPIXEL_RGBA128F) {
    fade.RunFloats(color, Unit(weight));
  } else {
    fade.RunBytes(color, Unit(weight));
  }
  return S_OK;
}
