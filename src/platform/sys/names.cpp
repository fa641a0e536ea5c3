// SPDX-License-Identifier: Apache-2.0
// Names on disk: removing, renaming, looking up, full paths.
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <new>

#include "platform/base/text.h"
#include "platform/sys/file_backend.h"
#include "platform/sys/path.h"
#include "platform/sys/share.h"

namespace plat {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorPathNotFound = 3;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorOutOfMemory = 14;
constexpr uint32_t kErrorSharing = 32;
constexpr uint32_t kErrorNameTooLong = 206;

constexpr uint64_t kSecondsFrom1601To1970 = 11'644'473'600;

/// What stands against removing or replacing the file; 0 when nothing does.
uint32_t ErrorOfRemoval(const std::string& name) {
  struct stat status {};
  if (stat(name.c_str(), &status) != 0) return ErrorOfErrno(errno);
  if (S_ISDIR(status.st_mode) || (status.st_mode & S_IWUSR) == 0) return kErrorAccessDenied;
  if (!S_ISREG(status.st_mode)) return 0;
  // A file that can't be read can't be asked who shares it.
  const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return 0;
  const bool shared = MayAccess(descriptor, kDeleteAccess);
  close(descriptor);
  return shared ? 0 : kErrorSharing;
}

uint32_t Remove(const char16_t* path) {
  const DiskPath found = FindOnDisk(path);
  if (found.error != 0) return found.error;
  if (!found.exists) return kErrorFileNotFound;
  const uint32_t error = ErrorOfRemoval(found.name);
  if (error != 0) return error;
  return unlink(found.name.c_str()) == 0 ? 0 : ErrorOfErrno(errno);
}

bool SameFile(const std::string& left, const std::string& right) {
  struct stat a {};
  struct stat b {};
  return stat(left.c_str(), &a) == 0 && stat(right.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// The new name with its last part as given, for a change of case alone.
std::string WithGivenLastPart(const std::string& found, const char16_t* path) {
  std::u16string given(path);
  const size_t slash = given.find_last_of(u"\\/");
  const size_t folderEnd = found.find_last_of('/');
  const std::string last = ToUtf8(given.c_str() + (slash == std::u16string::npos ? 0 : slash + 1));
  return folderEnd == std::string::npos ? last : found.substr(0, folderEnd + 1) + last;
}

uint32_t Move(const char16_t* from, const char16_t* to) {
  const DiskPath source = FindOnDisk(from);
  if (source.error != 0) return source.error;
  if (!source.exists) return kErrorFileNotFound;
  DiskPath target = FindOnDisk(to);
  if (target.error != 0) return target.error;
  struct stat status {};
  if (stat(source.name.c_str(), &status) != 0) return ErrorOfErrno(errno);
  if (S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) != 0) {
    const uint32_t error = ErrorOfRemoval(source.name);
    if (error != 0) return error;
  }
  if (target.exists) {
    if (SameFile(source.name, target.name)) {
      target.name = WithGivenLastPart(target.name, to);
    } else if (ErrorOfRemoval(target.name) != 0) {
      return kErrorAccessDenied;
    }
  }
  return rename(source.name.c_str(), target.name.c_str()) == 0 ? 0 : ErrorOfErrno(errno);
}

/// Runs a step that gives an error number and may run out of memory.
template <typename Step>
bool Succeeds(const Step& step) {
  uint32_t error = kErrorOutOfMemory;
  try {
    error = step();
  } catch (const std::bad_alloc&) {
  }
  if (error != 0) SetLastError(error);
  return error == 0;
}

}  // namespace

bool RemoveFile(const char16_t* path) noexcept {
  return Succeeds([path] { return Remove(path); });
}

bool MoveFileOver(const char16_t* from, const char16_t* to) noexcept {
  return Succeeds([from, to] { return Move(from, to); });
}

bool FileExists(const char16_t* path) noexcept {
  return Succeeds([path]() -> uint32_t {
    const DiskPath found = FindOnDisk(path);
    if (found.error != 0) return found.error;
    struct stat status {};
    if (!found.exists || stat(found.name.c_str(), &status) != 0) return kErrorFileNotFound;
    return S_ISDIR(status.st_mode) ? kErrorAccessDenied : 0;
  });
}

bool GetFileWriteTime(const char16_t* path, uint64_t* ticksSince1601) noexcept {
  return Succeeds([path, ticksSince1601]() -> uint32_t {
    const DiskPath found = FindOnDisk(path);
    if (found.error != 0) return found.error;
    struct stat status {};
    if (!found.exists || stat(found.name.c_str(), &status) != 0) return kErrorFileNotFound;
    const uint64_t seconds = static_cast<uint64_t>(status.st_mtim.tv_sec) + kSecondsFrom1601To1970;
    *ticksSince1601 = seconds * 10'000'000 + static_cast<uint64_t>(status.st_mtim.tv_nsec) / 100;
    return 0;
  });
}

bool GetFullPath(const char16_t* path, char16_t* buffer, size_t capacity) noexcept {
  return Succeeds([path, buffer, capacity]() -> uint32_t {
    if (path == nullptr || *path == 0) return kErrorPathNotFound;
    if (*path == u'/' || *path == u'\\') {
      CopyText(buffer, capacity, path);
      return 0;
    }
    char folder[PATH_MAX];
    if (getcwd(folder, sizeof folder) == nullptr) return ErrorOfErrno(errno);
    CopyText(buffer, capacity, (FromUtf8(folder) + u"/" + path).c_str());
    return 0;
  });
}

bool GetTempFolder(char16_t* buffer, size_t capacity) noexcept {
  return Succeeds([buffer, capacity]() -> uint32_t {
    const char* named = std::getenv("TMPDIR");
    std::u16string folder = FromUtf8(named != nullptr && *named != 0 ? named : "/tmp");
    if (folder.back() != u'/') folder += u'/';
    if (folder.size() >= capacity) return kErrorNameTooLong;
    CopyText(buffer, capacity, folder.c_str());
    return 0;
  });
}

}  // namespace plat
