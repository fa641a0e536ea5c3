// SPDX-License-Identifier: Apache-2.0
// Profile files: sections of key and text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace plat {

/// The user's profile file, "win.ini" in the profile folder (MARLO_PROFILE_DIR or the configuration folder).
/// Empty when memory is short.
std::u16string UserProfilePath() noexcept;

/// Reads a number; a leading "0x" is not understood, text after the digits is ignored.
/// @return the default when the file, section or key is missing.
int32_t ProfileInt(const char16_t* path, const char16_t* section, const char16_t* key, int32_t defaultValue) noexcept;
/// Copies the text, or the default, cut to fit. @return characters written.
size_t ProfileText(const char16_t* path, const char16_t* section, const char16_t* key, const char16_t* defaultText,
                   char16_t* buffer, size_t characters) noexcept;

}  // namespace plat
