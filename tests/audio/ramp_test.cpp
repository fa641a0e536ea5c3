// SPDX-License-Identifier: Apache-2.0
// Gain envelopes: what a description becomes in frames, and the gain of every frame against its closed form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "audio/mix.h"
#include "audio/sample_data.h"

using namespace sample_reference;

namespace {

_zrwaveformat FormatOf(uint32_t type, uint16_t channels, uint32_t rate = 48000) {
  _zrwaveformat format;
  std::memset(&format, 0, sizeof format);
  format.size = 32;
  format.sampleType = type;
  format.channels = channels;
  format.samplesPerSec = rate;
  return format;
}

constexpr int64_t kTicksPerFrame = 10000000 / 40000;  // At 40 kHz a frame is a whole number of ticks.
constexpr uint32_t kRate = 40000;

tZRASR Envelope(int64_t attackFrames, int64_t releaseFrames, int32_t attackCurve, int32_t releaseCurve) {
  return {0,   0.8f, attackFrames * kTicksPerFrame, releaseFrames * kTicksPerFrame, attackCurve, 0.1f, releaseCurve,
          0.3f};
}

/// The gain that the shape has at an offset, from the description of the curves alone.
double ShapeGain(double from, double to, int32_t curve, double offset, double length) {
  const double part = offset / length;
  if (std::abs(curve) < 2) return from + (to - from) * part;
  return curve > 0 ? from + (to - from) * part * part : to + (from - to) * (1 - part) * (1 - part);
}

double EnvelopeGain(const tZRASR& asr, int64_t attack, int64_t sustain, int64_t release, int64_t position) {
  if (position < attack) {
    return ShapeGain(asr.attackGain, asr.sustainGain, asr.attackCurve, static_cast<double>(position),
                     static_cast<double>(attack));
  }
  if (position < attack + sustain) return asr.sustainGain;
  if (position >= attack + sustain + release) return asr.releaseGain;
  return ShapeGain(asr.sustainGain, asr.releaseGain, asr.releaseCurve, static_cast<double>(position - attack - sustain),
                   static_cast<double>(release));
}

TEST(AsrCook, LengthsAndGains) {
  const auto format = FormatOf(ZRSAMPLETYPE_PCM16, 2, 44100);
  struct Row {
    const char* what;
    int64_t attackTicks, releaseTicks, totalTicks;
    int32_t attack, release;
    int64_t sustain;
  };
  // 44100 Hz: 1 ms is 44.1 frames, rounded half up.
  constexpr Row kRows[] = {
      {"plain", 10000, 20000, 10000000, 44, 88, 44100 - 132},
      {"half a frame rounds up", 10'000'000 / 88200 + 1, 0, 10000000, 1, 0, 44099},
      {"negative times are no time", -5, -10000, 10000000, 0, 0, 44100},
      {"longer than the clip: halves, the odd frame to the attack", 10000000, 10000000, 10000, 22, 22, 0},
      {"an odd clip", 10000000, 10000000, 10205, 23, 22, 0},
      {"attack alone is too long", 30000000, 0, 10000000, 22050, 22050, 0},
      {"exactly full", 5000000, 5000000, 10000000, 22050, 22050, 0},
      {"no clip", 10000, 10000, 0, 0, 0, 0},
      {"hours of attack clamp, and the clip splits", INT64_MAX, INT64_MAX, 10000000, 22050, 22050, 0},
  };
  for (const Row& row : kRows) {
    const tZRASR asr = {0, 0.5f, row.attackTicks, row.releaseTicks, 2, 0.25f, -1, 2.0f};
    tZRASRCOOKED cooked;
    std::memset(&cooked, 0xCC, sizeof cooked);
    EXPECT_EQ(ZrAudio_ASRCook(&format, &asr, &cooked, 0, row.totalTicks, 0.5), S_OK);
    EXPECT_EQ(cooked.attackLength, row.attack) << row.what;
    EXPECT_EQ(cooked.releaseLength, row.release) << row.what;
    EXPECT_EQ(cooked.sustainLength, row.sustain) << row.what;
    EXPECT_EQ(cooked.attackCurve, 2);
    EXPECT_EQ(cooked.releaseCurve, -1);
    // 0.5 overall, 2^-15 for the integer source.
    EXPECT_EQ(cooked.sustainGain, 0.25 / 32768);
    EXPECT_EQ(cooked.attackGain, 0.125 / 32768);
    EXPECT_EQ(cooked.releaseGain, 1.0 / 32768);
    EXPECT_EQ(cooked.position, 0);
  }
  // A float source takes the gain alone, and WAVEFORMATEX says the same as the record.
  WAVEFORMATEX wfx = {WAVE_FORMAT_IEEE_FLOAT, 1, 48000, 192000, 4, 32, 0};
  const tZRASR asr = {0, 0.5f, 0, 0, 0, 0, 0, 0};
  tZRASRCOOKED cooked;
  ZrAudio_ASRCook(&wfx, &asr, &cooked, 3, 10000000, 3.0);
  EXPECT_EQ(cooked.sustainGain, 1.5);
  EXPECT_EQ(cooked.position, 3);
  EXPECT_EQ(cooked.remaining, 47997);
}

TEST(AsrReCook, SegmentsAndTheirBounds) {
  const auto format = FormatOf(ZRSAMPLETYPE_FLOAT64, 1, kRate);
  for (const int32_t curve : {-3, -2, -1, 0, 1, 2, 3, INT32_MIN, INT32_MAX}) {
    const tZRASR asr = Envelope(100, 50, curve, curve);
    tZRASRCOOKED cooked;
    ZrAudio_ASRCook(&format, &asr, &cooked, 0, 400 * kTicksPerFrame, 1.0);
    struct {
      int64_t position, remaining;
      bool moves;
    } const kRows[] = {{0, 100, true},    {1, 99, true},           {99, 1, true},
                       {100, 250, false}, {349, 1, false},         {350, 50, true},
                       {399, 1, true},    {400, INT64_MAX, false}, {5000, INT64_MAX, false}};
    for (const auto& row : kRows) {
      EXPECT_EQ(ZrAudio_ASRReCook(&cooked, row.position), S_OK);
      EXPECT_EQ(cooked.position, row.position);
      EXPECT_EQ(cooked.remaining, row.remaining) << row.position;
      EXPECT_NEAR(cooked.gain, EnvelopeGain(asr, 100, 250, 50, row.position), 1e-12) << curve << ' ' << row.position;
      EXPECT_EQ(cooked.gainDelta != 0.0, row.moves);
      // The difference leads to the next frame of the same segment, or to its end.
      if (row.moves) {
        const double from = row.position < 100 ? asr.attackGain : asr.sustainGain;
        const double to = row.position < 100 ? asr.sustainGain : asr.releaseGain;
        const double offset = static_cast<double>(row.position < 100 ? row.position : row.position - 350) + 1;
        EXPECT_NEAR(cooked.gain + cooked.gainDelta, ShapeGain(from, to, curve, offset, row.position < 100 ? 100 : 50),
                    1e-12);
      }
      EXPECT_EQ(cooked.gainDeltaDelta != 0.0, row.moves && (curve >= 2 || curve <= -2));
    }
  }
}

// A whole clip through all segments, in one call and in pieces: ones mixed into zeros give the envelope.
TEST(MixEx, FollowsTheEnvelopeThroughAllSegments) {
  const ProcessorScope scope;
  constexpr int64_t kFrames = 1000;
  for (const Members members : {Members::kPlain, Members::kAll}) {
    Allow(members);
    for (const uint16_t channels : {uint16_t{1}, uint16_t{2}, uint16_t{3}, uint16_t{70}}) {
      for (const int32_t curve : {-2, 0, 2}) {
        const auto format = FormatOf(ZRSAMPLETYPE_FLOAT64, channels, kRate);
        const tZRASR asr = Envelope(300, 200, curve, -curve);
        const std::vector<double> ones(static_cast<size_t>(kFrames * channels), 1.0);
        for (const int64_t piece : {kFrames, int64_t{64}, int64_t{7}}) {
          std::vector<double> dest(ones.size(), 0.0);
          tZRASRCOOKED cooked;
          ZrAudio_ASRCook(&format, &asr, &cooked, 0, 900 * kTicksPerFrame, 1.0);
          for (int64_t at = 0; at < kFrames; at += piece) {
            const int64_t frames = std::min(piece, kFrames - at);
            ZrAudio_ASRReCook(&cooked, at);
            ASSERT_EQ(ZrAudio_MixEx(&format, dest.data() + at * channels, &format, ones.data() + at * channels, frames,
                                    &cooked),
                      S_OK);
            ASSERT_EQ(cooked.position, at + frames);
          }
          for (int64_t n = 0; n < kFrames * channels; ++n) {
            ASSERT_NEAR(dest[static_cast<size_t>(n)], EnvelopeGain(asr, 300, 400, 200, n / channels), 1e-10)
                << NameOf(members) << " curve " << curve << " channels " << channels << " frame " << n / channels;
          }
        }
      }
    }
  }
}

TEST(MixEx, RemainingCountsDownWithoutARecookAtTheEnd) {
  const auto format = FormatOf(ZRSAMPLETYPE_FLOAT32, 1, kRate);
  const tZRASR asr = Envelope(10, 10, 0, 0);
  tZRASRCOOKED cooked;
  ZrAudio_ASRCook(&format, &asr, &cooked, 0, 30 * kTicksPerFrame, 1.0);
  const double attackGain = cooked.gain;
  std::vector<float> source(64, 1.0f);
  std::vector<float> dest(64, 0.0f);
  ZrAudio_MixEx(&format, dest.data(), &format, source.data(), 4, &cooked);
  EXPECT_EQ(cooked.remaining, 6);
  EXPECT_EQ(cooked.gain, attackGain) << "the running gain isn't written back";
  ZrAudio_MixEx(&format, dest.data(), &format, source.data(), 6, &cooked);
  EXPECT_EQ(cooked.remaining, 0);
  EXPECT_EQ(cooked.position, 10);
  EXPECT_EQ(cooked.gain, attackGain);
  // The next call finds the segment by itself.
  ZrAudio_MixEx(&format, dest.data(), &format, source.data(), 1, &cooked);
  EXPECT_EQ(cooked.remaining, 9);
  EXPECT_EQ(cooked.gain, static_cast<double>(0.8f));
  // Behind the release the last gain holds for ever.
  ZrAudio_ASRReCook(&cooked, 1000);
  ZrAudio_MixEx(&format, dest.data(), &format, source.data(), 64, &cooked);
  EXPECT_EQ(cooked.remaining, INT64_MAX - 64);
}

// Every ramp member: raw values times the running gain; FLOAT32 rounds the product, then adds in single.
TEST(MixRamp, EveryPairHasTheBitsOfTheRule) {
  const ProcessorScope scope;
  testing_support::Random random(2230);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : kMixTypes) {
    for (const uint32_t dest : {32u, 33u}) {
      const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      const double readFactor = IsFloat(source) ? 1.0 : std::ldexp(1.0, 1 - LayoutOf(source).bits);
      for (size_t frames = 0; frames <= 67; ++frames) {
        for (const uint32_t channels : {1u, 2u, 3u, 8u, 33u, 65u}) {
          tZRASRCOOKED cooked = {};
          cooked.gain = random.Real(-1, 1) * readFactor;
          if (frames % 3 != 0) cooked.gainDelta = random.Real(-0.01, 0.01) * readFactor;
          if (frames % 3 == 2) cooked.gainDeltaDelta = random.Real(-0.001, 0.001) * readFactor;
          if (frames % 9 == 5) cooked.gainDelta = 0.0;
          const size_t samples = frames * channels;
          const auto addends = HardSamples(source, static_cast<int64_t>(samples), random);
          const auto present = HardSamples(dest, static_cast<int64_t>(samples), random);
          auto expected = present;
          double gain = cooked.gain;
          double delta = cooked.gainDelta;
          for (size_t n = 0; n < samples; ++n) {
            const uint8_t* from = addends.data() + n * sourceBytes;
            const double raw = IsFloat(source) ? FloatOf(source, from) : static_cast<double>(RawOf(source, from));
            uint8_t* to = expected.data() + n * destBytes;
            const double product = raw * gain;
            if (dest == 33) {
              PutFloat(33, to, product + FloatOf(33, to));
            } else {
              const float sum = static_cast<float>(product) + static_cast<float>(FloatOf(32, to));
              PutFloat(32, to, static_cast<double>(sum));
            }
            if ((n + 1) % channels == 0) {
              gain += delta;
              delta += cooked.gainDeltaDelta;
            }
          }
          for (const Members members : {Members::kPlain, Members::kAll}) {
            Allow(members);
            const auto before = cooked;
            Guarded to(destBytes * (frames % 8), present.size());
            std::copy(present.begin(), present.end(), to.data());
            marlo::MixRampMember(dest, source)(to.data(), addends.data(), static_cast<int64_t>(frames), channels,
                                               &cooked);
            ASSERT_TRUE(to.Untouched());
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), to.data()))
                << PairName(dest, source) << ' ' << NameOf(members) << " frames " << frames << " channels " << channels;
            ASSERT_EQ(std::memcmp(&before, &cooked, sizeof cooked), 0);
          }
        }
      }
    }
  }
}

}  // namespace
