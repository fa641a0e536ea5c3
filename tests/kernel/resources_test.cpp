// SPDX-License-Identifier: Apache-2.0
// Finds and loads by language, pools, and what damage does to them.
#include "marlo110k/resources.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "lang_module_files.h"
#include "platform/base/text.h"

namespace {

using testing_support::LanguageFiles;
using testing_support::ReadWhole;
using Text16 = std::u16string;

const char16_t* const kData = ZrResourceId(kZrDataResource);

std::string Load(HZRLANG language, const char16_t* name) {
  uint32_t bytes = 1;
  const void* const data = ZrLoadResourceCustom(language, kData, name, &bytes);
  return data != nullptr ? std::string(static_cast<const char*>(data), bytes) : std::to_string(bytes);
}

TEST(Resources, FallbackOrder) {
  LanguageFiles files;
  struct {
    uint32_t lcid;
    const char *seven, *eight, *shared, *listed;
  } const rows[] = {{0x409, "english", "only main", "main", "0"},
                    {0x407, "deutsch", "only main", "module", "listed"},
                    {0xC07, "english", "only main", "main", "0"}};  // Austria isn't asked of Germany's
  for (const auto& row : rows) {
    ZrLang_UpdateKernelLCID(files.Language(), row.lcid);
    EXPECT_EQ(row.seven, Load(files.Language(), ZrResourceId(7)));
    EXPECT_EQ(row.eight, Load(files.Language(), ZrResourceId(8)));
    EXPECT_EQ(row.shared, Load(files.Language(), u"Shared")) << "without regard to case";
    EXPECT_EQ(row.listed, Load(files.Language(), u"LISTED"));
    EXPECT_EQ("0", Load(files.Language(), u"SHARED2"));
    EXPECT_EQ("0", Load(files.Language(), u"SHARE"));
    EXPECT_EQ("0", Load(files.Language(), nullptr));
    const bool isGerman = row.lcid == 0x407;
    EXPECT_EQ(isGerman, files.Main() != ZrFindResInstance(files.Language(), kData, ZrResourceId(7)));
    EXPECT_EQ(files.Main(), ZrFindResInstance(files.Language(), kData, u"nowhere"));
    // The second name is asked of the language module before the first one of the main module.
    const char16_t* const names[] = {ZrResourceId(8), ZrResourceId(7)};
    int32_t index = 5;
    EXPECT_NE(nullptr, ZrFindResourceMulti(files.Language(), kData, names, 2, &index));
    EXPECT_EQ(isGerman ? 1 : 0, index);
    EXPECT_EQ(nullptr, ZrFindResourceMulti(files.Language(), kData, names, 0, &index));
    EXPECT_EQ(-1, index);
    char16_t languages[16] = u"?";
    EXPECT_EQ(row.lcid == 0x409 ? 0U : 7U, ZrEnumResourceLanguages(files.Language(), 1, languages, 16));
    EXPECT_EQ(Text16(row.lcid == 0x409 ? u"" : u"DEU,FRA"), languages);
    EXPECT_EQ(row.lcid == 0x409 ? 0U : 4U, ZrEnumResourceLanguages(files.Language(), 1, languages, 5));
  }
}

// A found resource outlives the handle; one that was made up is no resource.
TEST(Resources, HandlesAreTold) {
  HZRRESOURCE found = nullptr;
  HZRRESOURCE again = nullptr;
  const void* data = nullptr;
  for (HZRRESOURCE* const result : {&found, &again}) {
    LanguageFiles files;
    *result = ZrFindResource(files.Language(), kData, ZrResourceId(8));
    data = ZrLoadResource(files.Language(), *result);
  }
  ASSERT_NE(nullptr, data);
  EXPECT_EQ(found, again) << "a module that comes back isn't kept twice";
  EXPECT_EQ(9U, ZrSizeofResource(nullptr, found));
  EXPECT_EQ(0, std::memcmp(data, "only main", 9));
  for (const uintptr_t address : {uintptr_t{0}, uintptr_t{1}, reinterpret_cast<uintptr_t>(found) + 1, ~uintptr_t{0}}) {
    EXPECT_EQ(nullptr, ZrLoadResource(nullptr, reinterpret_cast<HZRRESOURCE>(address)));
    EXPECT_EQ(0U, ZrSizeofResource(nullptr, reinterpret_cast<HZRRESOURCE>(address)));
  }
}

TEST(Resources, Accelerators) {
  LanguageFiles files;
  uint32_t count = 0;
  const ZrAccelerator* const keys = ZrLoadAccelerators(files.Language(), u"KEYS", &count);
  ASSERT_NE(nullptr, keys);
  ASSERT_EQ(2U, count);
  EXPECT_EQ(101, keys[0].command);
  EXPECT_EQ('O' - 64, keys[0].key);
  EXPECT_EQ(0x70, keys[1].key);
  EXPECT_EQ(0x80 | 4 | 1, keys[1].flags);
  EXPECT_EQ(nullptr, ZrLoadAccelerators(files.Language(), u"BAR", &count));
  EXPECT_EQ(0U, count);
}

TEST(Resources, ExtractedToFiles) {
  LanguageFiles files;
  testing_support::TempFolder folder;
  const Text16 path = folder.Put("out", "much longer than before");
  const Text16 nowhere = path + u"/below/a/file";
  const char16_t* const eight = ZrResourceId(8);
  EXPECT_EQ(S_OK, ZrExtractResourceToFile(files.Language(), kData, eight, path.c_str()));
  EXPECT_EQ("only main", ReadWhole(plat::ToUtf8(path.c_str()).c_str()));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrExtractResourceToFile(files.Language(), kData, u"none", path.c_str()));
  EXPECT_EQ(E_UNEXPECTED, ZrExtractResourceToFile(files.Language(), kData, ZrResourceId(9), path.c_str()));
  EXPECT_EQ(ZR_E_FILE_OPEN, ZrExtractResourceToFile(files.Language(), kData, eight, nowhere.c_str()));
  EXPECT_EQ("only main", ReadWhole(plat::ToUtf8(path.c_str()).c_str()));
}

