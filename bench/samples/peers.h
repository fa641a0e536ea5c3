// SPDX-License-Identifier: Apache-2.0
// The peers of the sample kernels: each answers with a function, or with null where it isn't installed.
#pragma once

#include <cstdint>
#include <functional>

namespace bench_samples {

/// Converts or mixes `samples` samples once.
using Work = std::function<void()>;

/// libswresample, packed stereo, same rate, no dither.
Work SwrFloatFromPcm16(float* dest, const int16_t* source, int samples);
Work SwrPcm16FromFloat(int16_t* dest, const float* source, int samples);

/// volk: 32768 as scale.
Work VolkFloatFromPcm16(float* dest, const int16_t* source, int samples);
Work VolkPcm16FromFloat(int16_t* dest, const float* source, int samples);
/// One gain: a product into a third buffer, then a sum.
Work VolkMixFloat(float* dest, const float* source, float* scratch, int samples, float gain);

/// SDL's mixer, which clamps to -1.0 to 1.0.
Work SdlMixFloat(float* dest, const float* source, int samples);
Work SdlMixPcm16(int16_t* dest, const int16_t* source, int samples);

}  // namespace bench_samples
