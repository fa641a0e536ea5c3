// SPDX-License-Identifier: Apache-2.0
// The file-paced output: a thread takes from the queue what the clock says is due.
#include "platform/media/wave_file.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include "marlo110k/platform/event.h"
#include "marlo110k/platform/file.h"
#include "platform/base/clock.h"
#include "platform/sys/thread.h"

namespace plat {
namespace {

constexpr uint32_t kPaceMs = 10;
constexpr uint32_t kFrontBytes = 46;  ///< RIFF head, an 18-byte fmt chunk, the head of the data chunk.
constexpr uint32_t kMostDataBytes = 0xFFFFFFFF - kFrontBytes;

template <class Number>
uint8_t* Put(uint8_t* at, Number value) {
  std::memcpy(at, &value, sizeof value);
  return at + sizeof value;
}
uint8_t* PutId(uint8_t* at, const char* id) {
  std::memcpy(at, id, 4);
  return at + 4;
}

std::array<uint8_t, kFrontBytes> Front(const WAVEFORMATEX& format, uint32_t dataBytes) {
  std::array<uint8_t, kFrontBytes> front;
  WAVEFORMATEX head = format;
  head.cbSize = 0;
  uint8_t* at = Put(PutId(front.data(), "RIFF"), kFrontBytes - 8 + dataBytes);
  at = Put(PutId(PutId(at, "WAVE"), "fmt "), static_cast<uint32_t>(sizeof head));
  at = Put(at, head);
  Put(PutId(at, "data"), dataBytes);
  return front;
}

class FilePort final : public WavePort {
 public:
  FilePort(File* file, const WAVEFORMATEX& format, WaveQueue* queue) : file_(file), format_(format), queue_(queue) {
    block_.resize(std::max<size_t>(format.nSamplesPerSec / 10, 1) * format.nBlockAlign);
  }

  ~FilePort() override {
    leave_ = true;
    SetEvent(wake_);
    if (thread_ != nullptr) {
      JoinThread(thread_, kInfinite, nullptr);
      CloseThread(thread_);
    }
    CloseWaitable(wake_);
    CloseFile(file_);
  }

  WaveResult Begin() {
    wake_ = CreateEvent(false, false);
    if (wake_ == nullptr || !WriteFront()) return kWaveError;
    thread_ = StartThread([](void* self) { return static_cast<FilePort*>(self)->Pace(); }, this, kPriorityTimeCritical,
                          "wave file");
    return thread_ != nullptr ? kWaveOk : kWaveNoMemory;
  }

  WaveResult Start() noexcept override {
    const std::lock_guard guard(mutex_);
    if (!running_) anchor_ = Counter();
    running_ = true;
    SetEvent(wake_);
    return kWaveOk;
  }
  WaveResult Pause() noexcept override {
    const std::lock_guard guard(mutex_);
    PlayDue();
    running_ = false;
    return kWaveOk;
  }
  WaveResult Reset() noexcept override {
    const std::lock_guard guard(mutex_);
    running_ = false;
    played_ = 0;
    carried_ = 0;
    return kWaveOk;
  }
  uint64_t Position() noexcept override {
    const std::lock_guard guard(mutex_);
    PlayDue();
    return played_;
  }

 private:
  uint32_t Pace() {
    while (!leave_) {
      bool running;
      {
        const std::lock_guard guard(mutex_);
        PlayDue();
        running = running_;
      }
      WaitOne(wake_, running ? kPaceMs : kInfinite);
    }
    return 0;
  }

