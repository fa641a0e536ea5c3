// SPDX-License-Identifier: Apache-2.0
// Mix under a gain envelope: the plain ramp members and the choice among all.
#include "audio/kernel_table.h"
#include "audio/mix.h"

namespace marlo {
namespace {

/// Adds one frame at one gain, which holds the read factor of an integer source.
template <class Dest, class Source>
void MixFrame(uint8_t* dest, const uint8_t* source, uint32_t channels, double gain) noexcept {
  for (uint32_t channel = 0; channel < channels; ++channel) {
    uint8_t* sample = dest + channel * Dest::kBytes;
    const double product = static_cast<double>(Source::Read(source + channel * Source::kBytes)) * gain;
    // FLOAT32 rounds the product first and adds in single, from any source.
    Dest::Write(sample, static_cast<typename Dest::Raw>(product) + Dest::Read(sample));
  }
}

/// The frames of one segment. A constant gain and a straight line have loops of their own; the sums are the
/// same as those of the curve, whose second difference is then 0.
template <class Dest, class Source, bool kMono, bool kStereo>
void MixSegment(uint8_t* dest, const uint8_t* source, int64_t frames, uint32_t anyChannels,
                const tZRASRCOOKED& cooked) noexcept {
  const uint32_t channels = kMono ? 1 : kStereo ? 2 : anyChannels;
  const int64_t destStride = int64_t{channels} * Dest::kBytes;
  const int64_t sourceStride = int64_t{channels} * Source::kBytes;
  double gain = cooked.gain;
  double delta = cooked.gainDelta;
  if (cooked.gainDeltaDelta != 0.0) {
    for (int64_t frame = 0; frame < frames; ++frame, dest += destStride, source += sourceStride) {
      MixFrame<Dest, Source>(dest, source, channels, gain);
      gain += delta;
      delta += cooked.gainDeltaDelta;
    }
  } else if (delta != 0.0) {
    for (int64_t frame = 0; frame < frames; ++frame, dest += destStride, source += sourceStride) {
      MixFrame<Dest, Source>(dest, source, channels, gain);
      gain += delta;
    }
  } else {
    for (int64_t frame = 0; frame < frames; ++frame, dest += destStride, source += sourceStride) {
      MixFrame<Dest, Source>(dest, source, channels, gain);
    }
  }
}

template <class Dest, class Source>
void MixRampPlain(void* dest, const void* source, int64_t frames, uint32_t channels,
                  const tZRASRCOOKED* cooked) noexcept {
  auto* to = static_cast<uint8_t*>(dest);
  const auto* from = static_cast<const uint8_t*>(source);
  if (channels == 1) {
    MixSegment<Dest, Source, true, false>(to, from, frames, 1, *cooked);
  } else if (channels == 2) {
    MixSegment<Dest, Source, false, true>(to, from, frames, 2, *cooked);
  } else {
    MixSegment<Dest, Source, false, false>(to, from, frames, channels, *cooked);
  }
}

template <class Dest, class Source>
constexpr ZRAUDIOMIXRAMPFUNCTION ChooseMixRamp() noexcept {
  if constexpr (Dest::kInteger) {
    return nullptr;
  } else {
    return MixRampPlain<Dest, Source>;
  }
}

template <class Dest, class Source>
struct RampMember {
  static constexpr ZRAUDIOMIXRAMPFUNCTION kFunction = ChooseMixRamp<Dest, Source>();
};

constexpr auto kMixRampMembers = MakePairTable<ZRAUDIOMIXRAMPFUNCTION, RampMember>(LittleEndianRules{});

}  // namespace

ZRAUDIOMIXRAMPFUNCTION MixRampMemberPlain(uint32_t destType, uint32_t sourceType) noexcept {
  return kMixRampMembers.Find(destType, sourceType);
}

ZRAUDIOMIXRAMPFUNCTION MixRampMember(uint32_t destType, uint32_t sourceType) noexcept {
  if (IsAvx2Allowed()) {
    if (const auto member = MixRampMemberAvx2(destType, sourceType)) return member;
  }
  return MixRampMemberPlain(destType, sourceType);
}

}  // namespace marlo
