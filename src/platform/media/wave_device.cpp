// SPDX-License-Identifier: Apache-2.0
// The queue of headers between a client and a backend.
#include "platform/media/wave_device.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "marlo110k/platform/lock.h"
#include "platform/media/wave_choice.h"

namespace plat {

class WaveDevice final : public WaveQueue {
 public:
  WaveDevice(WaveDirection direction, uint32_t blockAlign, Waitable* event)
      : direction_(direction), blockAlign_(blockAlign), event_(event) {
    InitializeLock(&lock_);
  }
  ~WaveDevice() {
    port_.reset();
    DeleteLock(&lock_);
  }

  WaveResult Open(WaveBackend* backend, uint32_t device, const WAVEFORMATEX& format) {
    WavePort* port = nullptr;
    const WaveResult result = backend->Open(direction_, device, format, this, &port);
    port_.reset(port);
    if (result != kWaveOk) return result;
    if (direction_ == WaveDirection::kOut) port_->Start();
    SetEvent(event_);
    return kWaveOk;
  }

  bool HasHeaders() {
    LockGuard guard(&lock_);
    return first_ != nullptr;
  }
  WavePort* Port() { return port_.get(); }
  Waitable* Event() { return event_; }
  WaveDirection Direction() const { return direction_; }
  uint32_t BlockAlign() const { return blockAlign_; }

  WaveResult Queue(WAVEHDR* header) {
    LockGuard guard(&lock_);
    const uint32_t flags = Flags(header).load();
    if (!(flags & WHDR_PREPARED)) return kWaveUnprepared;
    if (flags & WHDR_INQUEUE) return kWaveStillPlaying;
    header->lpNext = nullptr;
    header->dwBytesRecorded = 0;
    Flags(header) = (flags & ~WHDR_DONE) | WHDR_INQUEUE;
    (last_ != nullptr ? last_->lpNext : first_) = header;
    last_ = header;
    return kWaveOk;
  }

  uint32_t Take(void* destination, uint32_t bytes) noexcept override {
    LockGuard guard(&lock_);
    auto* out = static_cast<uint8_t*>(destination);
    uint32_t done = 0;
    while (first_ != nullptr) {
      const uint32_t part = std::min(bytes - done, first_->dwBufferLength - offset_);
      std::memcpy(out + done, static_cast<const uint8_t*>(first_->lpData) + offset_, part);
      done += part;
      offset_ += part;
      if (offset_ < first_->dwBufferLength) break;
      GiveBackFirst();
      if (done == bytes) break;
    }
    return done;
  }

  uint32_t Put(const void* source, uint32_t bytes) noexcept override {
    LockGuard guard(&lock_);
    const auto* in = static_cast<const uint8_t*>(source);
    uint32_t done = 0;
    while (first_ != nullptr && done < bytes) {
      const uint32_t part = std::min(bytes - done, first_->dwBufferLength - offset_);
      std::memcpy(static_cast<uint8_t*>(first_->lpData) + offset_, in + done, part);
      done += part;
      offset_ += part;
      first_->dwBytesRecorded = offset_;
      if (offset_ == first_->dwBufferLength) GiveBackFirst();
    }
    return done;
  }

  /// Ends the header that is being filled.
  void GiveBackPartial() {
    LockGuard guard(&lock_);
    if (first_ != nullptr && offset_ != 0) GiveBackFirst();
  }
  void GiveBackAll() {
    LockGuard guard(&lock_);
    while (first_ != nullptr) GiveBackFirst();
  }

  // The client polls the flags without the lock.
  static std::atomic_ref<uint32_t> Flags(WAVEHDR* header) { return std::atomic_ref<uint32_t>(header->dwFlags); }

 private:
  void GiveBackFirst() {
    WAVEHDR* header = first_;
    first_ = header->lpNext;
    if (first_ == nullptr) last_ = nullptr;
    offset_ = 0;
    header->lpNext = nullptr;
    Flags(header) = (Flags(header).load() & ~WHDR_INQUEUE) | WHDR_DONE;
    SetEvent(event_);
  }

