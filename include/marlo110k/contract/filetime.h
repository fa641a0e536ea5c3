// SPDX-License-Identifier: Apache-2.0
// File times: 100-nanosecond units since 1601-01-01 00:00 UTC.
#pragma once

#include <cstdint>

/// A 64-bit count in two halves, so that records that hold it align to 4 bytes.
struct FILETIME {
  uint32_t dwLowDateTime;
  uint32_t dwHighDateTime;
};
static_assert(sizeof(FILETIME) == 8 && alignof(FILETIME) == 4);
