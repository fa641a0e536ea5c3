// SPDX-License-Identifier: Apache-2.0
// Fixed locale records, so that expected texts don't depend on the locale data of the machine.
#pragma once

#include "marlo110k/locale.h"
#include "platform/base/locale.h"

namespace testing_support {

inline const plat::LocaleFacts kEnglish{0x0409,
                                        1,
                                        u"English (United States)",
                                        u"English",
                                        u"United States",
                                        u"United States",
                                        u"-",
                                        u",",
                                        u".",
                                        u":",
                                        u",",
                                        3,
                                        2,
                                        true,
                                        1};
inline const plat::LocaleFacts kGerman{
    0x0407, 49, u"Deutsch (Deutschland)", u"German", u"Deutschland", u"Germany", u"-", u".", u",", u":", u";", 3, 2,
    true,   0};
/// Groups are set apart by a narrow no-break space.
inline const plat::LocaleFacts kFrench{
    0x040C, 33, u"français (France)", u"French", u"France", u"France", u"-", u"\u202F", u",", u":", u";", 3, 2,
    true,   0};
inline const plat::LocaleFacts kJapanese{
    0x0411, 81, u"日本語 (日本)", u"Japanese", u"日本", u"Japan", u"-", u",", u".", u":", u",", 3, 2, true, 0};
/// The negative sign is U+2212.
inline const plat::LocaleFacts kSwedish{
    0x041D, 46, u"svenska (Sverige)", u"Swedish", u"Sverige", u"Sweden", u"\u2212", u"\u00A0", u",", u":", u";", 3, 2,
    true,   0};

/// Makes a locale the user's for a scope, and English again afterwards.
class LocaleScope {
 public:
  explicit LocaleScope(const plat::LocaleFacts& facts) {
    plat::OverrideUserLocale(&facts);
    ZrLang_GetInternationals(nullptr, 0);
  }
  ~LocaleScope() {
    plat::OverrideUserLocale(&kEnglish);
    ZrLang_GetInternationals(nullptr, 0);
  }
  LocaleScope(const LocaleScope&) = delete;
  LocaleScope& operator=(const LocaleScope&) = delete;
};

}  // namespace testing_support
