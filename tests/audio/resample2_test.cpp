// SPDX-License-Identifier: Apache-2.0
// The second resampler: needs and fills, any cut gives the same bytes, cubic values, filters, flush.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "marlo110k/resample.h"
#include "testing/random.h"
#include "testing/sine_fit.h"

namespace {

using testing_support::Random;

struct Closer {
  void operator()(tZRRESAMPLE2* instance) const { ZrAudio_Resample2Close(instance); }
};
using Instance = std::unique_ptr<tZRRESAMPLE2, Closer>;

Instance Open(uint32_t type, int32_t channels, int32_t srcRate, int32_t dstRate, uint32_t flags) {
  tZRRESAMPLE2* instance = nullptr;
  EXPECT_EQ(ZrAudio_Resample2Open(&instance, type, channels, srcRate, dstRate, flags), S_OK);
  return Instance(instance);
}

Instance OpenRatio(uint32_t type, int32_t channels, double ratio, uint32_t flags) {
  tZRRESAMPLE2* instance = nullptr;
  EXPECT_EQ(ZrAudio_Resample2OpenEx(&instance, type, channels, ratio, flags), S_OK);
  return Instance(instance);
}

/// Feeds a stream in blocks of random size into rooms of random size, flushes, and gives what came out.
template <typename Sample>
std::vector<Sample> Stream(tZRRESAMPLE2* instance, const std::vector<Sample>& source, int32_t channels, Random* random,
                           bool flush) {
  std::vector<Sample> out;
  const auto frames = static_cast<int64_t>(source.size()) / channels;
  int64_t at = 0;
  int idle = 0;
  while (at < frames && idle < 1000) {
    const int64_t block = random == nullptr ? frames - at : std::min<int64_t>(frames - at, random->Between(1, 70));
    const int64_t room = random == nullptr ? 40 * frames : random->Between(1, 120);
    std::vector<Sample> buffer(static_cast<size_t>(room * channels));
    int64_t made, taken;
    EXPECT_EQ(
        ZrAudio_Resample2Process(instance, buffer.data(), room, &made, source.data() + at * channels, block, &taken),
        S_OK);
    EXPECT_LE(made, room);
    EXPECT_LE(taken, block);
    idle = made == 0 && taken == 0 ? idle + 1 : 0;
    out.insert(out.end(), buffer.begin(), buffer.begin() + made * channels);
    at += taken;
  }
  EXPECT_EQ(at, frames);
  while (flush) {
    std::vector<Sample> buffer(static_cast<size_t>(64 * channels));
    int64_t made, taken;
    EXPECT_EQ(ZrAudio_Resample2Process(instance, buffer.data(), 64, &made, nullptr, 0, &taken), S_OK);
    EXPECT_EQ(taken, 0);
    if (made == 0) break;
    out.insert(out.end(), buffer.begin(), buffer.begin() + made * channels);
  }
  return out;
}

struct Rates {
  int32_t src, dst;
};
constexpr Rates kRates[] = {{44100, 48000}, {48000, 44100}, {22050, 44100},
                            {44100, 8000},  {8000, 192000}, {44100, 44101}};

TEST(Resample2, AnyCutGivesTheSameBytes) {
  Random random(31);
  SCOPED_TRACE(random.Label());
  for (const Rates& rates : kRates) {
    for (const uint32_t flags : {1u, 2u, 4u, 0x11u, 0x12u, 0x14u, 0x44u, 0x104u}) {
      for (const int32_t channels : {1, 2, 3}) {
        std::vector<float> source(static_cast<size_t>(channels) * 500);
        for (float& sample : source) sample = static_cast<float>(random.Real(-1, 1));
        const Instance whole = Open(ZRSAMPLETYPE_FLOAT32, channels, rates.src, rates.dst, flags);
        const std::vector<float> wanted = Stream(whole.get(), source, channels, nullptr, true);
        const Instance cut = Open(ZRSAMPLETYPE_FLOAT32, channels, rates.src, rates.dst, flags);
        ASSERT_EQ(Stream(cut.get(), source, channels, &random, true), wanted)
            << rates.src << " to " << rates.dst << " flags " << flags << " channels " << channels;
        EXPECT_EQ(ZrAudio_Resample2GetSrcPos(cut.get()), 500);
        EXPECT_EQ(ZrAudio_Resample2GetDstPos(cut.get()), static_cast<int64_t>(wanted.size()) / channels);
        // Everything comes out: at least the source's length at the new rate, less than a frame.
        EXPECT_GE(static_cast<int64_t>(wanted.size()) / channels, 500ll * rates.dst / rates.src);
      }
    }
  }
}

TEST(Resample2, ScalarAndVectorGiveTheSameBits) {
  Random random(32);
  SCOPED_TRACE(random.Label());
  std::vector<double> source(2 * 1000);
  for (double& sample : source) sample = random.Real(-1, 1);
  const Instance vector = Open(ZRSAMPLETYPE_FLOAT64, 2, 44100, 48000, 0x24);
  const Instance scalar = Open(ZRSAMPLETYPE_FLOAT64, 2, 44100, 48000, 0x124);
  EXPECT_EQ(Stream(vector.get(), source, 2, nullptr, true), Stream(scalar.get(), source, 2, nullptr, true));
}

TEST(Resample2, NeedsAtTheStart) {
  struct Row {
    int64_t frames;
    int64_t linear, cubic, sinc;
  };
  for (const Row& row : {Row{1, 1, 3, 13}, Row{2, 2, 3, 13}, Row{10, 10, 11, 21}, Row{160, 148, 149, 159},
                         Row{161, 148, 150, 160}, Row{480, 442, 443, 453}, Row{48000, 44101, 44102, 44112}}) {
    EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(Open(32, 1, 44100, 48000, 1).get(), row.frames), row.linear);
    EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(Open(32, 1, 44100, 48000, 2).get(), row.frames), row.cubic);
    EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(Open(32, 1, 44100, 48000, 4).get(), row.frames), row.sinc);
  }
  // Down by a whole number, every mode reads single frames.
  const Instance halving = Open(32, 1, 96000, 48000, 4);
  EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(halving.get(), 1), 1);
  EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(halving.get(), 2), 3);
  EXPECT_EQ(ZrAudio_Resample2GetSrcFromDst(halving.get(), 10), 19);
}

