// SPDX-License-Identifier: Apache-2.0
// File images written byte by byte, and files in memory and on disk that a test can look into.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "marlo110k/platform/file.h"
#include "testing/memory_file.h"

namespace media_testing {

/// Bytes in file order; every call appends.
class Image {
 public:
  Image& Text(const char* text) { return Raw(text, std::strlen(text)); }
  Image& Raw(const void* bytes, size_t count) {
    const auto* from = static_cast<const uint8_t*>(bytes);
    bytes_.insert(bytes_.end(), from, from + count);
    return *this;
  }
  Image& Raw(std::initializer_list<uint8_t> bytes) { return Raw(bytes.begin(), bytes.size()); }
  Image& Add(const Image& other) { return Raw(other.bytes_.data(), other.bytes_.size()); }
  Image& Le(uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes_.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return *this;
  }
  Image& Be(uint64_t value, int count) {
    for (int i = count - 1; i >= 0; --i) bytes_.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return *this;
  }
  Image& U16(uint16_t value) { return Le(value, 2); }
  Image& U32(uint32_t value) { return Le(value, 4); }
  Image& U64(uint64_t value) { return Le(value, 8); }
  Image& Fill(size_t count, uint8_t value = 0) {
    bytes_.insert(bytes_.end(), count, value);
    return *this;
  }
  /// Bytes that differ from their neighbours, from `first` on.
  Image& Ramp(size_t count, uint8_t first = 1) {
    for (size_t i = 0; i < count; ++i) bytes_.push_back(static_cast<uint8_t>(first + i));
    return *this;
  }
  /// A RIFF chunk with its pad byte.
  Image& Chunk(const char* id, const Image& data) {
    Text(id).U32(static_cast<uint32_t>(data.Size())).Add(data);
    return Fill(data.Size() % 2);
  }
  /// The 18 bytes of a format.
  Image& Format(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits, uint16_t extra = 0) {
    const auto align = static_cast<uint16_t>(bits / 8 * channels);
    return U16(tag).U16(channels).U32(rate).U32(rate * align).U16(align).U16(bits).U16(extra);
  }

  size_t Size() const { return bytes_.size(); }
  const uint8_t* Data() const { return bytes_.data(); }
  uint8_t& operator[](size_t offset) { return bytes_[offset]; }
  const std::vector<uint8_t>& Bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

/// A file in memory that holds an image.
class MemoryFile : public testing_support::MemoryFile {
 public:
  explicit MemoryFile(const Image& image = {}, uint64_t roomBytes = 1 << 20)
      : testing_support::MemoryFile(image.Data(), image.Size(), roomBytes) {}
};

/// A path in the temporary folder that belongs to one test; the file goes with the object.
class DiskFile {
 public:
  DiskFile() {
    const char* folder = std::getenv("MARLO_TEMP_DIR");
    std::string path = std::string(folder != nullptr ? folder : "/tmp") + "/marlo_media_XXXXXX";
    const int handle = mkstemp(path.data());
    if (handle >= 0) close(handle);
    path8_ = path;
    path16_.assign(path.begin(), path.end());
  }
  explicit DiskFile(const Image& image) : DiskFile() { Write(image); }
  ~DiskFile() { unlink(path8_.c_str()); }
  DiskFile(const DiskFile&) = delete;
  DiskFile& operator=(const DiskFile&) = delete;

  const char16_t* Path() const { return path16_.c_str(); }
  const std::string& Path8() const { return path8_; }
  plat::File* Open(uint32_t access = plat::kReadWriteAccess) const {
    return plat::OpenFile(Path(), access, plat::kShareRead, plat::kOpenExisting);
  }
  void Write(const Image& image) const {
    plat::File* file = plat::OpenFile(Path(), plat::kReadWriteAccess, plat::kShareNone, plat::kCreateAlways);
    plat::WriteFile(file, image.Data(), static_cast<uint32_t>(image.Size()), nullptr);
    plat::CloseFile(file);
  }
  std::vector<uint8_t> Bytes() const {
    plat::File* file = Open(plat::kReadAccess);
    uint64_t length = 0;
    plat::GetFileBytes(file, &length);
    std::vector<uint8_t> bytes(length);
    plat::ReadFile(file, bytes.data(), static_cast<uint32_t>(length), nullptr);
    plat::CloseFile(file);
    return bytes;
  }
  void Remove() const { unlink(path8_.c_str()); }

 private:
  std::string path8_;
  std::u16string path16_;
};

// Wave64 labels as they stand in a file.
inline Image Label(const char* fourCharacters, std::initializer_list<uint8_t> rest) {
  return Image().Text(fourCharacters).Raw(rest);
}
inline Image RiffLabel() {
  return Label("riff", {0x2E, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00});
}
inline Image ListLabel() {
  return Label("list", {0x2F, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00});
}
inline Image AudioLabel(const char* fourCharacters) {
  return Label(fourCharacters, {0xF3, 0xAC, 0xD3, 0x11, 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A});
}
inline Image JunkLabel() {
  return Label("junk", {0xF3, 0xAC, 0x3D, 0x11, 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A});
}
inline Image DisplayLabel() {
  return Image().Raw({0x25, 0xCA, 0x2C, 0x61, 0xBB, 0x92, 0x55, 0x4C, 0x84, 0x08, 0x7B, 0xDA, 0x2F, 0x15, 0xBD, 0x27});
}
/// A Wave64 chunk: its size field counts header and data, zeros follow up to a multiple of 8.
inline Image Chunk64(const Image& label, const Image& data) {
  Image chunk;
  chunk.Add(label).U64(24 + data.Size()).Add(data);
  return chunk.Fill((8 - data.Size() % 8) % 8);
}

}  // namespace media_testing
