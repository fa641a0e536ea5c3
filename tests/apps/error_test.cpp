// SPDX-License-Identifier: Apache-2.0
// marlo error: codes in words, from every way of writing them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "apps/host_run.h"

namespace apps_test {
namespace {

TEST(Error, CodesInWords) {
  const std::string found = "An error occurred during the current operation.\n\nThe item was not found.\n";
  for (const char* code : {"0x8004E00A", "0X8004e00a", "2147803146"}) {
    const RunResult result = RunHost({"error", code});
    EXPECT_EQ(result.exitCode, 0) << code;
    EXPECT_EQ(result.out, found) << code;
  }
  EXPECT_EQ(RunHost({"error", "--", "-2147164150"}).out, found);
  EXPECT_EQ(RunHost({"error", "0x8004E00A", "--context", "5", "--argument", "100%d.veg"}).out,
            "An error occurred while loading the project file 100%d.veg.\n\nThe item was not found.\n");
  EXPECT_EQ(RunHost({"error", "0x0004E00E", "--context=26"}).out,
            "An error occurred starting marlo.\n\nThis project file was created by an older version of marlo.\n");
  EXPECT_EQ(RunHost({"error", "305419896"}).out,
            "An error occurred during the current operation.\n\nError 0x12345678 (message missing)\n");
  const auto document = nlohmann::json::parse(RunHost({"error", "0x8004E0C8", "--json"}).out);
  EXPECT_EQ(document["code"], "0x8004E0C8");
  EXPECT_EQ(document["known"], false);
}

TEST(Error, WrongWords) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"1", "2"},
                                                {"x"},
                                                {"0x"},
                                                {"0x-1"},
                                                {"4294967296"},
                                                {"-2147483649"},
                                                {"12a"},
                                                {"1", "--context", "65536"},
                                                {"1", "--context", "x"},
                                                {"1", "--argument", "\xFF"}}) {
    std::vector<std::string> line = {"error"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_EQ(RunHost(line).exitCode, 2) << testing::PrintToString(words);
  }
}

}  // namespace
}  // namespace apps_test
