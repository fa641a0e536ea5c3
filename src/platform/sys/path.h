// SPDX-License-Identifier: Apache-2.0
// Paths as the published interface writes them, and the names on disk that they mean.
#pragma once

#include <cstdint>
#include <string>

namespace plat {

/// A path for the system's calls.
struct DiskPath {
  std::string name;    ///< UTF-8 with slashes; existing parts spelt as on disk.
  uint32_t error = 0;  ///< Platform error number: 3 for null, empty or a missing folder, 5 for a closed folder,
                       ///< 123 for text that can't be a name, 206 for an overlong one.
  bool exists = false;
};

/// Maps separators and finds each part: the exact name, else the first one in byte order that differs in case only.
/// A last part that doesn't exist is kept as given.
DiskPath FindOnDisk(const char16_t* path);

}  // namespace plat
