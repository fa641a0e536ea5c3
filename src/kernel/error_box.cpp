// SPDX-License-Identifier: Apache-2.0
// Shows a failure: its message, what the layers below added, and their link.
#include "kernel/error_state.h"
#include "kernel/strings.h"
#include "marlo110k/errors.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr size_t kWarningCharacters = 50;

/// What a box needs of the error state and its caller, kept beyond the state's clearing.
struct FailureTexts {
  char16_t body[kWarningCharacters + kDetailCharacters];
  char16_t details[kDetailCharacters];
  char16_t linkUrl[kUrlCharacters];
  char16_t linkText[kLinkCharacters];
};

}  // namespace
}  // namespace marlo

uint32_t ZrErrorHandler_MsgBox(HZRWINDOW parent, uint32_t flags, uintptr_t context, HRESULT code,
                               const char16_t* argument, int32_t warning) noexcept {
  if (code == ZR_E_CANCELLED) return ZRID_OK;
  return ZrErrorHandler_MsgBoxText(parent, flags, ZrErrorHandler_GetErrorMessage(context, code, argument), warning);
}

uint32_t ZrErrorHandler_MsgBoxText(HZRWINDOW parent, uint32_t flags, const char16_t* text, int32_t warning) noexcept {
  using namespace marlo;
  FailureTexts texts;
  size_t used = 0;
  if (warning != 0) used = plat::CopyText(texts.body, kWarningCharacters, KernelText(Text::kBoxWarning));
  plat::CopyText(texts.body + used, std::size(texts.body) - used, text);
  flags &= ~uint32_t{ZRMB_DETAILS};
  const char16_t* details = ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
  if (details != nullptr) {
    plat::CopyText(texts.details, kDetailCharacters, details);
    flags |= ZRMB_DETAILS;
  }
  plat::CopyText(texts.linkUrl, kUrlCharacters, errorState.linkUrl);
  plat::CopyText(texts.linkText, kLinkCharacters, errorState.linkText);
  // Before the box, which may stay open for long: the next failure starts clean.
  ZrErrorHandler_DetailsInit();
  return ZrMsgBox_CustomExLinkF(parent, flags, details != nullptr ? texts.details : nullptr, nullptr, nullptr,
                                texts.linkUrl, texts.linkText, u"%s", texts.body);
}
