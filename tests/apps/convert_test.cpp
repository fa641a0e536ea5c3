// SPDX-License-Identifier: Apache-2.0
// Conversions by the program against the rule of samples, and its files as other programs read them.
#include <gmock/gmock.h>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"
#include "testing/random.h"

namespace apps_test {
namespace {

constexpr const char* kTypes[] = {"pcm8", "pcm16", "pcm24", "pcm32", "float32", "float64"};

struct Target {
  const char* extension;
  size_t dataOffset;
  bool bigEndian;
  bool aiff;
};
constexpr Target kTargets[] = {
    {"wav", 46, false, false}, {"w64", 112, false, false}, {"aiff", 54, true, true}, {"aifc", 72, false, true}};

Layout LayoutIn(const std::string& type, const Target& target) {
  Layout layout = LayoutOf(type);
  layout.bigEndian = target.bigEndian;
  layout.signed8 = target.aiff;
  return layout;
}

std::vector<double> TestValues() {
  testing_support::Random random(77);
  std::vector<double> values = {0, 1, -1, 0.5, -0.5, 1.5, -1.5, 0.999999, 1.0 / 65536, 3.0 / 65536, 127.5 / 128};
  while (values.size() < 999) values.push_back(random.Real(-1.1, 1.1));
  return values;
}

TEST(Convert, EveryTypeIntoEveryTypeAndContainer) {
  Folder folder;
  const std::vector<double> wanted = TestValues();
  for (const char* from : kTypes) {
    const Layout source = LayoutOf(from);
    const Bytes samples = EncodeAll(wanted, source);
    const std::vector<double> values = DecodeAll(samples, 0, wanted.size(), source);
    WriteFileBytes(folder / "in.wav", MakeWave(source, 48000, 3, samples));
    for (const char* to : kTypes) {
      for (const Target& target : kTargets) {
        SCOPED_TRACE(std::string(from) + " to " + to + " in " + target.extension);
        const std::string out = folder / ("out." + std::string(target.extension));
        const RunResult result = RunHost({"convert", folder / "in.wav", out, "--type", to});
        const Layout layout = LayoutIn(to, target);
        if (target.aiff && layout.isFloat) {
          EXPECT_EQ(result.exitCode, 1);
          EXPECT_THAT(result.err, testing::HasSubstr("0x8004E000"));
          continue;
        }
        ASSERT_EQ(result.exitCode, 0) << result.err;
        const Bytes file = ReadFileBytes(out);
        const Bytes expected = EncodeAll(values, layout);
        // Three channels have an extensible front in Wave and Wave64.
        const size_t offset = target.dataOffset + (target.aiff ? 0 : target.dataOffset == 46 ? 22 : 16);
        ASSERT_GE(file.size(), offset + expected.size());
        ASSERT_LT(file.size(), offset + expected.size() + 8);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), file.begin() + static_cast<int64_t>(offset)));
      }
    }
  }
}

TEST(Convert, AiffSourcesAndBack) {
  Folder folder;
  const std::vector<double> wanted = TestValues();
  for (const int bits : {8, 16, 24, 32}) {
    for (const bool aifc : {false, true}) {
      SCOPED_TRACE(std::to_string(bits) + (aifc ? " aifc" : " aiff"));
      const Layout source{bits, false, !aifc, true};
      const Bytes original = MakeAiff(source, 1, EncodeAll(wanted, source), aifc);
      WriteFileBytes(folder / "in.aif", original);
      ASSERT_EQ(RunHost({"convert", folder / "in.aif", folder / "mid.w64"}).exitCode, 0);
      ASSERT_EQ(RunHost({"convert", folder / "mid.w64", folder / (aifc ? "out.aifc" : "out.aiff")}).exitCode, 0);
      const Bytes back = ReadFileBytes(folder / (aifc ? "out.aifc" : "out.aiff"));
      const size_t frontBytes = aifc ? 72 : 54;
      const size_t sourceFront = aifc ? 60 : 54;  // Ours has the version chunk, the test's file hasn't.
      EXPECT_EQ(Bytes(back.begin() + static_cast<int64_t>(frontBytes), back.end()),
                Bytes(original.begin() + static_cast<int64_t>(sourceFront), original.end()));
      if (!aifc) {
        EXPECT_EQ(back, original);
      }
    }
  }
}

