// SPDX-License-Identifier: Apache-2.0
// Writes samples as a Wave, Wave64, AIFF or AIFC file; the file gets its name when it is finished.
#pragma once

#include <cstdint>
#include <string>

#include "file_front.h"
#include "open_file.h"
#include "output_file.h"
#include "sample_format.h"

namespace host {

class AudioWriter {
 public:
  /// Begins the file. `format` has a type that the container holds (TypeInContainer).
  /// @param frames as many as will be written when that is known, or 0: a file that can't hold them is
  /// refused before anything is written, with ZR_E_FILE_TOO_LARGE.
  AudioWriter(const std::string& path, Container container, const _zrwaveformat& format, int64_t frames);

  /// Appends frames. Throws ZR_E_FILE_TOO_LARGE when they pass what the container can count.
  void Write(const void* samples, uint32_t frames);
  /// Writes the final sizes and gives the file its name.
  void Finish();

 private:
  void CheckRoom(uint64_t dataBytes) const;

  OutputFile output_;
  FileFront front_;
  OpenFile file_;
  uint64_t dataBytes_ = 0;
};

}  // namespace host
