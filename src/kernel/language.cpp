// SPDX-License-Identifier: Apache-2.0
// Language handles: open, close, and the change of language.
#include "kernel/language.h"

#include <new>

#include "kernel/kernel_state.h"
#include "kernel/module_resources.h"
#include "marlo110k/list.h"
#include "platform/base/memory.h"
#include "platform/sys/module.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr uint32_t kLeastRingCharacters = 2048;
constexpr uint32_t kUsualRingCharacters = 8192;

constinit std::atomic<bool> processMirrored{false};
// Trivial, so that it doesn't pin the library.
constinit thread_local uint32_t threadLcid = 0;

uint32_t RingCharacters(uint32_t asked) noexcept {
  if (asked == 0) return kUsualRingCharacters;
  return asked < kLeastRingCharacters ? kLeastRingCharacters : asked;
}

/// The module's own language module, or the module itself.
void FindLanguageModule(ZrLanguage* language) noexcept {
  plat::Module* found = nullptr;
  try {
    const std::u16string path = LanguageModulePath(plat::ModulePath(language->mainModule));
    if (!path.empty()) found = plat::LoadDataModule(path.c_str());
  } catch (const std::bad_alloc&) {
    // Without memory for its path the module goes without.
  }
  language->ownsLanguageModule = found != nullptr;
  language->languageModule.store(found != nullptr ? found : language->mainModule, kRelaxed);
}

void ReleaseLanguageModule(ZrLanguage* language) noexcept {
  plat::Module* const module = language->languageModule.exchange(language->mainModule, kRelaxed);
  // Also those of a caller's module, which may be unloaded and give its address to another one.
  ForgetModuleResources(module);
  if (!language->ownsLanguageModule) return;
  language->ownsLanguageModule = false;
  plat::UnloadModule(module);
}

void SetLanguageModule(ZrLanguage* language, plat::Module* module) noexcept {
  ReleaseLanguageModule(language);
  language->languageModule.store(module, kRelaxed);
}

void ChangeLanguage(ZrLanguage* language, uint32_t lcid) noexcept {
  if (language->lcid.load(kRelaxed) == lcid) return;
  language->lcid.store(lcid, kRelaxed);
  language->slot.store(0, kRelaxed);
  const plat::LockGuard guard(&language->lock);
  ZrList_DeleteList(language->cache, 0, -1, 0);
}

}  // namespace

std::u16string LanguageModulePath(const std::u16string& modulePath) {
  const size_t folder = modulePath.find_last_of(u"/\\");
  const size_t name = folder == std::u16string::npos ? 0 : folder + 1;
  if (name == modulePath.size()) return {};
  // A library's version stands behind the extension: "libstudio.so.11" has "libstudio.LNG".
  size_t point = modulePath.find(u".so.", name);
  if (point == std::u16string::npos) point = modulePath.rfind(u'.');
  if (point == std::u16string::npos || point < name) point = modulePath.size();
  return modulePath.substr(0, point) + u".LNG";
}

ZrLanguage* LanguageOrKernel(HZRLANG language) noexcept {
  return language != nullptr ? language : kernelState.language.load(kRelaxed);
}

bool OpenKernelLanguage(plat::Module* module) noexcept {
  if (kernelState.language.load(kRelaxed) != nullptr) return true;
  HZRLANG language = nullptr;
  if (FAILED(ZrLang_Open(&language, module, 0, 0))) return false;
  kernelState.language.store(language, kRelaxed);
  return true;
}

void CloseKernelLanguage() noexcept { ZrLang_Close(kernelState.language.exchange(nullptr, kRelaxed)); }

uint32_t ThreadLcid() noexcept { return threadLcid; }

bool IsProcessMirrored() noexcept { return processMirrored.load(kRelaxed); }

}  // namespace marlo

using marlo::kernelState;
using marlo::kRelaxed;

