// SPDX-License-Identifier: Apache-2.0
// The control word under which the vector members between FLOAT32 and PCM16 run.
#pragma once

#include "marlo110k/cpu.h"
#include "platform/base/fpu.h"

namespace marlo {

/// Rounding to nearest whatever the thread has set, with denormals as zero where the processor can: a
/// decaying signal costs no more than a loud one.
inline uint32_t FloatKernelState() noexcept {
  constexpr uint32_t kRoundingControl = 0x6000;
  constexpr uint32_t kDenormalsAreZero = 0x8040;
  const uint32_t nearest = plat::FloatState() & ~kRoundingControl;
  return (ZrGetCPUSupport(ZRCPU_DAZ) & ZRCPU_DAZ) != 0 ? nearest | kDenormalsAreZero : nearest;
}

}  // namespace marlo
