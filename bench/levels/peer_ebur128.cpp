// SPDX-License-Identifier: Apache-2.0
// Sample peak by libebur128.
#include <ebur128.h>

#include <algorithm>

#include "levels/programme.h"

namespace bench_levels {

double Ebur128Peak(const float* samples, size_t frames) {
  ebur128_state* state = ebur128_init(kChannels, kRate, EBUR128_MODE_SAMPLE_PEAK);
  ebur128_add_frames_float(state, samples, frames);
  double largest = 0;
  for (unsigned channel = 0; channel < kChannels; ++channel) {
    double peak = 0;
    ebur128_sample_peak(state, channel, &peak);
    largest = std::max(largest, peak);
  }
  ebur128_destroy(&state);
  return largest;
}

}  // namespace bench_levels
