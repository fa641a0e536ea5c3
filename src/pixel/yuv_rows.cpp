// SPDX-License-Identifier: Apache-2.0
// Rows of video in bytes to 4-byte pixels and back: the plain members.

#include "pixel/yuv_rows.h"

#include <cstring>

#include "pixel/byte_float.h"
#include "pixel/kernel_level.h"
#include "pixel/v210.h"

namespace marlo::pixel {

namespace {

constexpr int32_t kPixelBytes = 4;
constexpr int32_t kPairBytes = 2 * kPixelBytes;

/// What a pair's chroma adds to luma.
struct Tint {
  int32_t blue, green, red;
  Tint(int32_t u, int32_t v, const DecodeMatrix& matrix) noexcept {
    const int32_t half = 1 << (matrix.shift - 1);
    u -= 128;
    v -= 128;
    blue = (u * matrix.uToBlue + half) >> matrix.shift;
    green = (u * matrix.uToGreen + v * matrix.vToGreen + half) >> matrix.shift;
    red = (v * matrix.vToRed + half) >> matrix.shift;
  }
  void Store(uint8_t* pixel, int32_t luma) const noexcept {
    pixel[0] = ClampedByte(luma + blue);
    pixel[1] = ClampedByte(luma + green);
    pixel[2] = ClampedByte(luma + red);
    pixel[3] = 255;
  }
};

/// `kLuma` and `kChroma` are the places of the first sample of each in a pair.
template <int kLuma, int kChroma>
void FromPacked(uint8_t* pixels, const uint8_t* packed, int32_t pairs, const DecodeMatrix& matrix) {
  for (int32_t pair = 0; pair < pairs; ++pair, pixels += kPairBytes, packed += 4) {
    const Tint tint(packed[kChroma], packed[kChroma + 2], matrix);
    tint.Store(pixels, packed[kLuma]);
    tint.Store(pixels + kPixelBytes, packed[kLuma + 2]);
  }
}

void FromPlanes(uint8_t* pixels, const uint8_t* luma, const uint8_t* u, const uint8_t* v, int32_t pairs,
                const DecodeMatrix& matrix) {
  for (int32_t pair = 0; pair < pairs; ++pair, pixels += kPairBytes) {
    const Tint tint(u[pair], v[pair], matrix);
    tint.Store(pixels, luma[2 * pair]);
    tint.Store(pixels + kPixelBytes, luma[2 * pair + 1]);
  }
}

int32_t Dot(const int16_t (&row)[3], const int32_t (&channels)[3]) noexcept {
  return row[0] * channels[0] + row[1] * channels[1] + row[2] * channels[2];
}

uint8_t ClampedSample(int32_t value) noexcept { return static_cast<uint8_t>(std::clamp(value, 1, 254)); }

void ToUyvy(uint8_t* packed, const uint8_t* pixels, int32_t pairs, const PackedEncodeMatrix& matrix) {
  constexpr int32_t kHalf = 2048;
  constexpr int32_t kCenter = (128 << 12) + kHalf;
  for (int32_t pair = 0; pair < pairs; ++pair, pixels += kPairBytes, packed += 4) {
    const int32_t left[3] = {pixels[0], pixels[1], pixels[2]};
    const int32_t right[3] = {pixels[4], pixels[5], pixels[6]};
    const int32_t sum[3] = {left[0] + right[0], left[1] + right[1], left[2] + right[2]};
    packed[0] = ClampedSample((Dot(matrix.u, sum) + kCenter) >> 12);
    packed[1] = ClampedSample((Dot(matrix.luma, left) + kHalf) >> 12);
    packed[2] = ClampedSample((Dot(matrix.v, sum) + kCenter) >> 12);
    packed[3] = ClampedSample((Dot(matrix.luma, right) + kHalf) >> 12);
  }
}

void CutV210(uint8_t* packed, const uint8_t* words, int32_t pairs) {
  V210Reader reader(words);
  for (int64_t sample = 0; sample < int64_t{pairs} * 4; ++sample) {
    packed[sample] = static_cast<uint8_t>(reader.Next() >> 2);
  }
}

void Dither8Luma(uint16_t* codes, const uint8_t* pixels, int32_t count, const DecimalMatrix& matrix, int32_t y) {
  const uint8_t(&dither)[4] = kDitherMatrix[y & 3];
  for (int32_t x = 0; x < count; ++x, pixels += kPixelBytes) {
    const int32_t channels[3] = {pixels[0], pixels[1], pixels[2]};
    codes[x] = ClampedSample((Dot(matrix.luma, channels) + dither[x & 3] * (kDecimalOne / 16)) / kDecimalOne);
  }
}

void Dither8Chroma(uint16_t* u, uint16_t* v, const uint8_t* first, const uint8_t* second, int32_t pairs,
                   const DecimalMatrix& matrix, int32_t y) {
  const double gain = (second ? kByteChromaGain4 : kByteChromaGain2) / kDecimalOne;
  for (int32_t pair = 0; pair < pairs; ++pair) {
    int32_t sum[3];
    for (int32_t channel = 0; channel < 3; ++channel) {
      const int32_t at = pair * kPairBytes + channel;
      sum[channel] = first[at] + first[at + kPixelBytes];
      if (second) sum[channel] += second[at] + second[at + kPixelBytes];
    }
    const double base = 128.0 + kDitherMatrix[y & 3][pair & 3] / 16.0 + kCodeEpsilon;
    const auto code = [&](int32_t dot) {
      return static_cast<uint16_t>(std::clamp(static_cast<double>(dot) * gain + base, 1.0, 254.0));
    };
    u[pair] = code(Dot(matrix.u, sum));
    v[pair] = code(Dot(matrix.v, sum));
  }
}

}  // namespace

const YuvRows kYuvRowsPlain = {FromPacked<1, 0>, FromPacked<0, 1>, FromPlanes,   ToUyvy,
                               CutV210,          Dither8Luma,      Dither8Chroma};

const YuvRows& YuvRowKernels() noexcept { return UseAvx2() ? kYuvRowsAvx2 : kYuvRowsPlain; }

}  // namespace marlo::pixel
