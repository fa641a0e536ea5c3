// SPDX-License-Identifier: Apache-2.0
// Draws a stretch of audio as an editor shows it: a lane for every channel, a scale in decibels, a ruler of time.
#pragma once

#include <cstdint>

#include "image.h"
#include "marlo110k/peak.h"

namespace host {

struct WaveformView {
  int64_t first;  ///< Frame at the left edge.
  int64_t count;  ///< Frames shown, at least 1.
  int32_t width;
  int32_t height;
};

/// What a picture has room for.
inline constexpr int32_t kLeastWaveformWidth = 120;
inline constexpr int32_t kLeastLaneHeight = 24;
inline constexpr int32_t kWaveformRulerHeight = 24;

/// Reads what it needs from the peak object. Throws a Failure about `subject` when that fails.
Image DrawWaveform(IZrAudioPeak* peak, const WaveformView& view, const char* subject);

}  // namespace host
