// SPDX-License-Identifier: Apache-2.0
// What the sample calls ask of a format, whichever descriptor states it.
#pragma once

#include <cstdint>

#include "marlo110k/waveformat.h"

namespace marlo {

struct FormatSide {
  uint32_t sampleType;  ///< ZRSAMPLETYPE_NONE for a null format.
  uint32_t channels;
  uint32_t rate;
};

inline FormatSide SideOf(const WAVEFORMATEX* format) noexcept {
  if (!format) return {ZRSAMPLETYPE_NONE, 0, 0};
  return {ZrAudio_GetSampleType(format), format->nChannels, format->nSamplesPerSec};
}

inline FormatSide SideOf(const _zrwaveformat* format) noexcept {
  if (!format) return {ZRSAMPLETYPE_NONE, 0, 0};
  return {format->sampleType, format->channels, format->samplesPerSec};
}

}  // namespace marlo
