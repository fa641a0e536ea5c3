// SPDX-License-Identifier: Apache-2.0
// Writing beside the final name and renaming over it.
#include "output_file.h"

#include <filesystem>
#include <system_error>

#include "errors.h"
#include "marlo110k/platform/file.h"
#include "open_file.h"
#include "terminal.h"
#include "unicode.h"

namespace host {

OutputFile::OutputFile(const std::string& path) : path_(path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  // Renaming over a device or folder would replace it.
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    throw Failure(ZR_E_FILE_OPEN, path, "The output must be a plain file.");
  }
  // The platform finds names without regard to case; a file called otherwise must not be replaced by mistake.
  if (!std::filesystem::exists(status)) {
    const OpenFile other(plat::OpenFile(ToUtf16(path).c_str(), plat::kReadAccess, plat::kShareRead | plat::kShareWrite,
                                        plat::kOpenExisting));
    if (other.IsOpen()) {
      throw Failure(ZR_E_FILE_EXISTS, path, "A file whose name differs only in capital letters exists already.");
    }
  }
  // A link keeps pointing at its file, which gets the new content.
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(path, error))) {
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    if (!error) path_ = target.string();
  }
  temporaryPath_ = path_ + "." + std::to_string(ProcessNumber()) + ".part";
}

OutputFile::~OutputFile() {
  if (!committed_) plat::RemoveFile(ToUtf16(temporaryPath_).c_str());
}

void OutputFile::Commit() {
  if (!plat::MoveFileOver(ToUtf16(temporaryPath_).c_str(), ToUtf16(path_).c_str())) throw WriteFailure(path_);
  committed_ = true;
}

}  // namespace host
