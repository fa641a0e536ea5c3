// SPDX-License-Identifier: Apache-2.0
// PNG and JPEG files as images with straight alpha.
#pragma once

#include <string>

#include "float_image.h"
#include "image.h"

namespace host {

struct ImageFile {
  const char* format;  ///< "PNG" or "JPEG".
  Image image;
};

/// Reads a file, told apart by its first bytes. JPEG pictures are opaque, and more than 8 bits are rounded to 8.
/// Throws a Failure when the file is neither, is broken or cut short, or is larger than the limits.
ImageFile ReadImageFile(const std::string& path);
/// Writes a file whose extension chooses the format: .png, .jpg or .jpeg; the file appears when it is complete.
/// JPEG (quality 95) has no alpha: transparent parts are laid over black. Throws UsageError for other extensions.
void WriteImageFile(const std::string& path, const Image& image);
/// Writes a PNG of 16 bits a channel with straight alpha. Values are cut to 0 to 1.
void WritePng16(const std::string& path, const FloatImage& image);
/// Throws UsageError unless WriteImageFile knows the extension: to ask before the work.
void RequireImageExtension(const std::string& path);
/// Throws UsageError unless the extension is .png.
void RequirePngExtension(const std::string& path);

}  // namespace host
