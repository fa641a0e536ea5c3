// SPDX-License-Identifier: Apache-2.0
// File views and page blocks over mmap.
#include "platform/sys/mapping.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "platform/sys/file_backend.h"
#include "platform/sys/path.h"

namespace plat {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorOutOfMemory = 14;

uint32_t Map(const char16_t* path, MappedFile* mapping) {
  const DiskPath found = FindOnDisk(path);
  if (found.error != 0) return found.error;
  if (!found.exists) return kErrorFileNotFound;
  const int descriptor = open(found.name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return ErrorOfErrno(errno);
  uint32_t error = 0;
  struct stat status {};
  if (fstat(descriptor, &status) != 0) {
    error = ErrorOfErrno(errno);
  } else if (!S_ISREG(status.st_mode)) {
    error = kErrorAccessDenied;
  } else if (status.st_size != 0) {
    const size_t bytes = static_cast<size_t>(status.st_size);
    void* view = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (view == MAP_FAILED) {
      error = ErrorOfErrno(errno);
    } else {
      *mapping = {static_cast<const uint8_t*>(view), bytes};
    }
  }
  close(descriptor);
  return error;
}

}  // namespace

bool MapFile(const char16_t* path, MappedFile* mapping) noexcept {
  *mapping = {nullptr, 0};
  uint32_t error = kErrorOutOfMemory;
  try {
    error = Map(path, mapping);
  } catch (const std::bad_alloc&) {
  }
  if (error != 0) SetLastError(error);
  return error == 0;
}

void UnmapFile(MappedFile* mapping) noexcept {
  if (mapping == nullptr) return;
  if (mapping->data != nullptr) munmap(const_cast<uint8_t*>(mapping->data), mapping->bytes);
  *mapping = {nullptr, 0};
}

void* AllocatePages(size_t bytes) noexcept {
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return block == MAP_FAILED ? nullptr : block;
}

void FreePages(void* block, size_t bytes) noexcept {
  if (block != nullptr) munmap(block, bytes);
}

}  // namespace plat
