// SPDX-License-Identifier: Apache-2.0
// The stepped devices: no thread and no clock, so that a test sees every state.
#include "platform/media/wave_stepped.h"

#include <algorithm>

namespace plat {

struct WaveStepped::State {
  State() { InitializeLock(&lock); }
  ~State() { DeleteLock(&lock); }

  CriticalSection lock{};
  std::vector<std::unique_ptr<SteppedDevice>> devices[2];
  std::vector<Port*> ports;

  std::vector<std::unique_ptr<SteppedDevice>>& Of(WaveDirection direction) {
    return devices[direction == WaveDirection::kIn ? 1 : 0];
  }
  SteppedDevice* Find(WaveDirection direction, uint32_t device) {
    auto& list = Of(direction);
    if (device == kWaveMapper) device = 0;
    return device < list.size() ? list[device].get() : nullptr;
  }
};

class WaveStepped::Port final : public WavePort {
 public:
  Port(std::shared_ptr<State> state, WaveDirection direction, SteppedDevice* device, const WAVEFORMATEX& format,
       WaveQueue* queue)
      : state_(std::move(state)), direction_(direction), device_(device), format_(format), queue_(queue) {}

  ~Port() override {
    const LockGuard guard(&state_->lock);
    ++device_->closes;
    std::erase(state_->ports, this);
  }
  WaveResult Start() noexcept override {
    const LockGuard guard(&state_->lock);
    ++device_->starts;
    running_ = true;
    return kWaveOk;
  }
  WaveResult Pause() noexcept override {
    const LockGuard guard(&state_->lock);
    ++device_->pauses;
    running_ = false;
    return kWaveOk;
  }
  WaveResult Reset() noexcept override {
    const LockGuard guard(&state_->lock);
    ++device_->resets;
    running_ = false;
    frames_ = 0;
    return kWaveOk;
  }
  uint64_t Position() noexcept override {
    const LockGuard guard(&state_->lock);
    const uint64_t position = device_->firstPosition + frames_;
    return device_->lie ? device_->lie(position) : position;
  }

  /// The lock is held.
  void Step(uint32_t frames) {
    if (!running_ || device_->stalled) return;
    const uint32_t bytes = frames * format_.nBlockAlign;
    if (direction_ == WaveDirection::kOut) {
      const size_t before = device_->data.size();
      device_->data.resize(before + bytes);
      const uint32_t taken = queue_->Take(device_->data.data() + before, bytes);
      device_->data.resize(before + taken);
      frames_ += taken / format_.nBlockAlign;
      device_->starvedFrames += (bytes - taken) / format_.nBlockAlign;
    } else {
      std::vector<uint8_t> block(bytes);
      const size_t there = std::min<size_t>(bytes, device_->data.size() - device_->recorded);
      std::copy_n(device_->data.begin() + static_cast<ptrdiff_t>(device_->recorded), there, block.begin());
      device_->recorded += there;
      queue_->Put(block.data(), bytes);
      frames_ += frames;
    }
  }

 private:
  const std::shared_ptr<State> state_;
  const WaveDirection direction_;
  SteppedDevice* const device_;
  const WAVEFORMATEX format_;
  WaveQueue* const queue_;
  bool running_ = false;
  uint64_t frames_ = 0;
};

WaveStepped::WaveStepped() : state_(std::make_shared<State>()) {}
WaveStepped::~WaveStepped() = default;

CriticalSection* WaveStepped::Lock() { return &state_->lock; }

SteppedDevice& WaveStepped::AddDevice(WaveDirection direction) {
  const LockGuard guard(&state_->lock);
  return *state_->Of(direction).emplace_back(std::make_unique<SteppedDevice>());
}

void WaveStepped::Step(uint32_t frames) {
  const LockGuard guard(&state_->lock);
  for (Port* port : state_->ports) port->Step(frames);
}

void WaveStepped::Unplug(WaveDirection direction, uint32_t device) {
  const LockGuard guard(&state_->lock);
  SteppedDevice* const gone = state_->Find(direction, device);
  if (gone == nullptr) return;
  gone->stalled = true;
  gone->openResult = kWaveNoDriver;
  gone->openFailures = UINT32_MAX;
}

uint32_t WaveStepped::Count(WaveDirection direction) noexcept {
  const LockGuard guard(&state_->lock);
  return static_cast<uint32_t>(state_->Of(direction).size());
}

WaveResult WaveStepped::Caps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept {
  const LockGuard guard(&state_->lock);
  const SteppedDevice* found = state_->Find(direction, device);
  if (found == nullptr) return kWaveBadDevice;
  found->name.copy(caps->name, std::size(caps->name) - 1);
  caps->manufacturer = found->manufacturer;
  caps->product = found->product;
  caps->driverVersion = found->driverVersion;
  caps->channels = found->channels;
  caps->support = found->support;
  return kWaveOk;
}

WaveResult WaveStepped::Test(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format) noexcept {
  const LockGuard guard(&state_->lock);
  const SteppedDevice* found = state_->Find(direction, device);
  if (found == nullptr) return kWaveBadDevice;
  return found->accepts && !found->accepts(format) ? kWaveBadFormat : kWaveOk;
}

WaveResult WaveStepped::Open(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format, WaveQueue* queue,
                             WavePort** port) noexcept {
  if (const WaveResult result = Test(direction, device, format); result != kWaveOk) return result;
  const LockGuard guard(&state_->lock);
  SteppedDevice* const found = state_->Find(direction, device);
  if (found->openFailures != 0) {
    if (found->openFailures != UINT32_MAX) --found->openFailures;
    return found->openResult;
  }
  ++found->opens;
  found->format = format;
  auto made = std::make_unique<Port>(state_, direction, found, format, queue);
  state_->ports.push_back(made.get());
  *port = made.release();
  return kWaveOk;
}

}  // namespace plat
