// SPDX-License-Identifier: Apache-2.0
// Reads a file's version resource without loading the file.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plat {

/// First row of the resource's translation table, as language and code page.
/// @return false when the file has no version resource.
bool VersionTranslation(const char16_t* path, uint16_t* language, uint16_t* codePage) noexcept;
/// Copies the value at a path of the form "\StringFileInfo\040904B0\CompanyName" and cuts it to fit.
bool VersionValue(const char16_t* path, const char16_t* subBlock, char16_t* buffer, size_t characters) noexcept;

}  // namespace plat
