// SPDX-License-Identifier: Apache-2.0
// Files on disk: one positioned system call for each read and write.
#include "platform/sys/disk_backend.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "platform/sys/path.h"
#include "platform/sys/share.h"

namespace plat {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorOutOfMemory = 14;
constexpr uint32_t kErrorSharing = 32;
constexpr uint32_t kErrorFileExists = 80;
constexpr uint32_t kErrorBadParameter = 87;
constexpr uint32_t kErrorDiskFull = 112;

class DiskBackend final : public FileBackend {
 public:
  explicit DiskBackend(int descriptor) : descriptor_(descriptor) {}
  ~DiskBackend() override { close(descriptor_); }

  uint32_t ReadAt(uint64_t offset, void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    uint32_t done = 0;
    uint32_t error = 0;
    while (done < bytes) {
      const ssize_t got =
          pread(descriptor_, static_cast<char*>(buffer) + done, bytes - done, static_cast<off_t>(offset + done));
      if (got > 0) {
        done += static_cast<uint32_t>(got);
      } else if (got == 0) {
        break;
      } else if (errno != EINTR) {
        error = ErrorOfErrno(errno);
        break;
      }
    }
    *bytesRead = done;
    return error;
  }

  uint32_t WriteAt(uint64_t offset, const void* data, uint32_t bytes, uint32_t* bytesWritten) override {
    uint32_t done = 0;
    uint32_t error = 0;
    while (done < bytes) {
      const ssize_t put =
          pwrite(descriptor_, static_cast<const char*>(data) + done, bytes - done, static_cast<off_t>(offset + done));
      if (put > 0) {
        done += static_cast<uint32_t>(put);
      } else if (put == 0) {
        error = kErrorDiskFull;
        break;
      } else if (errno != EINTR) {
        error = ErrorOfErrno(errno);
        break;
      }
    }
    *bytesWritten = done;
    return error;
  }

  uint32_t SetBytes(uint64_t bytes) override {
    while (ftruncate(descriptor_, static_cast<off_t>(bytes)) != 0) {
      if (errno != EINTR) return ErrorOfErrno(errno);
    }
    return 0;
  }

  uint32_t GetBytes(uint64_t* bytes) override {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) return ErrorOfErrno(errno);
    *bytes = static_cast<uint64_t>(status.st_size);
    return 0;
  }

  uint32_t Flush() override {
    while (fsync(descriptor_) != 0) {
      if (errno == EINTR) continue;
      // A device that has nothing to flush isn't a failure.
      return errno == EINVAL || errno == EROFS ? 0 : ErrorOfErrno(errno);
    }
    return 0;
  }

 private:
  const int descriptor_;
};

int OpenDescriptor(const std::string& name, int flags) {
  int descriptor = -1;
  do {
    // Non-blocking, so that a pipe under the name can't hold the caller; regular files don't heed it.
    descriptor = open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/// Opens for writing with reading when that is allowed, since claims on share modes need it.
int OpenForAccess(const std::string& name, uint32_t access, int flags, bool* readable) {
  *readable = true;
  if ((access & kWriteAccess) == 0) return OpenDescriptor(name, flags | O_RDONLY);
  const int descriptor = OpenDescriptor(name, flags | O_RDWR);
  if (descriptor >= 0 || errno != EACCES || (access & kReadAccess) != 0) return descriptor;
  *readable = false;
  return OpenDescriptor(name, flags | O_WRONLY);
}

/// What kind of file may be opened, and whether its attributes allow the access.
uint32_t CheckOpened(int descriptor, bool needsWrite, bool* regular) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return ErrorOfErrno(errno);
  *regular = S_ISREG(status.st_mode);
  if (!*regular && !S_ISCHR(status.st_mode) && !S_ISBLK(status.st_mode)) return kErrorAccessDenied;
  // A user with all rights passes the system's check, yet read-only means read-only here.
  if (needsWrite && *regular && (status.st_mode & S_IWUSR) == 0) return kErrorAccessDenied;
  return 0;
}

}  // namespace

FileBackend* OpenDisk(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition, uint32_t* error) {
  const bool mustExist = disposition == kOpenExisting || disposition == kTruncateExisting;
  const bool empties = disposition == kCreateAlways || disposition == kTruncateExisting;
  if (disposition < kCreateNew || disposition > kTruncateExisting || (access & ~kReadWriteAccess) != 0 ||
      (disposition == kTruncateExisting && (access & kWriteAccess) == 0)) {
    *error = kErrorBadParameter;
    return nullptr;
  }
  const DiskPath found = FindOnDisk(path);
  if (found.error != 0 || (mustExist && !found.exists)) {
    *error = found.error != 0 ? found.error : kErrorFileNotFound;
    return nullptr;
  }
  if (disposition == kCreateNew && found.exists) {
    *error = kErrorFileExists;
    return nullptr;
  }
  const uint32_t opened = empties ? access | kWriteAccess : access;
  const int flags = mustExist ? 0 : disposition == kCreateNew ? O_CREAT | O_EXCL : O_CREAT;
  bool readable = false;
  const int descriptor = OpenForAccess(found.name, opened, flags, &readable);
  if (descriptor < 0) {
    *error = disposition == kCreateNew && errno == EEXIST ? kErrorFileExists : ErrorOfErrno(errno);
    return nullptr;
  }
  bool regular = false;
  *error = CheckOpened(descriptor, found.exists && (opened & kWriteAccess) != 0, &regular);
  if (*error == 0 && regular && readable && !ClaimShare(descriptor, access, share)) *error = kErrorSharing;
  if (*error == 0 && regular && empties && ftruncate(descriptor, 0) != 0) *error = ErrorOfErrno(errno);
  FileBackend* backend = *error == 0 ? new (std::nothrow) DiskBackend(descriptor) : nullptr;
  if (backend == nullptr) {
    if (*error == 0) *error = kErrorOutOfMemory;
    close(descriptor);
  }
  return backend;
}

}  // namespace plat
