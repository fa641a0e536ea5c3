// SPDX-License-Identifier: Apache-2.0
// Members of the stereo FLOAT32 calls; the SSE ones give the bits of the plain ones.
#pragma once

#include <cstdint>

#include "marlo110k/samples.h"

namespace marlo {

void StaticGainPlain(float* dest, const float* source, int64_t frames, const float* gains, bool mix) noexcept;
void StaticPanPlain(float* dest, const float* source, int64_t frames, const tZRENGINE_PAN2STEREO& pan,
                    bool mix) noexcept;
/// Both pointers stand on 16 bytes.
void StaticGainSse(float* dest, const float* source, int64_t frames, const float* gains, bool mix) noexcept;
void StaticPanSse(float* dest, const float* source, int64_t frames, const tZRENGINE_PAN2STEREO& pan, bool mix) noexcept;

}  // namespace marlo
