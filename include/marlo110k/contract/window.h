// SPDX-License-Identifier: Apache-2.0
// The handle of a window as hosts pass it to the library.
#pragma once

#include <cstdint>

struct ZrWindow;
/// A window; null where a function has a default for it.
using HZRWINDOW = ZrWindow*;

/// Says "no parent at all" where null would pick the application's main window.
inline const HZRWINDOW kZrNoParent = reinterpret_cast<HZRWINDOW>(static_cast<intptr_t>(-1));

/// The messages that ZrKernel_UserPrefChanges understands.
inline constexpr uint32_t WM_SYSCOLORCHANGE = 21;
inline constexpr uint32_t WM_DISPLAYCHANGE = 126;
