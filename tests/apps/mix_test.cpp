// SPDX-License-Identifier: Apache-2.0
// Mixes by the program against sums made here, sample by sample.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"
#include "testing/random.h"

namespace apps_test {
namespace {

struct Track {
  std::string type;
  uint16_t channels;
  int64_t frames;
  std::string suffix;
  int64_t start;  // Frames at 48000.
  double gain;
  std::vector<double> values = {};
};

std::vector<double> Noise(testing_support::Random* random, size_t count, double peak) {
  std::vector<double> values(count);
  for (double& value : values) value = random->Real(-peak, peak);
  return values;
}

TEST(Mix, EqualsASumOfDoublesConvertedOnce) {
  testing_support::Random random(20201);
  SCOPED_TRACE(random.Label());
  Folder folder;
  // Lengths beyond a block, starts inside one, overlaps that come and go, mono among stereo, all layouts.
  std::vector<Track> tracks = {
      {"pcm16", 2, 70001, "", 0, 1},
      {"pcm8", 1, 3000, "@0.5:0.3", 24000, 0.3},
      {"pcm24", 2, 140000, "@2:-6dB", 96000, std::pow(10.0, -6.0 / 20)},
      {"float32", 1, 90000, ":-0.7", 0, -0.7},
      {"float64", 2, 1, "@6", 288000, 1},
      {"pcm32", 2, 65536, "@0.00001", 0, 1},
      {"aiff", 2, 5000, "@1:0.25", 48000, 0.25},
      {"aifc", 1, 5000, "@1.00003", 48001, 1},
  };
  std::vector<std::string> words = {"mix", folder / "out.wav"};
  int64_t frames = 0;
  for (size_t index = 0; index < tracks.size(); ++index) {
    Track& track = tracks[index];
    const bool aiff = track.type == "aiff" || track.type == "aifc";
    const Layout layout = aiff ? Layout{16, false, track.type == "aiff"} : LayoutOf(track.type);
    const size_t count = static_cast<size_t>(track.frames) * track.channels;
    const Bytes samples = EncodeAll(Noise(&random, count, 0.4), layout);
    track.values = DecodeAll(samples, 0, count, layout);
    const std::string path = folder / ("in" + std::to_string(index));
    WriteFileBytes(path, aiff             ? MakeAiff(layout, track.channels, samples, track.type == "aifc")
                         : index % 2 == 0 ? MakeWave(layout, 48000, track.channels, samples)
                                          : MakeWave64(layout, 48000, track.channels, samples));
    words.push_back(path + track.suffix);
    frames = std::max(frames, track.start + track.frames);
  }
  std::vector<double> sum(static_cast<size_t>(frames) * 2, 0.0);
  for (const Track& track : tracks) {
    for (int64_t frame = 0; frame < track.frames; ++frame) {
      for (size_t channel = 0; channel < 2; ++channel) {
        const double value =
            track.values[static_cast<size_t>(frame) * track.channels + (track.channels == 1 ? 0 : channel)];
        double& place = sum[static_cast<size_t>(track.start + frame) * 2 + channel];
        place = value * track.gain + place;
      }
    }
  }
  for (const char* type : {"pcm16", "pcm24", "float64"}) {
    std::vector<std::string> all = words;
    all.insert(all.end(), {"--type", type});
    const RunResult result = RunHost(all);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const Bytes file = ReadFileBytes(folder / "out.wav");
    const Bytes expected = EncodeAll(sum, LayoutOf(type));
    ASSERT_EQ(file.size(), 46 + expected.size()) << type;
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), file.begin() + 46)) << type;
  }
  // Without --type the first input's, and the sum passes full scale somewhere: said, not silently cut.
  const RunResult result = RunHost(words);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(ReadFileBytes(folder / "out.wav").size(), 46 + sum.size() * 2);
  EXPECT_THAT(result.err, testing::HasSubstr("limited to full scale"));
}

TEST(Mix, MoreChannelsKeepTheirSpeakersInAnExtensibleFront) {
  Folder folder;
  const Layout layout{16};
  const std::vector<double> surround = {0.1, 0.2, 0.3, 0.4, 0.5, -0.6};
  WriteFileBytes(folder / "six.wav", MakeExtensibleWave(layout, 48000, 6, 0x60F, EncodeAll(surround, layout)));
  WriteFileBytes(folder / "mono.wav", MakeWave(layout, 48000, 1, EncodeAll({0.25}, layout)));
  for (const char* name : {"out.wav", "out.w64"}) {
    const bool wide = std::string(name) == "out.w64";
    ASSERT_EQ(RunHost({"mix", folder / name, folder / "mono.wav", folder / "six.wav"}).exitCode, 0);
    const Bytes file = ReadFileBytes(folder / name);
    const size_t format = wide ? 64 : 20;
    ASSERT_GE(file.size(), format + 40);
    EXPECT_EQ(Get32(file, format), 0x0006FFFEu);  // Extensible, six channels.
    EXPECT_EQ(Get32(file, format + 20), 0x60Fu);
    EXPECT_EQ(Get32(file, wide ? 16 : 4), wide ? 128 + 16 : 60 + 12);
    Bytes expected;
    for (const double value : surround)
      Encode(Decode(EncodeAll({value}, layout).data(), layout) + 0.25, layout, &expected);
    EXPECT_EQ(Bytes(file.begin() + (wide ? 128 : 68), file.begin() + (wide ? 140 : 80)), expected);
  }
  // AIFF has no place for speakers, but takes the channels.
  ASSERT_EQ(RunHost({"mix", folder / "out.aiff", folder / "six.wav"}).exitCode, 0);
  EXPECT_EQ(ReadFileBytes(folder / "out.aiff")[21], 6);
}

