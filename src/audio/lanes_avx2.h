// SPDX-License-Identifier: Apache-2.0
// Eight samples of any type in AVX2 registers: loads, stores, and the conversions between raw values.
//
// Loads and stores touch the bytes of the eight samples and no others. Everything here is inlined into
// functions that carry the same target mark; nothing in this header is for any other caller.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "audio/sample_rules.h"

#define MARLO_AVX2 __attribute__((target("avx2")))
#define MARLO_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace marlo::avx2 {

/// Eight doubles.
struct Doubles {
  __m256d low, high;
};

MARLO_AVX2_INLINE __m256i LoadWhole(const uint8_t* bytes) noexcept {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}
MARLO_AVX2_INLINE __m128i LoadHalf(const uint8_t* bytes) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}
MARLO_AVX2_INLINE __m128i LoadQuarter(const uint8_t* bytes) noexcept {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
}
MARLO_AVX2_INLINE void StoreWhole(uint8_t* bytes, __m256i value) noexcept {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}
MARLO_AVX2_INLINE void StoreHalf(uint8_t* bytes, __m128i value) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}
MARLO_AVX2_INLINE void StoreQuarter(uint8_t* bytes, __m128i value) noexcept {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), value);
}

/// Packs eight 32-bit values that fit 16 bits.
MARLO_AVX2_INLINE __m128i PackWords(__m256i raw) noexcept {
  return _mm_packs_epi32(_mm256_castsi256_si128(raw), _mm256_extracti128_si256(raw, 1));
}

/// Reverses the bytes of each 16-bit value.
MARLO_AVX2_INLINE __m128i SwapWords(__m128i words) noexcept {
  return _mm_shuffle_epi8(words, _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
}

/// Reverses the bytes of each 32-bit value.
MARLO_AVX2_INLINE __m256i SwapDwords(__m256i dwords) noexcept {
  return _mm256_shuffle_epi8(
      dwords, _mm256_broadcastsi128_si256(_mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12)));
}

/// Spreads 24 packed bytes. The upper half is loaded from byte 8, so that no byte behind the 24 is read; a
/// shuffle puts each sample into the top three bytes of its word and the shift extends its sign.
template <bool kBigEndian>
MARLO_AVX2_INLINE __m256i LoadPacked24(const uint8_t* bytes) noexcept {
  const __m256i both = _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(bytes)), LoadHalf(bytes + 8), 1);
  const __m256i spread = kBigEndian ? _mm256_setr_epi8(-1, 2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9,  //
                                                       -1, 6, 5, 4, -1, 9, 8, 7, -1, 12, 11, 10, -1, 15, 14, 13)
                                    : _mm256_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11,  //
                                                       -1, 4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15);
  return _mm256_srai_epi32(_mm256_shuffle_epi8(both, spread), 8);
}

/// Packs the low three bytes of each word into 24 bytes: 12 in each half, then the halves together.
template <bool kBigEndian>
MARLO_AVX2_INLINE void StorePacked24(uint8_t* bytes, __m256i raw) noexcept {
  const __m128i pack = kBigEndian ? _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)
                                  : _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  const __m256i halves = _mm256_shuffle_epi8(raw, _mm256_broadcastsi128_si256(pack));
  const __m256i packed = _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
  StoreHalf(bytes, _mm256_castsi256_si128(packed));
  StoreQuarter(bytes + 16, _mm256_extracti128_si256(packed, 1));
}

/// Eight raw values of a type, in the register kind of its Raw: __m256i, __m256 or Doubles.
template <class Rule>
struct Lanes;

