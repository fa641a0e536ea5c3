// SPDX-License-Identifier: Apache-2.0
// The floating-point control word of the calling thread.
#pragma once

#include <xmmintrin.h>

#include <cstdint>

namespace plat {

inline constexpr uint32_t kCleanFloatState = 0x1F80;   ///< All traps masked, nearest, denormals kept.
inline constexpr uint32_t kRenderFloatState = 0x9FC0;  ///< The same with denormals read and written as zero.

inline uint32_t FloatState() noexcept { return _mm_getcsr(); }
inline void SetFloatState(uint32_t state) noexcept { _mm_setcsr(state); }

/// Sets a float state for a scope and restores the former one.
class FloatStateGuard {
 public:
  explicit FloatStateGuard(uint32_t state) noexcept : former_(FloatState()) { SetFloatState(state); }
  ~FloatStateGuard() { SetFloatState(former_); }
  FloatStateGuard(const FloatStateGuard&) = delete;
  FloatStateGuard& operator=(const FloatStateGuard&) = delete;

 private:
  uint32_t former_;
};

}  // namespace plat
