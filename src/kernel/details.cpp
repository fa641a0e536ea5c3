// SPDX-License-Identifier: Apache-2.0
// The details of a failure: lines that deeper layers add while it unwinds.
#include <cstdarg>
#include <cstring>

#include "kernel/error_state.h"
#include "kernel/printf_walk.h"
#include "marlo110k/errors.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

constinit char16_t formatted[kDetailCharacters]{};

/// Takes the details for the calling thread, or tells that they are another's and the code is a new one.
bool MayAdd(HRESULT code) noexcept {
  const uint32_t caller = plat::CurrentThreadId();
  uint32_t owner = 0;
  if (errorState.ownerThread.compare_exchange_strong(owner, caller, std::memory_order_relaxed)) return true;
  return owner == caller || code == errorState.lastError.load(std::memory_order_relaxed);
}

HRESULT AddLine(HRESULT code, const char16_t* text) noexcept {
  const size_t characters = plat::TextLength(text);
  // The limit counts bytes, the line's end among them, and refuses a text that would just reach it.
  if ((errorState.detailCharacters + characters + 2) * sizeof(char16_t) >= sizeof(errorState.details)) return E_FAIL;
  char16_t* end = errorState.details + errorState.detailCharacters;
  std::memcpy(end, text, characters * sizeof(char16_t));
  std::memcpy(end + characters, u"\r\n", 3 * sizeof(char16_t));
  errorState.detailCharacters += characters + 2;
  ++errorState.detailCount;
  errorState.lastError.store(code, std::memory_order_relaxed);
  return S_OK;
}

}  // namespace

constinit ErrorState errorState{};

}  // namespace marlo

void ZrErrorHandler_DetailsInit() noexcept {
  using marlo::errorState;
  errorState.lastError.store(S_OK, std::memory_order_relaxed);
  std::memset(errorState.message, 0, sizeof(errorState.message));
  errorState.detailCount = 0;
  errorState.detailCharacters = 0;
  std::memset(errorState.details, 0, sizeof(errorState.details));
  std::memset(errorState.linkUrl, 0, sizeof(errorState.linkUrl));
  std::memset(errorState.linkText, 0, sizeof(errorState.linkText));
  errorState.ownerThread.store(0, std::memory_order_relaxed);
}

HRESULT ZrErrorHandler_DetailsAddString(HRESULT code, const char16_t* format, ...) noexcept {
  if (!marlo::MayAdd(code)) return E_FAIL;
  if (format == nullptr) return E_POINTER;
  if (!marlo::HoldsFormat(format)) return marlo::AddLine(code, format);
  va_list arguments;
  va_start(arguments, format);
  ZrNVPrintF(marlo::formatted, marlo::kDetailCharacters, nullptr, format, arguments);
  va_end(arguments);
  return marlo::AddLine(code, marlo::formatted);
}

const char16_t* ZrErrorHandler_DetailsInfo(HRESULT* code, int32_t* lines, uint32_t* thread) noexcept {
  using marlo::errorState;
  if (code != nullptr) *code = errorState.lastError.load(std::memory_order_relaxed);
  if (lines != nullptr) *lines = errorState.detailCount;
  if (thread != nullptr) *thread = errorState.ownerThread.load(std::memory_order_relaxed);
  return errorState.detailCount != 0 ? errorState.details : nullptr;
}

HRESULT ZrErrorHandler_DetailsSetHyperlink(const char16_t* url, const char16_t* text) noexcept {
  using marlo::errorState;
  if (url == nullptr || text == nullptr) return E_POINTER;
  plat::CopyText(errorState.linkUrl, marlo::kUrlCharacters, url);
  plat::CopyText(errorState.linkText, marlo::kLinkCharacters, text);
  return S_OK;
}

HRESULT ZrErrorHandler_GetLastError() noexcept { return marlo::errorState.lastError.load(std::memory_order_relaxed); }
