// SPDX-License-Identifier: Apache-2.0
// Peak and RMS of a stretch of samples that comes in blocks.
#pragma once

#include <cstdint>
#include <vector>

#include "marlo110k/waveformat.h"

namespace host {

struct ChannelLevel {
  double peak = 0;        ///< 1.0 is full scale; the integer types end just below it.
  int64_t peakFrame = 0;  ///< Of the last sample with that peak, from the start of the stretch.
  bool clipped = false;   ///< Integers: three full-scale samples in a row; floats: one above 1.0.
  double squares = 0;     ///< Sum of the squares.
  double Rms(int64_t frames) const;
};

class LevelMeter {
 public:
  /// @param format of the blocks.
  explicit LevelMeter(const _zrwaveformat& format);

  /// Adds a block. Throws a Failure for a type that can't be measured.
  void Add(const void* samples, uint32_t frames);
  int64_t Frames() const { return frames_; }
  const std::vector<ChannelLevel>& Channels() const { return levels_; }

 private:
  void FindPeaks(const void* samples, uint32_t frames);
  void AddSquares(const void* samples, uint32_t frames);

  _zrwaveformat source_;
  _zrwaveformat peakFormat_;  ///< The little-endian twin of a big-endian source.
  _zrwaveformat doubles_;
  int64_t frames_ = 0;
  std::vector<ChannelLevel> levels_;
  std::vector<uint8_t> carried_;  ///< The last frames of the former block, then the present one.
  uint32_t carriedFrames_ = 0;
  std::vector<double> doubleSamples_;
};

}  // namespace host
