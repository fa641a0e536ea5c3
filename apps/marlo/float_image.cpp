// SPDX-License-Identifier: Apache-2.0
// The way between bytes and floats is the library's copy: both are full range.
#include "float_image.h"

#include <algorithm>

#include "errors.h"
#include "marlo110k/dib_alpha.h"
#include "marlo110k/dib_copy.h"

namespace host {

FloatImage::FloatImage(int32_t width, int32_t height) : width_(width), height_(height) {
  constexpr uint64_t kMostFloatPixels = kMostPixels * sizeof(tZRPIXEL32) / sizeof(tZRPIXEL128);
  if (width <= 0 || height <= 0) throw Failure(E_INVALIDARG, "", "A picture has at least one pixel.");
  const uint64_t count = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  if (count > kMostFloatPixels) throw Failure(ZR_E_FILE_TOO_LARGE, "", "This takes at most 16777216 pixels.");
  pixels_.resize(count);
}

FloatImage::FloatImage(const Image& image) : FloatImage(image.Width(), image.Height()) {
  const BITMAPINFOHEADER target = Header();
  const BITMAPINFOHEADER source = image.Header();
  Check(ZrDibCopy(&target, pixels_.data(), nullptr, 0, &source, image.Pixels().data(), nullptr, 0, 0, 0, 0), "");
}

BITMAPINFOHEADER FloatImage::Header() const {
  BITMAPINFOHEADER header = {};
  Check(ZrVideo_InitBitmapInfo(&header, ZRPIXEL_RGBA128F, width_, height_, nullptr, 0, nullptr), "");
  return header;
}

void FloatImage::Premultiply() {
  const RECT bounds = {0, 0, width_, height_};
  Check(ZrDibPremultiply(pixels_.data(), &bounds, 16 * width_, nullptr, 16), "");
}

void FloatImage::Unpremultiply() {
  for (tZRPIXEL128& pixel : pixels_) {
    const auto straight = [alpha = pixel.a](float channel) {
      return alpha > 0 ? std::clamp(channel / alpha, 0.0f, 1.0f) : 0.0f;
    };
    pixel = {straight(pixel.b), straight(pixel.g), straight(pixel.r), pixel.a};
  }
}

Image FloatImage::ToBytes() const {
  Image image(width_, height_);
  const BITMAPINFOHEADER target = image.Header();
  const BITMAPINFOHEADER source = Header();
  Check(ZrDibCopy(&target, image.Pixels().data(), nullptr, 0, &source, pixels_.data(), nullptr, 0, 0, 0, 0), "");
  return image;
}

}  // namespace host
