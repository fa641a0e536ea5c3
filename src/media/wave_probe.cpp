// SPDX-License-Identifier: Apache-2.0
// What format a Wave, Wave64 or AIFF file holds, and changing what it states.
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "marlo110k/iff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/aiff_common.h"
#include "media/riff/chunk_rules.h"
#include "media/wave_format_check.h"

using namespace marlo::riff;

namespace {

struct FreeDeleter {
  void operator()(void* block) const noexcept { std::free(block); }
};
using FormatBlock = std::unique_ptr<WAVEFORMATEX, FreeDeleter>;

/// The head and all that cbSize can count.
constexpr uint64_t kMostFormatBytes = sizeof(WAVEFORMATEX) + UINT16_MAX;

struct FileFormat {
  FormatBlock format;  ///< Null for no result.
  int64_t frames = 0;
  int64_t dataOffset = 0;
};

class ScopedFile {
 public:
  ScopedFile(const char16_t* path, uint32_t access) noexcept
      : file_(plat::OpenFile(path, access, plat::kShareRead, plat::kOpenExisting)) {}
  ~ScopedFile() { plat::CloseFile(file_); }
  ScopedFile(const ScopedFile&) = delete;
  ScopedFile& operator=(const ScopedFile&) = delete;

  bool IsOpen() const noexcept { return file_ != plat::kInvalidFile; }
  plat::File* Get() const noexcept { return file_; }

 private:
  plat::File* file_;
};

FormatBlock AllocateFormat(uint64_t bytes) noexcept {
  return FormatBlock(static_cast<WAVEFORMATEX*>(std::calloc(1, std::max<uint64_t>(bytes, sizeof(WAVEFORMATEX)))));
}

/// Reads a format chunk's data whole. What no format can use of a very long one is passed over, and cbSize is held to
/// the bytes that are there.
template <class Framing>
FormatBlock ReadFormatData(FileBytes bytes, uint64_t dataBytes) noexcept {
  if (bytes.Remaining() < dataBytes) return nullptr;
  const auto kept = static_cast<uint32_t>(std::min(dataBytes, kMostFormatBytes));
  FormatBlock format = AllocateFormat(kept);
  if (format == nullptr || !bytes.Read(format.get(), kept)) return nullptr;
  if (!bytes.Skip(static_cast<int64_t>(Framing::Padded(static_cast<typename Framing::Size>(dataBytes)) - kept))) {
    return nullptr;
  }
  const uint32_t extraBytes = kept > sizeof(WAVEFORMATEX) ? kept - static_cast<uint32_t>(sizeof(WAVEFORMATEX)) : 0;
  format->cbSize = static_cast<uint16_t>(std::min<uint32_t>(format->cbSize, extraBytes));
  return format;
}

/// Mends PCM and says whether samples can be read as they stand.
bool IsReadable(WAVEFORMATEX* format) noexcept {
  ZrAudio_FixBadWfx(format);
  return ZrAudio_IsCompressed(format) == 0 && format->nBlockAlign != 0;
}

/// From the start of a Wave file to behind its format chunk.
FormatBlock ReadWavFormat(FileBytes bytes) noexcept {
  uint32_t formType = 0;
  uint32_t dataBytes = 0;
  if (!bytes.Seek(0) || FAILED(ReadRiffHeader(bytes, nullptr, &formType)) || formType != ZrChunkId("WAVE") ||
      FAILED(FindChunk<RiffFraming>(bytes, ZrChunkId("fmt "), &dataBytes, nullptr))) {
    return nullptr;
  }
  return ReadFormatData<RiffFraming>(bytes, dataBytes);
}

/// The same for Wave64. @param mostBytes a longer format chunk gives null.
FormatBlock ReadW64Format(plat::File* file, uint64_t mostBytes) noexcept {
  const FileBytes bytes(file);
  GUID formLabel;
  uint64_t dataBytes = 0;
  if (!bytes.Seek(0) || FAILED(riff64_ReadFileID(file, nullptr, &formLabel)) || formLabel != kZrLabelWave ||
      FAILED(FindChunk<Riff64Framing>(bytes, kZrLabelFmt, &dataBytes, nullptr)) || dataBytes > mostBytes) {
    return nullptr;
  }
  return ReadFormatData<Riff64Framing>(bytes, dataBytes);
}

/// Finds the data chunk behind the format chunk and measures it.
template <class Framing>
FileFormat WithData(FileBytes bytes, FormatBlock format, const typename Framing::Id& dataId) noexcept {
  typename Framing::Size dataBytes = 0;
  uint64_t position = 0;
  if (format == nullptr || !IsReadable(format.get()) ||
      FAILED(FindChunk<Framing>(bytes, dataId, &dataBytes, nullptr)) || !bytes.Tell(&position)) {
    return {};
  }
  const auto frames = static_cast<int64_t>(dataBytes / format->nBlockAlign);
  return {std::move(format), frames, static_cast<int64_t>(position)};
}

FileFormat ReadWav(plat::File* file) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  return WithData<RiffFraming>(bytes, ReadWavFormat(bytes), ZrChunkId("data"));
}

