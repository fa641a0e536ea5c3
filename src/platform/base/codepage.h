// SPDX-License-Identifier: Apache-2.0
// The ANSI code page: single-byte, Windows-1252 unless set otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

namespace plat {

/// @return false, changing nothing, for a page that isn't known (1250 to 1258 are, and 932 as a
/// double-byte page for detection only).
bool SetAnsiPage(uint32_t page) noexcept;
uint32_t AnsiPage() noexcept;

/// Converts `characters` UTF-16 units; an unmappable one becomes '?'.
/// @return bytes written, at most `capacityBytes`; no terminator is added.
size_t ToAnsi(const char16_t* text, size_t characters, char* buffer, size_t capacityBytes) noexcept;
/// Converts `bytes` bytes. @return characters written, at most `capacity`; no terminator is added.
size_t FromAnsi(const char* text, size_t bytes, char16_t* buffer, size_t capacity) noexcept;

}  // namespace plat
