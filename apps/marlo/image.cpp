// SPDX-License-Identifier: Apache-2.0
// Size checks and the two forms of alpha.
#include "image.h"

#include <algorithm>

#include "errors.h"
#include "marlo110k/dib_alpha.h"

namespace host {

Image::Image(int32_t width, int32_t height) : width_(width), height_(height) {
  if (width <= 0 || height <= 0) throw Failure(E_INVALIDARG, "", "A picture has at least one pixel.");
  const uint64_t count = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  if (count > kMostPixels) throw Failure(ZR_E_FILE_TOO_LARGE, "", "A picture has at most 67108864 pixels.");
  pixels_.resize(count);
}

BITMAPINFOHEADER Image::Header() const {
  BITMAPINFOHEADER header = {};
  Check(ZrVideo_InitBitmapInfo(&header, ZRPIXEL_RGBA32, width_, height_, nullptr, 0, nullptr), "");
  return header;
}

void Image::Premultiply() {
  const RECT bounds = Bounds();
  Check(ZrDibPremultiply(pixels_.data(), &bounds, 4 * width_, nullptr, 4), "");
}

void Image::Unpremultiply() {
  for (tZRPIXEL32& pixel : pixels_) {
    const int32_t alpha = pixel.a;
    const auto straight = [&](uint8_t channel) {
      return static_cast<uint8_t>(alpha == 0 ? 0 : std::min((channel * 255 + alpha / 2) / alpha, 255));
    };
    pixel = {straight(pixel.b), straight(pixel.g), straight(pixel.r), pixel.a};
  }
}

}  // namespace host
