// SPDX-License-Identifier: Apache-2.0
// The composite modes on 8-bit pixels in AVX2: the same integers, eight pixels at a time.
//
// Modes 0 to 5 work on 16-bit channels in memory order. The weighted modes need a quotient a channel and work
// on planes: one channel of eight pixels in the 32-bit lanes of a register.

#include <immintrin.h>

#include "pixel/byte_rounding.h"
#include "pixel/composite_rows.h"
#include "pixel/geometry.h"

#define MARLO_AVX2 __attribute__((target("avx2")))
#define MARLO_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace marlo::pixel {

namespace {

constexpr int32_t kPixelsAtOnce = 8;

MARLO_AVX2_INLINE __m256i Load(const tZRPIXEL32* from) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(static_cast<const void*>(from)));
}
MARLO_AVX2_INLINE void Store(tZRPIXEL32* to, __m256i value) {
  _mm256_storeu_si256(static_cast<__m256i*>(static_cast<void*>(to)), value);
}

// ---- 16-bit channels -------------------------------------------------------------------------------

MARLO_AVX2_INLINE __m256i Div255Words(__m256i product) {
  const __m256i biased = _mm256_add_epi16(product, _mm256_set1_epi16(128));
  return _mm256_srli_epi16(_mm256_add_epi16(biased, _mm256_srli_epi16(biased, 8)), 8);
}
MARLO_AVX2_INLINE __m256i ProductOver255(__m256i a, __m256i b) { return Div255Words(_mm256_mullo_epi16(a, b)); }

/// The alpha of each pixel in all its channels.
MARLO_AVX2_INLINE __m256i Alphas(__m256i words) {
  return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(words, 0xFF), 0xFF);
}

/// The magnitude of a product of two bytes fits 16 bits without a sign, so the cut toward zero is a shift of it.
MARLO_AVX2_INLINE __m256i MovedWords(__m256i from, __m256i to, __m256i k) {
  const __m256i difference = _mm256_sub_epi16(to, from);
  const __m256i part = _mm256_srli_epi16(_mm256_mullo_epi16(_mm256_abs_epi16(difference), k), 8);
  return _mm256_add_epi16(from, _mm256_sign_epi16(part, difference));
}
/// (value * weight14 + 8192) >> 14 by the rounding high multiply of the doubled value.
MARLO_AVX2_INLINE __m256i RoundedPartWords(__m256i value, __m256i weight14) {
  return _mm256_mulhrs_epi16(_mm256_add_epi16(value, value), weight14);
}
/// value * weight14 >> 14.
MARLO_AVX2_INLINE __m256i CutPartWords(__m256i value, __m256i weight14) {
  return _mm256_mulhi_epu16(_mm256_slli_epi16(value, 2), weight14);
}

/// The weights that a row needs, spread over a register.
struct Weights {
  __m256i weight14;
  __m256i cut255;      ///< Cut to the scale of 255.
  __m256i rounded255;  ///< Rounded to it.
};

MARLO_AVX2_INLINE __m256i Inverse(__m256i bytes) { return _mm256_sub_epi16(_mm256_set1_epi16(255), bytes); }

struct SourcePartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) { return MovedWords(d, s, w.cut255); }
};
struct AddPartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    return _mm256_add_epi16(d, RoundedPartWords(s, w.weight14));
  }
};
struct SubtractPartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    const __m256i colors = _mm256_set1_epi64x(0x0000FFFFFFFFFFFF);
    return _mm256_subs_epu16(d, _mm256_and_si256(RoundedPartWords(s, w.weight14), colors));
  }
};
struct MultiplyFull {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights&) { return ProductOver255(d, s); }
};
struct MultiplyPartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    return ProductOver255(d, CutPartWords(s, w.weight14));
  }
};
struct OverFull {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights&) {
    return _mm256_add_epi16(ProductOver255(d, Inverse(Alphas(s))), s);
  }
};
struct OverPartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    const __m256i alphas = Alphas(s);
    const __m256i inverse = Inverse(ProductOver255(alphas, w.rounded255));
    return _mm256_add_epi16(ProductOver255(d, inverse), ProductOver255(_mm256_min_epi16(s, alphas), w.rounded255));
  }
};
struct FadePartial {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    return _mm256_add_epi16(ProductOver255(d, Inverse(w.rounded255)),
                            ProductOver255(_mm256_min_epi16(s, Alphas(s)), w.rounded255));
  }
};

/// Widens to words within the lanes and packs with saturation.
template <typename Form>
MARLO_AVX2_INLINE __m256i InWords(__m256i d, __m256i s, const Weights& w) {
  const __m256i zero = _mm256_setzero_si256();
  return _mm256_packus_epi16(Form::Apply(_mm256_unpacklo_epi8(d, zero), _mm256_unpacklo_epi8(s, zero), w),
                             Form::Apply(_mm256_unpackhi_epi8(d, zero), _mm256_unpackhi_epi8(s, zero), w));
}
template <typename WordForm>
struct Words {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) { return InWords<WordForm>(d, s, w); }
};

struct CopyBytes {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i, __m256i s, const Weights&) { return s; }
};
struct AddBytes {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights&) { return _mm256_adds_epu8(d, s); }
};
struct SubtractBytes {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights&) {
    return _mm256_subs_epu8(d, _mm256_and_si256(s, _mm256_set1_epi32(0x00FFFFFF)));
  }
};

// ---- Planes ----------------------------------------------------------------------------------------

template <int kShift>
MARLO_AVX2_INLINE __m256i Plane(__m256i pixels) {
  return _mm256_and_si256(_mm256_srli_epi32(pixels, kShift), _mm256_set1_epi32(255));
}

