// SPDX-License-Identifier: Apache-2.0
// Kernels of the second resampler: straight lines, cubic B-spline, windowed sinc.
#include <algorithm>
#include <cmath>

#include "audio/resample2.h"
#include "audio/sample_rules.h"

namespace marlo {
namespace {

// ---- Straight lines --------------------------------------------------------------------------------

/// Position of the linear mode: whole frames and the part of the next one.
struct LinearPlace {
  int64_t frame;
  int64_t part;     ///< Rational: num-ths.
  double fraction;  ///< 0 exactly on a frame.
};

LinearPlace PlaceOf(const tZRRESAMPLE2& state) {
  const StreamPosition& position = state.position;
  if (position.isRational) {
    int64_t frame = state.linearRational / position.num;
    int64_t part = state.linearRational % position.num;
    if (part < 0) {
      part += position.num;
      --frame;
    }
    return {frame, part, static_cast<double>(part) / static_cast<double>(position.num)};
  }
  const int64_t frame = FloorPosition(state.linearReal);
  return {frame, 0, state.linearReal - static_cast<double>(frame)};
}

void StepLinear(tZRRESAMPLE2& state) {
  state.linearRational += state.position.den;
  state.linearReal += state.position.inverse;
}

void MoveOrigin(tZRRESAMPLE2& state, int64_t frames) {
  state.linearRational -= frames * state.position.num;
  state.linearReal -= static_cast<double>(frames);
}

template <class Rule>
typename Rule::Raw Between(const tZRRESAMPLE2& state, const LinearPlace& place, typename Rule::Raw from,
                           typename Rule::Raw to) {
  using Raw = typename Rule::Raw;
  if constexpr (Rule::kInteger) {
    const int64_t difference = static_cast<int64_t>(to) - from;
    const int64_t step = state.position.isRational
                             ? static_cast<int64_t>(static_cast<__int128>(difference) * place.part / state.position.num)
                             : static_cast<int64_t>(static_cast<double>(difference) * place.fraction);
    return static_cast<Raw>(from + step);
  } else {
    const double start = from;
    return static_cast<Raw>(start + place.fraction * (to - start));
  }
}

template <class Rule>
void RunLines(tZRRESAMPLE2& state, KernelCall& call) {
  using Raw = typename Rule::Raw;
  const auto* source = static_cast<const uint8_t*>(call.source);
  auto* dest = static_cast<uint8_t*>(call.dest);
  const int32_t channels = state.channels;
  const int64_t frameBytes = static_cast<int64_t>(Rule::kBytes) * channels;
  const int64_t last = call.sourceFrames - 1;
  const auto sample = [&](int64_t frame, int32_t channel) -> Raw {
    if (frame < 0) return static_cast<Raw>(state.lastFrame[channel]);
    if (frame > last) return 0;  // Only in a flush: silence behind the end.
    return Rule::Read(source + frame * frameBytes + channel * Rule::kBytes);
  };
  while (call.made < call.destFrames) {
    const LinearPlace place = PlaceOf(state);
    const bool onFrame = place.fraction == 0;
    // In a flush the line from the last frame to silence is all that is left.
    if (call.flush ? place.frame >= 0 || onFrame : place.frame + (onFrame ? 0 : 1) > last) break;
    for (int32_t channel = 0; channel < channels; ++channel) {
      const Raw from = sample(place.frame, channel);
      Raw value = from;
      if (!onFrame) value = Between<Rule>(state, place, from, sample(place.frame + 1, channel));
      Rule::Write(dest + channel * Rule::kBytes, value);
    }
    dest += frameBytes;
    ++call.made;
    StepLinear(state);
  }
  if (call.flush) return;
  // Frames behind the next position are done; the last of them is kept for the line across the seam.
  const LinearPlace next = PlaceOf(state);
  call.taken = std::clamp<int64_t>(next.frame + (next.fraction == 0 ? 0 : 1), 0, call.sourceFrames);
  if (call.taken == 0) return;
  double kept[kMaxResampleChannels];
  for (int32_t channel = 0; channel < channels; ++channel) {
    kept[channel] = static_cast<double>(sample(call.taken - 1, channel));
  }
  std::copy_n(kept, channels, state.lastFrame);
  MoveOrigin(state, call.taken);
}

// ---- Ring modes ------------------------------------------------------------------------------------

/// A sample this small enters the ring as 0, so that no denormal is ever in the loop.
constexpr double kSmallestSample = 1e-25;

template <typename Sample>
void PushFrame(tZRRESAMPLE2& state, const Sample* frame) {
  const int32_t channels = state.channels;
  state.ringHead = (state.ringHead == 0 ? kSincTaps : state.ringHead) - 1;
  double* slot = state.ring + static_cast<ptrdiff_t>(state.ringHead) * channels;
  double* twin = slot + static_cast<ptrdiff_t>(kSincTaps) * channels;
  for (int32_t channel = 0; channel < channels; ++channel) {
    double value = frame == nullptr ? 0.0 : static_cast<double>(frame[channel]);
    if (state.mode == ZRRESAMPLE2_SINC && std::abs(value) < kSmallestSample) value = 0;
    slot[channel] = twin[channel] = value;
  }
}

template <typename Sample>
void WriteCubic(const tZRRESAMPLE2& state, const double* newest, double t, Sample* out) {
  const int32_t channels = state.channels;
  const double c0 = 1 - 3 * t + 3 * t * t - t * t * t;
  const double c1 = 4 - 6 * t * t + 3 * t * t * t;
  const double c2 = 1 + 3 * t + 3 * t * t - 3 * t * t * t;
  const double c3 = t * t * t;
  for (int32_t channel = 0; channel < channels; ++channel) {
    const double s3 = newest[channel];
    const double s2 = newest[channels + channel];
    const double s1 = newest[2 * channels + channel];
    const double s0 = newest[3 * channels + channel];
    // On a frame the sample itself comes out, unsmoothed.
    const double value = t == 0 ? s1 : (c0 * s0 + c1 * s1 + c2 * s2 + c3 * s3) * 0.16666666666667;
    out[channel] = static_cast<Sample>(value);
  }
}

template <typename Sample>
void RunRing(tZRRESAMPLE2& state, KernelCall& call) {
  const int32_t channels = state.channels;
  const auto* source = static_cast<const Sample*>(call.source);
  auto* dest = static_cast<Sample*>(call.dest);
  const bool sinc = state.mode == ZRRESAMPLE2_SINC;
  const SincTable table = state.Table();
  const SincSum sum = ChooseSincSum(channels, (state.flags & ZRRESAMPLE2_SCALAR) != 0);
  double frame[kMaxResampleChannels];
  while (call.made < call.destFrames) {
    while (state.framesNeeded > 0) {
      if (call.flush) {
        if (state.tailLeft < 1) return;
        --state.tailLeft;
        PushFrame<Sample>(state, nullptr);
      } else {
        if (call.taken == call.sourceFrames) return;
        PushFrame(state, source + call.taken * channels);
        ++call.taken;
      }
      --state.framesNeeded;
    }
    const double* newest = state.ring + static_cast<ptrdiff_t>(state.ringHead) * channels;
    const double t = state.position.Fraction();
    if (sinc) {
      sum(table, kSincCentre - t, newest, channels, frame);
      for (int32_t channel = 0; channel < channels; ++channel) dest[channel] = static_cast<Sample>(frame[channel]);
    } else {
      WriteCubic(state, newest, t, dest);
    }
    dest += channels;
    ++call.made;
    state.framesNeeded = state.position.Advance();
  }
}

}  // namespace

bool RunKernel(tZRRESAMPLE2& state, uint32_t mode, uint32_t type, KernelCall& call) noexcept {
  if (mode == ZRRESAMPLE2_LINEAR) {
    using LinearRules = RuleList<Pcm8Rule, Pcm16Rule, Pcm32Rule, Pcm24UnpackedRule, Float32Rule, Float64Rule>;
    return VisitRule(LinearRules{}, type, [&](auto rule) { RunLines<decltype(rule)>(state, call); });
  }
  if (mode != ZRRESAMPLE2_CUBIC && mode != ZRRESAMPLE2_SINC) return false;
  if (type == ZRSAMPLETYPE_FLOAT32) {
    RunRing<float>(state, call);
  } else if (type == ZRSAMPLETYPE_FLOAT64) {
    RunRing<double>(state, call);
  } else {
    return false;
  }
  return true;
}

}  // namespace marlo
