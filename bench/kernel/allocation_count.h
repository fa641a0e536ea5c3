// SPDX-License-Identifier: Apache-2.0
// Counts what the whole program takes from the C allocator.
#pragma once

#include <cstdint>

namespace bench {

/// Calls of malloc, calloc and realloc so far, of all threads.
uint64_t AllocationCount();

}  // namespace bench
