// SPDX-License-Identifier: Apache-2.0
// The source of the library's own texts: the catalogue, in the language of the library.
#pragma once

#include "kernel/catalogue/texts.h"
#include "kernel/kernel_state.h"
#include "marlo110k/lang.h"

namespace marlo {

/// The language of the library's own texts; null outside the kernel's life.
inline HZRLANG KernelLanguage() noexcept { return kernelState.language.load(std::memory_order_relaxed); }

/// The descriptor of a text of the catalogue.
constexpr zrlang_t& Descriptor(Text text) noexcept { return catalogue[static_cast<uint32_t>(text)]; }

/// A descriptor outside the catalogue: every language reads its English text.
constexpr zrlang_t English(const char16_t* text) noexcept { return {kZrLangStringMagic, kZrLangSlots, {}, {text}, 0}; }

/// The text of a descriptor in the library's own language.
inline const char16_t* KernelText(const zrlang_t& descriptor) noexcept {
  return ZrGetString(KernelLanguage(), &descriptor);
}

/// A text of the catalogue in the library's own language.
inline const char16_t* KernelText(Text text) noexcept { return ZrGetString(KernelLanguage(), &Descriptor(text)); }

}  // namespace marlo
