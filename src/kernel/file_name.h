// SPDX-License-Identifier: Apache-2.0
// The file name part of a path.
#pragma once

namespace marlo {

/// What stands behind the last slash or backslash.
inline const char16_t* FileNameOf(const char16_t* path) noexcept {
  const char16_t* name = path;
  for (; *path != 0; ++path) {
    if (*path == u'/' || *path == u'\\') name = path + 1;
  }
  return name;
}

}  // namespace marlo
