// SPDX-License-Identifier: Apache-2.0
// A fuzzer's bytes as an open file, and the check that ends the run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "marlo110k/platform/file.h"

namespace fuzzing {

/// Room that a call may add to a file: enough for any honest growth, far too little for a declared size.
inline constexpr uint64_t kGrowthBytes = 1 << 16;

class MemoryFile {
 public:
  MemoryFile(const uint8_t* data, size_t bytes) : file_(plat::OpenMemoryFile(data, bytes, bytes + kGrowthBytes)) {}
  ~MemoryFile() { plat::CloseFile(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  operator plat::File*() const { return file_; }
  uint64_t Position() const {
    uint64_t position = 0;
    plat::SeekFile(file_, 0, plat::kSeekCurrent, &position);
    return position;
  }
  void MoveTo(uint64_t position) const {
    plat::SeekFile(file_, static_cast<int64_t>(position), plat::kSeekStart, nullptr);
  }
  uint64_t Length() const {
    uint64_t bytes = 0;
    plat::GetFileBytes(file_, &bytes);
    return bytes;
  }
  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> bytes(Length());
    MoveTo(0);
    plat::ReadFile(file_, bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    return bytes;
  }

 private:
  plat::File* file_;
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
