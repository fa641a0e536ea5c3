// SPDX-License-Identifier: Apache-2.0
// The library's own texts: what each translation must have, and what callers get after a change of language.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "kernel/strings.h"
#include "lang_module_files.h"
#include "marlo110k/errors.h"
#include "marlo110k/formattext.h"

namespace {

TEST(Catalogue, TranslationsAreComplete) {
  constexpr uint32_t kTranslated[] = {2, 3, 4, 5};  // slots of Japanese, German, Spanish, French
  std::set<std::u16string> names;
  const char16_t* name = nullptr;
  uint32_t index = 0;
  for (; const zrlang_t* text = ZrLang_GetCatalogueText(index, &name); ++index) {
    EXPECT_TRUE(IsZRLANGSTRINGID(nullptr, text));
    EXPECT_TRUE(names.insert(name).second);
    const std::u16string prefix = std::u16string(name).substr(0, std::u16string(name).find(u'.'));
    if (prefix != u"error" && prefix != u"context" && prefix != u"box" && prefix != u"kernel" && prefix != u"time") {
      continue;
    }
    for (const uint32_t slot : kTranslated) {
      EXPECT_NE(nullptr, text->slots[slot - 1])
          << std::string(name, name + std::u16string(name).size()) << " in slot " << slot;
    }
  }
  EXPECT_EQ(marlo::kTexts, index);
}

TEST(Catalogue, CallersSpeakTheLanguageOfTheLibrary) {
  testing_support::LanguageFiles files;
  const auto speak = [&](uint32_t lcid) {
    ZrLang_UpdateKernelLCID(files.Language(), lcid);
    char16_t bits[32];
    ZrAudio_GetSampleTypeText(ZRSAMPLETYPE_PCM16, bits, 32);
    return std::u16string(ZrErrorHandler_GetErrorMessage(12, ZR_E_NOT_FOUND, nullptr)) + u"|" + bits;
  };
  const std::u16string english = u"An error occurred while recording.\n\nThe item was not found.|16 Bit";
  EXPECT_EQ(english, speak(0x409));
  EXPECT_EQ(u"Beim Aufnehmen ist ein Fehler aufgetreten.\n\nDas Element wurde nicht gefunden.|16 Bit", speak(0x407));
  EXPECT_EQ(english, speak(0x41D)) << "Swedish has no texts yet";
  EXPECT_EQ(english, speak(0x409));
}

}  // namespace