FileFormat ReadW64(plat::File* file) noexcept {
  constexpr uint64_t kMostW64FormatBytes = 4096;
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  return WithData<Riff64Framing>(bytes, ReadW64Format(file, kMostW64FormatBytes), kZrLabelData);
}

FileFormat ReadAiff(plat::File* file) noexcept {
  const PositionKeeper<FileBytes> keeper{FileBytes(file)};
  FileFormat read{AllocateFormat(sizeof(WAVEFORMATEX)), 0, 0};
  if (read.format == nullptr || FAILED(iff_GetAIFFWfx(file, read.format.get(), &read.frames, &read.dataOffset)) ||
      !IsReadable(read.format.get())) {
    return {};
  }
  return read;
}

int32_t IsWanted(const FormatBlock& format, int32_t acceptCompressed) noexcept {
  return format != nullptr && (acceptCompressed != 0 || ZrAudio_IsCompressed(format.get()) == 0) ? 1 : 0;
}

HRESULT SetWavFormat(plat::File* file, WAVEFORMATEX format) noexcept {
  uint32_t dataBytes = 0;
  const HRESULT result = riff_FindChunkHeaderInRIFF(file, ZrChunkId("fmt "), &dataBytes, nullptr);
  if (FAILED(result)) return result;
  if (dataBytes < sizeof format) return ZR_E_BAD_STREAM;
  // The chunk keeps its size: extra bytes stay in the file, but nothing counts them any more.
  format.cbSize = 0;
  return WriteResult(FileBytes(file).Write(&format, sizeof format));
}

HRESULT SetAiffFormat(plat::File* file, const WAVEFORMATEX& format) noexcept {
  WAVEFORMATEX current;
  int64_t frames = 0;
  int64_t dataOffset = 0;
  HRESULT result = iff_GetAIFFWfx(file, &current, &frames, &dataOffset);
  if (FAILED(result)) return result;
  if (format.wFormatTag != WAVE_FORMAT_PCM) return ZR_E_UNSUPPORTED_FILE;
  uint32_t dataBytes = 0;
  result = iff_FindChunkFromStart(file, ZrIffId("COMM"), &dataBytes);
  if (FAILED(result)) return result;
  return marlo::aiff::ReplaceCommon(file, dataBytes, format);
}

}  // namespace

int32_t ZrFileIsWave(const char16_t* path, int32_t acceptCompressed) noexcept {
  const ScopedFile file(path, plat::kReadAccess);
  return file.IsOpen() ? IsWanted(ReadWavFormat(FileBytes(file.Get())), acceptCompressed) : 0;
}

int32_t ZrFileIsWave64(const char16_t* path, int32_t acceptCompressed) noexcept {
  const ScopedFile file(path, plat::kReadAccess);
  return file.IsOpen() ? IsWanted(ReadW64Format(file.Get(), UINT64_MAX), acceptCompressed) : 0;
}

int32_t ZrFileIsAiff(const char16_t* path) noexcept {
  const ScopedFile file(path, plat::kReadAccess);
  return file.IsOpen() ? iff_IsAIFFFile(file.Get(), nullptr) : 0;
}

WAVEFORMATEX* ZrGetFileWfx(const char16_t* path, int64_t* sampleFrames, int64_t* dataOffset) noexcept {
  const ScopedFile file(path, plat::kReadAccess);
  if (!file.IsOpen()) return nullptr;
  FileFormat read = ReadWav(file.Get());
  if (read.format == nullptr) read = ReadW64(file.Get());
  if (read.format == nullptr) read = ReadAiff(file.Get());
  if (read.format == nullptr) return nullptr;
  Store(sampleFrames, read.frames);
  Store(dataOffset, read.dataOffset);
  return read.format.release();
}

HRESULT ZrSetFileWfx(const char16_t* path, const WAVEFORMATEX* format) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  const HRESULT accepted = marlo::CheckPcm(*format);
  if (FAILED(accepted)) return accepted;
  const ScopedFile file(path, plat::kReadWriteAccess);
  if (!file.IsOpen()) return ZR_E_FILE_OPEN;
  return ReadWav(file.Get()).format != nullptr ? SetWavFormat(file.Get(), *format) : SetAiffFormat(file.Get(), *format);
}

HRESULT ZrSetFileWfx(const char16_t* path, const _zrwaveformat* format) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrSetFileWfx(path, marlo::HeaderForm(format, plain));
}
