// SPDX-License-Identifier: Apache-2.0
// Copy with conversion and gain: the plain members of all pairs and the getters that choose a member.
#include "audio/copy.h"

#include <cstring>

#include "audio/kernel_table.h"

namespace marlo {
namespace {

/// Applies `convert` to every sample. Into wider samples from the last to the first, so that a conversion in
/// place reads each sample before its bytes are overwritten.
template <class Dest, class Source, class Convert>
void WalkSamples(uint8_t* dest, const uint8_t* source, int64_t samples, Convert convert) noexcept {
  if constexpr (Dest::kBytes > Source::kBytes) {
#pragma GCC unroll 4
    for (int64_t n = samples - 1; n >= 0; --n) {
      Dest::Write(dest + n * Dest::kBytes, convert(Source::Read(source + n * Source::kBytes)));
    }
  } else {
#pragma GCC unroll 4
    for (int64_t n = 0; n < samples; ++n) {
      Dest::Write(dest + n * Dest::kBytes, convert(Source::Read(source + n * Source::kBytes)));
    }
  }
}

template <class Dest, class Source>
void CopyPlain(void* dest, const void* source, int64_t samples, float gain) noexcept {
  auto* destBytes = static_cast<uint8_t*>(dest);
  const auto* sourceBytes = static_cast<const uint8_t*>(source);
  if (gain != 1.0f) {
    WalkSamples<Dest, Source>(destBytes, sourceBytes, samples, [gain](typename Source::Raw raw) noexcept {
      return ConvertWithGain<Dest, Source>(raw, gain);
    });
  } else if constexpr (std::is_same_v<Dest, Source>) {
    if (dest != source && samples > 0) std::memcpy(dest, source, static_cast<size_t>(samples) * Dest::kBytes);
  } else {
    WalkSamples<Dest, Source>(destBytes, sourceBytes, samples, ConvertAtUnity<Dest, Source>);
  }
}

template <class Dest, class Source>
struct CopyMember {
  static constexpr ZRAUDIOCOPYFUNCTION kFunction = CopyPlain<Dest, Source>;
};
// Two pairs that this family leaves to an intermediate format.
template <>
struct CopyMember<Pcm16BeRule, Pcm24UnpackedRule> {
  static constexpr ZRAUDIOCOPYFUNCTION kFunction = nullptr;
};
template <>
struct CopyMember<Pcm24BeRule, Pcm24UnpackedRule> {
  static constexpr ZRAUDIOCOPYFUNCTION kFunction = nullptr;
};

constexpr auto kCopyMembers = MakePairTable<ZRAUDIOCOPYFUNCTION, CopyMember>(MemoryRules{});

/// FLOAT32 <-> FLOAT64 vector members ask for the SSE bit beside the SSE2 bit.
constexpr bool IsFloatWidthPair(uint32_t destType, uint32_t sourceType) noexcept {
  return (destType == ZRSAMPLETYPE_FLOAT32 && sourceType == ZRSAMPLETYPE_FLOAT64) ||
         (destType == ZRSAMPLETYPE_FLOAT64 && sourceType == ZRSAMPLETYPE_FLOAT32);
}

}  // namespace

ZRAUDIOCOPYFUNCTION CopyMemberPlain(uint32_t destType, uint32_t sourceType) noexcept {
  return kCopyMembers.Find(destType, sourceType);
}

}  // namespace marlo

ZRAUDIOCOPYFUNCTION ZrAudio_GetCopyFunction2(uint32_t destType, uint32_t sourceType) noexcept {
  using namespace marlo;
  const bool vectors = IsAllowed(ZRCPU_SSE2) && (!IsFloatWidthPair(destType, sourceType) || IsAllowed(ZRCPU_SSE));
  if (vectors && IsAvx2Allowed()) {
    if (const auto member = CopyMemberAvx2(destType, sourceType)) return member;
  }
  if (vectors) {
    if (const auto member = CopyMemberSse2(destType, sourceType)) return member;
  }
  return CopyMemberPlain(destType, sourceType);
}
