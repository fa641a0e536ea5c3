// SPDX-License-Identifier: Apache-2.0
// Opening, seeking and measuring with failures as exceptions.
#include "open_file.h"

#include <utility>

#include "errors.h"
#include "unicode.h"

namespace host {

OpenFile::OpenFile(const std::string& path, uint32_t access, uint32_t share, uint32_t disposition)
    : file_(plat::OpenFile(ToUtf16(path).c_str(), access, share, disposition)) {
  if (!IsOpen()) throw OpenFailure(path);
}

OpenFile::OpenFile(OpenFile&& other) noexcept : file_(std::exchange(other.file_, plat::kInvalidFile)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  if (this != &other) {
    Close();
    file_ = std::exchange(other.file_, plat::kInvalidFile);
  }
  return *this;
}

void OpenFile::Close() {
  if (IsOpen()) plat::CloseFile(std::exchange(file_, plat::kInvalidFile));
}

OpenFile OpenFile::ForReading(const std::string& path) {
  return OpenFile(path, plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
}

void SeekTo(plat::File* file, int64_t position, const std::string& path) {
  if (!plat::SeekFile(file, position, plat::kSeekStart, nullptr)) throw Failure(ZR_E_FILE_READ, path);
}

int64_t LengthOf(plat::File* file, const std::string& path) {
  uint64_t bytes = 0;
  if (!plat::GetFileBytes(file, &bytes)) throw Failure(ZR_E_FILE_READ, path);
  return static_cast<int64_t>(bytes);
}

}  // namespace host
