// SPDX-License-Identifier: Apache-2.0
// UTF-16 text: lengths and sizes are in characters (UTF-16 units) unless a name says bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace plat {

/// Characters before the terminator; 0 for null.
size_t TextLength(const char16_t* text) noexcept;
/// Copies with termination into `capacity` characters and cuts what doesn't fit.
/// @return the characters written before the terminator; nothing is written for capacity 0.
size_t CopyText(char16_t* buffer, size_t capacity, const char16_t* text) noexcept;
/// Ordinal comparison, negative, 0 or positive. Null stands before every text.
int CompareText(const char16_t* left, const char16_t* right) noexcept;
/// The same without regard to case (ASCII fast, the rest by simple case folding). Null stands before every text.
int CompareTextNoCase(const char16_t* left, const char16_t* right) noexcept;
char16_t UpperCase(char16_t character) noexcept;

/// Unpaired surrogates and bad sequences become U+FFFD.
std::string ToUtf8(const char16_t* text);
std::u16string FromUtf8(const char* text);

/// Value * multiplier / divisor with a 64-bit product, rounded half away from zero; -1 for divisor 0
/// or a result outside 32 bits.
int32_t MulDiv(int32_t value, int32_t multiplier, int32_t divisor) noexcept;

}  // namespace plat