TEST(Mix, WhatDoesNotFitTogetherIsRefusedAndNothingIsLeft) {
  Folder folder;
  const Layout layout{16};
  WriteFileBytes(folder / "a.wav", MakeWave(layout, 48000, 2, Bytes(400)));
  WriteFileBytes(folder / "rate.wav", MakeWave(layout, 44100, 2, Bytes(400)));
  WriteFileBytes(folder / "three.wav", MakeWave(layout, 48000, 3, Bytes(600)));
  for (const char* other : {"rate.wav", "three.wav"}) {
    const RunResult result = RunHost({"mix", folder / "out.wav", folder / "a.wav", folder / other});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("0x8004E000"));
  }
  // A length that a Wave file can't state is refused before a byte is written.
  RunResult result = RunHost({"mix", folder / "out.wav", (folder / "a.wav") + "@23000"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, testing::AllOf(testing::HasSubstr("0x8004E03A"), testing::HasSubstr("Wave64")));
  EXPECT_EQ(RunHost({"mix", folder / "out.wav"}).exitCode, 2);
  EXPECT_EQ(RunHost({"mix", folder / "out.mp3", folder / "a.wav"}).exitCode, 2);
  EXPECT_THAT(folder.Names(), testing::ElementsAre("a.wav", "rate.wav", "three.wav"));
}

TEST(Mix, MoreInputsThanStayOpen) {
  Folder folder;
  const Layout layout{16};
  // 300 inputs of 1000 frames, each a frame later than the one before; a low limit of open files shows
  // that they aren't all open at once.
  const Bytes samples = EncodeAll(std::vector<double>(1000, 1.0 / 1024), layout);
  WriteFileBytes(folder / "in.wav", MakeWave(layout, 48000, 1, samples));
  std::vector<std::string> words = {"bash",        "-c",  "ulimit -n 64; exec \"$@\"", "-",
                                    MARLO_PROGRAM, "mix", folder / "out.wav"};
  for (int index = 0; index < 300; ++index) {
    words.push_back((folder / "in.wav") + "@" + std::to_string(index / 48000.0));
  }
  const RunResult result = RunProgram(words);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::vector<double> sum = DecodeAll(ReadFileBytes(folder / "out.wav"), 46, 1299, layout);
  ASSERT_EQ(sum.size(), 1299u);
  for (int frame = 0; frame < 1299; ++frame) {
    const int active = std::min({frame + 1, 300, 1299 - frame});
    ASSERT_EQ(sum[static_cast<size_t>(frame)], active / 1024.0) << frame;
  }
}

TEST(Mix, OutputMayReplaceAnInput) {
  Folder folder;
  const Layout layout{16};
  WriteFileBytes(folder / "a.wav", MakeWave(layout, 48000, 1, EncodeAll({0.5, -0.5}, layout)));
  ASSERT_EQ(RunHost({"mix", folder / "a.wav", (folder / "a.wav") + ":0.5"}).exitCode, 0);
  EXPECT_THAT(DecodeAll(ReadFileBytes(folder / "a.wav"), 46, 2, layout), testing::ElementsAre(0.25, -0.25));
  EXPECT_THAT(folder.Names(), testing::ElementsAre("a.wav"));
}

TEST(Mix, JsonTellsWhatWasMade) {
  Folder folder;
  const Layout layout{16};
  WriteFileBytes(folder / "a.wav", MakeWave(layout, 48000, 1, EncodeAll({0.5, -0.75}, layout)));
  const RunResult result = RunHost({"mix", folder / "o.aifc", (folder / "a.wav") + "@1:2", "--json"});
  ASSERT_EQ(result.exitCode, 0);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["container"], "aifc");
  EXPECT_EQ(json["type"], "pcm16");
  EXPECT_EQ(json["frames"], 48002);
  EXPECT_EQ(json["peak"], 1.5);
  EXPECT_EQ(json["inputs"][0]["start_frame"], 48000);
  EXPECT_EQ(json["inputs"][0]["gain"], 2.0);
}

}  // namespace
}  // namespace apps_test
