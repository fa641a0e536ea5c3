// SPDX-License-Identifier: Apache-2.0
// Reads the samples of a Wave, Wave64 or AIFF file from front to end.
#pragma once

#include <cstdint>
#include <string>

#include "open_file.h"
#include "sample_format.h"

namespace host {

class AudioReader {
 public:
  /// Opens the file and reads its format. Throws a Failure when it holds no samples of a known type.
  explicit AudioReader(const std::string& path);

  const std::string& Path() const { return path_; }
  const _zrwaveformat& Format() const { return format_; }
  ZRSAMPLETYPE Type() const { return static_cast<ZRSAMPLETYPE>(format_.sampleType); }
  int64_t Frames() const { return frames_; }
  int64_t FramesLeft() const { return frames_ - position_; }

  /// Reads the next frames, at most `frames`, into a buffer with room for them.
  /// @return how many came; fewer only at the end. Throws a Failure when the file ends before its samples.
  uint32_t Read(void* buffer, uint32_t frames);

  /// Closes the file until the next Read, which goes on where this one ended.
  void Suspend() { file_.Close(); }

 private:
  std::string path_;
  _zrwaveformat format_;
  OpenFile file_;
  int64_t dataOffset_ = 0;
  int64_t frames_ = 0;
  int64_t position_ = 0;
};

/// Frames that make a block of about a megabyte of doubles, for work in constant memory.
uint32_t BlockFrames(uint16_t channels);

}  // namespace host