  /// The mutex is held. Time without data to play is time in which a sound card would have been silent: it passes.
  void PlayDue() {
    if (!running_) return;
    const int64_t now = Counter();
    const double seconds = static_cast<double>(now - anchor_) / static_cast<double>(CounterFrequency());
    const double due = seconds * format_.nSamplesPerSec + carried_;
    anchor_ = now;
    auto frames = static_cast<uint64_t>(due);
    carried_ = due - static_cast<double>(frames);
    while (frames != 0) {
      const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(frames * format_.nBlockAlign, block_.size()));
      const uint32_t bytes = queue_->Take(block_.data(), wanted);
      Write(bytes);
      played_ += bytes / format_.nBlockAlign;
      frames -= bytes / format_.nBlockAlign;
      if (bytes < wanted) break;
    }
  }

  /// A file that can't grow keeps what it has; the device plays on.
  void Write(uint32_t bytes) {
    bytes = std::min(bytes, kMostDataBytes - written_);
    if (bytes == 0 || failed_) return;
    uint32_t done = 0;
    failed_ = !WriteFile(file_, block_.data(), bytes, &done);
    written_ += done;
    WriteFront();
  }

  bool WriteFront() {
    const auto front = Front(format_, written_);
    return SeekFile(file_, 0, kSeekStart, nullptr) && WriteFile(file_, front.data(), kFrontBytes, nullptr) &&
           SeekFile(file_, 0, kSeekEnd, nullptr);
  }

  File* const file_;
  const WAVEFORMATEX format_;
  WaveQueue* const queue_;
  std::vector<uint8_t> block_;
  Waitable* wake_ = nullptr;
  Thread* thread_ = nullptr;
  std::atomic<bool> leave_{false};
  std::mutex mutex_;  ///< Guards what follows.
  bool running_ = false;
  bool failed_ = false;
  int64_t anchor_ = 0;  ///< The clock when frames were last played.
  double carried_ = 0;  ///< Part of a frame that was due then.
  uint64_t played_ = 0;
  uint32_t written_ = 0;
};

class WaveFile final : public WaveBackend {
 public:
  explicit WaveFile(std::u16string path) : path_(std::move(path)) {}

  const char* Name() const noexcept override { return "file"; }
  uint32_t Count(WaveDirection direction) noexcept override { return direction == WaveDirection::kOut ? 1 : 0; }

  WaveResult Caps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept override {
    if (!Has(direction, device)) return kWaveBadDevice;
    constexpr char16_t kName[] = u"Wave file";
    std::copy_n(kName, std::size(kName), caps->name);
    caps->manufacturer = 1;
    caps->channels = 2;
    caps->support = kWaveSampleAccurate;
    return kWaveOk;
  }

  WaveResult Test(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format) noexcept override {
    if (!Has(direction, device)) return kWaveBadDevice;
    const bool integers = format.wFormatTag == WAVE_FORMAT_PCM && format.wBitsPerSample % 8 == 0 &&
                          format.wBitsPerSample >= 8 && format.wBitsPerSample <= 32;
    const bool floats = format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT && format.wBitsPerSample == 32;
    const bool whole = format.nChannels != 0 && format.nSamplesPerSec != 0 &&
                       format.nBlockAlign == format.nChannels * (format.wBitsPerSample / 8);
    return (integers || floats) && whole ? kWaveOk : kWaveBadFormat;
  }

  WaveResult Open(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format, WaveQueue* queue,
                  WavePort** port) noexcept override {
    if (const WaveResult result = Test(direction, device, format); result != kWaveOk) return result;
    File* file = OpenFile(path_.c_str(), kReadWriteAccess, kShareRead, kCreateAlways);
    if (file == kInvalidFile) return kWaveAllocated;
    auto made = std::make_unique<FilePort>(file, format, queue);
    const WaveResult result = made->Begin();
    if (result == kWaveOk) *port = made.release();
    return result;
  }

 private:
  static bool Has(WaveDirection direction, uint32_t device) {
    return direction == WaveDirection::kOut && (device == 0 || device == kWaveMapper);
  }

  const std::u16string path_;
};

}  // namespace

std::unique_ptr<WaveBackend> MakeWaveFile(std::u16string path) { return std::make_unique<WaveFile>(std::move(path)); }

}  // namespace plat
