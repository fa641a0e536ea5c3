// SPDX-License-Identifier: Apache-2.0
// Strings, descriptors, the ring and resources under threads: each gets the right text whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "lang_module_files.h"
#include "marlo110k/resources.h"
#include "platform/base/text.h"
#include "testing/worker.h"

namespace {

TEST(LanguageThreads, EveryTextIsWhole) {
  testing_support::LanguageFiles files;
  HZRLANG const language = files.Language();
  ZrLang_UpdateKernelLCID(language, 0x407);
  static zrlang_t byId{kZrLangStringMagic, 18, {}, {u"en", u"ja", reinterpret_cast<const char16_t*>(uintptr_t{4})}, 0};
  std::atomic<int> wrong{0};
  char16_t* pieces[64] = {};
  {
    std::vector<testing_support::Worker> threads;
    for (int thread = 0; thread < 8; ++thread) {
      threads.emplace_back([&, thread] {
        for (uint32_t round = 0; round < 500; ++round) {
          const std::u16string three = ZrGetString(language, 3U);
          const std::u16string one = ZrGetString(language, 1U);
          const std::u16string none = ZrGetString(language, 0x200 + round % 32);
          if (three != u"Only here" || one != u"\u00D6ffnen" || !none.empty()) ++wrong;
          if (std::u16string(ZrGetString(language, &byId)) != u"Wort") ++wrong;
          if (round % 64 != 0) continue;
          // Eight pieces a thread don't fill the ring: nobody's is given out twice.
          char16_t* const piece = ZrGetTempStringBuffer(language, 100);
          std::fill_n(piece, 100, static_cast<char16_t>(u'a' + thread));
          pieces[thread * 8 + static_cast<int>(round / 64)] = piece;
        }
      });
    }
  }
  EXPECT_EQ(0, wrong);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(100, std::count(pieces[i], pieces[i] + 100, u'a' + i / 8));
}

// Modules come and go under other threads' lookups, and what was found stays.
TEST(LanguageThreads, FoundResourcesStay) {
  std::atomic<int> wrong{0};
  {
    std::vector<testing_support::Worker> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&] {
        const char16_t* const data = ZrResourceId(kZrDataResource);
        HZRRESOURCE found = nullptr;
        for (int round = 0; round < 10; ++round) {
          HZRLANG language = nullptr;
          plat::Module* const module = plat::LoadDataModule(plat::FromUtf8(MARLO_LANG_MAIN).c_str());
          if (ZrLang_Open(&language, module, 0, 0) != S_OK) ++wrong;
          const HZRRESOURCE now = ZrFindResource(language, data, ZrResourceId(8));
          ZrLang_Close(language);
          plat::UnloadModule(module);
          const std::string text(static_cast<const char*>(ZrLoadResource(nullptr, now)),
                                 ZrSizeofResource(nullptr, now));
          if (text != "only main" || (found != nullptr && ZrSizeofResource(nullptr, found) != 9)) ++wrong;
          found = now;
        }
      });
    }
  }
  EXPECT_EQ(0, wrong);
}

}  // namespace
