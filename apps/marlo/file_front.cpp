// SPDX-License-Identifier: Apache-2.0
// Writes file fronts through the library's set-up calls and chunk layers.
#include "file_front.h"

#include "errors.h"
#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "unicode.h"

namespace host {
namespace {

// A RIFF or FORM size must stay below 0xFFFFFFF8.
constexpr uint64_t kMostFormSize = 0xFFFFFFF7;

// The one published version of the AIFC form.
constexpr uint32_t kAifcVersion = 0xA2805140;

}  // namespace

uint64_t FileFront::MostDataBytes() const {
  if (container_ == Container::kWave64) return INT64_MAX;
  // The largest front of all (an extensible Wave front: 68 bytes, AIFC: 80) and a padding byte.
  constexpr uint64_t kFrontAndPad = 80 + 1;
  return (kMostFormSize + 8 - kFrontAndPad) / FrameBytes() * FrameBytes();
}

OpenFile FileFront::Create(const std::string& path) {
  const auto reopen = [&] { return OpenFile(path, plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting); };
  const auto create = [&] { return OpenFile(path, plat::kReadWriteAccess, plat::kShareRead, plat::kCreateNew); };
  OpenFile file;
  if (IsAiff()) {
    file = create();
    WriteAiff(file.Get(), 0, path);
  } else {
    const _zrwaveformat_wfxecopyhelper wfext(&format_, ZRWFCOPY_EXT_MULTICHANNEL);
    const bool extensible = wfext.Format.wFormatTag == WAVE_FORMAT_EXTENSIBLE;
    if (extensible) {
      file = create();
      WriteExtensible(file.Get(), wfext, path);
    } else {
      const std::u16string name = ToUtf16(path);
      const HRESULT code = container_ == Container::kWave64
                               ? ZrInitializeWav64(name.c_str(), &wfext.Format, ZRWAVEFILE_NEW)
                               : ZrInitializeWav(name.c_str(), &wfext.Format, ZRWAVEFILE_NEW);
      if (code == ZR_E_FILE_OPEN) throw OpenFailure(path);
      Check(code, path);
      file = reopen();
      plat::SeekFile(file.Get(), 0, plat::kSeekEnd, nullptr);
    }
  }
  uint64_t position = 0;
  if (!plat::SeekFile(file.Get(), 0, plat::kSeekCurrent, &position)) throw WriteFailure(path);
  dataOffset_ = static_cast<int64_t>(position);
  return file;
}

void FileFront::WriteExtensible(plat::File* file, const WAVEFORMATEXTENSIBLE& wfext, const std::string& path) const {
  HRESULT code = S_OK;
  const auto then = [&](HRESULT next) {
    if (SUCCEEDED(code)) code = next;
  };
  if (container_ == Container::kWave64) {
    constexpr uint64_t kSizeBehindHeader = 16 + (24 + sizeof wfext) + 24;
    then(riff64_WriteFileID(file, &kZrLabelWave, kSizeBehindHeader));
    then(riff64_WriteChunk(file, &kZrLabelFmt, &wfext, sizeof wfext, nullptr));
    then(riff64_WriteChunkHeader(file, &kZrLabelData, 0));
  } else {
    constexpr uint32_t kRiffSize = 4 + (8 + sizeof wfext) + 8;
    then(riff_WriteFileID(file, ZrChunkId("WAVE"), kRiffSize));
    then(riff_WriteChunk(file, ZrChunkId("fmt "), &wfext, sizeof wfext, nullptr));
    then(riff_WriteChunkHeader(file, ZrChunkId("data"), 0));
  }
  if (FAILED(code)) throw WriteFailure(path);
}

void FileFront::WriteAiff(plat::File* file, uint64_t dataBytes, const std::string& path) const {
  const bool aifc = container_ == Container::kAifc;
  const auto soundBytes = static_cast<uint32_t>(8 + dataBytes);
  const uint32_t commonBytes = aifc ? 24 : 18;
  const uint32_t formBytes = 4 + (aifc ? 12 : 0) + (8 + commonBytes) + 8 + soundBytes + (soundBytes & 1);
  uint16_t exponent = 0;
  uint16_t mantissa[4] = {};
  aiff_CreateRate(format_.samplesPerSec, &exponent, mantissa);

  HRESULT code = S_OK;
  const auto then = [&](HRESULT next) {
    if (SUCCEEDED(code)) code = next;
  };
  const auto header = [&](uint32_t id, uint32_t bytes) {
    const tIFFCHUNK chunk = {id, bytes};
    then(iff_WriteChunk(file, &chunk));
  };
  then(iff_WriteFileID(file, aifc ? ZrIffId("AIFC") : ZrIffId("AIFF"), formBytes));
  if (aifc) {
    header(ZrIffId("FVER"), 4);
    then(iff_WriteDWORD(file, kAifcVersion));
  }
  header(ZrIffId("COMM"), commonBytes);
  then(iff_WriteWORD(file, format_.channels));
  then(iff_WriteDWORD(file, static_cast<uint32_t>(dataBytes / FrameBytes())));
  then(iff_WriteWORD(file, format_.BitsPerSample()));
  then(iff_WriteWORD(file, exponent));
  for (const uint16_t word : mantissa) then(iff_WriteWORD(file, word));
  if (aifc) {
    then(iff_WriteDWORD(file, ZrIffId("sowt")));
    then(iff_WriteWORD(file, 0));  // An empty name: its length byte and a padding byte.
  }
  header(ZrIffId("SSND"), soundBytes);
  then(iff_WriteDWORD(file, 0));  // The samples follow at once,
  then(iff_WriteDWORD(file, 0));  // in blocks of no particular size.
  if (FAILED(code)) throw WriteFailure(path);
}

void FileFront::Complete(plat::File* file, uint64_t dataBytes, const std::string& path) const {
  HRESULT code = S_OK;
  if (container_ == Container::kWave64) {
    const auto dataChunk = static_cast<uint64_t>(dataOffset_ - 24);
    const uint64_t padded = (dataBytes + 7) / 8 * 8;
    code = riff64_Pad(file, dataChunk);
    plat::SeekFile(file, dataOffset_ - 24, plat::kSeekStart, nullptr);
    if (SUCCEEDED(code)) code = riff64_WriteChunkHeader(file, &kZrLabelData, dataBytes);
    if (SUCCEEDED(code)) code = riff64_UpdateRIFFSize(file, static_cast<int64_t>(padded));
  } else {
    const uint64_t pad = dataBytes & 1;
    const uint8_t zero = 0;
    if (pad != 0 && !plat::WriteFile(file, &zero, 1, nullptr)) throw WriteFailure(path);
    if (IsAiff()) {
      plat::SeekFile(file, 0, plat::kSeekStart, nullptr);
      WriteAiff(file, dataBytes, path);
    } else {
      plat::SeekFile(file, dataOffset_ - 8, plat::kSeekStart, nullptr);
      code = riff_WriteChunkHeader(file, ZrChunkId("data"), static_cast<uint32_t>(dataBytes));
      if (SUCCEEDED(code)) code = riff_UpdateRIFFSize(file, static_cast<int64_t>(dataBytes + pad));
    }
  }
  if (FAILED(code)) throw WriteFailure(path);
}

}  // namespace host
