// SPDX-License-Identifier: Apache-2.0
// The life of the library in a process: start, version check, end, and the host application's own facts.
//
// Loading the library starts the kernel and unloading ends it; a host calls nothing to get going. Threads that
// still use the library must have left it before it is unloaded or the process exits.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/window.h"
#include "marlo110k/export.h"

namespace plat {
struct Module;
}

/// Major version in the top 8 bits, minor in the next 8, build in the low 16: 11.0, build 701.
inline constexpr uint32_t kZrKernelVersion = 0x0B0002BD;
/// The generation of the interface that clients of this version were built for.
inline constexpr uint32_t kZrInterfaceGeneration = 3;

/// Flags of ZrKernel_EarlyInitialize.
enum ZRKERNEL_EARLY : uint32_t {
  ZRKERNEL_EARLY_APPKERNEL = 0x01,  ///< The module is the application's kernel itself.
  ZRKERNEL_EARLY_CLIENT = 0x20,     ///< A copy beside an application kernel; ignored with the bit above.
};

/// Starts the process-wide services. Loading the library has called it with its own module and flags 1; a host
/// that is a kernel of its own calls it again. Clock, processor detection, language and registered tokens stay as
/// they are then, module and flags are overwritten, and processor bits that are disallowed at this moment are
/// gone for good: a later ZrAllowCPUSupport doesn't bring them back.
/// @param module what ZrKernel_GetAppKernel gives from now on.
/// @param flags bits of ZRKERNEL_EARLY.
/// @return false when a service could not be started; the others run. [start-up thread]
ZR_API bool ZrKernel_EarlyInitialize(plat::Module* module, uint32_t flags) noexcept;
/// Ends what ZrKernel_EarlyInitialize started; a second call finds nothing to do. Unloading calls it.
/// @param module ignored.
/// @return 1. [start-up thread]
ZR_API int32_t ZrKernel_LateTerminate(plat::Module* module) noexcept;

/// The version word of this library. [any thread]
ZR_API uint32_t ZrKernel_GetVersion() noexcept;
/// Tells whether a client fits this kernel: the present interface generation and a version not above this one.
/// @param parent window for the message; null for the application's main window, kZrNoParent for none.
/// @param clientName the client's name in the ANSI code page, shown in the message; cut at 128 characters. May be
/// null.
/// @param interfaceGeneration kZrInterfaceGeneration of the client's headers.
/// @param reserved ignored.
/// @param quiet non-zero shows no message.
/// @return S_OK, or E_FAIL after the message. [any thread]
ZR_API HRESULT ZrKernel_CheckVersion(HZRWINDOW parent, const char* clientName, uint32_t clientVersion,
                                     uint32_t interfaceGeneration, uint32_t reserved, int32_t quiet) noexcept;

/// The module that the last ZrKernel_EarlyInitialize was given; null after ZrKernel_LateTerminate. [any thread]
ZR_API plat::Module* ZrKernel_GetAppKernel() noexcept;
/// Writes the full path of the application kernel, cut to fit.
/// @param size of `buffer` in characters.
/// @return S_OK, ZR_E_NOT_FOUND when there is no application kernel, E_FAIL without a buffer. [any thread]
ZR_API HRESULT ZrKernel_GetAppKernelPathName(char16_t* buffer, uint32_t size) noexcept;
/// Keeps the host's splash window handle for it; the library doesn't read it. [any thread]
ZR_API void ZrKernel_SetSplash(void* handle) noexcept;
/// Takes a window message that the host forwards: WM_SYSCOLORCHANGE reads the display facts again and resets the
/// colours, WM_DISPLAYCHANGE only reads the display facts. Others are ignored. [user-interface thread]
ZR_API void ZrKernel_UserPrefChanges(HZRWINDOW window, uint32_t message) noexcept;
