// SPDX-License-Identifier: Apache-2.0
// Copy of one channel inside interleaved frames, with conversion at gain 1.0.
#include "audio/copy.h"
#include "audio/kernel_table.h"

namespace marlo {
namespace {

template <class Dest, class Source>
void CopyChannelsPlain(void* dest, uint32_t destChannels, uint32_t destIndex, const void* source,
                       uint32_t sourceChannels, uint32_t sourceIndex, int64_t frames) noexcept {
  if (frames <= 0) return;
  // Moving bytes in place onto a wider stride would overwrite frames that are still to be read.
  if constexpr (std::is_same_v<Dest, Source>) {
    if (dest == source && destChannels > sourceChannels) return;
  }
  const int64_t destStride = int64_t{destChannels} * Dest::kBytes;
  const int64_t sourceStride = int64_t{sourceChannels} * Source::kBytes;
  auto* to = static_cast<uint8_t*>(dest) + int64_t{destIndex} * Dest::kBytes;
  const auto* from = static_cast<const uint8_t*>(source) + int64_t{sourceIndex} * Source::kBytes;
  if constexpr (Dest::kBytes > Source::kBytes) {
#pragma GCC unroll 4
    for (int64_t frame = frames - 1; frame >= 0; --frame) {
      Dest::Write(to + frame * destStride, ConvertAtUnity<Dest, Source>(Source::Read(from + frame * sourceStride)));
    }
  } else {
#pragma GCC unroll 4
    for (int64_t frame = 0; frame < frames; ++frame) {
      Dest::Write(to + frame * destStride, ConvertAtUnity<Dest, Source>(Source::Read(from + frame * sourceStride)));
    }
  }
}

/// Pairs with a right-aligned type on one side; the other types all go with each other.
constexpr bool IsRightAlignedPairServed(uint32_t destType, uint32_t sourceType) noexcept {
  constexpr struct {
    uint32_t dest, source;
  } kPairs[] = {
      {ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM16RA},   {ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM16RA},
      {ZRSAMPLETYPE_PCM32, ZRSAMPLETYPE_PCM16RA},   {ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM16RA},
      {ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_PCM16RA}, {ZRSAMPLETYPE_PCM24UNPACKED, ZRSAMPLETYPE_PCM16RA},
      {ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM24RA},   {ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM24RA},
      {ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM24RA}, {ZRSAMPLETYPE_FLOAT64, ZRSAMPLETYPE_PCM24RA},
      {ZRSAMPLETYPE_PCM16RA, ZRSAMPLETYPE_PCM16},   {ZRSAMPLETYPE_PCM16RA, ZRSAMPLETYPE_PCM24},
      {ZRSAMPLETYPE_PCM16RA, ZRSAMPLETYPE_FLOAT32}, {ZRSAMPLETYPE_PCM24RA, ZRSAMPLETYPE_PCM16},
      {ZRSAMPLETYPE_PCM24RA, ZRSAMPLETYPE_PCM24},   {ZRSAMPLETYPE_PCM24RA, ZRSAMPLETYPE_FLOAT32},
  };
  for (const auto& pair : kPairs) {
    if (pair.dest == destType && pair.source == sourceType) return true;
  }
  return false;
}

template <class Rule>
constexpr bool kRightAligned = Rule::kType == ZRSAMPLETYPE_PCM16RA || Rule::kType == ZRSAMPLETYPE_PCM24RA;

template <class Dest, class Source>
constexpr ZRAUDIOCOPYCHANNELSFUNCTION ChooseCopyChannels() noexcept {
  if constexpr (kRightAligned<Dest> || kRightAligned<Source>) {
    if constexpr (IsRightAlignedPairServed(Dest::kType, Source::kType)) {
      return CopyChannelsPlain<Dest, Source>;
    } else {
      return nullptr;
    }
  } else {
    return CopyChannelsPlain<Dest, Source>;
  }
}

template <class Dest, class Source>
struct CopyChannelsMember {
  static constexpr ZRAUDIOCOPYCHANNELSFUNCTION kFunction = ChooseCopyChannels<Dest, Source>();
};

constexpr auto kCopyChannelsMembers = MakePairTable<ZRAUDIOCOPYCHANNELSFUNCTION, CopyChannelsMember>(AllRules{});

}  // namespace

ZRAUDIOCOPYCHANNELSFUNCTION CopyChannelsMemberPlain(uint32_t destType, uint32_t sourceType) noexcept {
  return kCopyChannelsMembers.Find(destType, sourceType);
}

}  // namespace marlo

ZRAUDIOCOPYCHANNELSFUNCTION ZrAudio_GetCopyChannelsFunction2(uint32_t destType, uint32_t sourceType) noexcept {
  using namespace marlo;
  if (destType == ZRSAMPLETYPE_FLOAT64 && sourceType == ZRSAMPLETYPE_PCM16 &&
      (ZrGetCPUSupport(ZRCPU_FEATURES) & ZRCPU_SSE2) != 0) {
    return CopyChannelsFloat64FromPcm16Sse2;
  }
  return CopyChannelsMemberPlain(destType, sourceType);
}
