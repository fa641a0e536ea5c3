// SPDX-License-Identifier: Apache-2.0
// How fast are the sample kernels? Against peers as ratios, and a table of rates over all pairs.
#include <emmintrin.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "audio/copy.h"
#include "audio/mix.h"
#include "harness/harness.h"
#include "marlo110k/samples.h"
#include "samples/peers.h"

namespace {

using bench::Contender;
using bench::Question;
using bench_samples::Work;

constexpr int kSamples = 8192;
constexpr double kCopyGoal = 0.8e9;
constexpr double kCopyGainGoal = 0.5e9;
constexpr double kMixGoal = 0.5e9;
constexpr double kMixStretch = 0.65e9;

struct Type {
  uint32_t type;
  const char* name;
};
constexpr Type kTypes[] = {{16, "8"},   {49, "8S"}, {17, "16"},  {64, "16B"}, {18, "24"}, {65, "24B"},
                           {48, "24U"}, {19, "32"}, {66, "32B"}, {32, "F32"}, {33, "F64"}};
constexpr Type kMixTypes[] = {{16, "8"},   {49, "8S"}, {17, "16"},  {18, "24"},
                              {48, "24U"}, {19, "32"}, {32, "F32"}, {33, "F64"}};

constexpr Type kRampTypes[] = {{32, "F32"}, {33, "F64"}};

/// Buffers with room for the largest sample, on 64 bytes and at different distances from a page.
struct Buffer {
  alignas(64) uint8_t bytes[kSamples * 8 + 1088];
};
Buffer source;
Buffer dest;
Buffer scratch;

/// Noise in the type's own layout, some of it out of range in the float types.
void Fill(Buffer& buffer, uint32_t type) {
  static std::mt19937 engine(1);
  std::uniform_real_distribution<double> noise(-1.05, 1.05);
  std::vector<double> values(kSamples);
  for (double& value : values) value = noise(engine);
  ZrAudio_GetCopyFunction2(type, ZRSAMPLETYPE_FLOAT64)(buffer.bytes, values.data(), kSamples, 1.0f);
}

/// Samples a second: the median of batches of a few milliseconds.
template <class Run>
double Rate(Run run) {
  using Clock = std::chrono::steady_clock;
  const auto seconds = [&run](int rounds) {
    const auto start = Clock::now();
    for (int round = 0; round < rounds; ++round) run();
    return std::chrono::duration<double>(Clock::now() - start).count();
  };
  const double once = std::max(seconds(20) / 20, 1e-8);
  const int rounds = std::max(1, static_cast<int>(0.002 / once));
  std::vector<double> rates(9);
  for (double& rate : rates) rate = kSamples * static_cast<double>(rounds) / seconds(rounds);
  std::nth_element(rates.begin(), rates.begin() + 4, rates.end());
  return rates[4];
}

/// A table of rates with its lowest cell. @return whether every cell reaches the goal.
template <class Destinations, class Types, class Measure>
bool PrintTable(const char* title, const Destinations& destinations, const Types& types, double goal, double stretch,
                Measure measure) {
  std::printf("%s, Gsamples/s; rows are destinations\n     ", title);
  for (const Type& from : types) std::printf("%6s", from.name);
  std::printf("\n");
  double lowest = 1e30;
  std::string where;
  int missed = 0;
  for (const Type& to : destinations) {
    std::printf("  %-4s", to.name);
    for (const Type& from : types) {
      const double rate = measure(to.type, from.type);
      if (rate < 0) {
        std::printf("     -");
        continue;
      }
      std::printf("%6.2f", rate * 1e-9);
      missed += rate < goal;
      if (rate < lowest) {
        lowest = rate;
        where = std::string(to.name) + " <- " + from.name;
      }
    }
    std::printf("\n");
  }
  if (goal <= 0) return true;
  std::printf("  goal    every pair %.2f%s: %s; lowest %.3f (%s)\n", goal * 1e-9,
              stretch > 0 ? (", stretch " + std::to_string(stretch * 1e-9).substr(0, 4)).c_str() : "",
              missed ? ("MISSED by " + std::to_string(missed)).c_str()
                     : (stretch > 0 && lowest >= stretch ? "met, stretch met" : "met"),
              lowest * 1e-9, where.c_str());
  std::fflush(stdout);
  return missed == 0;
}

void AddPeer(Question& question, const char* name, Work work, double error = -1) {
  if (work) {
    question.Peer({name, std::move(work), kSamples, error});
  } else {
    question.Absent(name);
  }
}

bool CopyAgainstPeers() {
  bool met = true;
  auto* floats = reinterpret_cast<float*>(dest.bytes);
  auto* words = reinterpret_cast<int16_t*>(source.bytes);
  Fill(source, ZRSAMPLETYPE_PCM16);
  {
    Question question("PCM16 to FLOAT32, 8192 samples", "samples");
    const auto copy = ZrAudio_GetCopyFunction2(ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM16);
    question.Ours({"the chosen member", [=] { copy(floats, words, kSamples, 1.0f); }, kSamples});
    const Work swr = bench_samples::SwrFloatFromPcm16(floats, words, kSamples);
    AddPeer(question, "libswresample", swr);
    AddPeer(question, "volk", bench_samples::VolkFloatFromPcm16(floats, words, kSamples));
    if (swr) question.Goal(0, 1.0);
    met = question.Print() && met;
  }
  auto* from = reinterpret_cast<float*>(source.bytes);
  auto* to = reinterpret_cast<int16_t*>(dest.bytes);
  Fill(source, ZRSAMPLETYPE_FLOAT32);
  {
    Question question("FLOAT32 to PCM16, 8192 samples", "samples");
    const auto copy = ZrAudio_GetCopyFunction2(ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_FLOAT32);
    question.Ours({"the chosen member", [=] { copy(to, from, kSamples, 1.0f); }, kSamples});
    const Work swr = bench_samples::SwrPcm16FromFloat(to, from, kSamples);
    AddPeer(question, "libswresample", swr);
    AddPeer(question, "volk", bench_samples::VolkPcm16FromFloat(to, from, kSamples));
    if (swr) question.Goal(0, 1.0);
    met = question.Print() && met;
  }
  return met;
}

/// The bound: stereo gains in single, SSE2, nothing else.
void PlainSse2Loop(float* to, const float* from, int samples, float left, float right) {
  const __m128 gains = _mm_setr_ps(left, right, left, right);
  for (int n = 0; n < samples; n += 4) {
    _mm_store_ps(to + n, _mm_add_ps(_mm_load_ps(to + n), _mm_mul_ps(gains, _mm_load_ps(from + n))));
  }
}

bool MixAgainstPeers() {
  bool met = true;
  static const double gains[2] = {0.7, -0.7};
  {
    auto* to = reinterpret_cast<float*>(dest.bytes);
    auto* from = reinterpret_cast<float*>(source.bytes);
    Fill(source, ZRSAMPLETYPE_FLOAT32);
    std::memset(dest.bytes, 0, sizeof dest.bytes);
    Question question("FLOAT32 stereo mix, two gains, 8192 samples", "samples");
    const auto mix = ZrAudio_GetMixFunction2(ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_FLOAT32);
    question.Ours({"the chosen member", [=] { mix(to, from, kSamples, 2, gains); }, kSamples});
    question.Peer({"a plain SSE2 loop", [=] { PlainSse2Loop(to, from, kSamples, 0.7f, -0.7f); }, kSamples});
    question.Goal(0, 0.95);
    const Work sdl = bench_samples::SdlMixFloat(to, from, kSamples);
    AddPeer(question, "SDL2's mixer (one volume, clamps)", sdl);
    if (sdl) question.Goal(1, 7.0);
    AddPeer(question, "volk (one gain, two passes)",
            bench_samples::VolkMixFloat(to, from, reinterpret_cast<float*>(scratch.bytes), kSamples, 0.7f));
    met = question.Print() && met;
  }
  {
    auto* to = reinterpret_cast<int16_t*>(dest.bytes);
    auto* from = reinterpret_cast<int16_t*>(source.bytes);
    Fill(source, ZRSAMPLETYPE_PCM16);
    Fill(dest, ZRSAMPLETYPE_PCM16);
    Question question("PCM16 stereo mix, two gains, 8192 samples", "samples");
    const auto mix = ZrAudio_GetMixFunction2(ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_PCM16);
    question.Ours({"the chosen member", [=] { mix(to, from, kSamples, 2, gains); }, kSamples});
    AddPeer(question, "SDL2's mixer (one volume)", bench_samples::SdlMixPcm16(to, from, kSamples));
    met = question.Print() && met;
  }
  return met;
}

bool Tables() {
  const auto copyAt = [](float gain) {
    return [gain](uint32_t to, uint32_t from) {
      const auto copy = ZrAudio_GetCopyFunction2(to, from);
      if (!copy) return -1.0;
      Fill(source, from);
      return Rate([=] { copy(dest.bytes, source.bytes, kSamples, gain); });
    };
  };
  bool met = PrintTable("copy at gain 1.0", kTypes, kTypes, kCopyGoal, 0, copyAt(1.0f));
  met = PrintTable("copy at gain 0.7", kTypes, kTypes, kCopyGainGoal, 0, copyAt(0.7f)) && met;
  met = PrintTable("stereo mix, gains 0.7 and -0.7", kMixTypes, kMixTypes, kMixGoal, kMixStretch,
                   [](uint32_t to, uint32_t from) {
                     static const double gains[2] = {0.7, -0.7};
                     const auto mix = ZrAudio_GetMixFunction2(to, from);
                     Fill(source, from);
                     Fill(dest, to);
                     return Rate([=] { mix(dest.bytes, source.bytes, kSamples, 2, gains); });
                   }) &&
        met;
  const auto rampOf = [](double delta, double bend) {
    return [delta, bend](uint32_t to, uint32_t from) {
      const auto ramp = marlo::MixRampMember(to, from);
      if (!ramp) return -1.0;
      tZRASRCOOKED cooked = {};
      cooked.gain = 1e-3;
      cooked.gainDelta = delta;
      cooked.gainDeltaDelta = bend;
      Fill(source, from);
      Fill(dest, to);
      return Rate([=] { ramp(dest.bytes, source.bytes, kSamples / 2, 2, &cooked); });
    };
  };
  PrintTable("stereo ramp, constant", kRampTypes, kMixTypes, 0, 0, rampOf(0, 0));
  PrintTable("stereo ramp, straight", kRampTypes, kMixTypes, 0, 0, rampOf(1e-7, 0));
  PrintTable("stereo ramp, curved", kRampTypes, kMixTypes, 0, 0, rampOf(1e-7, 1e-11));
  return met;
}

}  // namespace

int main() {
  const bool copies = CopyAgainstPeers();
  const bool mixes = MixAgainstPeers();
  const bool tables = Tables();
  return copies && mixes && tables ? EXIT_SUCCESS : EXIT_FAILURE;
}
