// SPDX-License-Identifier: Apache-2.0
// Failures on their way to the user: codes and their texts, the details buffer, message boxes with their hooks, and
// the text of a crash.
//
// Failures travel as HRESULT. A layer that fails deep down adds a line of details; the layer that shows the
// failure gets them all. The details belong to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/exception.h"
#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"
#include "marlo110k/lang.h"

namespace plat {
struct Module;
}

// ---- Codes -----------------------------------------------------------------------------------------

/// The code of a platform error number (plat::LastError): E_FAIL for numbers without a row. [any thread]
ZR_API HRESULT ZrErrorHandler_TranslateWin32Error(uint32_t error) noexcept;
/// The code of a common dialog's error number. [any thread]
ZR_API HRESULT ZrErrorHandler_TranslateCommDlgError(uint32_t error) noexcept;

// ---- Texts of codes and operations -----------------------------------------------------------------

/// A row of an error table: a code, and its text as a plain text or a string descriptor.
struct _zrerror_table {
  HRESULT code;
  const void* text;
};
static_assert(sizeof(_zrerror_table) == 16 && offsetof(_zrerror_table, text) == 8);

/// The same with a string id of a language module, or a descriptor's address as a number.
struct _zrerror_table_rcid {
  HRESULT code;
  uint64_t text;
};
static_assert(sizeof(_zrerror_table_rcid) == 16 && offsetof(_zrerror_table_rcid, text) == 8);

/// Puts a table in front of the built-in one, behind those registered before; 32 at most. The table must stay.
/// @return 0; 1 when it can't be taken. [any thread]
ZR_API int32_t ZrErrorHandler_AddErrorTable(const _zrerror_table* table, int32_t rows) noexcept;
/// The same for texts of `language`.
ZR_API int32_t ZrErrorHandler_AddErrorTable(HZRLANG language, const _zrerror_table_rcid* table, int32_t rows) noexcept;
/// The text of a code, as a format; null when it has none. Most begin with two line feeds, so that they stand apart
/// from the operation. [any thread]
ZR_API const char16_t* ZrErrorHandler_GetHresultString(HRESULT code) noexcept;
/// The text of an operation, as a format that may hold one "%s". @param context the number of an operation, of which
/// an unknown one counts as 0, or the address of a plain text (above 0xFFFF), which comes back. [any thread]
ZR_API const char16_t* ZrErrorHandler_GetContextString(uintptr_t context) noexcept;
/// Composes what a user reads: the operation with its argument, then the explanation of the code unless the
/// operation's text takes 1948 characters or more.
/// @param argument fills "%s"; null is the empty text.
/// @return a buffer of the process, valid until the next call or until the error state is cleared. [one thread]
ZR_API const char16_t* ZrErrorHandler_GetErrorMessage(uintptr_t context, HRESULT code,
                                                      const char16_t* argument) noexcept;
/// The same in a new platform string, followed by the details when there are any:
/// "\r\n<Details>\r\n", the lines, "\r\n</Details>".
/// @return null when memory is short; free with ZrErrorHandler_FreeErrorText. [one thread]
ZR_API char16_t* ZrErrorHandler_ComposeErrorText(uintptr_t context, HRESULT code, const char16_t* argument) noexcept;
/// Frees a text of ZrErrorHandler_ComposeErrorText; null is allowed. [any thread]
ZR_API void ZrErrorHandler_FreeErrorText(char16_t* text) noexcept;

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
  ZRMB_CHECKBOX = 0x1000,       ///< A check box is shown; boxes with a check state only.
  ZRMB_DETAILS = 0xC000,        ///< A details text goes with the box.
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
  ZRID_NODIALOG = 0xFFFFFFFF,      ///< -1: a box with details, check box or title of its own can't be created.
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

/// Formats (as ZrPrintF, to 8191 characters) and calls ZrMessageBox with the application's title. The format step
/// runs only when the text holds "%" or "$". [any thread, which it holds up]
ZR_API uint32_t ZrMsgBoxF(HZRWINDOW parent, uint32_t flags, const char16_t* format, ...) noexcept;
/// The same with a format by string id, descriptor or plain text.
ZR_API uint32_t ZrMsgBoxId(HZRLANG language, HZRWINDOW parent, uint32_t flags, const void* text, ...) noexcept;
/// The same with a finished text.
ZR_API uint32_t ZrMsgBoxNoF(HZRWINDOW parent, uint32_t flags, const char16_t* text) noexcept;

