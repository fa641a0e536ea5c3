// SPDX-License-Identifier: Apache-2.0
// Facts of the system: version rules, names, display depth, version resources.
#include <gtest/gtest.h>

#include <string>

#include "kernel/system_facts.h"
#include "marlo110k/kernel.h"
#include "marlo110k/os.h"
#include "platform/sys/module.h"

namespace {

using marlo::SystemVersion;

TEST(OsVersion, ReachesRows) {
  const struct {
    SystemVersion version;
    uint32_t which, servicePack;
    bool reaches;
  } kRows[] = {
      {{2, 6, 1, 1, true}, ZROS_7, 0, true},      {{2, 6, 1, 1, true}, ZROS_7, 1, true},
      {{2, 6, 1, 1, true}, ZROS_7, 2, false},     {{2, 6, 1, 0, true}, ZROS_8, 0, false},
      {{2, 6, 1, 0, true}, ZROS_VISTA, 9, true},  {{2, 6, 0, 0, true}, ZROS_XP, 9, true},
      {{2, 5, 2, 0, true}, ZROS_VISTA, 0, false}, {{2, 10, 0, 0, true}, ZROS_8, 5, true},
      {{2, 6, 1, 1, true}, ZROS_95, 0, false},    {{2, 6, 1, 1, true}, 3, 0, false},
      {{2, 6, 1, 1, true}, 10, 0, false},         {{2, 6, 1, 1, true}, 0xFFFFFFFF, 0, false},
      {{1, 4, 0, 0, false}, ZROS_95, 0, true},    {{1, 4, 0, 0, false}, ZROS_98, 0, false},
      {{1, 4, 10, 0, false}, ZROS_98, 3, true},   {{1, 4, 1, 0, false}, ZROS_98SE, 0, false},
      {{2, 4, 0, 6, false}, ZROS_NT4, 6, true},   {{2, 3, 51, 9, false}, ZROS_NT4, 0, false},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.reaches, marlo::VersionReaches(row.version, row.which, row.servicePack))
        << row.version.major << '.' << row.version.minor << " row " << row.which;
  }
  EXPECT_EQ(1, ZrOSVersionOK(ZROS_7, 1));
  EXPECT_EQ(0, ZrOSVersionOK(ZROS_8, 0));
}

TEST(OsVersion, Names) {
  const struct {
    SystemVersion version;
    const char16_t* name;
    bool known;
  } kRows[] = {
      {{1, 4, 0, 0, false}, u"Windows 95", true},
      {{1, 4, 10, 0, false}, u"Windows 98", true},
      {{1, 4, 10, 1, false}, u"Windows 98 SE", true},
      {{1, 4, 90, 0, false}, u"Windows Me", true},
      {{2, 4, 0, 6, false}, u"Windows NT", true},
      {{2, 5, 0, 4, false}, u"Windows 2000 (32-bit)", true},
      {{2, 5, 1, 3, true}, u"Windows XP (64-bit)", true},
      {{2, 6, 0, 0, true}, u"Windows Vista (64-bit)", true},
      {{2, 6, 1, 1, true}, u"Windows 7 (64-bit)", true},
      {{2, 6, 2, 0, false}, u"Windows 8 (32-bit)", true},
      {{2, 10, 0, 0, true}, u"Unknown 2-10.0 (64-bit)", false},
      {{3, 1, 2, 0, true}, u"Unknown 3-1.2", false},
  };
  for (const auto& row : kRows) {
    char16_t buffer[64];
    EXPECT_EQ(row.known, marlo::SystemName(row.version, buffer, 64));
    EXPECT_EQ(std::u16string(row.name), buffer);
  }
  char16_t cut[8];
  EXPECT_EQ(1, ZrGetOS(cut, 8));
  EXPECT_EQ(std::u16string(u"Windows"), cut);
  EXPECT_EQ(0, ZrGetOS(nullptr, 8));
  EXPECT_EQ(0, ZrGetOS(cut, 0));
}

TEST(OsFacts, DisplayDepthIsCachedUntilAMessageComes) {
  EXPECT_EQ(0, ZrIsWin95());
  EXPECT_EQ(1, ZrIsOS64Bit());
  EXPECT_EQ(1, ZrIsHighColor());
  marlo::SetDisplayFacts({15, 8});
  EXPECT_EQ(1, ZrIsHighColor());
  ZrKernel_UserPrefChanges(nullptr, 20);
  EXPECT_EQ(1, ZrIsAllMonitorsHighColor());
  ZrKernel_UserPrefChanges(nullptr, WM_DISPLAYCHANGE);
  EXPECT_EQ(0, ZrIsHighColor());
  EXPECT_EQ(0, ZrIsAllMonitorsHighColor());
  marlo::SetDisplayFacts({16, 15});
  ZrKernel_UserPrefChanges(nullptr, WM_SYSCOLORCHANGE);
  EXPECT_EQ(1, ZrIsHighColor());
  EXPECT_EQ(0, ZrIsAllMonitorsHighColor());
  marlo::SetDisplayFacts({});
  ZrKernel_UserPrefChanges(nullptr, WM_DISPLAYCHANGE);
}

TEST(VersionResource, TheLibrarysOwn) {
  const std::u16string self = plat::ModulePath(plat::ThisModule());
  char16_t buffer[32];
  const struct {
    const char16_t* key;
    const char16_t* value;
  } kRows[] = {{u"CompanyName", u"Orlu Works"}, {u"ProductName", u"Marlo Pro"}, {u"FileVersion", u"11.0.0.701"}};
  for (const auto& row : kRows) {
    EXPECT_EQ(S_OK, ZrVersion_GetString(self.c_str(), row.key, buffer, 32));
    EXPECT_EQ(std::u16string(row.value), buffer);
  }
  EXPECT_EQ(S_OK, ZrVersion_GetString(self.c_str(), u"CompanyName", buffer, 5));
  EXPECT_EQ(std::u16string(u"Orlu"), buffer);
  // A path inside the resource has 128 characters at most; what is cut off isn't found.
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(self.c_str(), std::u16string(500, u'k').c_str(), buffer, 32));
}

TEST(VersionResource, MissingFilesKeysAndArguments) {
  const std::u16string self = plat::ModulePath(plat::ThisModule());
  char16_t buffer[16];
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(self.c_str(), u"NoSuchKey", buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(u"/etc/passwd", u"CompanyName", buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(u"/no/such/file", u"CompanyName", buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(nullptr, u"CompanyName", buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(self.c_str(), nullptr, buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(self.c_str(), u"CompanyName", nullptr, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrVersion_GetString(self.c_str(), u"CompanyName", buffer, 0));
}

}  // namespace
