// SPDX-License-Identifier: Apache-2.0
// Mix with a gain for each channel: the plain members of all pairs and the getter that chooses a member.
#include "audio/mix.h"

#include "audio/kernel_table.h"

namespace marlo {
namespace {

template <class Dest, class Source>
void MixPlain(void* dest, const void* source, int64_t samples, uint32_t channels, const double* gains) noexcept {
  if (dest == source || samples <= 0 || channels == 0) return;
  const bool wide = channels > 2;
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  const auto mix = [to, from, gains, wide](int64_t n, uint32_t channel) noexcept {
    uint8_t* sample = to + n * Dest::kBytes;
    Dest::Write(sample, MixSample<Dest, Source>(Dest::Read(sample), Source::Read(from + n * Source::kBytes),
                                                gains[channel], wide));
  };
  if constexpr (Dest::kBytes > Source::kBytes) {
    auto channel = static_cast<uint32_t>((samples - 1) % channels);
#pragma GCC unroll 4
    for (int64_t n = samples - 1; n >= 0; --n) {
      mix(n, channel);
      channel = channel == 0 ? channels - 1 : channel - 1;
    }
  } else {
    uint32_t channel = 0;
#pragma GCC unroll 4
    for (int64_t n = 0; n < samples; ++n) {
      mix(n, channel);
      channel = channel + 1 == channels ? 0 : channel + 1;
    }
  }
}

template <class Dest, class Source>
struct MixMember {
  static constexpr ZRAUDIOMIXFUNCTION kFunction = MixPlain<Dest, Source>;
};

constexpr auto kMixMembers = MakePairTable<ZRAUDIOMIXFUNCTION, MixMember>(LittleEndianRules{});

}  // namespace

ZRAUDIOMIXFUNCTION MixMemberPlain(uint32_t destType, uint32_t sourceType) noexcept {
  return kMixMembers.Find(destType, sourceType);
}

}  // namespace marlo

ZRAUDIOMIXFUNCTION ZrAudio_GetMixFunction2(uint32_t destType, uint32_t sourceType) noexcept {
  using namespace marlo;
  if (IsAvx2Allowed()) {
    if (const auto member = MixMemberAvx2(destType, sourceType)) return member;
  }
  if (destType == ZRSAMPLETYPE_FLOAT32 && sourceType == ZRSAMPLETYPE_FLOAT32 && IsAllowed(ZRCPU_SSE2)) {
    return MixFloat32Sse2;
  }
  return MixMemberPlain(destType, sourceType);
}