TEST(Resample2, WhatIsNeededFillsExactly) {
  Random random(33);
  SCOPED_TRACE(random.Label());
  for (const double ratio : {48000.0 / 44100, 44100.0 / 48000, 2.0, 0.5, 1.2345678, 0.987654321, 0.3333}) {
    for (const uint32_t flags : {1u, 2u, 4u, 0x24u}) {
      const Instance instance = OpenRatio(ZRSAMPLETYPE_FLOAT64, 1, ratio, flags);
      std::vector<double> source(4000), out(400);
      for (int round = 0; round < 200; ++round) {
        const int64_t frames = random.Between(1, 400);
        const int64_t need = ZrAudio_Resample2GetSrcFromDst(instance.get(), frames);
        ASSERT_LE(need, 4000);
        if (need == 0) continue;  // Nothing to give would be a flush.
        int64_t made, taken;
        ASSERT_EQ(ZrAudio_Resample2Process(instance.get(), out.data(), frames, &made, source.data(), need, &taken),
                  S_OK);
        ASSERT_EQ(made, frames) << ratio << " flags " << flags << " round " << round;
        ASSERT_LE(taken, need);
      }
    }
  }
}

TEST(Resample2, CubicIsTheBSpline) {
  // Ramp at twice the rate, and an impulse at one and a half: worked out from the spline's weights.
  const Instance ramp = OpenRatio(ZRSAMPLETYPE_FLOAT64, 1, 2.0, 2);
  std::vector<double> source(8);
  for (size_t n = 0; n < source.size(); ++n) source[n] = static_cast<double>(n);
  const std::vector<double> up = Stream(ramp.get(), source, 1, nullptr, false);
  const double wanted[6] = {0, 0.520833333333, 1, 1.5, 2, 2.5};
  for (size_t n = 0; n < 6; ++n) EXPECT_NEAR(up[n], wanted[n], 1e-9);
  const Instance impulse = OpenRatio(ZRSAMPLETYPE_FLOAT64, 1, 1.5, 2);
  std::fill(source.begin(), source.end(), 0.0);
  source[3] = 1;
  const std::vector<double> out = Stream(impulse.get(), source, 1, nullptr, false);
  const double spline[9] = {0, 0, 0.00617284, 0, 0.57407407, 0.57407407, 0, 0.00617284, 0};
  ASSERT_EQ(out.size(), 9u);
  for (size_t n = 0; n < 9; ++n) EXPECT_NEAR(out[n], spline[n], 1e-8) << n;
}

