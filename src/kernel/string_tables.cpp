// SPDX-License-Identifier: Apache-2.0
// Reads string tables: the resources of each module are read once and walked for each string, since strings are cached
// above. Damaged tables have the strings that stand whole in them.
#include "kernel/string_tables.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "kernel/language.h"
#include "platform/base/unload.h"
#include "platform/sys/module.h"
#include "platform/sys/resource_image.h"

namespace marlo {
namespace {

constexpr uint16_t kStringType = 6;
constexpr uint32_t kStringsInBlock = 16;

/// What was read of one module.
struct ModuleTables {
  plat::Module* module;  ///< Null when only adopted strings keep it.
  std::vector<uint8_t> resources;
  bool hasAdopted;
  ModuleTables* next;
};

constinit std::mutex tablesMutex;
ModuleTables* allTables = nullptr;  ///< Guarded by tablesMutex.

/// Adopted strings are read until the library goes.
[[gnu::destructor(plat::kFreeAtUnload)]] void FreeTables() {
  while (allTables != nullptr) {
    ModuleTables* const next = allTables->next;
    delete allTables;
    allTables = next;
  }
}

ModuleTables* TablesOf(plat::Module* module) {
  for (ModuleTables* tables = allTables; tables != nullptr; tables = tables->next) {
    if (tables->module == module) return tables;
  }
  std::vector<uint8_t> resources;
  if (!plat::ReadResources(plat::ModulePath(module).c_str(), &resources)) resources.clear();
  return allTables = new ModuleTables{module, std::move(resources), false, allTables};
}

/// How well a language serves when none is asked for; 0 never does.
int RankOf(uint32_t language, uint32_t lcid) noexcept {
  if (lcid != 0) return language == lcid ? 1 : 0;
  if (language == ThreadLcid() && language != 0) return 4;
  if (language == 0) return 3;
  return language == kEnglishLcid ? 2 : 1;
}

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

CountedString FindString(const ModuleTables& tables, uint32_t id, uint32_t lcid) noexcept {
  const uint32_t blockNumber = (id >> 4) + 1;
  plat::ResourceWalk walk(tables.resources.data(), tables.resources.size());
  plat::ResourceEntry entry;
  plat::ResourceEntry best;
  int bestRank = 0;
  while (walk.Next(&entry)) {
    const bool isBlock = entry.type.text == nullptr && entry.type.number == kStringType && entry.name.text == nullptr &&
                         entry.name.number == blockNumber;
    const int rank = isBlock ? RankOf(entry.language, lcid) : 0;
    if (rank <= bestRank) continue;
    best = entry;
    bestRank = rank;
  }
  return bestRank != 0 ? FindInBlock(best, id % kStringsInBlock) : CountedString{};
}

}  // namespace

int32_t LoadTableString(plat::Module* module, uint32_t id, uint32_t lcid, char16_t* buffer, int32_t size) noexcept {
  if (module == nullptr || buffer == nullptr || size <= 0) return 0;
  try {
    const std::lock_guard guard(tablesMutex);
    const CountedString string = FindString(*TablesOf(module), id, lcid);
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
    const std::lock_guard guard(tablesMutex);
    ModuleTables* const tables = TablesOf(module);
    const CountedString string = FindString(*tables, id, lcid);
    // A damaged table can leave a string on an odd address.
    if (string.characters == 0 || reinterpret_cast<uintptr_t>(string.units) % alignof(char16_t) != 0) return nullptr;
    const auto* text = reinterpret_cast<const char16_t*>(string.units);
    if (text[string.characters - 1] != 0) return nullptr;
    tables->hasAdopted = true;
    return text;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void ForgetStringTables(plat::Module* module) noexcept {
  const std::lock_guard guard(tablesMutex);
  for (ModuleTables** link = &allTables; *link != nullptr;) {
    ModuleTables* const tables = *link;
    if (tables->module == module && tables->hasAdopted) tables->module = nullptr;
    if (tables->module != module || module == nullptr) {
      link = &tables->next;
      continue;
    }
    *link = tables->next;
    delete tables;
  }
}

}  // namespace marlo
