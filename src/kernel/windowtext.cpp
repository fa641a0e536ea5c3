// SPDX-License-Identifier: Apache-2.0
// Answers for windows while no window system is attached: none can be reached.
#include "marlo110k/windowtext.h"

int32_t ZrSetWindowTextF(HZRWINDOW, const char16_t*, ...) noexcept { return 0; }
int32_t ZrSetWindowTextId(HZRLANG, HZRWINDOW, uint32_t, ...) noexcept { return 0; }
int32_t ZrSetWindowTextNoF(HZRWINDOW, const char16_t*) noexcept { return 0; }
int32_t ZrSetDlgItemTextF(HZRWINDOW, int32_t, const char16_t*, ...) noexcept { return 0; }
int32_t ZrSetDlgItemTextId(HZRLANG, HZRWINDOW, int32_t, uint32_t, ...) noexcept { return 0; }
int32_t ZrSetDlgItemTextNoF(HZRWINDOW, int32_t, const char16_t*) noexcept { return 0; }
int32_t ZrSetDlgItemTextNoFlashF(HZRWINDOW, int32_t, const char16_t*, ...) noexcept { return 0; }
int32_t ZrSetDlgItemTextNoFlashNoF(HZRWINDOW, int32_t, const char16_t*) noexcept { return 0; }
int32_t ZrMEditPrintF(HZRWINDOW, const char16_t*, ...) noexcept { return 0; }
