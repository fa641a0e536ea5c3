// SPDX-License-Identifier: Apache-2.0
// The front of Wave and Wave64 files: header, format, junk, data header. Written into new files and over old ones.
#include <algorithm>

#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/riff/chunk_rules.h"
#include "media/riff/riff64_write.h"
#include "media/wave_format_check.h"

using namespace marlo::riff;

namespace {

constexpr uint32_t kFormatBytes = sizeof(WAVEFORMATEX);

/// Sizes of a front without a junk chunk and of the smallest with one; the first sample follows it.
constexpr uint32_t kWavFront = 12 + 8 + kFormatBytes + 8;
constexpr uint32_t kWavJunkFront = kWavFront + 8;
constexpr uint32_t kW64Front = 40 + 24 + kFormatBytes + 6 + 24;
constexpr uint32_t kW64JunkFront = kW64Front + 24;
static_assert(kWavFront == 46 && kWavJunkFront == 54 && kW64Front == 112 && kW64JunkFront == 136);

HRESULT WriteZeros(FileBytes bytes, uint64_t count) noexcept {
  constexpr uint8_t kZeros[1024] = {};
  while (count != 0) {
    const auto block = static_cast<uint32_t>(std::min<uint64_t>(count, sizeof kZeros));
    if (!bytes.Write(kZeros, block)) return ZR_E_FILE_WRITE;
    count -= block;
  }
  return S_OK;
}

/// `headerBytes` is even and kWavFront, or kWavJunkFront and more.
HRESULT WriteWavFront(plat::File* file, const WAVEFORMATEX& format, uint32_t dataBytes, uint32_t headerBytes) noexcept {
  HRESULT result = riff_WriteFileID(file, ZrChunkId("WAVE"), dataBytes + headerBytes - 8);
  if (SUCCEEDED(result)) result = riff_WriteChunk(file, ZrChunkId("fmt "), &format, kFormatBytes, nullptr);
  if (SUCCEEDED(result) && headerBytes != kWavFront) {
    const uint32_t junkBytes = headerBytes - kWavJunkFront;
    result = riff_WriteChunkHeader(file, ZrChunkId("JUNK"), junkBytes);
    if (SUCCEEDED(result)) result = WriteZeros(FileBytes(file), junkBytes);
  }
  return SUCCEEDED(result) ? riff_WriteChunkHeader(file, ZrChunkId("data"), dataBytes) : result;
}

/// `headerBytes` is a multiple of 8 and kW64Front, or kW64JunkFront and more.
HRESULT WriteW64Front(plat::File* file, const WAVEFORMATEX& format, uint64_t dataBytes, uint64_t headerBytes) noexcept {
  const uint64_t fileBytes = dataBytes + headerBytes;
  HRESULT result = riff64_WriteFileID(file, &kZrLabelWave, fileBytes - Riff64Framing::kHeaderBytes);
  if (SUCCEEDED(result)) result = riff64_WriteChunk(file, &kZrLabelFmt, &format, kFormatBytes, nullptr);
  if (SUCCEEDED(result) && headerBytes != kW64Front) {
    const uint64_t junkBytes = headerBytes - kW64JunkFront;
    result = riff64_WriteChunkHeader(file, &kZrLabelJunk, junkBytes);
    if (SUCCEEDED(result)) result = WriteZeros(FileBytes(file), junkBytes);
  }
  return SUCCEEDED(result) ? riff64_WriteChunkHeader(file, &kZrLabelData, dataBytes) : result;
}

/// The modes 3 and 4 are the calls' own; the others are dispositions as they stand.
uint32_t Disposition(uint32_t mode) noexcept {
  if (mode == ZRWAVEFILE_TRUNCATE) return plat::kTruncateExisting;
  return mode == ZRWAVEFILE_REPLACE ? uint32_t{plat::kCreateAlways} : mode;
}

/// Checks the format, opens the file, lets `write` fill it, and closes it.
template <class Write>
HRESULT InitializeFile(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode, Write write) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  const HRESULT accepted = marlo::CheckFrontFormat(*format);
  if (FAILED(accepted)) return accepted;
  plat::File* const file = plat::OpenFile(path, plat::kReadWriteAccess, plat::kShareRead, Disposition(mode));
  if (file == plat::kInvalidFile) return ZR_E_FILE_OPEN;
  const HRESULT result = write(file);
  plat::CloseFile(file);
  return result;
}

