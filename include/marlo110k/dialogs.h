// SPDX-License-Identifier: Apache-2.0
// Dialogs by language: the size that a template takes in pixels, and the calls that create and run dialogs.
//
// A template measures in units of its font: a quarter of the width and an eighth of the height of an average character.
// The library has no window controls yet: what creates or runs a dialog reports that it can't.
#pragma once

#include <cstdint>

#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"
#include "marlo110k/lang.h"
#include "marlo110k/resources.h"

/// A dialog's procedure. @return 1 when it dealt with the message.
using ZrDialogProcedure = intptr_t (*)(HZRWINDOW window, uint32_t message, uintptr_t wordParameter,
                                       intptr_t longParameter);

/// A size in pixels.
struct ZrPixelSize {
  int32_t width;   ///< To the right.
  int32_t height;  ///< Downwards.
};

// ---- Sizes: any thread -----------------------------------------------------------------------------

/// The average width and the height of a font's characters on the screen, by which a dialog is laid out.
/// @param points of the font. @param weight 400 normal, 700 bold. @param italic non-zero for a slanted one.
/// @param charset of the font, 0 for ANSI. @param units receives them, 0 by 0 on failure.
/// @return false without such a font; always, while the library has no fonts of the screen.
ZR_API bool ZrGetDialogUnitsForFont(const char16_t* face, int32_t points, int32_t weight, int32_t italic,
                                    int32_t charset, ZrPixelSize* units) noexcept;
/// The size of the dialog that a plain or extended template describes, in its own font; in that of the user interface
/// (7 by 13) when it names none or its units aren't known.
/// @param dialogTemplate whole and undamaged; its size isn't known here. @return 1; 0 for null.
ZR_API int32_t ZrGetDialogSizeIndirect(HZRLANG language, const void* dialogTemplate, ZrPixelSize* size) noexcept;
/// The size of a dialog resource, found by the order of fallbacks.
/// @param name a text, or a number below 0x10000. @param procedure, parameter of the dialog that is measured where a
/// template alone doesn't tell; not called, since none is created. @return 1; 0, with `size` untouched, without such a
/// dialog or for a damaged one.
ZR_API int32_t ZrGetDialogSize(HZRLANG language, const char16_t* name, ZrDialogProcedure procedure, intptr_t parameter,
                               ZrPixelSize* size) noexcept;

// ---- Creating and running: each fails while there are no window controls ---------------------------

/// Creates a dialog from a resource. @return null.
ZR_API HZRWINDOW ZrCreateDialogParam(HZRLANG language, const char16_t* name, HZRWINDOW parent,
                                     ZrDialogProcedure procedure, intptr_t parameter) noexcept;
/// Creates a dialog from a template. @return null.
ZR_API HZRWINDOW ZrCreateDialogIndirectParam(HZRLANG language, const void* dialogTemplate, HZRWINDOW parent,
                                             ZrDialogProcedure procedure, intptr_t parameter) noexcept;
/// Runs a dialog from a resource until it ends. @return -1.
ZR_API intptr_t ZrDialogBoxParam(HZRLANG language, const char16_t* name, HZRWINDOW parent, ZrDialogProcedure procedure,
                                 intptr_t parameter) noexcept;
/// Runs a dialog from a template until it ends. @return -1.
ZR_API intptr_t ZrDialogBoxIndirectParam(HZRLANG language, const void* dialogTemplate, HZRWINDOW parent,
                                         ZrDialogProcedure procedure, intptr_t parameter) noexcept;
/// Runs a dialog from a pool, in the handle's language or English, until it ends. @return what ZrDialogBoxIndirectParam
/// gives; -1 without such a template or without memory for a copy of it.
ZR_API intptr_t ZrResPoolDialogBox(const ZRRESPOOL* pool, HZRLANG language, const char16_t* name, HZRWINDOW parent,
                                   ZrDialogProcedure procedure, intptr_t parameter) noexcept;
