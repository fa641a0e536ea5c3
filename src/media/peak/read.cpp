// SPDX-License-Identifier: Apache-2.0
// Reads columns for a display from the cheapest source that is fine enough, and samples.
#include <algorithm>

#include "marlo110k/channels.h"
#include "marlo110k/waveformat.h"
#include "media/peak/audio_peak.h"
#include "platform/sys/fault.h"
#include "platform/sys/mapping.h"

namespace marlo::peak {
namespace {

constexpr uint32_t kEntryBlockBytes = 0x20000;
/// The interval that counts after a cancelled build that leaves fine views to the samples.
constexpr int64_t kSamplesOnlyInterval = 0x200000;

/// first + trunc(index * count / columns), which no length overflows.
int64_t ColumnStart(int64_t first, int64_t count, int64_t index, int64_t columns) noexcept {
  return first + static_cast<int64_t>(static_cast<__int128>(index) * count / columns);
}

/// Columns of a view over stored entries. A column takes the entry its end lies in as well, so that a curve has no
/// gaps.
struct ColumnWalk {
  StoredPeaks peaks;
  int64_t entries;  ///< In the file.
  int64_t interval;
  int64_t first;
  int64_t count;
  uint32_t type;
  void* buffer;
  int32_t columns;
  int32_t done;  ///< Columns stored.

