// SPDX-License-Identifier: Apache-2.0
// Detection of the processor's abilities from CPUID and two probes.
#include "kernel/cpu_detection.h"

#include <immintrin.h>

#include <cstring>

#include "marlo110k/cpu.h"
#include "platform/base/cpu.h"
#include "platform/base/fpu.h"

namespace marlo {
namespace {

constexpr uint32_t kFlushAndDenormalsAreZero = 0x8040;
constexpr uint32_t kDenormalsAreZero = 0x0040;

constexpr uint32_t Bit(uint32_t index) noexcept { return 1U << index; }

/// A feature of the SSE family: a CPUID bit of leaf 1 and the word's bit.
struct FamilyRow {
  uint32_t cpuidBit;
  uint32_t feature;
};

constexpr FamilyRow kFamilyOfEcx[] = {
    {Bit(0), ZRCPU_SSE3}, {Bit(9), ZRCPU_SSSE3}, {Bit(19), ZRCPU_SSE41}, {Bit(20), ZRCPU_SSE42}};

uint32_t ClassOfType(uint32_t type) noexcept {
  if (type == kProcessor486) return 1;
  if (type == kProcessorPentium) return 2;
  return 0;
}

/// The architecture has SSE and this code is compiled for it, so the instructions run.
bool RunsSse() { return true; }

/// Asks the saved state's mask which control bits exist: writing another one would fault.
bool FlushesDenormals() {
  constexpr size_t kMaskOffset = 28;
  alignas(16) unsigned char area[512];
  std::memset(area, 0, sizeof(area));
  _fxsave(area);
  uint32_t mask = 0;
  std::memcpy(&mask, area + kMaskOffset, sizeof(mask));
  if ((mask & kDenormalsAreZero) == 0) return false;
  plat::SetFloatState(plat::FloatState() | kFlushAndDenormalsAreZero);
  return true;
}

}  // namespace

ProcessorProbes MachineProbes() noexcept { return {RunsSse, FlushesDenormals}; }

bool HasCpuid(uint32_t type) noexcept { return type == kProcessorPentium || type == kProcessorX8664; }

ProcessorWords DetectProcessor(uint32_t type, const ProcessorProbes& probes) noexcept {
  ProcessorWords words{};
  uint32_t processorClass = ClassOfType(type);
  plat::CpuidLeaf leaf{};
  if (HasCpuid(type) && plat::Cpuid(0).eax >= 1) leaf = plat::Cpuid(1);

  if ((leaf.edx & Bit(4)) != 0) words.usable |= ZRCPU_TSC;
  if ((leaf.edx & Bit(15)) != 0) {
    words.usable |= ZRCPU_CMOV;
    if ((leaf.edx & Bit(0)) != 0) {
      words.usable |= ZRCPU_FCMOV;
      processorClass = 3;
    }
  }
  words.hardware = words.usable;

  // No member of a kernel family uses MMX alone, so the usable word never shows it.
  if ((leaf.edx & Bit(23)) != 0) {
    words.hardware |= ZRCPU_MMX;
    words.system |= ZRCPU_MMX;
  }

  bool sseRuns = false;
  if ((leaf.edx & Bit(25)) != 0) {
    words.hardware |= ZRCPU_SSE;
    sseRuns = probes.runsSse();
  }
  if (sseRuns) {
    words.system |= ZRCPU_SSE;
    words.usable |= ZRCPU_SSE;
    if (processorClass == 4) processorClass = 5;
    if (probes.flushesDenormals()) {
      words.hardware |= ZRCPU_DAZ;
      words.usable |= ZRCPU_DAZ;
    }
  }

  const auto add = [&](uint32_t feature) {
    words.hardware |= feature;
    if (!sseRuns) return false;
    words.system |= feature;
    words.usable |= feature;
    return true;
  };
  if ((leaf.edx & Bit(26)) != 0 && add(ZRCPU_SSE2) && processorClass == 5) processorClass = 6;
  for (const FamilyRow& row : kFamilyOfEcx) {
    if ((leaf.ecx & row.cpuidBit) != 0) add(row.feature);
  }
  if ((leaf.ecx & Bit(28)) != 0) words.hardware |= ZRCPU_AVX;
  words.usable |= processorClass;
  return words;
}

}  // namespace marlo
