// SPDX-License-Identifier: Apache-2.0
// The 80-bit sample rate of AIFF, to and from a whole number.
#include "marlo110k/iff.h"

namespace {

constexpr uint16_t kExponentBias = 16383;
constexpr uint16_t kTopBit = 0x8000;
constexpr double kLargestDoubled = 96000.0;

}  // namespace

uint32_t aiff_ConvertRate(uint16_t exponent, const uint16_t* mantissa) noexcept {
  if (mantissa == nullptr) return 0;
  if ((exponent & kTopBit) != 0) return 44100;
  double value = 0;
  for (int word = 3; word > 0; --word) value = (mantissa[word] + value) / 65536.0;
  value = ((mantissa[0] & ~kTopBit) + value) / 32768.0;
  if ((mantissa[0] & kTopBit) != 0) value += 1.0;
  // Below the bias the count wraps, and the value is doubled until the test stops it. The test comes before each
  // doubling, so that 192000 is reached from 96000 and nothing above it can be.
  auto doublings = static_cast<uint16_t>(exponent - kExponentBias);
  for (; doublings != 0 && value <= kLargestDoubled; --doublings) value *= 2.0;
  return static_cast<uint32_t>(value);
}

void aiff_CreateRate(uint32_t rate, uint16_t* exponent, uint16_t* mantissa) noexcept {
  if (exponent == nullptr || mantissa == nullptr) return;
  double value = rate;
  uint16_t halvings = 0;
  for (; value >= 2.0; value /= 2.0) ++halvings;
  *exponent = static_cast<uint16_t>(halvings + kExponentBias);
  uint16_t integerBit = 0;
  if (value >= 1.0) {
    integerBit = kTopBit;
    value -= 1.0;
  }
  value *= 32768.0;
  auto part = static_cast<uint16_t>(value);
  mantissa[0] = static_cast<uint16_t>(integerBit | part);
  for (int word = 1; word < 4; ++word) {
    value = (value - part) * 65536.0;
    part = static_cast<uint16_t>(value);
    mantissa[word] = part;
  }
}
