// SPDX-License-Identifier: Apache-2.0
// The entry of every message box, and the hooks that answer it without a user interface.
#include <atomic>
#include <cstdio>
#include <string>

#include "kernel/msgbox_buttons.h"
#include "kernel/msgbox_internal.h"
#include "marlo110k/errors.h"
#include "platform/base/text.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

constexpr size_t kTitleCharacters = 128;

/// What the host set. Only the owner thread writes; any thread may show a box and reads.
struct BoxState {
  std::atomic<uint32_t> ownerThread;
  std::atomic<plat::Module*> instance;
  std::atomic<HZRWINDOW> mainWindow;
  std::atomic<ZRMSGBOXHOOK> hook;  // stored after its data, so that a reader that sees it sees them
  std::atomic<void*> hookData;
  char16_t title[kTitleCharacters];
};

constinit BoxState state{};

bool IsOwner() noexcept { return state.ownerThread.load(std::memory_order_relaxed) == plat::CurrentThreadId(); }

void SetHook(ZRMSGBOXHOOK hook, void* data) noexcept {
  state.hookData.store(data, std::memory_order_relaxed);
  state.hook.store(hook, std::memory_order_release);
}

/// The set of a box's flags; null for set 0 and for sets that don't exist, whose only button is OK.
const ButtonSet* ChoiceSet(uint32_t flags) noexcept {
  for (const ButtonSet& set : kButtonSets) {
    if (set.set == (flags & ZRMB_BUTTONS) && set.set != ZRMB_OK) return &set;
  }
  return nullptr;
}

/// The no-user-interface hook; its data is the callback.
uint32_t AnswerWithDefaultButton(void* data, HZRWINDOW, const char16_t* text, const char16_t*, uint32_t flags) {
  if (!IsOwner()) return ZRID_NOBOX;
  const ZRMSGBOXNOUI callback = reinterpret_cast<ZRMSGBOXNOUI>(data);
  callback(text);
  const ButtonSet* set = ChoiceSet(flags);
  if (set == nullptr) return ZRID_OK;
  const uint32_t index = (flags & ZRMB_DEFAULTBUTTON) >> 8;
  if (index < set->count) return set->results[index];
  callback(u"Invalid Message Box parameter...User intervention is needed!!!!");
  return ZRID_HOOKDECLINES;
}

}  // namespace

HZRWINDOW ResolveParent(HZRWINDOW parent) noexcept {
  if (parent == kZrNoParent) return nullptr;
  return parent != nullptr ? parent : state.mainWindow.load(std::memory_order_relaxed);
}

const char16_t* ApplicationTitle() noexcept { return state.title; }

bool HasHook() noexcept { return state.hook.load(std::memory_order_relaxed) != nullptr; }

bool AskHook(HZRWINDOW parent, const char16_t* text, const char16_t* title, uint32_t flags, uint32_t* answer) noexcept {
  const ZRMSGBOXHOOK hook = state.hook.load(std::memory_order_acquire);
  if (hook == nullptr) return false;
  *answer = hook(state.hookData.load(std::memory_order_relaxed), parent, text, title, flags);
  return *answer != ZRID_HOOKDECLINES;
}

void WriteToErrorStream(const char16_t* text, const char16_t* title) noexcept {
  try {
    const std::string message = plat::ToUtf8(text);
    const std::string heading = plat::ToUtf8(title);
    std::fprintf(stderr, "%s%s%s\n", heading.c_str(), heading.empty() ? "" : ": ", message.c_str());
  } catch (...) {
    std::fputs("A message could not be shown: the system is low on memory.\n", stderr);
  }
}

}  // namespace marlo

int32_t ZrMsgBoxSetAppData(plat::Module* instance, HZRWINDOW mainWindow, const char16_t* title) noexcept {
  using marlo::state;
  marlo::SetHook(nullptr, nullptr);
  state.instance.store(instance, std::memory_order_relaxed);
  state.mainWindow.store(mainWindow, std::memory_order_relaxed);
  plat::CopyText(state.title, marlo::kTitleCharacters, title);
  state.ownerThread.store(plat::CurrentThreadId(), std::memory_order_relaxed);
  return 1;
}

int32_t ZrMsgBoxSetHook(ZRMSGBOXHOOK hook, void* data) noexcept {
  if (!marlo::IsOwner()) return 0;
  marlo::SetHook(hook, data);
  return 1;
}

int32_t ZrMsgBoxSetNoUIHook(ZRMSGBOXNOUI callback) noexcept {
  if (!marlo::IsOwner()) return 0;
  if (callback != nullptr) {
    marlo::SetHook(marlo::AnswerWithDefaultButton, reinterpret_cast<void*>(callback));
  } else if (marlo::state.hook.load(std::memory_order_relaxed) == marlo::AnswerWithDefaultButton) {
    marlo::SetHook(nullptr, nullptr);
  }
  return 1;
}

uint32_t ZrMessageBox(HZRWINDOW parent, const char16_t* text, const char16_t* title, uint32_t flags) noexcept {
  uint32_t answer = ZRID_NOBOX;
  if (marlo::AskHook(marlo::ResolveParent(parent), text, title, flags, &answer)) return answer;
  marlo::WriteToErrorStream(text, title != nullptr ? title : marlo::ApplicationTitle());
  return ZRID_NOBOX;
}
