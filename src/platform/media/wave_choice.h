// SPDX-License-Identifier: Apache-2.0
// The backend in use, held for the length of a call.
#pragma once

#include "platform/media/wave_backend.h"

namespace plat {

/// Holds the choice of backend still; chooses at the first use. Never without a backend.
class WaveBackendUse {
 public:
  WaveBackendUse() noexcept;
  ~WaveBackendUse();
  WaveBackendUse(const WaveBackendUse&) = delete;
  WaveBackendUse& operator=(const WaveBackendUse&) = delete;
  WaveBackend* Get() const noexcept { return backend_; }

 private:
  WaveBackend* backend_;
};

/// While any device is open the backend stays. To be called while a WaveBackendUse is held.
void AddOpenWaveDevice() noexcept;
/// To be called without one.
void RemoveOpenWaveDevice() noexcept;

}  // namespace plat
