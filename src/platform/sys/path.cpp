// SPDX-License-Identifier: Apache-2.0
// Finds names on disk without regard to case, part by part.
#include "platform/sys/path.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/base/text.h"
#include "platform/sys/file_backend.h"

namespace plat {
namespace {

constexpr uint32_t kErrorPathNotFound = 3;
constexpr uint32_t kErrorBadName = 123;
constexpr uint32_t kErrorNameTooLong = 206;
constexpr size_t kMaximumCharacters = 32767;

bool HasUnpairedSurrogate(const char16_t* text) {
  for (; *text != 0; ++text) {
    const bool high = *text >= 0xD800 && *text <= 0xDBFF;
    if (high && text[1] >= 0xDC00 && text[1] <= 0xDFFF) {
      ++text;
    } else if (*text >= 0xD800 && *text <= 0xDFFF) {
      return true;
    }
  }
  return false;
}

bool Exists(const std::string& name) {
  struct stat status {};
  return fstatat(AT_FDCWD, name.c_str(), &status, 0) == 0;
}

/// The name in `folder` that matches `part` without case; empty when none does.
std::string MatchInFolder(const std::string& folder, const std::string& part) {
  DIR* entries = opendir(folder.empty() ? "." : folder.c_str());
  if (entries == nullptr) return {};
  const std::u16string sought = FromUtf8(part.c_str());
  std::string found;
  while (const dirent* entry = readdir(entries)) {
    if (CompareTextNoCase(FromUtf8(entry->d_name).c_str(), sought.c_str()) != 0) continue;
    if (found.empty() || entry->d_name < found) found = entry->d_name;
  }
  closedir(entries);
  return found;
}

}  // namespace

DiskPath FindOnDisk(const char16_t* path) {
  DiskPath result;
  if (path == nullptr || *path == 0) {
    result.error = kErrorPathNotFound;
    return result;
  }
  if (TextLength(path) > kMaximumCharacters) {
    result.error = kErrorNameTooLong;
    return result;
  }
  if (HasUnpairedSurrogate(path)) {
    result.error = kErrorBadName;
    return result;
  }
  std::string given = ToUtf8(path);
  std::replace(given.begin(), given.end(), '\\', '/');
  if (Exists(given)) {
    result.name = std::move(given);
    result.exists = true;
    return result;
  }
  if (errno == ENAMETOOLONG || errno == EACCES) {
    result.error = ErrorOfErrno(errno);
    return result;
  }
  std::string walked;
  size_t begin = 0;
  while (begin < given.size()) {
    if (given[begin] == '/') {
      if (walked.empty() || walked.back() != '/') walked.push_back('/');
      ++begin;
      continue;
    }
    const size_t end = std::min(given.find('/', begin), given.size());
    std::string part = given.substr(begin, end - begin);
    result.exists = Exists(walked + part);
    if (!result.exists && errno == ENOTDIR) {
      result.error = kErrorPathNotFound;
      return result;
    }
    if (!result.exists) {
      std::string match = MatchInFolder(walked, part);
      result.exists = !match.empty() && Exists(walked + match);
      if (result.exists) part = std::move(match);
    }
    walked += part;
    begin = end;
    if (!result.exists && given.find_first_not_of('/', begin) != std::string::npos) {
      result.error = kErrorPathNotFound;
      return result;
    }
  }
  // A missing name with a separator behind it means a folder, which nothing here creates.
  if (!result.exists && walked.back() == '/') result.error = kErrorPathNotFound;
  result.name = std::move(walked);
  return result;
}

}  // namespace plat
