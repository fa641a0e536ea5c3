// SPDX-License-Identifier: Apache-2.0
// Times contenders in turn and prints ratios with their spread.
#include "harness/harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace bench {
namespace {

double Seconds(const Contender& contender, uint64_t rounds) {
  const auto start = std::chrono::steady_clock::now();
  for (uint64_t round = 0; round < rounds; ++round) contender.run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Rounds that fill a batch.
uint64_t Calibrate(const Contender& contender, double batchSeconds) {
  contender.run();
  uint64_t rounds = 1;
  for (;;) {
    const double seconds = Seconds(contender, rounds);
    if (seconds >= batchSeconds) return rounds;
    const double grow = seconds > 0 ? std::min(batchSeconds / seconds * 1.2, 100.0) : 100.0;
    rounds = std::max(rounds + 1, static_cast<uint64_t>(static_cast<double>(rounds) * grow));
  }
}

double Quantile(std::vector<double> values, double q) {
  std::sort(values.begin(), values.end());
  return values[static_cast<size_t>(q * static_cast<double>(values.size() - 1) + 0.5)];
}

void PrintError(double error) {
  if (error >= 0) std::printf(" err %.3g", error);
}

}  // namespace

Question::Question(std::string title, std::string unit) : title_(std::move(title)), unit_(std::move(unit)) {}

bool Question::Print(int pairs, double batchSeconds) const {
  std::printf("%s\n", title_.c_str());
  const uint64_t ourRounds = Calibrate(ours_, batchSeconds);
  bool met = true;
  std::vector<double> ourRates;
  std::vector<double> medians;
  const auto rate = [](const Contender& contender, uint64_t rounds, double seconds) {
    return contender.units * static_cast<double>(rounds) / seconds;
  };
  for (const Contender& peer : peers_) {
    const uint64_t peerRounds = Calibrate(peer, batchSeconds);
    std::vector<double> ratios;
    std::vector<double> peerRates;
    for (int pair = 0; pair < pairs; ++pair) {
      double ours = 0;
      double theirs = 0;
      if (pair % 2 == 0) {
        ours = rate(ours_, ourRounds, Seconds(ours_, ourRounds));
        theirs = rate(peer, peerRounds, Seconds(peer, peerRounds));
      } else {
        theirs = rate(peer, peerRounds, Seconds(peer, peerRounds));
        ours = rate(ours_, ourRounds, Seconds(ours_, ourRounds));
      }
      ratios.push_back(ours / theirs);
      ourRates.push_back(ours);
      peerRates.push_back(theirs);
    }
    medians.push_back(Quantile(ratios, 0.5));
    std::printf("  against %-44s ratio %6.2f (p10 %.2f, p90 %.2f)  %.4g %s/s", peer.name.c_str(), medians.back(),
                Quantile(ratios, 0.1), Quantile(ratios, 0.9), Quantile(peerRates, 0.5), unit_.c_str());
    PrintError(peer.maxError);
    std::printf("\n");
  }
  for (int extra = 0; peers_.empty() && extra < pairs; ++extra) {
    ourRates.push_back(rate(ours_, ourRounds, Seconds(ours_, ourRounds)));
  }
  const double ourMedian = Quantile(ourRates, 0.5);
  std::printf("  ours    %-44s                                  %.4g %s/s", ours_.name.c_str(), ourMedian,
              unit_.c_str());
  PrintError(ours_.maxError);
  std::printf("\n");
  for (const std::string& name : absent_) std::printf("  absent  %s\n", name.c_str());
  for (const GoalRow& goal : goals_) {
    const double reached = goal.peer < 0 ? ourMedian : medians[static_cast<size_t>(goal.peer)];
    const bool reachedGoal = reached >= goal.goal;
    met = met && reachedGoal;
    std::printf("  goal    %s %.4g%s: %s (%.4g)\n", goal.peer < 0 ? "rate" : "ratio", goal.goal,
                goal.stretch > 0 ? (", stretch " + std::to_string(goal.stretch)).c_str() : "",
                reachedGoal ? (goal.stretch > 0 && reached >= goal.stretch ? "met, stretch met" : "met") : "MISSED",
                reached);
  }
  std::fflush(stdout);
  return met;
}

}  // namespace bench
