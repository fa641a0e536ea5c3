// SPDX-License-Identifier: Apache-2.0
// Compares contenders for the same question in one process: batches in turn (A B B A), the median of the
// pairwise ratios, its spread, and each contender's error beside its speed.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// One way to answer a question. `run` does the whole work once; `units` is how many samples, pixels or
/// chunks that is.
struct Contender {
  std::string name;
  std::function<void()> run;
  double units = 1;
  double maxError = -1;  ///< Against the reference of the question; negative: not given.
};

/// A question: ours first, then the peers. A peer that isn't installed is named with `Absent`.
class Question {
 public:
  explicit Question(std::string title, std::string unit);
  void Ours(Contender contender) { ours_ = std::move(contender); }
  void Peer(Contender contender) { peers_.push_back(std::move(contender)); }
  void Absent(std::string peer) { absent_.push_back(std::move(peer)); }
  /// A wanted ratio ours : peer (by index of peers), or an absolute rate in units a second when `peer` is -1.
  void Goal(int peer, double goal, double stretch = 0) { goals_.push_back({peer, goal, stretch}); }
  /// Measures and prints one line a peer. @return true when all goals were met.
  bool Print(int pairs = 15, double batchSeconds = 0.02) const;

 private:
  struct GoalRow {
    int peer;
    double goal;
    double stretch;
  };
  std::string title_;
  std::string unit_;
  Contender ours_;
  std::vector<Contender> peers_;
  std::vector<std::string> absent_;
  std::vector<GoalRow> goals_;
};

/// Keeps the compiler from dropping work on `pointer`.
inline void Use(const void* pointer) { asm volatile("" : : "g"(pointer) : "memory"); }

}  // namespace bench
