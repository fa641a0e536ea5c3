// SPDX-License-Identifier: Apache-2.0
// The tokens of formatted text: $(Name).
#pragma once

#include "kernel/text_output.h"

namespace marlo {

/// Longest name that a format can ask for.
inline constexpr size_t kTokenNameCharacters = 260;

/// Writes the value of the token with this terminated name. @return false, writing nothing, when there is none.
bool PutToken(TextOutput* output, const char16_t* name) noexcept;

}  // namespace marlo
