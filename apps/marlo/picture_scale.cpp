// SPDX-License-Identifier: Apache-2.0
// marlo picture scale: a picture in another size, filtered with premultiplied alpha so that the colour of
// transparent pixels doesn't show at edges.
#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "marlo110k/dib_scale.h"
#include "picture.h"

namespace host {

int RunPictureScale(const Arguments& arguments) {
  if (arguments.Positionals().size() != 2) throw UsageError("scale takes one file.");
  const std::string output = OutputOfPicture(arguments);
  const std::string* sizeText = arguments.Value("--size");
  if (sizeText == nullptr) throw UsageError("The new size is missing: --size WxH.");
  const PictureSize size = ParsePictureSize(*sizeText);
  const std::string* filter = arguments.Value("--filter");
  const bool bilinear = filter != nullptr && *filter == "bilinear";
  if (filter != nullptr && !bilinear && *filter != "bicubic") {
    throw UsageError("\"" + *filter + "\" is neither bilinear nor bicubic.");
  }

  const std::string& path = arguments.Positionals()[1];
  Image source = ReadImageFile(path).image;
  source.Premultiply();
  Image scaled(size.width, size.height);
  const SIZE sourceSize = {source.Width(), source.Height()};
  const SIZE scaledSize = {size.width, size.height};
  const auto scale = bilinear ? ZrDibScale_Bilinear : ZrDibScale_BiCubic;
  // From the top rows downwards, hence the negative strides.
  Check(scale(scaled.Row(0), &scaledSize, -4 * size.width, nullptr, source.Row(0), &sourceSize, -4 * source.Width(),
              nullptr, 4, 1, 0),
        path);
  scaled.Unpremultiply();
  WriteImageFile(output, scaled);
  return kFine;
}

}  // namespace host
