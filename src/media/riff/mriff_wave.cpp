// SPDX-License-Identifier: Apache-2.0
// Wave images in memory: writing the front, and reading the format.
#include <algorithm>

#include "marlo110k/mriff.h"
#include "media/riff/chunk_rules.h"

using namespace marlo::riff;

namespace {

constexpr uint32_t kPcmBytes = 16;

/// A PCM format with what follows from channels, rate and bits; callers' own figures aren't trusted.
WAVEFORMATEX Derived(WAVEFORMATEX format) noexcept {
  const uint32_t sampleBytes = format.wBitsPerSample >> 3;
  format.nBlockAlign = static_cast<uint16_t>(sampleBytes * format.nChannels);
  format.nAvgBytesPerSec = format.nChannels * format.nSamplesPerSec * sampleBytes;
  return format;
}

/// Finds a chunk from the base under the RIFF size as bound, and leaves the cursor at its data.
HRESULT FindFromBase(_tMRIFF* cursor, uint32_t id, uint32_t riffBytes, uint32_t* dataBytes) noexcept {
  MemoryBytes(cursor).Seek(0);
  return mriff_FindChunkHeaderInRIFF(cursor, id, dataBytes, &riffBytes);
}

}  // namespace

HRESULT mriff_WriteWaveHeader(_tMRIFF* cursor, const WAVEFORMATEX* format, uint32_t dataBytes,
                              uint32_t trailingBytes) noexcept {
  if (cursor == nullptr || format == nullptr) return E_INVALIDARG;
  const bool isPcm = format->wFormatTag == WAVE_FORMAT_PCM;
  const WAVEFORMATEX body = isPcm ? Derived(*format) : *format;
  const auto bodyBytes = isPcm ? kPcmBytes : static_cast<uint32_t>(sizeof body);
  const uint32_t contentBytes = bodyBytes + dataBytes + trailingBytes;
  const uint32_t riffBytes = contentBytes + 20 + (contentBytes & 1);

  const MemoryBytes bytes(cursor);
  HRESULT result = WriteTypedHeader(bytes, ZrChunkId("RIFF"), riffBytes, ZrChunkId("WAVE"));
  if (FAILED(result)) return result;
  const bool done = RiffFraming::Write(bytes, ZrChunkId("fmt "), bodyBytes) && bytes.Write(&body, bodyBytes) &&
                    RiffFraming::Write(bytes, ZrChunkId("data"), dataBytes);
  return WriteResult(done);
}

HRESULT mriff_WriteWaveHeader(_tMRIFF* cursor, const _zrwaveformat* format, uint32_t dataBytes,
                              uint32_t trailingBytes) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  const _zrwaveformat_wfxcopyhelper plain(format);
  return mriff_WriteWaveHeader(cursor, &plain, dataBytes, trailingBytes);
}

HRESULT mriff_GetWfx(WAVEFORMATEX* format, const void* block, uint32_t blockSize, uint32_t* dataSize) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  _tMRIFF cursor;
  // The cursor only reads here.
  HRESULT result = mriff_Init(&cursor, const_cast<void*>(block), blockSize, blockSize);
  if (FAILED(result)) return result;
  uint32_t riffBytes = 0;
  uint32_t formType = 0;
  result = mriff_ReadFileID(&cursor, &riffBytes, &formType);
  if (FAILED(result)) return result;
  if (formType != ZrChunkId("WAVE")) return E_FAIL;

  uint32_t formatBytes = 0;
  result = FindFromBase(&cursor, ZrChunkId("fmt "), riffBytes, &formatBytes);
  if (FAILED(result)) return result;
  const uint64_t formatStart = static_cast<uint64_t>(cursor.current - cursor.base);
  uint32_t dataBytes = 0;
  result = FindFromBase(&cursor, ZrChunkId("data"), riffBytes, &dataBytes);
  if (FAILED(result)) return result;

  MemoryBytes(&cursor).Seek(formatStart);
  WAVEFORMATEX read = {};
  if (!MemoryBytes(&cursor).Read(&read, std::min<uint32_t>(formatBytes, sizeof read))) return ZR_E_FILE_READ;
  *format = read;
  Store(dataSize, dataBytes);
  return S_OK;
}

HRESULT mriff_GetWfx(_zrwaveformat* format, const void* block, uint32_t blockSize, uint32_t* dataSize) noexcept {
  if (format == nullptr) return E_INVALIDARG;
  WAVEFORMATEX read;
  const HRESULT result = mriff_GetWfx(&read, block, blockSize, dataSize);
  if (FAILED(result)) return result;
  read.cbSize = 0;  // The extra bytes aren't behind the 18 here.
  format->Init(sizeof *format, &read);
  return S_OK;
}
