// SPDX-License-Identifier: Apache-2.0
// Runs a fuzz target over its kept corpus, so that ordinary test runs replay what fuzzing once found.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes);

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", arguments[0]);
    return 2;
  }
  size_t inputs = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[1], error)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) {
      std::fprintf(stderr, "%s: can't be read\n", entry.path().c_str());
      return 1;
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    ++inputs;
  }
  std::printf("%zu inputs\n", inputs);
  // A target whose corpus is gone must not pass as tested.
  return error || inputs == 0 ? 1 : 0;
}
