// SPDX-License-Identifier: Apache-2.0
// Runs the built program, and keeps the files of a test in a folder of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace apps_test {

struct RunResult {
  int exitCode = -1;  ///< Or 1000 and the number of the signal that ended it.
  std::string out;
  std::string err;
  int64_t peakKilobytes = 0;  ///< Of resident memory.
};

/// Runs a program found on the path, without a shell, and waits for it.
RunResult RunProgram(const std::vector<std::string>& words);
/// Runs the host with these arguments.
RunResult RunHost(std::vector<std::string> arguments);
/// True when a program of that name is installed.
bool HasProgram(const std::string& name);

/// A folder that goes away with its files.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  /// The names in the folder, sorted.
  std::vector<std::string> Names() const;

 private:
  std::string path_;
};

}  // namespace apps_test
