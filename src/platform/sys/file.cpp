// SPDX-License-Identifier: Apache-2.0
// File handles: a position over a backend.
#include "marlo110k/platform/file.h"

#include <exception>
#include <new>

#include "platform/sys/disk_backend.h"
#include "platform/sys/file_backend.h"

namespace plat {

class File {
 public:
  FileBackend* backend;
  uint64_t position;
  uint32_t access;
};

namespace {

constexpr uint32_t kErrorPathNotFound = 3;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorBadHandle = 6;
constexpr uint32_t kErrorOutOfMemory = 14;
constexpr uint32_t kErrorBadParameter = 87;
constexpr uint32_t kErrorNegativeSeek = 131;

bool Fail(uint32_t error) {
  SetLastError(error);
  return false;
}

bool IsOpen(const File* file) {
  if (file != nullptr && file != kInvalidFile) return true;
  SetLastError(kErrorBadHandle);
  return false;
}

bool MayUse(const File* file, uint32_t access) {
  if (!IsOpen(file)) return false;
  return (file->access & access) != 0 || Fail(kErrorAccessDenied);
}

File* MakeFileWithAccess(FileBackend* backend, uint32_t access) {
  File* file = new (std::nothrow) File{backend, 0, access};
  if (file != nullptr) return file;
  delete backend;
  SetLastError(kErrorOutOfMemory);
  return kInvalidFile;
}

}  // namespace

File* MakeFile(FileBackend* backend) noexcept {
  return backend == nullptr ? kInvalidFile : MakeFileWithAccess(backend, kReadWriteAccess);
}

FileBackend* ExchangeBackend(File* file, FileBackend* backend) noexcept {
  FileBackend* former = file->backend;
  file->backend = backend;
  return former;
}

File* OpenFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition) noexcept {
  uint32_t error = path == nullptr ? kErrorPathNotFound : 0;
  FileBackend* backend = nullptr;
  try {
    if (error == 0) backend = OpenDisk(path, access, share, disposition, &error);
  } catch (const std::bad_alloc&) {
    error = kErrorOutOfMemory;
  }
  if (backend != nullptr) return MakeFileWithAccess(backend, access);
  SetLastError(error);
  return kInvalidFile;
}

void CloseFile(File* file) noexcept {
  if (file == nullptr || file == kInvalidFile) return;
  delete file->backend;
  delete file;
}

bool ReadFile(File* file, void* buffer, uint32_t bytes, uint32_t* bytesRead) noexcept {
  if (bytesRead != nullptr) *bytesRead = 0;
  if (!MayUse(file, kReadAccess)) return false;
  uint32_t got = 0;
  const uint32_t error = file->backend->ReadAt(file->position, buffer, bytes, &got);
  file->position += got;
  if (bytesRead != nullptr) *bytesRead = got;
  return error == 0 || Fail(error);
}

bool WriteFile(File* file, const void* data, uint32_t bytes, uint32_t* bytesWritten) noexcept {
  if (bytesWritten != nullptr) *bytesWritten = 0;
  if (!MayUse(file, kWriteAccess)) return false;
  uint32_t put = 0;
  const uint32_t error = file->backend->WriteAt(file->position, data, bytes, &put);
  file->position += put;
  if (bytesWritten != nullptr) *bytesWritten = put;
  return error == 0 || Fail(error);
}

bool SeekFile(File* file, int64_t offset, uint32_t from, uint64_t* newPosition) noexcept {
  if (!IsOpen(file)) return false;
  uint64_t base = 0;
  if (from == kSeekCurrent) {
    base = file->position;
  } else if (from == kSeekEnd) {
    const uint32_t error = file->backend->GetBytes(&base);
    if (error != 0) return Fail(error);
  } else if (from != kSeekStart) {
    return Fail(kErrorBadParameter);
  }
  int64_t target = 0;
  if (__builtin_add_overflow(static_cast<int64_t>(base), offset, &target)) return Fail(kErrorBadParameter);
  if (target < 0) return Fail(kErrorNegativeSeek);
  file->position = static_cast<uint64_t>(target);
  if (newPosition != nullptr) *newPosition = file->position;
  return true;
}

bool SetEndOfFile(File* file) noexcept {
  if (!MayUse(file, kWriteAccess)) return false;
  const uint32_t error = file->backend->SetBytes(file->position);
  return error == 0 || Fail(error);
}

bool GetFileBytes(File* file, uint64_t* bytes) noexcept {
  if (!IsOpen(file)) return false;
  const uint32_t error = file->backend->GetBytes(bytes);
  return error == 0 || Fail(error);
}

bool FlushFile(File* file) noexcept {
  if (!MayUse(file, kWriteAccess)) return false;
  const uint32_t error = file->backend->Flush();
  return error == 0 || Fail(error);
}

}  // namespace plat

int32_t ZrReadFile(plat::File* file, void* buffer, uint32_t bytes, uint32_t* bytesRead) noexcept {
  return plat::ReadFile(file, buffer, bytes, bytesRead) ? 1 : 0;
}
