// SPDX-License-Identifier: Apache-2.0
// The mix family: how one sample is added, and the members that the getters choose among.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "audio/sample_rules.h"
#include "marlo110k/samples.h"

namespace marlo {

/// Destinations that add in integer arithmetic after the source has been converted to their raw form; the
/// wider integers add in double precision and round once.
template <class Dest>
inline constexpr bool kAddsIntegers = Dest::kType == ZRSAMPLETYPE_PCM8 || Dest::kType == ZRSAMPLETYPE_PCM8SIGNED ||
                                      Dest::kType == ZRSAMPLETYPE_PCM16 || Dest::kType == ZRSAMPLETYPE_PCM24UNPACKED;

/// A sum that wraps: only words outside the range of PCM24UNPACKED can reach the end of 32 bits.
inline int32_t WrappingSum(int32_t left, int32_t right) noexcept {
  return static_cast<int32_t>(static_cast<uint32_t>(left) + static_cast<uint32_t>(right));
}

/// The raw value of `dest` plus the source at a gain. `wide` says that the buffer has more than two channels:
/// FLOAT32 into FLOAT32 then multiplies by the gain rounded to single, where mono and stereo round the
/// product instead.
template <class Dest, class Source>
typename Dest::Raw MixSample(typename Dest::Raw dest, typename Source::Raw source, double gain, bool wide) noexcept {
  const double value = static_cast<double>(source) * Source::kReadFactor * gain;
  if constexpr (kAddsIntegers<Dest>) {
    const int32_t addend = std::is_same_v<Dest, Source> && gain == 1.0
                               ? static_cast<int32_t>(source)
                               : ClampAndRound<Dest>(value * Dest::kWriteFactor);
    return std::clamp(WrappingSum(dest, addend), Dest::kRawLow, Dest::kRawHigh);
  } else if constexpr (Dest::kInteger) {
    return ClampAndRound<Dest>((value + static_cast<double>(dest) * Dest::kReadFactor) * Dest::kWriteFactor);
  } else if constexpr (std::is_same_v<Dest, Float32Rule> && std::is_same_v<Source, Float32Rule>) {
    return (wide ? static_cast<float>(gain) * source : static_cast<float>(value)) + dest;
  } else {
    return static_cast<typename Dest::Raw>(value + static_cast<double>(dest));
  }
}

/// The plain members.
ZRAUDIOMIXFUNCTION MixMemberPlain(uint32_t destType, uint32_t sourceType) noexcept;
ZRAUDIOMIXRAMPFUNCTION MixRampMemberPlain(uint32_t destType, uint32_t sourceType) noexcept;
/// FLOAT32 into FLOAT32. With both pointers on 16 bytes stereo multiplies by the gains as singles; anything
/// else is the plain member.
void MixFloat32Sse2(void* dest, const void* source, int64_t samples, uint32_t channels, const double* gains) noexcept;
/// The AVX2 members: the bits of the plain ones, or of the SSE2 one for FLOAT32 into FLOAT32.
ZRAUDIOMIXFUNCTION MixMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept;
ZRAUDIOMIXRAMPFUNCTION MixRampMemberAvx2(uint32_t destType, uint32_t sourceType) noexcept;

/// The ramp function to use for a pair at this moment; null when it isn't served.
ZRAUDIOMIXRAMPFUNCTION MixRampMember(uint32_t destType, uint32_t sourceType) noexcept;

}  // namespace marlo
