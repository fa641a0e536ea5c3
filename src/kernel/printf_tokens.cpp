// SPDX-License-Identifier: Apache-2.0
// Keeps the tokens in one list sorted by name; its own lock guards every look-up.
#include "kernel/printf_tokens.h"

#include <cstring>

#include "kernel/kernel_state.h"
#include "marlo110k/list.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

/// One block: this head, the name's text, and the value's text on the next multiple of 4.
struct TokenItem {
  uint32_t zero;
  const char16_t* name;
  uint32_t valueCharacters;
  const char16_t* value;
};

int32_t CompareName(uint64_t, const void* key, const void* item) {
  return plat::CompareTextNoCase(static_cast<const char16_t*>(key), static_cast<const TokenItem*>(item)->name);
}

tZRLIST* Tokens() noexcept { return kernelState.tokens.load(std::memory_order_relaxed); }

/// Index of the token, or -1. The caller holds the list's lock.
int32_t FindToken(tZRLIST* tokens, const char16_t* name) noexcept {
  return ZrList_FindSortedItemRange(tokens, name, 0, -1, CompareName);
}

size_t TextBytes(size_t characters) noexcept { return (characters + 1) * sizeof(char16_t); }

/// Makes a token the list's pending item. @return false when memory is short.
bool AllocateToken(tZRLIST* tokens, const char16_t* name, const char16_t* value) noexcept {
  constexpr size_t kAlignment = 4;
  const size_t nameBytes = TextBytes(plat::TextLength(name));
  const size_t valueCharacters = plat::TextLength(value);
  const size_t valueOffset = (sizeof(TokenItem) + nameBytes + kAlignment - 1) / kAlignment * kAlignment;
  void* block = nullptr;
  if (FAILED(ZrList_AllocItem(tokens, valueOffset + TextBytes(valueCharacters), &block))) return false;
  char* bytes = static_cast<char*>(block);
  std::memcpy(bytes + sizeof(TokenItem), name, nameBytes);
  std::memcpy(bytes + valueOffset, value, TextBytes(valueCharacters));
  new (block) TokenItem{0, reinterpret_cast<const char16_t*>(bytes + sizeof(TokenItem)),
                        static_cast<uint32_t>(valueCharacters), reinterpret_cast<const char16_t*>(bytes + valueOffset)};
  return true;
}

}  // namespace

bool PutToken(TextOutput* output, const char16_t* name) noexcept {
  tZRLIST* tokens = Tokens();
  if (tokens == nullptr) return false;
  const plat::LockGuard guard(&tokens->lock);
  const int32_t index = FindToken(tokens, name);
  if (index < 0) return false;
  const TokenItem* token = static_cast<TokenItem* const*>(tokens->items)[index];
  output->Put(token->value, token->valueCharacters);
  return true;
}

}  // namespace marlo

int32_t ZrPrintF_AddToken(const char16_t* name, const char16_t* value) noexcept {
  tZRLIST* tokens = marlo::Tokens();
  if (tokens == nullptr || name == nullptr) return 0;
  // Held over all steps: a reader sees the old token, or the new one, or for lack of memory none.
  const plat::LockGuard guard(&tokens->lock);
  ZrPrintF_DeleteToken(name);
  if (!marlo::AllocateToken(tokens, name, value != nullptr ? value : u"")) return 0;
  const int32_t place = ZrList_FindSortedInsertIndexRange(tokens, name, 0, -1, marlo::CompareName);
  if (SUCCEEDED(ZrList_InsertList(tokens, place, nullptr, -1))) return 1;
  ZrList_DeleteList(tokens, -1, -1, 0);  // the pending item
  return 0;
}

int32_t ZrPrintF_DeleteToken(const char16_t* name) noexcept {
  tZRLIST* tokens = marlo::Tokens();
  if (tokens == nullptr || name == nullptr) return 0;
  const plat::LockGuard guard(&tokens->lock);
  const int32_t index = marlo::FindToken(tokens, name);
  if (index < 0) return 0;
  ZrList_DeleteList(tokens, index, 1, 0);
  return 1;
}
