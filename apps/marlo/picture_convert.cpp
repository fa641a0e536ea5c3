// SPDX-License-Identifier: Apache-2.0
// marlo picture convert: a picture in another file format.
#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "picture.h"

namespace host {

int RunPictureConvert(const Arguments& arguments) {
  if (arguments.Positionals().size() != 2) throw UsageError("convert takes one file.");
  const std::string output = OutputOfPicture(arguments);
  WriteImageFile(output, ReadImageFile(arguments.Positionals()[1]).image);
  return kFine;
}

}  // namespace host
