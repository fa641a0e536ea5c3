// SPDX-License-Identifier: Apache-2.0
// How fast are peaks, RMS and the extraction of a 24-bit channel, against plain loops and other scanners?
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "harness/harness.h"
#include "levels/programme.h"
#include "marlo110k/channels.h"
#include "marlo110k/levels.h"

namespace bench_levels {

Programme MakeProgramme() {
  Programme programme;
  std::mt19937 random(7);
  for (size_t index = 0; index < kFrames * kChannels; ++index) {
    const double phase = static_cast<double>(index / kChannels) / static_cast<double>(kFrames);
    const double level = 0.9 * std::sin(3.14159265358979 * std::sqrt(phase));
    const double value = level * std::uniform_real_distribution<double>(-1, 1)(random);
    programme.pcm16.push_back(static_cast<int16_t>(std::lrint(value * 32767)));
    const auto raw = static_cast<uint32_t>(static_cast<int32_t>(std::lrint(value * 8388607)));
    for (uint32_t shift : {0u, 8u, 16u}) programme.pcm24.push_back(static_cast<uint8_t>(raw >> shift));
    programme.float32.push_back(static_cast<float>(value));
  }
  return programme;
}

}  // namespace bench_levels

namespace {

using namespace bench_levels;
using bench::Question;
using bench::Use;

constexpr double kUnits = static_cast<double>(kFrames * kChannels);
constexpr auto kCount = static_cast<int64_t>(kFrames);

struct Ours {
  uint32_t sampleType;
  const void* samples;
  _zrwaveformat format;
  tZRAUDIOPEAK peaks[kChannels];
  float levels[kChannels];

