// SPDX-License-Identifier: Apache-2.0
// SDL's software mixer.
#include "samples/peers.h"

#ifdef MARLO_BENCH_SDL
#include <SDL2/SDL_audio.h>

namespace bench_samples {

Work SdlMixFloat(float* dest, const float* source, int samples) {
  return [=] {
    SDL_MixAudioFormat(reinterpret_cast<Uint8*>(dest), reinterpret_cast<const Uint8*>(source), AUDIO_F32SYS,
                       static_cast<Uint32>(samples) * 4, 100);
  };
}
Work SdlMixPcm16(int16_t* dest, const int16_t* source, int samples) {
  return [=] {
    SDL_MixAudioFormat(reinterpret_cast<Uint8*>(dest), reinterpret_cast<const Uint8*>(source), AUDIO_S16SYS,
                       static_cast<Uint32>(samples) * 2, 100);
  };
}

}  // namespace bench_samples
#else
namespace bench_samples {
Work SdlMixFloat(float*, const float*, int) { return {}; }
Work SdlMixPcm16(int16_t*, const int16_t*, int) { return {}; }
}  // namespace bench_samples
#endif
