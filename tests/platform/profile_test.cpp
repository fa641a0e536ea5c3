// SPDX-License-Identifier: Apache-2.0
// Profile files in all encodings and states of repair.
#include "platform/sys/profile.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "testing/temp_folder.h"

namespace plat {
namespace {

using testing_support::TempFolder;

std::u16string Text(const std::u16string& path, const char16_t* section, const char16_t* key) {
  char16_t buffer[64];
  const size_t written = ProfileText(path.c_str(), section, key, u"(default)", buffer, 64);
  EXPECT_EQ(written, std::u16string(buffer).size());
  return buffer;
}

const char kContent[] =
    "stray=1\n"
    "; comment=2\r\n"
    "[Debug]\r\n"
    "  Level = 12 lamps \r\n"
    "Minus=-7\rHex=0x1F\nEmpty=\nWord=none\n"
    ";Hidden=1\n"
    "Quoted=\" kept \"\nLone=\"\nNo separator\n"
    "Level=99\n"
    "Big=4294967295\n"
    "[ Other ]trailing\n"
    "Level=3\n"
    "[debug]\n"
    "Late=1\n"
    "[Open\n"
    "In=5";

TEST(Profile, ReadsNumbersAndTextBySectionAndKeyWithoutCase) {
  TempFolder folder;
  const std::u16string path = folder.Put("p.ini", kContent);
  struct Row {
    const char16_t* section;
    const char16_t* key;
    int32_t number;  ///< With the default 77.
    const char16_t* text;
  };
  const Row rows[] = {
      {u"Debug", u"Level", 12, u"12 lamps"},
      {u"DEBUG", u"lEVEL", 12, u"12 lamps"},
      {u"Debug", u"Minus", -7, u"-7"},
      {u"Debug", u"Hex", 0, u"0x1F"},
      {u"Debug", u"Empty", 77, u""},
      {u"Debug", u"Word", 0, u"none"},
      {u"Debug", u"Hidden", 77, u"(default)"},
      {u"Debug", u"Quoted", 0, u" kept "},
      {u"Debug", u"Lone", 0, u"\""},
      {u"Debug", u"Big", -1, u"4294967295"},
      {u"Other", u"Level", 3, u"3"},
      {u"Debug", u"Late", 77, u"(default)"},
      {u"Open", u"In", 5, u"5"},
      {u"", u"stray", 77, u"(default)"},
      {u"None", u"Level", 77, u"(default)"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ProfileInt(path.c_str(), row.section, row.key, 77), row.number) << testing::PrintToString(row.key);
    EXPECT_EQ(Text(path, row.section, row.key), row.text);
  }
  EXPECT_EQ(ProfileInt(folder.Name("missing").c_str(), u"Debug", u"Level", 5), 5);
  EXPECT_EQ(ProfileInt(path.c_str(), nullptr, u"Level", 5), 5);
  EXPECT_EQ(ProfileInt(path.c_str(), u"Debug", nullptr, 5), 5);
  EXPECT_EQ(ProfileInt(nullptr, u"Debug", u"Level", 5), 5);
}

TEST(Profile, TextIsCutToTheBuffer) {
  TempFolder folder;
  const std::u16string path = folder.Put("p.ini", "[a]\nb=abcdef");
  char16_t buffer[4] = {u'#', u'#', u'#', u'#'};
  EXPECT_EQ(ProfileText(path.c_str(), u"a", u"b", nullptr, buffer, 3), 2u);
  EXPECT_EQ(std::u16string(buffer), u"ab");
  EXPECT_EQ(buffer[3], u'#');
  EXPECT_EQ(ProfileText(path.c_str(), u"a", u"none", nullptr, buffer, 3), 0u);
  EXPECT_EQ(buffer[0], 0);
}

TEST(Profile, UnderstandsUtf16Utf8AndTheAnsiPage) {
  TempFolder folder;
  const std::string utf16("\xFF\xFE[\0a\0]\0\n\0k\0=\0\xE4\0", 16);
  for (const std::string& content : {utf16, std::string("\xEF\xBB\xBF[a]\nk=\xC3\xA4"), std::string("[a]\nk=\xC3\xA4"),
                                     std::string("[a]\nk=\xE4"), utf16 + "\n"}) {
    EXPECT_EQ(Text(folder.Put("p.ini", content), u"A", u"K"), u"ä") << testing::PrintToString(content);
  }
  EXPECT_EQ(Text(folder.Put("p.ini", ""), u"a", u"k"), u"(default)");
  EXPECT_EQ(Text(folder.Put("p.ini", "\xFF\xFE"), u"a", u"k"), u"(default)");
}

TEST(Profile, TheUsersFileLiesWhereTheEnvironmentSays) {
  const char* former = getenv("MARLO_PROFILE_DIR");
  const std::string kept = former != nullptr ? former : "";
  setenv("MARLO_PROFILE_DIR", "/some/folder", 1);
  EXPECT_EQ(UserProfilePath(), u"/some/folder/win.ini");
  former != nullptr ? setenv("MARLO_PROFILE_DIR", kept.c_str(), 1) : unsetenv("MARLO_PROFILE_DIR");
}

}  // namespace
}  // namespace plat
