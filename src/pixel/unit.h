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

/// A colour, blue first, cut to 0 to 1 in both scales.
struct UnitColor {
  int32_t bytes[3];
  float floats[3];

  explicit UnitColor(const double color[3]) noexcept {
    for (int channel = 0; channel < 3; ++channel) {
      bytes[channel] = UnitByte(color[channel]);
      floats[channel] = static_cast<float>(Unit(color[channel]));
    }
  }
};

}  // namespace marlo::pixel
