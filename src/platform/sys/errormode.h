// SPDX-License-Identifier: Apache-2.0
// The process error mode word. Nothing on this platform acts on it; hosts and plug-ins may read it.
#pragma once

#include <cstdint>

namespace plat {

inline constexpr uint32_t kFailCriticalErrors = 0x0001;
inline constexpr uint32_t kNoAlignmentFaultExcept = 0x0004;
inline constexpr uint32_t kNoOpenFileErrorBox = 0x8000;

uint32_t ErrorMode() noexcept;
void SetErrorMode(uint32_t mode) noexcept;

}  // namespace plat
