// SPDX-License-Identifier: Apache-2.0
// The user's language between runs.
#include "kernel/language_settings.h"

#include <atomic>

#include "marlo110k/lang.h"
#include "marlo110k/printf.h"

namespace marlo {
namespace {

constexpr char16_t kValueName[] = u"ULangID";

constinit std::atomic<const NumberStore*> languageStore{nullptr};

/// The settings key of a product's language.
struct LanguageKey {
  static constexpr uint32_t kCharacters = 260;
  char16_t path[kCharacters];

  LanguageKey(const char16_t* product, uint32_t version, const char16_t* company, bool withoutVersion) noexcept {
    const uint32_t major = version >> 24;
    const uint32_t minor = (version >> 16) & 0xFF;
    if (withoutVersion || major == 0) {
      ZrCchPrintF(path, kCharacters, nullptr, u"Software\\%s\\%s\\Lang", company, product);
    } else {
      ZrCchPrintF(path, kCharacters, nullptr, u"Software\\%s\\%s\\%d.%d\\Lang", company, product, major, minor);
    }
  }
};

int32_t Load(const char16_t* product, uint32_t version, uint32_t* lcid, const char16_t* company,
             bool withoutVersion) noexcept {
  const NumberStore* store = languageStore.load(std::memory_order_acquire);
  if (store == nullptr || product == nullptr || company == nullptr || lcid == nullptr) return 0;
  const LanguageKey key(product, version, company, withoutVersion);
  for (const SettingsRoot root : {SettingsRoot::kUser, SettingsRoot::kMachine}) {
    uint32_t number = 0;
    if (!store->read(root, key.path, kValueName, &number)) continue;
    *lcid = number;
    return 1;
  }
  return 0;
}

int32_t Save(const char16_t* product, uint32_t version, uint32_t lcid, const char16_t* company,
             bool withoutVersion) noexcept {
  const NumberStore* store = languageStore.load(std::memory_order_acquire);
  if (store == nullptr || product == nullptr || company == nullptr) return 0;
  const LanguageKey key(product, version, company, withoutVersion);
  return store->write(SettingsRoot::kUser, key.path, kValueName, lcid) ? 1 : 0;
}

}  // namespace

void SetLanguageStore(const NumberStore* store) noexcept { languageStore.store(store, std::memory_order_release); }

}  // namespace marlo

int32_t ZrLang_LoadUserLCIDMetric(const char16_t* product, uint32_t version, uint32_t* lcid,
                                  int32_t withoutVersion) noexcept {
  return marlo::Load(product, version, lcid, marlo::kOwnCompany, withoutVersion != 0);
}

int32_t ZrLang_LoadUserLCIDMetricAppReg(const char16_t* product, uint32_t version, uint32_t* lcid,
                                        const char16_t* company) noexcept {
  return marlo::Load(product, version, lcid, company, false);
}

int32_t ZrLang_SaveUserLCIDMetric(const char16_t* product, uint32_t version, uint32_t lcid,
                                  int32_t withoutVersion) noexcept {
  return marlo::Save(product, version, lcid, marlo::kOwnCompany, withoutVersion != 0);
}

int32_t ZrLang_SaveUserLCIDMetricAppReg(const char16_t* product, uint32_t version, uint32_t lcid,
                                        const char16_t* company) noexcept {
  return marlo::Save(product, version, lcid, company, false);
}
