// SPDX-License-Identifier: Apache-2.0
// Finds the text behind an id, a descriptor or a plain text.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "kernel/language.h"
#include "kernel/string_tables.h"
#include "kernel/strings.h"
#include "marlo110k/list.h"
#include "platform/base/locale.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr uintptr_t kDescriptorAlignment = 4;
constexpr int32_t kCachedCharacters = 1024;
constexpr char16_t kTranslatorsMark[] = u"^*";
constexpr int32_t kMarkCharacters = 2;

int32_t StripMark(char16_t* text, int32_t characters) noexcept {
  if (characters < kMarkCharacters || text[0] != kTranslatorsMark[0] || text[1] != kTranslatorsMark[1]) {
    return characters;
  }
  const size_t rest = plat::TextLength(text + kMarkCharacters) + 1;
  std::memmove(text, text + kMarkCharacters, rest * sizeof(char16_t));
  return characters - kMarkCharacters;
}

/// The order in which modules and languages are asked for a string.
int32_t LoadByFallback(const ZrLanguage& language, uint32_t id, char16_t* buffer, int32_t size) noexcept {
  plat::Module* const module = language.languageModule.load(kRelaxed);
  if (module != nullptr && language.usesLanguageModule.load(kRelaxed)) {
    const int32_t characters = LoadTableString(module, id, language.lcid.load(kRelaxed), buffer, size);
    if (characters > 0) return characters;
  }
  if (module == language.mainModule) {
    const int32_t characters = LoadTableString(module, id, kEnglishLcid, buffer, size);
    if (characters > 0) return characters;
  }
  return LoadTableString(language.mainModule, id, 0, buffer, size);
}

int32_t CompareId(uint64_t, const void* key, const void* item) noexcept {
  const uint32_t wanted = *static_cast<const uint32_t*>(key);
  const uint32_t id = static_cast<const StringRecord*>(item)->id;
  return wanted < id ? -1 : wanted > id ? 1 : 0;
}

const char16_t* TextOfItem(const tZRLIST& cache, int32_t index) noexcept {
  return static_cast<const StringRecord*>(static_cast<void* const*>(cache.items)[index])->text;
}

/// A record with room for the longest text that is cached.
struct LongestRecord {
  uint32_t id;
  char16_t text[kCachedCharacters + 2];
};
static_assert(offsetof(LongestRecord, text) == offsetof(StringRecord, text));

/// Loads a string into the cache, whose lock is held.
const char16_t* CacheString(ZrLanguage* language, uint32_t id) noexcept {
  LongestRecord record;
  record.id = id;
  if (ZrLoadString(language, id, record.text, kCachedCharacters) <= 0) return kEmptyText;
  const size_t characters = plat::TextLength(record.text);
  const size_t bytes = (characters + 1) * sizeof(char16_t) + 8;
  const int32_t place = ZrList_FindSortedInsertIndexRange(language->cache, &id, 0, -1, CompareId);
  int32_t index = -1;
  if (FAILED(ZrList_AllocAndInsertItem(language->cache, &record, bytes, place, &index))) return kEmptyText;
  return TextOfItem(*language->cache, index);
}

int32_t FindSlot(uint32_t lcid) noexcept {
  const uint32_t wanted = ZrLang_GetConditionedLCID(lcid != 0 ? lcid : plat::UserLocale().lcid);
  const auto table = LanguageTable();
  const auto found =
      std::find_if(table.begin(), table.end(), [&](uint32_t row) { return ZrLang_GetConditionedLCID(row) == wanted; });
  return found != table.end() ? static_cast<int32_t>(found - table.begin()) + 1 : 1;
}

/// The handle's slot, worked out once. Two threads find the same.
uint32_t SlotOf(ZrLanguage* language) noexcept {
  int32_t slot = language->slot.load(kRelaxed);
  if (slot < 1) {
    slot = FindSlot(language->lcid.load(kRelaxed));
    language->slot.store(slot, kRelaxed);
  }
  return static_cast<uint32_t>(slot);
}

