// SPDX-License-Identifier: Apache-2.0
// Repair of Wave and Wave64 files whose front a crash left unfinished: a believable format, the place of the samples,
// and a new front before them.
#include <algorithm>
#include <string_view>

#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/riff/chunk_rules.h"
#include "media/wave_format_check.h"

using namespace marlo::riff;

namespace {

constexpr uint32_t kScanBlockBytes = 4096;

/// Where a kind of file keeps what the repair looks for.
struct Layout {
  uint64_t formatOffset;
  uint64_t chunksOffset;       ///< Behind the 18-byte format.
  std::string_view dataLabel;  ///< As it stands in the file.
  uint32_t headerBytes;        ///< Of the data chunk.
};

constexpr Layout kWav = {20, 38, {"data", 4}, RiffFraming::kHeaderBytes};
constexpr Layout kW64 = {
    64, 88, {"data\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16}, Riff64Framing::kHeaderBytes};

constexpr WAVEFORMATEX kUsualFormat = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};

/// Keeps what a reader could believe of a damaged format and takes the rest from the defaults.
WAVEFORMATEX Believable(WAVEFORMATEX format, const WAVEFORMATEX& defaults) noexcept {
  if (format.nSamplesPerSec < 2000 || format.nSamplesPerSec > 192000) format.nSamplesPerSec = defaults.nSamplesPerSec;
  if (format.nChannels != 1 && format.nChannels != 2) format.nChannels = defaults.nChannels;
  if (format.wFormatTag != WAVE_FORMAT_PCM && format.wFormatTag != WAVE_FORMAT_IEEE_FLOAT) {
    format.wFormatTag = defaults.wFormatTag;
  }
  const uint16_t bits = format.wBitsPerSample;
  if (format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT) {
    if (bits != 32 && bits != 64) format.wBitsPerSample = defaults.wBitsPerSample > 32 ? 64 : 32;
  } else if (bits != 8 && bits != 16 && bits != 24 && bits != 32) {
    format.wBitsPerSample = std::min<uint16_t>(defaults.wBitsPerSample, 32);
  }
  format.cbSize = 0;
  format.nBlockAlign = static_cast<uint16_t>((format.wBitsPerSample >> 3) * format.nChannels);
  format.nAvgBytesPerSec = format.nBlockAlign * format.nSamplesPerSec;
  return format;
}

/// Looks for the data label byte by byte from `start` on. Without one the samples are taken to begin at the limit.
HRESULT ScanForData(plat::File* file, const Layout& layout, uint64_t start, uint64_t limit,
                    uint64_t* dataStart) noexcept {
  char block[kScanBlockBytes];
  for (;;) {
    uint32_t got = 0;
    if (!FileBytes(file).Seek(start) || !plat::ReadFile(file, block, sizeof block, &got)) return ZR_E_FILE_READ;
    const size_t hit = std::string_view(block, got).find(layout.dataLabel);
    if (hit != std::string_view::npos) {
      *dataStart = start + hit + layout.headerBytes;
      return S_OK;
    }
    if (start + got >= limit) {
      *dataStart = limit;
      return S_OK;
    }
    if (got < sizeof block) return ZR_E_NOT_FOUND;
    // Far enough back that a label across two blocks is seen whole.
    start += got - layout.dataLabel.size();
  }
}

/// Reads and mends the format.
HRESULT ReadFormat(FileBytes bytes, const Layout& layout, const WAVEFORMATEX* defaults, WAVEFORMATEX* format) noexcept {
  if (!bytes.Seek(layout.formatOffset) || !bytes.Read(format, sizeof *format)) return ZR_E_FILE_READ;
  *format = Believable(*format, defaults != nullptr ? *defaults : kUsualFormat);
  return format->nBlockAlign == 0 ? ZR_E_UNSUPPORTED_MEDIA : S_OK;
}

/// Bytes of whole frames from `start` to `end`.
uint64_t WholeFrames(uint64_t start, uint64_t end, uint16_t blockAlign) noexcept {
  if (start >= end) return 0;  // The data label itself was cut off.
  return (end - start) / blockAlign * blockAlign;
}

/// Finds the data chunk by chunk headers from `start` on.
bool FindWavData(FileBytes bytes, uint64_t start, uint32_t limit, uint64_t* dataStart) noexcept {
  if (!bytes.Seek(start)) return false;
  const HRESULT found = FindChunk<RiffFraming>(bytes, ZrChunkId("data"), nullptr, &limit);
  return SUCCEEDED(found) && bytes.Tell(dataStart);
}

bool FindW64Data(FileBytes bytes, uint64_t start, uint64_t limit, uint64_t* dataStart) noexcept {
  if (!bytes.Seek(start)) return false;
  auto bound = static_cast<int64_t>(limit);
  const HRESULT found = FindChunk<Riff64Framing>(bytes, kZrLabelData, nullptr, &bound);
  return SUCCEEDED(found) && bytes.Tell(dataStart);
}

/// True when the front has a 16-byte format chunk, whose next chunk stands two bytes earlier than behind ours.
bool HasShortFormat(FileBytes bytes) noexcept {
  uint32_t formatBytes = 0;
  return bytes.Seek(16) && bytes.Read(&formatBytes, sizeof formatBytes) && formatBytes == 16;
}

}  // namespace

HRESULT ZrFixTrashedWav(plat::File* file, const WAVEFORMATEX* defaults, uint32_t scanLimit) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  uint64_t length = 0;
  if (!keeper.Saved() || !plat::GetFileBytes(file, &length)) return ZR_E_FILE_READ;
  const auto limit = static_cast<uint32_t>(std::min<uint64_t>(length, scanLimit));
  WAVEFORMATEX format;
  HRESULT result = ReadFormat(bytes, kWav, defaults, &format);
  if (FAILED(result)) return result;

