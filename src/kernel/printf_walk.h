// SPDX-License-Identifier: Apache-2.0
// The walk over a format, for the functions that print.
#pragma once

#include <cstdarg>

#include "kernel/printf_conversion.h"
#include "kernel/text_output.h"

namespace marlo {

/// The arguments of a call, taken one after the other.
struct ArgumentList {
  va_list list;
};

/// Prints a terminated format until it ends or the room does. The caller stores the terminator.
void PutFormat(TextOutput* output, const char16_t* format, ArgumentList* arguments) noexcept;

/// True when a text must be formatted: it holds "%" or "$".
bool HoldsFormat(const char16_t* text) noexcept;

}  // namespace marlo
