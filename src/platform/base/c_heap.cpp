// SPDX-License-Identifier: Apache-2.0
// Asks the C library for the size of its blocks.
#include "platform/base/c_heap.h"

#include <malloc.h>

namespace plat {

size_t CHeapBytes(const void* block) noexcept { return malloc_usable_size(const_cast<void*>(block)); }

}  // namespace plat
