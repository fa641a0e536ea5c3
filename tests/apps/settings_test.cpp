// SPDX-License-Identifier: Apache-2.0
// marlo settings: values from one process to the next, lists, refusals.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <nlohmann/json.hpp>

#include "apps/host_run.h"

namespace apps_test {
namespace {

RunResult Settings(std::vector<std::string> words) {
  words.insert(words.begin(), "settings");
  return RunHost(std::move(words));
}

class SettingsCommand : public testing::Test {
 protected:
  SettingsCommand() { setenv("MARLO_SETTINGS_DIR", (folder_ / "settings").c_str(), 1); }
  ~SettingsCommand() override { unsetenv("MARLO_SETTINGS_DIR"); }
  Folder folder_;
};

TEST_F(SettingsCommand, EveryTypeComesBack) {
  const struct {
    const char* type;
    std::vector<std::string> values;
    const char* out;
  } rows[] = {{"number", {"4294967295"}, "-1\n"},
              {"number", {"-2147483648"}, "-2147483648\n"},
              {"string", {"Größe 𝄞"}, "Größe 𝄞\n"},
              {"string", {""}, "\n"},
              {"binary", {"00fFA5"}, "00ffa5\n"},
              {"binary", {""}, "\n"},
              {"multi", {"one", "two words"}, "one\ttwo words\n"}};
  for (const auto& row : rows) {
    // A negative value would look like an option.
    std::vector<std::string> words = {"set", "--type", row.type, "--", "Kernel\\Deep", "7"};
    words.insert(words.end(), row.values.begin(), row.values.end());
    const RunResult set = Settings(words);
    EXPECT_EQ(set.exitCode, 0) << set.err;
    EXPECT_EQ(Settings({"get", "kernel\\DEEP", "7", "--type", row.type}).out, row.out);
  }
  EXPECT_EQ(Settings({"get", "Kernel\\Deep", "7", "--version", "11.1"}).exitCode, 1);
  EXPECT_EQ(Settings({"get", "Kernel\\Deep", "7", "--product", "Other"}).exitCode, 1);
  EXPECT_EQ(Settings({"set", "A", "1", "5", "--version", "0"}).exitCode, 0);

  EXPECT_EQ(Settings({"list"}).out,
            "Kernel\\Deep\t7\tnumber\t-2147483648\nKernel\\Deep\t7\tbinary\t\nKernel\\Deep\t7\tstring\t\n"
            "Kernel\\Deep\t7\tmulti\tone\ttwo words\n");
  EXPECT_EQ(Settings({"list", "--version", "0", "a"}).out, "a\t1\tnumber\t5\n");
  const auto document = nlohmann::json::parse(Settings({"export"}).out);
  EXPECT_EQ(document["version"], "11.0");
  EXPECT_EQ(document["keys"]["Kernel\\Deep"][3]["value"], nlohmann::json({"one", "two words"}));

  EXPECT_EQ(Settings({"delete", "Kernel\\Deep", "7"}).exitCode, 0);
  EXPECT_EQ(Settings({"delete", "Kernel\\Deep", "7"}).exitCode, 1);
  EXPECT_EQ(Settings({"get", "Kernel\\Deep", "7"}).exitCode, 1);
  EXPECT_EQ(Settings({"get", "Kernel\\Deep", "7", "--type", "binary"}).exitCode, 0);
}

TEST_F(SettingsCommand, RefusesWrongWords) {
  const std::vector<std::string> rows[] = {{},
                                           {"get", "K"},
                                           {"set", "K", "1"},
                                           {"set", "K", "x", "1"},
                                           {"set", "K", "1", "4294967296"},
                                           {"set", "K", "1", "2", "3"},
                                           {"set", "K", "1", "abc", "--type", "binary"},
                                           {"set", "K", "1", "zz", "--type", "binary"},
                                           {"set", "K", "1", "a", "", "--type", "multi"},
                                           {"get", "K", "1", "--type", "float"},
                                           {"get", "K", "1", "--version", "256.0"},
                                           {"get", "K", "1", "--version", "0.5"},
                                           {"get", "K", "1", "--product", "a\\b"}};
  for (const auto& row : rows) EXPECT_EQ(Settings(row).exitCode, 2) << testing::PrintToString(row);
}

TEST_F(SettingsCommand, AFolderThatCannotBeWritten) {
  setenv("MARLO_SETTINGS_DIR", "/dev/null/settings", 1);
  EXPECT_EQ(Settings({"list"}).exitCode, 0);
  EXPECT_EQ(Settings({"get", "K", "1"}).exitCode, 1);
  const RunResult set = Settings({"set", "K", "1", "2"});
  EXPECT_EQ(set.exitCode, 1);
  EXPECT_NE(set.err.find("0x80070005"), std::string::npos) << set.err;
}

}  // namespace
}  // namespace apps_test
