// SPDX-License-Identifier: Apache-2.0
// A file in memory, for tests and fuzz targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "marlo110k/platform/file.h"

namespace testing_support {

/// A file in memory with room to grow, closed with the object.
class MemoryFile {
 public:
  /// Opens a copy of the bytes.
  MemoryFile(const void* data, size_t bytes, uint64_t roomBytes)
      : file_(plat::OpenMemoryFile(data, bytes, bytes + roomBytes)) {}
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
  /// All bytes; the position stays.
  std::vector<uint8_t> Bytes() const {
    const uint64_t position = Position();
    std::vector<uint8_t> bytes(Length());
    MoveTo(0);
    plat::ReadFile(file_, bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    MoveTo(position);
    return bytes;
  }

 private:
  plat::File* file_;
};

}  // namespace testing_support
