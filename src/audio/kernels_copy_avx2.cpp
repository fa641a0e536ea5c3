// SPDX-License-Identifier: Apache-2.0
// The AVX2 members of the copy family: eight samples at a time through one template over all pairs.
//
// The bits are those of the plain members. Integers are exact in double precision, and up to 24 bits in
// single; scaling by a power of two is exact; so a product that the plain rule forms in several steps is
// rounded once, at the same place, here too. Members walk as the plain ones do, and load a whole group
// before they store it. A count that is no multiple of eight goes through a padded block on the stack.
#include <cstring>

#include "audio/copy.h"
#include "audio/float_kernel_state.h"
#include "audio/kernel_table.h"
#include "audio/lanes_avx2.h"

namespace marlo {
namespace avx2 {
namespace {

/// Types whose every raw value is exact in single precision. A word of PCM24UNPACKED may hold more than 24
/// bits when its writer was careless.
template <class Rule>
inline constexpr bool kExactInSingle = Rule::kInteger&& Rule::kBits <= 24 && Rule::kType != ZRSAMPLETYPE_PCM24UNPACKED;

/// Clamps and rounds singles that are scaled to the type. 2147483647 isn't a single: there the conversion
/// itself gives the low end for what is out of range, and the values from 2^31 on are turned to the high end.
template <class Dest>
MARLO_AVX2_INLINE __m256i ClampAndRoundSingles(__m256 scaled) noexcept {
  if constexpr (Dest::kBits <= 24) {
    const __m256 above = _mm256_max_ps(scaled, _mm256_set1_ps(static_cast<float>(Dest::kLow)));
    return _mm256_cvtps_epi32(_mm256_min_ps(above, _mm256_set1_ps(static_cast<float>(Dest::kHigh))));
  } else {
    const __m256 tooHigh = _mm256_cmp_ps(scaled, _mm256_set1_ps(2147483648.0f), _CMP_GE_OQ);
    return _mm256_xor_si256(_mm256_cvtps_epi32(scaled), _mm256_castps_si256(tooHigh));
  }
}

template <class Dest, class Source, bool kUnity>
MARLO_AVX2_INLINE auto ConvertEight(decltype(Lanes<Source>::Load(nullptr)) raw, float gain) noexcept {
  if constexpr (std::is_same_v<Source, Float32Rule>) {
    // The gain is applied in single precision.
    const __m256 value = kUnity ? raw : _mm256_mul_ps(raw, _mm256_set1_ps(gain));
    if constexpr (Dest::kInteger) {
      return ClampAndRoundSingles<Dest>(_mm256_mul_ps(value, _mm256_set1_ps(static_cast<float>(Dest::kWriteFactor))));
    } else if constexpr (std::is_same_v<Dest, Float64Rule>) {
      return ToDoubles(value);
    } else {
      return value;
    }
  } else if constexpr (std::is_same_v<Source, Float64Rule>) {
    const __m256d factor = _mm256_set1_pd(static_cast<double>(gain));
    const Doubles value = kUnity ? raw : Multiply(raw, Doubles{factor, factor});
    if constexpr (Dest::kInteger) {
      return ClampAndRoundLanes<Dest>(Scale(value, WriteFactor<Dest>{}));
    } else if constexpr (std::is_same_v<Dest, Float32Rule>) {
      return ToSingles(value);
    } else {
      return value;
    }
  } else if constexpr (std::is_same_v<Dest, Float32Rule> && (kUnity || kExactInSingle<Source>)) {
    // One rounding: in the conversion of a 32-bit integer, or in the product with the gain.
    const __m256 value =
        _mm256_mul_ps(_mm256_cvtepi32_ps(raw), _mm256_set1_ps(static_cast<float>(Source::kReadFactor)));
    return kUnity ? value : _mm256_mul_ps(value, _mm256_set1_ps(gain));
  } else if constexpr (kUnity && kSameRaw<Dest, Source>) {
    return raw;
  } else if constexpr (kUnity && kShifts<Dest, Source>) {
    return _mm256_slli_epi32(raw, Dest::kBits - Source::kBits);
  } else if constexpr (kUnity && Dest::kInteger && kExactInSingle<Source>) {
    return ClampAndRoundSingles<Dest>(_mm256_mul_ps(
        _mm256_cvtepi32_ps(raw), _mm256_set1_ps(static_cast<float>(FullScaleRatio<Dest, Source>::kValue))));
  } else {
    const __m256d factor =
        _mm256_set1_pd(FullScaleRatio<Dest, Source>::kValue * static_cast<double>(kUnity ? 1.0f : gain));
    const Doubles value = Multiply(ToDoubles(raw), Doubles{factor, factor});
    if constexpr (Dest::kInteger) {
      return ClampAndRoundLanes<Dest>(value);
    } else if constexpr (std::is_same_v<Dest, Float32Rule>) {
      return ToSingles(value);
    } else {
      return value;
    }
  }
}

template <class Dest, class Source, bool kUnity>
MARLO_AVX2_INLINE void CopyEight(uint8_t* dest, const uint8_t* source, float gain) noexcept {
  Lanes<Dest>::Store(dest, ConvertEight<Dest, Source, kUnity>(Lanes<Source>::Load(source), gain));
}

/// Fewer than eight samples, through blocks on the stack.
template <class Dest, class Source, bool kUnity>
MARLO_AVX2_INLINE void CopyRest(uint8_t* dest, const uint8_t* source, int64_t samples, float gain) noexcept {
  if (samples == 0) return;
  uint8_t from[8 * Source::kBytes] = {};
  uint8_t to[8 * Dest::kBytes];
  std::memcpy(from, source, static_cast<size_t>(samples * Source::kBytes));
  CopyEight<Dest, Source, kUnity>(to, from, gain);
  std::memcpy(dest, to, static_cast<size_t>(samples * Dest::kBytes));
}

template <class Dest, class Source, bool kUnity>
MARLO_AVX2 void CopyRun(uint8_t* dest, const uint8_t* source, int64_t samples, float gain) noexcept {
  const int64_t whole = samples & ~int64_t{7};
  if constexpr (Dest::kBytes > Source::kBytes) {
    CopyRest<Dest, Source, kUnity>(dest + whole * Dest::kBytes, source + whole * Source::kBytes, samples - whole, gain);
#pragma GCC unroll 2
    for (int64_t n = whole - 8; n >= 0; n -= 8) {
      CopyEight<Dest, Source, kUnity>(dest + n * Dest::kBytes, source + n * Source::kBytes, gain);
    }
  } else {
#pragma GCC unroll 2
    for (int64_t n = 0; n < whole; n += 8) {
      CopyEight<Dest, Source, kUnity>(dest + n * Dest::kBytes, source + n * Source::kBytes, gain);
    }
    CopyRest<Dest, Source, kUnity>(dest + whole * Dest::kBytes, source + whole * Source::kBytes, samples - whole, gain);
  }
}

template <class Dest, class Source>
void Copy(void* dest, const void* source, int64_t samples, float gain) noexcept {
  if (samples <= 0) return;
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  if (gain != 1.0f) {
    CopyRun<Dest, Source, false>(to, from, samples, gain);
  } else if constexpr (std::is_same_v<Dest, Source>) {
    if (dest != source) std::memcpy(dest, source, static_cast<size_t>(samples) * Dest::kBytes);
  } else {
    CopyRun<Dest, Source, true>(to, from, samples, 1.0f);
  }
}

// The published pair of FLOAT32 and PCM16 keeps the control word and the groups of its SSE2 members. The
// loops stay out of line, between the changes of the word.

/// As the SSE2 member: scalar samples to 16-byte alignment of the source, groups of four (here up to four
/// groups at once), scalar samples to the end.
__attribute__((noinline)) MARLO_AVX2 void Pcm16FromFloat32Groups(uint8_t* dest, const uint8_t* source, int64_t samples,
                                                                 float gain) noexcept {
  const int64_t misaligned = static_cast<int64_t>((0 - reinterpret_cast<uintptr_t>(source)) & 15) / 4;
  const int64_t head = misaligned < samples ? misaligned : samples;
  const int64_t groupsEnd = head + ((samples - head) & ~int64_t{3});
  const __m256 scales = _mm256_set1_ps(static_cast<float>(static_cast<double>(gain) * 32768.0));
  const bool unity = gain == 1.0f;
  if (unity) {
    CopyRest<Pcm16Rule, Float32Rule, true>(dest, source, head, gain);
  } else {
    CopyRest<Pcm16Rule, Float32Rule, false>(dest, source, head, gain);
  }
  int64_t n = head;
  for (; n + 16 <= groupsEnd; n += 16) {
    const __m256i first = _mm256_cvtps_epi32(_mm256_mul_ps(Lanes<Float32Rule>::Load(source + n * 4), scales));
    const __m256i second = _mm256_cvtps_epi32(_mm256_mul_ps(Lanes<Float32Rule>::Load(source + n * 4 + 32), scales));
    const __m256i words = _mm256_packs_epi32(first, second);
    StoreWhole(dest + n * 2, _mm256_permute4x64_epi64(words, _MM_SHUFFLE(3, 1, 2, 0)));
  }
  for (; n < groupsEnd; n += 4) {
    const __m128 four = _mm_castsi128_ps(LoadHalf(source + n * 4));
    const __m128i rounded = _mm_cvtps_epi32(_mm_mul_ps(four, _mm256_castps256_ps128(scales)));
    StoreQuarter(dest + n * 2, _mm_packs_epi32(rounded, rounded));
  }
  const int64_t rest = samples - n;
  if (unity) {
    CopyRest<Pcm16Rule, Float32Rule, true>(dest + n * 2, source + n * 4, rest, gain);
  } else {
    CopyRest<Pcm16Rule, Float32Rule, false>(dest + n * 2, source + n * 4, rest, gain);
  }
}

void CopyPcm16FromFloat32(void* dest, const void* source, int64_t samples, float gain) noexcept {
  if ((reinterpret_cast<uintptr_t>(source) & 3) != 0) return Copy<Pcm16Rule, Float32Rule>(dest, source, samples, gain);
  if (samples <= 0) return;
  const plat::FloatStateGuard state(FloatKernelState());
  Pcm16FromFloat32Groups(static_cast<uint8_t*>(dest), static_cast<const uint8_t*>(source), samples, gain);
}

__attribute__((noinline)) void Float32FromPcm16Run(void* dest, const void* source, int64_t samples,
                                                   float gain) noexcept {
  Copy<Float32Rule, Pcm16Rule>(dest, source, samples, gain);
}

/// In place the thread's own control word stays, as in the SSE2 member.
void CopyFloat32FromPcm16(void* dest, const void* source, int64_t samples, float gain) noexcept {
  if (dest == source) return Copy<Float32Rule, Pcm16Rule>(dest, source, samples, gain);
  const plat::FloatStateGuard state(FloatKernelState());
  Float32FromPcm16Run(dest, source, samples, gain);
}

template <class Dest, class Source>
constexpr ZRAUDIOCOPYFUNCTION Choose() noexcept {
  constexpr bool kBigEndian = Dest::kType == ZRSAMPLETYPE_PCM16BE || Dest::kType == ZRSAMPLETYPE_PCM24BE;
  if constexpr (kBigEndian && Source::kType == ZRSAMPLETYPE_PCM24UNPACKED) {
    return nullptr;
  } else if constexpr (Dest::kType == ZRSAMPLETYPE_PCM16 && Source::kType == ZRSAMPLETYPE_FLOAT32) {
    return CopyPcm16FromFloat32;
  } else if constexpr (Dest::kType == ZRSAMPLETYPE_FLOAT32 && Source::kType == ZRSAMPLETYPE_PCM16) {
    return CopyFloat32FromPcm16;
  } else {
    return Copy<Dest, Source>;
  }
}

template <class Dest, class Source>
struct CopyMember {
  static constexpr ZRAUDIOCOPYFUNCTION kFunction = Choose<Dest, Source>();
};

constexpr auto kCopyMembers = MakePairTable<ZRAUDIOCOPYFUNCTION, CopyMember>(MemoryRules{});

}  // namespace
}  // namespace avx2

ZRAUDIOCOPYFUNCTION CopyMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept {
  return avx2::kCopyMembers.Find(destType, sourceType);
}

}  // namespace marlo
