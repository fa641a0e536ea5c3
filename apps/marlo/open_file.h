// SPDX-License-Identifier: Apache-2.0
// An open file that closes itself.
#pragma once

#include <cstdint>
#include <string>

#include "marlo110k/platform/file.h"

namespace host {

class OpenFile {
 public:
  OpenFile() = default;
  /// Opens by a UTF-8 path. Throws a Failure when it can't be opened.
  OpenFile(const std::string& path, uint32_t access, uint32_t share, uint32_t disposition);
  /// Takes a handle over.
  explicit OpenFile(plat::File* file) : file_(file) {}
  ~OpenFile() { Close(); }
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;

  plat::File* Get() const { return file_; }
  bool IsOpen() const { return file_ != plat::kInvalidFile; }
  void Close();

  /// An existing file for reading; other programs may read it too.
  static OpenFile ForReading(const std::string& path);

 private:
  plat::File* file_ = plat::kInvalidFile;
};

/// Moves the position. Throws a Failure about `path` when that fails.
void SeekTo(plat::File* file, int64_t position, const std::string& path);
/// The length of a file. Throws a Failure about `path` when it can't be told.
int64_t LengthOf(plat::File* file, const std::string& path);

}  // namespace host
