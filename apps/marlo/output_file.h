// SPDX-License-Identifier: Apache-2.0
// An output that appears under its name only when it is complete: it is written beside it first.
#pragma once

#include <string>

namespace host {

class OutputFile {
 public:
  /// Chooses the name to write to. Throws a Failure when `path` names something other than a plain file,
  /// or when only a file whose name has other capital letters exists.
  explicit OutputFile(const std::string& path);
  /// Removes what was written unless Commit() was reached.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& Path() const { return path_; }
  /// Where to write meanwhile; the caller creates and closes this file.
  const std::string& TemporaryPath() const { return temporaryPath_; }
  /// Gives the finished file its name, in place of a former file.
  void Commit();

 private:
  std::string path_;
  std::string temporaryPath_;
  bool committed_ = false;
};

}  // namespace host
