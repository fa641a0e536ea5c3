// SPDX-License-Identifier: Apache-2.0
// A file that misbehaves to order, for tests: short reads and writes, errors, a full disk.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/sys/file_backend.h"

namespace plat {

/// What goes wrong. Calls are counted from 1; kNever switches a fault off.
struct FileFaults {
  static constexpr uint64_t kNever = ~uint64_t{0};

  uint64_t shortReadsAfterCalls = kNever;   ///< Reads after so many give at most `shortBytes`.
  uint64_t shortWritesAfterCalls = kNever;  ///< Writes after so many take at most `shortBytes` and fail with 112.
  uint32_t shortBytes = 1;
  uint64_t readErrorAtCall = kNever;  ///< This read fails with `error`; nothing is read.
  uint64_t writeErrorAtCall = kNever;
  uint32_t error = 1117;             ///< A device error.
  uint64_t diskFullAtByte = kNever;  ///< No byte at or behind this offset can be written.
  bool failSize = false;             ///< Asking for and setting the length fail with `error`.
  bool failFlush = false;
};

/// Stands between a file and its own backend. The test keeps the pointer to change the faults and to read the
/// counts; the file deletes it.
class FaultBackend final : public FileBackend {
 public:
  /// Wraps the file's present backend.
  static FaultBackend* Install(File* file, const FileFaults& faults) {
    FaultBackend* wrapper = new FaultBackend(faults);
    wrapper->inner_ = ExchangeBackend(file, wrapper);
    return wrapper;
  }
  ~FaultBackend() override { delete inner_; }

  uint32_t ReadAt(uint64_t offset, void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    *bytesRead = 0;
    if (++reads == faults.readErrorAtCall) return faults.error;
    if (reads > faults.shortReadsAfterCalls) bytes = std::min(bytes, faults.shortBytes);
    return inner_->ReadAt(offset, buffer, bytes, bytesRead);
  }

  uint32_t WriteAt(uint64_t offset, const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    constexpr uint32_t kErrorDiskFull = 112;
    *bytesWritten = 0;
    if (++writes == faults.writeErrorAtCall) return faults.error;
    uint32_t taken = bytes;
    if (writes > faults.shortWritesAfterCalls) taken = std::min(taken, faults.shortBytes);
    if (faults.diskFullAtByte != FileFaults::kNever) {
      const uint64_t room = offset < faults.diskFullAtByte ? faults.diskFullAtByte - offset : 0;
      taken = static_cast<uint32_t>(std::min<uint64_t>(taken, room));
    }
    const uint32_t error = taken == 0 ? 0 : inner_->WriteAt(offset, data, taken, bytesWritten);
    return error == 0 && taken < bytes ? kErrorDiskFull : error;
  }

  uint32_t SetBytes(uint64_t bytes) override {
    if (faults.failSize) return faults.error;
    return bytes > faults.diskFullAtByte ? 112u : inner_->SetBytes(bytes);
  }
  uint32_t GetBytes(uint64_t* bytes) override { return faults.failSize ? faults.error : inner_->GetBytes(bytes); }
  uint32_t Flush() override { return faults.failFlush ? faults.error : inner_->Flush(); }

  FileFaults faults;
  uint64_t reads = 0;
  uint64_t writes = 0;

 private:
  explicit FaultBackend(const FileFaults& planned) : faults(planned) {}
  FileBackend* inner_ = nullptr;
};

}  // namespace plat
