// SPDX-License-Identifier: Apache-2.0
// The walk to the samples.
#include "sound_layout.h"

#include <algorithm>

#include "marlo110k/contract/wave.h"
#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "progress.h"

namespace host {
namespace {

bool IsAiff(Container container) { return container == Container::kAiff || container == Container::kAifc; }

// Bytes of a frame by a Wave or Wave64 format chunk; 0 when it says nothing sensible.
uint32_t FrameBytesOfWave(plat::File* file, Container container, const ChunkHeader& chunk) {
  WAVEFORMATEX format{};
  if (chunk.bytes < 16) return 0;
  const HRESULT code = container == Container::kWave64
                           ? riff64_ReadDataBounded(file, &format, sizeof format, chunk.bytes)
                           : riff_ReadDataBounded(file, &format, sizeof format, static_cast<uint32_t>(chunk.bytes));
  if (FAILED(code) || format.nChannels == 0 || format.nSamplesPerSec == 0) return 0;
  return format.nBlockAlign;
}

// The same by an AIFF common chunk, with the place of its frame count.
uint32_t FrameBytesOfAiff(plat::File* file, const ChunkHeader& chunk, SoundLayout* layout) {
  uint16_t channels = 0;
  uint16_t bits = 0;
  if (chunk.bytes < 18 || FAILED(iff_ReadWORD(file, &channels))) return 0;
  layout->framesOffset = chunk.dataOffset + 2;
  if (FAILED(iff_ReadDWORD(file, &layout->framesStated)) || FAILED(iff_ReadWORD(file, &bits))) return 0;
  // As the library reads the format: depths that aren't whole bytes are cut to the bytes below.
  return bits / 8u * channels;
}

}  // namespace

std::optional<SoundLayout> FindSound(plat::File* file, int64_t fileBytes, std::string* reason) {
  const std::optional<FormHeader> form = ReadFormHeader(file);
  if (!form) {
    *reason = "The file doesn't begin as a Wave, Wave64 or AIFF file does.";
    return std::nullopt;
  }
  const bool aiff = IsAiff(form->container);
  SoundLayout layout;
  layout.form = *form;
  bool hasData = false;
  bool hasFormat = false;
  Progress progress(0);
  int64_t position = form->firstChunk;
  while (!(hasData && hasFormat)) {
    progress.Update(0);
    const std::optional<ChunkHeader> chunk = ReadChunkHeader(file, form->container, position);
    if (!chunk || !IsPlausibleLabel(form->container, chunk->label)) break;
    if (!hasFormat && HasName(form->container, chunk->label, aiff ? "COMM" : "fmt ")) {
      layout.frameBytes =
          aiff ? FrameBytesOfAiff(file, *chunk, &layout) : FrameBytesOfWave(file, form->container, *chunk);
      if (layout.frameBytes == 0) {
        *reason = "The format in the front of the file makes no sense.";
        return std::nullopt;
      }
      hasFormat = true;
    } else if (!hasData && HasName(form->container, chunk->label, aiff ? "SSND" : "data")) {
      layout.data = *chunk;
      layout.sampleOffset = chunk->dataOffset;
      layout.sampleBytes = chunk->bytes;
      if (aiff) {
        uint32_t skipped = 0;
        uint32_t blockSize = 0;
        if (FAILED(iff_ReadDWORD(file, &skipped)) || FAILED(iff_ReadDWORD(file, &blockSize))) break;
        layout.sampleOffset += 8 + int64_t{skipped};
        layout.sampleBytes -= std::min<uint64_t>(layout.sampleBytes, 8 + uint64_t{skipped});
      }
      hasData = layout.sampleOffset <= fileBytes;
      if (!hasData) break;
    }
    const int64_t end = EndOfChunk(form->container, *chunk);
    if (!(hasData && hasFormat) && end > fileBytes) break;
    position = end;
  }
  if (hasData && hasFormat) return layout;
  *reason = hasFormat ? "No samples were found behind the front of the file." : "No format was found in the file.";
  return std::nullopt;
}

}  // namespace host
