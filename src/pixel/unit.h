// SPDX-License-Identifier: Apache-2.0
// Values from 0 to 1 and the bytes they stand for.
#pragma once

#include <algorithm>
#include <cstdint>

namespace marlo::pixel {

/// Cut to 0 to 1; NaN counts as 0.
inline double Unit(double value) noexcept { return value > 0.0 ? std::min(value, 1.0) : 0.0; }
/// In steps of a byte, toward zero.
inline uint8_t UnitByte(double value) noexcept { return static_cast<uint8_t>(Unit(value) * 255.0); }

}  // namespace marlo::pixel
