// SPDX-License-Identifier: Apache-2.0
// Cuts audio into slices, and gives their levels when their position is heard.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "media/meter_ring.h"

namespace marlo {
namespace {

constexpr int64_t kLongSliceFrames = 512;
/// Samples at full scale in a row that count as clipping in integer formats.
constexpr uint32_t kClipSamples = 3;
/// How often a read begins again when the other side empties the ring meanwhile.
constexpr int kMostTries = 4;

int64_t FramesOfTime(int64_t time, uint32_t rate) noexcept {
  constexpr double kHalfUp = 0.5;  // Before the cut: half a frame and more go up.
  return static_cast<int64_t>(static_cast<double>(time) * 1e-7 * rate + kHalfUp);
}

/// Type and window of the power ring, as one word.
struct PowerMode {
  uint32_t type;
  uint32_t window;

  static PowerMode Of(uint64_t word) noexcept {
    return {static_cast<uint32_t>(word >> 32), static_cast<uint32_t>(word)};
  }
  uint64_t Word() const noexcept { return uint64_t{type} << 32 | window; }
};

class MemoryListPeakBuffer final : public CZRPeakBuffer {
 public:
  bool Allocate(uint32_t records) noexcept { return peaks_.Allocate(records) && power_.Allocate(records); }

  HRESULT ReadPeaks(int64_t position, float* peaks, uint32_t* clipped) override;
  HRESULT ReadPeaksAtTime(int64_t time, float* peaks, uint32_t* clipped) override;
  HRESULT GetFormat(_zrwaveformat* format) override;
  void* DeleteSelf(uint32_t flags) override;
  HRESULT ReadPower(int64_t position, float* values) override;
  HRESULT ReadPowerAtTime(int64_t time, float* values) override;
  HRESULT ResetPower() override;
  HRESULT SetPowerMode(uint32_t type, uint32_t window) override;
  HRESULT TrimPower(int64_t position) override;
  HRESULT WritePower(int64_t position, const void* data, int64_t frames, uint32_t reserved, int32_t reverse,
                     int32_t resetMark, int32_t silent) override;
  HRESULT Reset() override;
  HRESULT SetFormat(const _zrwaveformat* format) override;
  HRESULT Trim(int64_t position) override;
  HRESULT WritePeaks(int64_t position, const void* data, int64_t frames, double sliceScale, int32_t reverse,
                     int32_t resetMark, int32_t silent, int32_t immediate) override;

 private:
  /// A channel's levels as both sides may store them.
  struct Level {
    std::atomic<float> peak{0};
    std::atomic<int32_t> position{0};
    std::atomic<uint32_t> clipped{0};
    std::atomic<float> power{0};
  };

  ~MemoryListPeakBuffer() = default;

  bool IsReady() const noexcept { return ready_; }
  uint32_t Channels() const noexcept { return format_.channels; }
  int64_t WindowFrames(uint32_t window) const noexcept;
  int64_t SliceFrames(uint32_t window) const noexcept;
  /// Calls measure(slice, data) and pushes, slice by slice, until the ring is full.
  template <class Measure>
  void Write(MeterRing* ring, int64_t position, const void* data, int64_t frames, int64_t sliceFrames, bool reverse,
             bool resetMark, const Measure& measure) noexcept;
  bool SkipToReset(bool reverse, int64_t position) noexcept;
  void StoreLast(const tZRAUDIOPEAK* levels) noexcept;

