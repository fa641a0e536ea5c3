// SPDX-License-Identifier: Apache-2.0
// What the chunk rules walk over: an open file, or a block of memory behind a cursor. Both read and write in
// full or report false, and skip without reading.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "marlo110k/mriff.h"
#include "marlo110k/platform/file.h"

namespace marlo::riff {

class FileBytes {
 public:
  explicit FileBytes(plat::File* file) noexcept : file_(file) {}

  bool Read(void* to, uint32_t bytes) const noexcept {
    uint32_t got = 0;
    return plat::ReadFile(file_, to, bytes, &got) && got == bytes;
  }
  bool Write(const void* from, uint32_t bytes) const noexcept {
    uint32_t written = 0;
    return plat::WriteFile(file_, from, bytes, &written) && written == bytes;
  }
  bool Skip(int64_t bytes) const noexcept { return plat::SeekFile(file_, bytes, plat::kSeekCurrent, nullptr); }
  bool Seek(uint64_t position) const noexcept {
    return plat::SeekFile(file_, static_cast<int64_t>(position), plat::kSeekStart, nullptr);
  }
  bool Tell(uint64_t* position) const noexcept { return plat::SeekFile(file_, 0, plat::kSeekCurrent, position); }
  /// Bytes from the position to the end; 0 when the position lies behind it or can't be told.
  uint64_t Remaining() const noexcept {
    uint64_t position = 0;
    uint64_t length = 0;
    if (!Tell(&position) || !plat::GetFileBytes(file_, &length)) return 0;
    return length > position ? length - position : 0;
  }

 private:
  plat::File* file_;
};

class MemoryBytes {
 public:
  explicit MemoryBytes(_tMRIFF* cursor) noexcept : cursor_(cursor) {}

  bool Read(void* to, uint32_t bytes) const noexcept {
    if (Remaining() < bytes) return ReadRest(to);
    // A null `to` is allowed when there is nothing to copy, which memcpy itself forbids.
    if (bytes != 0) std::memcpy(to, cursor_->current, bytes);
    cursor_->current += bytes;
    return true;
  }
  bool Write(const void* from, uint32_t bytes) const noexcept { return WriteWhatFits(from, bytes) == bytes; }
  uint32_t WriteWhatFits(const void* from, uint32_t bytes) const noexcept {
    const auto room = static_cast<uint64_t>(cursor_->capacityEnd - cursor_->current);
    const auto fitting = static_cast<uint32_t>(std::min<uint64_t>(bytes, room));
    if (fitting != 0) std::memcpy(cursor_->current, from, fitting);
    cursor_->current += fitting;
    cursor_->dataEnd = std::max(cursor_->dataEnd, cursor_->current);
    return fitting;
  }
  /// A skip is held to the data and never fails: the read that follows tells.
  bool Skip(int64_t bytes) const noexcept {
    const int64_t limit = bytes < 0 ? cursor_->base - cursor_->current : cursor_->dataEnd - cursor_->current;
    cursor_->current += bytes < 0 ? std::max(bytes, limit) : std::min(bytes, limit);
    return true;
  }
  bool Seek(uint64_t position) const noexcept {
    const auto dataBytes = static_cast<uint64_t>(cursor_->dataEnd - cursor_->base);
    cursor_->current = cursor_->base + std::min(position, dataBytes);
    return true;
  }
  bool Tell(uint64_t* position) const noexcept {
    *position = static_cast<uint64_t>(cursor_->current - cursor_->base);
    return true;
  }
  uint64_t Remaining() const noexcept { return static_cast<uint64_t>(cursor_->dataEnd - cursor_->current); }

 private:
  bool ReadRest(void* to) const noexcept {
    const uint64_t rest = Remaining();
    if (rest != 0) std::memcpy(to, cursor_->current, rest);
    cursor_->current = cursor_->dataEnd;
    return false;
  }

  _tMRIFF* cursor_;
};

/// Puts the position back when it goes out of scope. `Saved` is false when it couldn't be told.
template <class Source>
class PositionKeeper {
 public:
  explicit PositionKeeper(Source source) noexcept : source_(source), saved_(source.Tell(&position_)) {}
  ~PositionKeeper() {
    if (saved_) source_.Seek(position_);
  }
  PositionKeeper(const PositionKeeper&) = delete;
  PositionKeeper& operator=(const PositionKeeper&) = delete;

  bool Saved() const noexcept { return saved_; }
  uint64_t Position() const noexcept { return position_; }

 private:
  Source source_;
  uint64_t position_ = 0;
  bool saved_;
};

}  // namespace marlo::riff
