// SPDX-License-Identifier: Apache-2.0
// Finds the text behind an id, a descriptor or a plain text.
#include "kernel/strings.h"

namespace marlo {
namespace {

constexpr uintptr_t kFirstAddress = 0x10000;  // what is below is a string id
constexpr uintptr_t kDescriptorAlignment = 4;

/// What an id without a text gives. Never written.
constexpr char16_t kEmptyText[] = u"";

}  // namespace
}  // namespace marlo

bool IsZRLANGSTRINGID(HZRLANG, const void* pointer) noexcept {
  const uintptr_t address = reinterpret_cast<uintptr_t>(pointer);
  if (address < marlo::kFirstAddress || address % marlo::kDescriptorAlignment != 0) return false;
  return *static_cast<const char16_t*>(pointer) == kZrLangStringMagic;
}

const char16_t* ZrGetString(HZRLANG, uint32_t) noexcept { return marlo::kEmptyText; }

const char16_t* ZrGetString(HZRLANG, const zrlang_t* descriptor) noexcept {
  return descriptor != nullptr ? descriptor->slots[0] : nullptr;
}

const char16_t* ZrGetStringSmart(HZRLANG language, const void* value) noexcept {
  const uintptr_t number = reinterpret_cast<uintptr_t>(value);
  if (number == 0) return nullptr;
  if (number < marlo::kFirstAddress) return ZrGetString(language, static_cast<uint32_t>(number));
  if (!IsZRLANGSTRINGID(language, value)) return static_cast<const char16_t*>(value);
  return ZrGetString(language, static_cast<const zrlang_t*>(value));
}
