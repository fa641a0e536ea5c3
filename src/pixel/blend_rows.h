// SPDX-License-Identifier: Apache-2.0
// Rows that are worth a vector member: the weighted cross-fade and premultiplication of bytes.
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

namespace marlo::pixel {

/// Weights in 14 bits.
using CrossFadeRow = void (*)(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                              int32_t srcWeight14);
void CrossFadeRowPlain(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                       int32_t srcWeight14) noexcept;
/// For weights of 0 to 32767.
void CrossFadeRowAvx2(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                      int32_t srcWeight14) noexcept;

void PremultiplyRowPlain(tZRPIXEL32* pixels, int32_t count) noexcept;
void PremultiplyRowAvx2(tZRPIXEL32* pixels, int32_t count) noexcept;

}  // namespace marlo::pixel
