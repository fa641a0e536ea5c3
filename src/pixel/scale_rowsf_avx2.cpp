// SPDX-License-Identifier: Apache-2.0
// Row kernels of the scalers for float pixels in AVX2: the plain members' products and sums in their order, two
// pixels at a time.

#include <immintrin.h>

#include "pixel/scale_rows.h"

#define MARLO_AVX2 __attribute__((target("avx2")))

namespace marlo::pixel {

namespace {

constexpr int32_t kChannels = 4;
constexpr float kFrom14 = 1.0f / 16384.0f;

const float* Floats(const uint8_t* row) { return reinterpret_cast<const float*>(row); }

MARLO_AVX2 void VerticalTaps(float* line, const uint8_t* const rows[4], const float weights[4], int32_t tapCount,
                             int32_t pixels) {
  const __m256 weight0 = _mm256_set1_ps(weights[0]);
  const __m256 weight1 = _mm256_set1_ps(weights[1]);
  const __m256 weight2 = _mm256_set1_ps(weights[2]);
  const __m256 weight3 = _mm256_set1_ps(weights[3]);
  int32_t pixel = 0;
  for (; pixel + 2 <= pixels; pixel += 2) {
    const int32_t at = pixel * kChannels;
    __m256 sum = _mm256_add_ps(_mm256_mul_ps(_mm256_loadu_ps(Floats(rows[0]) + at), weight0),
                               _mm256_mul_ps(_mm256_loadu_ps(Floats(rows[1]) + at), weight1));
    if (tapCount == 4) {
      sum = _mm256_add_ps(sum, _mm256_add_ps(_mm256_mul_ps(_mm256_loadu_ps(Floats(rows[2]) + at), weight2),
                                             _mm256_mul_ps(_mm256_loadu_ps(Floats(rows[3]) + at), weight3)));
    }
    _mm256_storeu_ps(line + at, sum);
  }
  if (pixel == pixels) return;
  const uint8_t* rest[4] = {};
  for (int32_t tap = 0; tap < tapCount; ++tap) rest[tap] = rows[tap] + pixel * 16;
  kFloatKernelsPlain.verticalTaps(line + pixel * kChannels, rest, weights, tapCount, pixels - pixel);
}

MARLO_AVX2 void VerticalBox(float* line, const BoxRows& rows, int32_t length, int32_t pixels) {
  const __m256 firstWeight = _mm256_set1_ps(static_cast<float>(rows.firstWeight) * kFrom14);
  const __m256 lastWeight = _mm256_set1_ps(static_cast<float>(rows.lastWeight) * kFrom14);
  const __m256 reciprocal = _mm256_set1_ps(16384.0f / static_cast<float>(length));
  int32_t pixel = 0;
  for (; pixel + 2 <= pixels; pixel += 2) {
    const int32_t at = pixel * kChannels;
    __m256 sum = _mm256_add_ps(_mm256_mul_ps(_mm256_loadu_ps(Floats(rows.first) + at), firstWeight),
                               _mm256_mul_ps(_mm256_loadu_ps(Floats(rows.Last()) + at), lastWeight));
    for (int32_t row = 1; row < rows.count - 1; ++row) {
      sum = _mm256_add_ps(sum, _mm256_loadu_ps(Floats(rows.first + row * rows.stride) + at));
    }
    _mm256_storeu_ps(line + at, _mm256_mul_ps(sum, reciprocal));
  }
  BoxRows rest = rows;
  rest.first += pixel * 16;
  kFloatKernelsPlain.verticalBox(line + pixel * kChannels, rest, length, pixels - pixel);
}

MARLO_AVX2 __m128 Tap(const float* from, int32_t tap, const float* weights) {
  return _mm_mul_ps(_mm_loadu_ps(from + tap * kChannels), _mm_broadcast_ss(weights + tap));
}

MARLO_AVX2 void HorizontalTaps(float* out, const float* line, const TapTable& taps, int32_t tapCount, int32_t count) {
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const float* from = line + taps.first[pixel] * kChannels;
    const float* weights = taps.weights[pixel];
    __m128 sum = _mm_add_ps(Tap(from, 0, weights), Tap(from, 1, weights));
    if (tapCount == 4) sum = _mm_add_ps(sum, _mm_add_ps(Tap(from, 2, weights), Tap(from, 3, weights)));
    _mm_storeu_ps(out + pixel * kChannels, sum);
  }
}

MARLO_AVX2 void HorizontalBox(float* out, const float* line, const Box* boxes, int32_t length, int32_t count) {
  const __m128 reciprocal = _mm_set1_ps(16384.0f / static_cast<float>(length));
  for (int32_t pixel = 0; pixel < count; ++pixel) {
    const Box& box = boxes[pixel];
    const __m128 firstWeight = _mm_set1_ps(static_cast<float>(box.firstWeight) * kFrom14);
    const __m128 lastWeight = _mm_set1_ps(static_cast<float>(box.lastWeight) * kFrom14);
    __m128 sum = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(line + box.first * kChannels), firstWeight),
                            _mm_mul_ps(_mm_loadu_ps(line + box.last * kChannels), lastWeight));
    for (int32_t column = box.first + 1; column < box.last; ++column) {
      sum = _mm_add_ps(sum, _mm_loadu_ps(line + column * kChannels));
    }
    _mm_storeu_ps(out + pixel * kChannels, _mm_mul_ps(sum, reciprocal));
  }
}

}  // namespace

const FloatRowKernels kFloatKernelsAvx2 = {VerticalTaps, VerticalBox, HorizontalTaps, HorizontalBox};

}  // namespace marlo::pixel
