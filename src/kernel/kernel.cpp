// SPDX-License-Identifier: Apache-2.0
// The kernel's life and identity at the boundary.
#include "marlo110k/kernel.h"

#include <cstring>

#include "kernel/file_name.h"
#include "kernel/kernel_state.h"
#include "kernel/startup.h"
#include "kernel/strings.h"
#include "kernel/system_facts.h"
#include "marlo110k/errors.h"
#include "marlo110k/printf.h"
#include "platform/base/codepage.h"
#include "platform/base/text.h"
#include "platform/sys/file_backend.h"
#include "platform/sys/module.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr size_t kClientNameCharacters = 128;
constexpr uint32_t kOldestMajorVersion = 4;

}  // namespace

bool IsRundllPath(const char16_t* path) noexcept {
  return path != nullptr && plat::CompareTextNoCase(FileNameOf(path), u"RunDLL32.exe") == 0;
}

bool ClientFits(const char* clientName, uint32_t clientVersion, uint32_t interfaceGeneration, char16_t* message,
                uint32_t characters) noexcept {
  if (GetSystemVersion().major < kOldestMajorVersion) {
    plat::CopyText(message, characters, KernelText(Text::kKernelOldSystem));
    return false;
  }
  if (interfaceGeneration == kZrInterfaceGeneration) {
    if (clientVersion <= kZrKernelVersion) return true;
    plat::CopyText(message, characters, KernelText(Text::kKernelTooOld));
    return false;
  }
  char16_t name[kClientNameCharacters + 1];
  const size_t nameBytes = clientName != nullptr ? std::strlen(clientName) : 0;
  name[plat::FromAnsi(clientName, nameBytes, name, kClientNameCharacters)] = 0;
  ZrCchPrintF(message, characters, nullptr, KernelText(Text::kKernelIncompatible), name);
  return false;
}

}  // namespace marlo

using marlo::kernelState;
using marlo::kRelaxed;

bool ZrKernel_EarlyInitialize(plat::Module* module, uint32_t flags) noexcept {
  return marlo::RunEarlyStages(module, flags);
}

int32_t ZrKernel_LateTerminate(plat::Module*) noexcept {
  marlo::RunLateStages();
  return 1;
}

uint32_t ZrKernel_GetVersion() noexcept { return kZrKernelVersion; }

HRESULT ZrKernel_CheckVersion(HZRWINDOW parent, const char* clientName, uint32_t clientVersion,
                              uint32_t interfaceGeneration, uint32_t, int32_t quiet) noexcept {
  constexpr uint32_t kMessageCharacters = 256;
  char16_t message[kMessageCharacters];
  if (marlo::ClientFits(clientName, clientVersion, interfaceGeneration, message, kMessageCharacters)) return S_OK;
  if (quiet == 0) ZrMessageBox(parent, message, marlo::KernelText(marlo::Text::kKernelName), ZRMB_ICONINFORMATION);
  return E_FAIL;
}

plat::Module* ZrKernel_GetAppKernel() noexcept { return kernelState.appKernel.load(kRelaxed); }

HRESULT ZrKernel_GetAppKernelPathName(char16_t* buffer, uint32_t size) noexcept {
  if (buffer == nullptr || size == 0) return E_FAIL;
  buffer[0] = 0;
  try {
    const std::u16string path = plat::ModulePath(ZrKernel_GetAppKernel());
    if (path.empty()) return ZrErrorHandler_TranslateWin32Error(plat::LastError());
    plat::CopyText(buffer, size, path.c_str());
    return S_OK;
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

void ZrKernel_SetSplash(void* handle) noexcept { kernelState.splash.store(handle, kRelaxed); }

void ZrKernel_UserPrefChanges(HZRWINDOW, uint32_t message) noexcept {
  if (message != WM_SYSCOLORCHANGE && message != WM_DISPLAYCHANGE) return;
  marlo::RefreshDisplayFacts();
  if (message == WM_SYSCOLORCHANGE) marlo::RunColourChangeStages();
}
