// SPDX-License-Identifier: Apache-2.0
// An order-8 stereo low-pass: our cascade beside a plain loop and a peer, and silence beside noise.
#include <random>
#include <vector>

#include "harness/harness.h"
#include "iir/peers.h"
#include "marlo110k/iir.h"

int main() {
  using namespace bench;
  constexpr uint32_t kFrames = 4096;
  std::vector<float> noise(2 * kFrames), silence(2 * kFrames), out(2 * kFrames);
  std::mt19937 engine(1);
  std::uniform_real_distribution<float> uniform(-1, 1);
  for (float& sample : noise) sample = uniform(engine);
  CZrIIR filter, quiet;
  filter.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 8, 0.2, 0, 0, 2, 0);
  quiet.Design(ZRIIR_LOWPASS, ZRIIR_BUTTERWORTH, 8, 0.2, 0, 0, 2, 0);
  quiet.ProcessFloat(out.data(), noise.data(), kFrames, 3);
  const auto run = [&](CZrIIR& by, const std::vector<float>& source) {
    by.ProcessFloat(out.data(), source.data(), kFrames, 3);
    Use(out.data());
  };
  std::vector<double> coefficients;
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    const tZRIIR_BIQUAD& section = *filter.getBiquad(index);
    coefficients.insert(coefficients.end(), {section.b0, section.b1, section.b2, section.a1, section.a2});
  }
  PlainCascade plain(coefficients, filter.getGain());
  Question question("low-pass of order 8, stereo float", "samples");
  question.Ours({"CZrIIR", [&] { run(filter, noise); }, 2.0 * kFrames});
  question.Peer({"plain direct form II, double",
                 [&] {
                   plain.Process(out.data(), noise.data(), kFrames);
                   Use(out.data());
                 },
                 2.0 * kFrames});
  question.Goal(0, 1.4, 1.5);
#ifdef MARLO_BENCH_LIQUID
  LiquidCascade liquid(coefficients, filter.getGain());
  question.Peer({"liquid-dsp, sections in single precision",
                 [&] {
                   liquid.Process(out.data(), noise.data(), kFrames);
                   Use(out.data());
                 },
                 2.0 * kFrames});
  question.Goal(1, 3);
#else
  question.Absent("liquid-dsp");
#endif
  question.Print();
  Question denormals("silence after noise beside noise", "samples");
  denormals.Ours({"silence", [&] { run(quiet, silence); }, 2.0 * kFrames});
  denormals.Peer({"noise", [&] { run(filter, noise); }, 2.0 * kFrames});
  denormals.Goal(0, 0.95);
  denormals.Print();
  return 0;
}
