// SPDX-License-Identifier: Apache-2.0
// Finds what the processor can do, step by step as published.
#pragma once

#include <cstdint>

namespace marlo {

/// Processor kinds as the system reports them.
inline constexpr uint32_t kProcessor486 = 486;
inline constexpr uint32_t kProcessorPentium = 586;
inline constexpr uint32_t kProcessorX8664 = 8664;

/// The detected words: bits of ZRCPU.
struct ProcessorWords {
  uint32_t hardware;  ///< What CPUID reports.
  uint32_t system;    ///< What the system lets run.
  uint32_t usable;    ///< Both, with the class in the low four bits.
};

/// Tests whose outcome lies outside CPUID.
struct ProcessorProbes {
  bool (*runsSse)();           ///< SSE instructions run without a fault.
  bool (*flushesDenormals)();  ///< Turns flush-to-zero and denormals-are-zero on; false when the processor refuses.
};

/// The probes of this machine. The second one changes the calling thread's float state for good.
ProcessorProbes MachineProbes() noexcept;

/// Detects on a processor of kind `type`, reading plat::Cpuid.
ProcessorWords DetectProcessor(uint32_t type, const ProcessorProbes& probes) noexcept;

/// True for the kinds whose CPUID may be asked.
bool HasCpuid(uint32_t type) noexcept;

/// Replaces the stored usable word by what the masks leave of it now.
void FoldProcessorMasks() noexcept;

}  // namespace marlo
