// SPDX-License-Identifier: Apache-2.0
// Row kernels of the scalers for 8-bit pixels: the plain members, which say what the others must give.

#include <algorithm>

#include "pixel/scale_rows.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;

/// Divides a 14-bit product sum, rounded half up and then cut toward zero.
int32_t Rounded(int32_t sum) noexcept { return (sum + 8192) / kOne; }

uint8_t Clamped(int64_t value) noexcept { return static_cast<uint8_t>(std::clamp<int64_t>(value, 0, 255)); }

/// from * (16384 - f) + to * f, rounded, with the doubled fraction.
int32_t Mixed(int32_t from, int32_t to, int32_t doubledFraction) noexcept {
  return from + (((to - from) * doubledFraction + kOne) >> 15);
}

void VerticalLinear(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels) {
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    line[index] = static_cast<int16_t>(Mixed(rows[0][index], rows[1][index], weights[0]));
  }
}

void VerticalCubic(int16_t* line, const uint8_t* const rows[4], const int16_t weights[4], int32_t pixels) {
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    line[index] = static_cast<int16_t>(Rounded(rows[0][index] * weights[0] + rows[1][index] * weights[1] +
                                               rows[2][index] * weights[2] + rows[3][index] * weights[3]));
  }
}

void VerticalBox(int16_t* line, const BoxRows& rows, int32_t length, int32_t pixels) {
  const uint8_t* last = rows.Last();
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    int64_t between = 0;
    for (int32_t row = 1; row < rows.count - 1; ++row) between += rows.first[row * rows.stride + index];
    const int64_t sum =
        between * kOne + int64_t{rows.first[index]} * rows.firstWeight + int64_t{last[index]} * rows.lastWeight;
    line[index] = static_cast<int16_t>(sum / length);
  }
}

void HorizontalLinear(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count) {
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const int16_t* from = line + taps.first[pixel] * kChannels;
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      out[pixel * kChannels + channel] =
          static_cast<uint8_t>(Mixed(from[channel], from[kChannels + channel], taps.weights14[pixel][0]));
    }
  }
}

void HorizontalCubic(uint8_t* out, const int16_t* line, const TapTable& taps, int32_t count) {
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const int16_t* from = line + taps.first[pixel] * kChannels;
    const int16_t* weights = taps.weights14[pixel];
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      int32_t sum = 0;
      for (int32_t tap = 0; tap < 4; ++tap) sum += from[tap * kChannels + channel] * weights[tap];
      out[pixel * kChannels + channel] = Clamped(Rounded(sum));
    }
  }
}

void HorizontalBox(uint8_t* out, const int16_t* line, const Box* boxes, int32_t length, int32_t count) {
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const Box& box = boxes[pixel];
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      int64_t between = 0;
      for (int32_t column = box.first + 1; column < box.last; ++column) between += line[column * kChannels + channel];
      const int64_t sum = between * kOne + int64_t{line[box.first * kChannels + channel]} * box.firstWeight +
                          int64_t{line[box.last * kChannels + channel]} * box.lastWeight;
      out[pixel * kChannels + channel] = Clamped(sum / length);
    }
  }
}

/// Sums products of the x and y parts: corners are cut to 14 bits one by one, edges and middle are exact.
/// `sums` is a scratch line of what stands between the first and the last row.
void BoxBoth(uint8_t* out, uint32_t* sums, const BoxRows& rows, const Box* boxes, int64_t area, int32_t count,
             int32_t pixels) {
  const uint8_t* first = rows.first;
  const uint8_t* last = rows.Last();
  for (int32_t index = 0; index < pixels * kChannels; ++index) {
    uint32_t between = 0;
    for (int32_t row = 1; row < rows.count - 1; ++row) between += first[row * rows.stride + index];
    sums[index] = between;
  }
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const Box& box = boxes[pixel];
    for (int32_t channel = 0; channel < kChannels; ++channel) {
      const auto edge = [&](int32_t column, int64_t weight) {
        const int32_t at = column * kChannels + channel;
        return int64_t{sums[at]} * weight + first[at] * (weight * rows.firstWeight >> kFractionBits) +
               last[at] * (weight * rows.lastWeight >> kFractionBits);
      };
      int64_t sum = edge(box.first, box.firstWeight) + edge(box.last, box.lastWeight);
      for (int32_t column = box.first + 1; column < box.last; ++column) sum += edge(column, kOne);
      out[pixel * kChannels + channel] = Clamped(sum / area);
    }
  }
}

}  // namespace

const ByteRowKernels kByteKernelsPlain = {
    VerticalLinear, VerticalCubic, VerticalBox, HorizontalLinear, HorizontalCubic, HorizontalBox, BoxBoth, BoxBoth,
};

const ByteRowKernels& ByteKernels(bool avx2) noexcept { return avx2 ? kByteKernelsAvx2 : kByteKernelsPlain; }

}  // namespace marlo::pixel
