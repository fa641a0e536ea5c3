// SPDX-License-Identifier: Apache-2.0
// Opens audio files by the library's format reader and streams their samples.
#include "audio_reader.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "chunk_header.h"
#include "errors.h"
#include "marlo110k/wavefile.h"
#include "unicode.h"

namespace host {

AudioReader::AudioReader(const std::string& path) : path_(path), file_(OpenFile::ForReading(path)) {
  const std::unique_ptr<WAVEFORMATEX, decltype(&std::free)> wfx(
      ZrGetFileWfx(ToUtf16(path).c_str(), &frames_, &dataOffset_), &std::free);
  if (!wfx) throw Failure(ReadFormHeader(file_.Get()) ? ZR_E_UNSUPPORTED_FILE : ZR_E_UNKNOWN_FORMAT, path);
  format_.Init(sizeof format_, wfx.get());
  const uint32_t frameBytes = uint32_t{ZrAudio_BytesFromSampleType(format_.sampleType)} * format_.channels;
  if (frameBytes == 0 || frameBytes != format_.blockAlign || format_.samplesPerSec == 0) {
    throw Failure(ZR_E_UNSUPPORTED_FILE, path);
  }
  SeekTo(file_.Get(), dataOffset_, path);
}

uint32_t AudioReader::Read(void* buffer, uint32_t frames) {
  const auto count = static_cast<uint32_t>(std::min<int64_t>(frames, FramesLeft()));
  if (count == 0) return 0;
  if (!file_.IsOpen()) {
    file_ = OpenFile::ForReading(path_);
    SeekTo(file_.Get(), dataOffset_ + position_ * format_.blockAlign, path_);
  }
  const uint32_t bytes = count * format_.blockAlign;
  uint32_t got = 0;
  if (!ZrReadFile(file_.Get(), buffer, bytes, &got)) throw Failure(ZR_E_FILE_READ, path_);
  if (got != bytes) {
    throw Failure(ZR_E_FILE_READ, path_, "The file ends before its samples do; \"marlo repair\" can put it right.");
  }
  position_ += count;
  return count;
}

uint32_t BlockFrames(uint16_t channels) {
  constexpr uint32_t kBlockSamples = 1u << 17;
  return std::max(1u, kBlockSamples / std::max<uint32_t>(channels, 1));
}

}  // namespace host