  uint64_t dataStart = 0;
  constexpr uint64_t kShortFormatChunks = 36;
  const bool found = (HasShortFormat(bytes) && FindWavData(bytes, kShortFormatChunks, limit, &dataStart)) ||
                     FindWavData(bytes, kWav.chunksOffset, limit, &dataStart);
  if (!found) {
    result = ScanForData(file, kWav, kWav.chunksOffset, limit, &dataStart);
    if (FAILED(result)) return result;
  }
  // The front can't tell of more than 4 GiB; what lies behind stays in the file.
  if (dataStart > UINT32_MAX) return ZR_E_BAD_STREAM;
  const uint64_t end = std::min<uint64_t>(length, UINT32_MAX);
  const auto dataBytes = static_cast<uint32_t>(WholeFrames(dataStart, end, format.nBlockAlign));
  return ZrInsertWavHeader(file, &format, dataBytes, static_cast<uint32_t>(dataStart));
}

HRESULT ZrFixTrashedW64(plat::File* file, const WAVEFORMATEX* defaults, uint64_t scanLimit) noexcept {
  const FileBytes bytes(file);
  const PositionKeeper<FileBytes> keeper(bytes);
  uint64_t length = 0;
  if (!keeper.Saved() || !plat::GetFileBytes(file, &length)) return ZR_E_FILE_READ;
  const uint64_t limit = std::min(length, scanLimit & ~uint64_t{7});
  WAVEFORMATEX format;
  HRESULT result = ReadFormat(bytes, kW64, defaults, &format);
  if (FAILED(result)) return result;

  uint64_t dataStart = 0;
  if (!FindW64Data(bytes, kW64.chunksOffset, limit, &dataStart)) {
    result = ScanForData(file, kW64, kW64.chunksOffset, limit, &dataStart);
    if (FAILED(result)) return result;
  }
  return ZrInsertW64Header(file, &format, WholeFrames(dataStart, length, format.nBlockAlign), dataStart);
}

HRESULT ZrFixTrashedWav(plat::File* file, const _zrwaveformat* defaults, uint32_t scanLimit) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(defaults);
  return ZrFixTrashedWav(file, marlo::HeaderForm(defaults, plain), scanLimit);
}

HRESULT ZrFixTrashedW64(plat::File* file, const _zrwaveformat* defaults, uint64_t scanLimit) noexcept {
  const _zrwaveformat_wfxcopyhelper plain(defaults);
  return ZrFixTrashedW64(file, marlo::HeaderForm(defaults, plain), scanLimit);
}
