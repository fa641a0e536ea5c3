// SPDX-License-Identifier: Apache-2.0
// The first resampler and the rational approximation: exact positions, seams, the sinc kernel, its quality.
#include "marlo110k/resample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

#include "testing/random.h"
#include "testing/sine_fit.h"

namespace {

using testing_support::Random;

struct Closer {
  void operator()(tZRRESAMPLEINSTANCE* instance) const { ZrAudio_ResampleClose(instance); }
};
using Instance = std::unique_ptr<tZRRESAMPLEINSTANCE, Closer>;

Instance Open(uint32_t type, int32_t srcRate, int32_t dstRate, int32_t channels, uint32_t flags) {
  tZRRESAMPLEINSTANCE* instance = nullptr;
  EXPECT_EQ(ZrAudio_ResampleOpen(&instance, type, srcRate, dstRate, channels, flags), S_OK);
  return Instance(instance);
}

struct Rates {
  int32_t src, dst;
};
constexpr Rates kRates[] = {{44100, 48000}, {48000, 44100}, {22050, 44100}, {96000, 32000},
                            {8000, 11025},  {192000, 8000}, {44100, 44101}, {1000, 999}};

/// Cuts a stream into random blocks and gives what comes out.
template <typename Sample>
std::vector<Sample> Stream(tZRRESAMPLEINSTANCE* instance, std::vector<Sample> source, int32_t channels, Random* random,
                           bool inPlace) {
  std::vector<Sample> out;
  const auto frames = static_cast<int64_t>(source.size()) / channels;
  for (int64_t at = 0; at < frames;) {
    const int64_t block = random == nullptr ? frames : std::min<int64_t>(frames - at, random->Between(1, 90));
    const int64_t room = std::max(block, ZrAudio_ResampleGetDstFromSrc(instance, block)) + 1;
    std::vector<Sample> buffer(static_cast<size_t>(room * channels));
    Sample* from = source.data() + at * channels;
    if (inPlace) {
      std::copy_n(from, block * channels, buffer.data());
      from = buffer.data();
    }
    const int64_t made = ZrAudio_ResampleEx(instance, buffer.data(), from, block);
    EXPECT_LE(made, room);
    out.insert(out.end(), buffer.begin(), buffer.begin() + made * channels);
    at += block;
  }
  return out;
}

TEST(ResampleLinear, IntegersStandOnExactPositionsInAnyBlocks) {
  Random random(23);
  SCOPED_TRACE(random.Label());
  for (const Rates& rates : kRates) {
    for (const int32_t channels : {1, 2, 5}) {
      std::vector<int16_t> source(static_cast<size_t>(channels) * 700);
      for (int16_t& sample : source) sample = static_cast<int16_t>(random.Between(-32768, 32767));
      // Straight from the rule, over the whole stream at once.
      const int64_t frames = static_cast<int64_t>(source.size()) / channels;
      std::vector<int16_t> wanted;
      for (int64_t n = 0;; ++n) {
        const int64_t i = n * rates.src / rates.dst;
        const int64_t r = n * rates.src % rates.dst;
        if (rates.dst > rates.src ? n * rates.src > (frames - 1) * rates.dst : i >= frames - 1) break;
        for (int32_t c = 0; c < channels; ++c) {
          const int64_t a = source[static_cast<size_t>(i * channels + c)];
          const int64_t b = r == 0 ? a : source[static_cast<size_t>((i + 1) * channels + c)];
          wanted.push_back(static_cast<int16_t>(a + (b - a) * r / rates.dst));
        }
      }
      for (const bool inPlace : {false, true}) {
        for (Random* cut : {static_cast<Random*>(nullptr), &random}) {
          const Instance instance = Open(ZRSAMPLETYPE_PCM16, rates.src, rates.dst, channels, 0x222);
          ASSERT_EQ(Stream(instance.get(), source, channels, cut, inPlace), wanted)
              << rates.src << " to " << rates.dst << " channels " << channels << " in place " << inPlace;
          EXPECT_EQ(ZrAudio_ResampleGetSrcPos(instance.get()), frames);
          EXPECT_EQ(ZrAudio_ResampleGetDstPos(instance.get()), static_cast<int64_t>(wanted.size()) / channels);
        }
      }
    }
  }
}

TEST(ResampleLinear, PackedAndWideIntegersFollowTheSameRule) {
  // 100, 200 at one to three, and back down again; truncation is toward zero in each step.
  struct Row {
    int32_t from, to;
    int32_t wanted[4];
  };
  for (const Row& row : {Row{100, 200, {100, 133, 166, 200}}, Row{200, 100, {200, 167, 134, 100}}}) {
    for (const uint32_t type :
         {ZRSAMPLETYPE_PCM24, ZRSAMPLETYPE_PCM32, ZRSAMPLETYPE_PCM24UNPACKED, ZRSAMPLETYPE_PCM32BE}) {
      const size_t bytes = type == ZRSAMPLETYPE_PCM24 ? 3 : 4;
      const auto store = [&](uint8_t* at, int32_t value) {
        if (type == ZRSAMPLETYPE_PCM32BE) value = static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(value)));
        std::memcpy(at, &value, bytes);
      };
      uint8_t source[8] = {};
      store(source, row.from);
      store(source + bytes, row.to);
      const Instance instance = Open(type, 1, 3, 1, 1);
      uint8_t out[32] = {};
      ASSERT_EQ(ZrAudio_ResampleEx(instance.get(), out, source, 2), 4);
      uint8_t wanted[32] = {};
      for (size_t n = 0; n < 4; ++n) store(wanted + n * bytes, row.wanted[n]);
      EXPECT_EQ(std::memcmp(out, wanted, sizeof(out)), 0) << type;
    }
  }
}

