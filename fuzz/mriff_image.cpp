// SPDX-License-Identifier: Apache-2.0
// Wave images of any bytes, and writes into blocks of any room.
#include <algorithm>

#include "marlo110k/mriff.h"
#include "media_input.h"

using fuzzing::Require;

namespace {

void RequireOrder(const _tMRIFF& cursor) {
  Require(cursor.base <= cursor.current && cursor.current <= cursor.dataEnd && cursor.dataEnd <= cursor.capacityEnd,
          "the cursor's order");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const uint32_t word = fuzzing::TakeWord(data, &bytes);
  if (bytes > (1 << 16)) return 0;
  // A block of exactly this size, so that the sanitizer sees a byte too far.
  std::vector<uint8_t> block(data, data + bytes);
  block.shrink_to_fit();
  WAVEFORMATEX format = {};
  _zrwaveformat record = {};
  uint32_t dataSize = 0;
  const HRESULT plain = mriff_GetWfx(&format, block.data(), static_cast<uint32_t>(bytes), &dataSize);
  Require(mriff_GetWfx(&record, block.data(), static_cast<uint32_t>(bytes), nullptr) == plain, "both forms");

  _tMRIFF cursor;
  const auto dataBytes = static_cast<uint32_t>(word % (bytes + 1));
  Require(mriff_Init(&cursor, block.data(), dataBytes, static_cast<uint32_t>(bytes)) == S_OK, "init");
  char text[20];
  uint32_t bound = word;
  mriff_GetInfoString(&cursor, ZrChunkId("INAM"), text, sizeof text, &bound);
  Require(cursor.current == cursor.base, "the cursor goes back");
  mriff_FindListChunkFromStart(&cursor, ZrChunkId("INFO"), &bound);
  RequireOrder(cursor);
  mriff_ZrSetFilePointer(&cursor, static_cast<int32_t>(word), word % 4);
  RequireOrder(cursor);
  const uint64_t room = static_cast<uint64_t>(cursor.capacityEnd - cursor.current);
  const HRESULT written = mriff_WriteWaveHeader(&cursor, &format, word, dataBytes);
  RequireOrder(cursor);
  Require(SUCCEEDED(written) == (room >= (format.wFormatTag == WAVE_FORMAT_PCM ? 44u : 46u)), "a header fits or fails");
  mriff_UpdateDataSize(&cursor, word);
  RequireOrder(cursor);
  return 0;
}
