// SPDX-License-Identifier: Apache-2.0
// Runs a filter over interleaved audio, and keeps its delays.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>

#include "marlo110k/iir.h"

namespace {

/// A delay below this is set to 0, so that a decaying tail never reaches denormals.
constexpr double kSmallestDelay = 1e-34;

/// One channel's sample through the cascade. The order of the sums is that of the two-channel body.
double RunSections(tZRIIR_BIQUAD* sections, uint32_t count, uint32_t channel, double x) {
  for (uint32_t index = 0; index < count; ++index) {
    tZRIIR_BIQUAD& section = sections[index];
    const double d1 = section.d1[channel];
    const double d2 = section.d2[channel];
    const double w = x + section.a1 * d1 + section.a2 * d2;
    x = section.b0 * w + section.b1 * d1 + section.b2 * d2;
    section.d2[channel] = d1;
    section.d1[channel] = std::abs(w) < kSmallestDelay ? 0.0 : w;
  }
  return x;
}

__m128d LoadPair(const double* samples) { return _mm_loadu_pd(samples); }
__m128d LoadPair(const float* samples) {
  return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples))));
}
void StorePair(double* samples, __m128d pair) { _mm_storeu_pd(samples, pair); }
void StorePair(float* samples, __m128d pair) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(samples), _mm_castps_si128(_mm_cvtpd_ps(pair)));
}

/// A section with its coefficients in both lanes.
struct PairSection {
  __m128d b0, b1, b2, a1, a2, d1, d2;
};

/// Both channels of a stereo buffer, one in each lane: the same sums in the same order as RunSections, so the
/// same bits. `kCount` sections when it isn't 0, which lets the delays stay in registers.
template <uint32_t kCount, typename Sample>
void RunPairs(tZRIIR_BIQUAD* biquads, uint32_t count, double gain, double dry, Sample* destination,
              const Sample* source, uint32_t frames) {
  const uint32_t sections = kCount != 0 ? kCount : count;
  PairSection local[kCount != 0 ? kCount : kZrIirMaxBiquads];
  for (uint32_t index = 0; index < sections; ++index) {
    const tZRIIR_BIQUAD& from = biquads[index];
    local[index] = {_mm_set1_pd(from.b0), _mm_set1_pd(from.b1),  _mm_set1_pd(from.b2), _mm_set1_pd(from.a1),
                    _mm_set1_pd(from.a2), _mm_loadu_pd(from.d1), _mm_loadu_pd(from.d2)};
  }
  const __m128d gains = _mm_set1_pd(gain);
  const __m128d dries = _mm_set1_pd(dry);
  const __m128d smallest = _mm_set1_pd(kSmallestDelay);
  const __m128d signBit = _mm_set1_pd(-0.0);
  for (uint32_t frame = 0; frame < frames; ++frame) {
    const __m128d input = LoadPair(source + 2 * frame);
    __m128d x = _mm_mul_pd(input, gains);
    for (uint32_t index = 0; index < sections; ++index) {
      PairSection& section = local[index];
      const __m128d w =
          _mm_add_pd(_mm_add_pd(x, _mm_mul_pd(section.a1, section.d1)), _mm_mul_pd(section.a2, section.d2));
      x = _mm_add_pd(_mm_add_pd(_mm_mul_pd(section.b0, w), _mm_mul_pd(section.b1, section.d1)),
                     _mm_mul_pd(section.b2, section.d2));
      section.d2 = section.d1;
      section.d1 = _mm_andnot_pd(_mm_cmplt_pd(_mm_andnot_pd(signBit, w), smallest), w);
    }
    StorePair(destination + 2 * frame, _mm_add_pd(x, _mm_mul_pd(dries, input)));
  }
  for (uint32_t index = 0; index < sections; ++index) {
    _mm_storeu_pd(biquads[index].d1, local[index].d1);
    _mm_storeu_pd(biquads[index].d2, local[index].d2);
  }
}

template <typename Sample>
void RunPairs(tZRIIR_BIQUAD* biquads, uint32_t count, double gain, double dry, Sample* destination,
              const Sample* source, uint32_t frames) {
  switch (count) {
    case 1:
      return RunPairs<1>(biquads, count, gain, dry, destination, source, frames);
    case 2:
      return RunPairs<2>(biquads, count, gain, dry, destination, source, frames);
    case 3:
      return RunPairs<3>(biquads, count, gain, dry, destination, source, frames);
    case 4:
      return RunPairs<4>(biquads, count, gain, dry, destination, source, frames);
    case 6:
      return RunPairs<6>(biquads, count, gain, dry, destination, source, frames);
    default:
      return RunPairs<0>(biquads, count, gain, dry, destination, source, frames);
  }
}

}  // namespace

/// The run of both sample widths.
struct ZrIirRunner {
  static void EnterChannels(CZrIIR& filter, uint32_t channelMask) {
    const uint32_t entering = channelMask & ~filter.lastChannelMask_;
    if (entering != 0) filter.Reset(entering);
    filter.lastChannelMask_ = channelMask;
  }

  template <typename Sample>
  static void Process(CZrIIR& filter, Sample* destination, const Sample* source, uint32_t frames,
                      uint32_t channelMask) {
    if (channelMask == 0) channelMask = 3;
    if (channelMask != filter.lastChannelMask_) EnterChannels(filter, channelMask);
    if (filter.useSse2_ != 0 && (channelMask & 3) == 3) {
      RunPairs(filter.biquads_, filter.numBiquads_, filter.gain_, filter.dry_, destination, source, frames);
      return;
    }
    // A filter that was never designed knows no layout; it takes the buffer as mono and silences it.
    const uint32_t stride = std::max<uint32_t>(filter.channels_, 1);
    const uint32_t filtered = std::min<uint32_t>(stride, 2);
    for (uint32_t channel = 0; channel < filtered; ++channel) {
      if ((channelMask >> channel & 1) == 0) continue;
      for (uint32_t frame = 0; frame < frames; ++frame) {
        const size_t sample = static_cast<size_t>(frame) * stride + channel;
        const double input = source[sample];
        const double output = RunSections(filter.biquads_, filter.numBiquads_, channel, input * filter.gain_);
        destination[sample] = static_cast<Sample>(output + filter.dry_ * input);
      }
    }
  }
};

void CZrIIR::ProcessFloat(float* destination, const float* source, uint32_t frames, uint32_t channelMask) noexcept {
  ZrIirRunner::Process(*this, destination, source, frames, channelMask);
}

void CZrIIR::ProcessDouble(double* destination, const double* source, uint32_t frames, uint32_t channelMask) noexcept {
  ZrIirRunner::Process(*this, destination, source, frames, channelMask);
}

void CZrIIR::Reset(uint32_t channelMask) noexcept {
  for (tZRIIR_BIQUAD& section : biquads_) {
    for (uint32_t channel = 0; channel < 2; ++channel) {
      if ((channelMask >> channel & 1) != 0) section.d1[channel] = section.d2[channel] = 0;
    }
  }
}

void CZrIIR::ResetAll() noexcept { Reset(3); }

void CZrIIR::SetDelayElementsFrom(const CZrIIR* other) noexcept {
  if (other == nullptr) return;
  for (uint32_t index = 0; index < other->numBiquads_; ++index) {
    std::copy_n(other->biquads_[index].d1, 2, biquads_[index].d1);
    std::copy_n(other->biquads_[index].d2, 2, biquads_[index].d2);
  }
}
