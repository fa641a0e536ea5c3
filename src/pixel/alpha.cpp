// SPDX-License-Identifier: Apache-2.0
// Premultiplying, and taking mattes out.

#include <algorithm>

#include "marlo110k/dib_alpha.h"
#include "marlo110k/dib_copy.h"
#include "pixel/areas.h"
#include "pixel/blend_rows.h"
#include "pixel/gamma.h"
#include "pixel/unit.h"

using namespace marlo::pixel;

namespace {

constexpr int32_t kAlpha = 3;
constexpr int32_t kGammaSteps = 2048;

void PremultiplyRow(tZRPIXEL128* pixels, int32_t count) noexcept {
  for (int32_t index = 0; index < count; ++index) {
    tZRPIXEL128& pixel = pixels[index];
    pixel.b *= pixel.a;
    pixel.g *= pixel.a;
    pixel.r *= pixel.a;
  }
}

template <typename Pixel>
void CutToAlpha(Pixel* pixel) noexcept {
  pixel->b = std::min(pixel->b, pixel->a);
  pixel->g = std::min(pixel->g, pixel->a);
  pixel->r = std::min(pixel->r, pixel->a);
}

/// The colour that a picture was flattened on.
struct Matte : UnitColor {
  using UnitColor::UnitColor;

  void TakeFrom(tZRPIXEL32* pixel) const noexcept {
    uint8_t* const colors = &pixel->b;
    const int32_t alpha = pixel->a;
    for (int channel = 0; channel < 3; ++channel) {
      const int32_t color = (bytes[channel] * alpha >> 8) - bytes[channel] + colors[channel];
      colors[channel] = static_cast<uint8_t>(std::clamp(color, 0, alpha));
    }
  }
  /// @param toLinear, back the curves to go through, or null.
  void TakeFrom(tZRPIXEL128* pixel, const GammaTable* toLinear, const GammaTable* back) const noexcept {
    float* const colors = &pixel->b;
    for (int channel = 0; channel < 3; ++channel) {
      const float color = toLinear ? toLinear->Float(colors[channel]) : colors[channel];
      const float bare = pixel->a * floats[channel] + (color - floats[channel]);
      colors[channel] = back ? back->Float(bare) : bare;
    }
  }
};

HRESULT TakeMatteFloats(const Area& area, const Matte& matte, double gammaA, double gammaB) noexcept {
  const double ratio = gammaA != 0.0 ? gammaB / gammaA : 1.0;
  const bool curved = gammaA != gammaB && ratio > 0.0 && ratio < 1e6;
  GammaTable toLinear(curved ? ratio : 1.0);
  GammaTable back(curved ? 1.0 / ratio : 1.0);
  if (curved && (!toLinear.MakeFloats(kGammaSteps) || !back.MakeFloats(kGammaSteps))) return E_OUTOFMEMORY;
  area.ForRowsHere<tZRPIXEL128>([&](tZRPIXEL128* row) {
    for (int32_t column = 0; column < area.width; ++column) {
      matte.TakeFrom(row + column, curved ? &toLinear : nullptr, curved ? &back : nullptr);
    }
  });
  return S_OK;
}

}  // namespace

HRESULT ZrDibPremultiply(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                         int32_t bytesPerPixel) noexcept {
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Area area;
  const HRESULT result = area.Prepare(bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result)) return result;
  if (bytesPerPixel == 4) {
    const auto row = UseAvx2() ? PremultiplyRowAvx2 : PremultiplyRowPlain;
    area.ForRowsHere<tZRPIXEL32>([&](tZRPIXEL32* pixels) { row(pixels, area.width); });
  } else {
    area.ForRowsHere<tZRPIXEL128>([&](tZRPIXEL128* pixels) { PremultiplyRow(pixels, area.width); });
  }
  return S_OK;
}

HRESULT ZrDibPatchPreMultiplied(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                                int32_t bytesPerPixel) noexcept {
  return ForPixelsInPlace(bits, bounds, stride, rect, bytesPerPixel, [](auto* pixel) { CutToAlpha(pixel); });
}

HRESULT ZrDibPrepAlpha(void* bits, int32_t width, int32_t height, int32_t stride, const RECT* rect, int32_t alphaType,
                       const double matte[3], int32_t bytesPerPixel, double gammaA, double gammaB) noexcept {
  const RECT bounds{0, 0, width, height};
  switch (alphaType) {
    case ZRALPHA_UNKNOWN:
    case ZRALPHA_NONE:
      return ZrDibChannelSet(bits, &bounds, stride, rect, bytesPerPixel, kAlpha, 1.0);
    case ZRALPHA_STRAIGHT:
      return ZrDibPremultiply(bits, &bounds, stride, rect, bytesPerPixel);
    case ZRALPHA_PREMULTIPLIED:
    case ZRALPHA_MATTED:
      return ZrDibPrepAlphaImage(bits, &bounds, stride, rect, 0, matte, bytesPerPixel, gammaA, gammaB);
    default:
      return E_NOTIMPL;
  }
}

HRESULT ZrDibPrepAlphaImage(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t,
                            const double matte[3], int32_t bytesPerPixel, double gammaA, double gammaB) noexcept {
  if (!matte || !(matte[0] + matte[1] + matte[2] > 0.0)) {
    return ZrDibPatchPreMultiplied(bits, bounds, stride, rect, bytesPerPixel);
  }
  if (!IsKernelWidth(bytesPerPixel)) return E_NOTIMPL;
  Area area;
  const HRESULT result = area.Prepare(bits, bounds, stride, rect, bytesPerPixel);
  if (FAILED(result)) return result;
  const Matte taken(matte);
  if (bytesPerPixel == 16) return TakeMatteFloats(area, taken, gammaA, gammaB);
  area.ForRowsHere<tZRPIXEL32>([&](tZRPIXEL32* row) {
    for (int32_t column = 0; column < area.width; ++column) taken.TakeFrom(row + column);
  });
  return S_OK;
}
