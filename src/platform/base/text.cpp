// SPDX-License-Identifier: Apache-2.0
// UTF-16 text primitives.
#include "platform/base/text.h"

namespace plat {

size_t TextLength(const char16_t* text) noexcept {
  size_t length = 0;
  if (text != nullptr) {
    while (text[length] != 0) ++length;
  }
  return length;
}

}  // namespace plat
