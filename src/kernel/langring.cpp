// SPDX-License-Identifier: Apache-2.0
// The ring of temporary texts of a language handle, and the conversions that write into it.
#include <algorithm>
#include <cstring>

#include "kernel/language.h"
#include "platform/base/codepage.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr uint32_t kReserveCharacters = 1024;  // always left behind the cursor

/// A piece of the ring and the characters up to the ring's end.
struct RingPiece {
  char16_t* text = nullptr;
  size_t room = 0;
};

/// The cursor moves by what is asked for, whatever the room: a caller stays below the reserve.
RingPiece TakeFromRing(ZrLanguage* language, uint32_t characters) noexcept {
  if (language == nullptr || language->ring == nullptr) return {};
  const plat::LockGuard guard(&language->lock);
  if (language->ringCursor > language->ringCharacters - kReserveCharacters) language->ringCursor = 0;
  char16_t* const text = language->ring + language->ringCursor;
  const size_t room = language->ringCharacters - language->ringCursor;
  if (characters == 0) *text = 0;
  const uint64_t next = (uint64_t{characters} + language->ringCursor + 2) & ~uint64_t{1};
  language->ringCursor = static_cast<uint32_t>(std::min<uint64_t>(next, language->ringCharacters));
  return {text, room};
}

uint32_t Held(uint64_t characters) noexcept {
  return static_cast<uint32_t>(std::min<uint64_t>(characters, UINT32_MAX));
}

}  // namespace
}  // namespace marlo

char16_t* ZrGetTempStringBuffer(HZRLANG language, uint32_t characters) noexcept {
  return marlo::TakeFromRing(marlo::LanguageOrKernel(language), characters).text;
}

const char* ZrGetMultiByteFromPrintString(HZRLANG language, const char16_t* text) noexcept {
  const size_t characters = plat::TextLength(text);
  const uint64_t bytes = uint64_t{characters} * 2 + 2;
  const marlo::RingPiece piece = marlo::TakeFromRing(marlo::LanguageOrKernel(language), marlo::Held(bytes));
  if (piece.text == nullptr) return nullptr;
  auto* const result = reinterpret_cast<char*>(piece.text);
  const size_t room = std::min<size_t>(bytes, piece.room * sizeof(char16_t));
  result[plat::ToAnsi(text, characters, result, room - 1)] = 0;
  return result;
}

const char16_t* ZrGetPrintFromMultiByteString(HZRLANG language, const char* text) noexcept {
  const size_t bytes = text != nullptr ? std::strlen(text) : 0;
  if (bytes == 0) return marlo::kEmptyText;
  const marlo::RingPiece piece =
      marlo::TakeFromRing(marlo::LanguageOrKernel(language), marlo::Held(uint64_t{bytes} + 1));
  if (piece.text == nullptr) return marlo::kEmptyText;
  piece.text[plat::FromAnsi(text, bytes, piece.text, piece.room - 1)] = 0;
  return piece.text;
}

const char16_t* ZrGetWideFromPrintString(HZRLANG language, const char16_t* text) noexcept {
  const ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  return owner != nullptr && owner->ring != nullptr ? text : marlo::kEmptyText;
}

const char16_t* ZrGetPrintFromWideString(HZRLANG language, const char16_t* text) noexcept {
  return ZrGetWideFromPrintString(language, text);
}
