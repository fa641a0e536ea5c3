// SPDX-License-Identifier: Apache-2.0
// Read-only views of whole files, and zeroed page blocks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plat {

/// A file mapped for reading. A file cut while it is mapped faults on access: guard such reads.
struct MappedFile {
  const uint8_t* data;
  uint64_t bytes;
};

/// @return false with LastError() set; an empty file gives null data and 0 bytes, and true.
bool MapFile(const char16_t* path, MappedFile* mapping) noexcept;
void UnmapFile(MappedFile* mapping) noexcept;

/// Zeroed pages; null when memory is short.
void* AllocatePages(size_t bytes) noexcept;
void FreePages(void* block, size_t bytes) noexcept;

}  // namespace plat
