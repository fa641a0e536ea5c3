// SPDX-License-Identifier: Apache-2.0
// Sample-rate conversion: our modes beside the peers, in source frames a second, with the quality of each.
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <vector>

#include "../tests/testing/sine_fit.h"
#include "harness/harness.h"
#include "marlo110k/resample.h"
#include "resample/stream.h"

namespace bench {
namespace {

constexpr int kBlock = 1024;

template <uint32_t kFlags>
class First final : public StreamResampler {
 public:
  First(int srcRate, int dstRate) {
    ZrAudio_ResampleOpen(&instance_, ZRSAMPLETYPE_FLOAT32, srcRate, dstRate, 2, kFlags);
  }
  ~First() override { ZrAudio_ResampleClose(instance_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    scratch_.assign(source, source + 2 * frames);  // A filter going down works on the source.
    room_.resize(static_cast<size_t>(2 * (ZrAudio_ResampleGetDstFromSrc(instance_, frames) + 2)));
    const int64_t made = ZrAudio_ResampleEx(instance_, room_.data(), scratch_.data(), frames);
    out->insert(out->end(), room_.begin(), room_.begin() + 2 * made);
  }

 private:
  tZRRESAMPLEINSTANCE* instance_ = nullptr;
  std::vector<float> scratch_, room_;
};

template <uint32_t kFlags>
class Second final : public StreamResampler {
 public:
  Second(int srcRate, int dstRate) {
    ZrAudio_Resample2Open(&instance_, ZRSAMPLETYPE_FLOAT32, 2, srcRate, dstRate, kFlags);
    room_.resize(2 * 4096);
  }
  ~Second() override { ZrAudio_Resample2Close(instance_); }
  void Convert(const float* source, int frames, std::vector<float>* out) override {
    for (int64_t at = 0; at < frames;) {
      int64_t made, taken;
      ZrAudio_Resample2Process(instance_, room_.data(), 4096, &made, source + 2 * at, frames - at, &taken);
      out->insert(out->end(), room_.begin(), room_.begin() + 2 * made);
      at += taken;
      if (made == 0 && taken == 0) break;
    }
  }

 private:
  tZRRESAMPLE2* instance_ = nullptr;
  std::vector<float> room_;
};

template <class Kind>
std::unique_ptr<StreamResampler> Make(int srcRate, int dstRate) {
  return std::make_unique<Kind>(srcRate, dstRate);
}

std::vector<float> Tone(double frequency, int rate, int frames) {
  std::vector<float> tone(static_cast<size_t>(2 * frames));
  for (int n = 0; n < frames; ++n) {
    tone[2 * n] = tone[2 * n + 1] = static_cast<float>(0.9 * std::sin(2 * std::numbers::pi * frequency * n / rate));
  }
  return tone;
}

std::vector<float> ConvertAll(StreamResampler& resampler, const std::vector<float>& source) {
  std::vector<float> out;
  const auto frames = static_cast<int>(source.size() / 2);
  for (int at = 0; at + kBlock <= frames; at += kBlock) resampler.Convert(&source[2 * at], kBlock, &out);
  return out;
}

std::vector<double> MiddleLeft(const std::vector<float>& stereo) {
  std::vector<double> left;
  for (size_t n = 4000; n + 4000 < stereo.size() / 2; ++n) left.push_back(stereo[2 * n]);
  return left;
}

/// Level of what a tone above the new rate's half leaves, in dB of the tone.
double AliasDb(const NamedResampler& resampler) {
  const std::vector<float> source = Tone(23000, 48000, 96 * kBlock);
  const std::vector<double> out = MiddleLeft(ConvertAll(*resampler.make(48000, 44100), source));
  double power = 0;
  for (const double sample : out) power += sample * sample;
  return 10 * std::log10(power / static_cast<double>(out.size()) / (0.9 * 0.9 / 2));
}

double ToneSnr(const NamedResampler& resampler, double frequency) {
  const std::vector<float> source = Tone(frequency, 44100, 96 * kBlock);
  return testing_support::SineSnr(MiddleLeft(ConvertAll(*resampler.make(44100, 48000), source)), frequency / 48000);
}

}  // namespace

std::vector<NamedResampler> OurResamplers() {
  return {{"first, linear", Make<First<1>>},   {"first, linear with filter of order 4", Make<First<0x22>>},
          {"first, sinc", Make<First<3>>},     {"first, sinc with filter of order 6", Make<First<0x33>>},
          {"second, linear", Make<Second<1>>}, {"second, cubic", Make<Second<2>>},
          {"second, sinc", Make<Second<4>>},   {"second, sinc with filter of order 8", Make<Second<0x24>>}};
}

}  // namespace bench

int main() {
  using namespace bench;
  const std::vector<NamedResampler> ours = OurResamplers();
  std::vector<NamedResampler> peers;
#ifdef MARLO_BENCH_SAMPLERATE
  AddSampleratePeers(&peers);
#endif
#ifdef MARLO_BENCH_ZITA
  AddZitaPeers(&peers);
#endif
#ifdef MARLO_BENCH_SOXR
  AddSoxrPeers(&peers);
#endif
#ifdef MARLO_BENCH_SPEEX
  AddSpeexPeers(&peers);
#endif
#ifdef MARLO_BENCH_SWRESAMPLE
  AddSwresamplePeers(&peers);
#endif
  std::printf("quality, 44,100 to 48,000 (alias: 23 kHz, 48,000 to 44,100)\n");
  std::vector<NamedResampler> all = ours;
  all.insert(all.end(), peers.begin(), peers.end());
  for (const NamedResampler& resampler : all) {
    std::printf("  %-40s 997 Hz %6.1f dB   15 kHz %6.1f dB   alias %6.1f dB\n", resampler.name.c_str(),
                ToneSnr(resampler, 997), ToneSnr(resampler, 15000), AliasDb(resampler));
  }

  const std::vector<float> source = Tone(997, 44100, 16 * kBlock);
  const auto contender = [&](const NamedResampler& resampler) {
    auto shared = std::shared_ptr<StreamResampler>(resampler.make(44100, 48000));
    auto out = std::make_shared<std::vector<float>>();
    return Contender{resampler.name,
                     [shared, out, &source] {
                       out->clear();
                       for (int block = 0; block < 16; ++block)
                         shared->Convert(&source[2 * block * kBlock], kBlock, out.get());
                       Use(out->data());
                     },
                     16.0 * kBlock};
  };
  struct Goal {
    const char* peer;
    double goal, stretch;
  };
  for (const NamedResampler& resampler : ours) {
    Question question(resampler.name + ", stereo 44,100 to 48,000", "frames");
    question.Ours(contender(resampler));
    int index = 0;
    const std::string& name = resampler.name;
    for (const NamedResampler& peer : peers) {
      question.Peer(contender(peer));
      if (peer.name == "libsamplerate, fastest sinc" && name == "first, sinc with filter of order 6")
        question.Goal(index, 2);
      if (peer.name == "zita variable, half length 24" && name == "first, sinc") question.Goal(index, 1);
      if (peer.name == "libsamplerate, linear" && name == "first, linear") question.Goal(index, 2);
      ++index;
    }
    question.Print();
  }
  return 0;
}
