// SPDX-License-Identifier: Apache-2.0
// The C allocator's view of its own blocks.
#pragma once

#include <cstddef>

namespace plat {

/// Bytes that a block from calloc, malloc or realloc can hold, at least what was asked for; 0 for null.
size_t CHeapBytes(const void* block) noexcept;

}  // namespace plat
