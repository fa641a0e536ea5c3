// SPDX-License-Identifier: Apache-2.0
// The forms of message boxes: each formats its text, fills a request, asks the hook and runs the box.
#include <cstdarg>
#include <string>

#include "kernel/msgbox_internal.h"
#include "kernel/printf_walk.h"
#include "kernel/strings.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

/// A box's text: the caller's own when there is nothing to format.
class BoxText {
 public:
  BoxText(const char16_t* format, va_list arguments) noexcept {
    if (format == nullptr) return;
    text_ = format;
    if (!HoldsFormat(format)) return;
    ZrNVPrintF(buffer_, kCharacters, nullptr, format, arguments);
    text_ = buffer_;
  }
  const char16_t* Get() const noexcept { return text_; }

 private:
  static constexpr uint32_t kCharacters = 8192;
  const char16_t* text_ = u"";
  char16_t buffer_[kCharacters];
};

bool WantsDetails(uint32_t flags) noexcept { return (flags & ZRMB_DETAILS) != 0; }
bool WantsCheckBox(uint32_t flags) noexcept { return (flags & ZRMB_CHECKBOX) != 0; }

/// A request that asks for what it doesn't bring isn't shown.
bool IsComplete(const BoxRequest& request, bool hasCheckState) noexcept {
  if (WantsDetails(request.flags) && request.details == nullptr) return false;
  return !hasCheckState || !WantsCheckBox(request.flags) || request.checkState != nullptr;
}

/// The body as hooks and streams read it: with the details behind it.
std::u16string WholeText(const BoxRequest& request) {
  std::u16string text = request.text;
  if (WantsDetails(request.flags)) text.append(u"\r\n<Details>\r\n").append(request.details).append(u"\r\n</Details>");
  return text;
}

uint32_t RunBox(HZRWINDOW parent, BoxRequest* request) noexcept {
  if (WantsCheckBox(request->flags) && request->checkText == nullptr)
    request->checkText = KernelText(Text::kBoxRemember);
  std::u16string whole;
  bool isWhole = true;
  try {
    whole = WholeText(*request);
  } catch (...) {
    // Without memory for the details the body alone has to do.
    isWhole = false;
  }
  const char16_t* text = isWhole ? whole.c_str() : request->text;
  uint32_t answer = ZRID_NODIALOG;
  if (AskHook(ResolveParent(parent), text, ApplicationTitle(), request->flags, &answer)) return answer;
  WriteToErrorStream(text, request->title != nullptr ? request->title : ApplicationTitle());
  return ZRID_NODIALOG;
}

uint32_t ShowBox(HZRWINDOW parent, BoxRequest request, bool hasCheckState, const char16_t* format,
                 va_list arguments) noexcept {
  if (!IsComplete(request, hasCheckState)) return ZRID_NOBOX;
  const BoxText text(format, arguments);
  request.text = text.Get();
  return RunBox(parent, &request);
}

uint32_t ShowPlainBox(HZRWINDOW parent, uint32_t flags, const char16_t* format, va_list arguments) noexcept {
  const BoxText text(format, arguments);
  return ZrMessageBox(parent, text.Get(), nullptr, flags);
}

}  // namespace
}  // namespace marlo

uint32_t ZrMsgBoxF(HZRWINDOW parent, uint32_t flags, const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = marlo::ShowPlainBox(parent, flags, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBoxId(HZRLANG language, HZRWINDOW parent, uint32_t flags, const void* text, ...) noexcept {
  va_list arguments;
  va_start(arguments, text);
  const uint32_t result = marlo::ShowPlainBox(parent, flags, ZrGetStringSmart(language, text), arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBoxNoF(HZRWINDOW parent, uint32_t flags, const char16_t* text) noexcept {
  return ZrMsgBoxF(parent, flags, u"%s", text != nullptr ? text : u"");
}

uint32_t ZrMsgBox_CustomF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* format,
                          ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = marlo::ShowBox(parent, {.flags = flags, .details = details}, false, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBox_CustomNoF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* text) noexcept {
  return ZrMsgBox_CustomF(parent, flags, details, u"%s", text != nullptr ? text : u"");
}

uint32_t ZrMsgBox_CustomExF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* checkText,
                            int32_t* checkState, const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result =
      marlo::ShowBox(parent, {.flags = flags, .details = details, .checkText = checkText, .checkState = checkState},
                     true, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBox_CustomExNoF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* checkText,
                              int32_t* checkState, const char16_t* text) noexcept {
  return ZrMsgBox_CustomExF(parent, flags, details, checkText, checkState, u"%s", text != nullptr ? text : u"");
}

uint32_t ZrMsgBox_CustomExLinkF(HZRWINDOW parent, uint32_t flags, const char16_t* details, const char16_t* checkText,
                                int32_t* checkState, const char16_t* url, const char16_t* linkText,
                                const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result = marlo::ShowBox(parent,
                                         {.flags = flags,
                                          .details = details,
                                          .checkText = checkText,
                                          .checkState = checkState,
                                          .linkUrl = url,
                                          .linkText = linkText},
                                         true, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBox_TitledF(HZRWINDOW parent, uint32_t flags, const char16_t* title, const char16_t* details,
                          const char16_t* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  const uint32_t result =
      marlo::ShowBox(parent, {.flags = flags, .details = details, .title = title}, false, format, arguments);
  va_end(arguments);
  return result;
}

uint32_t ZrMsgBox_TitledNoF(HZRWINDOW parent, uint32_t flags, const char16_t* title, const char16_t* details,
                            const char16_t* text) noexcept {
  return ZrMsgBox_TitledF(parent, flags, title, details, u"%s", text != nullptr ? text : u"");
}
