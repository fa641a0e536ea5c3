// SPDX-License-Identifier: Apache-2.0
// Finds and loads the resources of a language handle's modules.
#include <new>

#include "kernel/language.h"
#include "kernel/module_resources.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/resources.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr size_t kLanguagesCharacters = 260;

/// A place in a module's resources.
HZRRESOURCE FindInModule(plat::Module* module, const char16_t* type, const char16_t* name, uint32_t lcid) noexcept {
  if (module == nullptr) return nullptr;
  try {
    const ResourcesGuard guard;
    ModuleResources* const resources = ResourcesOf(module);
    plat::ResourceEntry entry;
    if (!FindEntry(*resources, type, name, lcid, &entry)) return nullptr;
    resources->isLent = true;
    return reinterpret_cast<HZRRESOURCE>(entry.data);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// In the language module, while it is in use.
HZRRESOURCE FindInLanguage(const ZrLanguage& language, const char16_t* type, const char16_t* name) noexcept {
  if (!language.usesLanguageModule.load(kRelaxed)) return nullptr;
  return FindInModule(language.languageModule.load(kRelaxed), type, name, language.lcid.load(kRelaxed));
}

HZRRESOURCE FindInMain(const ZrLanguage& language, const char16_t* type, const char16_t* name) noexcept {
  HZRRESOURCE found = nullptr;
  if (language.languageModule.load(kRelaxed) == language.mainModule) {
    found = FindInModule(language.mainModule, type, name, kEnglishLcid);
  }
  return found != nullptr ? found : FindInModule(language.mainModule, type, name, 0);
}

/// The entry whose data a find gave, which the caller may have made up. Empty data stands where the next entry does,
/// or at the end, and counts as none.
bool EntryOf(HZRRESOURCE resource, plat::ResourceEntry* entry) noexcept {
  if (resource == nullptr) return false;
  const ResourcesGuard guard;
  for (const ModuleResources* all = FirstResources(); all != nullptr; all = all->next) {
    if (!IsInResources(*all, resource)) continue;
    plat::ResourceWalk walk(all->bytes.data(), all->bytes.size());
    while (walk.Next(entry)) {
      if (entry->bytes != 0 && reinterpret_cast<HZRRESOURCE>(entry->data) == resource) return true;
    }
    return false;
  }
  return false;
}

/// Joins abbreviations with commas.
void AppendLanguage(std::u16string* languages, uint16_t lcid) {
  const char16_t* const abbreviation = LanguageAbbreviation(ZrLang_GetConditionedLCID(lcid));
  if (!languages->empty()) *languages += u',';
  if (abbreviation != nullptr) *languages += abbreviation;
}

std::u16string VersionLanguages(plat::Module* module, uint16_t id) {
  const ResourcesGuard guard;
  const ModuleResources& resources = *ResourcesOf(module);
  plat::ResourceWalk walk(resources.bytes.data(), resources.bytes.size());
  std::u16string languages;
  for (plat::ResourceEntry entry; languages.size() < kLanguagesCharacters && walk.Next(&entry);) {
    const bool isVersion = IsNamed(entry.type, ZrResourceId(kZrVersionResource), NameCase::kExact) &&
                           IsNamed(entry.name, ZrResourceId(id), NameCase::kExact);
    if (isVersion) AppendLanguage(&languages, entry.language);
  }
  if (languages.size() >= kLanguagesCharacters) languages.resize(kLanguagesCharacters - 1);
  return languages;
}

HRESULT WriteWhole(plat::File* file, const plat::ResourceEntry& entry) noexcept {
  uint32_t written = 0;
  const auto bytes = static_cast<uint32_t>(entry.bytes);
  if (!plat::WriteFile(file, entry.data, bytes, &written) || written != bytes) return ZR_E_FILE_WRITE;
  return plat::SetEndOfFile(file) ? S_OK : ZR_E_FILE_WRITE;
}

}  // namespace
}  // namespace marlo

HZRRESOURCE ZrFindResource(HZRLANG language, const char16_t* type, const char16_t* name) noexcept {
  return ZrFindResourceMulti(language, type, &name, 1, nullptr);
}

HZRRESOURCE ZrFindResourceMulti(HZRLANG language, const char16_t* type, const char16_t* const* names, int32_t count,
                                int32_t* index) noexcept {
  int32_t unused = 0;
  int32_t& place = index != nullptr ? *index : unused;
  place = -1;
  const ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  if (owner == nullptr || names == nullptr) return nullptr;
  for (const auto find : {marlo::FindInLanguage, marlo::FindInMain}) {
    for (int32_t i = 0; i < count; ++i) {
      const HZRRESOURCE found = find(*owner, type, names[i]);
      if (found == nullptr) continue;
      place = i;
      return found;
    }
  }
  return nullptr;
}

