// SPDX-License-Identifier: Apache-2.0
// Brings a peak file up to date for a stretch of samples, without a pass over the whole media.
#include <algorithm>
#include <cstring>

#include "marlo110k/waveformat.h"
#include "media/peak/audio_peak.h"

namespace marlo::peak {
namespace {

constexpr uint32_t kEntryBlockBytes = 0x20000;

}  // namespace

bool AudioPeak::ReadPair(int64_t first, int64_t count, uint8_t* pairs) noexcept {
  int32_t columns = 0;
  const HRESULT result = ReadFromSamples({first, count, file_.PeakType(), pairs, 1, &columns});
  return SUCCEEDED(result) && columns == 1;
}

HRESULT AudioPeak::UpdateEntries(const void* buffer, int64_t start, int64_t count, uint32_t sampleType) noexcept {
  const uint32_t channels = file_.header.channels;
  const uint32_t peakType = file_.PeakType();
  const int64_t interval = file_.header.interval;
  const size_t entryBytes = file_.EntryBytes();
  if (channels > kZrAudioPeakMaxChannels) return E_FAIL;
  SampleRoute route;
  if (!route.Find(peakType, sampleType)) return ZR_E_UNSUPPORTED_MEDIA;

  // What the first entry holds already. All pairs pass through the peak's own type: rounding keeps their order, so that
  // is the same as merging the samples.
  tZRAUDIOPEAK_SAMPLESMINMAX running;
  ZrAudioPeak_InitMinMaxArray(route.kernelType, channels, &running);
  const int64_t first = start - start % interval;
  if (first < start) {
    MergedPeak front;
    bool known = begun_.position == start && begun_.peakType == peakType && begun_.channels == channels;
    if (known) {
      std::memcpy(front.pairs, begun_.pairs, entryBytes);
    } else {
      known = ReadPair(first, start - first, front.pairs);
    }
    if (known) ZrAudioPeak_PrimeMinMaxArray(route.kernelType, channels, &running, peakType, front.pairs);
  }
  begun_.position = -1;

  alignas(64) uint8_t entries[kEntryBlockBytes];
  alignas(64) uint8_t converted[kSampleBlockBytes];
  const int64_t capacity = static_cast<int64_t>(kEntryBlockBytes / entryBytes);
  const int64_t convertible = kSampleBlockBytes / (channels * std::max(route.sampleBytes, route.kernelBytes));
  const auto* from = static_cast<const uint8_t*>(buffer);
  const void* source = from;
  int64_t written = first / interval;
  int64_t pending = 0;
  int64_t phase = (start - first) * kFramePhase;
  const auto write = [&]() noexcept {
    const HRESULT result = file_.WriteEntries(written, entries, static_cast<size_t>(pending) * entryBytes);
    written += pending;
    pending = 0;
    return result;
  };
  for (int64_t left = count; left > 0;) {
    int64_t frames = route.convert == nullptr ? left : std::min(left, convertible);
    source = from;
    if (route.convert != nullptr) {
      route.convert(converted, from, frames * channels, 1.0f);
      source = converted;
    }
    left -= frames;
    from += static_cast<size_t>(frames) * channels * route.sampleBytes;
    while (frames > 0) {
      if (route.kernel(entries, pending, interval * kFramePhase, &source, &frames, &phase, channels, &running) == 0) {
        continue;
      }
      if (++pending < capacity) continue;
      const HRESULT result = write();
      if (FAILED(result)) return result;
    }
  }

  const int64_t end = start + count;
  if (phase > 0) {
    uint8_t* last = entries + static_cast<size_t>(pending) * entryBytes;
    route.Complete(entries, pending, source, &phase, channels, &running);
    ++pending;
    begun_.peakType = peakType;
    begun_.channels = channels;
    begun_.position = end;
    std::memcpy(begun_.pairs, last, entryBytes);
    const int64_t behind = std::min(interval - end % interval, reader_->GetLength() - end);
    MergedPeak tail;
    if (behind > 0 && ReadPair(end, behind, tail.pairs)) {
      MergedPeak merged;
      std::memcpy(merged.pairs, last, entryBytes);
      MergePeaks({tail.pairs, file_.header.bits, channels}, 0, 1, true, &merged);
      std::memcpy(last, merged.pairs, entryBytes);
    }
  }
  return pending > 0 ? write() : S_OK;
}

HRESULT AudioPeak::UpdatePeaks(const void* buffer, int64_t start, int64_t count, uint32_t sampleType) {
  const Session session(*this);
  if (!OpenUsableFile()) return E_UNEXPECTED;
  if (count == 0) return S_OK;
  // As far as the phase of a whole entry goes.
  constexpr int64_t kMostSamples = INT64_MAX - kZrAudioPeakMaxInterval;
  if (buffer == nullptr || start < 0 || count < 0 || count > kMostSamples - start) return E_INVALIDARG;
  if (sampleType == 0) sampleType = ZrAudio_GetSampleType(reader_->GetFormat());
  DropMemoryCopy();
  const HRESULT result = UpdateEntries(buffer, start, count, sampleType);
  if (FAILED(result)) return result;
  // By value: the packed field has no alignment to refer to.
  file_.header.samples = std::max(int64_t{file_.header.samples}, start + count);
  file_.dirty = true;
  return UpdateHeader();
}

}  // namespace marlo::peak
