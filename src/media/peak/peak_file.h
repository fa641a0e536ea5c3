// SPDX-License-Identifier: Apache-2.0
// The peak file on disk: its name, its header, its entries.
#pragma once

#include "marlo110k/peak.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/waveformat.h"
#include "media/peak/stream_reader.h"

namespace marlo::peak {

/// Entries that cover so many frames.
constexpr int64_t EntriesFor(int64_t samples, int64_t interval) noexcept {
  return samples / interval + (samples % interval != 0 ? 1 : 0);
}

constexpr bool IsInterval(int64_t interval) noexcept {
  return interval >= kZrAudioPeakMinInterval && interval <= kZrAudioPeakMaxInterval;
}

struct PeakFile {
  PeakFile() = default;
  ~PeakFile() { Close(); }
  PeakFile(const PeakFile&) = delete;
  PeakFile& operator=(const PeakFile&) = delete;

  bool IsOpen() const noexcept { return handle != plat::kInvalidFile; }
  /// Opens an existing file as the flags say and reads its header, unless a changed one waits to be written. A file
  /// without a whole header leaves it empty.
  bool Open() noexcept;
  /// Opens for writing, making the file when there is none. @return false with plat::LastError() set.
  bool Create() noexcept;
  void Close() noexcept;

  /// Whether the header can be read by for media of so many channels, and lies within the file.
  bool IsUsable(uint32_t channels) const noexcept;
  uint32_t PeakType() const noexcept { return header.bits == 16 ? ZRSAMPLETYPE_PCM16 : ZRSAMPLETYPE_PCM8SIGNED; }
  uint32_t EntryBytes() const noexcept { return 2 * header.channels * header.bits / 8; }
  /// Whole entries in a file of so many bytes that the header counts too.
  int64_t Entries(uint64_t bytes) const noexcept;

  /// Reads whole entries; false when not all could be read.
  bool ReadEntries(int64_t index, int64_t count, void* entries) const noexcept;
  /// @return ZR_E_FILE_WRITE when not all could be written, also past the end of what a file can hold.
  HRESULT WriteEntries(int64_t index, const void* entries, size_t bytes) noexcept;
  HRESULT WriteHeader() noexcept;
  /// Cuts or extends the file to so many entries.
  HRESULT SetEntries(int64_t entries) noexcept;

  char16_t path[kPathCharacters] = {};
  bool readOnly = false;
  bool shareWrite = false;
  bool hidden = false;  ///< Wished for; this system's files have no such attribute.
  bool dirty = false;   ///< The header has changed since it was last written.
  plat::File* handle = plat::kInvalidFile;
  tZRAUDIOPEAK_HEADER header = {};  ///< As it stands in the file.

 private:
  HRESULT WriteAt(int64_t offset, const void* data, size_t bytes) noexcept;
  int64_t OffsetOf(int64_t entry) const noexcept;  ///< Negative for one past any file.

  uint64_t bytesAtOpen_ = 0;
};

}  // namespace marlo::peak
