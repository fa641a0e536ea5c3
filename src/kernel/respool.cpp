// SPDX-License-Identifier: Apache-2.0
// Finds resources in compiled resource files held in memory.
#include "kernel/module_resources.h"
#include "kernel/strings.h"
#include "marlo110k/resources.h"

namespace marlo {
namespace {

constexpr uint32_t kLeastPoolBytes = 32;

/// The entry that serves best; its language becomes that of the table.
bool FindInPool(const ZRRESPOOL& pool, const char16_t* name, const char16_t* type, uint32_t lcid,
                plat::ResourceEntry* best, uint32_t* bestLcid) noexcept {
  const uint32_t kernelLcid = ZrLang_GetLCID(KernelLanguage());
  const uint32_t own = ZrLang_GetConditionedLCID(kernelLcid);
  // Asked before the numbers are conditioned, which makes a language of 0 too.
  const bool takesAny = lcid == 0 && kernelLcid == 0;
  const uint32_t wanted = lcid != 0 ? ZrLang_GetConditionedLCID(lcid) : own;
  bool isFound = false;
  plat::ResourceWalk walk(pool.data, pool.bytes);
  plat::ResourceEntry entry;
  while (walk.Next(&entry)) {
    if (!IsNamed(entry.type, type, NameCase::kExact) || !IsNamed(entry.name, name, NameCase::kExact)) continue;
    const uint32_t language = ZrLang_GetConditionedLCID(entry.language);
    const bool isWanted = takesAny || language == wanted;
    if (!isWanted && isFound && language != own) continue;
    *best = entry;
    *bestLcid = language;
    isFound = true;
    if (isWanted) break;
  }
  return isFound;
}

}  // namespace
}  // namespace marlo

const void* ZrFindResourceInResPool(const ZRRESPOOL* pool, uint32_t* bytes, const char16_t* name, const char16_t* type,
                                    uint32_t lcid, uint32_t* foundLcid) noexcept {
  plat::ResourceEntry entry;
  uint32_t language = 0;
  const bool isFound = pool != nullptr && pool->data != nullptr && pool->bytes >= marlo::kLeastPoolBytes &&
                       marlo::FindInPool(*pool, name, type, lcid, &entry, &language);
  if (bytes != nullptr) *bytes = isFound ? static_cast<uint32_t>(entry.bytes) : 0;
  if (foundLcid != nullptr) *foundLcid = isFound ? language : 0;
  return isFound ? entry.data : nullptr;
}

const void* ZrFindDialogTemplateInResPool(const ZRRESPOOL* pool, uint32_t* bytes, const char16_t* name,
                                          uint32_t lcid) noexcept {
  return ZrFindResourceInResPool(pool, bytes, name, ZrResourceId(kZrDialogResource), lcid, nullptr);
}
