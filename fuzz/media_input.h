// SPDX-License-Identifier: Apache-2.0
// A fuzzer's bytes as an open file, and the check that ends the run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "../tests/testing/memory_file.h"
#include "marlo110k/platform/file.h"

namespace fuzzing {

/// Room that a call may add to a file: enough for any honest growth, far too little for a declared size.
inline constexpr uint64_t kGrowthBytes = 1 << 16;

class MemoryFile : public testing_support::MemoryFile {
 public:
  MemoryFile(const uint8_t* data, size_t bytes) : testing_support::MemoryFile(data, bytes, kGrowthBytes) {}
};

/// Ends the run when a property doesn't hold.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "property broken: %s\n", what);
  std::abort();
}

/// A number from the input's end, so that the front stays the file's.
inline uint32_t TakeWord(const uint8_t* data, size_t* bytes) {
  uint32_t word = 0;
  if (*bytes < sizeof word) return 0;
  *bytes -= sizeof word;
  std::memcpy(&word, data + *bytes, sizeof word);
  return word;
}

}  // namespace fuzzing
