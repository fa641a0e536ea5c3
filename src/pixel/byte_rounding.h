// SPDX-License-Identifier: Apache-2.0
// The divisions by 255 and 256 that 8-bit blends are defined by.
#pragma once

#include <cstdint>

namespace marlo::pixel {

/// x / 255 to nearest for a product of two bytes, without a division. Signed arguments shift arithmetically.
constexpr int32_t Div255(int32_t x) noexcept { return (x + 128 + ((x + 128) >> 8)) >> 8; }
/// (x + 127) / 255; for products of two bytes the same as Div255.
constexpr int32_t Div255Quotient(int32_t x) noexcept { return (x + 127) / 255; }
/// A part of a byte by a 14-bit weight, to nearest.
constexpr int32_t RoundedPart(int32_t value, int32_t weight14) noexcept { return (value * weight14 + 8192) >> 14; }
/// A part by a 14-bit weight, cut toward zero.
constexpr int32_t CutPart(int32_t value, int32_t weight14) noexcept { return value * weight14 / 16384; }
/// A 14-bit weight on the scale of 255, to nearest.
constexpr int32_t Weight8(int32_t weight14) noexcept { return (weight14 * 255 + 8192) / 16384; }

constexpr uint8_t ClampedByte(int32_t value) noexcept {
  return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

}  // namespace marlo::pixel
