// SPDX-License-Identifier: Apache-2.0
// Wave devices as the engine drives them: headers go in, an event tells when one is done, positions come back.
#pragma once

#include <cstdint>

#include "marlo110k/contract/wave.h"
#include "marlo110k/platform/event.h"
#include "platform/media/wave_backend.h"

namespace plat {

/// An open output or input. One thread at a time, but for headers' flags, which anybody may read.
class WaveDevice;

uint32_t CountWaveDevices(WaveDirection direction) noexcept;
WaveResult GetWaveCaps(WaveDirection direction, uint32_t device, WaveCaps* caps) noexcept;
WaveResult TestWaveFormat(WaveDirection direction, uint32_t device, const WAVEFORMATEX* format) noexcept;

/// Opens a device. An output plays at once what is written unless it is paused; an input waits for its start.
/// @param event set on opening, closing and for every header that comes back; may be null.
WaveResult OpenWaveDevice(WaveDirection direction, uint32_t device, const WAVEFORMATEX* format, Waitable* event,
                          WaveDevice** opened) noexcept;
/// kWaveStillPlaying while a header is queued, and nothing happens then.
WaveResult CloseWaveDevice(WaveDevice* device) noexcept;

/// Makes a header known; its data and length stand.
WaveResult PrepareWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept;
/// kWaveStillPlaying while it is queued.
WaveResult UnprepareWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept;
/// Queues a header to be played, or to be filled. A header of 0 bytes comes back when its turn is.
WaveResult QueueWaveHeader(WaveDevice* device, WAVEHDR* header) noexcept;

/// Output: plays on after a pause. Input: records.
WaveResult StartWaveDevice(WaveDevice* device) noexcept;
/// Output: stands still, also before the first header. Input: stops, and the header that is being filled comes back.
WaveResult PauseWaveDevice(WaveDevice* device) noexcept;
/// Gives all headers back as done and counts from 0. An output isn't paused after it.
WaveResult ResetWaveDevice(WaveDevice* device) noexcept;

/// Units of a position.
enum class WaveTime { kBytes, kSamples };
/// Since the opening or the last reset; wraps at 32 bits.
WaveResult GetWavePosition(WaveDevice* device, WaveTime unit, uint32_t* position) noexcept;

/// Puts a backend in place of the chosen one, for tests and hosts' own devices; null goes back to the default.
/// The caller keeps it. @return false while a device is open.
bool UseWaveBackend(WaveBackend* backend) noexcept;

}  // namespace plat
