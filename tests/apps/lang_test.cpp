// SPDX-License-Identifier: Apache-2.0
// marlo lang: languages with their texts, and one text in a language.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "apps/host_run.h"

namespace apps_test {
namespace {

TEST(Lang, ListsTheTable) {
  const auto rows = nlohmann::json::parse(RunHost({"lang", "list", "--json"}).out)["languages"];
  ASSERT_EQ(rows.size(), 18U);
  EXPECT_EQ(rows[2]["lcid"], "0x0407");
  EXPECT_EQ(rows[2]["abbreviation"], "DEU");
  EXPECT_GT(rows[0]["texts"], rows[2]["texts"]);
  EXPECT_GT(rows[2]["texts"], 200);
  EXPECT_EQ(rows[17]["texts"], 0);
  EXPECT_THAT(RunHost({"lang", "list", "--texts"}).out, testing::HasSubstr("box.cancel = Cancel\n"));
}

TEST(Lang, ShowsATextInALanguage) {
  struct {
    const char *lcid, *text;
  } const rows[] = {{"0x407", "Abbrechen\n"}, {"1036", "Annuler\n"}, {"0x411", "キャンセル\n"},
                    {"0xC0A", "Cancelar\n"},  {"0x41D", "Cancel\n"}, {"0x809", "Cancel\n"}};
  for (const auto& row : rows) EXPECT_EQ(RunHost({"lang", "show", "box.cancel", "--lcid", row.lcid}).out, row.text);
  EXPECT_EQ(RunHost({"lang", "show", "12"}).exitCode, 1) << "the library has no language module";
  EXPECT_EQ(RunHost({"lang", "show", "no.text"}).exitCode, 1);
  EXPECT_EQ(RunHost({"lang", "show", "70000"}).exitCode, 2);
  EXPECT_EQ(RunHost({"lang", "show", "box.ok", "--lcid", "German"}).exitCode, 2);
  EXPECT_EQ(RunHost({"lang"}).exitCode, 2);
}

}  // namespace
}  // namespace apps_test
