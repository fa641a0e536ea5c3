// SPDX-License-Identifier: Apache-2.0
// Keeps the resources of modules and finds entries in them.
#include "kernel/module_resources.h"

#include <cstring>
#include <mutex>
#include <utility>

#include "kernel/language.h"
#include "platform/base/text.h"
#include "platform/base/unload.h"
#include "platform/sys/module.h"

namespace marlo {

namespace {

constinit std::mutex resourcesMutex;
ModuleResources* allResources = nullptr;  ///< Guarded by resourcesMutex.

/// Lent bytes are read until the library goes.
[[gnu::destructor(plat::kFreeAtUnload)]] void FreeResources() {
  while (allResources != nullptr) {
    ModuleResources* const next = allResources->next;
    delete allResources;
    allResources = next;
  }
}

/// How well a language serves when none is asked for; 0 never does.
int RankOf(uint32_t language, uint32_t lcid) noexcept {
  if (lcid != 0) return language == lcid ? 1 : 0;
  if (language == ThreadLcid() && language != 0) return 4;
  if (language == 0) return 3;
  return language == kEnglishLcid ? 2 : 1;
}

}  // namespace

ResourcesGuard::ResourcesGuard() noexcept { resourcesMutex.lock(); }

ResourcesGuard::~ResourcesGuard() { resourcesMutex.unlock(); }

ModuleResources* ResourcesOf(plat::Module* module) {
  for (ModuleResources* resources = allResources; resources != nullptr; resources = resources->next) {
    if (resources->module == module) return resources;
  }
  std::vector<uint8_t> bytes;
  if (!plat::ReadResources(plat::ModulePath(module).c_str(), &bytes)) bytes.clear();
  // A module that comes back takes its lent bytes again, so that they don't pile up.
  for (ModuleResources* kept = allResources; kept != nullptr; kept = kept->next) {
    if (kept->module != nullptr || kept->bytes != bytes) continue;
    kept->module = module;
    return kept;
  }
  return allResources = new ModuleResources{module, std::move(bytes), false, allResources};
}

void ForgetModuleResources(plat::Module* module) noexcept {
  if (module == nullptr) return;
  const ResourcesGuard guard;
  for (ModuleResources** link = &allResources; *link != nullptr;) {
    ModuleResources* const resources = *link;
    if (resources->module == module && resources->isLent) resources->module = nullptr;
    if (resources->module != module) {
      link = &resources->next;
      continue;
    }
    *link = resources->next;
    delete resources;
  }
}

bool IsInResources(const ModuleResources& resources, const void* address) noexcept {
  const auto place = reinterpret_cast<uintptr_t>(address);
  const auto start = reinterpret_cast<uintptr_t>(resources.bytes.data());
  return place >= start && place - start < resources.bytes.size();
}

const ModuleResources* FirstResources() noexcept { return allResources; }

bool IsNamed(const plat::ResourceName& name, const char16_t* wanted, NameCase nameCase) noexcept {
  const auto number = reinterpret_cast<uintptr_t>(wanted);
  if (number < kFirstAddress) return name.text == nullptr && name.number == number;
  if (name.text == nullptr) return false;
  for (size_t i = 0; i < name.characters; ++i) {
    char16_t character = 0;
    std::memcpy(&character, name.text + i * sizeof character, sizeof character);
    const bool isSame = nameCase == NameCase::kExact ? character == wanted[i]
                                                     : plat::UpperCase(character) == plat::UpperCase(wanted[i]);
    if (!isSame) return false;
  }
  return wanted[name.characters] == 0;
}

bool FindEntry(const ModuleResources& resources, const char16_t* type, const char16_t* name, uint32_t lcid,
               plat::ResourceEntry* found) noexcept {
  plat::ResourceWalk walk(resources.bytes.data(), resources.bytes.size());
  plat::ResourceEntry entry;
  int bestRank = 0;
  while (walk.Next(&entry)) {
    if (!IsNamed(entry.type, type, NameCase::kIgnored) || !IsNamed(entry.name, name, NameCase::kIgnored)) continue;
    const int rank = RankOf(entry.language, lcid);
    if (rank <= bestRank) continue;
    *found = entry;
    bestRank = rank;
  }
  return bestRank != 0;
}

}  // namespace marlo
