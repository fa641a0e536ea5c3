// SPDX-License-Identifier: Apache-2.0
// The blend operations on working pixels.
#pragma once

#include <cstdint>

#include "marlo110k/dib_copy.h"

namespace marlo::pixel {

/// Operations that the library asks for itself.
inline constexpr int32_t kMoveByWeight = 3;
inline constexpr int32_t kUnmixKey = 14;

/// Moves `from` toward `to`; weights are 65535-based and the shift rounds down.
inline int32_t MovedWord(int32_t from, int32_t to, int32_t weight) noexcept {
  return from + static_cast<int32_t>(int64_t{to - from} * weight >> 16);
}
/// The same with 255-based weights; the quotient is cut toward zero.
inline int32_t MovedByte(int32_t from, int32_t to, int32_t weight) noexcept {
  return from + (to - from) * weight / 256;
}

/// All four channels at once.
inline tZRPIXEL64 Moved(const tZRPIXEL64& from, const tZRPIXEL64& to, int32_t weight) noexcept {
  return {
      static_cast<uint16_t>(MovedWord(from.b, to.b, weight)), static_cast<uint16_t>(MovedWord(from.g, to.g, weight)),
      static_cast<uint16_t>(MovedWord(from.r, to.r, weight)), static_cast<uint16_t>(MovedWord(from.a, to.a, weight))};
}
inline tZRPIXEL32 Moved(const tZRPIXEL32& from, const tZRPIXEL32& to, int32_t weight) noexcept {
  return {static_cast<uint8_t>(MovedByte(from.b, to.b, weight)), static_cast<uint8_t>(MovedByte(from.g, to.g, weight)),
          static_cast<uint8_t>(MovedByte(from.r, to.r, weight)), static_cast<uint8_t>(MovedByte(from.a, to.a, weight))};
}
inline tZRPIXEL128 Moved(const tZRPIXEL128& from, const tZRPIXEL128& to, float weight) noexcept {
  return {from.b + (to.b - from.b) * weight, from.g + (to.g - from.g) * weight, from.r + (to.r - from.r) * weight,
          from.a + (to.a - from.a) * weight};
}

/// The function of an operation, or null. In floats only copies (0, 9, 10), the weighted move (3) and the empty
/// operations (16, 18) exist.
ZRXCHGBLENDFN FindBlendOp(int32_t op, int32_t form) noexcept;
ZRXCHGBLENDFN FindBlendOpFour(int32_t op, int32_t form) noexcept;

}  // namespace marlo::pixel
