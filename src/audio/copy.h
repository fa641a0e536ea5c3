// SPDX-License-Identifier: Apache-2.0
// The copy family: the conversion of one sample, and the members that the getter chooses among.
#pragma once

#include <cstdint>
#include <type_traits>

#include "audio/sample_rules.h"
#include "marlo110k/samples.h"

namespace marlo {

/// Types that differ in byte order or offset only: their raw values are the same.
template <class Dest, class Source>
inline constexpr bool kSameRaw = std::is_same_v<Dest, Source>;
template <>
inline constexpr bool kSameRaw<Pcm8Rule, Pcm8SignedRule> = true;
template <>
inline constexpr bool kSameRaw<Pcm8SignedRule, Pcm8Rule> = true;
template <>
inline constexpr bool kSameRaw<Pcm16Rule, Pcm16BeRule> = true;
template <>
inline constexpr bool kSameRaw<Pcm16BeRule, Pcm16Rule> = true;
template <>
inline constexpr bool kSameRaw<Pcm24Rule, Pcm24BeRule> = true;
template <>
inline constexpr bool kSameRaw<Pcm24BeRule, Pcm24Rule> = true;
template <>
inline constexpr bool kSameRaw<Pcm32Rule, Pcm32BeRule> = true;
template <>
inline constexpr bool kSameRaw<Pcm32BeRule, Pcm32Rule> = true;

/// A wider integer takes a narrower one shifted to its top.
template <class Dest, class Source>
inline constexpr bool kShifts = (Dest::kBits > Source::kBits) && Dest::kInteger&& Source::kInteger;

/// The conversion at gain 1.0.
template <class Dest, class Source>
typename Dest::Raw ConvertAtUnity(typename Source::Raw raw) noexcept {
  if constexpr (kSameRaw<Dest, Source>) {
    return raw;
  } else if constexpr (kShifts<Dest, Source>) {
    return static_cast<int32_t>(static_cast<uint32_t>(raw) << (Dest::kBits - Source::kBits));
  } else {
    const double value = static_cast<double>(raw) * Source::kReadFactor;
    if constexpr (Dest::kInteger) {
      return ClampAndRound<Dest>(value * Dest::kWriteFactor);
    } else {
      return static_cast<typename Dest::Raw>(value);
    }
  }
}

/// The conversion at any other gain. A FLOAT32 source is multiplied in single precision.
template <class Dest, class Source>
typename Dest::Raw ConvertWithGain(typename Source::Raw raw, float gain) noexcept {
  double value;
  if constexpr (std::is_same_v<Source, Float32Rule>) {
    value = static_cast<double>(raw * gain);
  } else {
    value = static_cast<double>(raw) * Source::kReadFactor * static_cast<double>(gain);
  }
  if constexpr (Dest::kInteger) {
    return ClampAndRound<Dest>(value * Dest::kWriteFactor);
  } else {
    return static_cast<typename Dest::Raw>(value);
  }
}

/// The plain member of a pair, whatever the processor; null when the pair isn't served.
ZRAUDIOCOPYFUNCTION CopyMemberPlain(uint32_t destType, uint32_t sourceType) noexcept;
/// The published SSE2 members: PCM16 <-> FLOAT32 and FLOAT32 <-> FLOAT64; null for any other pair.
ZRAUDIOCOPYFUNCTION CopyMemberSse2(uint32_t destType, uint32_t sourceType) noexcept;
/// The AVX2 members: the bits of the plain ones, or of the SSE2 ones where those are published.
ZRAUDIOCOPYFUNCTION CopyMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept;

/// The plain member of a copy channels pair.
ZRAUDIOCOPYCHANNELSFUNCTION CopyChannelsMemberPlain(uint32_t destType, uint32_t sourceType) noexcept;
/// FLOAT64 from PCM16, eight frames at a time, with the bits of the plain member.
void CopyChannelsFloat64FromPcm16Sse2(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                                      uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames) noexcept;

}  // namespace marlo
