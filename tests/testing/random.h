// SPDX-License-Identifier: Apache-2.0
// Random input for property tests: the seed comes from MARLO_SEED or the test's default and is printed
// with a failure.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

namespace testing_support {

/// A generator whose seed a failing test shows: SCOPED_TRACE(random.Label()).
class Random {
 public:
  explicit Random(uint64_t defaultSeed) : seed_(defaultSeed) {
    if (const char* text = std::getenv("MARLO_SEED")) seed_ = std::strtoull(text, nullptr, 0);
    engine_.seed(seed_);
  }
  std::string Label() const { return "MARLO_SEED=" + std::to_string(seed_); }
  uint64_t Bits() { return engine_(); }
  /// Uniform in low..high, both included.
  int64_t Between(int64_t low, int64_t high) { return std::uniform_int_distribution<int64_t>(low, high)(engine_); }
  double Real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }

 private:
  uint64_t seed_;
  std::mt19937_64 engine_;
};

}  // namespace testing_support
