// SPDX-License-Identifier: Apache-2.0
// Wave64 files of any bytes: walks end, counts agree with steps, removals shrink the file, display lists don't leak.
#include "marlo110k/riff64.h"
#include "media_input.h"
#include "platform/base/memory.h"

using fuzzing::MemoryFile;
using fuzzing::Require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const uint32_t which = fuzzing::TakeWord(data, &bytes);
  const auto bound = static_cast<int64_t>(fuzzing::TakeWord(data, &bytes));
  if (bytes > (1 << 16)) return 0;
  const GUID* const labels[] = {&kZrLabelFmt, &kZrLabelData, &kZrLabelJunk, &kZrLabelBext, &kZrLabelDisplay};
  const GUID* label = labels[which % 5];
  const MemoryFile file(data, bytes);

  uint64_t size = 0;
  int64_t left = 0;
  const HRESULT found = riff64_FindChunkHeaderInRIFF(file, label, &size, &left);
  riff64_FindListChunkFromStart(file, &kZrLabelWave, &size);
  riff64_SeekDataStart(file);
  uint32_t count = 0;
  left = bound;
  const HRESULT counted = riff64_GetNumListEntries(file, &count, &left);
  Require(file.Position() == 40, "the position is restored");
  left = bound;
  Require(riff64_SeekListEntry(file, count, &left) == S_OK, "as many steps as entries");
  if (counted == S_OK) Require(riff64_SeekListEntry(file, 1, &left) == ZR_E_NOT_FOUND, "and no more");

  const int64_t blocks = plat::LiveBlocks();
  tZRDISPITEM items[] = {{kZrDisplayText, 0, nullptr}, {kZrDisplayPicture, 0, nullptr}};
  tZRDISPLIST list = {2, items};
  riff64_SeekDataStart(file);
  left = bound;
  displist64_Load(file, &list, &left);
  Require(file.Position() == 40, "the position is restored");
  Require(items[0].size <= bytes && items[1].size <= bytes, "an item is no larger than the file");
  displist_Free(&list);
  Require(plat::LiveBlocks() == blocks, "no leak");

  const HRESULT removed = riff64_DeleteChunk(file, label, &size);
  Require(SUCCEEDED(removed) == SUCCEEDED(found), "what is found can be removed");
  Require(SUCCEEDED(removed) ? file.Length() < bytes : file.Length() == bytes, "length");
  return 0;
}
