// SPDX-License-Identifier: Apache-2.0
// Repair of files of any bytes: what is refused stays as it was, what is repaired reads as a whole file afterwards,
// and nothing behind the samples' start changes.
#include <algorithm>

#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media_input.h"

using fuzzing::MemoryFile;
using fuzzing::Require;

namespace {

template <class Fix, class Find>
void Repair(const uint8_t* data, size_t bytes, Fix fix, Find findDataStart) {
  const MemoryFile file(data, bytes);
  file.MoveTo(5);
  const HRESULT result = fix(file);
  Require(file.Position() == 5, "the position is restored");
  const std::vector<uint8_t> after = file.Bytes();
  if (FAILED(result)) {
    Require(after.size() == bytes && std::equal(after.begin(), after.end(), data), "a refused file stays");
    return;
  }
  const uint64_t start = findDataStart(file);
  Require(start <= after.size(), "the front is whole");
  Require(after.size() == std::max<uint64_t>(bytes, start), "length");
  if (start < bytes)
    Require(std::equal(after.begin() + static_cast<ptrdiff_t>(start), after.end(), data + start), "samples");
  Require(SUCCEEDED(fix(file)) && file.Bytes() == after, "a repaired file needs no repair");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const uint32_t limit = fuzzing::TakeWord(data, &bytes);
  if (bytes > (1 << 16)) return 0;
  const uint32_t scanLimit = limit % 3 == 0 ? 0xFFFFFFFF : limit % 9000;
  Repair(
      data, bytes, [scanLimit](plat::File* file) { return ZrFixTrashedWav(file, nullptr, scanLimit); },
      [](const MemoryFile& file) {
        Require(riff_FindChunkHeaderInRIFF(file, ZrChunkId("data"), nullptr, nullptr) == S_OK, "a data chunk");
        return file.Position();
      });
  Repair(
      data, bytes, [scanLimit](plat::File* file) { return ZrFixTrashedW64(file, nullptr, scanLimit); },
      [](const MemoryFile& file) {
        Require(riff64_FindChunkHeaderInRIFF(file, &kZrLabelData, nullptr, nullptr) == S_OK, "a data chunk");
        return file.Position();
      });
  return 0;
}