TEST(ResampleLinear, FloatsKeepTheSeamWithinRounding) {
  Random random(24);
  SCOPED_TRACE(random.Label());
  for (const Rates& rates : kRates) {
    std::vector<double> source(2 * 900);
    for (double& sample : source) sample = random.Real(-1, 1);
    const Instance whole = Open(ZRSAMPLETYPE_FLOAT64, rates.src, rates.dst, 2, 1);
    const std::vector<double> wanted = Stream(whole.get(), source, 2, nullptr, false);
    for (int64_t n = 0; n < static_cast<int64_t>(wanted.size()) / 2; ++n) {
      const int64_t i = n * rates.src / rates.dst;
      const double f = static_cast<double>(n * rates.src % rates.dst) / rates.dst;
      const double a = source[static_cast<size_t>(2 * i)];
      const double b = f == 0 ? a : source[static_cast<size_t>(2 * i + 2)];
      ASSERT_NEAR(wanted[static_cast<size_t>(2 * n)], a + f * (b - a), 1e-9) << rates.src << " to " << rates.dst;
    }
    for (const bool inPlace : {false, true}) {
      const Instance cut = Open(ZRSAMPLETYPE_FLOAT64, rates.src, rates.dst, 2, 1);
      const std::vector<double> got = Stream(cut.get(), source, 2, &random, inPlace);
      ASSERT_EQ(got.size(), wanted.size()) << rates.src << " to " << rates.dst;
      for (size_t n = 0; n < got.size(); ++n) ASSERT_NEAR(got[n], wanted[n], 1e-9) << n;
    }
  }
}

