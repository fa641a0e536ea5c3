// SPDX-License-Identifier: Apache-2.0
// The AVX2 members of the mix and mix ramp families: eight samples at a time through one template.
//
// A group of eight takes its gains from a row of doubles, one a sample. Mix keeps the channels' gains as a
// row that repeats, and moves a phase along it; the ramp writes the running gain of a block of frames into
// a row, by the same sums and in the same order as the plain member, and multiplies from there. All other
// operations are those of the plain rules, in their order, so the bits are the same; integers are scaled by
// powers of two where that is exact.
#include <algorithm>
#include <cstring>

#include "audio/kernel_table.h"
#include "audio/lanes_avx2.h"
#include "audio/mix.h"

namespace marlo {
namespace avx2 {
namespace {

/// Frames wider than this go to the plain member.
constexpr uint32_t kMostChannels = 64;

MARLO_AVX2_INLINE Doubles LoadGains(const double* gains) noexcept {
  return {_mm256_loadu_pd(gains), _mm256_loadu_pd(gains + 4)};
}

/// The source at its gain, in the destination's scale.
template <class Dest, class Source>
MARLO_AVX2_INLINE Doubles ScaledSource(decltype(Lanes<Source>::Load(nullptr)) raw, Doubles gains) noexcept {
  if constexpr (Source::kInteger) {
    return Multiply(Scale(ToDoubles(raw), FullScaleRatio<Dest, Source>{}), gains);
  } else {
    return Scale(Multiply(ToDoubles(raw), gains), WriteFactor<Dest>{});
  }
}

/// How FLOAT32 goes into FLOAT32.
enum class FloatProduct {
  kRounded,  ///< In double, rounded to single.
  kSingle,   ///< In single, by the gain rounded to single.
};

template <class Dest, class Source, FloatProduct kProduct>
MARLO_AVX2_INLINE void MixEight(uint8_t* dest, const uint8_t* source, Doubles gains) noexcept {
  const auto raw = Lanes<Source>::Load(source);
  const auto present = Lanes<Dest>::Load(dest);
  if constexpr (kAddsIntegers<Dest>) {
    __m256i addend = ClampAndRoundLanes<Dest>(ScaledSource<Dest, Source>(raw, gains));
    if constexpr (std::is_same_v<Dest, Source> && Dest::kType == ZRSAMPLETYPE_PCM24UNPACKED) {
      // At gain 1.0 the word is taken as it is, even one that holds more than 24 bits.
      const __m256d one = _mm256_set1_pd(1.0);
      const __m256 low = _mm256_castpd_ps(_mm256_cmp_pd(gains.low, one, _CMP_EQ_OQ));
      const __m256 high = _mm256_castpd_ps(_mm256_cmp_pd(gains.high, one, _CMP_EQ_OQ));
      const __m256i words = _mm256_castps_si256(_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
      addend = _mm256_blendv_epi8(addend, raw, _mm256_permute4x64_epi64(words, _MM_SHUFFLE(3, 1, 2, 0)));
    }
    const __m256i sum = _mm256_add_epi32(present, addend);
    const __m256i above = _mm256_max_epi32(sum, _mm256_set1_epi32(Dest::kRawLow));
    Lanes<Dest>::Store(dest, _mm256_min_epi32(above, _mm256_set1_epi32(Dest::kRawHigh)));
  } else if constexpr (Dest::kInteger) {
    const Doubles sum = Add(ScaledSource<Dest, Source>(raw, gains), ToDoubles(present));
    Lanes<Dest>::Store(dest, ClampAndRoundLanes<Dest>(sum));
  } else if constexpr (std::is_same_v<Dest, Float32Rule> && std::is_same_v<Source, Float32Rule>) {
    const __m256 product = kProduct == FloatProduct::kSingle ? _mm256_mul_ps(ToSingles(gains), raw)
                                                             : ToSingles(Multiply(ToDoubles(raw), gains));
    Lanes<Dest>::Store(dest, _mm256_add_ps(product, present));
  } else {
    const Doubles value = Multiply(Scale(ToDoubles(raw), ReadFactor<Source>{}), gains);
    const Doubles sum = Add(value, ToDoubles(present));
    if constexpr (std::is_same_v<Dest, Float32Rule>) {
      Lanes<Dest>::Store(dest, ToSingles(sum));
    } else {
      Lanes<Dest>::Store(dest, sum);
    }
  }
}

/// Fewer than eight samples, through blocks on the stack.
template <class Dest, class Source, FloatProduct kProduct>
MARLO_AVX2_INLINE void MixRest(uint8_t* dest, const uint8_t* source, int64_t samples, Doubles gains) noexcept {
  if (samples == 0) return;
  uint8_t from[8 * Source::kBytes] = {};
  uint8_t to[8 * Dest::kBytes] = {};
  std::memcpy(from, source, static_cast<size_t>(samples * Source::kBytes));
  std::memcpy(to, dest, static_cast<size_t>(samples * Dest::kBytes));
  MixEight<Dest, Source, kProduct>(to, from, gains);
  std::memcpy(dest, to, static_cast<size_t>(samples * Dest::kBytes));
}

/// @param gainRow entry i is the gain of channel i mod channels; channels + 8 entries. With kFixedGains every
/// group of eight takes the same gains: the channels divide eight.
template <class Dest, class Source, FloatProduct kProduct, bool kFixedGains>
MARLO_AVX2 void MixRun(uint8_t* dest, const uint8_t* source, int64_t samples, uint32_t channels,
                       const double* gainRow) noexcept {
  const int64_t whole = samples & ~int64_t{7};
  const Doubles fixed = LoadGains(gainRow);
  const uint32_t step = 8 % channels;
  if constexpr (Dest::kBytes > Source::kBytes) {
    auto phase = static_cast<uint32_t>(whole % channels);
    MixRest<Dest, Source, kProduct>(dest + whole * Dest::kBytes, source + whole * Source::kBytes, samples - whole,
                                    LoadGains(gainRow + phase));
#pragma GCC unroll 2
    for (int64_t n = whole - 8; n >= 0; n -= 8) {
      if constexpr (!kFixedGains) phase = phase >= step ? phase - step : phase + channels - step;
      MixEight<Dest, Source, kProduct>(dest + n * Dest::kBytes, source + n * Source::kBytes,
                                       kFixedGains ? fixed : LoadGains(gainRow + phase));
    }
  } else {
    uint32_t phase = 0;
#pragma GCC unroll 2
    for (int64_t n = 0; n < whole; n += 8) {
      MixEight<Dest, Source, kProduct>(dest + n * Dest::kBytes, source + n * Source::kBytes,
                                       kFixedGains ? fixed : LoadGains(gainRow + phase));
      if constexpr (!kFixedGains) phase = phase + step >= channels ? phase + step - channels : phase + step;
    }
    MixRest<Dest, Source, kProduct>(dest + whole * Dest::kBytes, source + whole * Source::kBytes, samples - whole,
                                    LoadGains(gainRow + phase));
  }
}

template <class Dest, class Source, FloatProduct kProduct>
void MixWith(uint8_t* dest, const uint8_t* source, int64_t samples, uint32_t channels, const double* gainRow) noexcept {
  if (8 % channels == 0) {
    MixRun<Dest, Source, kProduct, true>(dest, source, samples, channels, gainRow);
  } else {
    MixRun<Dest, Source, kProduct, false>(dest, source, samples, channels, gainRow);
  }
}

template <class Dest, class Source>
void Mix(void* dest, const void* source, int64_t samples, uint32_t channels, const double* gains) noexcept {
  if (dest == source || samples <= 0 || channels == 0) return;
  if (channels > kMostChannels) {
    MixMemberPlain(Dest::kType, Source::kType)(dest, source, samples, channels, gains);
    return;
  }
  double gainRow[kMostChannels + 8];
  for (uint32_t n = 0, channel = 0; n < channels + 8; ++n) {
    gainRow[n] = gains[channel];
    channel = channel + 1 == channels ? 0 : channel + 1;
  }
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  if constexpr (std::is_same_v<Dest, Float32Rule> && std::is_same_v<Source, Float32Rule>) {
    // Stereo on 16 bytes is the published SSE2 form; above two channels the plain rule is in single.
    const bool aligned = ((reinterpret_cast<uintptr_t>(dest) | reinterpret_cast<uintptr_t>(source)) & 15) == 0;
    if (channels > 2 || (channels == 2 && aligned)) {
      MixWith<Dest, Source, FloatProduct::kSingle>(to, from, samples, channels, gainRow);
      return;
    }
  }
  MixWith<Dest, Source, FloatProduct::kRounded>(to, from, samples, channels, gainRow);
}

/// Raw values at the gains of a row, added. FLOAT32 rounds the product and adds in single.
template <class Dest, class Source>
MARLO_AVX2_INLINE void RampEight(uint8_t* dest, const uint8_t* source, const double* gainRow) noexcept {
  const Doubles product = Multiply(ToDoubles(Lanes<Source>::Load(source)), LoadGains(gainRow));
  const auto present = Lanes<Dest>::Load(dest);
  if constexpr (std::is_same_v<Dest, Float32Rule>) {
    Lanes<Dest>::Store(dest, _mm256_add_ps(ToSingles(product), present));
  } else {
    Lanes<Dest>::Store(dest, Add(product, present));
  }
}

template <class Dest, class Source>
MARLO_AVX2_INLINE void RampRest(uint8_t* dest, const uint8_t* source, int64_t samples, const double* gainRow) noexcept {
  if (samples == 0) return;
  uint8_t from[8 * Source::kBytes] = {};
  uint8_t to[8 * Dest::kBytes] = {};
  std::memcpy(from, source, static_cast<size_t>(samples * Source::kBytes));
  std::memcpy(to, dest, static_cast<size_t>(samples * Dest::kBytes));
  RampEight<Dest, Source>(to, from, gainRow);
  std::memcpy(dest, to, static_cast<size_t>(samples * Dest::kBytes));
}

constexpr int64_t kRampBlockSamples = 256;

template <class Dest, class Source>
MARLO_AVX2 void RampRun(uint8_t* dest, const uint8_t* source, int64_t frames, uint32_t channels,
                        const tZRASRCOOKED& cooked) noexcept {
  double gainRow[kRampBlockSamples + 8] = {};
  double gain = cooked.gain;
  double delta = cooked.gainDelta;
  const double bend = cooked.gainDeltaDelta;
  const bool moves = delta != 0.0 || bend != 0.0;
  if (!moves) std::fill_n(gainRow, kRampBlockSamples + 8, gain);
  const int64_t blockFrames = kRampBlockSamples / channels;
  for (int64_t left = frames; left > 0; left -= blockFrames) {
    const int64_t part = std::min(left, blockFrames);
    if (moves) {
      double* next = gainRow;
      for (int64_t frame = 0; frame < part; ++frame) {
        for (uint32_t channel = 0; channel < channels; ++channel) *next++ = gain;
        gain += delta;
        delta += bend;
      }
    }
    const int64_t samples = part * channels;
    int64_t n = 0;
    for (; n + 8 <= samples; n += 8) {
      RampEight<Dest, Source>(dest + n * Dest::kBytes, source + n * Source::kBytes, gainRow + n);
    }
    RampRest<Dest, Source>(dest + n * Dest::kBytes, source + n * Source::kBytes, samples - n, gainRow + n);
    dest += samples * Dest::kBytes;
    source += samples * Source::kBytes;
  }
}

template <class Dest, class Source>
void MixRamp(void* dest, const void* source, int64_t frames, uint32_t channels, const tZRASRCOOKED* cooked) noexcept {
  if (channels == 0) return;
  if (channels > kMostChannels) {
    MixRampMemberPlain(Dest::kType, Source::kType)(dest, source, frames, channels, cooked);
    return;
  }
  RampRun<Dest, Source>(static_cast<uint8_t*>(dest), static_cast<const uint8_t*>(source), frames, channels, *cooked);
}

template <class Dest, class Source>
struct MixMember {
  static constexpr ZRAUDIOMIXFUNCTION kFunction = Mix<Dest, Source>;
};

template <class Dest, class Source>
constexpr ZRAUDIOMIXRAMPFUNCTION ChooseRamp() noexcept {
  if constexpr (Dest::kInteger) {
    return nullptr;
  } else {
    return MixRamp<Dest, Source>;
  }
}

template <class Dest, class Source>
struct RampMember {
  static constexpr ZRAUDIOMIXRAMPFUNCTION kFunction = ChooseRamp<Dest, Source>();
};

constexpr auto kMixMembers = MakePairTable<ZRAUDIOMIXFUNCTION, MixMember>(LittleEndianRules{});
constexpr auto kRampMembers = MakePairTable<ZRAUDIOMIXRAMPFUNCTION, RampMember>(LittleEndianRules{});

}  // namespace
}  // namespace avx2

ZRAUDIOMIXFUNCTION MixMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept {
  return avx2::kMixMembers.Find(destType, sourceType);
}

ZRAUDIOMIXRAMPFUNCTION MixRampMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept {
  return avx2::kRampMembers.Find(destType, sourceType);
}

}  // namespace marlo
