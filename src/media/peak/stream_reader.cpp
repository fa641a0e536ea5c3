// SPDX-License-Identifier: Apache-2.0
// Reads whole frames at a position, from a file or from memory.
#include "media/peak/stream_reader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "kernel/file_name.h"
#include "marlo110k/wavefile.h"
#include "marlo110k/waveformat.h"
#include "platform/base/text.h"
#include "platform/sys/file_backend.h"

namespace marlo::peak {
namespace {

/// A front may promise more than the file holds; that reads as silence, as far as a recorder's 32-bit sizes go. What
/// promises more than so many frames behind its end is damaged, and counts as long as it is.
constexpr int64_t kMostMissingFrames = int64_t{1} << 32;

/// The 18-byte form of a file's format. The plain tags need no extra size, and an extensible format, whose kind
/// stands behind the head, becomes a plain one.
WAVEFORMATEX PlainFormat(const WAVEFORMATEX& format) noexcept {
  WAVEFORMATEX plain = {};
  if (format.wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
    const ZRSAMPLETYPE type = ZrAudio_GetSampleType(&format);
    if (type != ZRSAMPLETYPE_NONE) ZrAudio_InitWfx(&plain, format.nSamplesPerSec, type, format.nChannels);
    return plain;
  }
  plain = format;
  if (format.wFormatTag == WAVE_FORMAT_PCM || format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT) plain.cbSize = 0;
  return plain;
}

HRESULT CopyName(const char16_t* name, char16_t* buffer, uint32_t characters) noexcept {
  if (buffer == nullptr) return E_INVALIDARG;
  plat::CopyText(buffer, characters, name);
  return S_OK;
}

}  // namespace

CZrAudioPeakWaveFileReader::CZrAudioPeakWaveFileReader(const char16_t* path) noexcept {
  if (!plat::GetFullPath(path, path_, kPathCharacters)) return;
  WAVEFORMATEX* found = ZrGetFileWfx(path_, &frames_, &dataOffset_);
  if (found == nullptr) return;
  format_ = PlainFormat(*found);
  std::free(found);
  uint64_t bytes = 0;
  if (FAILED(Open()) || !plat::GetFileBytes(file_, &bytes)) {
    format_ = {};
  } else {
    const int64_t present = std::max<int64_t>(static_cast<int64_t>(bytes) - dataOffset_, 0) / format_.nBlockAlign;
    if (frames_ < 0 || frames_ - present > kMostMissingFrames) frames_ = present;
  }
  Close();
}

void* CZrAudioPeakWaveFileReader::DeleteSelf(uint32_t flags) {
  if ((flags & 1) != 0) {
    delete this;
    return nullptr;
  }
  Close();
  return this;
}

HRESULT CZrAudioPeakWaveFileReader::Open() {
  if (file_ != plat::kInvalidFile) return S_OK;
  position_ = -1;
  file_ = plat::OpenFile(path_, plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
  return file_ == plat::kInvalidFile ? ZR_E_FILE_OPEN : S_OK;
}

HRESULT CZrAudioPeakWaveFileReader::Read(int64_t position, uint32_t /*limit*/, void* buffer, uint32_t frames,
                                         uint32_t* framesRead) {
  *framesRead = 0;
  if (position < 0) return E_INVALIDARG;
  if (position >= frames_ || frames == 0) return S_OK;
  const uint32_t frameBytes = format_.nBlockAlign;
  const int64_t mostFrames = std::min<int64_t>(frames_ - position, UINT32_MAX / frameBytes);
  const auto wanted = static_cast<uint32_t>(std::min<int64_t>(frames, mostFrames));
  if (position != position_) {
    int64_t place = 0;
    if (__builtin_mul_overflow(position, int64_t{frameBytes}, &place) ||
        __builtin_add_overflow(place, dataOffset_, &place) ||
        !plat::SeekFile(file_, place, plat::kSeekStart, nullptr)) {
      position_ = -1;
      return ZR_E_FILE_READ;
    }
  }
  uint32_t bytes = 0;
  position_ = -1;
  if (!plat::ReadFile(file_, buffer, wanted * frameBytes, &bytes)) return ZR_E_FILE_READ;
  *framesRead = bytes / frameBytes;
  // Behind a cut frame the next read must seek.
  if (bytes % frameBytes == 0) position_ = position + *framesRead;
  return S_OK;
}

void CZrAudioPeakWaveFileReader::Close() {
  plat::CloseFile(file_);
  file_ = plat::kInvalidFile;
}

HRESULT CZrAudioPeakWaveFileReader::GetName(char16_t* buffer, uint32_t characters, int32_t fullPath) {
  return CopyName(fullPath != 0 ? path_ : FileNameOf(path_), buffer, characters);
}

HRESULT CZrAudioPeakWaveFileReader::Rename(const char16_t* path) {
  Close();
  char16_t full[kPathCharacters];
  if (!plat::GetFullPath(path, full, kPathCharacters)) return E_INVALIDARG;
  plat::CopyText(path_, kPathCharacters, full);
  return S_OK;
}

CZrAudioPeakWaveMemReader::CZrAudioPeakWaveMemReader(const WAVEFORMATEX* format, const void* data,
                                                     int64_t frames) noexcept
    : data_(static_cast<const uint8_t*>(data)), frames_(std::max<int64_t>(frames, 0)) {
  if (format == nullptr || (data == nullptr && frames_ > 0) || format->nBlockAlign == 0) return;
  format_ = PlainFormat(*format);
}

void* CZrAudioPeakWaveMemReader::DeleteSelf(uint32_t flags) {
  if ((flags & 1) == 0) return this;
  delete this;
  return nullptr;
}

HRESULT CZrAudioPeakWaveMemReader::Read(int64_t position, uint32_t /*limit*/, void* buffer, uint32_t frames,
                                        uint32_t* framesRead) {
  *framesRead = 0;
  if (position < 0) return E_INVALIDARG;
  if (position >= frames_) return S_OK;
  const auto copied = static_cast<uint32_t>(std::min<int64_t>(frames, frames_ - position));
  const size_t frameBytes = format_.nBlockAlign;
  std::memcpy(buffer, data_ + static_cast<size_t>(position) * frameBytes, copied * frameBytes);
  *framesRead = copied;
  return S_OK;
}

HRESULT CZrAudioPeakWaveMemReader::GetName(char16_t* buffer, uint32_t characters, int32_t /*fullPath*/) {
  return CopyName(u"::(Memory)::", buffer, characters);
}

}  // namespace marlo::peak

CZrAudioPeakStreamReader* ZrAudio_CreateWaveFileStreamReader(const char16_t* path) noexcept {
  return new (std::nothrow) marlo::peak::CZrAudioPeakWaveFileReader(path);
}

void ZrAudio_DestroyWaveFileStreamReader(CZrAudioPeakStreamReader* reader) noexcept {
  if (reader != nullptr) reader->DeleteSelf(1);
}
