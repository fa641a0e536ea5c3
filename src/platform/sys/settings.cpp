// SPDX-License-Identifier: Apache-2.0
// The trees of settings over their backend: which store is in use, open keys, paths.
#include "platform/sys/settings.h"

#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>
#include <new>

#include "platform/base/unload.h"
#include "platform/sys/settings_store.h"

namespace plat {

struct SettingsKey {
  SettingsTree tree;
  std::u16string path;
  int64_t number = 0;
  uint64_t generation = 0;
};

namespace {

constexpr const char* kFileNames[kSettingsTrees] = {"user.db", "machine.db", "classes.db"};

/// A tree's store while it is in use. Its state needs neither an initialiser nor a destructor to run.
struct Slot {
  std::mutex mutex;
  SettingsStore* store = nullptr;
  uint64_t uses = 0;  ///< Tells the stores that followed each other apart.
};
constinit Slot slots[kSettingsTrees];

struct Choice {
  SettingsBackend backend = SettingsBackend::kFiles;
  char16_t folder[1024] = {};
};
constinit Choice choice;
constinit std::mutex choiceMutex;

std::unique_ptr<SettingsStore> MakeStore(SettingsTree tree) {
  const std::lock_guard lock(choiceMutex);
  if (choice.backend == SettingsBackend::kMemory) return MakeMemorySettings();
  const std::u16string folder = choice.folder[0] != 0 ? std::u16string(choice.folder) : SettingsFolder();
  return MakeFileSettings(ToUtf8(folder.c_str()) + "/" + kFileNames[static_cast<size_t>(tree)]);
}

std::vector<SettingName> SplitPath(std::u16string_view path) {
  std::vector<SettingName> parts;
  while (!path.empty()) {
    const size_t end = std::min(path.find(u'\\'), path.size());
    if (end > 0) parts.push_back({path.substr(0, end)});
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return parts;
}

SettingName NameOf(const char16_t* name) {
  return {name != nullptr ? std::u16string_view(name) : std::u16string_view()};
}

enum class Use { kRead, kWrite };

/// Runs `action(store, generation)` on a tree's store, once more when the store was replaced under it.
template <typename Action>
uint32_t WithStore(Use use, SettingsTree tree, const Action& action) noexcept {
  try {
    Slot& slot = slots[static_cast<size_t>(tree)];
    const std::lock_guard lock(slot.mutex);
    if (slot.store == nullptr) {
      slot.store = MakeStore(tree).release();
      ++slot.uses;
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
      uint64_t generation = 0;
      uint32_t result = slot.store->Prepare(use == Use::kWrite, &generation);
      if (result == 0) result = action(*slot.store, slot.uses << 32 | generation);
      if (result != SettingsStore::kReplaced) return result;
    }
    return kSettingDamaged;
  } catch (const std::bad_alloc&) {
    return kSettingNoMemory;
  }
}

/// The same for an open key, which finds its place anew in a store that has been replaced.
template <typename Action>
uint32_t WithKey(Use use, SettingsKey* key, const Action& action) noexcept {
  if (key == nullptr) return kSettingMissing;
  return WithStore(use, key->tree, [&](SettingsStore& store, uint64_t generation) {
    if (key->generation != generation) {
      const uint32_t result = store.FindKey(SplitPath(key->path), true, &key->number);
      if (result != 0) return result;
      key->generation = generation;
    }
    return action(store, key->number);
  });
}

/// The same for a key that is named by its path.
template <typename Action>
uint32_t WithPath(Use use, SettingsTree tree, const char16_t* path, const Action& action) noexcept {
  return WithStore(use, tree, [&](SettingsStore& store, uint64_t) {
    int64_t number = 0;
    const uint32_t result = store.FindKey(SplitPath(NameOf(path).name), false, &number);
    return result != 0 ? result : action(store, number);
  });
}

uint32_t Open(SettingsTree tree, const char16_t* path, bool create, SettingsKey** key) noexcept {
  *key = nullptr;
  if (path == nullptr) return kSettingBadName;
  try {
    auto opened = std::make_unique<SettingsKey>(SettingsKey{tree, path});
    const uint32_t result =
        WithStore(create ? Use::kWrite : Use::kRead, tree, [&](SettingsStore& store, uint64_t generation) {
          opened->generation = generation;
          return store.FindKey(SplitPath(opened->path), create, &opened->number);
        });
    if (result == 0) *key = opened.release();
    return result;
  } catch (const std::bad_alloc&) {
    return kSettingNoMemory;
  }
}

uint32_t DeleteAt(SettingsTree tree, const char16_t* path, bool withSubKeys) noexcept {
  return WithPath(Use::kWrite, tree, path, [&](SettingsStore& store, int64_t number) {
    return number == SettingsStore::kRootKey ? kSettingBadName : store.DeleteKey(number, withSubKeys);
  });
}

void DropStores() noexcept {
  for (Slot& slot : slots) {
    const std::lock_guard lock(slot.mutex);
    delete slot.store;
    slot.store = nullptr;
  }
}

[[gnu::destructor(kFreeAtUnload)]] void OnUnload() { DropStores(); }

}  // namespace

uint32_t CreateSettingsKey(SettingsTree tree, const char16_t* path, SettingsKey** key) noexcept {
  return Open(tree, path, true, key);
}

uint32_t OpenSettingsKey(SettingsTree tree, const char16_t* path, SettingsKey** key) noexcept {
  return Open(tree, path, false, key);
}

void CloseSettingsKey(SettingsKey* key) noexcept { delete key; }

uint32_t QuerySetting(SettingsKey* key, const char16_t* name, uint32_t* type, void* buffer, uint32_t* bytes) noexcept {
  return WithKey(Use::kRead, key, [&](SettingsStore& store, int64_t number) {
    SettingValue value;
    const uint32_t result = store.Query(number, NameOf(name), &value);
    if (result != 0) return result;
    const auto stored = static_cast<uint32_t>(value.data.size());
    const uint32_t room = buffer != nullptr ? *bytes : 0;
    if (room != 0) std::memcpy(buffer, value.data.data(), std::min(room, stored));
    if (type != nullptr) *type = value.type;
    *bytes = stored;
    return stored > room && buffer != nullptr ? kSettingMoreData : 0;
  });
}

uint32_t SetSetting(SettingsKey* key, const char16_t* name, uint32_t type, const void* data, uint32_t bytes) noexcept {
  const std::string_view view(bytes != 0 ? static_cast<const char*>(data) : "", bytes);
  return WithKey(Use::kWrite, key,
                 [&](SettingsStore& store, int64_t number) { return store.Set(number, NameOf(name), type, view); });
}

uint32_t DeleteSetting(SettingsKey* key, const char16_t* name) noexcept {
  return WithKey(Use::kWrite, key,
                 [&](SettingsStore& store, int64_t number) { return store.Delete(number, NameOf(name)); });
}

uint32_t ListSettings(SettingsKey* key, std::vector<std::u16string>* names) noexcept {
  names->clear();
  return WithKey(Use::kRead, key,
                 [&](SettingsStore& store, int64_t number) { return store.ListValues(number, names); });
}

uint32_t DeleteSettingsKey(SettingsTree tree, const char16_t* path) noexcept { return DeleteAt(tree, path, false); }

uint32_t DeleteSettingsBranch(SettingsTree tree, const char16_t* path) noexcept { return DeleteAt(tree, path, true); }

uint32_t ListSettingsKeys(SettingsTree tree, const char16_t* path, std::vector<std::u16string>* names) noexcept {
  names->clear();
  return WithPath(Use::kRead, tree, path,
                  [&](SettingsStore& store, int64_t number) { return store.ListKeys(number, names); });
}

std::u16string SettingsFolder() {
  const char* folder = getenv("MARLO_SETTINGS_DIR");
  if (folder != nullptr && *folder != 0) return FromUtf8(folder);
  const char* configuration = getenv("XDG_CONFIG_HOME");
  if (configuration != nullptr && configuration[0] == '/') return FromUtf8(configuration) + u"/marlo110k";
  const char* home = getenv("HOME");
  return (home != nullptr ? FromUtf8(home) : std::u16string()) + u"/.config/marlo110k";
}

void UseSettings(SettingsBackend backend, const char16_t* folder) noexcept {
  {
    const std::lock_guard lock(choiceMutex);
    choice.backend = backend;
    CopyText(choice.folder, std::size(choice.folder), folder != nullptr ? folder : u"");
  }
  DropStores();
}

}  // namespace plat
