// SPDX-License-Identifier: Apache-2.0
// Between UTF-8 of the command line and UTF-16 of the library.
#pragma once

#include <string>
#include <string_view>

namespace host {

/// Throws UsageError when the text isn't well-formed UTF-8: such a name can't be handed to the library.
std::u16string ToUtf16(std::string_view text);
/// A text of the library; an unpaired surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

}  // namespace host