TEST(ResampleLinear, CountedByDestinationFillsEveryBlock) {
  for (const Rates& rates : kRates) {
    const Instance instance = Open(ZRSAMPLETYPE_FLOAT64, rates.src, rates.dst, 1, 1 | ZRRESAMPLE_COUNT_IS_DEST);
    // A ramp: every output is its own position in the source.
    int64_t consumed = 0;
    int64_t made = 0;
    for (const int64_t count : {1, 2, 10, 160, 161, 480, 7, 1}) {
      const int64_t need = ZrAudio_ResampleGetSrcFromDst(instance.get(), count);
      std::vector<double> source(static_cast<size_t>(need));
      for (size_t n = 0; n < source.size(); ++n) source[n] = static_cast<double>(consumed) + static_cast<double>(n);
      std::vector<double> out(static_cast<size_t>(count));
      ASSERT_EQ(ZrAudio_ResampleEx(instance.get(), out.data(), source.data(), count), count);
      for (size_t n = 0; n < out.size(); ++n) {
        ASSERT_NEAR(out[n], static_cast<double>(made + static_cast<int64_t>(n)) * rates.src / rates.dst, 1e-6);
      }
      made += count;
      consumed = ZrAudio_ResampleGetSrcPos(instance.get());
    }
  }
}

TEST(ResampleLinear, SizesOfKnownBlocks) {
  struct Row {
    int32_t src, dst;
    int64_t count, frames;
  };
  for (const Row& row : {Row{1, 2, 1, 2}, Row{1, 2, 100, 51}, Row{1, 2, 480, 241}, Row{44100, 48000, 1, 2},
                         Row{44100, 48000, 100, 93}, Row{44100, 48000, 480, 442}, Row{2, 1, 1, 2}, Row{2, 1, 100, 200},
                         Row{48000, 44100, 1, 2}, Row{48000, 44100, 100, 109}, Row{48000, 44100, 480, 523}}) {
    const Instance instance = Open(ZRSAMPLETYPE_FLOAT32, row.src, row.dst, 1, 1 | ZRRESAMPLE_COUNT_IS_DEST);
    EXPECT_EQ(ZrAudio_ResampleGetSrcFromDst(instance.get(), row.count), row.frames)
        << row.src << " to " << row.dst << " of " << row.count;
  }
  // One block of 100 after the other, counted by source: the stream's total doesn't depend on the cut.
  std::vector<float> source(100), out(400);
  const Instance up = Open(ZRSAMPLETYPE_FLOAT32, 44100, 48000, 1, 1);
  std::vector<int64_t> made;
  for (int block = 0; block < 5; ++block) made.push_back(ZrAudio_ResampleEx(up.get(), out.data(), source.data(), 100));
  EXPECT_EQ(made, (std::vector<int64_t>{108, 109, 109, 109, 109}));
}

TEST(ResampleLinear, StuffedFrameChangesOnlyTheFirstOutputs) {
  std::vector<float> source(50, 1.0f), a(200), b(200);
  const Instance plain = Open(ZRSAMPLETYPE_FLOAT32, 1, 2, 1, 1);
  const Instance stuffed = Open(ZRSAMPLETYPE_FLOAT32, 1, 2, 1, 1);
  ASSERT_EQ(ZrAudio_ResampleEx(plain.get(), a.data(), source.data(), 50), 99);
  ASSERT_EQ(ZrAudio_ResampleEx(stuffed.get(), b.data(), source.data(), 50), 99);
  ZrAudio_ResampleStuffPrevSample(stuffed.get(), 0.5, 0);
  ASSERT_EQ(ZrAudio_ResampleEx(plain.get(), a.data(), source.data(), 50), 100);
  ASSERT_EQ(ZrAudio_ResampleEx(stuffed.get(), b.data(), source.data(), 50), 100);
  EXPECT_EQ(b[0], 0.75f);
  EXPECT_TRUE(std::equal(a.begin() + 1, a.begin() + 100, b.begin() + 1));
}

