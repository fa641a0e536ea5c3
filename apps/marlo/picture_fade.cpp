// SPDX-License-Identifier: Apache-2.0
// marlo picture fade: a picture on its way to another one or to a colour, mixed with premultiplied alpha.
#include <cmath>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "marlo110k/dib_blend.h"
#include "numbers.h"
#include "picture.h"

namespace host {
namespace {

/// Blue, green, red and alpha of 0 to 1, premultiplied.
struct FadeColor {
  double channels[4];
};

FadeColor ParseColor(const std::string& text) {
  const bool digits = text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!digits || (text.size() != 6 && text.size() != 8)) {
    throw UsageError("\"" + text + "\" is no colour such as FF8000 or FF800080.");
  }
  const auto level = [&](size_t at) { return std::stoi(text.substr(at, 2), nullptr, 16) / 255.0; };
  const double alpha = text.size() == 8 ? level(6) : 1;
  return {{level(4) * alpha, level(2) * alpha, level(0) * alpha, alpha}};
}

double WeightOf(const Arguments& arguments) {
  const std::string* text = arguments.Value("--weight");
  if (text == nullptr) throw UsageError("The weight is missing: --weight F.");
  const std::optional<double> weight = ParseNumber(*text);
  if (!weight || *weight < 0 || *weight > 1) throw UsageError("\"" + *text + "\" is no weight from 0 to 1.");
  return *weight;
}

void FadeTo(Image* image, const std::string& path, double weight) {
  Image target = ReadImageFile(path).image;
  RequireSameSize(*image, target, path);
  target.Premultiply();
  // The library cuts weights to this step: both on it sum to 1, so that white stays white.
  constexpr double kStep = 16384;
  const double share = std::round(weight * kStep) / kStep;
  const RECT bounds = image->Bounds();
  const int32_t stride = 4 * image->Width();
  Check(ZrDibWeightedCrossFade(image->Pixels().data(), &bounds, stride, nullptr, 1 - share, target.Pixels().data(),
                               &bounds, stride, nullptr, share, 4),
        path);
}

}  // namespace

int RunPictureFade(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.Positionals();
  const std::string* colorText = arguments.Value("--color");
  if (words.size() != (colorText != nullptr ? 2 : 3)) throw UsageError("fade takes FROM, and TO or --color.");
  const std::string output = OutputOfPicture(arguments);
  const double weight = WeightOf(arguments);
  const FadeColor color = colorText != nullptr ? ParseColor(*colorText) : FadeColor{};

  Image image = ReadImageFile(words[1]).image;
  image.Premultiply();
  if (colorText != nullptr) {
    const BITMAPINFOHEADER header = image.Header();
    Check(ZrDibFadeToColor(&header, image.Pixels().data(), nullptr, 0, color.channels, weight, 0, 0), words[1]);
  } else {
    FadeTo(&image, words[2], weight);
  }
  image.Unpremultiply();
  WriteImageFile(output, image);
  return kFine;
}

}  // namespace host
