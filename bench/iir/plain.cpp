// SPDX-License-Identifier: Apache-2.0
// The cascade as one would write it down: no vector, no guard.
#include "iir/peers.h"

namespace bench {

PlainCascade::PlainCascade(const std::vector<double>& coefficients, double gain)
    : coefficients_(coefficients), delays_(coefficients.size() / 5 * 4), gain_(gain) {}

void PlainCascade::Process(float* out, const float* in, uint32_t frames) {
  const std::size_t sections = coefficients_.size() / 5;
  for (uint32_t frame = 0; frame < frames; ++frame) {
    for (uint32_t channel = 0; channel < 2; ++channel) {
      double x = in[2 * frame + channel] * gain_;
      for (std::size_t section = 0; section < sections; ++section) {
        const double* c = &coefficients_[5 * section];
        double* d = &delays_[4 * section + 2 * channel];
        const double w = x + c[3] * d[0] + c[4] * d[1];
        x = c[0] * w + c[1] * d[0] + c[2] * d[1];
        d[1] = d[0];
        d[0] = w;
      }
      out[2 * frame + channel] = static_cast<float>(x);
    }
  }
}

}  // namespace bench
