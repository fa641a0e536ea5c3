// SPDX-License-Identifier: Apache-2.0
// The same text by libfmt, with the format known at compile time only to the reader.
#include <fmt/format.h>

#include "printf/peers.h"

namespace bench_printf {

size_t ComposeWithFmt(char* buffer, size_t capacity, const char* text, int number, const char* name) {
  return fmt::format_to_n(buffer, capacity, fmt::runtime("{}: {} {}"), text, number, name).size;
}

}  // namespace bench_printf
