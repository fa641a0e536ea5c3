// SPDX-License-Identifier: Apache-2.0
// Files on disk.
#pragma once

#include "platform/sys/file_backend.h"

namespace plat {

/// Opens by the rules of OpenFile. @return null with `error` set.
FileBackend* OpenDisk(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition, uint32_t* error);

}  // namespace plat
