// SPDX-License-Identifier: Apache-2.0
// Bytes to floats and back: the plain rows.

#include "pixel/byte_float.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;
constexpr float kByteStep = 0.003921569f;

struct Fractions {
  float values[256];
  Fractions() noexcept {
    for (int32_t index = 0; index < 256; ++index) values[index] = static_cast<float>(index) * kByteStep;
  }
};

void ToBytes(uint8_t* to, const float* from, int32_t pixels, int32_t /*y*/) {
  for (int32_t index = 0; index < pixels * kChannels; ++index) to[index] = TruncatedByte(from[index]);
}

void ToBytesDithered(uint8_t* to, const float* from, int32_t pixels, int32_t y) {
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    to[index] = DitheredByte(from[index], index / kChannels, y);
  }
}

void ToFloats(float* to, const uint8_t* from, int32_t pixels) {
  const float* const fractions = ByteFractions();
  for (int32_t index = 0; index < pixels * kChannels; ++index) to[index] = fractions[from[index]];
}

}  // namespace

const float* ByteFractions() noexcept {
  static const Fractions fractions;
  return fractions.values;
}

const ByteFloatKernels kByteFloatPlain = {ToBytes, ToBytesDithered, ToFloats};

const ByteFloatKernels& ByteFloat(bool avx2) noexcept { return avx2 ? kByteFloatAvx2 : kByteFloatPlain; }

}  // namespace marlo::pixel
