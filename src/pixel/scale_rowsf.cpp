// SPDX-License-Identifier: Apache-2.0
// Row kernels of the scalers for float pixels: the plain members.

#include "pixel/scale_rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;
constexpr float kFrom14 = 1.0f / 16384.0f;

const float* Floats(const uint8_t* row) noexcept { return reinterpret_cast<const float*>(row); }

void VerticalTaps(float* line, const uint8_t* const rows[4], const float weights[4], int32_t tapCount, int32_t pixels) {
  const float* row0 = Floats(rows[0]);
  const float* row1 = Floats(rows[1]);
  if (tapCount == 2) {
    for (int32_t index = 0; index < pixels * kChannels; ++index) {
      line[index] = row0[index] * weights[0] + row1[index] * weights[1];
    }
    return;
  }
  const float* row2 = Floats(rows[2]);
  const float* row3 = Floats(rows[3]);
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    line[index] =
        (row0[index] * weights[0] + row1[index] * weights[1]) + (row2[index] * weights[2] + row3[index] * weights[3]);
  }
}

void VerticalBox(float* line, const BoxRows& rows, int32_t length, int32_t pixels) {
  const float* first = Floats(rows.first);
  const float* last = Floats(rows.Last());
  const float firstWeight = static_cast<float>(rows.firstWeight) * kFrom14;
  const float lastWeight = static_cast<float>(rows.lastWeight) * kFrom14;
  const float reciprocal = 16384.0f / static_cast<float>(length);
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    float sum = first[index] * firstWeight + last[index] * lastWeight;
    for (int32_t row = 1; row < rows.count - 1; ++row) sum += Floats(rows.first + row * rows.stride)[index];
    line[index] = sum * reciprocal;
  }
}

void HorizontalTaps(float* out, const float* line, const TapTable& taps, int32_t tapCount, int32_t count) {
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const float* from = line + taps.first[pixel] * kChannels;
    const float* weights = taps.weights[pixel];
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      float value = from[channel] * weights[0] + from[kChannels + channel] * weights[1];
      if (tapCount == 4) {
        value += from[2 * kChannels + channel] * weights[2] + from[3 * kChannels + channel] * weights[3];
      }
      out[pixel * kChannels + channel] = value;
    }
  }
}

void HorizontalBox(float* out, const float* line, const Box* boxes, int32_t length, int32_t count) {
  const float reciprocal = 16384.0f / static_cast<float>(length);
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const Box& box = boxes[pixel];
    const float firstWeight = static_cast<float>(box.firstWeight) * kFrom14;
    const float lastWeight = static_cast<float>(box.lastWeight) * kFrom14;
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      float sum =
          line[box.first * kChannels + channel] * firstWeight + line[box.last * kChannels + channel] * lastWeight;
      for (int32_t column = box.first + 1; column < box.last; ++column) sum += line[column * kChannels + channel];
      out[pixel * kChannels + channel] = sum * reciprocal;
    }
  }
}

}  // namespace

const FloatRowKernels kFloatKernelsPlain = {VerticalTaps, VerticalBox, HorizontalTaps, HorizontalBox};

const FloatRowKernels& FloatKernels(bool avx2) noexcept { return avx2 ? kFloatKernelsAvx2 : kFloatKernelsPlain; }

}  // namespace marlo::pixel
