// SPDX-License-Identifier: Apache-2.0
// The backend without devices, which makes the engine keep time by itself.
#include "platform/media/wave_none.h"

namespace plat {
namespace {

class WaveNone final : public WaveBackend {
 public:
  const char* Name() const noexcept override { return "null"; }
  uint32_t Count(WaveDirection) noexcept override { return 0; }
  WaveResult Caps(WaveDirection, uint32_t, WaveCaps*) noexcept override { return kWaveBadDevice; }
  WaveResult Test(WaveDirection, uint32_t, const WAVEFORMATEX&) noexcept override { return kWaveBadDevice; }
  WaveResult Open(WaveDirection, uint32_t, const WAVEFORMATEX&, WaveQueue*, WavePort**) noexcept override {
    return kWaveBadDevice;
  }
};

}  // namespace

std::unique_ptr<WaveBackend> MakeWaveNone() { return std::make_unique<WaveNone>(); }

}  // namespace plat
