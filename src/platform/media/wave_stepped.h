// SPDX-License-Identifier: Apache-2.0
// Wave devices that move only when they are told to, for tests of everything above them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "marlo110k/platform/lock.h"
#include "platform/media/wave_backend.h"

namespace plat {

/// One stepped device. Its settings may change at any time.
struct SteppedDevice {
  std::u16string name = u"Stepped device";
  uint16_t manufacturer = 2;
  uint16_t product = 0;
  uint32_t driverVersion = 0x100;
  uint16_t channels = 2;
  uint32_t support = kWaveSampleAccurate;
  /// Null accepts every format.
  bool (*accepts)(const WAVEFORMATEX& format) = nullptr;
  WaveResult openResult = kWaveOk;  ///< What opening gives, for `openFailures` times.
  uint32_t openFailures = 0;
  bool stalled = false;                          ///< Steps move nothing.
  uint64_t firstPosition = 0;                    ///< Added to every position; near 2^32 it makes one wrap.
  uint64_t (*lie)(uint64_t position) = nullptr;  ///< Changes each position that is told.

  /// All bytes that were played, or the bytes to be recorded (then silence).
  std::vector<uint8_t> data;
  size_t recorded = 0;         ///< Bytes of `data` that an input has given out.
  uint64_t starvedFrames = 0;  ///< Steps of an output that found nothing to play.
  uint32_t opens = 0, closes = 0, starts = 0, pauses = 0, resets = 0;
  WAVEFORMATEX format{};  ///< Of the last opening.
};

class WaveStepped final : public WaveBackend {
 public:
  WaveStepped();
  ~WaveStepped() override;

  SteppedDevice& AddDevice(WaveDirection direction);
  /// Moves every open, running device on by so many frames of its own rate.
  void Step(uint32_t frames);
  /// Takes devices away, as when a plug is pulled: open ones stand still, and opening them fails.
  void Unplug(WaveDirection direction, uint32_t device);
  /// Holds the devices still while a test reads or changes their records beside other threads.
  CriticalSection* Lock();

  const char* Name() const noexcept override { return "stepped"; }
  uint32_t Count(WaveDirection direction) noexcept override;
  WaveResult Caps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept override;
  WaveResult Test(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format) noexcept override;
  WaveResult Open(WaveDirection direction, uint32_t device, const WAVEFORMATEX& format, WaveQueue* queue,
                  WavePort** port) noexcept override;

 private:
  class Port;
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace plat
