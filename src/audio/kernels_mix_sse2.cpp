// SPDX-License-Identifier: Apache-2.0
// The published SSE2 member of the mix family: FLOAT32 into FLOAT32.
#include <emmintrin.h>

#include "audio/mix.h"

namespace marlo {

/// Stereo on 16 bytes: four samples at a time with the gains as singles, so that a product isn't first
/// rounded from double; the last odd samples take the same gains.
void MixFloat32Sse2(void* dest, const void* source, int64_t samples, uint32_t channels, const double* gains) noexcept {
  const bool aligned = ((reinterpret_cast<uintptr_t>(dest) | reinterpret_cast<uintptr_t>(source)) & 15) == 0;
  if (!aligned || channels != 2) {
    MixMemberPlain(ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT32)(dest, source, samples, channels, gains);
    return;
  }
  if (dest == source) return;
  auto* to = static_cast<float*>(dest);
  const auto* from = static_cast<const float*>(source);
  const float single[2] = {static_cast<float>(gains[0]), static_cast<float>(gains[1])};
  const __m128 four = _mm_setr_ps(single[0], single[1], single[0], single[1]);
  int64_t n = 0;
  for (; n + 4 <= samples; n += 4) {
    _mm_store_ps(to + n, _mm_add_ps(_mm_mul_ps(four, _mm_load_ps(from + n)), _mm_load_ps(to + n)));
  }
  for (; n < samples; ++n) to[n] = single[n & 1] * from[n] + to[n];
}

}  // namespace marlo