/// min(255, s * 255 / k) as floats: the quotient by a reciprocal is off by less than 0.0001, and a quotient that
/// isn't whole lies at least 1 / 255 below the next whole number, so that a bias between the two makes it exact.
/// Any source of k or more gives 255, which the minimum with k does.
MARLO_AVX2_INLINE __m256i Unmultiplied(__m256i s, __m256i k, __m256 factor) {
  const __m256 quotient = _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_min_epi16(s, k)), factor);
  return _mm256_cvttps_epi32(_mm256_add_ps(quotient, _mm256_set1_ps(0.001f)));
}
MARLO_AVX2_INLINE __m256i MovedPlane(__m256i from, __m256i s, __m256i k, __m256 factor) {
  return MovedWords(from, Unmultiplied(s, k, factor), k);
}

enum class WeightRule {
  kInverseSource,
  kDestination,
  kInverseDestination,
  kProduct,
  kInverseProduct,
  kMaximum,
  kMinimum
};

template <WeightRule kRule>
MARLO_AVX2_INLINE __m256i WeightOf(__m256i source, __m256i destination) {
  const __m256i full = _mm256_set1_epi32(255);
  if constexpr (kRule == WeightRule::kInverseSource) return _mm256_sub_epi32(full, source);
  if constexpr (kRule == WeightRule::kDestination) return destination;
  if constexpr (kRule == WeightRule::kInverseDestination) return _mm256_sub_epi32(full, destination);
  if constexpr (kRule == WeightRule::kMaximum) return _mm256_max_epi16(source, destination);
  if constexpr (kRule == WeightRule::kMinimum) return _mm256_min_epi16(source, destination);
  const __m256i product = _mm256_and_si256(ProductOver255(source, destination), full);
  return kRule == WeightRule::kProduct ? product : _mm256_sub_epi32(full, product);
}

template <WeightRule kRule, bool kFull>
struct Weighted {
  MARLO_AVX2_INLINE static __m256i Apply(__m256i d, __m256i s, const Weights& w) {
    const __m256i dstAlpha = _mm256_srli_epi32(d, 24);
    __m256i k = WeightOf<kRule>(_mm256_srli_epi32(s, 24), dstAlpha);
    if constexpr (!kFull) k = CutPartWords(k, w.weight14);
    // A weight of 0 moves nothing, whatever the quotient.
    const __m256 divisor = _mm256_cvtepi32_ps(_mm256_max_epi16(k, _mm256_set1_epi32(1)));
    const __m256 factor = _mm256_div_ps(_mm256_set1_ps(255.0f), divisor);
    const __m256i blue = MovedPlane(Plane<0>(d), Plane<0>(s), k, factor);
    const __m256i green = MovedPlane(Plane<8>(d), Plane<8>(s), k, factor);
    const __m256i red = MovedPlane(Plane<16>(d), Plane<16>(s), k, factor);
    const __m256i alpha = _mm256_min_epi16(_mm256_add_epi32(dstAlpha, k), _mm256_set1_epi32(255));
    return _mm256_or_si256(_mm256_or_si256(blue, _mm256_slli_epi32(green, 8)),
                           _mm256_or_si256(_mm256_slli_epi32(red, 16), _mm256_slli_epi32(alpha, 24)));
  }
};

// ---- Rows ------------------------------------------------------------------------------------------

template <int kMode, typename Full, typename Partial>
MARLO_AVX2 void Row(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t pixels, int32_t weight14) {
  const Weights weights = {_mm256_set1_epi16(static_cast<int16_t>(weight14)),
                           _mm256_set1_epi16(static_cast<int16_t>(CutPart(255, weight14))),
                           _mm256_set1_epi16(static_cast<int16_t>(Weight8(weight14)))};
  int32_t pixel = 0;
  if (weight14 == kOne) {
    for (; pixel + kPixelsAtOnce <= pixels; pixel += kPixelsAtOnce) {
      Store(destination + pixel, Full::Apply(Load(destination + pixel), Load(source + pixel), weights));
    }
  } else {
    for (; pixel + kPixelsAtOnce <= pixels; pixel += kPixelsAtOnce) {
      Store(destination + pixel, Partial::Apply(Load(destination + pixel), Load(source + pixel), weights));
    }
  }
  kByteCompositePlain[kMode](destination + pixel, source + pixel, pixels - pixel, weight14);
}

template <int kMode, WeightRule kRule>
constexpr ByteCompositeRow WeightedRow() {
  return Row<kMode, Weighted<kRule, true>, Weighted<kRule, false>>;
}

}  // namespace

const ByteCompositeRow kByteCompositeAvx2[kCompositeModes] = {
    Row<0, CopyBytes, Words<SourcePartial>>,           Row<1, AddBytes, Words<AddPartial>>,
    Row<2, SubtractBytes, Words<SubtractPartial>>,     Row<3, Words<MultiplyFull>, Words<MultiplyPartial>>,
    Row<4, Words<OverFull>, Words<OverPartial>>,       Row<5, Words<OverFull>, Words<FadePartial>>,
    WeightedRow<6, WeightRule::kInverseSource>(),      WeightedRow<7, WeightRule::kDestination>(),
    WeightedRow<8, WeightRule::kInverseDestination>(), WeightedRow<9, WeightRule::kProduct>(),
    WeightedRow<10, WeightRule::kInverseProduct>(),    WeightedRow<11, WeightRule::kMaximum>(),
    WeightedRow<12, WeightRule::kMinimum>(),
};

}  // namespace marlo::pixel
