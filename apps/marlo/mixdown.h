// SPDX-License-Identifier: Apache-2.0
// The sum of several files on one time line, block by block in constant memory.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "audio_reader.h"
#include "mix_input.h"

namespace host {

class Mixdown {
 public:
  /// Opens all inputs. Throws a Failure when they haven't one rate, or when one has neither one channel
  /// nor as many as the widest.
  explicit Mixdown(std::span<const MixInput> inputs);

  uint32_t Rate() const { return sum_.samplesPerSec; }
  uint16_t Channels() const { return sum_.channels; }
  uint32_t ChannelMask() const { return sum_.channelMask; }
  ZRSAMPLETYPE FirstType() const { return tracks_.front().reader->Type(); }
  int64_t Frames() const { return frames_; }
  /// The descriptor of the blocks that Render gives: doubles.
  const _zrwaveformat& Format() const { return sum_; }

  /// Sums the next block. @param frames how many; 0 at the end. @return the samples, valid until the next call.
  const double* Render(uint32_t* frames);
  /// The highest absolute sample so far; above 1.0 the integer types limit it.
  double Peak() const { return peak_; }

 private:
  struct Track {
    std::unique_ptr<AudioReader> reader;
    int64_t startFrame;
    double gain;
  };

  void Add(Track& track, int64_t blockStart, uint32_t frames);

  std::vector<Track> tracks_;
  _zrwaveformat sum_;
  int64_t frames_ = 0;
  int64_t position_ = 0;
  double peak_ = 0;
  std::vector<double> block_;
  std::vector<uint8_t> source_;
  std::vector<double> widened_;
};

}  // namespace host
