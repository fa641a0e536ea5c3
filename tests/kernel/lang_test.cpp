// SPDX-License-Identifier: Apache-2.0
// Language handles: numbers, the order of fallbacks, descriptors, the change of language, the ring, damaged modules.
#include "marlo110k/lang.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "kernel/language.h"
#include "kernel/language_settings.h"
#include "kernel/string_tables.h"
#include "kernel/strings.h"
#include "lang_module_files.h"
#include "marlo110k/kernel.h"
#include "platform/base/codepage.h"
#include "platform/base/text.h"
#include "testing/random.h"

namespace {

using testing_support::LanguageFiles;
using testing_support::ReadWhole;
using Text16 = std::u16string;

Text16 Load(HZRLANG language, uint32_t id) {
  char16_t buffer[64];
  const int32_t characters = ZrLoadString(language, id, buffer, 64);
  EXPECT_EQ(characters, static_cast<int32_t>(plat::TextLength(buffer)));
  return buffer;
}

TEST(LanguageNumbers, Conditioned) {
  struct {
    uint32_t lcid, conditioned;
  } const rows[] = {{0x0809, 0x0409}, {0x0C0A, 0x040A}, {0x0816, 0x0816},  {0x0416, 0x0416}, {0, 0x0400},
                    {0x0404, 0x0404}, {0x0C04, 0x0404}, {0x1404, 0x0404},  {0x0804, 0x0804}, {0x1004, 0x0804},
                    {0x0004, 0x0804}, {0x7C04, 0x0804}, {0x10407, 0x0407}, {0x0C07, 0x0407}};
  for (const auto& row : rows) EXPECT_EQ(row.conditioned, ZrLang_GetConditionedLCID(row.lcid)) << std::hex << row.lcid;
  EXPECT_TRUE(ZrLang_UseRTL(0x040D) && ZrLang_UseRTL(0x0C01) && ZrLang_UseRTL(0x0420) && ZrLang_UseRTL(0x0429));
  EXPECT_FALSE(ZrLang_UseRTL(0x0409) || ZrLang_UseRTL(0x0411));
}

TEST(LanguageNumbers, NamesOfTheHandlesLanguage) {
  LanguageFiles files;
  struct {
    uint32_t lcid;
    const char16_t *abbreviation, *pair, *name;
  } const rows[] = {{0x0C07, u"DEU", u"de-DE", u"Ann Lee"}, {0x0411, u"JPN", u"ja-JP", u"Lee Ann"},
                    {0x0C04, u"CHT", u"", u"Ann Lee"},      {0x0816, u"PTG", u"", u"Ann Lee"},
                    {0x0436, u"", u"", u"Ann Lee"},         {0x040D, u"HEB", u"", u"Ann Lee"}};
  for (const auto& row : rows) {
    char16_t text[16] = u"?";
    ZrLang_UpdateKernelLCID(files.Language(), row.lcid);
    EXPECT_EQ(row.lcid == 0x040D, marlo::IsProcessMirrored());
    EXPECT_EQ(*row.abbreviation != 0 ? 1 : 0, ZrLang_GetLangAbbrev(files.Language(), text, 16));
    EXPECT_EQ(Text16(row.abbreviation), text);
    EXPECT_EQ(*row.pair != 0 ? 0 : 1, ZrLang_GetLangllCC(files.Language(), text, 16));
    EXPECT_EQ(Text16(row.pair), text);
    EXPECT_EQ(7U, ZrLang_LocalizeUserName(files.Language(), u"Ann", u"Lee", text, 16));
    EXPECT_EQ(Text16(row.name), text);
  }
  char16_t untouched[4] = u"x";
  EXPECT_EQ(0, ZrLang_GetLangAbbrev(nullptr, untouched, 4));
  EXPECT_EQ(Text16(u"x"), untouched);
  EXPECT_EQ(3U, ZrLang_LocalizeUserName(nullptr, u"Ann", u"Lee", untouched, 4));
}

TEST(LanguageHandle, Open) {
  struct {
    uint32_t asked, characters;
  } const rows[] = {{0, 8192}, {1, 2048}, {2047, 2048}, {2049, 2049}};
  for (const auto& row : rows) {
    HZRLANG language = nullptr;
    ASSERT_EQ(S_OK, ZrLang_Open(&language, nullptr, 0x40C, row.asked));
    EXPECT_EQ(row.characters, language->ringCharacters);
    EXPECT_EQ(0x40CU, ZrLang_GetLCID(language));
    HZRLANG same = language;
    EXPECT_EQ(ZR_S_NO_CHANGE, ZrLang_Open(&same, nullptr, 0x407, 0));
    EXPECT_EQ(same, language);
    EXPECT_EQ(Text16(u""), ZrGetString(language, 1U));
    ZrLang_Close(language);
  }
  EXPECT_EQ(E_POINTER, ZrLang_Open(nullptr, nullptr, 0, 0));
}

TEST(LanguageHandle, PathOfTheLanguageModule) {
  struct {
    const char16_t *module, *path;
  } const rows[] = {{u"/a/host.dll", u"/a/host.LNG"},
                    {u"/a/libx.so", u"/a/libx.LNG"},
                    {u"/a/libx.so.11.0", u"/a/libx.LNG"},
                    {u"/a.b/host", u"/a.b/host.LNG"},
                    {u"/a.so.1/x.y.exe", u"/a.so.1/x.y.LNG"},
                    {u"", u""},
                    {u"/a/", u""}};
  for (const auto& row : rows) EXPECT_EQ(row.path, marlo::LanguageModulePath(row.module));
}

TEST(LanguageStrings, FallbackOrder) {
  LanguageFiles files;
  HZRLANG const language = files.Language();
  struct {
    uint32_t lcid;
    const char16_t *one, *two, *three, *forty;
  } const rows[] = {{0x409, u"Open", u"Close", u"Only here", u"Neutral"},
                    {0x407, u"\u00D6ffnen", u"Schlie\u00DFen", u"Only here", u"Neutral"},
                    {0x411, u"\u958B\u304F", u"Close", u"Only here", u"Neutral"},
                    {0xC07, u"Open", u"Close", u"Only here", u"Neutral"},  // Austria isn't asked of Germany's block
                    {0x809, u"Open", u"Close", u"Only here", u"Neutral"}};
  for (const auto& row : rows) {
    EXPECT_EQ(1, ZrLang_UpdateKernelLCID(language, row.lcid));
    EXPECT_EQ(row.one, Load(language, 1));
    EXPECT_EQ(Text16(row.two), ZrGetString(language, 2U)) << "cached, and without the translator's mark";
    EXPECT_EQ(row.three, Load(language, 3));
    EXPECT_EQ(row.forty, Load(language, 40));
    EXPECT_EQ(u"", Load(language, 7));
    EXPECT_EQ(u"", Load(language, 0xFFFF));
    EXPECT_EQ(ZrGetString(language, 2U), ZrGetString(language, 2U));
    EXPECT_EQ(ZrLang_InstFromLang(language) == files.Main(), ZrLang_IsLCIDEnglish(row.lcid));
  }
  EXPECT_EQ(0, ZrLang_UpdateKernelLCID(nullptr, 0x407));
}

TEST(LanguageStrings, WithoutALanguageModule) {
  LanguageFiles files("");
  ZrLang_UpdateKernelLCID(files.Language(), 0x407);
  EXPECT_EQ(u"Open", Load(files.Language(), 1));
  EXPECT_EQ(files.Main(), ZrLang_InstFromLang(files.Language()));
}

// With no language asked for, the thread's own is taken.
TEST(LanguageStrings, ByTheThreadsLanguage) {
  LanguageFiles files;
  ZrLang_UpdateKernelLCID(files.Language(), 0x411);
  plat::Module* const module = ZrLang_InstFromLang(files.Language());
  char16_t text[16];
  ZrLang_UpdateThreadLocale(files.Language());
  EXPECT_EQ(2, marlo::LoadTableString(module, 1, 0, text, 16));
  EXPECT_EQ(Text16(u"\u958B\u304F"), text);
  ZrLang_UpdateThreadLocale(nullptr);
  EXPECT_EQ(6, marlo::LoadTableString(module, 1, 0, text, 16)) << "the first of the module";
  // A module that the caller brings serves both handles.
  ZrLang_ChangeLangInst(files.Language(), files.Main());
  EXPECT_EQ(files.Main(), ZrLang_InstFromLang(marlo::KernelLanguage()));
  EXPECT_EQ(u"Open", Load(files.Language(), 1));
  ZrLang_ChangeLangInst(files.Language(), ZrKernel_GetAppKernel());
}

// A cut string counts as many characters as the buffer has, one more than it holds.
TEST(LanguageStrings, CutToTheBuffer) {
  LanguageFiles files;
  struct {
    int32_t size, result;
    const char16_t* text;
  } const rows[] = {{3, 3, u"AB"}, {5, 5, u"ABCD"}, {6, 5, u"ABCDE"}, {1, 1, u""}};
  for (const auto& row : rows) {
    char16_t buffer[8] = u"???????";
    EXPECT_EQ(row.result, ZrLoadString(files.Language(), 5, buffer, row.size));
    EXPECT_EQ(Text16(row.text), buffer);
  }
  char16_t untouched = u'?';
  EXPECT_EQ(0, ZrLoadString(files.Language(), 5, &untouched, 0));
  EXPECT_EQ(u'?', untouched);
}

const char16_t* Id(uintptr_t id) { return reinterpret_cast<const char16_t*>(id); }

TEST(LanguageDescriptors, Slots) {
  LanguageFiles files;
  static zrlang_t full{kZrLangStringMagic, 18, {}, {u"en", u"ja", u"de"}, 0};
  static zrlang_t two{kZrLangStringMagic, 2, {}, {u"en", u"second"}, 0};
  static zrlang_t byId{kZrLangStringMagic, 18, {}, {u"en", u"ja", Id(4)}, 0};
  static zrlang_t unended{kZrLangStringMagic, 18, {}, {u"en", u"ja", Id(6)}, 0};
  struct {
    uint32_t lcid;
    const char16_t *full, *two, *byId, *unended;
  } const rows[] = {{0x809, u"en", u"en", u"en", u"en"},
                    {0x411, u"ja", u"second", u"ja", u"ja"},
                    {0xC07, u"de", u"second", u"Wort", u"en"},  // two slots serve German with the last of them
                    {0x40C, u"en", u"second", u"en", u"en"},
                    {0x436, u"en", u"en", u"en", u"en"}};
  for (const auto& row : rows) {
    ZrLang_UpdateKernelLCID(files.Language(), row.lcid);
    EXPECT_EQ(Text16(row.full), ZrGetString(files.Language(), &full));
    EXPECT_EQ(Text16(row.two), ZrGetString(files.Language(), &two));
    EXPECT_EQ(Text16(row.byId), ZrGetStringSmart(files.Language(), &byId));
    EXPECT_EQ(Text16(row.unended), ZrGetString(files.Language(), &unended));
  }
  EXPECT_EQ(full.slots[0], full.slots[4]) << "French has taken the English text for good";
  EXPECT_EQ(Text16(u"Wort"), byId.slots[2]);
  char16_t buffer[3];
  EXPECT_EQ(2, ZrLoadString(files.Language(), &two, buffer, 3));
}

TEST(LanguageRing, GoesRound) {
  HZRLANG language = nullptr;
  ASSERT_EQ(S_OK, ZrLang_Open(&language, nullptr, 0x409, 2048));
  char16_t* const start = ZrGetTempStringBuffer(language, 0);
  EXPECT_EQ(0, *start);
  EXPECT_EQ(start + 2, ZrGetTempStringBuffer(language, 1));
  EXPECT_EQ(start + 4, ZrGetTempStringBuffer(language, 1018));
  EXPECT_EQ(start + 1024, ZrGetTempStringBuffer(language, 1024)) << "1024 leaves just the reserve";
  EXPECT_EQ(start, ZrGetTempStringBuffer(language, 10));

  EXPECT_STREQ("\x80 a", ZrGetMultiByteFromPrintString(language, u"\u20AC a"));
  EXPECT_EQ(Text16(u"\u20AC a"), ZrGetPrintFromMultiByteString(language, "\x80 a"));
  EXPECT_EQ(Text16(u""), ZrGetPrintFromMultiByteString(language, ""));
  // Longer than the whole ring: cut inside it.
  const std::string longText(5000, 'x');
  const Text16 wide = ZrGetPrintFromMultiByteString(language, longText.c_str());
  EXPECT_LT(wide.size(), 2048U);
  EXPECT_GE(wide.size(), 1023U);
  const char* narrow = ZrGetMultiByteFromPrintString(language, Text16(9000, u'y').c_str());
  EXPECT_LT(std::strlen(narrow), 4096U);
  EXPECT_EQ(start, ZrGetWideFromPrintString(language, start));
  ZrLang_Close(language);
}

using marlo::SettingsRoot;
std::map<std::pair<SettingsRoot, Text16>, uint32_t> stored;

TEST(LanguageSettings, KeysAndRoots) {
  constexpr marlo::NumberStore kStore = {
      [](SettingsRoot root, const char16_t* key, const char16_t* name, uint32_t* number) {
        const auto found = stored.find({root, Text16(key) + u":" + name});
        if (found != stored.end()) *number = found->second;
        return found != stored.end();
      },
      [](SettingsRoot root, const char16_t* key, const char16_t* name, uint32_t number) {
        stored[{root, Text16(key) + u":" + name}] = number;
        return true;
      }};
  uint32_t lcid = 7;
  marlo::SetLanguageStore(nullptr);
  EXPECT_EQ(0, ZrLang_SaveUserLCIDMetric(u"P", 0x0B0102BD, 0x407, 0)) << "no store";
  marlo::SetLanguageStore(&kStore);
  EXPECT_EQ(1, ZrLang_SaveUserLCIDMetric(u"P", 0x0B0102BD, 0x407, 0));
  EXPECT_EQ(1, ZrLang_SaveUserLCIDMetric(u"P", 0x0B0102BD, 0x40C, 1));
  EXPECT_EQ(1, ZrLang_SaveUserLCIDMetricAppReg(u"P", 0x00FF0000, 0x411, u"C"));
  const decltype(stored) expected = {{{SettingsRoot::kUser, u"Software\\Orlu Works\\P\\11.1\\Lang:ULangID"}, 0x407},
                                     {{SettingsRoot::kUser, u"Software\\Orlu Works\\P\\Lang:ULangID"}, 0x40C},
                                     {{SettingsRoot::kUser, u"Software\\C\\P\\Lang:ULangID"}, 0x411}};
  EXPECT_EQ(expected, stored);
  EXPECT_EQ(0, ZrLang_LoadUserLCIDMetric(u"Q", 0, &lcid, 0));
  EXPECT_EQ(7U, lcid);
  stored[{SettingsRoot::kMachine, u"Software\\Orlu Works\\Q\\Lang:ULangID"}] = 0x410;
  stored[{SettingsRoot::kMachine, u"Software\\C\\P\\Lang:ULangID"}] = 0x410;
  EXPECT_EQ(1, ZrLang_LoadUserLCIDMetric(u"Q", 0, &lcid, 0));
  EXPECT_EQ(0x410U, lcid);
  EXPECT_EQ(1, ZrLang_LoadUserLCIDMetricAppReg(u"P", 0, &lcid, u"C"));
  EXPECT_EQ(0x411U, lcid) << "the user's before the machine's";
  marlo::SetLanguageStore(nullptr);
}

TEST(LanguageCharsets, Detection) {
  const uint8_t japanese[] = {'a', 0x83, 0x65, 0x83, 0x58, 0x83, 0x67, 0};
  EXPECT_FALSE(ZrLang_DetectMultiByteCharacters(japanese, sizeof japanese)) << "the page is a single-byte one";
  ASSERT_TRUE(plat::SetAnsiPage(932));
  const uint8_t badTrail[] = {0x83, 0x20, 0};
  const uint8_t behindEnd[] = {'a', 0, 0x83, 0x65};
  EXPECT_TRUE(ZrLang_DetectMultiByteCharacters(japanese, sizeof japanese));
  EXPECT_FALSE(ZrLang_DetectMultiByteCharacters(japanese, 2)) << "the pair is cut";
  EXPECT_FALSE(ZrLang_DetectMultiByteCharacters(badTrail, sizeof badTrail));
  EXPECT_FALSE(ZrLang_DetectMultiByteCharacters(behindEnd, sizeof behindEnd));
  plat::SetAnsiPage(1252);
  const uint8_t utf8[] = "\xEF\xBB\xBF\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88 \xC3\xA4\xC3\xB6";
  uint32_t page = 1;
  EXPECT_EQ(S_OK, ZrLang_DetectPossibleCodepage(utf8, sizeof utf8 - 1, &page));
  EXPECT_EQ(65001U, page);
  EXPECT_EQ(ZR_E_NO_CODEPAGE, ZrLang_DetectPossibleCodepage(utf8, 0, &page));
  EXPECT_EQ(0U, page);
}

// Whatever stands in the file, a string is the right one, an English one or none.
TEST(LanguageModules, Damaged) {
  const std::string whole = ReadWhole(MARLO_LANG_MODULE);
  const auto check = [](const std::string& bytes) {
    LanguageFiles files(bytes);
    ZrLang_UpdateKernelLCID(files.Language(), 0x407);
    for (uint32_t id = 0; id < 20; ++id) EXPECT_LE(plat::TextLength(ZrGetString(files.Language(), id)), 1023U);
  };
  for (size_t bytes = 1; bytes < whole.size(); bytes += 1 + whole.size() / 97) check(whole.substr(0, bytes));
  testing_support::Random random(20261124);
  SCOPED_TRACE(random.Label());
  const size_t section = whole.find(std::string("\0\0\0\0\x20\0\0\0\xFF\xFF", 10));
  ASSERT_NE(std::string::npos, section);
  for (int round = 0; round < 200; ++round) {
    std::string bytes = whole;
    for (int change = 0; change < 3; ++change) {
      bytes[section + static_cast<size_t>(random.Between(0, 399))] = static_cast<char>(random.Between(0, 255));
    }
    check(bytes);
  }
}

}  // namespace
