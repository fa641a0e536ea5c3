// SPDX-License-Identifier: Apache-2.0
// marlo picture info: what a picture file holds.
#include <algorithm>
#include <cstdio>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "json_output.h"
#include "picture.h"

namespace host {

int RunPictureInfo(const Arguments& arguments) {
  if (arguments.Positionals().size() != 2) throw UsageError("info takes one file.");
  const std::string& path = arguments.Positionals()[1];
  const ImageFile file = ReadImageFile(path);
  const std::vector<tZRPIXEL32>& pixels = file.image.Pixels();
  const bool opaque = std::all_of(pixels.begin(), pixels.end(), [](tZRPIXEL32 pixel) { return pixel.a == 255; });
  if (arguments.Has("--json")) {
    PrintJson(Json{{"file", path},
                   {"format", file.format},
                   {"width", file.image.Width()},
                   {"height", file.image.Height()},
                   {"opaque", opaque}});
  } else {
    std::printf("%s: %s, %d x %d pixels, %s\n", path.c_str(), file.format, file.image.Width(), file.image.Height(),
                opaque ? "opaque" : "with transparent parts");
  }
  return kFine;
}

}  // namespace host
