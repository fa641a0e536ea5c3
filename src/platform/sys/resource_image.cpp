// SPDX-License-Identifier: Apache-2.0
// Finds compiled resources in module files and walks them, bounded against damaged ones.
#include "platform/sys/resource_image.h"

#include <elf.h>

#include <algorithm>
#include <cstring>

#include "marlo110k/platform/file.h"

namespace plat {
namespace {

constexpr char kSectionName[] = ".marlo_rsrc";
constexpr uint64_t kMaximumBytes = 64u << 20;

template <typename T>
T Load(const uint8_t* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

/// Reads of a file by offset.
class Source {
 public:
  explicit Source(const char16_t* path)
      : file_(OpenFile(path, kReadAccess, kShareRead | kShareWrite | kShareDelete, kOpenExisting)) {
    if (file_ != kInvalidFile && !GetFileBytes(file_, &bytes_)) bytes_ = 0;
  }
  ~Source() { CloseFile(file_); }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  uint64_t Bytes() const { return bytes_; }
  bool Read(uint64_t offset, void* buffer, uint32_t bytes) {
    if (offset > bytes_ || bytes > bytes_ - offset) return false;
    uint32_t got = 0;
    return SeekFile(file_, static_cast<int64_t>(offset), kSeekStart, nullptr) && ReadFile(file_, buffer, bytes, &got) &&
           got == bytes;
  }
  bool ReadAll(uint64_t offset, uint64_t bytes, std::vector<uint8_t>* out) {
    if (bytes == 0 || bytes > kMaximumBytes || offset > bytes_ || bytes > bytes_ - offset) return false;
    out->resize(bytes);
    return Read(offset, out->data(), static_cast<uint32_t>(bytes));
  }

 private:
  File* file_;
  uint64_t bytes_ = 0;
};

/// The section of that name in a module of either class.
template <typename Header, typename Section>
bool FindSection(Source& source, uint64_t* offset, uint64_t* bytes) {
  Header header;
  if (!source.Read(0, &header, sizeof header) || header.e_shentsize != sizeof(Section)) return false;
  if (header.e_shstrndx >= header.e_shnum) return false;
  const auto read = [&](uint32_t index, Section* section) {
    const uint64_t place = uint64_t{header.e_shoff} + uint64_t{index} * sizeof(Section);
    return place >= header.e_shoff && source.Read(place, section, sizeof(Section));
  };
  Section names;
  if (!read(header.e_shstrndx, &names)) return false;
  for (uint32_t index = 0; index < header.e_shnum; ++index) {
    Section section;
    char name[sizeof kSectionName];
    if (!read(index, &section)) return false;
    if (section.sh_name >= names.sh_size) continue;
    if (!source.Read(names.sh_offset + section.sh_name, name, sizeof name)) continue;
    if (std::memcmp(name, kSectionName, sizeof name) != 0 || section.sh_type == SHT_NOBITS) continue;
    *offset = section.sh_offset;
    *bytes = section.sh_size;
    return true;
  }
  return false;
}

/// Type or name at `*at`; moves `*at` behind it.
bool ReadName(const uint8_t* header, size_t headerBytes, size_t* at, ResourceName* name) {
  constexpr uint16_t kNumberMark = 0xFFFF;
  if (headerBytes < *at + 4) return false;
  if (Load<uint16_t>(header + *at) == kNumberMark) {
    *name = {Load<uint16_t>(header + *at + 2), nullptr, 0};
    *at += 4;
    return true;
  }
  const size_t start = *at;
  for (size_t end = start; end + 2 <= headerBytes; end += 2) {
    if (Load<uint16_t>(header + end) != 0) continue;
    *name = {0, header + start, (end - start) / 2};
    *at = end + 2;
    return true;
  }
  return false;
}

}  // namespace

bool ReadResources(const char16_t* path, std::vector<uint8_t>* resources) {
  // The empty entry that a compiled resource file begins with.
  constexpr uint8_t kFileMark[16] = {0, 0, 0, 0, 0x20, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0};
  Source source(path);
  uint8_t start[16];
  if (!source.Read(0, start, sizeof start)) return false;
  if (std::memcmp(start, kFileMark, sizeof start) == 0) return source.ReadAll(0, source.Bytes(), resources);
  if (std::memcmp(start, ELFMAG, SELFMAG) != 0 || start[EI_DATA] != ELFDATA2LSB) return false;
  uint64_t offset = 0;
  uint64_t bytes = 0;
  const bool found = start[EI_CLASS] == ELFCLASS32 ? FindSection<Elf32_Ehdr, Elf32_Shdr>(source, &offset, &bytes)
                                                   : FindSection<Elf64_Ehdr, Elf64_Shdr>(source, &offset, &bytes);
  return found && source.ReadAll(offset, bytes, resources);
}

bool ResourceWalk::Next(ResourceEntry* entry) noexcept {
  constexpr size_t kLeastEntryBytes = 13;
  const size_t left = bytes_ - offset_;
  if (left < 8) return false;
  const uint8_t* header = resources_ + offset_;
  const uint64_t dataBytes = Load<uint32_t>(header);
  const uint64_t headerBytes = Load<uint32_t>(header + 4);
  const uint64_t entryBytes = dataBytes + headerBytes;
  if (entryBytes < kLeastEntryBytes || entryBytes > left || headerBytes < 8) return false;
  size_t at = 8;
  if (!ReadName(header, headerBytes, &at, &entry->type) || !ReadName(header, headerBytes, &at, &entry->name)) {
    return false;
  }
  constexpr size_t kLanguageOffset = 6;  // Behind the data version and the memory flags.
  at = (at + 3) & ~size_t{3};
  if (headerBytes < at + kLanguageOffset + 2) return false;
  entry->language = Load<uint16_t>(header + at + kLanguageOffset);
  entry->data = header + headerBytes;
  entry->bytes = dataBytes;
  offset_ = std::min<uint64_t>(bytes_, (offset_ + entryBytes + 3) & ~uint64_t{3});
  return true;
}

}  // namespace plat
