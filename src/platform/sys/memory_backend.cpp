// SPDX-License-Identifier: Apache-2.0
// Files in a block of memory that grows up to a fixed capacity.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/sys/file_backend.h"

namespace plat {
namespace {

constexpr uint32_t kErrorOutOfMemory = 14;
constexpr uint32_t kErrorBadParameter = 87;
constexpr uint32_t kErrorDiskFull = 112;

class MemoryBackend final : public FileBackend {
 public:
  explicit MemoryBackend(uint64_t capacityBytes) : capacityBytes_(capacityBytes) {}
  ~MemoryBackend() override { std::free(block_); }

  uint32_t ReadAt(uint64_t offset, void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    const uint64_t available = offset < bytes_ ? bytes_ - offset : 0;
    *bytesRead = static_cast<uint32_t>(std::min<uint64_t>(bytes, available));
    if (*bytesRead != 0) std::memcpy(buffer, block_ + offset, *bytesRead);
    return 0;
  }

  uint32_t WriteAt(uint64_t offset, const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    const uint64_t room = offset < capacityBytes_ ? capacityBytes_ - offset : 0;
    const uint32_t fitting = static_cast<uint32_t>(std::min<uint64_t>(bytes, room));
    *bytesWritten = 0;
    if (fitting != 0) {
      if (offset + fitting > bytes_) {
        const uint32_t error = SetBytes(offset + fitting);
        if (error != 0) return error;
      }
      std::memcpy(block_ + offset, data, fitting);
      *bytesWritten = fitting;
    }
    return fitting == bytes ? 0 : kErrorDiskFull;
  }

  uint32_t SetBytes(uint64_t bytes) override {
    if (bytes > capacityBytes_) return kErrorDiskFull;
    if (bytes > blockBytes_) {
      // Doubling, but never past the capacity.
      const uint64_t wanted = std::min(capacityBytes_, std::max(bytes, blockBytes_ * 2));
      unsigned char* grown = static_cast<unsigned char*>(std::realloc(block_, wanted));
      if (grown == nullptr) return kErrorOutOfMemory;
      block_ = grown;
      blockBytes_ = wanted;
    }
    if (bytes > bytes_) std::memset(block_ + bytes_, 0, bytes - bytes_);
    bytes_ = bytes;
    return 0;
  }

  uint32_t GetBytes(uint64_t* bytes) override {
    *bytes = bytes_;
    return 0;
  }

  uint32_t Flush() override { return 0; }

 private:
  const uint64_t capacityBytes_;
  unsigned char* block_ = nullptr;
  uint64_t blockBytes_ = 0;
  uint64_t bytes_ = 0;
};

}  // namespace

File* OpenMemoryFile(const void* data, uint64_t bytes, uint64_t capacityBytes) noexcept {
  if (bytes > capacityBytes) {
    SetLastError(kErrorBadParameter);
    return kInvalidFile;
  }
  MemoryBackend* backend = new (std::nothrow) MemoryBackend(capacityBytes);
  uint32_t error = backend == nullptr ? kErrorOutOfMemory : backend->SetBytes(bytes);
  for (uint64_t done = 0; error == 0 && data != nullptr && done < bytes;) {
    const uint32_t piece = static_cast<uint32_t>(std::min<uint64_t>(bytes - done, 1u << 30));
    uint32_t written = 0;
    error = backend->WriteAt(done, static_cast<const unsigned char*>(data) + done, piece, &written);
    done += written;
  }
  if (error != 0) {
    delete backend;
    SetLastError(error);
    return kInvalidFile;
  }
  return MakeFile(backend);
}

}  // namespace plat
