// SPDX-License-Identifier: Apache-2.0
// CD audio descriptors: small RIFF files that stand for a track of a disc.
#include "marlo110k/riff.h"
#include "media/riff/chunk_rules.h"

using namespace marlo::riff;

HRESULT riff_ReadRIFFCDDA(plat::File* file, tZRCDDA* record) noexcept {
  if (record == nullptr) return E_INVALIDARG;
  const FileBytes bytes(file);
  uint32_t left = 0;
  uint32_t formType = 0;
  HRESULT result = ReadRiffHeader(bytes, &left, &formType);
  if (FAILED(result)) return result;
  if (formType != ZrChunkId("CDDA")) return ZR_E_UNKNOWN_FORMAT;
  uint32_t dataBytes = 0;
  result = FindChunk<RiffFraming>(bytes, ZrChunkId("fmt "), &dataBytes, &left);
  if (FAILED(result)) return result;
  if (dataBytes != sizeof *record) return ZR_E_UNSUPPORTED_VERSION;
  tZRCDDA read;
  if (!bytes.Read(&read, sizeof read)) return ZR_E_FILE_READ;
  *record = read;
  return S_OK;
}

HRESULT riff_ReadCDAFile(const char16_t* path, uint32_t* track, uint32_t* startSector, uint32_t* startFrames,
                         uint32_t* lengthSectors, uint32_t* serial) noexcept {
  tZRCDDA record = {};
  HRESULT result = ZR_E_FILE_OPEN;
  plat::File* const file = plat::OpenFile(path, plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
  if (file != plat::kInvalidFile) {
    result = riff_ReadRIFFCDDA(file, &record);
    plat::CloseFile(file);
  }
  Store(track, uint32_t{record.track});
  Store(startSector, record.startSector);
  Store(startFrames, (record.startMinute * 60u + record.startSecond) * 75u + record.startFrame);
  Store(lengthSectors, record.lengthSectors);
  Store(serial, record.discSerial);
  return result;
}