TEST(Resample2, NeverDrifts) {
  // Linear over a ramp: every output is its own position, exact to the last frame of ten million.
  const Instance instance = Open(ZRSAMPLETYPE_FLOAT64, 1, 44100, 48000, 1);
  std::vector<double> source(4410), out(4800 * 2);
  int64_t taken = 0;
  int64_t total = 0;
  while (total < 10000000) {
    for (size_t n = 0; n < source.size(); ++n) source[n] = static_cast<double>(taken + static_cast<int64_t>(n));
    int64_t made, used;
    ASSERT_EQ(ZrAudio_Resample2Process(instance.get(), out.data(), 9600, &made, source.data(), 4410, &used), S_OK);
    ASSERT_GT(made, 0);
    taken += used;
    total += made;
    ASSERT_NEAR(out[static_cast<size_t>(made - 1)], static_cast<double>(total - 1) * 44100 / 48000, 1e-8);
  }
}

TEST(Resample2, TypesAndTheirRoads) {
  // Straight lines run on the type itself where there is a kernel, and nowhere else.
  struct Row {
    uint32_t type, flags;
    HRESULT result;
  };
  for (const Row& row :
       {Row{ZRSAMPLETYPE_PCM8, 1, S_OK}, Row{ZRSAMPLETYPE_PCM16, 1, S_OK}, Row{ZRSAMPLETYPE_PCM32, 1, S_OK},
        Row{ZRSAMPLETYPE_PCM24UNPACKED, 1, S_OK}, Row{ZRSAMPLETYPE_PCM24, 1, E_NOTIMPL},
        Row{ZRSAMPLETYPE_PCM8SIGNED, 1, E_NOTIMPL}, Row{ZRSAMPLETYPE_PCM16BE, 1, E_NOTIMPL},
        Row{ZRSAMPLETYPE_PCM24, 0x11, S_OK}, Row{ZRSAMPLETYPE_PCM24, 4, S_OK}, Row{ZRSAMPLETYPE_PCM16BE, 2, S_OK},
        Row{ZRSAMPLETYPE_FLOAT32, 3, E_NOTIMPL}}) {
    const Instance instance = Open(row.type, 1, 44100, 48000, row.flags);
    ASSERT_NE(instance, nullptr);
    std::vector<uint8_t> source(1000), out(2000);
    int64_t made, taken;
    EXPECT_EQ(ZrAudio_Resample2Process(instance.get(), out.data(), 100, &made, source.data(), 100, &taken), row.result)
        << row.type << " flags " << row.flags;
  }
  tZRRESAMPLE2* instance = nullptr;
  EXPECT_EQ(ZrAudio_Resample2Open(&instance, 128, 1, 1, 2, 4), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_Resample2Open(&instance, 15, 1, 1, 2, 4), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_Resample2Open(&instance, 32, 33, 1, 2, 4), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_Resample2OpenEx(&instance, 32, 1, NAN, 4), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_Resample2OpenEx(nullptr, 32, 1, 2, 4), E_INVALIDARG);
  EXPECT_EQ(instance, nullptr);
}

TEST(Resample2, IntegersGoThroughTheCoreAndBack) {
  const Instance instance = Open(ZRSAMPLETYPE_PCM16, 2, 44100, 48000, 4);
  std::vector<int16_t> source(2 * 400);
  for (size_t n = 0; n < 400; ++n) {
    source[2 * n] = static_cast<int16_t>(std::lround(20000 * std::sin(0.05 * static_cast<double>(n))));
    source[2 * n + 1] = -1234;
  }
  const std::vector<int16_t> before = source;
  const std::vector<int16_t> out = Stream(instance.get(), source, 2, nullptr, false);
  EXPECT_EQ(source, before);
  for (size_t n = 20; n < out.size() / 2 - 20; ++n) {
    ASSERT_NEAR(out[2 * n], 20000 * std::sin(0.05 * static_cast<double>(n) * 44100 / 48000), 1.5);
    ASSERT_NEAR(out[2 * n + 1], -1234, 1);
  }
}

