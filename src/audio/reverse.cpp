// SPDX-License-Identifier: Apache-2.0
// Reversal of the order of frames.
#include <algorithm>
#include <cstring>

#include "audio/format_sides.h"
#include "marlo110k/channels.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

/// Swaps whole frames from the ends inwards; the middle one of an odd count stays. `kBytes` 0 takes the size of a
/// frame from `frameBytes`.
template <size_t kBytes>
void ReverseFrames(uint8_t* buffer, size_t frameBytes, int64_t frames) noexcept {
  const size_t bytes = kBytes ? kBytes : frameBytes;
  uint8_t* low = buffer;
  uint8_t* high = buffer + static_cast<size_t>(frames) * bytes;
  for (int64_t pair = frames / 2; pair > 0; --pair) {
    high -= bytes;
    std::swap_ranges(low, low + bytes, high);
    low += bytes;
  }
}

void ReverseInPlace(uint8_t* buffer, size_t frameBytes, int64_t frames) noexcept {
  switch (frameBytes) {
    case 2:
      return ReverseFrames<2>(buffer, frameBytes, frames);
    case 3:
      return ReverseFrames<3>(buffer, frameBytes, frames);
    case 4:
      return ReverseFrames<4>(buffer, frameBytes, frames);
    case 6:
      return ReverseFrames<6>(buffer, frameBytes, frames);
    case 8:
      return ReverseFrames<8>(buffer, frameBytes, frames);
    case 16:
      return ReverseFrames<16>(buffer, frameBytes, frames);
    default:
      return ReverseFrames<0>(buffer, frameBytes, frames);
  }
}

template <class Format>
HRESULT Reverse(const Format* destFormat, void* dest, const Format* sourceFormat, const void* source, int64_t frames,
                float gain) noexcept {
  if (frames <= 0) return S_OK;
  const FormatSide to = SideOf(destFormat);
  const bool inPlace = dest == source && to.sampleType == SideOf(sourceFormat).sampleType && gain == 1.0f;
  if (!inPlace) {
    const HRESULT result = ZrAudio_Copy(destFormat, dest, sourceFormat, source, frames, gain);
    if (FAILED(result)) return result;
  }
  const size_t frameBytes = size_t{ZrAudio_BytesFromSampleType(to.sampleType)} * to.channels;
  if (frameBytes == 0) return E_FAIL;
  ReverseInPlace(static_cast<uint8_t*>(dest), frameBytes, frames);
  return S_OK;
}

}  // namespace
}  // namespace marlo

HRESULT ZrAudio_Reverse(const WAVEFORMATEX* destFormat, void* dest, const WAVEFORMATEX* sourceFormat,
                        const void* source, int64_t frames, float gain) noexcept {
  return marlo::Reverse(destFormat, dest, sourceFormat, source, frames, gain);
}

HRESULT ZrAudio_Reverse(const _zrwaveformat* destFormat, void* dest, const _zrwaveformat* sourceFormat,
                        const void* source, int64_t frames, float gain) noexcept {
  return marlo::Reverse(destFormat, dest, sourceFormat, source, frames, gain);
}
