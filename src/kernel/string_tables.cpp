// SPDX-License-Identifier: Apache-2.0
// Reads string tables. The resources are walked for each string, since strings are cached above. Damaged tables have
// the strings that stand whole in them.
#include "kernel/string_tables.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "kernel/module_resources.h"

namespace marlo {
namespace {

constexpr uint16_t kStringType = 6;
constexpr uint32_t kStringsInBlock = 16;

/// A counted string within a block; not terminated.
struct CountedString {
  const uint8_t* units = nullptr;  // UTF-16, may be unaligned
  size_t characters = 0;
};

CountedString FindInBlock(const plat::ResourceEntry& block, uint32_t index) noexcept {
  size_t at = 0;
  for (uint32_t i = 0;; ++i) {
    uint16_t characters = 0;
    if (block.bytes - at < sizeof characters) return {};
    std::memcpy(&characters, block.data + at, sizeof characters);
    at += sizeof characters;
    const size_t bytes = characters * sizeof(char16_t);
    if (block.bytes - at < bytes) return {};
    if (i == index) return {block.data + at, characters};
    at += bytes;
  }
}

CountedString FindString(const ModuleResources& resources, uint32_t id, uint32_t lcid) noexcept {
  const uint32_t number = (id >> 4) + 1;
  if (number > 0xFFFF) return {};
  plat::ResourceEntry block;
  const bool found =
      FindEntry(resources, ResourceNumber(kStringType), ResourceNumber(static_cast<uint16_t>(number)), lcid, &block);
  return found ? FindInBlock(block, id % kStringsInBlock) : CountedString{};
}

}  // namespace

int32_t LoadTableString(plat::Module* module, uint32_t id, uint32_t lcid, char16_t* buffer, int32_t size) noexcept {
  if (module == nullptr || buffer == nullptr || size <= 0) return 0;
  try {
    const ResourcesGuard guard;
    const CountedString string = FindString(*ResourcesOf(module), id, lcid);
    if (string.characters == 0) return 0;
    const size_t copied = std::min(string.characters, static_cast<size_t>(size) - 1);
    std::memcpy(buffer, string.units, copied * sizeof(char16_t));
    buffer[copied] = 0;
    return static_cast<int32_t>(std::min(string.characters, static_cast<size_t>(size)));
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

const char16_t* AdoptTableString(plat::Module* module, uint32_t id, uint32_t lcid) noexcept {
  if (module == nullptr) return nullptr;
  try {
    const ResourcesGuard guard;
    ModuleResources* const resources = ResourcesOf(module);
    const CountedString string = FindString(*resources, id, lcid);
    // A damaged table can leave a string on an odd address.
    if (string.characters == 0 || reinterpret_cast<uintptr_t>(string.units) % alignof(char16_t) != 0) return nullptr;
    const auto* text = reinterpret_cast<const char16_t*>(string.units);
    if (text[string.characters - 1] != 0) return nullptr;
    resources->isLent = true;
    return text;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace marlo
