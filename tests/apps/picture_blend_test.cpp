// SPDX-License-Identifier: Apache-2.0
// Fades and fields of the program against sums done here.
#include <gmock/gmock.h>

#include "apps/picture_files.h"

namespace apps_test {
namespace {

using testing::ElementsAre;

TEST_F(Picture, Fades) {
  MakePicture(folder / "a.png", "2x1", {255, 255, 255, 255, 10, 20, 30, 255});
  MakePicture(folder / "b.png", "2x1", {255, 255, 255, 255, 90, 0, 200, 255});
  const std::string a = folder / "a.png";
  const std::string b = folder / "b.png";
  const struct {
    std::vector<std::string> words;
    double expected[4];  ///< Of the right pixel; the left one stays white where `white` says so.
    bool white;
  } kRows[] = {
      {{a, b, "--weight", "0"}, {10, 20, 30, 255}, true},
      {{a, b, "--weight", "1"}, {90, 0, 200, 255}, true},
      {{a, b, "--weight", "0.3"}, {34, 14, 81, 255}, true},
      {{a, "--color", "00FF80", "--weight", "1"}, {0, 255, 128, 255}, false},
      {{a, "--color", "FFFFFF", "--weight", "0.5"}, {132.5, 137.5, 142.5, 255}, true},
      {{a, "--color", "12345600", "--weight", "0.5"}, {10, 20, 30, 127.5}, false},
  };
  for (const auto& row : kRows) {
    std::vector<std::string> line = {"picture", "fade", "-o", folder / "o.png"};
    line.insert(line.end(), row.words.begin(), row.words.end());
    ASSERT_EQ(RunHost(line).err, "");
    const Bytes pixels = PixelsOf(folder / "o.png");
    ASSERT_EQ(pixels.size(), 8u);
    for (size_t channel = 0; channel < 4; ++channel) {
      EXPECT_NEAR(pixels[4 + channel], row.expected[channel], 1.5) << testing::PrintToString(row.words) << channel;
      if (row.white) {
        EXPECT_EQ(pixels[channel], 255) << testing::PrintToString(row.words) << channel;
      }
    }
  }
  MakePicture(folder / "c.png", "1x1", {1, 2, 3, 255});
  const RunResult result =
      RunHost({"picture", "fade", a, folder / "c.png", "--weight", "1", "-o", folder / "never.png"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, testing::HasSubstr("differ in size"));
}

/// Green of every row of a picture one pixel wide.
Bytes Column(const std::string& path) {
  Bytes column;
  const Bytes pixels = PixelsOf(path);
  for (size_t at = 1; at < pixels.size(); at += 4) column.push_back(pixels[at]);
  return column;
}

TEST_F(Picture, Fields) {
  Bytes a, b;
  for (const uint8_t level : Bytes{8, 40, 80, 160, 200}) {
    a.insert(a.end(), {0, level, 0, 255});
    b.insert(b.end(), {0, static_cast<uint8_t>(level + 2), 0, 255});
  }
  MakePicture(folder / "a.png", "1x5", a);
  MakePicture(folder / "b.png", "1x5", b);
  const std::string out = folder / "o.png";
  const auto work = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"picture", "fields", "-o", out});
    EXPECT_EQ(RunHost(words).err, "");
    return Column(out);
  };
  EXPECT_THAT(work({"weave", folder / "a.png", folder / "b.png"}), ElementsAre(8, 42, 80, 162, 200));
  EXPECT_THAT(work({"upper", folder / "a.png"}), ElementsAre(8, 44, 80, 140, 200));
  const Bytes lower = work({"lower", folder / "a.png"});
  ASSERT_EQ(lower.size(), 5u);
  EXPECT_THAT(Bytes(lower.begin() + 1, lower.end() - 1), ElementsAre(40, 100, 160));
  // 1, 2, 1 with repeated edges; in one column the 3x3 filter is the same sum.
  for (const char* filter : {"soften", "smooth"}) {
    EXPECT_THAT(work({filter, folder / "a.png"}), ElementsAre(16, 42, 90, 150, 190)) << filter;
  }
}

}  // namespace
}  // namespace apps_test
