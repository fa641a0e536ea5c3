// SPDX-License-Identifier: Apache-2.0
// AIFF and AIFC files: recognising them, their format, and their markers.
#include <algorithm>

#include "marlo110k/iff.h"
#include "media/aiff_common.h"
#include "media/riff/chunk_rules.h"

using namespace marlo::riff;

namespace marlo::aiff {

HRESULT ReadCommon(plat::File* file, uint32_t bytes, Common* common) noexcept {
  *common = {};
  if (!FileBytes(file).Read(common, bytes)) return ZR_E_FILE_READ;
  common->channels = Swap16(common->channels);
  common->frames = Swap32(common->frames);
  common->bits = Swap16(common->bits);
  common->rateExponent = Swap16(common->rateExponent);
  for (uint16_t& word : common->rateMantissa) word = Swap16(word);
  common->compression = Swap32(common->compression);
  return S_OK;
}

HRESULT ReplaceCommon(plat::File* file, uint32_t chunkBytes, const WAVEFORMATEX& format) noexcept {
  if (chunkBytes < kCommonBytes) return ZR_E_BAD_STREAM;
  const FileBytes bytes(file);
  uint64_t start = 0;
  Common common;
  if (!bytes.Tell(&start) || FAILED(ReadCommon(file, kCommonBytes, &common)) || !bytes.Seek(start)) {
    return ZR_E_FILE_READ;
  }
  uint16_t exponent = 0;
  uint16_t mantissa[4] = {};
  aiff_CreateRate(format.nSamplesPerSec, &exponent, mantissa);
  common.channels = Swap16(format.nChannels);
  common.frames = Swap32(common.frames);
  common.bits = Swap16(format.wBitsPerSample);
  common.rateExponent = Swap16(exponent);
  for (int i = 0; i < 4; ++i) common.rateMantissa[i] = Swap16(mantissa[i]);
  return WriteResult(bytes.Write(&common, kCommonBytes));
}

}  // namespace marlo::aiff

using marlo::aiff::Common;

int32_t iff_IsAIFFFile(plat::File* file, uint32_t* formSize) noexcept {
  return iff_IsAIFFFileEx(file, formSize, nullptr, nullptr);
}

int32_t iff_IsAIFFFileEx(plat::File* file, uint32_t* formSize, int32_t* isAifc, int32_t* isLittleEndian) noexcept {
  Store(formSize, 0u);
  Store(isAifc, 0);
  Store(isLittleEndian, 0);
  const FileBytes bytes(file);
  tIFFCHUNK header;
  uint32_t formType = 0;
  if (!bytes.Seek(0) || FAILED(iff_ReadFormType(file, &header, &formType))) return 0;
  Store(formSize, header.size);
  if (formType == ZrIffId("AIFF")) return 1;
  if (formType != ZrIffId("AIFC")) return 0;
  Store(isAifc, 1);

  const PositionKeeper<FileBytes> keeper(bytes);
  uint32_t left = header.size;
  Common common;
  if (!keeper.Saved() || FAILED(FindChunk<IffFraming>(bytes, ZrIffId("COMM"), nullptr, &left)) ||
      FAILED(marlo::aiff::ReadCommon(file, marlo::aiff::kAifcCommonBytes, &common))) {
    return 0;
  }
  const bool isSwapped = common.compression == ZrIffId("sowt");
  if (isSwapped) Store(isLittleEndian, 1);
  return isSwapped || common.compression == ZrIffId("NONE") ? 1 : 0;
}

HRESULT iff_GetAIFFWfx(plat::File* file, WAVEFORMATEX* format, int64_t* sampleFrames, int64_t* dataOffset) noexcept {
  if (format == nullptr || sampleFrames == nullptr || dataOffset == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint32_t formBytes = 0;
  int32_t isAifc = 0;
  int32_t isLittleEndian = 0;
  if (iff_IsAIFFFileEx(file, &formBytes, &isAifc, &isLittleEndian) == 0) return ZR_E_UNKNOWN_FORMAT;
  uint64_t firstChunk = 0;
  if (!bytes.Tell(&firstChunk)) return ZR_E_FILE_READ;

  uint32_t left = formBytes;
  HRESULT result = FindChunk<IffFraming>(bytes, ZrIffId("COMM"), nullptr, &left);
  if (FAILED(result)) return result;
  Common common;
  result =
      marlo::aiff::ReadCommon(file, isAifc != 0 ? marlo::aiff::kAifcCommonBytes : marlo::aiff::kCommonBytes, &common);
  if (FAILED(result)) return result;

  WAVEFORMATEX read = {};
  read.wFormatTag = isLittleEndian != 0 ? WAVE_FORMAT_PCM : ZR_FORMAT_PCM_BIG_ENDIAN;
  if (common.bits == 8) read.wFormatTag = ZR_FORMAT_PCM_SIGNED;
  read.nChannels = common.channels;
  read.nSamplesPerSec = aiff_ConvertRate(common.rateExponent, common.rateMantissa);
  read.wBitsPerSample = common.bits;
  const uint32_t frameBytes = static_cast<uint32_t>(common.bits >> 3) * common.channels;
  read.nBlockAlign = std::max<uint16_t>(static_cast<uint16_t>(frameBytes), 1);
  read.nAvgBytesPerSec = frameBytes * read.nSamplesPerSec;

  left = formBytes;
  uint32_t soundBytes = 0;
  if (!bytes.Seek(firstChunk)) return ZR_E_FILE_READ;
  result = FindChunk<IffFraming>(bytes, ZrIffId("SSND"), &soundBytes, &left);
  if (FAILED(result)) return result;
  uint32_t offset = 0;
  uint32_t blockBytes = 0;
  uint64_t position = 0;
  if (FAILED(iff_ReadDWORD(file, &offset)) || FAILED(iff_ReadDWORD(file, &blockBytes)) || !bytes.Tell(&position)) {
    return ZR_E_FILE_READ;
  }
  constexpr int64_t kSoundHeadBytes = 8;
  const int64_t available = std::max<int64_t>(int64_t{soundBytes} - kSoundHeadBytes - offset, 0);
  *format = read;
  *sampleFrames = std::min<int64_t>(available / read.nBlockAlign, common.frames);
  *dataOffset = static_cast<int64_t>(position + offset);
  return S_OK;
}

HRESULT iff_FindMarker(plat::File* file, tIFFMARKER* marker, uint16_t markerId) noexcept {
  if (marker == nullptr) return E_INVALIDARG;
  uint32_t chunkBytes = 0;
  HRESULT result = iff_FindChunkFromStart(file, ZrIffId("MARK"), &chunkBytes);
  if (FAILED(result)) return result;
  uint16_t count = 0;
  result = iff_ReadWORD(file, &count);
  if (FAILED(result)) return result;

  const FileBytes bytes(file);
  int64_t left = int64_t{chunkBytes} - int64_t{sizeof count};
  for (uint16_t i = 0; i < count && left > 0; ++i) {
    tIFFMARKER read;
    if (!bytes.Read(&read, sizeof read)) return ZR_E_NO_RIFF_HEADER;
    read.id = Swap16(read.id);
    read.position = Swap32(read.position);
    if (read.id == markerId) {
      *marker = read;
      return S_OK;
    }
    // The name with its length byte takes an even number of bytes, and the length byte has been read.
    const int64_t nameBytes = read.nameBytes + (read.nameBytes % 2 == 0 ? 1 : 0);
    if (!bytes.Skip(nameBytes)) return ZR_E_FILE_READ;
    left -= int64_t{sizeof read} + nameBytes;
  }
  return ZR_E_NOT_FOUND;
}
