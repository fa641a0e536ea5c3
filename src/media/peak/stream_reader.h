// SPDX-License-Identifier: Apache-2.0
// The library's own sources of samples: an uncompressed file, and a block in memory.
#pragma once

#include "marlo110k/peak.h"
#include "marlo110k/platform/file.h"

namespace marlo::peak {

/// Characters of a path with its end.
inline constexpr uint32_t kPathCharacters = 260;

/// The frames of a Wave, Wave64 or AIFF file. Reads that follow each other need no seek.
class CZrAudioPeakWaveFileReader final : public CZrAudioPeakStreamReader {
 public:
  explicit CZrAudioPeakWaveFileReader(const char16_t* path) noexcept;
  void* DeleteSelf(uint32_t flags) override;
  HRESULT Open() override;
  HRESULT Read(int64_t position, uint32_t limit, void* buffer, uint32_t frames, uint32_t* framesRead) override;
  void Close() override;
  const WAVEFORMATEX* GetFormat() override { return &format_; }
  int32_t GetStreamIndex() override { return -1; }
  int64_t GetLength() override { return frames_; }
  HRESULT GetName(char16_t* buffer, uint32_t characters, int32_t fullPath) override;
  HRESULT Rename(const char16_t* path) override;

 private:
  ~CZrAudioPeakWaveFileReader() { Close(); }

  char16_t path_[kPathCharacters] = {};
  WAVEFORMATEX format_ = {};
  int64_t frames_ = 0;
  int64_t dataOffset_ = 0;
  plat::File* file_ = plat::kInvalidFile;
  int64_t position_ = -1;  ///< Frame at which the file stands; negative when that isn't known.
};

/// Frames in a caller's block.
class CZrAudioPeakWaveMemReader final : public CZrAudioPeakStreamReader {
 public:
  CZrAudioPeakWaveMemReader(const WAVEFORMATEX* format, const void* data, int64_t frames) noexcept;
  void* DeleteSelf(uint32_t flags) override;
  HRESULT Open() override { return S_OK; }
  HRESULT Read(int64_t position, uint32_t limit, void* buffer, uint32_t frames, uint32_t* framesRead) override;
  void Close() override {}
  const WAVEFORMATEX* GetFormat() override { return &format_; }
  int32_t GetStreamIndex() override { return -1; }
  int64_t GetLength() override { return frames_; }
  HRESULT GetName(char16_t* buffer, uint32_t characters, int32_t fullPath) override;

 private:
  ~CZrAudioPeakWaveMemReader() = default;

  WAVEFORMATEX format_ = {};
  const uint8_t* data_;
  int64_t frames_;
};

}  // namespace marlo::peak
