// SPDX-License-Identifier: Apache-2.0
// marlo picture testcard: colour bars, ramps, a zone plate and an alpha wedge in one picture.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "canvas.h"
#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "picture.h"

namespace host {
namespace {

constexpr tZRPIXEL32 kWhite = {255, 255, 255, 255};
constexpr tZRPIXEL32 kBlack = {0, 0, 0, 255};

/// Seven bars at 75 percent, brightest first.
void DrawBars(Canvas* canvas, int32_t width, int32_t bottom) {
  for (int32_t bar = 0; bar < 7; ++bar) {
    const int32_t bits = 7 - bar;  // Green, red, blue from the highest bit down.
    const auto level = [bits](int32_t bit) { return static_cast<uint8_t>((bits >> bit & 1) != 0 ? 191 : 0); };
    const int64_t left = int64_t{width} * bar / 7;
    canvas->FillRect(left, 0, int64_t{width} * (bar + 1) / 7 - left, bottom, {level(0), level(2), level(1), 255});
  }
}

/// Value of column `x` in a ramp from 0 to 255 over the whole width.
uint8_t RampLevel(int32_t x, int32_t width) {
  return static_cast<uint8_t>(width == 1 ? 255 : int64_t{x} * 255 / (width - 1));
}

/// Gray, red, green and blue ramps, and a white one of growing alpha, each a fifth of the height.
void DrawRamps(Image* image, int32_t left, int32_t top, int32_t bottom) {
  const int32_t width = image->Width() - left;
  for (int32_t y = top; y < bottom; ++y) {
    const int32_t ramp = static_cast<int32_t>(int64_t{y - top} * 5 / (bottom - top));
    for (int32_t x = 0; x < width; ++x) {
      const uint8_t level = RampLevel(x, width);
      const auto channel = [&](int32_t own) { return ramp == 0 || ramp == own ? level : uint8_t{0}; };
      image->Row(y)[left + x] =
          ramp == 4 ? tZRPIXEL32{255, 255, 255, level} : tZRPIXEL32{channel(3), channel(2), channel(1), 255};
    }
  }
}

/// Rings whose frequency grows to one period in two pixels at the rim of the square.
void DrawZonePlate(Image* image, int32_t side, int32_t top) {
  const double centre = (side - 1) / 2.0;
  for (int32_t y = 0; y < side; ++y) {
    for (int32_t x = 0; x < side; ++x) {
      const double square = (x - centre) * (x - centre) + (y - centre) * (y - centre);
      const double wave = std::cos(std::numbers::pi * square / side);
      const auto level = static_cast<uint8_t>(std::lround(127.5 + 127.5 * wave));
      image->Row(top + y)[x] = {level, level, level, 255};
    }
  }
}

}  // namespace

int RunPictureTestcard(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("testcard takes no file but -o OUT.");
  const std::string output = OutputOfPicture(arguments);
  const std::string* sizeText = arguments.Value("--size");
  const PictureSize size = sizeText != nullptr ? ParsePictureSize(*sizeText) : PictureSize{640, 360};

  Image image(size.width, size.height);
  Canvas canvas(image);
  const int32_t middle = size.height * 2 / 5;
  const int32_t side = std::min(size.height - middle, size.width / 2);
  canvas.FillRect(0, 0, size.width, size.height, kBlack);
  DrawBars(&canvas, size.width, middle);
  DrawRamps(&image, side, middle, size.height);
  if (side > 0) DrawZonePlate(&image, side, middle);
  const std::string title = "marlo " + std::to_string(size.width) + "x" + std::to_string(size.height);
  const int64_t textWidth = Canvas::TextWidth(title, 2);
  canvas.FillRect((size.width - textWidth) / 2 - 6, 8, textWidth + 10, 2 * kCharacterHeight + 6, kBlack);
  canvas.Text((size.width - textWidth) / 2, 12, title, kWhite, 2);
  canvas.FrameRect(0, 0, size.width, size.height, kWhite);
  WriteImageFile(output, image);
  return kFine;
}

}  // namespace host
