// SPDX-License-Identifier: Apache-2.0
// Opens, checks and writes the peak file.
#include "media/peak/peak_file.h"

#include <algorithm>
#include <cstring>

namespace marlo::peak {
namespace {

constexpr uint8_t kMagic[4] = {'Z', 'R', 'P', 'K'};

plat::File* OpenForWriting(const char16_t* path) noexcept {
  constexpr uint32_t kErrorSharing = 32;
  // Two that open at the same moment may both be refused; of a few tries one gets through. A file that somebody really
  // holds refuses them all.
  plat::File* file = plat::kInvalidFile;
  for (int tries = 0; tries < 4; ++tries) {
    file = plat::OpenFile(path, plat::kReadWriteAccess, plat::kShareRead, plat::kOpenAlways);
    if (file != plat::kInvalidFile || plat::LastError() != kErrorSharing) break;
  }
  return file;
}

}  // namespace

bool PeakFile::Open() noexcept {
  if (IsOpen()) return true;
  const uint32_t access = readOnly ? plat::kReadAccess : plat::kReadWriteAccess;
  const uint32_t share = plat::kShareRead | (readOnly && shareWrite ? plat::kShareWrite : plat::kShareNone);
  handle = plat::OpenFile(path, access, share, plat::kOpenExisting);
  if (!IsOpen()) return false;
  if (!plat::GetFileBytes(handle, &bytesAtOpen_)) bytesAtOpen_ = 0;
  if (dirty) return true;
  uint32_t bytes = 0;
  if (!plat::ReadFile(handle, &header, sizeof header, &bytes) || bytes != sizeof header) header = {};
  return true;
}

bool PeakFile::Create() noexcept {
  Close();
  handle = OpenForWriting(path);
  bytesAtOpen_ = sizeof header;
  return IsOpen();
}

void PeakFile::Close() noexcept {
  plat::CloseFile(handle);
  handle = plat::kInvalidFile;
}

bool PeakFile::IsUsable(uint32_t channels) const noexcept {
  return std::equal(kMagic, kMagic + sizeof kMagic, header.magic) && header.version < 2 &&
         header.headerSize >= sizeof header && header.headerSize <= bytesAtOpen_ &&
         (header.bits == 8 || header.bits == 16) && header.channels != 0 && header.channels == channels &&
         IsInterval(header.interval) && header.samples >= 0;
}

int64_t PeakFile::Entries(uint64_t bytes) const noexcept {
  const uint64_t whole = bytes < header.headerSize ? 0 : (bytes - header.headerSize) / EntryBytes();
  return static_cast<int64_t>(std::min(whole, static_cast<uint64_t>(EntriesFor(header.samples, header.interval))));
}

int64_t PeakFile::OffsetOf(int64_t entry) const noexcept {
  int64_t offset = 0;
  if (__builtin_mul_overflow(entry, int64_t{EntryBytes()}, &offset) ||
      __builtin_add_overflow(offset, int64_t{header.headerSize}, &offset)) {
    return -1;
  }
  return offset;
}

HRESULT PeakFile::WriteAt(int64_t offset, const void* data, size_t bytes) noexcept {
  const bool written = offset >= 0 && plat::SeekFile(handle, offset, plat::kSeekStart, nullptr) &&
                       plat::WriteFile(handle, data, static_cast<uint32_t>(bytes), nullptr);
  return written ? S_OK : ZR_E_FILE_WRITE;
}

bool PeakFile::ReadEntries(int64_t index, int64_t count, void* entries) const noexcept {
  const int64_t offset = OffsetOf(index);
  const auto wanted = static_cast<uint32_t>(count * EntryBytes());
  uint32_t bytes = 0;
  return offset >= 0 && plat::SeekFile(handle, offset, plat::kSeekStart, nullptr) &&
         plat::ReadFile(handle, entries, wanted, &bytes) && bytes == wanted;
}

HRESULT PeakFile::WriteEntries(int64_t index, const void* entries, size_t bytes) noexcept {
  return WriteAt(OffsetOf(index), entries, bytes);
}

HRESULT PeakFile::WriteHeader() noexcept {
  const HRESULT result = WriteAt(0, &header, sizeof header);
  if (SUCCEEDED(result)) dirty = false;
  return result;
}

HRESULT PeakFile::SetEntries(int64_t entries) noexcept {
  const int64_t end = OffsetOf(entries);
  const bool cut = end >= 0 && plat::SeekFile(handle, end, plat::kSeekStart, nullptr) && plat::SetEndOfFile(handle);
  return cut ? S_OK : ZR_E_FILE_WRITE;
}

}  // namespace marlo::peak
