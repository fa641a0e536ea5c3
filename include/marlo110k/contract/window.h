// SPDX-License-Identifier: Apache-2.0
// The handle of a window.
#pragma once

/// A window of the host's or the library's; null for none.
typedef struct ZrWindow* HWND;
