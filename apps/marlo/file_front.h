// SPDX-License-Identifier: Apache-2.0
// What stands before the samples of a file, first with empty sizes and in the end with the real ones.
#pragma once

#include <cstdint>
#include <string>

#include "open_file.h"
#include "sample_format.h"

namespace host {

/// Wave and Wave64 fronts have the plain 18-byte format; more than two channels, or speakers that the
/// count doesn't imply, need the extensible one. AIFF fronts are FORM, COMM and SSND; AIFC adds FVER and
/// the "sowt" compression type, which means little-endian samples.
class FileFront {
 public:
  FileFront(Container container, const _zrwaveformat& format) : container_(container), format_(format) {}

  /// Creates the file, which must not exist, and leaves it open behind the front.
  OpenFile Create(const std::string& path);
  /// Pads the samples and writes the sizes.
  void Complete(plat::File* file, uint64_t dataBytes, const std::string& path) const;

  uint32_t FrameBytes() const { return format_.blockAlign; }
  /// The most bytes of samples that the size fields can count.
  uint64_t MostDataBytes() const;
  bool IsAiff() const { return container_ == Container::kAiff || container_ == Container::kAifc; }

 private:
  void WriteExtensible(plat::File* file, const WAVEFORMATEXTENSIBLE& wfext, const std::string& path) const;
  void WriteAiff(plat::File* file, uint64_t dataBytes, const std::string& path) const;

  Container container_;
  _zrwaveformat format_;
  int64_t dataOffset_ = 0;  ///< Of the first sample; known once the front is written.
};

}  // namespace host
