// SPDX-License-Identifier: Apache-2.0
// The plain members of the vectorised rows.

#include "pixel/blend_rows.h"

#include <algorithm>

namespace marlo::pixel {

void CrossFadeRowPlain(uint8_t* destination, const uint8_t* source, int32_t channels, int32_t dstWeight14,
                       int32_t srcWeight14) noexcept {
  const bool mayPass = dstWeight14 + srcWeight14 > 16384;
  for (int32_t index = 0; index < channels; ++index) {
    const int32_t sum = (source[index] * srcWeight14 + destination[index] * dstWeight14 + 8192) >> 14;
    destination[index] = static_cast<uint8_t>(mayPass ? std::min(sum, 255) : sum);
  }
}

void PremultiplyRowPlain(tZRPIXEL32* pixels, int32_t count) noexcept {
  for (int32_t index = 0; index < count; ++index) {
    tZRPIXEL32& pixel = pixels[index];
    pixel.b = static_cast<uint8_t>(pixel.b * pixel.a / 255);
    pixel.g = static_cast<uint8_t>(pixel.g * pixel.a / 255);
    pixel.r = static_cast<uint8_t>(pixel.r * pixel.a / 255);
  }
}

}  // namespace marlo::pixel