plat::Module* ZrFindResInstance(HZRLANG language, const char16_t* type, const char16_t* name) noexcept {
  const ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  if (owner == nullptr) return nullptr;
  return marlo::FindInLanguage(*owner, type, name) != nullptr ? owner->languageModule.load(marlo::kRelaxed)
                                                              : owner->mainModule;
}

const void* ZrLoadResource(HZRLANG, HZRRESOURCE resource) noexcept {
  plat::ResourceEntry entry;
  return marlo::EntryOf(resource, &entry) ? entry.data : nullptr;
}

uint32_t ZrSizeofResource(HZRLANG, HZRRESOURCE resource) noexcept {
  plat::ResourceEntry entry;
  return marlo::EntryOf(resource, &entry) ? static_cast<uint32_t>(entry.bytes) : 0;
}

const void* ZrLoadResourceCustom(HZRLANG language, const char16_t* type, const char16_t* name,
                                 uint32_t* bytes) noexcept {
  plat::ResourceEntry entry;
  const bool isFound = marlo::EntryOf(ZrFindResource(language, type, name), &entry);
  if (bytes != nullptr) *bytes = isFound ? static_cast<uint32_t>(entry.bytes) : 0;
  return isFound ? entry.data : nullptr;
}

HRESULT ZrExtractResourceToFile(HZRLANG language, const char16_t* type, const char16_t* name,
                                const char16_t* fileName) noexcept {
  const HZRRESOURCE resource = ZrFindResource(language, type, name);
  if (resource == nullptr) return ZR_E_NOT_FOUND;
  plat::ResourceEntry entry;
  if (!marlo::EntryOf(resource, &entry)) return E_UNEXPECTED;
  plat::File* const file = plat::OpenFile(fileName, plat::kReadWriteAccess, plat::kShareRead, plat::kOpenAlways);
  if (file == plat::kInvalidFile) return ZR_E_FILE_OPEN;
  const HRESULT result = marlo::WriteWhole(file, entry);
  plat::CloseFile(file);
  return result;
}

uint32_t ZrEnumResourceLanguages(HZRLANG language, uint16_t id, char16_t* buffer, uint32_t size) noexcept {
  if (buffer == nullptr || size == 0) return 0;
  buffer[0] = 0;
  const ZrLanguage* const owner = marlo::LanguageOrKernel(language);
  plat::Module* const module = owner != nullptr ? owner->languageModule.load(marlo::kRelaxed) : nullptr;
  if (module == nullptr || !owner->usesLanguageModule.load(marlo::kRelaxed)) return 0;
  try {
    return static_cast<uint32_t>(plat::CopyText(buffer, size, marlo::VersionLanguages(module, id).c_str()));
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

const ZrAccelerator* ZrLoadAccelerators(HZRLANG language, const char16_t* name, uint32_t* count) noexcept {
  constexpr uint16_t kLast = 0x80;
  uint32_t bytes = 0;
  const void* const data = ZrLoadResourceCustom(language, ZrResourceId(kZrAcceleratorResource), name, &bytes);
  const auto* const keys = static_cast<const ZrAccelerator*>(data);
  // A damaged header can leave the table on an odd address.
  const bool isAligned = reinterpret_cast<uintptr_t>(data) % alignof(ZrAccelerator) == 0;
  const uint32_t room = isAligned ? bytes / static_cast<uint32_t>(sizeof(ZrAccelerator)) : 0;
  uint32_t found = 0;
  while (found < room && (keys[found++].flags & kLast) == 0) {
  }
  if (count != nullptr) *count = found;
  return found != 0 ? keys : nullptr;
}

ZrControlPicture* ZrLoadBitmap(HZRLANG, const char16_t*) noexcept { return nullptr; }

ZrControlPicture* ZrLoadIcon(HZRLANG, const char16_t*) noexcept { return nullptr; }

ZrControlPicture* ZrLoadCursor(HZRLANG, const char16_t*) noexcept { return nullptr; }

ZrControlPicture* ZrLoadImage(HZRLANG, const char16_t*, uint32_t, int32_t, int32_t, uint32_t) noexcept {
  return nullptr;
}

ZrControlPicture* ZrImageList_LoadImage(HZRLANG, const char16_t*, int32_t, int32_t, uint32_t, uint32_t,
                                        uint32_t) noexcept {
  return nullptr;
}
