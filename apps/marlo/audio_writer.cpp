// SPDX-License-Identifier: Apache-2.0
// Streams samples behind a file's front and completes the front at the end.
#include "audio_writer.h"

#include "errors.h"

namespace host {

AudioWriter::AudioWriter(const std::string& path, Container container, const _zrwaveformat& format, int64_t frames)
    : output_(path), front_(container, format) {
  CheckRoom(static_cast<uint64_t>(frames) * format.blockAlign);
  file_ = front_.Create(output_.TemporaryPath());
}

void AudioWriter::CheckRoom(uint64_t dataBytes) const {
  if (dataBytes > front_.MostDataBytes()) {
    const bool aiff = front_.IsAiff();
    throw Failure(ZR_E_FILE_TOO_LARGE, output_.Path(),
                  std::string(aiff ? "An AIFF" : "A Wave") +
                      " file can't be as long as that; write a Wave64 file (.w64) instead.");
  }
}

void AudioWriter::Write(const void* samples, uint32_t frames) {
  const uint32_t bytes = frames * front_.FrameBytes();
  CheckRoom(dataBytes_ + bytes);
  if (!plat::WriteFile(file_.Get(), samples, bytes, nullptr)) throw WriteFailure(output_.Path());
  dataBytes_ += bytes;
}

void AudioWriter::Finish() {
  front_.Complete(file_.Get(), dataBytes_, output_.Path());
  file_.Close();
  output_.Commit();
}

}  // namespace host
