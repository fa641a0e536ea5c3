// SPDX-License-Identifier: Apache-2.0
// Levels by the program against plain loops over the samples.
#include <gmock/gmock.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"
#include "testing/random.h"

namespace apps_test {
namespace {

using nlohmann::json;

struct Expected {
  double peak = 0;
  int64_t frame = 0;
  double rms = 0;
};

Expected Measure(const std::vector<double>& values, size_t channels, size_t channel, int64_t begin, int64_t end,
                 bool isFloat, int bits) {
  Expected expected;
  double squares = 0;
  for (int64_t frame = begin; frame < end; ++frame) {
    const double value = values[static_cast<size_t>(frame) * channels + channel];
    squares += value * value;
    double magnitude = std::fabs(value);
    // The most negative integer counts as the largest positive one.
    if (!isFloat) magnitude = std::min(magnitude, 1 - std::ldexp(1.0, 1 - bits));
    if (magnitude >= expected.peak) {
      expected.peak = magnitude;
      expected.frame = frame;
    }
  }
  expected.rms = std::sqrt(squares / static_cast<double>(end - begin));
  return expected;
}

void ExpectLevels(const json& measured, const std::vector<double>& values, size_t channels, int64_t begin, int64_t end,
                  const Layout& layout) {
  ASSERT_EQ(measured["start_frame"], begin);
  ASSERT_EQ(measured["frames"], end - begin);
  ASSERT_EQ(measured["channels"].size(), channels);
  for (size_t channel = 0; channel < channels; ++channel) {
    const Expected expected = Measure(values, channels, channel, begin, end, layout.isFloat, layout.bits);
    const json& level = measured["channels"][channel];
    EXPECT_NEAR(level["peak"].get<double>(), expected.peak, 1e-7 * expected.peak);
    EXPECT_EQ(level["peak_frame"], expected.frame);
    EXPECT_NEAR(level["rms"].get<double>(), expected.rms, 1e-6 * expected.rms);
  }
}

TEST(Level, WholeAndWindowsEqualPlainLoops) {
  testing_support::Random random(31);
  SCOPED_TRACE(random.Label());
  Folder folder;
  for (const char* type : {"pcm8", "pcm16", "pcm24", "pcm32", "float32", "float64", "aiff"}) {
    SCOPED_TRACE(type);
    const bool aiff = std::string(type) == "aiff";
    const Layout layout = aiff ? Layout{24, false, true} : LayoutOf(type);
    const size_t channels = aiff ? 1 : 3;
    // Longer than two blocks, with a last window that isn't full. A slope keeps equal peaks rare and 8-bit
    // samples off full scale.
    const int64_t frames = aiff ? 300001 : 100001;
    std::vector<double> values(static_cast<size_t>(frames) * channels);
    for (size_t index = 0; index < values.size(); ++index) {
      values[index] =
          random.Real(-0.9, 0.9) * (0.5 + 0.5 * static_cast<double>(index) / static_cast<double>(values.size()));
    }
    const Bytes samples = EncodeAll(values, layout);
    values = DecodeAll(samples, 0, values.size(), layout);
    WriteFileBytes(folder / "in", aiff ? MakeAiff(layout, 1, samples) : MakeWave(layout, 48000, 3, samples));
    const RunResult result = RunHost({"level", folder / "in", "--json", "--window", "0.25"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const json document = json::parse(result.out);
    ExpectLevels(document["whole"], values, channels, 0, frames, layout);
    ASSERT_EQ(document["windows"].size(), static_cast<size_t>((frames + 11999) / 12000));
    for (size_t index = 0; index < document["windows"].size(); ++index) {
      const int64_t begin = static_cast<int64_t>(index) * 12000;
      ExpectLevels(document["windows"][index], values, channels, begin, std::min(begin + 12000, frames), layout);
    }
  }
}

TEST(Level, ClippingIsThreeFullScaleSamplesInARow) {
  Folder folder;
  const Layout layout{16};
  const auto clipped = [&](const std::vector<double>& values) {
    WriteFileBytes(folder / "in.wav", MakeWave(layout, 48000, 1, EncodeAll(values, layout)));
    return json::parse(RunHost({"level", folder / "in.wav", "--json"}).out)["whole"]["channels"][0]["clipped"]
        .get<bool>();
  };
  EXPECT_FALSE(clipped({1, 1, 0.5, 1, -1, 0}));
  EXPECT_TRUE(clipped({0, 1, -1, 1, 0}));
  // A run that crosses the program's blocks, wherever they end: every run position around 2^17 frames.
  for (size_t place = 131069; place < 131075; ++place) {
    std::vector<double> values(140000, 0.25);
    for (size_t index = 0; index < 3; ++index) values[place + index] = 1;
    EXPECT_TRUE(clipped(values)) << place;
    values[place + 1] = 0.5;
    EXPECT_FALSE(clipped(values)) << place;
  }
}

TEST(Level, TextAndOddCases) {
  Folder folder;
  const Layout layout{16};
  WriteFileBytes(folder / "half.wav", MakeWave(layout, 48000, 1, EncodeAll({0.5, -0.5}, layout)));
  WriteFileBytes(folder / "empty.wav", MakeWave(layout, 48000, 2, {}));
  WriteFileBytes(folder / "still.wav", MakeWave(layout, 48000, 1, Bytes(64)));
  RunResult result = RunHost({"level", folder / "half.wav"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.out, testing::ContainsRegex("-6.02 dB +0.000 +-6.02 dB"));
  EXPECT_THAT(RunHost({"level", folder / "still.wav"}).out, testing::HasSubstr("-inf dB"));
  result = RunHost({"level", folder / "empty.wav", "--json", "--window", "1"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(json::parse(result.out)["whole"]["channels"][1]["rms"], 0.0);
  EXPECT_EQ(json::parse(result.out)["windows"].size(), 0u);
  for (const char* window : {"0", "-1", "x", "1s"}) {
    EXPECT_EQ(RunHost({"level", folder / "half.wav", "--window", window}).exitCode, 2) << window;
  }
}

}  // namespace
}  // namespace apps_test
