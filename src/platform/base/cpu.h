// SPDX-License-Identifier: Apache-2.0
// Facts of the processor, with injected leaves for tests.
#pragma once

#include <cstdint>

namespace plat {

struct CpuidLeaf {
  uint32_t eax, ebx, ecx, edx;
};

/// CPUID of `leaf`, sub-leaf 0.
CpuidLeaf Cpuid(uint32_t leaf) noexcept;
/// State components that the operating system saves (XCR0), 0 without OSXSAVE.
uint64_t EnabledXState() noexcept;
uint32_t ProcessorCount() noexcept;

/// Puts a table in place of the processor for tests; null restores it.
using CpuidSource = CpuidLeaf (*)(uint32_t leaf, void* context);
void SetCpuidSource(CpuidSource source, void* context) noexcept;

/// Vector levels beyond the published processor word. A member of level kAvx2 or kAvx512 is used only
/// where its results are the same bits as the plain member's.
enum class VectorLevel : uint32_t { kPlain = 0, kSse2 = 1, kAvx2 = 2, kAvx512 = 3 };

/// The level the processor and the operating system carry, cut by SetVectorLevelLimit.
VectorLevel DetectedVectorLevel() noexcept;
/// Test and bench hook: no member above `limit` is chosen from now on.
void SetVectorLevelLimit(VectorLevel limit) noexcept;

}  // namespace plat
