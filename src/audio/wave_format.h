// SPDX-License-Identifier: Apache-2.0
// What both descriptions of an audio format have in common: speaker masks, SubFormats and extra bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "marlo110k/waveformat.h"

namespace marlo {

/// Bytes of an extensible format behind the 18-byte head, as cbSize counts them.
inline constexpr uint32_t kExtensibleBytes = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);

/// The lowest bits, one a channel; all of them from 32 channels on.
constexpr uint32_t DefaultChannelMask(uint32_t channels) noexcept {
  return channels >= 32 ? 0xFFFFFFFFu : (1u << channels) - 1;
}

/// Whether a mask says more than the number of channels does.
constexpr bool IsSpecialMask(uint32_t mask, uint32_t channels) noexcept {
  return mask != 0 && mask != DefaultChannelMask(channels);
}

/// Whether a format of a sample type has to be extensible to state its speakers. A mask with more speakers
/// than channels states none, and mono and stereo don't state their default.
constexpr bool SpeakersNeedExtensible(uint32_t mask, uint32_t channels) noexcept {
  if (std::popcount(mask) > static_cast<int>(channels)) return false;
  return channels >= 3 ? mask != 0 : IsSpecialMask(mask, channels);
}

/// Masks are the same speakers when they are equal, 0 standing for the default.
constexpr bool SameSpeakers(uint32_t left, uint32_t right, uint32_t channels) noexcept {
  const uint32_t standard = DefaultChannelMask(channels);
  return (left ? left : standard) == (right ? right : standard);
}

/// The extensible form of a format that really has its 22 further bytes, or null.
inline const WAVEFORMATEXTENSIBLE* AsExtensible(const WAVEFORMATEX* wfx) noexcept {
  if (wfx->wFormatTag != WAVE_FORMAT_EXTENSIBLE || wfx->cbSize < kExtensibleBytes) return nullptr;
  return reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(wfx);
}

/// Bytes of format-specific data; null and 0 when there is none.
struct ExtraBytes {
  const uint8_t* data;
  uint32_t bytes;
};

/// The extra data of a WAVEFORMATEX: none for the plain tags 1 and 3, whose cbSize may not exist.
ExtraBytes ExtraOf(const WAVEFORMATEX* wfx) noexcept;
/// The extra data of a record; a record below 34 bytes has none.
ExtraBytes ExtraOf(const _zrwaveformat& format) noexcept;

/// The standard SubFormat of a tag.
GUID SubFormatOf(uint32_t tag) noexcept;
/// The tag in a standard SubFormat. @return false for any other SubFormat.
bool TagOfSubFormat(const WAVEFORMATEXTENSIBLE& wfext, uint16_t& tag) noexcept;

/// The speakers that a WAVEFORMATEX states; 0 when it isn't extensible.
inline uint32_t ChannelMaskOf(const WAVEFORMATEX* wfx) noexcept {
  const WAVEFORMATEXTENSIBLE* extensible = AsExtensible(wfx);
  return extensible ? extensible->dwChannelMask : 0;
}

}  // namespace marlo
