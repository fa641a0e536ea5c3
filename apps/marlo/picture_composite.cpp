// SPDX-License-Identifier: Apache-2.0
// marlo picture composite: pictures laid over a base in turn, at places between pixels and in any mode.
#include <cmath>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "marlo110k/dib_composite.h"
#include "picture.h"
#include "picture_layer.h"

namespace host {
namespace {

int32_t Subpixel(double pixels) { return static_cast<int32_t>(std::lround(pixels * kZrSubpixelOne)); }

template <typename Picture>
void LayOver(Picture* base, const PictureLayer& layer) {
  Picture picture(ReadImageFile(layer.path).image);
  picture.Premultiply();
  const double width = layer.width.value_or(picture.Width());
  const double height = layer.height.value_or(picture.Height());
  constexpr double kFarthest = 131071;  // The reach of 18.14 fixed point.
  if (layer.x + width > kFarthest || layer.y + height > kFarthest || picture.Width() > kFarthest ||
      picture.Height() > kFarthest) {
    throw Failure(ZR_E_FILE_TOO_LARGE, layer.path, "A picture reaches at most to pixel 131071.");
  }
  const RECT place = {Subpixel(layer.x), Subpixel(layer.y), Subpixel(layer.x + width), Subpixel(layer.y + height)};
  const BITMAPINFOHEADER baseHeader = base->Header();
  const BITMAPINFOHEADER pictureHeader = picture.Header();
  tZRDIBCOMPOSITEPARAMS params = {};
  params.mode = layer.mode;
  params.opacity = layer.opacity;
  Check(ZrDibComposite(&baseHeader, base->Pixels().data(), &place, 0, &pictureHeader, picture.Pixels().data(), nullptr,
                       0, &params, ZRDIB_SUBPIXEL),
        layer.path);
}

template <typename Picture>
Picture Compose(const std::string& basePath, const std::vector<PictureLayer>& layers) {
  Picture base(ReadImageFile(basePath).image);
  base.Premultiply();
  for (const PictureLayer& layer : layers) LayOver(&base, layer);
  base.Unpremultiply();
  return base;
}

}  // namespace

int RunPictureComposite(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.Positionals();
  if (words.size() < 3) throw UsageError("composite takes a base and at least one picture.");
  const std::string output = OutputOfPicture(arguments);
  std::vector<PictureLayer> layers;
  for (size_t index = 2; index < words.size(); ++index) layers.push_back(ParsePictureLayer(words[index]));

  const std::string* type = arguments.Value("--type");
  if (type == nullptr || *type == "rgba8") {
    WriteImageFile(output, Compose<Image>(words[1], layers));
  } else if (*type == "rgba16") {
    RequirePngExtension(output);
    WritePng16(output, Compose<FloatImage>(words[1], layers));
  } else {
    throw UsageError("\"" + *type + "\" is neither rgba8 nor rgba16.");
  }
  return kFine;
}

}  // namespace host
