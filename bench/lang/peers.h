// SPDX-License-Identifier: Apache-2.0
// What the peers are asked.
#pragma once

namespace bench_lang {

/// Formats a message without arguments; patterns are made on the first call.
const char16_t* FormatWithIcu(unsigned index);
inline constexpr unsigned kIcuMessages = 939;

}  // namespace bench_lang
