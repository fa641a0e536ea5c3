// SPDX-License-Identifier: Apache-2.0
// The compiled resources of modules: each file is read once, and its entries are found by type, name and language.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/sys/resource_image.h"

namespace plat {
struct Module;
}

namespace marlo {

/// What was read of one module.
struct ModuleResources {
  plat::Module* module;  ///< Null when only lent bytes keep it.
  std::vector<uint8_t> bytes;
  bool isLent;  ///< Callers hold pointers into `bytes`, which therefore stay until the library goes.
  ModuleResources* next;
};

/// Holds the lock on all resources that were read.
class ResourcesGuard {
 public:
  ResourcesGuard() noexcept;
  ~ResourcesGuard();
  ResourcesGuard(const ResourcesGuard&) = delete;
  ResourcesGuard& operator=(const ResourcesGuard&) = delete;
};

/// The resources of a module, under a guard. Throws std::bad_alloc; a module without resources has no bytes.
ModuleResources* ResourcesOf(plat::Module* module);
/// Drops what was read of a module that may be unloaded now. Takes the lock itself.
void ForgetModuleResources(plat::Module* module) noexcept;
/// True when `address` lies in resources that were read, also in lent ones of a module that is gone.
bool IsInResources(const ModuleResources& resources, const void* address) noexcept;
/// The first of all that were read, under a guard.
const ModuleResources* FirstResources() noexcept;

/// How a text as a type or a name counts.
enum class NameCase : uint8_t { kExact, kIgnored };
/// True when an entry has that type or name: a number below 0x10000, or a text.
bool IsNamed(const plat::ResourceName& name, const char16_t* wanted, NameCase nameCase) noexcept;

/// The entry of that type and name. Names count without regard to case.
/// @param lcid the language it must have; 0 takes the calling thread's, else a neutral one, English or the first.
bool FindEntry(const ModuleResources& resources, const char16_t* type, const char16_t* name, uint32_t lcid,
               plat::ResourceEntry* found) noexcept;

/// A number as a type or a name.
inline const char16_t* ResourceNumber(uint16_t number) noexcept {
  return reinterpret_cast<const char16_t*>(uintptr_t{number});
}

}  // namespace marlo
