// SPDX-License-Identifier: Apache-2.0
// Filters of the program against the closed formula of their family, as shown and as heard.
#include <gmock/gmock.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <numbers>

#include "apps/picture_files.h"
#include "response_plot.h"

namespace apps_test {
namespace {

using nlohmann::json;

// Magnitude of a digital Butterworth low-pass by its closed form.
double Butterworth(double frequency, double corner, double rate, int order, bool high) {
  double ratio = std::tan(std::numbers::pi * frequency / rate) / std::tan(std::numbers::pi * corner / rate);
  if (high) ratio = 1 / ratio;
  return 1 / std::sqrt(1 + std::pow(ratio, 2 * order));
}

TEST(Filter, ShowsTheResponseOfItsFamily) {
  for (const bool high : {false, true}) {
    for (const int order : {1, 4, 15}) {
      const RunResult result = RunHost({"filter", "--kind", high ? "high" : "low", "--freq", "3000", "--order",
                                        std::to_string(order), "--rate", "44100", "--json"});
      ASSERT_EQ(result.exitCode, 0) << result.err;
      const json document = json::parse(result.out);
      EXPECT_EQ(document["poles"].size(), static_cast<size_t>(order));
      EXPECT_GT(document["response"].size(), 25u);
      for (const json& point : document["response"]) {
        const double expected = Butterworth(point["frequency"], 3000, 44100, order, high);
        EXPECT_NEAR(point["factor"], expected, 1e-8 * expected + 1e-12) << point["frequency"];
      }
    }
  }
}

TEST(Filter, RunsOverEveryChannel) {
  Folder folder;
  constexpr size_t kFrames = 48000;
  constexpr double kTones[] = {500, 2000, 6000};
  std::vector<double> samples;
  for (size_t n = 0; n < kFrames; ++n) {
    for (const double tone : kTones) {
      samples.push_back(0.5 * std::sin(2 * std::numbers::pi * tone * static_cast<double>(n) / 48000));
    }
  }
  WriteFileBytes(folder / "in.wav", MakeWave(LayoutOf("float64"), 48000, 3, EncodeAll(samples, LayoutOf("float64"))));
  const RunResult result =
      RunHost({"filter", folder / "in.wav", folder / "out.w64", "--kind", "low", "--freq", "2000", "--order", "6"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const Bytes file = ReadFileBytes(folder / "out.w64");
  const std::vector<double> out = DecodeAll(file, file.size() - 24 * kFrames, 3 * kFrames, LayoutOf("float64"));
  for (size_t channel = 0; channel < 3; ++channel) {
    double sum = 0;
    for (size_t n = kFrames / 2; n < kFrames; ++n) sum += out[3 * n + channel] * out[3 * n + channel];
    const double amplitude = std::sqrt(4 * sum / kFrames);
    EXPECT_NEAR(amplitude, 0.5 * Butterworth(kTones[channel], 2000, 48000, 6, false), 1e-6) << channel;
  }
}

TEST(Filter, PlotsTheResponse) {
  if (!HasProgram("ffmpeg")) GTEST_SKIP() << "ffmpeg isn't installed";
  Folder folder;
  const RunResult result = RunHost({"filter", "--kind", "low", "--freq", "3000", "--png", folder / "plot.png"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const Bytes pixels = PixelsOf(folder / "plot.png");
  constexpr size_t kWidth = 640;
  ASSERT_EQ(pixels.size(), 4 * kWidth * 360);
  // 10 Hz to 24 kHz, and 0 to -120 dB; the curve is the only blue.
  constexpr RECT kArea = host::ResponsePlot::kArea;
  for (const double frequency : {20.0, 1000.0, 3000.0, 6000.0, 12000.0}) {
    const double across = std::log(frequency / 10) / std::log(2400.0) * (kArea.right - kArea.left);
    const double level = 20 * std::log10(Butterworth(frequency, 3000, 48000, 4, false));
    const double down = level / -120 * (kArea.bottom - kArea.top);
    const size_t column = static_cast<size_t>(kArea.left + std::lround(across));
    double nearest = 1000;
    for (int32_t row = kArea.top; row <= kArea.bottom; ++row) {
      const uint8_t* pixel = &pixels[4 * (static_cast<size_t>(row) * kWidth + column)];
      if (pixel[2] - pixel[0] < 100) continue;
      nearest = std::min(nearest, std::fabs(row - kArea.top - down));
    }
    EXPECT_LE(nearest, 1.5) << frequency;
  }
}

TEST(Filter, RefusesWhatMakesNoSense) {
  struct Case {
    std::vector<std::string> words;
    int exitCode;
  };
  const Case cases[] = {
      {{"--kind", "low"}, 2},
      {{"--kind", "middle", "--freq", "100"}, 2},
      {{"--kind", "low", "--freq", "100", "--family", "elliptic"}, 2},
      {{"--kind", "low", "--freq", "100", "--order", "16"}, 2},
      {{"--kind", "low", "--freq", "100", "--order", "11", "--family", "bessel"}, 1},
      {{"--kind", "low", "--freq", "24001"}, 1},
      {{"missing.wav", "out.wav", "--kind", "low", "--freq", "100"}, 1},
      {{"missing.wav", "out.wav", "--kind", "bell", "--freq", "100"}, 2},
      {{"missing.wav", "--kind", "low", "--freq", "100"}, 2},
      {{"--kind", "low", "--freq", "100", "--png", "plot.jpg"}, 2},
      {{"--kind", "bell", "--freq", "100", "--png", "plot.png"}, 2},
  };
  for (const Case& test : cases) {
    std::vector<std::string> words{"filter"};
    words.insert(words.end(), test.words.begin(), test.words.end());
    const RunResult result = RunHost(words);
    EXPECT_EQ(result.exitCode, test.exitCode) << testing::PrintToString(test.words);
    EXPECT_NE(result.err, "");
  }
}

}  // namespace
}  // namespace apps_test
