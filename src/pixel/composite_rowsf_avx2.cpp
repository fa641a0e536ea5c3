// SPDX-License-Identifier: Apache-2.0
// The composite modes on float pixels in AVX2: the same operations in the same order, two pixels a register.

#include <immintrin.h>

#include "pixel/composite_rows.h"

#define MARLO_AVX2 __attribute__((target("avx2")))
#define MARLO_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace marlo::pixel {

namespace {

constexpr int32_t kPixelsAtOnce = 4;
constexpr int kAlphaLanes = 0x88;

MARLO_AVX2_INLINE __m256 Load(const tZRPIXEL128* from) { return _mm256_loadu_ps(&from->b); }
MARLO_AVX2_INLINE void Store(tZRPIXEL128* to, __m256 value) { _mm256_storeu_ps(&to->b, value); }
MARLO_AVX2_INLINE __m256 One() { return _mm256_set1_ps(1.0f); }
/// The alpha of each pixel in all its channels.
MARLO_AVX2_INLINE __m256 Alphas(__m256 pixels) { return _mm256_permute_ps(pixels, 0xFF); }
MARLO_AVX2_INLINE __m256 WithAlpha(__m256 colors, __m256 alphas) {
  return _mm256_blend_ps(colors, alphas, kAlphaLanes);
}
/// The order of the operands makes NaN 0.
MARLO_AVX2_INLINE __m256 Unit(__m256 value) { return _mm256_min_ps(_mm256_max_ps(value, _mm256_setzero_ps()), One()); }

struct Copy {
  MARLO_AVX2_INLINE static __m256 Apply(__m256, __m256 s, __m256) { return s; }
};
struct Move {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    return _mm256_add_ps(d, _mm256_mul_ps(_mm256_sub_ps(s, d), op));
  }
};
struct Add {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    const __m256 sum = _mm256_add_ps(d, _mm256_mul_ps(s, op));
    return WithAlpha(sum, Unit(sum));
  }
};
struct Subtract {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    return WithAlpha(_mm256_sub_ps(d, _mm256_mul_ps(s, op)), d);
  }
};
struct Multiply {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    return _mm256_mul_ps(d, _mm256_mul_ps(s, op));
  }
};
struct Over {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    const __m256 keep = _mm256_sub_ps(One(), _mm256_mul_ps(op, Alphas(s)));
    return _mm256_add_ps(_mm256_mul_ps(keep, d), _mm256_mul_ps(op, s));
  }
};
struct Fade {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    return _mm256_add_ps(_mm256_mul_ps(_mm256_sub_ps(One(), op), d), _mm256_mul_ps(op, s));
  }
};

template <typename WeightRule>
struct Weighted {
  MARLO_AVX2_INLINE static __m256 Apply(__m256 d, __m256 s, __m256 op) {
    const __m256 k = _mm256_mul_ps(WeightRule::Of(Alphas(s), Alphas(d)), op);
    const __m256 moved = _mm256_add_ps(d, _mm256_mul_ps(_mm256_sub_ps(_mm256_div_ps(s, k), d), k));
    const __m256 colors = _mm256_blendv_ps(d, moved, _mm256_cmp_ps(k, _mm256_setzero_ps(), _CMP_NEQ_UQ));
    return WithAlpha(colors, Unit(_mm256_add_ps(d, k)));
  }
};
struct InverseSource {
  MARLO_AVX2_INLINE static __m256 Of(__m256 source, __m256) { return _mm256_sub_ps(One(), source); }
};
struct Destination {
  MARLO_AVX2_INLINE static __m256 Of(__m256, __m256 destination) { return destination; }
};
struct InverseDestination {
  MARLO_AVX2_INLINE static __m256 Of(__m256, __m256 destination) { return _mm256_sub_ps(One(), destination); }
};
struct Product {
  MARLO_AVX2_INLINE static __m256 Of(__m256 source, __m256 destination) { return _mm256_mul_ps(source, destination); }
};
struct InverseProduct {
  MARLO_AVX2_INLINE static __m256 Of(__m256 source, __m256 destination) {
    return _mm256_sub_ps(One(), _mm256_mul_ps(source, destination));
  }
};
struct Maximum {
  MARLO_AVX2_INLINE static __m256 Of(__m256 source, __m256 destination) { return _mm256_max_ps(source, destination); }
};
struct Minimum {
  MARLO_AVX2_INLINE static __m256 Of(__m256 source, __m256 destination) { return _mm256_min_ps(source, destination); }
};

template <typename Form>
MARLO_AVX2_INLINE int32_t Run(tZRPIXEL128* destination, const tZRPIXEL128* source, int32_t pixels, __m256 op) {
  int32_t pixel = 0;
  for (; pixel + kPixelsAtOnce <= pixels; pixel += kPixelsAtOnce) {
    const __m256 first = Form::Apply(Load(destination + pixel), Load(source + pixel), op);
    const __m256 second = Form::Apply(Load(destination + pixel + 2), Load(source + pixel + 2), op);
    Store(destination + pixel, first);
    Store(destination + pixel + 2, second);
  }
  return pixel;
}

/// The full form is the partial one with an opacity of 1 except in the modes that say otherwise.
template <int kMode, typename Partial, typename Full = Partial>
MARLO_AVX2 void Row(tZRPIXEL128* destination, const tZRPIXEL128* source, int32_t pixels, float opacity) {
  const __m256 op = _mm256_set1_ps(opacity);
  const int32_t done =
      opacity == 1.0f ? Run<Full>(destination, source, pixels, op) : Run<Partial>(destination, source, pixels, op);
  kFloatCompositePlain[kMode](destination + done, source + done, pixels - done, opacity);
}

}  // namespace

const FloatCompositeRow kFloatCompositeAvx2[kCompositeModes] = {
    Row<0, Move, Copy>,
    Row<1, Add>,
    Row<2, Subtract>,
    Row<3, Multiply>,
    Row<4, Over>,
    Row<5, Fade, Over>,
    Row<6, Weighted<InverseSource>>,
    Row<7, Weighted<Destination>>,
    Row<8, Weighted<InverseDestination>>,
    Row<9, Weighted<Product>>,
    Row<10, Weighted<InverseProduct>>,
    Row<11, Weighted<Maximum>>,
    Row<12, Weighted<Minimum>>,
};

}  // namespace marlo::pixel