/// What a slot without a text stands for: the string of its id, or the English text.
const char16_t* ResolveSlot(const ZrLanguage& language, const zrlang_t& descriptor, uint32_t slot,
                            uintptr_t id) noexcept {
  const char16_t* text = nullptr;
  if (id != 0) {
    text =
        AdoptTableString(language.languageModule.load(kRelaxed), static_cast<uint32_t>(id), LanguageTable()[slot - 1]);
  }
  return text != nullptr ? text : descriptor.slots[0];
}

}  // namespace
}  // namespace marlo

bool IsZRLANGSTRINGID(HZRLANG, const void* pointer) noexcept {
  const uintptr_t address = reinterpret_cast<uintptr_t>(pointer);
  if (address < marlo::kFirstAddress || address % marlo::kDescriptorAlignment != 0) return false;
  return *static_cast<const char16_t*>(pointer) == kZrLangStringMagic;
}

const char16_t* ZrGetString(HZRLANG language, uint32_t id) noexcept {
  ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  if (owner == nullptr || owner->cache == nullptr) return marlo::kEmptyText;
  const plat::LockGuard guard(&owner->lock);
  const int32_t index = ZrList_FindSortedItemRange(owner->cache, &id, 0, -1, marlo::CompareId);
  return index >= 0 ? marlo::TextOfItem(*owner->cache, index) : marlo::CacheString(owner, id);
}

const char16_t* ZrGetString(HZRLANG language, const zrlang_t* descriptor) noexcept {
  if (descriptor == nullptr) return nullptr;
  ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  if (owner == nullptr) return descriptor->slots[0];
  const uint32_t slot = std::max(std::min<uint32_t>(marlo::SlotOf(owner), descriptor->slotCount), 1U);
  // Descriptors are writable although callers see them as constants: a slot is patched as it is first read.
  auto& place = const_cast<const char16_t*&>(descriptor->slots[slot - 1]);
  const std::atomic_ref<const char16_t*> shared(place);
  const char16_t* text = shared.load(std::memory_order_acquire);
  const uintptr_t id = reinterpret_cast<uintptr_t>(text);
  if (id >= marlo::kFirstAddress) return text;
  text = marlo::ResolveSlot(*owner, *descriptor, slot, id);
  shared.store(text, std::memory_order_release);
  return text;
}

const char16_t* ZrGetStringSmart(HZRLANG language, const void* value) noexcept {
  const uintptr_t number = reinterpret_cast<uintptr_t>(value);
  if (number == 0) return nullptr;
  if (number < marlo::kFirstAddress) return ZrGetString(language, static_cast<uint32_t>(number));
  if (!IsZRLANGSTRINGID(language, value)) return static_cast<const char16_t*>(value);
  return ZrGetString(language, static_cast<const zrlang_t*>(value));
}

int32_t ZrLoadString(HZRLANG language, uint32_t id, char16_t* buffer, int32_t size) noexcept {
  const ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  if (buffer == nullptr || size <= 0) return 0;
  buffer[0] = 0;
  if (owner == nullptr) return 0;
  return marlo::StripMark(buffer, marlo::LoadByFallback(*owner, id, buffer, size));
}

int32_t ZrLoadString(HZRLANG language, const zrlang_t* descriptor, char16_t* buffer, int32_t size) noexcept {
  if (buffer == nullptr || size <= 0) return 0;
  const char16_t* text = ZrGetString(language, descriptor);
  const size_t characters = plat::CopyText(buffer, static_cast<size_t>(size), text != nullptr ? text : u"");
  return marlo::StripMark(buffer, static_cast<int32_t>(characters));
}

const zrlang_t* ZrLang_GetCatalogueText(uint32_t index, const char16_t** name) noexcept {
  if (index >= marlo::kTexts) return nullptr;
  if (name != nullptr) *name = marlo::kTextNames[index].data();
  return &marlo::catalogue[index];
}
