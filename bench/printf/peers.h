// SPDX-License-Identifier: Apache-2.0
// The question: "take 7: 44100 Studio" composed into a buffer.
#pragma once

#include <cstddef>

namespace bench_printf {

/// Composes with libfmt into `capacity` bytes. @return the bytes written.
size_t ComposeWithFmt(char* buffer, size_t capacity, const char* text, int number, const char* name);

}  // namespace bench_printf