  const WaveDirection direction_;
  const uint32_t blockAlign_;
  Waitable* const event_;
  CriticalSection lock_{};
  WAVEHDR* first_ = nullptr;
  WAVEHDR* last_ = nullptr;
  uint32_t offset_ = 0;  ///< Bytes of the first header that are done.
  std::unique_ptr<WavePort> port_;
};

uint32_t CountWaveDevices(WaveDirection direction) noexcept {
  const WaveBackendUse use;
  return use.Get()->Count(direction);
}

WaveResult GetWaveCaps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept {
  if (caps == nullptr) return kWaveBadParameter;
  *caps = {};
  const WaveBackendUse use;
  return use.Get()->Caps(direction, device, caps);
}

WaveResult TestWaveFormat(WaveDirection direction, uint32_t device, const WAVEFORMATEX* format) noexcept {
  if (format == nullptr) return kWaveBadParameter;
  const WaveBackendUse use;
  return use.Get()->Test(direction, device, *format);
}

WaveResult OpenWaveDevice(WaveDirection direction, uint32_t device, const WAVEFORMATEX* format, Waitable* event,
                          WaveDevice** opened) noexcept {
  if (format == nullptr || opened == nullptr) return kWaveBadParameter;
  *opened = nullptr;
  if (format->nBlockAlign == 0 || format->nSamplesPerSec == 0) return kWaveBadFormat;
  std::unique_ptr<WaveDevice> made(new (std::nothrow) WaveDevice(direction, format->nBlockAlign, event));
  if (!made) return kWaveNoMemory;
  const WaveBackendUse use;
  const WaveResult result = made->Open(use.Get(), device, *format);
  if (result != kWaveOk) return result;
  AddOpenWaveDevice();
  *opened = made.release();
  return kWaveOk;
}

WaveResult CloseWaveDevice(WaveDevice* device) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  if (device->HasHeaders()) return kWaveStillPlaying;
  Waitable* const event = device->Event();
  delete device;
  RemoveOpenWaveDevice();
  SetEvent(event);
  return kWaveOk;
}

WaveResult PrepareWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  if (header == nullptr || header->lpData == nullptr) return kWaveBadParameter;
  if (WaveDevice::Flags(header).load() & WHDR_INQUEUE) return kWaveStillPlaying;
  WaveDevice::Flags(header).fetch_or(WHDR_PREPARED);
  return kWaveOk;
}

WaveResult UnprepareWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  if (header == nullptr) return kWaveBadParameter;
  if (WaveDevice::Flags(header).load() & WHDR_INQUEUE) return kWaveStillPlaying;
  WaveDevice::Flags(header).fetch_and(~uint32_t{WHDR_PREPARED});
  return kWaveOk;
}

WaveResult QueueWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  if (header == nullptr) return kWaveBadParameter;
  return device->Queue(header);
}

WaveResult StartWaveDevice(WaveDevice* device) noexcept {
  return device == nullptr ? kWaveBadHandle : device->Port()->Start();
}

WaveResult PauseWaveDevice(WaveDevice* device) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  const WaveResult result = device->Port()->Pause();
  if (device->Direction() == WaveDirection::kIn) device->GiveBackPartial();
  return result;
}

WaveResult ResetWaveDevice(WaveDevice* device) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  const WaveResult result = device->Port()->Reset();
  device->GiveBackAll();
  if (result != kWaveOk || device->Direction() == WaveDirection::kIn) return result;
  return device->Port()->Start();
}

WaveResult GetWavePosition(WaveDevice* device, WaveTime unit, uint32_t* position) noexcept {
  if (device == nullptr) return kWaveBadHandle;
  if (position == nullptr) return kWaveBadParameter;
  const uint64_t frames = device->Port()->Position();
  *position = static_cast<uint32_t>(unit == WaveTime::kBytes ? frames * device->BlockAlign() : frames);
  return kWaveOk;
}

}  // namespace plat