// Boxes with the library's own buttons, details, check box, link and title. The hook gets the body, followed by the
// details as ZrErrorHandler_ComposeErrorText writes them, and the application's title. While no window system is
// attached, what no hook answers goes to the standard error stream and gives ZRID_NODIALOG. A box that asks for
// details (ZRMB_DETAILS) without a text, or for a check box without a state where the form has one, gives 0 and
// shows nothing. Formats as for ZrMsgBoxF. [any thread, which it holds up]

/// A box with details. @param details may be null without ZRMB_DETAILS.
ZR_API uint32_t ZrMsgBox_CustomF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* format,
                                 ...) noexcept;
/// The same with a finished text.
ZR_API uint32_t ZrMsgBox_CustomNoF(HZRWINDOW parent, uint32_t flags, const char16_t* details,
                                   const char16_t* text) noexcept;
/// A box with a check box. @param checkText its label; null for the library's own.
/// @param checkState read when the box opens and written when it closes.
ZR_API uint32_t ZrMsgBox_CustomExF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* checkText,
                                   int32_t* checkState, const char16_t* format, ...) noexcept;
/// The same with a finished text.
ZR_API uint32_t ZrMsgBox_CustomExNoF(HZRWINDOW parent, uint32_t flags, const char16_t* details,
                                     const char16_t* checkText, int32_t* checkState, const char16_t* text) noexcept;
/// The same with a link line. @param url null for none. @param linkText null for none.
ZR_API uint32_t ZrMsgBox_CustomExLinkF(HZRWINDOW parent, uint32_t flags, const char16_t* details,
                                       const char16_t* checkText, int32_t* checkState, const char16_t* url,
                                       const char16_t* linkText, const char16_t* format, ...) noexcept;
/// A box with a title of its own.
ZR_API uint32_t ZrMsgBox_TitledF(HZRWINDOW parent, uint32_t flags, const char16_t* title, const char16_t* details,
                                 const char16_t* format, ...) noexcept;
/// The same with a finished text.
ZR_API uint32_t ZrMsgBox_TitledNoF(HZRWINDOW parent, uint32_t flags, const char16_t* title, const char16_t* details,
                                   const char16_t* text) noexcept;

// ---- Showing a failure -----------------------------------------------------------------------------

/// Shows what ZrErrorHandler_GetErrorMessage composes, with the details, and clears the error state before the box
/// opens. ZR_E_CANCELLED shows nothing and gives ZRID_OK: the user knows.
/// @param warning non-zero puts "Warning: " in front.
ZR_API uint32_t ZrErrorHandler_MsgBox(HZRWINDOW parent, uint32_t flags, uintptr_t context, HRESULT code,
                                      const char16_t* argument, int32_t warning) noexcept;
/// The same with a finished text.
ZR_API uint32_t ZrErrorHandler_MsgBoxText(HZRWINDOW parent, uint32_t flags, const char16_t* text,
                                          int32_t warning) noexcept;

// ---- Crash text: ANSI, for files and consoles ------------------------------------------------------

/// What a dump tells.
enum ZRDUMP_FLAGS : uint32_t {
  ZRDUMP_EXCEPTION = 0x01,
  ZRDUMP_MODULE = 0x02,
  ZRDUMP_THREAD = 0x20,
  ZRDUMP_ALL = 0xFF,  ///< What 0 means.
};

/// Writes the exception in words; stops before a line when fewer than 50 bytes are left.
/// @return the bytes written, without the terminator; 0 without buffer or record. [any thread]
ZR_API uint32_t ZrErrorHandler_DumpExceptionRecord(char* buffer, uint32_t size, const char* threadName,
                                                   const EXCEPTION_POINTERS* pointers, uint32_t flags) noexcept;
/// Writes memory in lines of 8 bytes: address, hexadecimal, text. What can't be read shows as "..". Stops before a
/// line that would come within 50 bytes of the buffer's end.
/// @return the bytes written, without the terminator. [any thread]
ZR_API uint32_t ZrErrorHandler_DumpHex(char* buffer, uint32_t size, const void* address, uint32_t bytes) noexcept;
/// The same in lines of four 32-bit values. @param values counts them.
ZR_API uint32_t ZrErrorHandler_DumpHexDWords(char* buffer, uint32_t size, const void* address,
                                             uint32_t values) noexcept;
/// Decides about an exception and shows it with its dump as details.
/// @return 0 to go on searching (a misaligned access, a debugger, no record), 1 to execute the handler.
ZR_API int32_t ZrErrorHandler_ExceptionFilter(const EXCEPTION_POINTERS* pointers, const char* threadName) noexcept;