/// An entry of a compiled resource file with two bytes of data.
std::string Entry(uint16_t type, uint16_t name, uint16_t language, const char (&data)[3]) {
  const uint16_t header[] = {2, 0, 32, 0, 0xFFFF, type, 0xFFFF, name, 0, 0, 0, language, 0, 0, 0, 0};
  return std::string(reinterpret_cast<const char*>(header), sizeof header) + data + std::string(2, '\0');
}

ZRRESPOOL PoolOf(const std::string& bytes) {
  return {static_cast<uint32_t>(bytes.size()), reinterpret_cast<const uint8_t*>(bytes.data())};
}

std::string Find(const std::string& bytes, uint32_t lcid, uint32_t* language) {
  const ZRRESPOOL pool = PoolOf(bytes);
  uint32_t size = 7;
  *language = 7;
  const void* const data = ZrFindResourceInResPool(&pool, &size, ZrResourceId(3), ZrResourceId(5), lcid, language);
  return data != nullptr ? std::string(static_cast<const char*>(data), size) : std::to_string(size);
}

TEST(ResourcePool, Languages) {
  LanguageFiles files;
  const std::string all = Entry(5, 4, 0x407, "no") + Entry(5, 3, 0xC0C, "fr") + Entry(5, 3, 0x411, "j1") +
                          Entry(5, 3, 0x411, "j2") + Entry(5, 3, 0x409, "en") + Entry(5, 3, 0x410, "it");
  struct {
    uint32_t kernel, wanted;
    const char* data;
    uint32_t language;
  } const rows[] = {{0x411, 0x410, "it", 0x410}, {0x411, 0x407, "j2", 0x411}, {0x411, 0, "j1", 0x411},
                    {0x411, 0x809, "en", 0x409}, {0x407, 0x41D, "fr", 0x40C}, {0x407, 0, "fr", 0x40C}};
  uint32_t language = 0;
  for (const auto& row : rows) {
    ZrLang_UpdateKernelLCID(files.Language(), row.kernel);
    EXPECT_EQ(row.data, Find(all, row.wanted, &language));
    EXPECT_EQ(row.language, language);
  }
  EXPECT_EQ("0", Find(Entry(5, 4, 0x409, "no") + Entry(4, 3, 0x409, "no"), 0, &language));
  EXPECT_EQ(0U, language);
  uint32_t size = 0;
  const ZRRESPOOL pool = PoolOf(all);
  EXPECT_NE(nullptr, ZrFindDialogTemplateInResPool(&pool, &size, ZrResourceId(4), 0));
  EXPECT_EQ(2U, size);
}

TEST(ResourcePool, DamageEndsTheWalk) {
  LanguageFiles files;
  const std::string first = Entry(5, 3, 0x411, "ja");
  const std::string whole = first + Entry(5, 3, 0x407, "de");
  uint32_t language = 0;
  for (size_t cut = 0; cut <= whole.size(); ++cut) {
    const std::string bytes = std::string(whole.data(), cut);
    const char* const expected = cut < 34 ? "0" : cut < first.size() + 34 ? "ja" : "de";
    EXPECT_EQ(expected, Find(bytes, 0x407, &language)) << cut;
  }
  // Wild sizes, in the entry before the one that is wanted; only sizes that lead nowhere else are listed.
  for (const uint32_t size : {0U, 12U, 0x7FFFFFFFU, 0xFFFFFFE0U, 0xFFFFFFFFU}) {
    for (const size_t place : {size_t{0}, size_t{4}}) {
      std::string bytes = whole;
      std::memcpy(bytes.data() + place, &size, sizeof size);
      if (place == 0 && size <= 12) continue;
      EXPECT_EQ("0", Find(bytes, 0x407, &language)) << std::hex << size << " at " << place;
    }
  }
  // 31 bytes hold no resources, though an entry with a short header fits.
  const uint16_t small[] = {1, 0, 28, 0, 0xFFFF, 5, 0xFFFF, 3, 0, 0, 0, 0x407, 0, 0, 'x', 0, 0, 0};
  for (const size_t bytes : {31, 32}) {
    EXPECT_EQ(bytes == 32 ? "x" : "0", Find(std::string(reinterpret_cast<const char*>(small), bytes), 0, &language));
  }
  EXPECT_EQ(nullptr, ZrFindResourceInResPool(nullptr, nullptr, u"a", u"b", 0, nullptr));
}

// What the resource compiler makes is a pool too; texts are told with regard to case.
TEST(ResourcePool, OfTheCompiler) {
  std::string bytes = ReadWhole(MARLO_LANG_MAIN);
  const std::string mark("\0\0\0\0\x20\0\0\0\xFF\xFF\0\0\xFF\xFF\0\0", 16);
  const size_t start = bytes.find(mark);
  ASSERT_NE(std::string::npos, start);
  bytes.erase(0, start);
  const ZRRESPOOL pool = PoolOf(bytes);
  EXPECT_NE(nullptr, ZrFindResourceInResPool(&pool, nullptr, u"SHARED", kData, 0, nullptr));
  EXPECT_EQ(nullptr, ZrFindResourceInResPool(&pool, nullptr, u"Shared", kData, 0, nullptr));
}

}  // namespace