HRESULT ZrLang_Open(HZRLANG* out, plat::Module* module, uint32_t lcid, uint32_t ringCharacters) noexcept {
  if (out == nullptr) return E_POINTER;
  if (*out != nullptr) return ZR_S_NO_CHANGE;
  void* block = plat::AllocateZeroed(sizeof(ZrLanguage));
  if (block == nullptr) return E_OUTOFMEMORY;
  auto* const language = new (block) ZrLanguage{};
  language->mainModule = module;
  language->languageModule.store(module, kRelaxed);
  language->ringCharacters = marlo::RingCharacters(ringCharacters);
  language->ring = static_cast<char16_t*>(plat::AllocateZeroed(sizeof(char16_t) * language->ringCharacters));
  HRESULT result = language->ring != nullptr ? S_OK : E_OUTOFMEMORY;
  if (SUCCEEDED(result)) {
    result = ZrList_CreateExZ(&language->cache, sizeof(void*), -1, -1, ZRLIST_ANYTHREAD | ZRLIST_HEAPLIST, 0, 0, 0);
  }
  if (FAILED(result)) {
    ZrLang_Close(language);
    return result;
  }
  language->lcid.store(lcid, kRelaxed);
  marlo::FindLanguageModule(language);
  plat::InitializeLock(&language->lock);
  language->lockReady = true;
  *out = language;
  return S_OK;
}

void ZrLang_Close(HZRLANG language) noexcept {
  if (language == nullptr) return;
  if (language->lockReady) plat::DeleteLock(&language->lock);
  marlo::ReleaseLanguageModule(language);
  marlo::ForgetModuleResources(language->mainModule);
  plat::FreeBlock(language->ring);
  ZrList_Destroy(language->cache);
  language->~ZrLanguage();
  plat::FreeBlock(language);
}

plat::Module* ZrLang_InstFromLang(HZRLANG language) noexcept {
  language = marlo::LanguageOrKernel(language);
  if (language == nullptr) return nullptr;
  plat::Module* const module = language->languageModule.load(kRelaxed);
  return module != nullptr && language->usesLanguageModule.load(kRelaxed) ? module : language->mainModule;
}

uint32_t ZrLang_GetLCID(HZRLANG language) noexcept {
  if (language == nullptr) language = kernelState.language.load(kRelaxed);
  return language != nullptr ? language->lcid.load(kRelaxed) : 0;
}

void ZrLang_ChangeLangInst(HZRLANG language, plat::Module* module) noexcept {
  HZRLANG const kernel = kernelState.language.load(kRelaxed);
  if (language != nullptr) marlo::SetLanguageModule(language, module);
  if (kernel != nullptr && kernel != language) marlo::SetLanguageModule(kernel, module);
}

int32_t ZrLang_UpdateKernelLCID(HZRLANG language, uint32_t lcid) noexcept {
  HZRLANG const kernel = kernelState.language.load(kRelaxed);
  if (kernel == nullptr || language == nullptr) return 0;
  if (lcid == 0) lcid = marlo::kEnglishLcid;
  // One lock after the other, never both.
  marlo::ChangeLanguage(language, lcid);
  marlo::ChangeLanguage(kernel, lcid);
  const bool usesModule = !ZrLang_IsLCIDEnglish(lcid);
  language->usesLanguageModule.store(usesModule, kRelaxed);
  kernel->usesLanguageModule.store(usesModule, kRelaxed);
  marlo::processMirrored.store(ZrLang_UseRTL(lcid), kRelaxed);
  return 1;
}

void ZrLang_UpdateThreadLocale(HZRLANG language) noexcept {
  marlo::threadLcid = language != nullptr ? language->lcid.load(kRelaxed) : 0;
}

void ZrLang_EnableProcessMirroring() noexcept { marlo::processMirrored.store(true, kRelaxed); }

void ZrLang_DisableProcessMirroring() noexcept { marlo::processMirrored.store(false, kRelaxed); }
