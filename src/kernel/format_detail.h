// SPDX-License-Identifier: Apache-2.0
// The formats that error details and kernel messages use.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace marlo {

/// Writes `format` with its arguments into `capacity` characters and cuts what doesn't fit.
/// Understood are %s (UTF-16 text, null prints nothing), %d, %u, %x, %X, %c and %%, with the flags "0" and "-",
/// a width and, for %s, a precision. Anything else is copied as it stands and takes no argument.
/// @return the characters before the terminator.
size_t FormatDetailV(char16_t* buffer, size_t capacity, const char16_t* format, va_list arguments) noexcept;
size_t FormatDetail(char16_t* buffer, size_t capacity, const char16_t* format, ...) noexcept;

}  // namespace marlo
