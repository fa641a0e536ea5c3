// SPDX-License-Identifier: Apache-2.0
// The published SSE2 members of the copy family.
#include <emmintrin.h>

#include "audio/copy.h"
#include "audio/float_kernel_state.h"

namespace marlo {
namespace {

// The loops that run under a control word of their own stay out of line: the compiler doesn't know that a
// change of the word orders floating-point operations.

int64_t Misalignment(const uint8_t* bytes) noexcept {
  return static_cast<int64_t>(reinterpret_cast<uintptr_t>(bytes) & 15);
}

/// Scalar samples up to 16-byte alignment of the source, groups of four, scalar samples to the end. A group
/// multiplies in single, converts and saturates: a scaled magnitude of 2^31 or more gives -32768 for either
/// sign there, where the scalar samples clamp.
__attribute__((noinline)) void Pcm16FromFloat32Groups(uint8_t* dest, const uint8_t* source, int64_t samples,
                                                      float gain) noexcept {
  const auto scalar = [gain](uint8_t* to, const uint8_t* from) noexcept {
    const float raw = Float32Rule::Read(from);
    Pcm16Rule::Write(to, gain == 1.0f ? ConvertAtUnity<Pcm16Rule, Float32Rule>(raw)
                                      : ConvertWithGain<Pcm16Rule, Float32Rule>(raw, gain));
  };
  for (; samples > 0 && Misalignment(source) != 0; --samples, dest += 2, source += 4) scalar(dest, source);
  const __m128 scale = _mm_set1_ps(static_cast<float>(static_cast<double>(gain) * 32768.0));
  for (; samples >= 4; samples -= 4, dest += 8, source += 16) {
    const __m128 four = _mm_castsi128_ps(_mm_load_si128(reinterpret_cast<const __m128i*>(source)));
    const __m128i rounded = _mm_cvtps_epi32(_mm_mul_ps(four, scale));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dest), _mm_packs_epi32(rounded, rounded));
  }
  for (; samples > 0; --samples, dest += 2, source += 4) scalar(dest, source);
}

void Pcm16FromFloat32Sse2(void* dest, const void* source, int64_t samples, float gain) noexcept {
  if ((reinterpret_cast<uintptr_t>(source) & 3) != 0) {
    CopyMemberPlain(ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_FLOAT32)(dest, source, samples, gain);
    return;
  }
  const plat::FloatStateGuard state(FloatKernelState());
  Pcm16FromFloat32Groups(static_cast<uint8_t*>(dest), static_cast<const uint8_t*>(source), samples, gain);
}

/// Scalar samples up to 16-byte alignment of the destination, groups of four, scalar samples to the end,
/// all with gain times 2^-15 as one single factor.
__attribute__((noinline)) void Float32FromPcm16Groups(uint8_t* dest, const uint8_t* source, int64_t samples,
                                                      float gain) noexcept {
  const float factor = static_cast<float>(static_cast<double>(gain) * Pcm16Rule::kReadFactor);
  const auto scalar = [factor](uint8_t* to, const uint8_t* from) noexcept {
    Float32Rule::Write(to, static_cast<float>(Pcm16Rule::Read(from)) * factor);
  };
  for (; samples > 0 && Misalignment(dest) != 0; --samples, dest += 4, source += 2) scalar(dest, source);
  const __m128 factors = _mm_set1_ps(factor);
  for (; samples >= 4; samples -= 4, dest += 16, source += 8) {
    const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(source));
    const __m128i raw = _mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16);
    const __m128 values = _mm_mul_ps(_mm_cvtepi32_ps(raw), factors);
    _mm_store_si128(reinterpret_cast<__m128i*>(dest), _mm_castps_si128(values));
  }
  for (; samples > 0; --samples, dest += 4, source += 2) scalar(dest, source);
}

