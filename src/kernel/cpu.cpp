// SPDX-License-Identifier: Apache-2.0
// The processor words and their masks, as kernel families ask for them.
#include "marlo110k/cpu.h"

#include <atomic>
#include <cstring>

#include "kernel/cpu_detection.h"
#include "platform/base/cpu.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

/// Plain words that any thread reads: relaxed, in one cache line. `detected` is stored last.
struct alignas(64) ProcessorState {
  std::atomic<uint32_t> allowMask{0xFFFFFFFF};
  std::atomic<uint32_t> usable{0};
  std::atomic<uint32_t> classOverride{0};
  std::atomic<bool> detected{false};
  std::atomic<uint32_t> hardware{0};
  std::atomic<uint32_t> system{0};
  std::atomic<uint32_t> processors{0};
};

constinit ProcessorState state;
constexpr auto kRelaxed = std::memory_order_relaxed;

/// Two first callers get the same answer, so nothing needs to keep them apart.
[[gnu::noinline, gnu::cold]] void Detect() noexcept {
  const ProcessorWords words = DetectProcessor(kProcessorX8664, MachineProbes());
  state.processors.store(plat::ProcessorCount(), kRelaxed);
  state.hardware.store(words.hardware, kRelaxed);
  state.system.store(words.system, kRelaxed);
  state.usable.store(words.usable, kRelaxed);
  state.detected.store(true, std::memory_order_release);
}

inline void EnsureDetected() noexcept {
  if (!state.detected.load(std::memory_order_acquire)) [[unlikely]]
    Detect();
}

constexpr uint32_t Filter(uint32_t filter) noexcept { return filter != 0 ? filter : 0xFFFFFFFF; }

void PutRegister(char16_t* text, size_t index, uint32_t value) noexcept {
  char16_t characters[5];
  ZrFourCCToStringCPU(value, characters);
  std::memcpy(text + index * 4, characters, 4 * sizeof(char16_t));
}

}  // namespace

void FoldProcessorMasks() noexcept {
  EnsureDetected();
  const uint32_t kept = state.allowMask.load(kRelaxed) & state.usable.load(kRelaxed);
  state.usable.store(kept | state.classOverride.load(kRelaxed), kRelaxed);
}

}  // namespace marlo

using namespace marlo;

uint32_t ZrGetCPUSupport(uint32_t filter) noexcept {
  EnsureDetected();
  return (state.allowMask.load(kRelaxed) & state.usable.load(kRelaxed) & Filter(filter)) |
         state.classOverride.load(kRelaxed);
}

uint32_t ZrGetOSSupport(uint32_t filter) noexcept {
  EnsureDetected();
  return state.system.load(kRelaxed) & Filter(filter);
}

uint32_t ZrGetCPUHardwareSupport(uint32_t filter) noexcept {
  EnsureDetected();
  return state.allowMask.load(kRelaxed) & state.hardware.load(kRelaxed) & Filter(filter);
}

uint32_t ZrGetProcessorCount() noexcept {
  EnsureDetected();
  return state.processors.load(kRelaxed);
}

int32_t ZrAllowCPUSupport(uint32_t bits) noexcept {
  state.allowMask.fetch_or(bits, kRelaxed);
  return 1;
}

int32_t ZrDisallowCPUSupport(uint32_t bits) noexcept {
  state.allowMask.fetch_and(~bits, kRelaxed);
  return 1;
}

int32_t ZrOnlyAllowCPUSupport(uint32_t bits) noexcept {
  if ((bits & ~uint32_t{ZRCPU_FEATURES}) != 0) return 0;
  state.allowMask.store((state.allowMask.load(kRelaxed) & ~uint32_t{ZRCPU_FEATURES}) | bits, kRelaxed);
  return 1;
}

int32_t ZrSetCPUClassBySupport() noexcept {
  const uint32_t mask = state.allowMask.load(kRelaxed) & ~uint32_t{ZRCPU_CLASS};
  state.allowMask.store(mask, kRelaxed);
  uint32_t processorClass = 0;
  if ((mask & ZRCPU_SSE2) != 0) {
    processorClass = 6;
  } else if ((mask & ZRCPU_SSE) != 0) {
    processorClass = 5;
  } else if ((mask & ZRCPU_MMX) != 0) {
    processorClass = 4;
  }
  state.classOverride.store(processorClass, kRelaxed);
  return 1;
}

void ZrFourCCToStringCPU(uint32_t value, char16_t* text) noexcept {
  if (text == nullptr) return;
  for (uint32_t i = 0; i < 4; ++i) {
    const uint32_t byte = (value >> (8 * i)) & 0xFF;
    text[i] = byte >= 32 && byte <= 126 ? static_cast<char16_t>(byte) : u'\0';
  }
  text[4] = 0;
}

HRESULT ZrGetCPUVendorString(char16_t* buffer, uint32_t characters) noexcept {
  constexpr uint32_t kCharacters = 12;
  if (buffer == nullptr || characters < kCharacters + 1) return E_FAIL;
  const plat::CpuidLeaf leaf = plat::Cpuid(0);
  PutRegister(buffer, 0, leaf.ebx);
  PutRegister(buffer, 1, leaf.edx);
  PutRegister(buffer, 2, leaf.ecx);
  buffer[kCharacters] = 0;
  ZrStripWhiteSpace(buffer);
  return S_OK;
}

HRESULT ZrGetCPUBrandString(char16_t* buffer, uint32_t characters) noexcept {
  constexpr uint32_t kCharacters = 48;
  constexpr uint32_t kFirstLeaf = 0x80000002;
  constexpr uint32_t kLastLeaf = 0x80000004;
  if (buffer == nullptr || characters < kCharacters + 1) return E_FAIL;
  if (plat::Cpuid(0x80000000).eax < kLastLeaf) return E_FAIL;
  for (uint32_t i = 0; i <= kLastLeaf - kFirstLeaf; ++i) {
    const plat::CpuidLeaf leaf = plat::Cpuid(kFirstLeaf + i);
    PutRegister(buffer, i * 4 + 0, leaf.eax);
    PutRegister(buffer, i * 4 + 1, leaf.ebx);
    PutRegister(buffer, i * 4 + 2, leaf.ecx);
    PutRegister(buffer, i * 4 + 3, leaf.edx);
  }
  buffer[kCharacters] = 0;
  ZrStripWhiteSpace(buffer);
  return S_OK;
}

char16_t* ZrStripWhiteSpace(char16_t* text) noexcept {
  if (text == nullptr) return nullptr;
  constexpr char16_t kLastBlank = u' ';
  size_t first = 0;
  size_t end = plat::TextLength(text);
  while (first < end && text[first] <= kLastBlank) ++first;
  while (end > first && text[end - 1] <= kLastBlank) --end;
  std::memmove(text, text + first, (end - first) * sizeof(char16_t));
  text[end - first] = 0;
  return text;
}
