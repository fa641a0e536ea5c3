// SPDX-License-Identifier: Apache-2.0
// Text put into windows and dialog controls, formatted as by ZrPrintF.
//
// No window system is attached yet: every function gives 0, the result of a window that can't be reached, and takes
// none of its arguments.
#pragma once

#include <cstdint>

#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"
#include "marlo110k/lang.h"

// Each gives the text's length, or 0 when the window can't be reached. The format step runs only when the text holds
// "%" or "$"; the forms that end in NoF take a finished text. [user-interface thread]

/// Sets a window's text.
ZR_API int32_t ZrSetWindowTextF(HZRWINDOW window, const char16_t* format, ...) noexcept;
/// The same with a format by string id.
ZR_API int32_t ZrSetWindowTextId(HZRLANG language, HZRWINDOW window, uint32_t stringId, ...) noexcept;
/// The same with a finished text.
ZR_API int32_t ZrSetWindowTextNoF(HZRWINDOW window, const char16_t* text) noexcept;
/// Sets the text of a dialog's control.
ZR_API int32_t ZrSetDlgItemTextF(HZRWINDOW dialog, int32_t id, const char16_t* format, ...) noexcept;
/// The same with a format by string id.
ZR_API int32_t ZrSetDlgItemTextId(HZRLANG language, HZRWINDOW dialog, int32_t id, uint32_t stringId, ...) noexcept;
/// The same with a finished text.
ZR_API int32_t ZrSetDlgItemTextNoF(HZRWINDOW dialog, int32_t id, const char16_t* text) noexcept;
/// Sets the text of a control only when it changes, so that the control doesn't redraw.
ZR_API int32_t ZrSetDlgItemTextNoFlashF(HZRWINDOW dialog, int32_t id, const char16_t* format, ...) noexcept;
/// The same with a finished text.
ZR_API int32_t ZrSetDlgItemTextNoFlashNoF(HZRWINDOW dialog, int32_t id, const char16_t* text) noexcept;
/// Appends a line to a multi-line edit control; a null format empties it, a leading "~" suppresses the line's end.
ZR_API int32_t ZrMEditPrintF(HZRWINDOW edit, const char16_t* format, ...) noexcept;
