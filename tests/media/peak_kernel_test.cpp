// SPDX-License-Identifier: Apache-2.0
// Peaks of samples against a frame-by-frame walk, plain and vector members against each other, readers at the ends.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "marlo110k/peak.h"
#include "media/peak/minmax.h"
#include "media/testing/image.h"
#include "platform/base/cpu.h"
#include "testing/random.h"

using namespace marlo;
using namespace marlo::peak;

namespace {

/// Random bytes, which for floats include infinities, subnormals and what is not a number.
std::vector<uint8_t> RandomBytes(testing_support::Random& random, size_t bytes) {
  std::vector<uint8_t> samples(bytes);
  for (uint8_t& byte : samples) byte = static_cast<uint8_t>(random.Bits());
  return samples;
}

TEST(PeakKernel, VectorAndPlainGiveTheSameBits) {
  testing_support::Random random(341);
  SCOPED_TRACE(random.Label());
  const auto compare = [&](auto rule) {
    using Rule = decltype(rule);
    for (const uint32_t channels : {1u, 2u, 3u, 4u, 5u, 6u, 8u, 16u, 31u, 32u}) {
      for (int64_t frames = 0; frames < 300; frames += frames < 70 ? 1 : 37) {
        // An odd start: nothing may rely on alignment.
        const size_t bytes = static_cast<size_t>(frames) * channels * Rule::kBytes;
        const std::vector<uint8_t> samples = RandomBytes(random, bytes + 1);
        tZRAUDIOPEAK_SAMPLESMINMAX plain = {};
        ZrAudioPeak_InitMinMaxArray(Rule::kType, channels, &plain);
        tZRAUDIOPEAK_SAMPLESMINMAX vector = plain;
        WidenPlain<Rule>(samples.data() + 1, frames, channels, plain.pairs);
        WidenAvx2<Rule>(samples.data() + 1, frames, channels, vector.pairs);
        ASSERT_EQ(std::memcmp(&plain, &vector, sizeof plain), 0)
            << "type " << Rule::kType << ", " << channels << " channels, " << frames << " frames";
      }
    }
  };
  if (plat::DetectedVectorLevel() < plat::VectorLevel::kAvx2) GTEST_SKIP() << "no AVX2 here";
  compare(Pcm8Rule{});
  compare(Pcm8SignedRule{});
  compare(Pcm16Rule{});
  compare(Pcm24Rule{});
  compare(Pcm32Rule{});
  compare(Float32Rule{});
  compare(Float64Rule{});
}

/// All peaks of 16-bit samples by the definition: entry k ends with the frame at which (k + 1) steps are reached.
std::vector<int16_t> Walk(const std::vector<int16_t>& samples, uint32_t channels, int64_t step) {
  std::vector<int16_t> peaks;
  const auto frames = static_cast<int64_t>(samples.size() / channels);
  int64_t begin = 0;
  for (int64_t end = 1; end <= frames; ++end) {
    if (end * 16384 < static_cast<int64_t>(peaks.size() / (2 * channels) + 1) * step) continue;
    for (uint32_t channel = 0; channel < channels; ++channel) {
      int16_t low = INT16_MAX;
      int16_t high = INT16_MIN;
      for (int64_t frame = begin; frame < end; ++frame) {
        const int16_t value = samples[static_cast<size_t>(frame) * channels + channel];
        low = std::min(low, value);
        high = std::max(high, value);
      }
      peaks.push_back(low);
      peaks.push_back(high);
    }
    begin = end - 1;
  }
  return peaks;
}

TEST(PeakKernel, PeaksEqualAWalkHoweverTheFramesAreSplit) {
  testing_support::Random random(342);
  SCOPED_TRACE(random.Label());
  for (const uint32_t channels : {1u, 2u, 3u}) {
    for (const int64_t step : {int64_t{64} << 14, (int64_t{256} << 14) - 4321, int64_t{16384}, int64_t{5000000}}) {
      std::vector<int16_t> samples(1013 * channels);
      for (int16_t& sample : samples) sample = static_cast<int16_t>(random.Bits());
      const std::vector<int16_t> expected = Walk(samples, channels, step);
      std::vector<int16_t> peaks(expected.size() + 2 * channels);
      tZRAUDIOPEAK_SAMPLESMINMAX running;
      ZrAudioPeak_InitMinMaxArray(ZRSAMPLETYPE_PCM16, channels, &running);
      int64_t phase = 0;
      int64_t made = 0;
      const void* source = samples.data();
      for (int64_t left = 1013; left > 0;) {
        int64_t frames = std::min(left, random.Between(1, 300));
        left -= frames;
        while (frames > 0) {
          made += ZrAudioPeak_CalcMinMax(ZRSAMPLETYPE_PCM16, 0, peaks.data(), made, step, &source, &frames, &phase,
                                         channels, &running);
        }
      }
      ASSERT_EQ(made, static_cast<int64_t>(expected.size() / (2 * channels)));
      peaks.resize(expected.size());
      EXPECT_EQ(peaks, expected) << channels << " channels, step " << step;
    }
  }
}

TEST(PeakKernel, ValuesOfEveryPairOfTypes) {
  const float notANumber = std::numeric_limits<float>::quiet_NaN();
  const float floats[] = {notANumber, -0.5f, 0.25f};
  const uint8_t bytes[] = {0x80, 0x40, 0xA0};
  const int32_t words[] = {0, -0x40000001, 0x20000000};
  const struct {
    uint32_t sampleType;
    const void* samples;
    int low8, high8, low16, high16;
  } rows[] = {{ZRSAMPLETYPE_FLOAT32, floats, -64, 32, -16384, 8192},
              {ZRSAMPLETYPE_PCM8, bytes, -64, 32, -16384, 8192},
              {ZRSAMPLETYPE_PCM32, words, -65, 32, -16385, 8192}};
  for (const auto& row : rows) {
    const auto peakOf = [&row](uint32_t peakType, void* pair) {
      tZRAUDIOPEAK_SAMPLESMINMAX running;
      ZrAudioPeak_InitMinMaxArray(row.sampleType, 1, &running);
      const void* source = row.samples;
      int64_t frames = 3;
      int64_t phase = 0;
      ASSERT_EQ(
          ZrAudioPeak_CalcMinMax(row.sampleType, peakType, pair, 0, 3 << 14, &source, &frames, &phase, 1, &running), 1);
    };
    int8_t narrow[2];
    int16_t wide[2];
    float real[2];
    peakOf(ZRSAMPLETYPE_PCM8SIGNED, narrow);
    peakOf(ZRSAMPLETYPE_PCM16, wide);
    peakOf(ZRSAMPLETYPE_FLOAT32, real);
    EXPECT_EQ(narrow[0], row.low8);
    EXPECT_EQ(narrow[1], row.high8);
    EXPECT_EQ(wide[0], row.low16);
    EXPECT_EQ(wide[1], row.high16);
    EXPECT_FLOAT_EQ(real[0], row.sampleType == ZRSAMPLETYPE_PCM32 ? -0x40000001p-31f : -0.5f);
    EXPECT_FLOAT_EQ(real[1], 0.25f);
  }
  EXPECT_EQ(ZrAudioPeak_GetMinMaxFunction(0, ZRSAMPLETYPE_PCM16BE), nullptr);
  EXPECT_EQ(ZrAudioPeak_GetMinMaxFunction(ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM16), nullptr);
}

TEST(PeakKernel, ChannelsBeyondTheArrayTouchNothing) {
  const std::vector<uint8_t> samples(4096, 0x55);
  for (const uint32_t channels : {0u, 33u, 0x80000000u}) {
    struct {
      tZRAUDIOPEAK_SAMPLESMINMAX array;
      uint8_t behind[64];
    } guarded;
    std::memset(&guarded, 0xA5, sizeof guarded);
    const std::vector<uint8_t> before(reinterpret_cast<uint8_t*>(&guarded),
                                      reinterpret_cast<uint8_t*>(&guarded) + sizeof guarded);
    ZrAudioPeak_InitMinMaxArray(ZRSAMPLETYPE_FLOAT64, channels, &guarded.array);
    EXPECT_EQ(E_INVALIDARG, ZrAudioPeak_PrimeMinMaxArray(ZRSAMPLETYPE_FLOAT32, channels, &guarded.array,
                                                         ZRSAMPLETYPE_FLOAT32, samples.data()));
    const void* source = samples.data();
    int64_t frames = 3;
    int64_t phase = 0;
    EXPECT_EQ(0, ZrAudioPeak_CalcMinMax(ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM16, &guarded.behind, 0, 16384, &source,
                                        &frames, &phase, channels, &guarded.array));
    EXPECT_EQ(0, frames);
    EXPECT_EQ(0, std::memcmp(before.data(), &guarded, sizeof guarded)) << channels;
  }
}

TEST(PeakResample, MakesExactlyTheWantedPeaks) {
  const int16_t source[] = {-1, 1, -7, 2, 0, 9, -2, 3, -3, 4, -5, 5, -4, 6};
  int16_t peaks[6] = {};
  ASSERT_EQ(ZrAudioPeak_Resample(0, peaks, 7, 3, 1, source, 7, 1), S_OK);
  const int16_t expected[] = {-7, 9, -3, 4, -5, 6};  // Three, two and two of them.
  EXPECT_EQ(std::memcmp(peaks, expected, sizeof expected), 0);
  EXPECT_EQ(ZrAudioPeak_Resample(0, peaks, 2, 3, 1, source, 2, 1), E_UNEXPECTED);
  EXPECT_EQ(ZrAudioPeak_GetPeakResampleFunction(0, 1), nullptr);
}

TEST(PeakReader, GivesWholeFramesAndEndsWithoutError) {
  const media_testing::DiskFile file(media_testing::Image()
                                         .Text("RIFF")
                                         .U32(1000)
                                         .Text("WAVE")
                                         .Chunk("fmt ", media_testing::Image().Format(1, 2, 48000, 16))
                                         .Text("data")
                                         .U32(40)
                                         .Ramp(22));  // Ten frames promised, five and a half there.
  CZrAudioPeakStreamReader* reader = ZrAudio_CreateWaveFileStreamReader(file.Path());
  ASSERT_EQ(reader->GetFormat()->nChannels, 2);
  EXPECT_EQ(reader->GetLength(), 10);
  ASSERT_EQ(reader->Open(), S_OK);
  const struct {
    int64_t position;
    uint32_t frames, expected, firstByte;
  } rows[] = {{0, 2, 2, 1}, {2, 2, 2, 9}, {4, 9, 1, 17}, {5, 1, 0, 0}, {1, 1, 1, 5}, {10, 1, 0, 0}, {1000, 1, 0, 0}};
  for (const auto& row : rows) {
    uint8_t frames[64] = {};
    uint32_t got = 99;
    EXPECT_EQ(reader->Read(row.position, 100, frames, row.frames, &got), S_OK);
    EXPECT_EQ(got, row.expected) << row.position;
    if (got > 0) {
      EXPECT_EQ(frames[0], row.firstByte) << row.position;
    }
  }
  ZrAudio_DestroyWaveFileStreamReader(reader);
}

}  // namespace
