// SPDX-License-Identifier: Apache-2.0
// Judges and corrects the size fields of a sound file.
#include "size_plan.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

#include "errors.h"
#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "progress.h"

namespace host {
namespace {

bool IsAiff(Container container) { return container == Container::kAiff || container == Container::kAifc; }

// A RIFF or FORM size has to stay below 0xFFFFFFF8; it counts from byte 8 on.
constexpr uint64_t kMostRiffBytes = 0xFFFFFFF7ull + 8;

struct Tail {
  int64_t end;  // Of the last chunk behind the samples, or where they end.
  bool hasChunks = false;
  std::optional<ChunkHeader> cut;  // A known chunk that the end of the file cuts.
};

// Walks what stands behind the samples, as far as it looks like chunks.
Tail WalkTail(plat::File* file, Container container, int64_t start, int64_t fileBytes) {
  Tail tail{start, false, std::nullopt};
  Progress progress(0);
  while (tail.end < fileBytes) {
    progress.Update(0);
    const std::optional<ChunkHeader> chunk = ReadChunkHeader(file, container, tail.end);
    if (!chunk || !IsPlausibleLabel(container, chunk->label)) break;
    const bool whole = chunk->bytes <= static_cast<uint64_t>(fileBytes - chunk->dataOffset);
    // A header that is no more than likely must also hold something and fit, else samples pass for a chunk.
    if (!IsKnownLabel(container, chunk->label) && (!whole || chunk->bytes == 0)) break;
    tail.hasChunks = true;
    tail.end = std::min(EndOfChunk(container, *chunk), fileBytes);
    if (!whole) {
      tail.cut = chunk;
      break;
    }
  }
  return tail;
}

// Tags that music programs put behind a file without telling its size fields.
bool IsTag(plat::File* file, int64_t offset) {
  char text[8] = {};
  uint32_t got = 0;
  plat::SeekFile(file, offset, plat::kSeekStart, nullptr);
  plat::ReadFile(file, text, sizeof text, &got);
  const std::string_view head(text, got);
  return head.starts_with("TAG") || head.starts_with("ID3") || head.starts_with("APETAGEX");
}

uint64_t WholeFrames(int64_t bytes, uint32_t frameBytes) {
  return bytes <= 0 ? 0 : static_cast<uint64_t>(bytes) / frameBytes * frameBytes;
}

uint64_t Distance(uint64_t left, uint64_t right) { return left > right ? left - right : right - left; }

}  // namespace

SizePlan PlanSizes(plat::File* file, int64_t fileBytes, const SoundLayout& layout) {
  const Container container = layout.form.container;
  const auto padding = static_cast<uint64_t>(PaddingOf(container));
  const int64_t available = std::max<int64_t>(fileBytes - layout.sampleOffset, 0);
  SizePlan plan;
  plan.sampleBytes = layout.sampleBytes;
  int64_t end = fileBytes;
  if (layout.sampleBytes <= static_cast<uint64_t>(available)) {
    // An unfinished AIFF may state less than the eight bytes in front of its samples.
    const int64_t dataEnd = std::max(EndOfChunk(container, layout.data), layout.sampleOffset);
    const Tail tail = WalkTail(file, container, dataEnd, fileBytes);
    // Wave64 writers may count the padding of the data chunk.
    const uint64_t remainder = layout.sampleBytes % layout.frameBytes;
    const bool padded = container == Container::kWave64 && layout.data.bytes % 8 == 0 && remainder < 8;
    if (tail.hasChunks) {
      end = tail.end;
      if (tail.cut) {
        plan.changes.push_back({SizeField::kTrailingChunk, *tail.cut, tail.cut->bytes,
                                static_cast<uint64_t>(fileBytes - tail.cut->dataOffset)});
      }
    } else if (fileBytes - dataEnd >= int64_t{layout.frameBytes} && !IsTag(file, dataEnd)) {
      plan.sampleBytes = WholeFrames(available, layout.frameBytes);
    } else {
      if (remainder != 0 && !padded) plan.sampleBytes = WholeFrames(available, layout.frameBytes);
      end = 0;  // Follows from the samples below.
    }
  } else {
    plan.sampleBytes = WholeFrames(available, layout.frameBytes);
  }

  if (container != Container::kWave64) {
    const auto front = static_cast<uint64_t>(layout.sampleOffset);
    const uint64_t most =
        (kMostRiffBytes - 1 - std::min(front, kMostRiffBytes - 1)) / layout.frameBytes * layout.frameBytes;
    if (plan.sampleBytes > most) {
      plan.unreachableBytes = plan.sampleBytes - most;
      plan.sampleBytes = most;
    }
  }
  const bool samplesEndFile = plan.sampleBytes != layout.sampleBytes || end == 0;
  if (plan.sampleBytes != layout.sampleBytes) {
    const uint64_t before = layout.data.bytes;
    plan.changes.push_back({SizeField::kData, layout.data, before,
                            plan.sampleBytes + static_cast<uint64_t>(layout.sampleOffset - layout.data.dataOffset)});
  }
  if (samplesEndFile) {
    const uint64_t bare = static_cast<uint64_t>(layout.sampleOffset) + plan.sampleBytes;
    const auto start = static_cast<uint64_t>(layout.data.dataOffset);
    end = static_cast<int64_t>(
        std::min<uint64_t>(start + (bare - start + padding - 1) / padding * padding, static_cast<uint64_t>(fileBytes)));
  }
  if (layout.framesOffset != 0) {
    const uint64_t frames = plan.sampleBytes / layout.frameBytes;
    if (layout.framesStated > frames || plan.sampleBytes != layout.sampleBytes ||
        (layout.framesStated == 0 && frames != 0)) {
      if (layout.framesStated != frames) {
        plan.changes.push_back({SizeField::kFrames, layout.data, layout.framesStated, frames});
      }
    }
  }
  // Where trailing chunks would make a RIFF too long for its field there is nothing to correct.
  const auto wanted = static_cast<uint64_t>(end);
  if (Distance(layout.form.end, wanted) >= padding && (container == Container::kWave64 || wanted <= kMostRiffBytes)) {
    plan.changes.push_back({SizeField::kForm, layout.data, layout.form.end, wanted});
  }
  return plan;
}

void ApplyPlan(plat::File* file, const SoundLayout& layout, const SizePlan& plan, const std::string& path) {
  const Container container = layout.form.container;
  const auto seek = [&](int64_t position) { plat::SeekFile(file, position, plat::kSeekStart, nullptr); };
  for (const SizeChange& change : plan.changes) {
    HRESULT code = S_OK;
    const auto after32 = static_cast<uint32_t>(change.after);
    switch (change.field) {
      case SizeField::kForm:
        if (container == Container::kWave64) {
          code = riff64_SetRIFFSize(file, change.after - 24);
        } else if (IsAiff(container)) {
          seek(4);
          code = iff_WriteDWORD(file, after32 - 8);
        } else {
          code = riff_SetRIFFSize(file, after32 - 8);
        }
        break;
      case SizeField::kData:
      case SizeField::kTrailingChunk: {
        seek(change.chunk.offset + (IsAiff(container) ? 4 : 0));
        if (container == Container::kWave64) {
          GUID label;
          std::memcpy(&label, change.chunk.label.data(), sizeof label);
          code = riff64_WriteChunkHeader(file, &label, change.after);
        } else if (IsAiff(container)) {
          code = iff_WriteDWORD(file, after32);
        } else {
          uint32_t id = 0;
          std::memcpy(&id, change.chunk.label.data(), sizeof id);
          code = riff_WriteChunkHeader(file, id, after32);
        }
        break;
      }
      case SizeField::kFrames:
        seek(layout.framesOffset);
        code = iff_WriteDWORD(file, after32);
        break;
    }
    if (FAILED(code)) throw WriteFailure(path);
  }
  if (!plat::FlushFile(file)) throw WriteFailure(path);
}

std::string NameOf(const SoundLayout& layout, const SizeChange& change) {
  const Container container = layout.form.container;
  switch (change.field) {
    case SizeField::kForm:
      return container == Container::kWave64 ? "file size" : IsAiff(container) ? "FORM size" : "RIFF size";
    case SizeField::kFrames:
      return "COMM frames";
    default:
      return NameOf(container, change.chunk.label) + " size";
  }
}

}  // namespace host