TEST(ResampleFlags, DecideTheRoad) {
  // An integer type asked for sinc and filter is linear without: the same bytes as flags 2.
  std::vector<int16_t> source(300), first(700), second(700);
  Random random(25);
  for (int16_t& sample : source) sample = static_cast<int16_t>(random.Between(-32768, 32767));
  const Instance sinc = Open(ZRSAMPLETYPE_PCM16, 44100, 48000, 1, 0x23);
  const Instance linear = Open(ZRSAMPLETYPE_PCM16, 44100, 48000, 1, 0x02);
  const int64_t made = ZrAudio_ResampleEx(sinc.get(), first.data(), source.data(), 300);
  ASSERT_EQ(made, ZrAudio_ResampleEx(linear.get(), second.data(), source.data(), 300));
  EXPECT_EQ(first, second);
  // Quality 4 produces nothing and only moves on.
  const Instance none = Open(ZRSAMPLETYPE_FLOAT32, 44100, 48000, 1, 4);
  std::vector<float> floats(100), out(200, 7);
  EXPECT_EQ(ZrAudio_ResampleEx(none.get(), out.data(), floats.data(), 100), 0);
  EXPECT_EQ(ZrAudio_ResampleGetSrcPos(none.get()), 100);
  EXPECT_EQ(out[0], 7);
  // Going down with the source kept, the filter is left out; otherwise it works on the source.
  std::vector<float> loud(100);
  for (size_t n = 0; n < loud.size(); ++n) loud[n] = n % 2 == 0 ? 1.0f : -1.0f;
  std::vector<float> kept = loud;
  const Instance keeping = Open(ZRSAMPLETYPE_FLOAT32, 48000, 24000, 1, 0x22 | ZRRESAMPLE_KEEP_SOURCE);
  ZrAudio_ResampleEx(keeping.get(), out.data(), kept.data(), 100);
  EXPECT_EQ(kept, loud);
  EXPECT_EQ(out[20], 1.0f);
  const Instance filtering = Open(ZRSAMPLETYPE_FLOAT32, 48000, 24000, 1, 0x22);
  ZrAudio_ResampleEx(filtering.get(), out.data(), kept.data(), 100);
  EXPECT_NE(kept, loud);
  EXPECT_LT(std::abs(out[40]), 0.01f);
}

TEST(ResampleFlags, RatioOneCopies) {
  std::vector<float> source = {1, 2, 3, 4}, out(4);
  const Instance instance = Open(ZRSAMPLETYPE_FLOAT32, 48000, 48000, 2, 0x23);
  EXPECT_EQ(ZrAudio_ResampleEx(instance.get(), out.data(), source.data(), 2), 2);
  EXPECT_EQ(out, source);
  EXPECT_EQ(ZrAudio_ResampleEx(instance.get(), out.data(), out.data(), 2), 2);
  EXPECT_EQ(ZrAudio_ResampleGetDstPos(instance.get()), 4);
}

TEST(ResampleOpen, RefusesWhatItCantServe) {
  tZRRESAMPLEINSTANCE* instance = nullptr;
  EXPECT_EQ(ZrAudio_ResampleOpen(nullptr, 32, 1, 1, 1, 0), E_INVALIDARG);
  for (const uint32_t type : {0u, 15u, 34u, 128u}) {
    EXPECT_EQ(ZrAudio_ResampleOpen(&instance, type, 1, 1, 1, 0), E_INVALIDARG) << type;
  }
  for (const int32_t channels : {0, -1, 33}) {
    EXPECT_EQ(ZrAudio_ResampleOpen(&instance, 32, 1, 1, channels, 0), E_INVALIDARG);
  }
  EXPECT_EQ(ZrAudio_ResampleOpen(&instance, 32, 0, 1, 1, 0), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_ResampleOpenEx(&instance, 32, 1, NAN, 0), E_INVALIDARG);
  EXPECT_EQ(ZrAudio_ResampleOpenEx(&instance, 32, 1, -2, 0), E_INVALIDARG);
  EXPECT_EQ(instance, nullptr);
  EXPECT_EQ(ZrAudio_ResampleEx(nullptr, nullptr, nullptr, 1), 0);
  EXPECT_EQ(ZrAudio_ResampleGetSrcPos(nullptr), 0);
}

