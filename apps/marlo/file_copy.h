// SPDX-License-Identifier: Apache-2.0
// A copy of a whole file under a name that is free.
#pragma once

#include <string>

#include "marlo110k/platform/file.h"

namespace host {

/// Copies an open file; the copy is on the device when this returns. Throws a Failure, and leaves no partial
/// copy, when `copyPath` exists or can't be written.
void CopyToNewFile(plat::File* file, const std::string& path, const std::string& copyPath);

}  // namespace host
