// SPDX-License-Identifier: Apache-2.0
// The bounds of a chunk walk: the same headers by bare system calls, and by a bare pointer.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "media/peers.h"

namespace bench_media {

int OpenBare(const std::string& path) { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }

void CloseBare(int descriptor) { close(descriptor); }

uint64_t BareFileWalk(int descriptor) {
  uint64_t passed = 0;
  off_t offset = 12;
  uint32_t header[2];
  while (pread(descriptor, header, sizeof header, offset) == sizeof header) {
    offset += 8 + ((off_t{header[1]} + 1) & ~off_t{1});
    ++passed;
  }
  return passed;
}

uint64_t BarePointerWalk(const uint8_t* block, const uint8_t* end) {
  uint64_t passed = 0;
  const uint8_t* at = block + 12;
  while (end - at >= 8) {
    uint32_t bytes = 0;
    std::memcpy(&bytes, at + 4, sizeof bytes);
    at += 8 + ((uint64_t{bytes} + 1) & ~uint64_t{1});
    ++passed;
  }
  return passed;
}

}  // namespace bench_media
