// SPDX-License-Identifier: Apache-2.0
// marlo time: positions from one format into another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "apps/host_run.h"

namespace apps_test {
namespace {

TEST(Time, ConvertsBetweenFormats) {
  const struct {
    const char *text, *from, *to, *shown;
  } kRows[] = {{"00:01:00;02", "smpte-29.97-drop", "samples", "2882880\n"},  // frame 1800 * 48000 * 1001 / 30000
               {"2", "seconds", "measures", "2.1.000\n"},
               {"90", "time", "smpte-25", "00:01:30:00\n"},
               {"36", "frames", "feet-16", "2+4\n"},
               {"36", "frames", "clock", "0:01\n"},
               {"1.2.000", "measures-0", "beats", "6.000\n"},
               {"-0.1", "seconds", "nano", "-1000000\n"}};
  for (const auto& row : kRows) {
    std::string out = RunHost({"time", "--from", row.from, "--to", row.to, "--", row.text}).out;
    std::erase(out, ',');  // of a user whose locale has groups
    EXPECT_EQ(row.shown, out);
  }
  EXPECT_EQ("3.1.000\n",
            RunHost({"time", "6", "--from", "seconds", "--to", "measures", "--meter", "3/4", "--tempo", "60"}).out);
}

TEST(Time, RefusesWhatItCannotRead) {
  EXPECT_EQ(2, RunHost({"time", "x", "--from", "seconds", "--to", "nano"}).exitCode);
  EXPECT_EQ(2, RunHost({"time", "1", "--from", "beats", "--to", "nano"}).exitCode);
  EXPECT_EQ(2, RunHost({"time", "1", "--from", "hours", "--to", "nano"}).exitCode);
  EXPECT_EQ(2, RunHost({"time", "1", "--to", "nano"}).exitCode);
  EXPECT_EQ(2, RunHost({"time", "1", "--from", "nano", "--to", "nano", "--meter", "4"}).exitCode);
}

}  // namespace
}  // namespace apps_test
