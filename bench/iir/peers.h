// SPDX-License-Identifier: Apache-2.0
// The same cascade run by others: five coefficients a section (b0 b1 b2 a1 a2, the a's added).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

class PlainCascade {
 public:
  PlainCascade(const std::vector<double>& coefficients, double gain);
  void Process(float* out, const float* in, uint32_t frames);

 private:
  std::vector<double> coefficients_;
  std::vector<double> delays_;  ///< Two a section and channel.
  double gain_;
};

/// Channels apart, since the peer filters one.
class LiquidCascade {
 public:
  LiquidCascade(const std::vector<double>& coefficients, double gain);
  ~LiquidCascade();
  void Process(float* out, const float* in, uint32_t frames);

 private:
  void* filters_[2];
  std::vector<float> mono_, filtered_;
};

}  // namespace bench
