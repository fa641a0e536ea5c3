// SPDX-License-Identifier: Apache-2.0
// Guesses the character set of a text from its bytes.
#pragma once

#include <cstdint>

namespace plat {

/// The likeliest character set.
struct CharsetGuess {
  uint32_t codePage = 0;   ///< Its published code page number; 0 when it has none.
  int32_t confidence = 0;  ///< 0 to 100.
};

/// The best of at most ten candidates. Nothing for null or no bytes.
CharsetGuess GuessCharset(const uint8_t* text, uint32_t bytes) noexcept;

}  // namespace plat