TEST(ResampleReset, ChangesInFlight) {
  Instance instance = Open(ZRSAMPLETYPE_FLOAT64, 44100, 48000, 1, 0x22);
  std::vector<double> source(500), out(2000);
  for (size_t n = 0; n < source.size(); ++n) source[n] = std::sin(0.02 * static_cast<double>(n));
  int64_t made = ZrAudio_ResampleEx(instance.get(), out.data(), source.data(), 250);
  const double before = out[static_cast<size_t>(made - 1)];
  ASSERT_EQ(ZrAudio_ResampleReset(instance.get(), 0, 44100, 47000, 0, 0), S_OK);
  EXPECT_EQ(ZrAudio_ResampleGetSrcPos(instance.get()), 0);
  made = ZrAudio_ResampleEx(instance.get(), out.data(), source.data() + 250, 250);
  EXPECT_NEAR(out[0], before, 0.03);  // No jump: the delays and the kept frame went on.
  ASSERT_EQ(ZrAudio_ResampleReset(instance.get(), 0, 0, 0, 0, 1), S_OK);
  EXPECT_EQ(ZrAudio_ResampleGetDstPos(instance.get()), 0);
  ASSERT_EQ(ZrAudio_ResampleReset(instance.get(), ZRSAMPLETYPE_PCM16, 0, 0, 2, 0), S_OK);
  std::vector<int16_t> ints(200, 100), intsOut(500);
  made = ZrAudio_ResampleEx(instance.get(), intsOut.data(), ints.data(), 100);
  EXPECT_EQ(made, 106);  // Frames at or before the last: 99 * 47000 / 44100, and the one at 0.
  EXPECT_EQ(intsOut[50], 100);
}

TEST(ResampleReset, WithoutARateLeavesAFreeRatioAlone) {
  tZRRESAMPLEINSTANCE* opened = nullptr;
  // No quotient of 31-bit rates is this ratio, so a quotient put in its place would be a change.
  ASSERT_EQ(ZrAudio_ResampleOpenEx(&opened, ZRSAMPLETYPE_FLOAT32, 1, std::numbers::pi * 1e-5, 1), S_OK);
  const Instance instance(opened);
  std::vector<float> source(100), out(200);
  ZrAudio_ResampleEx(instance.get(), out.data(), source.data(), 100);
  ASSERT_EQ(ZrAudio_ResampleReset(instance.get(), 0, 0, 0, 0, 0), S_OK);
  EXPECT_EQ(ZrAudio_ResampleGetSrcPos(instance.get()), 100);  // A change would have zeroed it.
}

TEST(ResampleStupid, StretchesToTheGivenSize) {
  for (const uint32_t type : {ZRSAMPLETYPE_FLOAT64}) {
    const Instance instance = Open(type, 1, 1, 1, 0);
    std::vector<double> source(100), out(300);
    for (size_t n = 0; n < source.size(); ++n) source[n] = static_cast<double>(n + 1);
    for (const int64_t frames : {1, 50, 99, 100, 101, 300}) {
      ZrAudio_ResampleStuffPrevSample(instance.get(), 0, 0);
      ASSERT_EQ(ZrAudio_ResampleStupid(instance.get(), out.data(), frames, source.data(), 100), frames);
      EXPECT_NEAR(out[static_cast<size_t>(frames - 1)], 100, 1e-9);  // Ends on the last source frame.
      for (int64_t n = 1; n < frames; ++n) ASSERT_GT(out[static_cast<size_t>(n)], out[static_cast<size_t>(n - 1)]);
    }
    EXPECT_EQ(ZrAudio_ResampleStupid(instance.get(), nullptr, 0, source.data(), 100), 0);
    ASSERT_EQ(ZrAudio_ResampleStupid(instance.get(), out.data(), 4, source.data(), 2), 4);
    EXPECT_NEAR(out[0], (100 + 1) / 2.0, 1e-9);  // Between the noted frame and the first one.
  }
  const Instance bigEndian = Open(ZRSAMPLETYPE_PCM16BE, 1, 1, 1, 0);
  int16_t sample[2] = {};
  EXPECT_EQ(ZrAudio_ResampleStupid(bigEndian.get(), sample, 2, sample, 1), -1);
  const Instance ints = Open(ZRSAMPLETYPE_PCM16, 1, 1, 1, 0);
  int16_t block[4] = {300, 300}, wide[4];
  ASSERT_EQ(ZrAudio_ResampleStupid(ints.get(), wide, 4, block, 2), 4);
  EXPECT_EQ(wide[0], 150);
  EXPECT_EQ(wide[3], 300);
}

