// SPDX-License-Identifier: Apache-2.0
// Stereo FLOAT32 with fixed gains: a gain for each side, or a pan matrix.
#include "audio/lowlevel.h"

#include <cstring>

#include "audio/kernel_table.h"

namespace marlo {

void StaticGainPlain(float* dest, const float* source, int64_t frames, const float* gains, bool mix) noexcept {
  for (int64_t n = 0; n < 2 * frames; n += 2) {
    const float left = gains[0] * source[n];
    const float right = gains[1] * source[n + 1];
    dest[n] = mix ? dest[n] + left : left;
    dest[n + 1] = mix ? dest[n + 1] + right : right;
  }
}

void StaticPanPlain(float* dest, const float* source, int64_t frames, const tZRENGINE_PAN2STEREO& pan,
                    bool mix) noexcept {
  for (int64_t n = 0; n < 2 * frames; n += 2) {
    const float left = pan.leftToLeft * source[n] + pan.rightToLeft * source[n + 1];
    const float right = pan.rightToRight * source[n + 1] + pan.leftToRight * source[n];
    dest[n] = mix ? dest[n] + left : left;
    dest[n + 1] = mix ? dest[n + 1] + right : right;
  }
}

namespace {

bool RunsFourAtATime(const float* dest, const float* source) noexcept {
  return IsAllowed(ZRCPU_SSE) && ((reinterpret_cast<uintptr_t>(dest) | reinterpret_cast<uintptr_t>(source)) & 15) == 0;
}

}  // namespace
}  // namespace marlo

void LowLevel_1To1_StaticGain_Float(float* dest, const float* source, int64_t frames, const float* gains,
                                    int32_t mix) noexcept {
  using namespace marlo;
  if (frames <= 0) return;
  if (gains[0] == 1.0f && gains[1] == 1.0f && mix == 0) {
    if (dest != source) std::memcpy(dest, source, static_cast<size_t>(frames) * 2 * sizeof(float));
  } else if (RunsFourAtATime(dest, source)) {
    StaticGainSse(dest, source, frames, gains, mix != 0);
  } else {
    StaticGainPlain(dest, source, frames, gains, mix != 0);
  }
}

void LowLevel_1To1_StaticPan_Float(float* dest, const float* source, int64_t frames, const tZRENGINE_PAN2STEREO* pan,
                                   int32_t mix) noexcept {
  using namespace marlo;
  if (frames <= 0) return;
  if (pan->leftToRight == 0.0f && pan->rightToLeft == 0.0f) {
    const float gains[2] = {pan->leftToLeft, pan->rightToRight};
    LowLevel_1To1_StaticGain_Float(dest, source, frames, gains, mix);
  } else if (RunsFourAtATime(dest, source)) {
    StaticPanSse(dest, source, frames, *pan, mix != 0);
  } else {
    StaticPanPlain(dest, source, frames, *pan, mix != 0);
  }
}
