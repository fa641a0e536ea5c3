// SPDX-License-Identifier: Apache-2.0
// What a backend of the settings has to do. The common part holds the store's lock around every call.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/text.h"

namespace plat {

/// A name as it is written, and the form by which it is found and sorted.
struct SettingName {
  std::u16string_view name;

  std::string Shown() const { return ToUtf8(std::u16string(name).c_str()); }
  std::string Folded() const {
    std::u16string folded(name);
    for (char16_t& character : folded) character = UpperCase(character);
    return ToUtf8(folded.c_str());
  }
};

struct SettingValue {
  uint32_t type = 0;
  std::string data;
};

/// One tree. Keys go by numbers, which are good for one generation of the store. Results are those of settings.h.
class SettingsStore {
 public:
  static constexpr int64_t kRootKey = 1;
  /// The store has been replaced under the call; Prepare tells the new generation.
  static constexpr uint32_t kReplaced = 0xFFFFFFFF;

  virtual ~SettingsStore() = default;
  /// Makes the store ready and tells its generation, before each of the other calls. A store that somebody has taken
  /// away is noticed at once before a write, and by reads soon.
  virtual uint32_t Prepare(bool toWrite, uint64_t* generation) = 0;
  virtual uint32_t FindKey(const std::vector<SettingName>& path, bool create, int64_t* key) = 0;
  virtual uint32_t Query(int64_t key, SettingName name, SettingValue* value) = 0;
  virtual uint32_t Set(int64_t key, SettingName name, uint32_t type, std::string_view data) = 0;
  virtual uint32_t Delete(int64_t key, SettingName name) = 0;
  virtual uint32_t DeleteKey(int64_t key, bool withSubKeys) = 0;
  virtual uint32_t ListValues(int64_t key, std::vector<std::u16string>* names) = 0;
  virtual uint32_t ListKeys(int64_t key, std::vector<std::u16string>* names) = 0;
};

std::unique_ptr<SettingsStore> MakeMemorySettings();
/// @param file its path; folders are made when they are missing.
std::unique_ptr<SettingsStore> MakeFileSettings(const std::string& file);

}  // namespace plat
