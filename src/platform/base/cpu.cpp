// SPDX-License-Identifier: Apache-2.0
// Reads the processor's leaves, or a test's, and derives the vector level.
#include "platform/base/cpu.h"

#include <cpuid.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace plat {
namespace {

// Set by tests before anything runs in parallel.
CpuidSource source = nullptr;
void* sourceContext = nullptr;

constexpr uint32_t kNotDetected = 0xFFFFFFFF;
std::atomic<uint32_t> detectedLevel{kNotDetected};
std::atomic<uint32_t> levelLimit{static_cast<uint32_t>(VectorLevel::kAvx512)};

constexpr uint32_t kOsXsaveBit = 1u << 27;  // leaf 1, ecx

CpuidLeaf HardwareCpuid(uint32_t leaf) {
  CpuidLeaf registers{};
  __cpuid_count(leaf, 0, registers.eax, registers.ebx, registers.ecx, registers.edx);
  return registers;
}

VectorLevel DetectLevel() {
  const uint32_t highestLeaf = Cpuid(0).eax;
  if (highestLeaf < 1) return VectorLevel::kPlain;
  const CpuidLeaf features = Cpuid(1);
  const bool sse2 = (features.edx & 1u << 26) != 0;
  if (!sse2) return VectorLevel::kPlain;
  const bool avx = (features.ecx & 1u << 28) != 0;
  const uint64_t xState = EnabledXState();
  constexpr uint64_t kYmmState = 0x06;
  constexpr uint64_t kZmmState = 0xE6;
  if (!avx || highestLeaf < 7 || (xState & kYmmState) != kYmmState) return VectorLevel::kSse2;
  const uint32_t extended = Cpuid(7).ebx;
  if ((extended & 1u << 5) == 0) return VectorLevel::kSse2;
  constexpr uint32_t kAvx512 = 1u << 16 | 1u << 17 | 1u << 30 | 1u << 31;  // F, DQ, BW, VL
  if ((extended & kAvx512) != kAvx512 || (xState & kZmmState) != kZmmState) return VectorLevel::kAvx2;
  return VectorLevel::kAvx512;
}

}  // namespace

CpuidLeaf Cpuid(uint32_t leaf) noexcept {
  return source != nullptr ? source(leaf, sourceContext) : HardwareCpuid(leaf);
}

uint64_t EnabledXState() noexcept {
  // The instruction exists only where the hardware itself says so, whatever a test's leaves claim.
  if ((HardwareCpuid(1).ecx & Cpuid(1).ecx & kOsXsaveBit) == 0) return 0;
  uint32_t low = 0;
  uint32_t high = 0;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return static_cast<uint64_t>(high) << 32 | low;
}

uint32_t ProcessorCount() noexcept {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
    return static_cast<uint32_t>(std::max(1, CPU_COUNT(&allowed)));
  }
  return static_cast<uint32_t>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
}

void SetCpuidSource(CpuidSource newSource, void* context) noexcept {
  source = newSource;
  sourceContext = context;
  detectedLevel.store(kNotDetected, std::memory_order_relaxed);
}

VectorLevel DetectedVectorLevel() noexcept {
  uint32_t level = detectedLevel.load(std::memory_order_relaxed);
  if (level == kNotDetected) {
    level = static_cast<uint32_t>(DetectLevel());
    detectedLevel.store(level, std::memory_order_relaxed);
  }
  return static_cast<VectorLevel>(std::min(level, levelLimit.load(std::memory_order_relaxed)));
}

void SetVectorLevelLimit(VectorLevel limit) noexcept {
  levelLimit.store(static_cast<uint32_t>(limit), std::memory_order_relaxed);
}

}  // namespace plat