TEST(ResampleSinc, KernelGivesTheWindowedTaps) {
  const Instance instance = Open(ZRSAMPLETYPE_FLOAT32, 1, 2, 1, 3);
  std::vector<float> source(64), out(128);
  source[20] = 1;
  ASSERT_EQ(ZrAudio_Resample_Sinc(32, 1, out.data(), 128, source.data(), 64, instance.get()), 104);
  // Sinc times a four-term Blackman-Harris window, read from a 1000-entry table by straight lines.
  EXPECT_EQ(out[40], 1.0f);
  EXPECT_NEAR(out[39], 0.631232727126, 1e-7);
  EXPECT_NEAR(out[41], 0.631232727126, 1e-7);
  EXPECT_NEAR(out[38], 1.2308534e-5, 1e-9);
  EXPECT_NEAR(out[37], -0.196571647307, 1e-7);
  EXPECT_NEAR(out[43], -0.196571647307, 1e-7);
  source[20] = 0;
  EXPECT_EQ(ZrAudio_Resample_Sinc(32, 1, out.data(), 128, source.data(), 64, instance.get()), 128);
  // A flush gives one frame for each of the 13 frames behind the centre, and no more.
  EXPECT_EQ(ZrAudio_Resample_Sinc(32, 1, out.data(), 128, source.data(), 0, instance.get()), 13);
  EXPECT_EQ(ZrAudio_Resample_Sinc(32, 1, out.data(), 128, source.data(), 0, instance.get()), 0);
  EXPECT_EQ(ZrAudio_Resample_Sinc(32, 1, out.data(), 128, out.data(), 64, instance.get()), 0);
  EXPECT_EQ(ZrAudio_Resample_Sinc(17, 1, out.data(), 128, source.data(), 64, instance.get()), 0);

  const Instance ones = Open(ZRSAMPLETYPE_FLOAT64, 1, 2, 1, 3);
  std::vector<double> level(64, 1.0), half(128);
  ASSERT_EQ(ZrAudio_Resample_Sinc(33, 1, half.data(), 128, level.data(), 64, ones.get()), 104);
  EXPECT_NEAR(half[0], 1.000008613, 1e-8);  // No frames stand before the first.
  EXPECT_NEAR(half[1], 1.131224220, 1e-8);
  EXPECT_NEAR(half[60], 1.000017227, 1e-8);
}

TEST(ResampleSinc, AnyBlocksGiveTheSameStream) {
  Random random(26);
  SCOPED_TRACE(random.Label());
  for (const Rates& rates : kRates) {
    for (const int32_t channels : {1, 2, 3}) {
      std::vector<double> source(static_cast<size_t>(channels) * 2000);
      for (double& sample : source) sample = random.Real(-1, 1);
      const Instance whole = Open(ZRSAMPLETYPE_FLOAT64, rates.src, rates.dst, channels, 3);
      const std::vector<double> wanted = Stream(whole.get(), source, channels, nullptr, false);
      const Instance cut = Open(ZRSAMPLETYPE_FLOAT64, rates.src, rates.dst, channels, 3);
      const std::vector<double> got = Stream(cut.get(), source, channels, &random, false);
      ASSERT_EQ(got.size(), wanted.size()) << rates.src << " to " << rates.dst;
      for (size_t n = 0; n < got.size(); ++n) {
        ASSERT_NEAR(got[n], wanted[n], 1e-9) << n << " " << rates.src << " to " << rates.dst;
      }
    }
  }
}

