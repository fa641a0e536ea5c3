// SPDX-License-Identifier: Apache-2.0
// Failures on their way to the user: code translation, the details buffer, and the message box with its hooks.
//
// Failures travel as HRESULT. A layer that fails deep down adds a line of details; the layer that shows the
// failure gets them all. The details belong to one thread at a time.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"

namespace plat {
struct Module;
}

// ---- Codes -----------------------------------------------------------------------------------------

/// The code of a platform error number (plat::LastError): E_FAIL for numbers without a row. [any thread]
ZR_API HRESULT ZrErrorHandler_TranslateWin32Error(uint32_t error) noexcept;
/// The code of a common dialog's error number. [any thread]
ZR_API HRESULT ZrErrorHandler_TranslateCommDlgError(uint32_t error) noexcept;

// ---- Details ---------------------------------------------------------------------------------------

/// Clears the whole error state, its owner included.
ZR_API void ZrErrorHandler_DetailsInit() noexcept;
/// Appends a line (CR LF is added) and makes `code` the last error. The first caller owns the details; another
/// thread's line is accepted only under the last code.
/// @param format used as it stands unless it holds "%" or "$"; then formatted with the arguments, whose texts are
/// UTF-16.
/// @return S_OK; E_FAIL for a stranger's line or one that doesn't fit (nothing changes); E_POINTER for null.
ZR_API HRESULT ZrErrorHandler_DetailsAddString(HRESULT code, const char16_t* format, ...) noexcept;
/// Gives the stored values; each out may be null.
/// @return the text, valid until the details change, or null when there are no lines.
ZR_API const char16_t* ZrErrorHandler_DetailsInfo(HRESULT* code, int32_t* lines, uint32_t* thread) noexcept;
/// Stores a link for the box that will show the failure; cut at 2082 and 2047 characters.
/// @return S_OK, or E_POINTER when either is null.
ZR_API HRESULT ZrErrorHandler_DetailsSetHyperlink(const char16_t* url, const char16_t* text) noexcept;
/// The code of the last accepted line, 0 when there is none. [any thread]
ZR_API HRESULT ZrErrorHandler_GetLastError() noexcept;

// ---- Message box -----------------------------------------------------------------------------------

/// Button sets (bits 0 to 3 of the flags) and further bits.
enum ZRMSGBOX_FLAGS : uint32_t {
  ZRMB_OK = 0,
  ZRMB_OKCANCEL = 1,
  ZRMB_ABORTRETRYIGNORE = 2,
  ZRMB_YESNOCANCEL = 3,
  ZRMB_YESNO = 4,
  ZRMB_RETRYCANCEL = 5,
  ZRMB_YESALLNOCANCEL = 10,
  ZRMB_YESNODELETE = 11,
  ZRMB_YESNONOALLCANCEL = 12,
  ZRMB_YESALLNONOALLCANCEL = 13,
  ZRMB_BUTTONS = 0x000F,
  ZRMB_ICONHAND = 0x0010,
  ZRMB_ICONQUESTION = 0x0020,
  ZRMB_ICONEXCLAMATION = 0x0030,
  ZRMB_ICONINFORMATION = 0x0040,
  ZRMB_DEFAULTBUTTON = 0x0F00,  ///< Index of the default button, counted from 0.
};

/// Results: the button that was pressed.
enum ZRMSGBOX_RESULT : uint32_t {
  ZRID_NOBOX = 0,  ///< The box could not be created.
  ZRID_OK = 1,
  ZRID_CANCEL = 2,
  ZRID_ABORT = 3,
  ZRID_RETRY = 4,
  ZRID_IGNORE = 5,
  ZRID_YES = 6,
  ZRID_NO = 7,
  ZRID_YESTOALL = 100,
  ZRID_DELETE = 101,
  ZRID_NOTOALL = 102,
  ZRID_HOOKDECLINES = 0xFFFFFFFF,  ///< From a hook: show the box after all.
};

/// Answers a box in the user's place, or gives ZRID_HOOKDECLINES. Runs on the thread that wants the box; `title`
/// is what the caller gave, null for the application's.
using ZRMSGBOXHOOK = uint32_t (*)(void* data, HZRWINDOW window, const char16_t* text, const char16_t* title,
                                  uint32_t flags);
/// Receives the texts of boxes that the no-user-interface hook answers.
using ZRMSGBOXNOUI = void (*)(const char16_t* text);

/// Makes the calling thread the owner of the boxes and clears what was set before, hooks included.
/// @param instance the application's module, @param mainWindow parent of boxes that name none, @param title used
/// where a caller gives null, cut at 127 characters; each may be null.
/// @return 1.
ZR_API int32_t ZrMsgBoxSetAppData(plat::Module* instance, HZRWINDOW mainWindow, const char16_t* title) noexcept;
/// Puts a hook in front of all boxes; null removes it. @return 1, or 0 on a thread that isn't the owner.
ZR_API int32_t ZrMsgBoxSetHook(ZRMSGBOXHOOK hook, void* data) noexcept;
/// Runs without a user interface: every box on the owner thread goes to `callback` and answers with its default
/// button; other threads get 0. Null removes this hook, and no other.
/// @return 1, or 0 on a thread that isn't the owner.
ZR_API int32_t ZrMsgBoxSetNoUIHook(ZRMSGBOXNOUI callback) noexcept;
/// Shows a message, or lets the hook answer it. While no window system is attached the text goes to the standard
/// error stream and the result is ZRID_NOBOX, never a silent yes.
/// @param parent null for the main window, kZrNoParent for none.
/// @param title null for the application's title.
/// @param flags bits of ZRMSGBOX_FLAGS.
/// @return a value of ZRMSGBOX_RESULT. [any thread, which it holds up]
ZR_API uint32_t ZrMessageBox(HZRWINDOW parent, const char16_t* text, const char16_t* title, uint32_t flags) noexcept;
