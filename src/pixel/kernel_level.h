// SPDX-License-Identifier: Apache-2.0
// Which members of a kernel family may run.
#pragma once

#include "marlo110k/cpu.h"
#include "platform/base/cpu.h"

namespace marlo::pixel {

/// Wider members count as SSE2 for the public masks: without that bit everything is plain.
inline plat::VectorLevel KernelLevel() noexcept {
  return ZrGetCPUSupport(ZRCPU_SSE2) & ZRCPU_SSE2 ? plat::DetectedVectorLevel() : plat::VectorLevel::kPlain;
}

inline bool UseAvx2() noexcept { return KernelLevel() >= plat::VectorLevel::kAvx2; }

/// Rows that are worth a thread's wake-up for a picture of this width.
inline int32_t RowsPerThread(int32_t widthPixels) noexcept {
  constexpr int32_t kPixelsPerThread = 65536;
  return widthPixels > 0 && widthPixels < kPixelsPerThread ? kPixelsPerThread / widthPixels : 2;
}

}  // namespace marlo::pixel
