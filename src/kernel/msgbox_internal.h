// SPDX-License-Identifier: Apache-2.0
// What the forms of message boxes share: parent, title, hook, and the box itself.
#pragma once

#include <cstdint>

#include "marlo110k/errors.h"

namespace marlo {

/// Everything a box shows. Texts are the caller's and may be null but for `text`.
struct BoxRequest {
  uint32_t flags = 0;
  const char16_t* text = nullptr;
  const char16_t* details = nullptr;
  const char16_t* checkText = nullptr;
  int32_t* checkState = nullptr;
  const char16_t* title = nullptr;
  const char16_t* linkUrl = nullptr;
  const char16_t* linkText = nullptr;
};

/// Null picks the main window, kZrNoParent none.
HZRWINDOW ResolveParent(HZRWINDOW parent) noexcept;

/// The title that the host set; may be empty.
const char16_t* ApplicationTitle() noexcept;

/// Asks the hook. @return false when there is none or it declines.
bool AskHook(HZRWINDOW parent, const char16_t* text, const char16_t* title, uint32_t flags, uint32_t* answer) noexcept;
bool HasHook() noexcept;

/// What is left of a box while no window system is attached: its text, once, on the standard error stream.
void WriteToErrorStream(const char16_t* text, const char16_t* title) noexcept;

}  // namespace marlo
