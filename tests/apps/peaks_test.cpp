// SPDX-License-Identifier: Apache-2.0
// Peak files and waveform pictures of the program from outside.
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"
#include "image_file.h"

namespace apps_test {
namespace {

using nlohmann::json;

/// One second of stereo at 8 kHz: half scale on the left in the second half, silence elsewhere.
Bytes HalfSecondLeft() {
  std::vector<double> samples;
  for (int frame = 0; frame < 8000; ++frame) {
    samples.push_back(frame < 4000 ? 0.0 : frame % 2 == 0 ? 0.5 : -0.5);
    samples.push_back(0.0);
  }
  return MakeWave(Layout{16}, 8000, 2, EncodeAll(samples, Layout{16}));
}

TEST(Peaks, BuildsChecksAndRebuilds) {
  Folder folder;
  const std::string sound = folder / "a.wav";
  WriteFileBytes(sound, HalfSecondLeft());
  const auto run = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"peaks", sound, "--json"});
    const RunResult result = RunHost(words);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return json::parse(result.out);
  };
  json document = run({"--interval", "1000", "--bits", "8"});
  EXPECT_EQ(document["built"], true);
  EXPECT_EQ(document["entries"], 8);
  const Bytes peaks = ReadFileBytes(folder / "a.zrk");
  ASSERT_EQ(peaks.size(), 64u + 8 * 4);
  EXPECT_EQ(peaks[64 + 5 * 4], 0xC0);
  EXPECT_EQ(peaks[64 + 5 * 4 + 1], 0x40);
  EXPECT_EQ(run({})["built"], false);
  EXPECT_EQ(run({"--bits", "8"})["built"], false);
  EXPECT_EQ(run({"--interval", "64"})["entries"], 125);
  Bytes longer = HalfSecondLeft();
  longer.insert(longer.end(), 4000, 0);
  Set32(&longer, 40, Get32(longer, 40) + 4000);
  WriteFileBytes(sound, longer);
  EXPECT_EQ(run({})["frames"], 9000);
  EXPECT_EQ(run({"--out", folder / "b.zrk"})["built"], true);
  EXPECT_EQ(ReadFileBytes(folder / "b.zrk").size(), 64u + 36 * 8);
  EXPECT_THAT(folder.Names(), testing::ElementsAre("a.wav", "a.zrk", "b.zrk"));
  EXPECT_EQ(RunHost({"peaks", sound, "--bits", "12"}).exitCode, 2);
  EXPECT_EQ(RunHost({"peaks", sound, "--width", "500"}).exitCode, 2);
  EXPECT_EQ(RunHost({"peaks", folder / "none.wav"}).exitCode, 1);
}

TEST(Peaks, DrawsEveryChannelAtEveryZoom) {
  Folder folder;
  WriteFileBytes(folder / "a.wav", HalfSecondLeft());
  const std::string picture = folder / "a.png";
  // The whole second, half of it in which every pixel has less than a frame, and all that between.
  for (const char* to : {"1", "0.55", "0.502"}) {
    const RunResult result = RunHost({"peaks", folder / "a.wav", "--png", picture, "--width", "440", "--height", "424",
                                      "--from", "0.45", "--to", to});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const host::ImageFile file = host::ReadImageFile(picture);
    ASSERT_EQ(file.image.Width(), 440);
    ASSERT_EQ(file.image.Height(), 424);
    // The wave is blue, the lane dark. Half scale reaches the middle between the zero line and the edge of the lane of
    // 198 rows: rows 50 to 148.
    const auto waves = [&](int32_t x, int32_t y) {
      return file.image.Row(y)[x].b > 150 && file.image.Row(y)[x].r < 140;
    };
    const double seconds = std::stod(to) - 0.45;
    const auto edge = static_cast<int32_t>(40 + 0.05 / seconds * 400);
    EXPECT_FALSE(waves(edge - 10, 60)) << to;
    int32_t highest = 999, lowest = 0;
    for (int32_t x = edge + 2; x < std::min(edge + 60, 440); ++x) {
      for (int32_t y = 0; y < 200; ++y) {
        if (!waves(x, y)) continue;
        highest = std::min(highest, y);
        lowest = std::max(lowest, y);
      }
    }
    EXPECT_NEAR(highest, 50, 2) << to;
    EXPECT_NEAR(lowest, 148, 2) << to;
    // The right channel is a line at its lane's middle.
    EXPECT_TRUE(waves(200, 298) || waves(200, 299) || waves(200, 297)) << to;
    EXPECT_FALSE(waves(200, 280) || waves(200, 320)) << to;
  }
  EXPECT_EQ(RunHost({"peaks", folder / "a.wav", "--png", picture, "--from", "2"}).exitCode, 2);
}

}  // namespace
}  // namespace apps_test
