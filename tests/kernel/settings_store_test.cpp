// SPDX-License-Identifier: Apache-2.0
// The settings store: one suite over both backends.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/sys/settings.h"
#include "testing/temp_folder.h"

namespace {

using plat::SettingsTree;
using Names = std::vector<std::u16string>;

class SettingsStore : public testing::TestWithParam<plat::SettingsBackend> {
 protected:
  SettingsStore() { plat::UseSettings(GetParam(), folder_.Name("new/folder").c_str()); }
  ~SettingsStore() override {
    plat::CloseSettingsKey(key_);
    plat::UseSettings(plat::SettingsBackend::kFiles, nullptr);
  }
  void Create(const char16_t* path) {
    plat::CloseSettingsKey(key_);
    ASSERT_EQ(0U, plat::CreateSettingsKey(SettingsTree::kUser, path, &key_));
  }
  uint32_t Set(const char16_t* name, uint32_t type, const std::string& data) {
    return plat::SetSetting(key_, name, type, data.data(), static_cast<uint32_t>(data.size()));
  }
  /// "type:data", or "error N".
  std::string Get(const char16_t* name) {
    char data[64] = {};
    uint32_t type = 0;
    uint32_t bytes = sizeof data;
    const uint32_t result = plat::QuerySetting(key_, name, &type, data, &bytes);
    if (result != 0) return "error " + std::to_string(result);
    return std::to_string(type) + ":" + std::string(data, bytes);
  }
  static Names Keys(const char16_t* path) {
    Names names;
    EXPECT_EQ(0U, plat::ListSettingsKeys(SettingsTree::kUser, path, &names));
    return names;
  }

  testing_support::TempFolder folder_;
  plat::SettingsKey* key_ = nullptr;
};

TEST_P(SettingsStore, ValuesKeepTypeAndBytes) {
  Create(u"Software\\Maker\\Thing");
  EXPECT_EQ("error 2", Get(u"1"));
  const std::string zeros("a\0b\0", 4);
  for (const uint32_t type : {1U, 2U, 3U, 4U, 7U}) {
    ASSERT_EQ(0U, Set(u"1", type, zeros));
    EXPECT_EQ(std::to_string(type) + ":" + zeros, Get(u"1"));
  }
  ASSERT_EQ(0U, Set(u"1", 3, ""));
  EXPECT_EQ("3:", Get(u"1"));
  // Neither the case of a key's path nor that of a name counts, in any alphabet; the default value has no name.
  ASSERT_EQ(0U, Set(u"Größe Ä", 4, "7777"));
  ASSERT_EQ(0U, Set(nullptr, 1, "d"));
  Create(u"\\SOFTWARE\\maker\\\\THING\\");
  EXPECT_EQ("4:7777", Get(u"GRÖßE ä"));
  EXPECT_EQ("1:d", Get(u""));
  Names names;
  EXPECT_EQ(0U, plat::ListSettings(key_, &names));
  EXPECT_EQ((Names{u"", u"1", u"Größe Ä"}), names);
  EXPECT_EQ(0U, plat::DeleteSetting(key_, u"größe ä"));
  EXPECT_EQ(2U, plat::DeleteSetting(key_, u"größe ä"));
}

TEST_P(SettingsStore, ABufferOfAnySize) {
  Create(u"K");
  ASSERT_EQ(0U, Set(u"v", 3, "12345678"));
  for (uint32_t room = 0; room <= 9; ++room) {
    char data[10] = "_________";
    uint32_t bytes = room;
    EXPECT_EQ(room < 8 ? 234U : 0U, plat::QuerySetting(key_, u"v", nullptr, data, &bytes));
    EXPECT_EQ(8U, bytes);
    EXPECT_EQ(std::string("12345678").substr(0, room) + std::string(9 - std::min(room, 8U), '_'), data);
  }
  uint32_t bytes = 0;
  EXPECT_EQ(0U, plat::QuerySetting(key_, u"v", nullptr, nullptr, &bytes));
  EXPECT_EQ(8U, bytes);
}

TEST_P(SettingsStore, KeysAreListedSortedAndDeletedAsTold) {
  for (const char16_t* path : {u"A\\b\\c", u"A\\Z", u"A\\é", u"A\\a", u"B"}) Create(path);
  EXPECT_EQ((Names{u"a", u"b", u"Z", u"é"}), Keys(u"A"));
  EXPECT_EQ((Names{u"A", u"B"}), Keys(u""));
  EXPECT_EQ(5U, plat::DeleteSettingsKey(SettingsTree::kUser, u"a\\B"));
  EXPECT_EQ(0U, plat::DeleteSettingsKey(SettingsTree::kUser, u"a\\B\\C"));
  EXPECT_EQ(0U, plat::DeleteSettingsKey(SettingsTree::kUser, u"a\\B"));
  EXPECT_EQ(2U, plat::DeleteSettingsKey(SettingsTree::kUser, u"a\\B"));
  EXPECT_EQ((Names{u"a", u"Z", u"é"}), Keys(u"A"));
  EXPECT_EQ(87U, plat::DeleteSettingsBranch(SettingsTree::kUser, u""));

  // A handle on a deleted key stays harmless, also when the key is there anew.
  Create(u"A\\Z\\deep");
  ASSERT_EQ(0U, Set(u"v", 3, "x"));
  ASSERT_EQ(0U, plat::DeleteSettingsBranch(SettingsTree::kUser, u"A"));
  EXPECT_EQ("error 2", Get(u"v"));
  EXPECT_EQ(1018U, Set(u"v", 3, "x"));
  plat::SettingsKey* other = nullptr;
  ASSERT_EQ(0U, plat::CreateSettingsKey(SettingsTree::kUser, u"A\\Z\\deep", &other));
  EXPECT_EQ(1018U, Set(u"v", 3, "x"));
  plat::CloseSettingsKey(other);
  EXPECT_EQ(2U, plat::OpenSettingsKey(SettingsTree::kUser, u"A\\nothing", &other));
  EXPECT_EQ(nullptr, other);
}

TEST_P(SettingsStore, TreesAreApart) {
  Create(u"K");
  ASSERT_EQ(0U, Set(u"v", 3, "user"));
  for (const SettingsTree tree : {SettingsTree::kMachine, SettingsTree::kClasses}) {
    plat::SettingsKey* other = nullptr;
    EXPECT_EQ(2U, plat::OpenSettingsKey(tree, u"K", &other));
    ASSERT_EQ(0U, plat::CreateSettingsKey(tree, u"K", &other));
    uint32_t bytes = 0;
    EXPECT_EQ(2U, plat::QuerySetting(other, u"v", nullptr, nullptr, &bytes));
    plat::CloseSettingsKey(other);
  }
}

INSTANTIATE_TEST_SUITE_P(Backends, SettingsStore,
                         testing::Values(plat::SettingsBackend::kFiles, plat::SettingsBackend::kMemory));

}  // namespace
