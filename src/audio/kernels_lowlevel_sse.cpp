// SPDX-License-Identifier: Apache-2.0
// Stereo FLOAT32 with fixed gains, four samples (two frames) at a time.
//
// Every sample gets the same multiplications and additions in the same order as in the plain member, in
// single precision, so the bits are the same; an odd last frame goes to the plain member.
#include <xmmintrin.h>

#include "audio/lowlevel.h"

namespace marlo {

void StaticGainSse(float* dest, const float* source, int64_t frames, const float* gains, bool mix) noexcept {
  const __m128 both = _mm_setr_ps(gains[0], gains[1], gains[0], gains[1]);
  int64_t n = 0;
  if (mix) {
    for (; n + 4 <= 2 * frames; n += 4) {
      const __m128 value = _mm_mul_ps(both, _mm_load_ps(source + n));
      _mm_store_ps(dest + n, _mm_add_ps(_mm_load_ps(dest + n), value));
    }
  } else {
    for (; n + 4 <= 2 * frames; n += 4) _mm_store_ps(dest + n, _mm_mul_ps(both, _mm_load_ps(source + n)));
  }
  StaticGainPlain(dest + n, source + n, frames - n / 2, gains, mix);
}

void StaticPanSse(float* dest, const float* source, int64_t frames, const tZRENGINE_PAN2STEREO& pan,
                  bool mix) noexcept {
  const __m128 straight = _mm_setr_ps(pan.leftToLeft, pan.rightToRight, pan.leftToLeft, pan.rightToRight);
  const __m128 crossed = _mm_setr_ps(pan.rightToLeft, pan.leftToRight, pan.rightToLeft, pan.leftToRight);
  int64_t n = 0;
  for (; n + 4 <= 2 * frames; n += 4) {
    const __m128 frame = _mm_load_ps(source + n);
    const __m128 swapped = _mm_shuffle_ps(frame, frame, _MM_SHUFFLE(2, 3, 0, 1));
    const __m128 value = _mm_add_ps(_mm_mul_ps(straight, frame), _mm_mul_ps(crossed, swapped));
    _mm_store_ps(dest + n, mix ? _mm_add_ps(_mm_load_ps(dest + n), value) : value);
  }
  StaticPanPlain(dest + n, source + n, frames - n / 2, pan, mix);
}

}  // namespace marlo