struct FrontSizes {
  uint32_t plain;
  uint32_t withJunk;
  uint32_t alignment;
};

/// Runs `write` at the start of an open file when the file and the header size allow it; restores the position.
template <class Write>
HRESULT InsertFront(plat::File* file, const WAVEFORMATEX* format, uint64_t headerBytes, FrontSizes sizes,
                    Write write) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  uint64_t length = 0;
  if (!keeper.Saved() || !plat::GetFileBytes(file, &length) || !bytes.Seek(0)) return ZR_E_FILE_READ;
  const HRESULT accepted = marlo::CheckFrontFormat(*format);
  if (FAILED(accepted)) return accepted;
  const bool isFront = headerBytes == sizes.plain || headerBytes >= sizes.withJunk;
  if (headerBytes % sizes.alignment != 0 || !isFront || length < sizes.plain) return ZR_E_BAD_STREAM;
  return write();
}

}  // namespace

HRESULT ZrInitializeWav(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode) noexcept {
  return InitializeFile(path, format, mode,
                        [format](plat::File* file) { return WriteWavFront(file, *format, 0, kWavFront); });
}

HRESULT ZrInitializeWav64(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode) noexcept {
  return InitializeFile(path, format, mode,
                        [format](plat::File* file) { return WriteW64Front(file, *format, 0, kW64Front); });
}

HRESULT ZrInitializeWavWithJunk(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode,
                                uint32_t headerSize) noexcept {
  return InitializeFile(path, format, mode, [format, headerSize](plat::File* file) {
    const uint32_t evenBytes = headerSize + (headerSize & 1);
    return evenBytes < kWavJunkFront ? E_INVALIDARG : WriteWavFront(file, *format, 0, evenBytes);
  });
}

HRESULT ZrInitializeWav64WithJunk(const char16_t* path, const WAVEFORMATEX* format, uint32_t mode,
                                  int64_t headerSize) noexcept {
  return InitializeFile(path, format, mode, [format, headerSize](plat::File* file) {
    if (headerSize < 0) return E_INVALIDARG;
    const uint64_t alignedBytes = Riff64Framing::Padded(static_cast<uint64_t>(headerSize));
    return alignedBytes < kW64JunkFront ? E_INVALIDARG : WriteW64Front(file, *format, 0, alignedBytes);
  });
}

HRESULT ZrInsertWavHeader(plat::File* file, const WAVEFORMATEX* format, uint32_t dataBytes,
                          uint32_t headerSize) noexcept {
  return InsertFront(file, format, headerSize, {kWavFront, kWavJunkFront, 2},
                     [=] { return WriteWavFront(file, *format, dataBytes, headerSize); });
}

HRESULT ZrInsertW64Header(plat::File* file, const WAVEFORMATEX* format, uint64_t dataBytes,
                          uint64_t headerSize) noexcept {
  return InsertFront(file, format, headerSize, {kW64Front, kW64JunkFront, 8},
                     [=] { return WriteW64Front(file, *format, dataBytes, headerSize); });
}

HRESULT ZrInitializeWav(const char16_t* path, const _zrwaveformat* format, uint32_t mode) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInitializeWav(path, marlo::HeaderForm(format, plain), mode);
}

HRESULT ZrInitializeWav64(const char16_t* path, const _zrwaveformat* format, uint32_t mode) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInitializeWav64(path, marlo::HeaderForm(format, plain), mode);
}

HRESULT ZrInitializeWavWithJunk(const char16_t* path, const _zrwaveformat* format, uint32_t mode,
                                uint32_t headerSize) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInitializeWavWithJunk(path, marlo::HeaderForm(format, plain), mode, headerSize);
}

HRESULT ZrInitializeWav64WithJunk(const char16_t* path, const _zrwaveformat* format, uint32_t mode,
                                  int64_t headerSize) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInitializeWav64WithJunk(path, marlo::HeaderForm(format, plain), mode, headerSize);
}

HRESULT ZrInsertWavHeader(plat::File* file, const _zrwaveformat* format, uint32_t dataBytes,
                          uint32_t headerSize) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInsertWavHeader(file, marlo::HeaderForm(format, plain), dataBytes, headerSize);
}

HRESULT ZrInsertW64Header(plat::File* file, const _zrwaveformat* format, uint64_t dataBytes,
                          uint64_t headerSize) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(format);
  return ZrInsertW64Header(file, marlo::HeaderForm(format, plain), dataBytes, headerSize);
}
