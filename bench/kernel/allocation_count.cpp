// SPDX-License-Identifier: Apache-2.0
// Stands in front of the C allocator and counts.
#include "kernel/allocation_count.h"

#include <atomic>
#include <cstddef>

namespace {
std::atomic<uint64_t> allocations{0};
}

namespace bench {
uint64_t AllocationCount() { return allocations.load(std::memory_order_relaxed); }
}  // namespace bench

extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);

__attribute__((visibility("default"))) void* malloc(size_t bytes) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(bytes);
}
__attribute__((visibility("default"))) void* calloc(size_t count, size_t bytes) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(count, bytes);
}
__attribute__((visibility("default"))) void* realloc(void* block, size_t bytes) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(block, bytes);
}
}
