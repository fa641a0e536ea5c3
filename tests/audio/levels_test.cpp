// SPDX-License-Identifier: Apache-2.0
// Tests of peaks and RMS against brute force over every sample.
#include "marlo110k/levels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "audio/testing/guarded_buffer.h"
#include "audio/testing/plain_samples.h"
#include "testing/random.h"

namespace {

using testing_support::FullScale;
using testing_support::GuardedBuffer;
using testing_support::kPlainTypes;
using testing_support::PlainType;
using testing_support::Random;
using testing_support::ReadFloat;
using testing_support::ReadInteger;
using testing_support::RecordOf;
using testing_support::WfxOf;
using testing_support::WriteFloat;
using testing_support::WriteInteger;

using Bytes = std::vector<uint8_t>;

bool IsMeasured(const PlainType& type) { return !type.bigEndian; }

/// One channel's search, written from its rules sample by sample.
tZRAUDIOPEAK BrutePeak(const PlainType& type, const uint8_t* first, size_t stride, size_t frames, uint32_t threshold) {
  if (type.isFloat()) {
    double peak = 0;
    tZRAUDIOPEAK result = {0, 0, 0};
    for (size_t frame = 0; frame < frames; ++frame) {
      const double magnitude = std::fabs(ReadFloat(type, first + frame * stride));
      if (magnitude >= peak) {
        peak = magnitude;
        result.position = static_cast<int32_t>(frame);
      }
      if (magnitude > 1.0) result.clipped = 1;
    }
    result.peak = static_cast<float>(peak);
    return result;
  }
  const auto full = static_cast<int64_t>(FullScale(type)) - 1;
  int64_t peak = 0, position = 0, run = 0;
  for (size_t frame = 0; frame < frames; ++frame) {
    const int64_t magnitude = std::min(std::abs(ReadInteger(type, first + frame * stride)), full);
    if (magnitude >= peak) {
      peak = magnitude;
      position = static_cast<int64_t>(frame);
    }
    run = magnitude == full ? run + 1 : 0;
    if (run > 0 && run >= threshold) {
      return {static_cast<float>(static_cast<double>(peak) / FullScale(type)), static_cast<int32_t>(position - run), 1};
    }
  }
  return {static_cast<float>(static_cast<double>(peak) / FullScale(type)), static_cast<int32_t>(position), 0};
}

/// A block whose loudness changes along the way, with ties, silence and runs at full scale when `hot`.
Bytes Programme(Random& random, const PlainType& type, size_t channels, size_t frames, bool hot) {
  const auto size = static_cast<size_t>(type.bytes);
  Bytes bytes(frames * channels * size);
  for (size_t channel = 0; channel < channels; ++channel) {
    double level = 0.5;
    int64_t run = 0;
    for (size_t frame = 0; frame < frames; ++frame) {
      if (random.Between(0, 60) == 0) level = std::pow(10.0, random.Real(-4, 0));
      if (random.Between(0, 200) == 0) level = 0;
      if (hot && run == 0 && random.Between(0, 40) == 0) run = random.Between(1, 5);
      double value = random.Real(-level, level);
      if (run > 0) {
        --run;
        value = random.Between(0, 1) ? 1.0 : -1.0;
        if (type.isFloat() && random.Between(0, 3) == 0) value *= 1.5;
      }
      testing_support::WriteFraction(type, bytes.data() + (frame * channels + channel) * size, value);
    }
  }
  return bytes;
}

const size_t kFrameCounts[] = {1, 2, 3, 7, 16, 17, 255, 256, 257, 511, 512, 513, 1000, 2048};

TEST(FindPeaks, EqualsBruteForce) {
  Random random(51);
  SCOPED_TRACE(random.Label());
  for (const PlainType& type : kPlainTypes) {
    if (!IsMeasured(type)) continue;
    for (size_t channels : {1, 2, 3, 8, 9, 17}) {
      for (size_t frames : kFrameCounts) {
        for (uint32_t threshold : {0u, 1u, 2u, 3u, 5u, 100u}) {
          const bool hot = random.Between(0, 1) == 1;
          const Bytes samples = Programme(random, type, channels, frames, hot);
          GuardedBuffer source(samples.size(), static_cast<size_t>(random.Between(0, 7)));
          source.Fill(samples);
          std::vector<tZRAUDIOPEAK> results(channels + 1, {-9, -9, 9});
          const _zrwaveformat record = RecordOf(type, channels);
          const WAVEFORMATEX wfx = WfxOf(type, channels);
          const auto count = static_cast<int64_t>(frames);
          ASSERT_EQ((hot ? ZrAudio_FindPeaks(&wfx, threshold, source.Data(), count, results.data())
                         : ZrAudio_FindPeaks(&record, threshold, source.Data(), count, results.data())),
                    S_OK);
          EXPECT_EQ(results[channels].position, -9);
          for (size_t channel = 0; channel < channels; ++channel) {
            const auto size = static_cast<size_t>(type.bytes);
            const tZRAUDIOPEAK expected =
                BrutePeak(type, samples.data() + channel * size, channels * size, frames, threshold);
            ASSERT_EQ(results[channel].peak, expected.peak)
                << type.name << " " << channels << " " << frames << " " << threshold << " channel " << channel;
            ASSERT_EQ(results[channel].position, expected.position)
                << type.name << " " << channels << " " << frames << " " << threshold << " channel " << channel;
            ASSERT_EQ(results[channel].clipped, expected.clipped)
                << type.name << " " << channels << " " << frames << " " << threshold << " channel " << channel;
          }
        }
      }
    }
  }
}

tZRAUDIOPEAK PeakOf16(const std::vector<int16_t>& samples, uint32_t threshold) {
  const WAVEFORMATEX mono = WfxOf(kPlainTypes[1], 1);
  tZRAUDIOPEAK peak = {};
  EXPECT_EQ(ZrAudio_FindPeaks(&mono, threshold, samples.data(), static_cast<int64_t>(samples.size()), &peak), S_OK);
  return peak;
}

TEST(FindPeaks, KnownBlocks) {
  tZRAUDIOPEAK peak = PeakOf16({5, -7, 7}, 3);
  EXPECT_EQ(peak.peak, 7.0f / 32768);
  EXPECT_EQ(peak.position, 2);
  peak = PeakOf16({0, 32767, 32767, 32767, 32767}, 3);
  EXPECT_EQ(peak.clipped, 1u);
  EXPECT_EQ(PeakOf16({32767, -32768, 0, 32767, 32767}, 3).clipped, 0u);
  EXPECT_EQ(PeakOf16({0, 0, 0}, 3).position, 2) << "the last of equal peaks, silence included";
  EXPECT_EQ(PeakOf16({-32768}, 3).peak, 32767.0f / 32768);

  // A run across the border of two blocks of any size up to a thousand frames.
  for (size_t start = 1; start < 1000; start += 7) {
    std::vector<int16_t> samples(1100, 1);
    for (size_t index = 0; index < 4; ++index) samples[start + index] = 32767;
    EXPECT_EQ(PeakOf16(samples, 4).clipped, 1u) << start;
    EXPECT_EQ(PeakOf16(samples, 5).clipped, 0u) << start;
    EXPECT_EQ(PeakOf16(samples, 5).position, static_cast<int32_t>(start + 3));
  }

  // Both ends of unsigned 8 bits are full scale.
  const WAVEFORMATEX pcm8 = WfxOf(kPlainTypes[0], 1);
  const uint8_t ends[] = {0x00, 0xFF};
  EXPECT_EQ(ZrAudio_FindPeaks(&pcm8, 2, ends, 2, &peak), S_OK);
  EXPECT_EQ(peak.clipped, 1u);
  EXPECT_EQ(peak.peak, 127.0f / 128);
}

TEST(FindPeaks, FloatsClipAboveOne) {
  for (const PlainType& type : {kPlainTypes[4], kPlainTypes[5]}) {
    const WAVEFORMATEX mono = WfxOf(type, 1);
    const double above = type.bytes == 4 ? static_cast<double>(std::nextafter(1.0f, 2.0f)) : std::nextafter(1.0, 2.0);
    const struct {
      double value;
      uint32_t clipped;
    } rows[] = {{1.0, 0}, {-1.0, 0}, {above, 1}, {-above, 1}, {std::numeric_limits<double>::infinity(), 1}};
    for (const auto& row : rows) {
      Bytes samples(3 * static_cast<size_t>(type.bytes));
      WriteFloat(type, samples.data() + type.bytes, row.value);
      tZRAUDIOPEAK peak = {};
      EXPECT_EQ(ZrAudio_FindPeaks(&mono, 1, samples.data(), 3, &peak), S_OK);
      EXPECT_EQ(peak.clipped, row.clipped) << type.name << " " << row.value;
      EXPECT_EQ(peak.position, 1);
      EXPECT_EQ(peak.peak, static_cast<float>(std::fabs(row.value)));
    }
  }
}

TEST(CalcRms, EqualsBruteForce) {
  Random random(52);
  SCOPED_TRACE(random.Label());
  for (const PlainType& type : kPlainTypes) {
    if (!IsMeasured(type)) continue;
    for (size_t channels : {1, 2, 3, 8, 9}) {
      for (size_t frames : kFrameCounts) {
        const Bytes samples = Programme(random, type, channels, frames, random.Between(0, 1) == 1);
        const auto size = static_cast<size_t>(type.bytes);
        std::vector<float> results(channels + 1, -9.0f);
        const _zrwaveformat record = RecordOf(type, channels);
        const WAVEFORMATEX wfx = WfxOf(type, channels);
        const auto count = static_cast<int64_t>(frames);
        ASSERT_EQ((frames % 2 ? ZrAudio_CalcRMS(&wfx, samples.data(), count, results.data())
                              : ZrAudio_CalcRMS(&record, samples.data(), count, results.data())),
                  S_OK);
        EXPECT_EQ(results[channels], -9.0f);
        for (size_t channel = 0; channel < channels; ++channel) {
          long double sum = 0;
          for (size_t frame = 0; frame < frames; ++frame) {
            const uint8_t* sample = samples.data() + (frame * channels + channel) * size;
            const long double value = type.isFloat() ? static_cast<long double>(ReadFloat(type, sample))
                                                     : static_cast<long double>(ReadInteger(type, sample));
            sum += value * value;
          }
          const auto name = std::string(type.name) + " " + std::to_string(channels) + " " + std::to_string(frames);
          const long double mean = sum / static_cast<long double>(frames);
          if (type.isFloat()) {
            const auto expected = static_cast<float>(std::sqrt(mean));
            ASSERT_NEAR(results[channel], expected, expected * 2e-7f) << name;
          } else {
            // Nothing but the most negative value would leave the width of the type; a whole block of it is
            // drawn only when the block is tiny.
            const auto level = static_cast<double>(std::floor(std::sqrt(mean + 0.5L)));
            if (level == FullScale(type)) continue;
            ASSERT_EQ(results[channel], static_cast<float>(level / FullScale(type))) << name;
          }
        }
      }
    }
  }
}

TEST(CalcRms, LongLoudBlocksDoNotOverflow) {
  // The squares of 300,000 samples of 24 bits at full scale leave 64 bits, those of three samples of 32 bits too.
  for (const PlainType& type : kPlainTypes) {
    if (!IsMeasured(type) || type.isFloat()) continue;
    const size_t frames = 300000;
    const auto full = static_cast<int64_t>(FullScale(type)) - 1;
    Bytes samples(2 * frames * static_cast<size_t>(type.bytes));
    for (size_t index = 0; index < 2 * frames; ++index) {
      const int64_t value = index % 2 ? full / 2 : (index % 4 ? -full : full);
      WriteInteger(type, samples.data() + index * static_cast<size_t>(type.bytes), value);
    }
    const WAVEFORMATEX stereo = WfxOf(type, 2);
    float results[2] = {};
    EXPECT_EQ(ZrAudio_CalcRMS(&stereo, samples.data(), static_cast<int64_t>(frames), results), S_OK);
    EXPECT_EQ(results[0], static_cast<float>(static_cast<double>(full) / FullScale(type))) << type.name;
    EXPECT_EQ(results[1], static_cast<float>(static_cast<double>(full / 2) / FullScale(type))) << type.name;
  }
}

TEST(CalcRms, SilenceIsZero) {
  for (const PlainType& type : kPlainTypes) {
    if (!IsMeasured(type)) continue;
    const WAVEFORMATEX stereo = WfxOf(type, 2);
    const Bytes silence(600 * static_cast<size_t>(type.bytes), type.offset ? 0x80 : 0);
    float results[2] = {1, 1};
    EXPECT_EQ(ZrAudio_CalcRMS(&stereo, silence.data(), 300, results), S_OK);
    EXPECT_EQ(results[0], 0.0f) << type.name;
    EXPECT_EQ(results[1], 0.0f) << type.name;
  }
}

TEST(Levels, AnyBitsAreHarmless) {
  Random random(54);
  SCOPED_TRACE(random.Label());
  Bytes noise(8 * 3 * 600);
  for (uint8_t& byte : noise) byte = static_cast<uint8_t>(random.Bits());
  const uint8_t lowest[4] = {0, 0, 0, 0x80};
  std::copy(lowest, lowest + 4, noise.begin() + 32);
  for (const PlainType& type : kPlainTypes) {
    if (!IsMeasured(type)) continue;
    for (size_t channels : {1, 2, 3}) {
      const WAVEFORMATEX wfx = WfxOf(type, channels);
      tZRAUDIOPEAK peaks[3] = {{-1, -9, 9}, {-1, -9, 9}, {-1, -9, 9}};
      float levels[3];
      EXPECT_EQ(ZrAudio_FindPeaks(&wfx, 1000000, noise.data(), 600, peaks), S_OK);
      EXPECT_EQ(ZrAudio_CalcRMS(&wfx, noise.data(), 600, levels), S_OK);
      for (size_t channel = 0; channel < channels; ++channel) {
        EXPECT_TRUE(peaks[channel].position >= 0 && peaks[channel].position < 600) << type.name;
        EXPECT_FALSE(peaks[channel].peak < 0) << type.name;
      }
    }
  }
}

TEST(CalcPreRms, SquaresOrMagnitudesAddUp) {
  Random random(53);
  SCOPED_TRACE(random.Label());
  for (const PlainType& type : {kPlainTypes[4], kPlainTypes[5]}) {
    for (size_t channels : {1, 2, 3, 9}) {
      for (size_t frames : kFrameCounts) {
        const Bytes samples = Programme(random, type, channels, frames, true);
        const auto size = static_cast<size_t>(type.bytes);
        const _zrwaveformat record = RecordOf(type, channels);
        const WAVEFORMATEX wfx = WfxOf(type, channels);
        std::vector<float> squares(channels), magnitudes(channels);
        const auto count = static_cast<int64_t>(frames);
        ASSERT_EQ(ZrAudio_CalcPreRMS(&record, samples.data(), count, squares.data(), 0), S_OK);
        ASSERT_EQ(ZrAudio_CalcPreRMS(&wfx, samples.data(), count, magnitudes.data(), 7), S_OK);
        for (size_t channel = 0; channel < channels; ++channel) {
          double square = 0, magnitude = 0;
          for (size_t frame = 0; frame < frames; ++frame) {
            const double value = ReadFloat(type, samples.data() + (frame * channels + channel) * size);
            square += value * value;
            magnitude += std::fabs(value);
          }
          ASSERT_NEAR(squares[channel], square, square * 2e-7);
          ASSERT_NEAR(magnitudes[channel], magnitude, magnitude * 2e-7);
        }
      }
    }
  }
}

TEST(Levels, UnknownTypesAndEmptyBlocks) {
  for (const PlainType& type : kPlainTypes) {
    const _zrwaveformat record = RecordOf(type, 2);
    const WAVEFORMATEX wfx = WfxOf(type, 2);
    EXPECT_EQ(ZrAudio_GetFindPeaksFunction(&record) != nullptr, IsMeasured(type)) << type.name;
    EXPECT_EQ(ZrAudio_GetFindPeaksFunction(&wfx) != nullptr, IsMeasured(type)) << type.name;
    EXPECT_EQ(ZrAudio_GetCalcRMSFunction(&record) != nullptr, IsMeasured(type)) << type.name;
    EXPECT_EQ(ZrAudio_GetCalcRMSFunction(&wfx) != nullptr, IsMeasured(type)) << type.name;
    EXPECT_EQ(ZrAudio_GetCalcPreRMSFunction(&record) != nullptr, type.isFloat()) << type.name;
    EXPECT_EQ(ZrAudio_GetCalcPreRMSFunction(&wfx) != nullptr, type.isFloat()) << type.name;
    const Bytes samples(16, 0x11);
    tZRAUDIOPEAK peaks[2] = {{3, 4, 5}, {3, 4, 5}};
    float levels[2] = {6, 6};
    if (!IsMeasured(type)) {
      EXPECT_EQ(ZrAudio_FindPeaks(&record, 3, samples.data(), 1, peaks), E_NOTIMPL);
      EXPECT_EQ(ZrAudio_CalcRMS(&wfx, samples.data(), 1, levels), E_NOTIMPL);
    }
    if (!type.isFloat()) {
      EXPECT_EQ(ZrAudio_CalcPreRMS(&wfx, samples.data(), 1, levels, 0), E_NOTIMPL);
    }
    EXPECT_EQ(ZrAudio_FindPeaks(&record, 3, samples.data(), 0, peaks), S_OK);
    EXPECT_EQ(ZrAudio_CalcRMS(&record, samples.data(), 0, levels), S_OK);
    EXPECT_EQ(ZrAudio_CalcPreRMS(&record, samples.data(), 0, levels, 1), S_OK);
    EXPECT_EQ(peaks[0].peak, 3.0f);
    EXPECT_EQ(peaks[1].position, 4);
    EXPECT_EQ(levels[0], 6.0f);
  }
  EXPECT_EQ(ZrAudio_GetFindPeaksFunction(static_cast<const WAVEFORMATEX*>(nullptr)), nullptr);
  EXPECT_EQ(ZrAudio_GetCalcRMSFunction(static_cast<const _zrwaveformat*>(nullptr)), nullptr);
  const double factors[][2] = {{8, 128.0}, {16, 32768.0}, {24, 8388608.0}, {32, 2147483648.0},
                               {0, 1.0},   {20, 1.0},     {64, 1.0}};
  for (const auto& row : factors) EXPECT_EQ(ZrAudio_GetNormalizeFactor(static_cast<uint32_t>(row[0])), row[1]);
}

}  // namespace
