// SPDX-License-Identifier: Apache-2.0
// Settings that live as long as the process: the double of the file store.
#include <map>

#include "platform/sys/settings.h"
#include "platform/sys/settings_store.h"

namespace plat {
namespace {

/// Everything by folded name, so that lists come out sorted.
struct MemoryValue {
  std::string shown;
  SettingValue value;
};
struct MemoryKey {
  int64_t parent;
  std::string folded, shown;
  std::map<std::string, int64_t> subKeys;
  std::map<std::string, MemoryValue> values;
};

class MemorySettings final : public SettingsStore {
 public:
  uint32_t Prepare(bool, uint64_t* generation) override {
    *generation = 1;
    return 0;
  }

  uint32_t FindKey(const std::vector<SettingName>& path, bool create, int64_t* key) override {
    *key = kRootKey;
    for (const SettingName& part : path) {
      const std::string folded = part.Folded();
      auto& subKeys = keys_.at(*key).subKeys;
      const auto found = subKeys.find(folded);
      if (found != subKeys.end()) {
        *key = found->second;
        continue;
      }
      if (!create) return kSettingMissing;
      const int64_t number = ++lastNumber_;
      keys_.emplace(number, MemoryKey{*key, folded, part.Shown(), {}, {}});
      subKeys.emplace(folded, number);
      *key = number;
    }
    return 0;
  }

  uint32_t Query(int64_t key, SettingName name, SettingValue* value) override {
    const MemoryKey* place = Find(key);
    if (place == nullptr) return kSettingMissing;
    const auto found = place->values.find(name.Folded());
    if (found == place->values.end()) return kSettingMissing;
    *value = found->second.value;
    return 0;
  }

  uint32_t Set(int64_t key, SettingName name, uint32_t type, std::string_view data) override {
    MemoryKey* place = Find(key);
    if (place == nullptr) return kSettingKeyDeleted;
    MemoryValue& stored = place->values.try_emplace(name.Folded(), MemoryValue{name.Shown(), {}}).first->second;
    stored.value = {type, std::string(data)};
    return 0;
  }

  uint32_t Delete(int64_t key, SettingName name) override {
    MemoryKey* place = Find(key);
    return place != nullptr && place->values.erase(name.Folded()) != 0 ? 0 : kSettingMissing;
  }

  uint32_t DeleteKey(int64_t key, bool withSubKeys) override {
    MemoryKey* place = Find(key);
    if (place == nullptr) return kSettingMissing;
    if (!withSubKeys && !place->subKeys.empty()) return kSettingDenied;
    const auto subKeys = place->subKeys;
    for (const auto& [name, number] : subKeys) DeleteKey(number, true);
    keys_.at(place->parent).subKeys.erase(place->folded);
    keys_.erase(key);
    return 0;
  }

  uint32_t ListValues(int64_t key, std::vector<std::u16string>* names) override {
    const MemoryKey* place = Find(key);
    if (place == nullptr) return kSettingKeyDeleted;
    for (const auto& [folded, value] : place->values) names->push_back(FromUtf8(value.shown.c_str()));
    return 0;
  }

  uint32_t ListKeys(int64_t key, std::vector<std::u16string>* names) override {
    const MemoryKey* place = Find(key);
    if (place == nullptr) return kSettingMissing;
    for (const auto& [folded, number] : place->subKeys) names->push_back(FromUtf8(keys_.at(number).shown.c_str()));
    return 0;
  }

 private:
  MemoryKey* Find(int64_t key) {
    const auto found = keys_.find(key);
    return found != keys_.end() ? &found->second : nullptr;
  }

  int64_t lastNumber_ = kRootKey;
  std::map<int64_t, MemoryKey> keys_ = {{kRootKey, MemoryKey{0, {}, {}, {}, {}}}};
};

}  // namespace

std::unique_ptr<SettingsStore> MakeMemorySettings() { return std::make_unique<MemorySettings>(); }

}  // namespace plat
