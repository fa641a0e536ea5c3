// SPDX-License-Identifier: Apache-2.0
// Persistent settings: trees of keys whose values carry a type. Other processes see a change at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace plat {

/// The trees. Each is a file of its own in the settings folder (MARLO_SETTINGS_DIR or the configuration folder).
enum class SettingsTree : uint8_t { kUser, kMachine, kClasses };
inline constexpr uint32_t kSettingsTrees = 3;

/// Types of values, in their published numbers.
enum SettingType : uint32_t {
  kSettingText = 1,
  kSettingPathText = 2,  ///< Text with names of environment variables.
  kSettingBytes = 3,
  kSettingNumber = 4,  ///< 32 bits.
  kSettingTexts = 7,   ///< Texts one behind the other, each terminated, and a terminator behind the last.
};

// What these functions answer beside 0: platform error numbers.
inline constexpr uint32_t kSettingMissing = 2;        ///< No such key or value.
inline constexpr uint32_t kSettingDenied = 5;         ///< The store can't be written, or the key has sub-keys.
inline constexpr uint32_t kSettingNoMemory = 14;      //
inline constexpr uint32_t kSettingBadName = 87;       ///< A key's name is missing.
inline constexpr uint32_t kSettingMoreData = 234;     ///< The buffer is too small.
inline constexpr uint32_t kSettingDamaged = 1009;     ///< The store is of a later release, or damaged once more.
inline constexpr uint32_t kSettingKeyDeleted = 1018;  ///< Somebody has deleted the key meanwhile.

/// An open key; it caches nothing but its place. One thread at a time.
struct SettingsKey;

// Paths have backslashes between their levels. Names of keys and values don't distinguish case and keep that of the
// first writing; null or an empty name means the key's default value. [any thread]

/// Opens a key, making all of its path that is missing. @param key receives it; null on failure.
uint32_t CreateSettingsKey(SettingsTree tree, const char16_t* path, SettingsKey** key) noexcept;
/// Opens a key that exists.
uint32_t OpenSettingsKey(SettingsTree tree, const char16_t* path, SettingsKey** key) noexcept;
/// Null is allowed.
void CloseSettingsKey(SettingsKey* key) noexcept;

/// Reads a value.
/// @param type optional. @param buffer null asks for the size. @param bytes in: size of the buffer; out: size of the
/// value.
/// @return 0, kSettingMoreData with the buffer filled as far as it goes, kSettingMissing, or why the store failed.
uint32_t QuerySetting(SettingsKey* key, const char16_t* name, uint32_t* type, void* buffer, uint32_t* bytes) noexcept;
/// Writes a value whole, whatever its former type.
uint32_t SetSetting(SettingsKey* key, const char16_t* name, uint32_t type, const void* data, uint32_t bytes) noexcept;
uint32_t DeleteSetting(SettingsKey* key, const char16_t* name) noexcept;
/// The names of the values, sorted.
uint32_t ListSettings(SettingsKey* key, std::vector<std::u16string>* names) noexcept;

/// Deletes a key with its values. @return kSettingDenied when it has sub-keys.
uint32_t DeleteSettingsKey(SettingsTree tree, const char16_t* path) noexcept;
/// Deletes a key with all below it, in one step.
uint32_t DeleteSettingsBranch(SettingsTree tree, const char16_t* path) noexcept;
/// The names of the sub-keys, sorted. An empty path is the root.
uint32_t ListSettingsKeys(SettingsTree tree, const char16_t* path, std::vector<std::u16string>* names) noexcept;

/// The folder of the settings files.
std::u16string SettingsFolder();

// ---- Tests -----------------------------------------------------------------------------------------

enum class SettingsBackend { kFiles, kMemory };
/// Drops the stores in use and goes on with others. Open keys find their place again.
/// @param folder null for that of the environment.
void UseSettings(SettingsBackend backend, const char16_t* folder) noexcept;

}  // namespace plat
