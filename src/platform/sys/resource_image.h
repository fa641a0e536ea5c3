// SPDX-License-Identifier: Apache-2.0
// Compiled resources: where a file keeps them, and the walk over their entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace plat {

/// Reads the resources of a file that need not be loaded: section ".marlo_rsrc" of a module, or a bare compiled
/// resource file. @return false when it has none or is damaged.
bool ReadResources(const char16_t* path, std::vector<uint8_t>* resources);

/// A resource's type or name: a number, or text in the entry that isn't terminated within it.
struct ResourceName {
  uint16_t number = 0;            ///< Used when `text` is null.
  const uint8_t* text = nullptr;  ///< UTF-16, unaligned.
  size_t characters = 0;
};

/// One entry. The pointers point into the walked bytes.
struct ResourceEntry {
  ResourceName type;
  ResourceName name;
  uint16_t language = 0;
  const uint8_t* data = nullptr;
  size_t bytes = 0;
};

/// Walks the entries of compiled resources; a damaged entry ends the walk.
class ResourceWalk {
 public:
  ResourceWalk(const uint8_t* resources, size_t bytes) : resources_(resources), bytes_(bytes) {}
  bool Next(ResourceEntry* entry) noexcept;

 private:
  const uint8_t* resources_;
  size_t bytes_;
  size_t offset_ = 0;
};

}  // namespace plat
