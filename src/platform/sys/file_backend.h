// SPDX-License-Identifier: Apache-2.0
// What stands behind a file handle: the disk, a block of memory, or a test's fault injector.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/platform/file.h"

namespace plat {

/// One open file's operations. Each gives a platform error number, 0 for success.
class FileBackend {
 public:
  virtual ~FileBackend() = default;
  virtual uint32_t ReadAt(uint64_t offset, void* buffer, uint32_t bytes, uint32_t* bytesRead) = 0;
  virtual uint32_t WriteAt(uint64_t offset, const void* data, uint32_t bytes, uint32_t* bytesWritten) = 0;
  virtual uint32_t SetBytes(uint64_t bytes) = 0;
  virtual uint32_t GetBytes(uint64_t* bytes) = 0;
  virtual uint32_t Flush() = 0;
};

/// Makes a handle over `backend` and takes it over; CloseFile deletes it. Null gives kInvalidFile.
File* MakeFile(FileBackend* backend) noexcept;

/// Replaces the backend of an open file by one that wraps it, for tests that inject faults.
FileBackend* ExchangeBackend(File* file, FileBackend* backend) noexcept;

void SetLastError(uint32_t error) noexcept;

/// The platform number of an errno value; unknown ones give 31 (general failure).
uint32_t ErrorOfErrno(int error) noexcept;

// Names on disk, all with the path rules of OpenFile. True on success, else LastError() tells.
bool FileExists(const char16_t* path) noexcept;
bool GetFileWriteTime(const char16_t* path, uint64_t* ticksSince1601) noexcept;
/// The path from the root on, the current folder before a relative one; links and dots stay as they are. Cut to the
/// buffer's `capacity`.
bool GetFullPath(const char16_t* path, char16_t* buffer, size_t capacity) noexcept;
/// The folder for temporary files, with a slash at its end. A longer one than the buffer fails.
bool GetTempFolder(char16_t* buffer, size_t capacity) noexcept;

}  // namespace plat
