// SPDX-License-Identifier: Apache-2.0
// The details of a failure: lines that deeper layers add while it unwinds.
#include <atomic>
#include <cstdarg>
#include <cstring>

#include "kernel/printf_walk.h"
#include "marlo110k/errors.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

constexpr size_t kDetailCharacters = 8192;
constexpr size_t kUrlCharacters = 2083;
constexpr size_t kLinkCharacters = 2048;

/// The process's error state. Owner and code are asked by any thread; the rest belongs to the owner.
struct ErrorState {
  std::atomic<HRESULT> lastError;
  std::atomic<uint32_t> ownerThread;
  int32_t detailCount;
  size_t detailCharacters;
  char16_t details[kDetailCharacters];
  char16_t linkUrl[kUrlCharacters];
  char16_t linkText[kLinkCharacters];
};

constinit ErrorState state{};
constinit char16_t formatted[kDetailCharacters]{};

/// Takes the details for the calling thread, or tells that they are another's and the code is a new one.
bool MayAdd(HRESULT code) noexcept {
  const uint32_t caller = plat::CurrentThreadId();
  uint32_t owner = 0;
  if (state.ownerThread.compare_exchange_strong(owner, caller, std::memory_order_relaxed)) return true;
  return owner == caller || code == state.lastError.load(std::memory_order_relaxed);
}

HRESULT AddLine(HRESULT code, const char16_t* text) noexcept {
  const size_t characters = plat::TextLength(text);
  // The limit counts bytes, the line's end among them, and refuses a text that would just reach it.
  if ((state.detailCharacters + characters + 2) * sizeof(char16_t) >= sizeof(state.details)) return E_FAIL;
  char16_t* end = state.details + state.detailCharacters;
  std::memcpy(end, text, characters * sizeof(char16_t));
  std::memcpy(end + characters, u"\r\n", 3 * sizeof(char16_t));
  state.detailCharacters += characters + 2;
  ++state.detailCount;
  state.lastError.store(code, std::memory_order_relaxed);
  return S_OK;
}

}  // namespace
}  // namespace marlo

void ZrErrorHandler_DetailsInit() noexcept {
  using marlo::state;
  state.lastError.store(S_OK, std::memory_order_relaxed);
  state.detailCount = 0;
  state.detailCharacters = 0;
  std::memset(state.details, 0, sizeof(state.details));
  std::memset(state.linkUrl, 0, sizeof(state.linkUrl));
  std::memset(state.linkText, 0, sizeof(state.linkText));
  state.ownerThread.store(0, std::memory_order_relaxed);
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
  using marlo::state;
  if (code != nullptr) *code = state.lastError.load(std::memory_order_relaxed);
  if (lines != nullptr) *lines = state.detailCount;
  if (thread != nullptr) *thread = state.ownerThread.load(std::memory_order_relaxed);
  return state.detailCount != 0 ? state.details : nullptr;
}

HRESULT ZrErrorHandler_DetailsSetHyperlink(const char16_t* url, const char16_t* text) noexcept {
  using marlo::state;
  if (url == nullptr || text == nullptr) return E_POINTER;
  plat::CopyText(state.linkUrl, marlo::kUrlCharacters, url);
  plat::CopyText(state.linkText, marlo::kLinkCharacters, text);
  return S_OK;
}

HRESULT ZrErrorHandler_GetLastError() noexcept { return marlo::state.lastError.load(std::memory_order_relaxed); }
