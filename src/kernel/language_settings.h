// SPDX-License-Identifier: Apache-2.0
// Where the user's choice of language is kept.
#pragma once

#include <cstdint>

namespace marlo {

/// Whose products' settings stand where no company is told.
inline constexpr char16_t kOwnCompany[] = u"Orlu Works";

/// The two trees of settings.
enum class SettingsRoot { kUser, kMachine };

/// Numbers in a settings store, as the language's persistence needs them.
struct NumberStore {
  bool (*read)(SettingsRoot root, const char16_t* key, const char16_t* name, uint32_t* number);
  bool (*write)(SettingsRoot root, const char16_t* key, const char16_t* name, uint32_t number);  ///< Makes the key.
};

/// Makes `store` the one in use; null, as at the start, keeps nothing. It must stay.
void SetLanguageStore(const NumberStore* store) noexcept;

}  // namespace marlo