  bool ready_ = false;
  _zrwaveformat format_{};
  MeterRing peaks_;
  MeterRing power_;
  std::atomic<int32_t> pendingResets_{0};
  std::atomic<bool> reverse_{false};
  std::atomic<bool> powerReverse_{false};
  std::atomic<uint64_t> wishedMode_{PowerMode{ZRMETERPOWER_RMS, ZRMETERWINDOW_300MS}.Word()};
  std::atomic<uint64_t> mode_{PowerMode{ZRMETERPOWER_RMS, ZRMETERWINDOW_300MS}.Word()};
  Level last_[kZrMeterChannels];
};

/// Audio that ends there is heard.
bool HasPassed(int64_t position, int64_t end, bool reverse) noexcept {
  return reverse ? position <= end : position >= end;
}

int64_t MemoryListPeakBuffer::WindowFrames(uint32_t window) const noexcept {
  const int64_t time = window == ZRMETERWINDOW_5MS ? 50'000 : window == ZRMETERWINDOW_10MS ? 100'000 : 3'000'000;
  return FramesOfTime(time, format_.samplesPerSec);
}

int64_t MemoryListPeakBuffer::SliceFrames(uint32_t window) const noexcept {
  const bool isShort = window == ZRMETERWINDOW_5MS || window == ZRMETERWINDOW_10MS;
  return isShort ? std::max<int64_t>(WindowFrames(window) / 2, 1) : kLongSliceFrames;
}

// ---- Writer ------------------------------------------------------------------------------------------

template <class Measure>
void MemoryListPeakBuffer::Write(MeterRing* ring, int64_t position, const void* data, int64_t frames,
                                 int64_t sliceFrames, bool reverse, bool resetMark, const Measure& measure) noexcept {
  for (int64_t done = 0; done < frames && !ring->IsFull();) {
    MeterSlice slice = {};
    slice.frames = std::min(sliceFrames, frames - done);
    const int64_t offset = reverse ? frames - done - slice.frames : done;
    slice.end = position + offset + slice.frames;
    // The slice that is heard first after a jump; backwards that is the last one to be cut.
    slice.resetMark = resetMark && (reverse ? done + slice.frames == frames : done == 0);
    slice.reverse = reverse;
    measure(&slice, data == nullptr ? nullptr : static_cast<const uint8_t*>(data) + offset * format_.blockAlign);
    ring->Push(slice);
    done += slice.frames;
  }
}

HRESULT MemoryListPeakBuffer::WritePeaks(int64_t position, const void* data, int64_t frames, double sliceScale,
                                         int32_t reverse, int32_t resetMark, int32_t silent, int32_t immediate) {
  if (!IsReady()) return S_FALSE;
  if (data == nullptr) silent = 1;
  if (resetMark != 0) pendingResets_.fetch_add(1, std::memory_order_relaxed);
  reverse_.store(reverse != 0, std::memory_order_relaxed);
  const auto measure = [&](MeterSlice* slice, const void* samples) {
    if (silent == 0) ZrAudio_FindPeaks(&format_, kClipSamples, samples, slice->frames, slice->peaks);
  };
  if (immediate != 0) {
    MeterSlice slice = {};
    slice.frames = frames;
    measure(&slice, data);
    peaks_.Clear();
    StoreLast(slice.peaks);
    return S_OK;
  }
  int64_t sliceFrames = SliceFrames(PowerMode::Of(mode_.load(std::memory_order_relaxed)).window);
  if (sliceScale != 0.0) {
    sliceFrames = static_cast<int64_t>(std::clamp(static_cast<double>(sliceFrames) * sliceScale, 1.0, 1e9));
  }
  Write(&peaks_, position, data, frames, sliceFrames, reverse != 0, resetMark != 0, measure);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::WritePower(int64_t position, const void* data, int64_t frames, uint32_t /*reserved*/,
                                         int32_t reverse, int32_t resetMark, int32_t silent) {
  if (!IsReady()) return S_FALSE;
  const uint64_t wished = wishedMode_.load(std::memory_order_relaxed);
  if (wished != mode_.load(std::memory_order_relaxed)) {
    ResetPower();
    mode_.store(wished, std::memory_order_release);
  }
  const PowerMode mode = PowerMode::Of(wished);
  powerReverse_.store(reverse != 0, std::memory_order_relaxed);
  const int32_t weight = mode.type == ZRMETERPOWER_RMS ? 0 : 1;
  Write(&power_, position, data, frames, SliceFrames(mode.window), reverse != 0, resetMark != 0,
        [&](MeterSlice* slice, const void* samples) {
          if (silent == 0 && samples != nullptr) {
            ZrAudio_CalcPreRMS(&format_, samples, slice->frames, slice->sums, weight);
          }
        });
  return S_OK;
}

void MemoryListPeakBuffer::StoreLast(const tZRAUDIOPEAK* levels) noexcept {
  for (uint32_t channel = 0; channel < kZrMeterChannels; ++channel) {
    last_[channel].peak.store(levels[channel].peak, std::memory_order_relaxed);
    last_[channel].position.store(levels[channel].position, std::memory_order_relaxed);
    last_[channel].clipped.store(levels[channel].clipped, std::memory_order_relaxed);
  }
}

HRESULT MemoryListPeakBuffer::Reset() {
  constexpr tZRAUDIOPEAK kNothing[kZrMeterChannels] = {};
  pendingResets_.store(0, std::memory_order_relaxed);
  peaks_.Clear();
  StoreLast(kNothing);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::ResetPower() {
  power_.Clear();
  for (Level& level : last_) level.power.store(0, std::memory_order_relaxed);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::Trim(int64_t position) {
  peaks_.Trim(position);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::TrimPower(int64_t position) {
  power_.Trim(position);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::SetFormat(const _zrwaveformat* format) {
  if (format == nullptr || format->channels > kZrMeterChannels) return E_INVALIDARG;
  format_ = *format;
  ready_ = true;
  return S_OK;
}

HRESULT MemoryListPeakBuffer::SetPowerMode(uint32_t type, uint32_t window) {
  wishedMode_.store(PowerMode{type, window}.Word(), std::memory_order_relaxed);
  return S_OK;
}

// ---- Reader ------------------------------------------------------------------------------------------

HRESULT MemoryListPeakBuffer::GetFormat(_zrwaveformat* format) {
  if (format == nullptr) return E_POINTER;
  if (!IsReady()) return E_UNEXPECTED;
  *format = format_;
  return S_OK;
}

/// Drops what was written before a jump, when the position says that the jump has been made.
bool MemoryListPeakBuffer::SkipToReset(bool reverse, int64_t position) noexcept {
  if (pendingResets_.load(std::memory_order_relaxed) <= 0) return false;
  const uint64_t state = peaks_.State();
  const uint32_t count = MeterRing::CountOf(state);
  if (count == 0 || HasPassed(position, peaks_.Peek(state, 0).end, reverse)) return false;
  uint32_t before = 0;
  while (before < count && !peaks_.Peek(state, before).resetMark) ++before;
  if (!peaks_.Take(state, before)) return false;
  pendingResets_.fetch_sub(1, std::memory_order_relaxed);
  return before > 0;
}

HRESULT MemoryListPeakBuffer::ReadPeaks(int64_t position, float* peaks, uint32_t* clipped) {
  const uint32_t channels = IsReady() ? Channels() : 0;
  std::fill_n(peaks, channels, 0.0f);
  std::fill_n(clipped, channels, 0u);
  if (!IsReady()) return S_FALSE;
  const bool reverse = reverse_.load(std::memory_order_relaxed);
  tZRAUDIOPEAK levels[kZrMeterChannels] = {};
  const uint64_t first = peaks_.State();
  const bool fresh = MeterRing::CountOf(first) > 0 && HasPassed(position, peaks_.Peek(first, 0).end, reverse);
  const bool jumped = SkipToReset(reverse, position);
  if (!fresh && !jumped) {
    for (uint32_t channel = 0; channel < channels; ++channel) {
      levels[channel] = {last_[channel].peak.load(std::memory_order_relaxed),
                         last_[channel].position.load(std::memory_order_relaxed),
                         last_[channel].clipped.load(std::memory_order_relaxed)};
    }
  }
  for (;;) {
    const uint64_t state = peaks_.State();
    if (MeterRing::CountOf(state) == 0) break;
    const MeterSlice slice = peaks_.Peek(state, 0);
    const bool ownDirection = slice.reverse == reverse;
    if (ownDirection && !HasPassed(position, slice.end, reverse)) {
      if (peaks_.IsCurrent(state)) break;
      continue;
    }
    if (!peaks_.Take(state, 1)) continue;
    if (slice.resetMark) {
      // A jump forwards: what was heard before it doesn't count any more.
      int32_t pending = pendingResets_.load(std::memory_order_relaxed);
      while (pending > 0 && !pendingResets_.compare_exchange_weak(pending, pending - 1, std::memory_order_relaxed)) {
      }
      std::fill_n(levels, kZrMeterChannels, tZRAUDIOPEAK{});
    }
    if (!ownDirection) continue;
    for (uint32_t channel = 0; channel < channels; ++channel) {
      levels[channel].peak = std::max(levels[channel].peak, slice.peaks[channel].peak);
      levels[channel].position = slice.peaks[channel].position;
      levels[channel].clipped |= slice.peaks[channel].clipped;
    }
  }
  for (uint32_t channel = 0; channel < channels; ++channel) {
    peaks[channel] = levels[channel].peak;
    clipped[channel] = levels[channel].clipped;
  }
  StoreLast(levels);
  return S_OK;
}

HRESULT MemoryListPeakBuffer::ReadPower(int64_t position, float* values) {
  const uint64_t word = mode_.load(std::memory_order_acquire);
  if (!IsReady() || word != wishedMode_.load(std::memory_order_relaxed)) return S_FALSE;
  const PowerMode mode = PowerMode::Of(word);
  const int64_t window = WindowFrames(mode.window);
  const int64_t least = window - window % SliceFrames(mode.window);
  const bool reverse = powerReverse_.load(std::memory_order_relaxed);
  const uint32_t channels = Channels();
  double sums[kZrMeterChannels] = {};
  int64_t total = 0;
  for (int tries = 0; tries < kMostTries; ++tries) {
    std::fill_n(sums, kZrMeterChannels, 0.0);
    total = 0;
    const uint64_t state = power_.State();
    const uint32_t count = MeterRing::CountOf(state);
    uint32_t old = 0;
    if (position < 0) {
      for (uint32_t index = 0; index < count; ++index) total += power_.Peek(state, index).frames;
      while (old < count && total - power_.Peek(state, old).frames > least) total -= power_.Peek(state, old++).frames;
    } else {
      const int64_t low = std::max<int64_t>(position - window, 0);
      const auto isOld = [&](int64_t end) { return reverse ? end >= position + window : end <= low; };
      while (old < count && isOld(power_.Peek(state, old).end)) ++old;
    }
    total = 0;
    for (uint32_t index = old; index < count; ++index) {
      const MeterSlice slice = power_.Peek(state, index);
      if (position >= 0 && !HasPassed(position, slice.end, reverse)) continue;
      total += slice.frames;
      for (uint32_t channel = 0; channel < channels; ++channel) {
        sums[channel] += static_cast<double>(slice.sums[channel]);
      }
    }
    if (power_.Take(state, old)) break;
    total = 0;
  }
  for (uint32_t channel = 0; channel < channels; ++channel) {
    std::atomic<float>& last = last_[channel].power;
    if (total >= least && total > 0) {
      const double mean = sums[channel] / static_cast<double>(total);
      last.store(static_cast<float>(mode.type == ZRMETERPOWER_RMS ? std::sqrt(mean) : mean), std::memory_order_relaxed);
    }
    values[channel] = last.load(std::memory_order_relaxed);
  }
  return S_OK;
}

HRESULT MemoryListPeakBuffer::ReadPeaksAtTime(int64_t time, float* peaks, uint32_t* clipped) {
  return ReadPeaks(FramesOfTime(time, format_.samplesPerSec), peaks, clipped);
}

HRESULT MemoryListPeakBuffer::ReadPowerAtTime(int64_t time, float* values) {
  return ReadPower(time < 0 ? -1 : FramesOfTime(time, format_.samplesPerSec), values);
}

void* MemoryListPeakBuffer::DeleteSelf(uint32_t flags) {
  if ((flags & 1) == 0) return this;
  delete this;
  return nullptr;
}

}  // namespace
}  // namespace marlo

HRESULT ZRCreateMemoryListPeakBuffer(CZRPeakBuffer** buffer, const _zrwaveformat* format, uint32_t records) noexcept {
  if (buffer == nullptr) return E_POINTER;
  *buffer = nullptr;
  if (records > kZrMeterMaxRecords || (format != nullptr && format->channels > kZrMeterChannels)) return E_INVALIDARG;
  auto* made = new (std::nothrow) marlo::MemoryListPeakBuffer;
  if (made == nullptr || !made->Allocate(records)) {
    if (made != nullptr) made->DeleteSelf(1);
    return E_OUTOFMEMORY;
  }
  if (format != nullptr) made->Writer()->SetFormat(format);
  *buffer = made;
  return S_OK;
}