TEST(Convert, ChannelsAndGain) {
  Folder folder;
  const Layout layout{16};
  WriteFileBytes(folder / "in.wav", MakeWave(layout, 48000, 2, EncodeAll({0.5, 0.25, -0.5, 0.125}, layout)));
  struct Row {
    const char* map;
    const char* gain;
    size_t offset;
    std::vector<double> values;
  };
  const double half = static_cast<float>(std::pow(10.0, -6.0 / 20));
  for (const Row& row : {Row{"1,0", "0", 46, {0.25, 0.5, 0.125, -0.5}},
                         {"0,-", "0", 46, {0.5, -0.5}},
                         {"-,0", "20", 46, {32767 / 32768.0, 32767 / 32768.0}},
                         {"2,0", "0", 68, {0.25, 0, 0.5, 0.125, 0, -0.5}},
                         {"0,0", "0", 46, {0.25, 0.125}},
                         {"0,1", "-6", 46, {0.5 * half, 0.25 * half, -0.5 * half, 0.125 * half}}}) {
    ASSERT_EQ(
        RunHost({"convert", folder / "in.wav", folder / "o.wav", "--channels", row.map, "--gain", row.gain}).exitCode,
        0);
    const Bytes file = ReadFileBytes(folder / "o.wav");
    EXPECT_EQ(Bytes(file.begin() + static_cast<int64_t>(row.offset), file.end()), EncodeAll(row.values, layout))
        << row.map;
  }
  // Channels that get nothing are silent in 8 bits too, where silence is 128.
  ASSERT_EQ(RunHost({"convert", folder / "in.wav", folder / "o.wav", "--channels", "-,1", "--type", "pcm8"}).exitCode,
            0);
  const Bytes file = ReadFileBytes(folder / "o.wav");
  EXPECT_EQ(file.at(46), 128);
  EXPECT_EQ(file.at(47), 128 + 32);
  for (const char* map : {"0", "0,1,2", "a,b", "-,-"}) {
    EXPECT_EQ(RunHost({"convert", folder / "in.wav", folder / "p.wav", "--channels", map}).exitCode, 2) << map;
  }
  EXPECT_EQ(RunHost({"convert", folder / "in.wav", folder / "p.wav", "--gain", "loud"}).exitCode, 2);
}

// What other programs make of our files: the same samples, as signed 32-bit numbers.
TEST(Convert, OtherProgramsReadTheSame) {
  if (!HasProgram("ffmpeg") || !HasProgram("sndfile-convert"))
    GTEST_SKIP() << "ffmpeg or sndfile-programs isn't installed";
  Folder folder;
  std::vector<double> wanted = TestValues();
  // Below full scale: sndfile-convert scales float samples above it down.
  for (double& value : wanted) value /= 2;
  const Layout wide{32};
  for (const char* type : kTypes) {
    for (const Target& target : kTargets) {
      for (const uint16_t channels : {uint16_t{1}, uint16_t{3}}) {
        const Layout layout = LayoutIn(type, target);
        if (target.aiff && layout.isFloat) continue;
        SCOPED_TRACE(std::string(type) + " in " + target.extension + ", channels " + std::to_string(channels));
        const Bytes samples = EncodeAll(wanted, LayoutOf(type));
        WriteFileBytes(folder / "in.wav", MakeWave(LayoutOf(type), 48000, channels, samples));
        const std::string out = folder / (std::string("out.") + target.extension);
        ASSERT_EQ(RunHost({"convert", folder / "in.wav", out}).exitCode, 0);
        std::vector<double> expected = DecodeAll(samples, 0, wanted.size(), LayoutOf(type));
        for (double& value : expected) value = Decode(EncodeAll({value}, wide).data(), wide);
        const std::string raw = folder / "raw";
        // These programs count the padding of a Wave64 file's data, up to 7 bytes, as samples. Float samples are
        // rounded in their own ways.
        const auto expectSame = [&] {
          const std::vector<double> got = DecodeAll(ReadFileBytes(raw), 0, 100000, wide);
          ASSERT_GE(got.size(), expected.size());
          ASSERT_LT(got.size(), expected.size() + 8);
          for (size_t index = 0; index < expected.size(); ++index) {
            ASSERT_NEAR(got[index], expected[index], layout.isFloat ? 1.0 / (1 << 22) : 0) << index;
          }
        };
        // libsndfile takes float samples behind an extensible Wave64 front for integers.
        if (!(layout.isFloat && channels == 3 && std::string(target.extension) == "w64")) {
          ASSERT_EQ(RunProgram({"sndfile-convert", "-pcm32", out, folder / "back.wav"}).exitCode, 0);
          ASSERT_EQ(RunProgram({"ffmpeg", "-v", "error", "-y", "-i", folder / "back.wav", "-f", "s32le", raw}).exitCode,
                    0);
          expectSame();
        }
        // Little-endian AIFC of other depths than 16 bits isn't known to ffmpeg.
        if (std::string(target.extension) == "aifc" && layout.bits != 16) continue;
        ASSERT_EQ(RunProgram({"ffmpeg", "-v", "error", "-y", "-i", out, "-f", "s32le", raw}).exitCode, 0);
        expectSame();
      }
    }
  }
}

}  // namespace
}  // namespace apps_test