void Float32FromPcm16Sse2(void* dest, const void* source, int64_t samples, float gain) noexcept {
  if (dest == source) {
    CopyMemberPlain(ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM16)(dest, source, samples, gain);
    return;
  }
  const plat::FloatStateGuard state(FloatKernelState());
  Float32FromPcm16Groups(static_cast<uint8_t*>(dest), static_cast<const uint8_t*>(source), samples, gain);
}

/// Two samples an instruction at gain 1.0, from the last to the first.
void Float64FromFloat32Sse2(void* dest, const void* source, int64_t samples, float gain) noexcept {
  const auto plain = CopyMemberPlain(ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_FLOAT32);
  if (gain != 1.0f || samples <= 0) return plain(dest, source, samples, gain);
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  const int64_t pairs = samples & ~int64_t{1};
  plain(to + pairs * 8, from + pairs * 4, samples - pairs, gain);
  for (int64_t n = pairs - 2; n >= 0; n -= 2) {
    const __m128 two = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + n * 4)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + n * 8), _mm_castpd_si128(_mm_cvtps_pd(two)));
  }
}

/// Two samples an instruction at gain 1.0.
void Float32FromFloat64Sse2(void* dest, const void* source, int64_t samples, float gain) noexcept {
  const auto plain = CopyMemberPlain(ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT64);
  if (gain != 1.0f || samples <= 0) return plain(dest, source, samples, gain);
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  int64_t n = 0;
  for (; n + 2 <= samples; n += 2) {
    const __m128 two = _mm_cvtpd_ps(_mm_castsi128_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from + n * 8))));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + n * 4), _mm_castps_si128(two));
  }
  plain(to + n * 4, from + n * 8, samples - n, gain);
}

}  // namespace

ZRAUDIOCOPYFUNCTION CopyMemberSse2(uint32_t destType, uint32_t sourceType) noexcept {
  constexpr struct {
    uint32_t dest, source;
    ZRAUDIOCOPYFUNCTION function;
  } kMembers[] = {
      {ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_FLOAT32, Pcm16FromFloat32Sse2},
      {ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM16, Float32FromPcm16Sse2},
      {ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_FLOAT32, Float64FromFloat32Sse2},
      {ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT64, Float32FromFloat64Sse2},
  };
  for (const auto& member : kMembers) {
    if (member.dest == destType && member.source == sourceType) return member.function;
  }
  return nullptr;
}

/// The eight samples are read before any is written, and blocks go from the last to the first, so that a
/// conversion in place is safe as in the plain member; an integer of 16 bits times 2^-15 is exact.
void CopyChannelsFloat64FromPcm16Sse2(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                                      uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames) noexcept {
  if (frames <= 0) return;
  const auto plain = CopyChannelsMemberPlain(ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_PCM16);
  const int64_t destStride = int64_t{destChannels} * 8;
  const int64_t sourceStride = int64_t{sourceChannels} * 2;
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  const int64_t blocks = frames & ~int64_t{7};
  plain(to + blocks * destStride, destChannels, destIndex, from + blocks * sourceStride, sourceChannels, sourceIndex,
        frames - blocks);
  to += int64_t{destIndex} * 8;
  from += int64_t{sourceIndex} * 2;
  const __m128d factor = _mm_set1_pd(Pcm16Rule::kReadFactor);
  for (int64_t block = blocks - 8; block >= 0; block -= 8) {
    alignas(16) int32_t raw[8];
    for (int64_t n = 0; n < 8; ++n) raw[n] = Pcm16Rule::Read(from + (block + n) * sourceStride);
    for (int64_t n = 0; n < 8; n += 2) {
      const __m128i two = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(raw + n));
      const __m128d values = _mm_mul_pd(_mm_cvtepi32_pd(two), factor);
      _mm_storel_pd(reinterpret_cast<double*>(to + (block + n) * destStride), values);
      _mm_storeh_pd(reinterpret_cast<double*>(to + (block + n + 1) * destStride), values);
    }
  }
}

}  // namespace marlo
