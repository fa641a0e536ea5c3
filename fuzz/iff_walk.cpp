// SPDX-License-Identifier: Apache-2.0
// AIFF files of any bytes: formats that come out can be divided by, markers end, removals shrink the file.
#include "marlo110k/iff.h"
#include "media_input.h"

using fuzzing::MemoryFile;
using fuzzing::Require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const uint32_t word = fuzzing::TakeWord(data, &bytes);
  if (bytes > (1 << 16)) return 0;
  const MemoryFile file(data, bytes);
  WAVEFORMATEX format;
  int64_t frames = -1;
  int64_t dataOffset = -1;
  if (iff_GetAIFFWfx(file, &format, &frames, &dataOffset) == S_OK) {
    Require(format.nBlockAlign != 0 && format.cbSize == 0 && frames >= 0 && dataOffset >= 20, "format");
    Require(format.nSamplesPerSec <= 192000, "rate");
  }
  tIFFMARKER marker;
  if (iff_FindMarker(file, &marker, static_cast<uint16_t>(word)) == S_OK) {
    Require(marker.id == static_cast<uint16_t>(word) && file.Position() <= bytes, "marker");
  }
  uint32_t size = 0;
  file.MoveTo(0);
  uint32_t bound = word;
  iff_FindChunkHeader(file, ZrIffId("SSND"), &size, &bound);
  const uint32_t ids[] = {ZrIffId("COMM"), ZrIffId("SSND"), ZrIffId("MARK"), ZrIffId("NAME")};
  const HRESULT removed = iff_DeleteChunk(file, ids[word % 4], &size);
  Require(SUCCEEDED(removed) ? file.Length() < bytes : file.Length() == bytes, "length");
  return 0;
}
