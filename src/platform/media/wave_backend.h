// SPDX-License-Identifier: Apache-2.0
// What a sound system must offer to carry wave devices. Implemented inside the library and by loadable modules,
// which meet nothing of the library but this header.
#pragma once

#include <cstdint>

#include "marlo110k/contract/wave.h"

namespace plat {

/// Results of wave devices, in their published numbering.
enum WaveResult : uint32_t {
  kWaveOk = 0,
  kWaveError = 1,
  kWaveBadDevice = 2,
  kWaveAllocated = 4,  ///< Somebody else has the device.
  kWaveBadHandle = 5,
  kWaveNoDriver = 6,
  kWaveNoMemory = 7,
  kWaveNotSupported = 8,
  kWaveBadParameter = 11,
  kWaveBadFormat = 32,
  kWaveStillPlaying = 33,  ///< Headers are still in the queue.
  kWaveUnprepared = 34,
};

/// The device that the user's settings point to.
inline constexpr uint32_t kWaveMapper = 0xFFFFFFFF;

/// Capability bits of an output.
enum WaveSupport : uint32_t { kWaveHasVolume = 4, kWaveSampleAccurate = 0x20 };

/// What a device says of itself.
struct WaveCaps {
  char16_t name[32];  ///< Cut to 31 characters.
  uint16_t manufacturer;
  uint16_t product;
  uint32_t driverVersion;
  uint16_t channels;
  uint32_t support;  ///< WaveSupport; outputs only.
};

/// The headers of an open device, seen from the backend. The calls take a short lock of the device, allocate
/// nothing and set the client's event for each header that is finished.
class WaveQueue {
 public:
  /// Output: copies the next bytes of the queued headers. @return how many there were; the rest is untouched.
  virtual uint32_t Take(void* destination, uint32_t bytes) noexcept = 0;
  /// Input: copies into the queued headers. @return how much found room; the rest is lost.
  virtual uint32_t Put(const void* source, uint32_t bytes) noexcept = 0;

 protected:
  ~WaveQueue() = default;
};

/// An open device, seen from the headers' side. It is opened standing still. Calls come one at a time.
class WavePort {
 public:
  /// Ends all use of the queue before it returns.
  virtual ~WavePort() = default;
  /// Plays or records from now on.
  virtual WaveResult Start() noexcept = 0;
  /// Stands still; the position stays.
  virtual WaveResult Pause() noexcept = 0;
  /// Stands still, forgets what it has taken but not played, and counts from 0.
  virtual WaveResult Reset() noexcept = 0;
  /// Frames heard or recorded since the opening or the last reset.
  virtual uint64_t Position() noexcept = 0;
};

enum class WaveDirection { kOut, kIn };

class WaveBackend {
 public:
  virtual ~WaveBackend() = default;
  virtual const char* Name() const noexcept = 0;
  virtual uint32_t Count(WaveDirection direction) noexcept = 0;
  /// @param device below Count, or kWaveMapper where there is any.
  virtual WaveResult Caps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept = 0;
  /// Can the device be opened with this format?
  virtual WaveResult Test(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format) noexcept = 0;
  /// @param port to be deleted by the caller.
  virtual WaveResult Open(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format, WaveQueue* queue,
                          WavePort** port) noexcept = 0;
};

/// The name of the one function that a backend module exports, and its shape. It gives null when its sound system
/// doesn't answer; otherwise the module stays loaded as long as the object lives.
inline constexpr char kWaveModuleEntry[] = "MarloCreateWaveBackend";
using WaveModuleEntry = WaveBackend* (*)();

}  // namespace plat
