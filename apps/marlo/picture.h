// SPDX-License-Identifier: Apache-2.0
// The kinds of work below "marlo picture", one source each.
#pragma once

#include "arguments.h"
#include "image.h"

namespace host {

/// Each takes the words with the kind of work still in front and gives the exit code.
int RunPictureComposite(const Arguments& arguments);
int RunPictureConvert(const Arguments& arguments);
int RunPictureFade(const Arguments& arguments);
int RunPictureFields(const Arguments& arguments);
int RunPictureInfo(const Arguments& arguments);
int RunPictureScale(const Arguments& arguments);
int RunPictureTestcard(const Arguments& arguments);
int RunPictureYuv(const Arguments& arguments);

/// The value of -o, whose extension is one that can be written. Throws UsageError without it.
std::string OutputOfPicture(const Arguments& arguments);

/// Throws a Failure about the second picture's file unless both pictures have one size.
void RequireSameSize(const Image& first, const Image& second, const std::string& secondPath);

/// "640x360". Throws UsageError when it isn't a size.
struct PictureSize {
  int32_t width;
  int32_t height;
};
PictureSize ParsePictureSize(const std::string& text);

}  // namespace host
