// SPDX-License-Identifier: Apache-2.0
// Tells which character set a text without a mark may be in.
#include "marlo110k/lang.h"
#include "platform/base/charset_guess.h"
#include "platform/base/codepage.h"

namespace {

constexpr uint32_t kJapanesePage = 932;  // the one double-byte page that the process can have
constexpr int32_t kCertain = 100;

bool IsLead(uint8_t byte) noexcept { return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC); }

bool IsTrail(uint8_t byte) noexcept { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }

}  // namespace

bool ZrLang_DetectMultiByteCharacters(const uint8_t* text, uint32_t bytes) noexcept {
  if (text == nullptr || bytes < 2 || plat::AnsiPage() != kJapanesePage) return false;
  for (uint32_t i = 0; i + 1 < bytes && text[i] != 0; ++i) {
    if (IsLead(text[i]) && IsTrail(text[i + 1])) return true;
  }
  return false;
}

HRESULT ZrLang_DetectPossibleCodepage(const uint8_t* text, uint32_t bytes, uint32_t* codePage) noexcept {
  if (codePage == nullptr) return E_POINTER;
  *codePage = 0;
  const plat::CharsetGuess guess = plat::GuessCharset(text, bytes);
  if (guess.confidence < kCertain || guess.codePage == 0) return ZR_E_NO_CODEPAGE;
  *codePage = guess.codePage;
  return S_OK;
}