TEST(ResampleSinc, ReachesTheQualityOfItsTable) {
  const Instance instance = Open(ZRSAMPLETYPE_FLOAT64, 44100, 48000, 1, 3);
  std::vector<double> source(44100);
  for (size_t n = 0; n < source.size(); ++n)
    source[n] = std::sin(2 * std::numbers::pi * 997 * static_cast<double>(n) / 44100);
  const std::vector<double> out = Stream(instance.get(), source, 1, nullptr, false);
  EXPECT_EQ(out.size(), 47987u);  // Positions below 44100 - 12 source frames.
  const std::vector<double> middle(out.begin() + 1000, out.end() - 1000);
  // 105.4 dB is what 25 taps under this window reach with a 1000-entry table, computed from the formulas.
  EXPECT_NEAR(testing_support::SineSnr(middle, 997.0 / 48000), 105.4, 0.3);
}

TEST(RatApprox, FindsTheBestFraction) {
  struct Row {
    double value;
    uint32_t limit;
    int32_t table;
    int64_t num, den;
    bool found;
  };
  const double pi = std::numbers::pi;
  for (const Row& row :
       {Row{48000.0 / 44100, 0, 1, 48000, 44100, true}, Row{48000.0 / 44100, 0x100000, 0, 160, 147, true},
        Row{2.0, 0, 1, 16000, 8000, true}, Row{0.5, 0, 1, 8000, 16000, true}, Row{1.5, 0, 1, 48000, 32000, true},
        Row{1.0, 0, 1, 8000, 8000, true}, Row{1.1, 22, 1, 11, 10, true}, Row{1.2345, 22, 0, 21, 17, true},
        Row{1.2345, 0x100000, 0, 2469, 2000, true}, Row{pi, 100, 0, 22, 7, true}, Row{pi, 200, 0, 179, 57, true},
        Row{pi, 1000, 0, 355, 113, true}, Row{0, 100, 0, 0, 1, false}, Row{-pi, 1000, 0, -355, 113, true},
        Row{NAN, 100, 0, 0, 1, false}, Row{0.25, 1000, 0, 1, 4, true}, Row{1e-30, 100, 0, 0, 1, true}}) {
    int64_t num = -7, den = -7;
    double error = -7;
    EXPECT_EQ(ZrRatApprox(row.value, row.limit, row.table, &num, &den, &error), row.found) << row.value;
    EXPECT_EQ(num, row.num) << row.value << " limit " << row.limit;
    EXPECT_EQ(den, row.den) << row.value << " limit " << row.limit;
    if (row.found) {
      EXPECT_EQ(error, row.value - static_cast<double>(num) / static_cast<double>(den));
    }
  }
}

TEST(RatApprox, IsTheNearestOfAllSmallFractions) {
  Random random(27);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 300; ++round) {
    const double value = random.Real(0.01, 8);
    const auto limit = static_cast<uint32_t>(random.Between(9, 120));
    double best = 1e9;
    for (int64_t den = 1; den <= limit; ++den) {
      const auto num = static_cast<int64_t>(std::llround(value * static_cast<double>(den)));
      if (num <= limit) best = std::min(best, std::abs(value - static_cast<double>(num) / static_cast<double>(den)));
    }
    int64_t num, den;
    double error;
    ASSERT_TRUE(ZrRatApprox(value, limit, 0, &num, &den, &error));
    ASSERT_LE(num, limit);
    ASSERT_LE(den, limit);
    ASSERT_NEAR(std::abs(error), best, 1e-12) << value << " limit " << limit << ": " << num << "/" << den;
  }
}

}  // namespace
