// SPDX-License-Identifier: Apache-2.0
// volk's vector kernels.
#include "samples/peers.h"

#ifdef MARLO_BENCH_VOLK
#include <volk/volk.h>

namespace bench_samples {

Work VolkFloatFromPcm16(float* dest, const int16_t* source, int samples) {
  return [=] { volk_16i_s32f_convert_32f(dest, source, 32768.0f, static_cast<unsigned>(samples)); };
}
Work VolkPcm16FromFloat(int16_t* dest, const float* source, int samples) {
  return [=] { volk_32f_s32f_convert_16i(dest, source, 32768.0f, static_cast<unsigned>(samples)); };
}
Work VolkMixFloat(float* dest, const float* source, float* scratch, int samples, float gain) {
  return [=] {
    volk_32f_s32f_multiply_32f(scratch, source, gain, static_cast<unsigned>(samples));
    volk_32f_x2_add_32f(dest, dest, scratch, static_cast<unsigned>(samples));
  };
}

}  // namespace bench_samples
#else
namespace bench_samples {
Work VolkFloatFromPcm16(float*, const int16_t*, int) { return {}; }
Work VolkPcm16FromFloat(int16_t*, const float*, int) { return {}; }
Work VolkMixFloat(float*, const float*, float*, int, float) { return {}; }
}  // namespace bench_samples
#endif
