// SPDX-License-Identifier: Apache-2.0
// What a format must be to be written into a file's front.
#pragma once

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/wave.h"
#include "marlo110k/waveformat.h"

namespace marlo {

/// PCM isn't 20-bit, and its frames are whole bytes of bits times channels.
inline HRESULT CheckPcm(const WAVEFORMATEX& format) noexcept {
  if (format.wFormatTag != WAVE_FORMAT_PCM) return S_OK;
  const uint32_t frameBytes = static_cast<uint32_t>(format.nChannels) * (format.wBitsPerSample >> 3);
  return format.wBitsPerSample == 20 || frameBytes != format.nBlockAlign ? ZR_E_UNSUPPORTED_MEDIA : S_OK;
}

/// The same, and no extra bytes: a front has room for 18.
inline HRESULT CheckFrontFormat(const WAVEFORMATEX& format) noexcept {
  return format.cbSize != 0 ? ZR_E_UNSUPPORTED_MEDIA : CheckPcm(format);
}

/// `plain` as an argument, or null when there was nothing to convert.
inline const WAVEFORMATEX* HeaderForm(const _zrwaveformat* format, const _zrwaveformat_wfxcopyhelper& plain) noexcept {
  return format != nullptr ? &plain : nullptr;
}

}  // namespace marlo