  /// @return false behind the last entry.
  bool Range(int64_t column, int64_t* from, int64_t* to) const noexcept {
    *from = ColumnStart(first, count, column, columns) / interval;
    *to = std::min(ColumnStart(first, count, column + 1, columns) / interval, entries - 1);
    return *from < entries;
  }
};

/// All columns from entries that lie in memory.
void WalkMapped(void* argument) {
  auto& walk = *static_cast<ColumnWalk*>(argument);
  int64_t from = 0;
  int64_t to = 0;
  for (; walk.done < walk.columns && walk.Range(walk.done, &from, &to); ++walk.done) {
    MergedPeak merged;
    MergePeaks(walk.peaks, from, to - from + 1, false, &merged);
    StoreColumn(merged, walk.peaks, walk.type, walk.buffer, walk.done);
  }
}

/// The same by seeks, a block of entries at a time.
HRESULT WalkFile(const PeakFile& file, ColumnWalk* walk) noexcept {
  alignas(64) uint8_t block[kEntryBlockBytes];
  StoredPeaks held = walk->peaks;
  held.entries = block;
  const int64_t capacity = kEntryBlockBytes / held.EntryBytes();
  const int64_t end = std::min((walk->first + walk->count) / walk->interval + 1, walk->entries);
  int64_t heldFirst = 0;
  int64_t heldEnd = 0;
  int64_t from = 0;
  int64_t to = 0;
  for (; walk->done < walk->columns && walk->Range(walk->done, &from, &to); ++walk->done) {
    MergedPeak merged;
    for (int64_t entry = from; entry <= to;) {
      if (entry < heldFirst || entry >= heldEnd) {
        heldFirst = entry;
        heldEnd = std::min(entry + capacity, end);
        if (!file.ReadEntries(heldFirst, heldEnd - heldFirst, block)) return ZR_E_FILE_READ;
      }
      const int64_t merging = std::min(to + 1, heldEnd) - entry;
      MergePeaks(held, entry - heldFirst, merging, entry != from, &merged);
      entry += merging;
    }
    StoreColumn(merged, held, walk->type, walk->buffer, walk->done);
  }
  return S_OK;
}

}  // namespace

AudioPeak::Source AudioPeak::ChooseSource(int64_t samplesPerColumn) noexcept {
  if (memory_ != nullptr && samplesPerColumn >= memoryInterval_) return Source::kMemory;
  if (IsMemoryInstance() || !OpenUsableFile()) return Source::kSamples;
  const int64_t interval = samplesOnly_ ? kSamplesOnlyInterval : int64_t{file_.header.interval};
  return samplesPerColumn >= interval ? Source::kFile : Source::kSamples;
}

HRESULT AudioPeak::ReadFrom(Source source, const ColumnRequest& request) noexcept {
  switch (source) {
    case Source::kMemory:
      return ReadFromMemory(request);
    case Source::kFile:
      return ReadFromFile(request);
    default:
      return ReadFromSamples(request);
  }
}

HRESULT AudioPeak::ReadFromMemory(const ColumnRequest& request) noexcept {
  int64_t from = request.first / memoryInterval_;
  int64_t to = (request.first + request.count) / memoryInterval_;
  if (from == memoryEntries_) --from;
  if (from >= memoryEntries_ || to <= from) return E_FAIL;
  int64_t columns = request.columns;
  if (to > memoryEntries_) {
    columns = std::max<int64_t>(columns * (memoryEntries_ - from) / (to - from), 1);
    to = memoryEntries_;
  }
  const int64_t entries = to - from;
  columns = std::min(columns, entries);
  const StoredPeaks peaks = {reinterpret_cast<const uint8_t*>(memory_), 16, Channels()};
  // The columns of ZrAudioPeak_Resample at a phase of 1, each in the output's own width at once: a buffer of 8-bit
  // columns has no room for 16-bit ones.
  int64_t begin = 0;
  for (int64_t column = 0; column < columns; ++column) {
    const int64_t end = ((column + 1) * entries + columns - 1) / columns;
    MergedPeak merged;
    MergePeaks(peaks, from + begin, end - begin, false, &merged);
    StoreColumn(merged, peaks, request.type, request.buffer, column);
    begin = end;
  }
  *request.columnsRead = static_cast<int32_t>(columns);
  return S_OK;
}

HRESULT AudioPeak::ReadFromFile(const ColumnRequest& request) noexcept {
  const tZRAUDIOPEAK_HEADER& header = file_.header;
  if (header.channels > kZrAudioPeakMaxChannels) return E_FAIL;
  ColumnWalk walk = {{nullptr, header.bits, header.channels},
                     0,
                     header.interval,
                     request.first,
                     request.count,
                     request.type,
                     request.buffer,
                     request.columns,
                     0};
  HRESULT result = S_OK;
  plat::MappedFile view = {};
  if (mapView_ && plat::MapFile(file_.path, &view)) {
    walk.entries = file_.Entries(view.bytes);
    walk.peaks.entries = view.data + header.headerSize;
    // Somebody may cut the file while it is being read.
    if (walk.entries > 0 && !plat::Guarded(WalkMapped, &walk, nullptr)) result = ZR_E_FILE_READ;
    plat::UnmapFile(&view);
  } else {
    uint64_t bytes = 0;
    if (!plat::GetFileBytes(file_.handle, &bytes)) return ZR_E_FILE_READ;
    walk.entries = file_.Entries(bytes);
    result = WalkFile(file_, &walk);
  }
  *request.columnsRead = walk.done;
  return result;
}

HRESULT AudioPeak::ReadFromSamples(const ColumnRequest& request) noexcept {
  SampleFeed feed;
  HRESULT result = feed.Begin(reader_, request.type);
  if (FAILED(result)) return result;
  if (FAILED(reader_->Open())) return ZR_E_FILE_OPEN;
  result = ReadColumnsOfSamples(feed, request);
  reader_->Close();
  return result;
}

HRESULT AudioPeak::ReadColumnsOfSamples(SampleFeed& feed, const ColumnRequest& request) noexcept {
  const int64_t available = std::clamp<int64_t>(reader_->GetLength() - request.first, 0, request.count);
  const bool everyFrame = request.count <= request.columns;
  const auto step128 = (static_cast<__int128>(request.count) * kFramePhase + request.columns / 2) / request.columns;
  if (!everyFrame && step128 > kMostStep) return E_FAIL;
  const int64_t step = everyFrame ? kFramePhase : static_cast<int64_t>(step128);

  alignas(64) uint8_t block[kSampleBlockBytes];
  const auto kernel = feed.Route().kernel;
  tZRAUDIOPEAK_SAMPLESMINMAX running;
  ZrAudioPeak_InitMinMaxArray(feed.Route().kernelType, feed.Channels(), &running);
  const void* source = block;
  int32_t& made = *request.columnsRead;
  int64_t phase = 0;
  for (int64_t used = 0; used < available;) {
    int64_t frames = 0;
    const int64_t left = available - used;
    const HRESULT result = feed.Read(request.first + used, left, block, std::min(feed.BlockFrames(), left), &frames);
    if (FAILED(result)) return result;
    used += frames;
    source = block;
    while (frames > 0) {
      const bool last = !everyFrame && made + 1 >= request.columns;
      if (kernel(request.buffer, made, last ? kNeverComplete : step, &source, &frames, &phase, feed.Channels(),
                 &running) == 0) {
        continue;
      }
      ++made;
      // Columns of single frames don't share one with their neighbour.
      if (everyFrame) ZrAudioPeak_InitMinMaxArray(feed.Route().kernelType, feed.Channels(), &running);
    }
  }
  // As in a build: the last column is still begun here, and rounding may leave more to make.
  const bool whole = !everyFrame && available == request.count;
  const int32_t all = whole ? request.columns : made + (phase >= kFramePhase ? 1 : 0);
  for (; made < all; ++made) feed.Complete(request.buffer, made, source, &phase, &running);
  return S_OK;
}

HRESULT AudioPeak::ReadPeaks(int64_t first, int64_t count, uint32_t type, void* buffer, int32_t columns,
                             int32_t* columnsRead) {
  const Session session(*this);
  int32_t unused = 0;
  if (columnsRead == nullptr) columnsRead = &unused;
  *columnsRead = 0;
  if (!IsPeakType(type)) return E_UNEXPECTED;
  if (columns == 0) return S_OK;
  if (columns < 0 || first < 0 || count < 0 || count > INT64_MAX - first || buffer == nullptr) return E_INVALIDARG;
  if (count == 0) return S_OK;
  return ReadFrom(ChooseSource(count / columns), {first, count, type, buffer, columns, columnsRead});
}

HRESULT AudioPeak::ReadPeaks16(int64_t first, int64_t count, void* buffer, int32_t columns, int32_t* columnsRead) {
  return ReadPeaks(first, count, ZRSAMPLETYPE_PCM16, buffer, columns, columnsRead);
}

HRESULT AudioPeak::ReadPeaksAligned(int64_t first, int32_t samplesPerColumn, uint32_t type, void* buffer,
                                    int32_t columns, int32_t* columnsRead) {
  const Session session(*this);
  int32_t unused = 0;
  if (columnsRead == nullptr) columnsRead = &unused;
  *columnsRead = 0;
  if (!IsPeakType(type)) return E_UNEXPECTED;
  if (columns < 0 || samplesPerColumn < 1) return E_INVALIDARG;
  if (columns == 0) return S_OK;
  const int64_t count = int64_t{columns} * samplesPerColumn;
  if (first < 0 || count > INT64_MAX - first || buffer == nullptr) return E_INVALIDARG;
  const Source source = ChooseSource(samplesPerColumn);
  if (source != Source::kMemory) first -= first % samplesPerColumn;
  return ReadFrom(source, {first, count, type, buffer, columns, columnsRead});
}

// ---- Samples -----------------------------------------------------------------------------------------

HRESULT AudioPeak::ReadConverted(int64_t first, uint32_t sampleType, void* buffer, uint32_t frames,
                                 uint32_t* framesRead) noexcept {
  const WAVEFORMATEX* format = reader_->GetFormat();
  const ZRAUDIOCOPYFUNCTION copy = ZrAudio_GetCopyFunction2(sampleType, ZrAudio_GetSampleType(format));
  const uint32_t destBytes = SampleBytes(sampleType) * format->nChannels;
  const uint32_t frameBytes = format->nBlockAlign;
  if (copy == nullptr || frameBytes == 0 || frameBytes > kSampleBlockBytes) return E_INVALIDARG;
  alignas(64) uint8_t block[kSampleBlockBytes];
  auto* to = static_cast<uint8_t*>(buffer);
  while (*framesRead < frames) {
    const uint32_t wanted = std::min(frames - *framesRead, kSampleBlockBytes / frameBytes);
    uint32_t got = 0;
    const HRESULT result = reader_->Read(first + *framesRead, frames - *framesRead, block, wanted, &got);
    if (FAILED(result)) return result;
    if (got == 0) break;
    got = std::min(got, wanted);
    copy(to + size_t{*framesRead} * destBytes, block, int64_t{got} * format->nChannels, 1.0f);
    *framesRead += got;
  }
  return S_OK;
}

HRESULT AudioPeak::ReadSamples(int64_t first, uint32_t sampleType, void* buffer, uint32_t frames,
                               uint32_t* framesRead) {
  const Session session(*this);
  uint32_t unused = 0;
  if (framesRead == nullptr) framesRead = &unused;
  *framesRead = 0;
  if (first < 0 || (buffer == nullptr && frames > 0)) return E_INVALIDARG;
  if (FAILED(reader_->Open())) return ZR_E_FILE_OPEN;
  const WAVEFORMATEX* format = reader_->GetFormat();
  HRESULT result = E_NOTIMPL;
  if (sampleType == ZrAudio_GetSampleType(format)) {
    result = reader_->Read(first, frames, buffer, frames, framesRead);
  } else {
    WAVEFORMATEX wanted = {};
    ZrAudio_InitWfx(&wanted, format->nSamplesPerSec, static_cast<ZRSAMPLETYPE>(sampleType), format->nChannels);
    result = reader_->ReadAs(first, frames, buffer, frames, framesRead, &wanted);
    if (result == E_NOTIMPL) result = ReadConverted(first, sampleType, buffer, frames, framesRead);
  }
  reader_->Close();
  return result;
}

}  // namespace marlo::peak