TEST(Resample2, InPlaceAndRatioOne) {
  std::vector<float> block(600), apart(600);
  for (size_t n = 0; n < 300; ++n) block[n] = static_cast<float>(std::sin(0.1 * static_cast<double>(n)));
  const std::vector<float> source = block;
  const Instance one = Open(ZRSAMPLETYPE_FLOAT32, 1, 44100, 48000, 4);
  const Instance two = Open(ZRSAMPLETYPE_FLOAT32, 1, 44100, 48000, 4);
  int64_t made, taken, madeApart, takenApart;
  ASSERT_EQ(ZrAudio_Resample2Process(one.get(), block.data(), 600, &made, block.data(), 300, &taken), S_OK);
  ASSERT_EQ(ZrAudio_Resample2Process(two.get(), apart.data(), 600, &madeApart, source.data(), 300, &takenApart), S_OK);
  ASSERT_EQ(made, madeApart);
  EXPECT_TRUE(std::equal(apart.begin(), apart.begin() + made, block.begin()));
  const Instance same = Open(ZRSAMPLETYPE_FLOAT32, 1, 48000, 48000, 4);
  ASSERT_EQ(ZrAudio_Resample2Process(same.get(), apart.data(), 100, &made, source.data(), 50, &taken), S_OK);
  EXPECT_EQ(made, 50);
  EXPECT_EQ(taken, 50);
  ASSERT_EQ(ZrAudio_Resample2Process(same.get(), apart.data(), 100, &made, apart.data(), 50, &taken), S_OK);
  EXPECT_EQ(made, 100);  // One buffer: the counts come back as given.
  EXPECT_EQ(taken, 50);
  EXPECT_EQ(ZrAudio_Resample2Process(same.get(), apart.data(), 1, nullptr, apart.data(), 1, &taken), E_POINTER);
}

TEST(Resample2, FiltersCutWhatTheNewRateCantHold) {
  const auto level = [](uint32_t flags) {
    const Instance instance = Open(ZRSAMPLETYPE_FLOAT64, 1, 48000, 24000, flags);
    std::vector<double> tone(4800);
    for (size_t n = 0; n < tone.size(); ++n)
      tone[n] = std::sin(2 * std::numbers::pi * 20000 * static_cast<double>(n) / 48000);
    const std::vector<double> out = Stream(instance.get(), tone, 1, nullptr, false);
    return *std::max_element(out.begin() + 500, out.end());
  };
  EXPECT_GT(level(4), 0.8);
  EXPECT_NEAR(level(0x14), 0.00376381798, 1e-4);  // Order 4 at 0.95 of the half: |H| at 20 kHz.
  EXPECT_LT(level(0x24), level(0x14));
  EXPECT_LT(level(0x44), level(0x24));
}

TEST(Resample2, RatioChangesWithoutAJump) {
  for (const uint32_t flags : {1u, 2u, 4u}) {
    const Instance instance = OpenRatio(ZRSAMPLETYPE_FLOAT64, 1, 1.25, flags);
    std::vector<double> source(3000), out(6000);
    for (size_t n = 0; n < source.size(); ++n) source[n] = std::sin(0.01 * static_cast<double>(n));
    int64_t at = 0;
    double last = 0;
    for (const double ratio : {1.25, 1.0 / 3.0 + 1, 1.1, 0.91, 0.7}) {
      ASSERT_EQ(ZrAudio_Resample2ResetEx(instance.get(), 0, 0, ratio, 0, 0), S_OK);
      int64_t made, taken;
      ASSERT_EQ(ZrAudio_Resample2Process(instance.get(), out.data(), 300, &made, source.data() + at, 500, &taken),
                S_OK);
      for (int64_t n = 0; n < made; ++n) {
        if (at > 0 || n > 20) {
          ASSERT_NEAR(out[static_cast<size_t>(n)], last, 0.016) << flags << " " << ratio << " " << n;
        }
        last = out[static_cast<size_t>(n)];
      }
      at += taken;
    }
  }
}

TEST(Resample2, SincReachesTheQualityOfItsTable) {
  const Instance instance = Open(ZRSAMPLETYPE_FLOAT64, 1, 44100, 48000, 4);
  std::vector<double> source(44100);
  for (size_t n = 0; n < source.size(); ++n)
    source[n] = std::sin(2 * std::numbers::pi * 997 * static_cast<double>(n) / 44100);
  const std::vector<double> out = Stream(instance.get(), source, 1, nullptr, false);
  const std::vector<double> middle(out.begin() + 1000, out.end() - 1000);
  // 107.8 dB: what 25 taps under this window reach with a 4000-entry table, computed from the formulas.
  EXPECT_NEAR(testing_support::SineSnr(middle, 997.0 / 48000), 107.8, 0.3);
}

}  // namespace