  Ours(uint32_t type, const void* buffer) : sampleType(type), samples(buffer), format(), peaks(), levels() {
    format.Init(kRate, type, kChannels, 0, kZrWaveFormatFixedBytes);
  }
  void FindPeaks() {
    ZrAudio_FindPeaks(&format, 3, samples, kCount, peaks);
    Use(peaks);
  }
  void CalcRms() {
    ZrAudio_CalcRMS(&format, samples, kCount, levels);
    Use(levels);
  }
};

/// A question against a plain loop whose answer the error is taken from.
template <class Plain>
void AskPeaks(Question& question, Ours& ours, double fullScale, Plain plain) {
  ours.FindPeaks();
  double error = 0;
  for (size_t channel = 0; channel < kChannels; ++channel) {
    const auto [peak, position] = plain(channel);
    error = std::max(error, std::fabs(static_cast<double>(ours.peaks[channel].peak) - peak / fullScale));
    error = std::max(error, static_cast<double>(std::abs(ours.peaks[channel].position - position)));
  }
  question.Ours({"ZrAudio_FindPeaks", [&ours] { ours.FindPeaks(); }, kUnits, error});
}

template <class Plain>
void AskRms(Question& question, Ours& ours, double fullScale, Plain plain) {
  ours.CalcRms();
  double error = 0;
  for (size_t channel = 0; channel < kChannels; ++channel) {
    error = std::max(error, std::fabs(static_cast<double>(ours.levels[channel]) - plain(channel) / fullScale));
  }
  question.Ours({"ZrAudio_CalcRMS", [&ours] { ours.CalcRms(); }, kUnits, error});
}

template <class Value>
struct PeakPair {
  Value peaks[kChannels];
  int64_t positions[kChannels];
};

bool AskAllPeaks(const Programme& programme, Ours& ours16, Ours& ours24, Ours& oursFloat) {
  bool met = true;
  {
    PeakPair<int32_t> found;
    const auto run = [&] {
      PlainPeaks16(programme.pcm16.data(), kFrames, found.peaks, found.positions);
      Use(&found);
    };
    run();
    Question question("Peaks of stereo PCM16", "samples");
    AskPeaks(question, ours16, 32768, [&](size_t channel) {
      return std::pair(static_cast<double>(found.peaks[channel]), static_cast<int32_t>(found.positions[channel]));
    });
    question.Peer({"plain loop", run, kUnits, 0});
    question.Goal(0, 1.0, 2.0);
#ifdef MARLO_BENCH_SNDFILE
    SndfileScan scan(programme.pcm16);
    const double largest = std::max(found.peaks[0], found.peaks[1]) / 32768.0;
    question.Peer({"sndfile's scan of a file in memory",
                   [&scan] {
                     const double peak = scan.Peak();
                     Use(&peak);
                   },
                   kUnits, std::fabs(scan.Peak() - largest)});
    question.Goal(1, 1.0);
    met = question.Print() && met;
#else
    question.Absent("libsndfile");
    met = question.Print() && met;
#endif
  }
  {
    PeakPair<int32_t> found;
    const auto run = [&] {
      PlainPeaks24(programme.pcm24.data(), kFrames, found.peaks, found.positions);
      Use(&found);
    };
    run();
    Question question("Peaks of stereo PCM24", "samples");
    AskPeaks(question, ours24, 8388608, [&](size_t channel) {
      return std::pair(static_cast<double>(found.peaks[channel]), static_cast<int32_t>(found.positions[channel]));
    });
    question.Peer({"plain loop", run, kUnits, 0});
    question.Goal(0, 1.0);
    met = question.Print() && met;
  }
  PeakPair<float> found;
  const auto run = [&] {
    PlainPeaksFloat(programme.float32.data(), kFrames, found.peaks, found.positions);
    Use(&found);
  };
  run();
  Question question("Peaks of stereo FLOAT32", "samples");
  AskPeaks(question, oursFloat, 1, [&](size_t channel) {
    return std::pair(static_cast<double>(found.peaks[channel]), static_cast<int32_t>(found.positions[channel]));
  });
  question.Peer({"plain loop", run, kUnits, 0});
  question.Goal(0, 1.0, 2.0);
#ifdef MARLO_BENCH_EBUR128
  const double largest = static_cast<double>(std::max(found.peaks[0], found.peaks[1]));
  question.Peer({"libebur128, with its loudness filter",
                 [&programme] {
                   const double peak = Ebur128Peak(programme.float32.data(), kFrames);
                   Use(&peak);
                 },
                 kUnits, std::fabs(Ebur128Peak(programme.float32.data(), kFrames) - largest)});
#else
  question.Absent("libebur128");
#endif
  return question.Print() && met;
}

bool AskAllRms(const Programme& programme, Ours& ours16, Ours& ours24, Ours& oursFloat) {
  double levels[kChannels];
  const struct {
    const char* title;
    Ours& ours;
    double fullScale;
    std::function<void()> run;
  } rows[] = {
      {"RMS of stereo PCM16", ours16, 32768,
       [&] {
         PlainRms16(programme.pcm16.data(), kFrames, levels);
         Use(levels);
       }},
      {"RMS of stereo PCM24", ours24, 8388608,
       [&] {
         PlainRms24(programme.pcm24.data(), kFrames, levels);
         Use(levels);
       }},
      {"RMS of stereo FLOAT32", oursFloat, 1,
       [&] {
         PlainRmsFloat(programme.float32.data(), kFrames, levels);
         Use(levels);
       }},
  };
  bool met = true;
  for (const auto& row : rows) {
    row.run();
    Question question(row.title, "samples");
    AskRms(question, row.ours, row.fullScale, [&](size_t channel) { return levels[channel]; });
    question.Peer({"plain loop", row.run, kUnits, 0});
    question.Goal(0, 1.0);
    met = question.Print() && met;
  }
  return met;
}

bool AskExtraction(const Programme& programme) {
  std::vector<uint8_t> ours(3 * kFrames), plain(3 * kFrames);
  const auto runPlain = [&] {
    PlainExtract24(plain.data(), programme.pcm24.data(), 1, kFrames);
    Use(plain.data());
  };
  const auto runOurs = [&] {
    ZrAudio_ExtractChannel(ours.data(), 1, programme.pcm24.data(), ZRSAMPLETYPE_PCM24, kChannels, kCount);
    Use(ours.data());
  };
  runPlain();
  runOurs();
  Question question("One channel of stereo PCM24 to a mono buffer", "frames");
  question.Ours({"ZrAudio_ExtractChannel", runOurs, static_cast<double>(kFrames), ours == plain ? 0.0 : 1.0});
  question.Peer({"plain loop", runPlain, static_cast<double>(kFrames), 0});
  question.Goal(0, 1.0);
  return question.Print();
}

}  // namespace

int main() {
  const Programme programme = MakeProgramme();
  Ours ours16(ZRSAMPLETYPE_PCM16, programme.pcm16.data());
  Ours ours24(ZRSAMPLETYPE_PCM24, programme.pcm24.data());
  Ours oursFloat(ZRSAMPLETYPE_FLOAT32, programme.float32.data());
  bool met = AskAllPeaks(programme, ours16, ours24, oursFloat);
  met = AskAllRms(programme, ours16, ours24, oursFloat) && met;
  met = AskExtraction(programme) && met;
  return met ? 0 : 1;
}
