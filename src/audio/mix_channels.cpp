// SPDX-License-Identifier: Apache-2.0
// Mix of one channel inside interleaved frames.
#include "audio/kernel_table.h"
#include "audio/mix.h"

namespace marlo {
namespace {

template <class Dest, class Source>
void MixChannelsPlain(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                      uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames, double gain) noexcept {
  if (frames <= 0 || (dest == source && destIndex == sourceIndex)) return;
  const int64_t destStride = int64_t{destChannels} * Dest::kBytes;
  const int64_t sourceStride = int64_t{sourceChannels} * Source::kBytes;
  auto* to = static_cast<uint8_t*>(dest) + int64_t{destIndex} * Dest::kBytes;
  const auto* from = static_cast<const uint8_t*>(source) + int64_t{sourceIndex} * Source::kBytes;
  const auto mix = [=](int64_t frame) noexcept {
    uint8_t* sample = to + frame * destStride;
    Dest::Write(sample, MixSample<Dest, Source>(Dest::Read(sample), Source::Read(from + frame * sourceStride), gain,
                                                /*wide=*/false));
  };
  if constexpr (Dest::kBytes > Source::kBytes) {
#pragma GCC unroll 4
    for (int64_t frame = frames - 1; frame >= 0; --frame) mix(frame);
  } else {
#pragma GCC unroll 4
    for (int64_t frame = 0; frame < frames; ++frame) mix(frame);
  }
}

template <class Dest, class Source>
struct MixChannelsMember {
  static constexpr ZRAUDIOMIXCHANNELSFUNCTION kFunction = MixChannelsPlain<Dest, Source>;
};

constexpr auto kMixChannelsMembers = MakePairTable<ZRAUDIOMIXCHANNELSFUNCTION, MixChannelsMember>(LittleEndianRules{});

}  // namespace
}  // namespace marlo

ZRAUDIOMIXCHANNELSFUNCTION ZrAudio_GetMixChannelsFunction2(uint32_t destType, uint32_t sourceType) noexcept {
  return marlo::kMixChannelsMembers.Find(destType, sourceType);
}
