// SPDX-License-Identifier: Apache-2.0
// Builds the peak file in one pass over the media, and the copy in memory.
#include <algorithm>
#include <cstring>

#include "media/peak/audio_peak.h"
#include "platform/base/memory.h"
#include "platform/sys/file_backend.h"

namespace marlo::peak {
namespace {

/// Bytes of peaks that are written at once; entries of every provided width divide it or fit into the rest.
constexpr uint32_t kPeakBlockBytes = 0x20000;
constexpr int64_t kRelativeRange = 10000;
constexpr int64_t kMostMemoryEntries = 0x20000;
/// A length at which the phase of all frames still fits its word.
constexpr int64_t kMostSamples = INT64_MAX >> (kPhaseBits + 1);

/// Follows a build for the caller.
class BuildProgress {
 public:
  BuildProgress(IZrAudioPeakProgress* target, bool inSamples, int64_t length) noexcept
      : target_(target), inSamples_(inSamples), length_(length) {}

  /// @return false to cancel.
  bool Begin(const char16_t* name) const {
    return target_ == nullptr || target_->Begin(name, inSamples_ ? length_ : kRelativeRange) != 0;
  }
  bool Step(int64_t position) const {
    if (target_ == nullptr) return true;
    // In two parts, so that no length overflows.
    const int64_t whole = position / length_ * kRelativeRange;
    const int64_t relative = whole + ((position % length_) * kRelativeRange + length_ / 2) / length_;
    return target_->Step(inSamples_ ? position : relative) != 0;
  }
  void End(HRESULT result) const {
    if (target_ != nullptr) target_->End(result);
  }

 private:
  IZrAudioPeakProgress* target_;
  bool inSamples_;
  int64_t length_;
};

/// Peaks on their way to the file.
class PeakWriter {
 public:
  PeakWriter(PeakFile* file, int64_t entries) noexcept
      : file_(file), entries_(entries), capacity_(kPeakBlockBytes / file->EntryBytes()) {}

  void* Block() noexcept { return block_; }
  int64_t Pending() const noexcept { return pending_; }
  /// The peak that is being made is the last one, which takes all that is left.
  bool AtLast() const noexcept { return Made() + 1 >= entries_; }
  int64_t Made() const noexcept { return written_ + pending_; }
  /// The peak behind the pending ones is made; a full block is written.
  HRESULT Add() noexcept { return ++pending_ == capacity_ ? Write() : S_OK; }
  HRESULT Write() noexcept {
    if (pending_ == 0) return S_OK;
    const HRESULT result = file_->WriteEntries(written_, block_, static_cast<size_t>(pending_) * file_->EntryBytes());
    written_ += pending_;
    pending_ = 0;
    return result;
  }

