// SPDX-License-Identifier: Apache-2.0
// marlo picture fields: the two fields of interlaced pictures, woven, taken apart and smoothed.
#include <algorithm>
#include <iterator>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "marlo110k/dib_fields.h"
#include "picture.h"

namespace host {
namespace {

constexpr int32_t kUpperField = 1;
constexpr int32_t kLowerField = 0;

/// One field with the other made from it.
HRESULT Keep(Image* image, int32_t field) {
  Image kept(image->Width(), image->Height());
  const BITMAPINFOHEADER header = image->Header();
  const HRESULT result = ZrDibCopyInterlace(&header, kept.Pixels().data(), nullptr, 0, &header, image->Pixels().data(),
                                            nullptr, 0, field, 0);
  *image = std::move(kept);
  return result;
}

HRESULT KeepUpper(Image* image) { return Keep(image, kUpperField); }

HRESULT KeepLower(Image* image) { return Keep(image, kLowerField); }

HRESULT Soften(Image* image) {
  return ZrDibInterlaceFilter(image->Pixels().data(), image->Width(), image->Height(), 4 * image->Width(), nullptr, 0,
                              4);
}

HRESULT Smooth(Image* image) {
  Image smooth(image->Width(), image->Height());
  const RECT bounds = image->Bounds();
  const int32_t stride = 4 * image->Width();
  const HRESULT result = ZrDibFieldBlend(smooth.Pixels().data(), &bounds, stride, nullptr, image->Pixels().data(),
                                         &bounds, stride, nullptr, 4);
  *image = std::move(smooth);
  return result;
}

struct FieldWork {
  const char* name;
  HRESULT (*run)(Image* image);
};

constexpr FieldWork kFieldWorks[] = {
    {"lower", KeepLower}, {"smooth", Smooth}, {"soften", Soften}, {"upper", KeepUpper}};

int Weave(const std::string& upperPath, const std::string& lowerPath, const std::string& output) {
  const Image upper = ReadImageFile(upperPath).image;
  Image woven = ReadImageFile(lowerPath).image;
  RequireSameSize(upper, woven, lowerPath);
  const BITMAPINFOHEADER header = upper.Header();
  Check(ZrDibMergeFields(&header, woven.Pixels().data(), 0, &header, upper.Pixels().data(), 0, kUpperField), lowerPath);
  WriteImageFile(output, woven);
  return kFine;
}

}  // namespace

int RunPictureFields(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.Positionals();
  if (words.size() < 2) throw UsageError("fields takes the work first, such as weave.");
  const std::string& name = words[1];
  const bool weave = name == "weave";
  const FieldWork* const work = std::find_if(std::begin(kFieldWorks), std::end(kFieldWorks),
                                             [&](const FieldWork& known) { return name == known.name; });
  if (!weave && work == std::end(kFieldWorks)) throw UsageError("fields has no work \"" + name + "\".");
  if (words.size() != (weave ? 4 : 3)) throw UsageError(name + (weave ? " takes two files." : " takes one file."));
  const std::string output = OutputOfPicture(arguments);
  if (weave) return Weave(words[2], words[3], output);

  Image image = ReadImageFile(words[2]).image;
  image.Premultiply();
  Check(work->run(&image), words[2]);
  image.Unpremultiply();
  WriteImageFile(output, image);
  return kFine;
}

}  // namespace host