template <>
struct Lanes<Pcm8SignedRule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept {
    return _mm256_cvtepi8_epi32(LoadQuarter(bytes));
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept {
    const __m128i words = PackWords(raw);
    StoreQuarter(bytes, _mm_packs_epi16(words, words));
  }
};
template <>
struct Lanes<Pcm8Rule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept {
    return _mm256_cvtepi8_epi32(_mm_xor_si128(LoadQuarter(bytes), _mm_set1_epi8(-128)));
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept {
    const __m128i words = PackWords(raw);
    StoreQuarter(bytes, _mm_xor_si128(_mm_packs_epi16(words, words), _mm_set1_epi8(-128)));
  }
};
template <>
struct Lanes<Pcm16Rule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept {
    return _mm256_cvtepi16_epi32(LoadHalf(bytes));
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept { StoreHalf(bytes, PackWords(raw)); }
};
template <>
struct Lanes<Pcm16BeRule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept {
    return _mm256_cvtepi16_epi32(SwapWords(LoadHalf(bytes)));
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept {
    StoreHalf(bytes, SwapWords(PackWords(raw)));
  }
};
template <>
struct Lanes<Pcm24Rule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept { return LoadPacked24<false>(bytes); }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept { StorePacked24<false>(bytes, raw); }
};
template <>
struct Lanes<Pcm24BeRule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept { return LoadPacked24<true>(bytes); }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept { StorePacked24<true>(bytes, raw); }
};
template <>
struct Lanes<Pcm24UnpackedRule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept { return LoadWhole(bytes); }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept { StoreWhole(bytes, raw); }
};
template <>
struct Lanes<Pcm32Rule> : Lanes<Pcm24UnpackedRule> {};
template <>
struct Lanes<Pcm32BeRule> {
  MARLO_AVX2_INLINE static __m256i Load(const uint8_t* bytes) noexcept { return SwapDwords(LoadWhole(bytes)); }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256i raw) noexcept { StoreWhole(bytes, SwapDwords(raw)); }
};
template <>
struct Lanes<Float32Rule> {
  MARLO_AVX2_INLINE static __m256 Load(const uint8_t* bytes) noexcept {
    return _mm256_loadu_ps(reinterpret_cast<const float*>(bytes));
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, __m256 raw) noexcept {
    _mm256_storeu_ps(reinterpret_cast<float*>(bytes), raw);
  }
};
template <>
struct Lanes<Float64Rule> {
  MARLO_AVX2_INLINE static Doubles Load(const uint8_t* bytes) noexcept {
    const auto* values = reinterpret_cast<const double*>(bytes);
    return {_mm256_loadu_pd(values), _mm256_loadu_pd(values + 4)};
  }
  MARLO_AVX2_INLINE static void Store(uint8_t* bytes, Doubles raw) noexcept {
    auto* values = reinterpret_cast<double*>(bytes);
    _mm256_storeu_pd(values, raw.low);
    _mm256_storeu_pd(values + 4, raw.high);
  }
};

// ---- Raw values as doubles: exact from every type ----------------------------------------------------

MARLO_AVX2_INLINE Doubles ToDoubles(__m256i raw) noexcept {
  return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(raw)), _mm256_cvtepi32_pd(_mm256_extracti128_si256(raw, 1))};
}
MARLO_AVX2_INLINE Doubles ToDoubles(__m256 raw) noexcept {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(raw)), _mm256_cvtps_pd(_mm256_extractf128_ps(raw, 1))};
}
MARLO_AVX2_INLINE Doubles ToDoubles(Doubles raw) noexcept { return raw; }

MARLO_AVX2_INLINE Doubles Multiply(Doubles left, Doubles right) noexcept {
  return {_mm256_mul_pd(left.low, right.low), _mm256_mul_pd(left.high, right.high)};
}
MARLO_AVX2_INLINE Doubles Add(Doubles left, Doubles right) noexcept {
  return {_mm256_add_pd(left.low, right.low), _mm256_add_pd(left.high, right.high)};
}
/// By a factor known at compile time, which is left out when it is 1.
template <class Factor>
MARLO_AVX2_INLINE Doubles Scale(Doubles value, Factor) noexcept {
  if constexpr (Factor::kValue == 1.0) {
    return value;
  } else {
    const __m256d factor = _mm256_set1_pd(Factor::kValue);
    return {_mm256_mul_pd(value.low, factor), _mm256_mul_pd(value.high, factor)};
  }
}
/// A power of two by which exact scaling is done: the ratio of two types' full scales.
template <class Dest, class Source>
struct FullScaleRatio {
  static constexpr double kValue = Source::kReadFactor * Dest::kWriteFactor;
};
template <class Source>
struct ReadFactor {
  static constexpr double kValue = Source::kReadFactor;
};
template <class Dest>
struct WriteFactor {
  static constexpr double kValue = Dest::kWriteFactor;
};

MARLO_AVX2_INLINE __m256 ToSingles(Doubles value) noexcept {
  return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(value.low)), _mm256_cvtpd_ps(value.high), 1);
}

/// Clamp, then the sum whose low 32 bits are the rounded integer, as in the plain rule; max and min give
/// their second operand for a NaN, as the comparisons there do. The low words of the eight sums are gathered
/// by a shuffle, which leaves pairs to be put in order.
template <class Dest>
MARLO_AVX2_INLINE __m256i ClampAndRoundLanes(Doubles scaled) noexcept {
  const __m256d low = _mm256_set1_pd(Dest::kLow);
  const __m256d high = _mm256_set1_pd(Dest::kHigh);
  const __m256d rounding = _mm256_set1_pd(6755399441055744.0);
  const __m256 first = _mm256_castpd_ps(_mm256_add_pd(_mm256_min_pd(_mm256_max_pd(scaled.low, low), high), rounding));
  const __m256 second = _mm256_castpd_ps(_mm256_add_pd(_mm256_min_pd(_mm256_max_pd(scaled.high, low), high), rounding));
  const __m256i words = _mm256_castps_si256(_mm256_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0)));
  return _mm256_permute4x64_epi64(words, _MM_SHUFFLE(3, 1, 2, 0));
}

}  // namespace marlo::avx2
