// SPDX-License-Identifier: Apache-2.0
// Changes of rate by the program: every frame arrives, in its place, and sounds as it should.
#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"
#include "testing/sine_fit.h"

namespace apps_test {
namespace {

// A stereo float Wave file of the program: its samples begin behind a front of 46 bytes.
constexpr size_t kFront = 46;

Bytes ToneFile(double frequency, uint32_t rate, size_t frames, const Layout& layout) {
  std::vector<double> samples;
  for (size_t n = 0; n < frames; ++n) {
    const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(n) / rate;
    samples.insert(samples.end(), {0.7 * std::sin(angle), 0.7 * std::cos(angle)});
  }
  return MakeWave(layout, rate, 2, EncodeAll(samples, layout));
}

TEST(ConvertRate, EveryResamplerKeepsEveryFrameInItsPlace) {
  struct Case {
    const char* resampler;
    // Of 997 Hz: straight lines leave (2 pi f / fs)^2 / 8 of it. The spline weakens it by (2 pi f / fs)^2 / 6, but
    // not at whole positions, so half of that remains where every second sample is one.
    double leastSnr;
  };
  const Case cases[] = {{"linear", 45},   {"linear-filtered", 45}, {"sinc", 95},
                        {"2-linear", 45}, {"2-cubic", 55},         {"2-sinc", 95}};
  constexpr size_t kFrames = 30011;
  Folder folder;
  WriteFileBytes(folder / "in.wav", ToneFile(997, 44100, kFrames, LayoutOf("float32")));
  for (const Case& test : cases) {
    for (const uint32_t rate : {48000u, 44101u, 88200u, 32000u}) {
      SCOPED_TRACE(std::string(test.resampler) + " to " + std::to_string(rate));
      const RunResult result = RunHost({"convert", folder / "in.wav", folder / "out.wav", "--rate",
                                        std::to_string(rate), "--resampler", test.resampler, "--filter", "0"});
      ASSERT_EQ(result.exitCode, 0) << result.err;
      const size_t frames = (kFrames * rate + 44099) / 44100;
      const Bytes file = ReadFileBytes(folder / "out.wav");
      ASSERT_EQ(file.size(), kFront + 8 * frames);
      const std::vector<double> samples = DecodeAll(file, kFront, 2 * frames, LayoutOf("float32"));
      std::vector<double> left;
      for (size_t n = 100; n + 100 < frames; ++n) left.push_back(samples[2 * n]);
      EXPECT_GT(testing_support::SineSnr(left, 997.0 / rate), test.leastSnr);
      // Without a filter nothing is late: every sample is near the tone at its own time.
      for (size_t n = 100; n + 100 < frames; n += 7) {
        const double angle = 2 * std::numbers::pi * 997 * static_cast<double>(n) / rate;
        ASSERT_NEAR(samples[2 * n], 0.7 * std::sin(angle), 0.01) << n;
        ASSERT_NEAR(samples[2 * n + 1], 0.7 * std::cos(angle), 0.01) << n;
      }
    }
  }
}

TEST(ConvertRate, FiltersTakeAwayWhatTheNewRateCannotHold) {
  Folder folder;
  WriteFileBytes(folder / "in.wav", ToneFile(15000, 48000, 24000, LayoutOf("pcm32")));
  for (const char* resampler : {"linear-filtered", "sinc", "2-linear", "2-cubic", "2-sinc"}) {
    for (const char* filter : {"1", "2", "3"}) {
      SCOPED_TRACE(std::string(resampler) + " with filter " + filter);
      ASSERT_EQ(RunHost({"convert", folder / "in.wav", folder / "out.wav", "--rate", "16001", "--type", "float64",
                         "--resampler", resampler, "--filter", filter})
                    .exitCode,
                0);
      const Bytes file = ReadFileBytes(folder / "out.wav");
      const std::vector<double> samples = DecodeAll(file, kFront, (file.size() - kFront) / 8, LayoutOf("float64"));
      double sum = 0;
      for (size_t n = 400; n < samples.size(); ++n) sum += samples[n] * samples[n];
      // At 1.875 of the corner a flat filter of order 4 leaves 0.08; two of order 2 with ripple 0.35 at the most.
      EXPECT_LT(std::sqrt(sum / static_cast<double>(samples.size() - 400)), filter[0] == '1' ? 0.25 : 0.08);
    }
  }
}

TEST(ConvertRate, SmallFilesTypesAndWrongOptions) {
  Folder folder;
  for (const size_t frames : {size_t{0}, size_t{1}, size_t{2}, size_t{13}}) {
    for (const char* type : {"pcm8", "pcm16", "pcm24", "pcm32", "float64"}) {
      WriteFileBytes(folder / "in.wav", ToneFile(100, 8000, frames, LayoutOf(type)));
      for (const char* resampler : {"linear", "sinc", "2-cubic", "2-sinc"}) {
        SCOPED_TRACE(std::string(resampler) + " " + type + " " + std::to_string(frames));
        const RunResult result = RunHost(
            {"convert", folder / "in.wav", folder / "out.wav", "--rate", "11025", "--resampler", resampler, "--json"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        const size_t made = (frames * 11025 + 7999) / 8000;
        EXPECT_THAT(result.out, testing::HasSubstr("\"frames\": " + std::to_string(made)));
        EXPECT_GE(ReadFileBytes(folder / "out.wav").size(), kFront + made * 2 * LayoutOf(type).Bytes());
      }
    }
  }
  WriteFileBytes(folder / "in.wav", ToneFile(100, 8000, 100, LayoutOf("pcm16")));
  const std::vector<std::vector<std::string>> wrong = {{"--rate", "0"},
                                                       {"--rate", "1000001"},
                                                       {"--rate", "44.1"},
                                                       {"--filter", "1"},
                                                       {"--resampler", "sinc"},
                                                       {"--rate", "9000", "--resampler", "cubic"},
                                                       {"--rate", "9000", "--filter", "4"},
                                                       {"--rate", "9000", "--resampler", "linear", "--filter", "1"}};
  for (const std::vector<std::string>& options : wrong) {
    std::vector<std::string> words{"convert", folder / "in.wav", folder / "wrong.wav"};
    words.insert(words.end(), options.begin(), options.end());
    EXPECT_EQ(RunHost(words).exitCode, 2) << testing::PrintToString(options);
  }
  EXPECT_THAT(folder.Names(), testing::ElementsAre("in.wav", "out.wav"));
}

}  // namespace
}  // namespace apps_test
