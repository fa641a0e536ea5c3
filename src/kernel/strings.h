// SPDX-License-Identifier: Apache-2.0
// The source of the library's own texts: descriptors as they are written in code, and the text each stands for.
#pragma once

#include "marlo110k/lang.h"

namespace marlo {

/// A descriptor whose other languages fall back to its English text.
constexpr zrlang_t English(const char16_t* text) noexcept { return {kZrLangStringMagic, kZrLangSlots, {}, {text}, 0}; }

/// The language of the library's own texts.
inline HZRLANG KernelLanguage() noexcept { return nullptr; }

/// The text of a descriptor in the library's own language.
inline const char16_t* KernelText(const zrlang_t& descriptor) noexcept {
  return ZrGetString(KernelLanguage(), &descriptor);
}

}  // namespace marlo