 private:
  PeakFile* file_;
  int64_t entries_;
  int64_t capacity_;
  int64_t written_ = 0;
  int64_t pending_ = 0;
  alignas(64) uint8_t block_[kPeakBlockBytes];
};

}  // namespace

void AudioPeak::ResetHeader(uint32_t flags) noexcept {
  tZRAUDIOPEAK_HEADER& header = file_.header;
  header = {};
  std::memcpy(header.magic, "ZRPK", sizeof header.magic);
  header.version = 1;
  header.headerSize = sizeof header;
  header.bits = (flags & ZRAUDIOPEAK_16BIT) != 0 ? 16 : 8;
  header.channels = Channels();
  header.interval = static_cast<uint32_t>(wishedInterval_);
  header.samples = reader_->GetLength();
  begun_.position = -1;
}

HRESULT AudioPeak::CreateFile() noexcept {
  // What is built now is the object's own, whether a file stood there or not.
  if ((flags_ & ZRAUDIOPEAK_EXISTING) != 0) temporary_ = true;
  if (FAILED(FindName()) || !file_.Create()) {
    if ((flags_ & ZRAUDIOPEAK_TEMPORARY) != 0) return ZR_E_FILE_OPEN;
    // Beside media on a volume that can't be written, peaks still have a place.
    temporary_ = true;
    file_.path[0] = 0;
    if (FAILED(FindName()) || !file_.Create()) {
      file_.path[0] = 0;
      return ZR_E_FILE_CREATE;
    }
  }
  // The times stay 0 until the end, so that what a crash leaves behind is not valid. Cutting first clears whatever
  // stood in a former file.
  file_.dirty = true;
  const int64_t entries = EntriesFor(file_.header.samples, file_.header.interval);
  HRESULT result = file_.WriteHeader();
  if (SUCCEEDED(result)) result = file_.SetEntries(0);
  if (SUCCEEDED(result)) result = file_.SetEntries(entries);
  if (SUCCEEDED(result) && entries > 0) {
    const uint8_t zeros[2 * kZrAudioPeakMaxChannels * sizeof(int16_t)] = {};
    result = file_.WriteEntries(entries - 1, zeros, file_.EntryBytes());
  }
  return result;
}

void AudioPeak::RemoveFile() noexcept {
  file_.Close();
  file_.dirty = false;
  if (file_.path[0] != 0) plat::RemoveFile(file_.path);
}

HRESULT AudioPeak::BuildFrom(SampleFeed& feed, uint32_t flags, IZrAudioPeakProgress* progress) noexcept {
  const int64_t length = reader_->GetLength();
  const int64_t entries = EntriesFor(length, file_.header.interval);
  if (length > kMostSamples) return E_FAIL;
  // True frames a peak in fixed point, so that the peaks cover the length exactly.
  const int64_t step = entries == 0 ? kFramePhase : (length * kFramePhase + entries / 2) / entries;
  if (step > kMostStep) return E_FAIL;
  char16_t name[kPathCharacters] = {};
  reader_->GetName(name, kPathCharacters, 0);
  const BuildProgress steps(progress, (flags & ZRAUDIOPEAK_SAMPLES) != 0, length);
  file_.dirty = true;
  file_.header.samples = 0;

  alignas(64) uint8_t samples[kSampleBlockBytes];
  PeakWriter writer(&file_, entries);
  tZRAUDIOPEAK_SAMPLESMINMAX running;
  ZrAudioPeak_InitMinMaxArray(feed.Route().kernelType, feed.Channels(), &running);
  const auto kernel = feed.Route().kernel;
  int64_t phase = 0;
  int64_t position = 0;
  const void* source = samples;
  bool goesOn = steps.Begin(name);
  HRESULT result = S_OK;
  while (goesOn && position < length && SUCCEEDED(result)) {
    int64_t frames = 0;
    result = feed.Read(position, length - position, samples, std::min(feed.BlockFrames(), length - position), &frames);
    position += frames;
    source = samples;
    while (frames > 0 && SUCCEEDED(result)) {
      const int64_t thisStep = writer.AtLast() ? kNeverComplete : step;
      if (kernel(writer.Block(), writer.Pending(), thisStep, &source, &frames, &phase, feed.Channels(), &running) !=
          0) {
        result = writer.Add();
      }
    }
    if (SUCCEEDED(result)) goesOn = steps.Step(position);
  }
  // The last peak takes all that is left, so it is still begun here; and in a long file a step that was rounded up
  // may leave several to make.
  const int64_t made = goesOn ? entries : writer.Made() + (phase >= kFramePhase ? 1 : 0);
  while (SUCCEEDED(result) && writer.Made() < made) {
    feed.Complete(writer.Block(), writer.Pending(), source, &phase, &running);
    result = writer.Add();
  }
  if (SUCCEEDED(result)) result = writer.Write();
  if (SUCCEEDED(result) && !goesOn) {
    result = ZR_E_CANCELLED;
    samplesOnly_ = (flags & ZRAUDIOPEAK_SAMPLESONLY) != 0;
  }
  if (SUCCEEDED(result)) {
    file_.header.samples = length;
    result = UpdateHeader();
  } else if (result == ZR_E_CANCELLED && (flags & ZRAUDIOPEAK_KEEPPART) != 0) {
    file_.header.samples = position;
    result = file_.SetEntries(EntriesFor(position, file_.header.interval));
    if (SUCCEEDED(result)) result = UpdateHeader();
  }
  steps.End(result);
  return result;
}

HRESULT AudioPeak::BuildFile(uint32_t flags, IZrAudioPeakProgress* progress) noexcept {
  if ((flags & ZRAUDIOPEAK_REBUILD) == 0 && OpenFile() && IsValid()) {
    constexpr uint32_t kReplaceNarrow = ZRAUDIOPEAK_16BIT | ZRAUDIOPEAK_REPLACE8BIT;
    if ((flags & kReplaceNarrow) != kReplaceNarrow || file_.header.bits == 16) return ZR_S_PEAKS_VALID;
  }
  file_.Close();
  // What the copy was made of is about to change.
  DropMemoryCopy();
  samplesOnly_ = false;
  ResetHeader(flags);
  SampleFeed feed;
  HRESULT result = feed.Begin(reader_, file_.PeakType());
  if (FAILED(result)) return result;
  result = CreateFile();
  // A file that couldn't be opened is somebody else's.
  if (FAILED(result) && !file_.IsOpen()) return result;
  if (SUCCEEDED(result)) {
    result = FAILED(reader_->Open()) ? ZR_E_FILE_OPEN : BuildFrom(feed, flags, progress);
    reader_->Close();
  }
  if (FAILED(result)) RemoveFile();
  return result;
}

HRESULT AudioPeak::BuildPeaks(uint32_t flags, IZrAudioPeakProgress* progress) {
  const Session session(*this);
  const HRESULT built = IsMemoryInstance() ? S_OK : BuildFile(flags, progress);
  if (FAILED(built)) return built;
  const HRESULT copied = MakeMemoryCopy((flags & ZRAUDIOPEAK_REBUILD) != 0);
  return FAILED(copied) ? copied : built;
}

// ---- The copy in memory ------------------------------------------------------------------------------

void AudioPeak::DropMemoryCopy() noexcept {
  plat::FreeBlock(memory_);
  memory_ = nullptr;
  memoryEntries_ = 0;
}

HRESULT AudioPeak::MakeMemoryCopy(bool rebuild) noexcept {
  if (wishedMemoryInterval_ < 0) return S_OK;
  const int64_t fileInterval = IsMemoryInstance() ? wishedInterval_ : int64_t{file_.header.interval};
  const int64_t otherwise = IsMemoryInstance() ? 256 : 2048;
  const int64_t wished = IsInterval(wishedMemoryInterval_) ? wishedMemoryInterval_ : otherwise;
  const int64_t interval = std::max(wished, fileInterval);
  const int64_t entries = reader_->GetLength() / interval;
  if (memory_ != nullptr && !rebuild && memoryInterval_ == interval && memoryEntries_ == entries) return S_OK;
  DropMemoryCopy();
  if (entries > kMostMemoryEntries) return E_INVALIDARG;
  if (entries == 0) return S_OK;

  auto* block =
      static_cast<int16_t*>(plat::AllocateZeroed(static_cast<size_t>(entries) * Channels() * 2 * sizeof(int16_t)));
  if (block == nullptr) return E_OUTOFMEMORY;
  int32_t columns = 0;
  const HRESULT result =
      ReadPeaks(0, entries * interval, ZRSAMPLETYPE_PCM16, block, static_cast<int32_t>(entries), &columns);
  if (FAILED(result) || columns == 0) {
    plat::FreeBlock(block);
    return result;
  }
  memory_ = block;
  memoryEntries_ = columns;
  memoryInterval_ = interval;
  return S_OK;
}

}  // namespace marlo::peak
