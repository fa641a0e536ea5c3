// SPDX-License-Identifier: Apache-2.0
// A folder of its own for a test, removed with all that is in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace testing_support {

class TempFolder {
 public:
  TempFolder() {
    const char* base = std::getenv("MARLO_TEMP_DIR");
    std::string pattern =
        (base != nullptr ? std::filesystem::path(base) : std::filesystem::temp_directory_path()) / "marlo-test-XXXXXX";
    EXPECT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
    path_ = pattern;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  /// A name in the folder as the library takes it.
  std::u16string Name(const std::string& name) const { return (path_ / name).u16string(); }
  /// Writes a file by the standard library, not by the code under test.
  std::u16string Put(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return Name(name);
  }
  std::string Get(const std::string& name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace testing_support
