// SPDX-License-Identifier: Apache-2.0
// liquid-dsp's second-order sections.
#include <liquid/liquid.h>

#include <complex>

#include "iir/peers.h"

namespace bench {

LiquidCascade::LiquidCascade(const std::vector<double>& coefficients, double gain) {
  const size_t sections = coefficients.size() / 5;
  std::vector<float> b, a;
  for (size_t section = 0; section < sections; ++section) {
    const double* c = &coefficients[5 * section];
    const double scale = section == 0 ? gain : 1;
    for (int tap = 0; tap < 3; ++tap) b.push_back(static_cast<float>(c[tap] * scale));
    a.insert(a.end(), {1.0f, static_cast<float>(-c[3]), static_cast<float>(-c[4])});
  }
  for (void*& filter : filters_) filter = iirfilt_rrrf_create_sos(b.data(), a.data(), static_cast<unsigned>(sections));
}

LiquidCascade::~LiquidCascade() {
  for (void* filter : filters_) iirfilt_rrrf_destroy(static_cast<iirfilt_rrrf>(filter));
}

void LiquidCascade::Process(float* out, const float* in, uint32_t frames) {
  mono_.resize(frames);
  filtered_.resize(frames);
  for (uint32_t channel = 0; channel < 2; ++channel) {
    for (uint32_t frame = 0; frame < frames; ++frame) mono_[frame] = in[2 * frame + channel];
    iirfilt_rrrf_execute_block(static_cast<iirfilt_rrrf>(filters_[channel]), mono_.data(), frames, filtered_.data());
    for (uint32_t frame = 0; frame < frames; ++frame) out[2 * frame + channel] = filtered_[frame];
  }
}

}  // namespace bench
