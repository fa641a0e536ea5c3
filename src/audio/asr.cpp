// SPDX-License-Identifier: Apache-2.0
// Gain envelopes: from ticks to frames, and the running gain at a position.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "audio/format_sides.h"
#include "audio/sample_rules.h"
#include "marlo110k/samples.h"

namespace marlo {
namespace {

/// Frames of a time in ticks of 100 ns, rounded half up.
int64_t FramesFromTicks(int64_t ticks, uint32_t rate) noexcept {
  constexpr double kLimit = 9.0e18;  // Far beyond any clip, inside 64 bits.
  const double frames = std::floor(static_cast<double>(ticks) * 1e-7 * static_cast<double>(rate) + 0.5);
  return static_cast<int64_t>(std::clamp(frames, -kLimit, kLimit));
}

int32_t ClampLength(int64_t frames) noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(frames, 0, 0x7FFFFFFF));
}

/// 1.0 for the float types and for what isn't a sample type.
double ReadFactorOf(uint32_t sampleType) noexcept {
  double factor = 1.0;
  VisitRule(AllRules{}, sampleType, [&factor](auto rule) { factor = decltype(rule)::kReadFactor; });
  return factor;
}

HRESULT Cook(FormatSide format, const tZRASR& asr, tZRASRCOOKED& cooked, int64_t position, int64_t totalLength,
             double gain) noexcept {
  cooked.attackLength = ClampLength(FramesFromTicks(asr.attackTime, format.rate));
  cooked.releaseLength = ClampLength(FramesFromTicks(asr.releaseTime, format.rate));
  const int64_t total = FramesFromTicks(totalLength, format.rate);
  const double scale = gain * ReadFactorOf(format.sampleType);
  cooked.sustainGain = static_cast<double>(asr.sustainGain) * scale;
  cooked.attackGain = static_cast<double>(asr.attackGain) * scale;
  cooked.releaseGain = static_cast<double>(asr.releaseGain) * scale;
  cooked.attackCurve = asr.attackCurve;
  cooked.releaseCurve = asr.releaseCurve;
  cooked.sustainLength = total - (int64_t{cooked.attackLength} + cooked.releaseLength);
  if (cooked.sustainLength < 0) {
    cooked.sustainLength = 0;
    cooked.releaseLength = static_cast<int32_t>(total / 2);
    cooked.attackLength = static_cast<int32_t>(total - cooked.releaseLength);
  }
  return ZrAudio_ASRReCook(&cooked, position);
}

/// The gain does not move, for `frames` frames.
void Hold(tZRASRCOOKED& cooked, double gain, int64_t frames) noexcept {
  cooked.gain = gain;
  cooked.gainDelta = 0.0;
  cooked.gainDeltaDelta = 0.0;
  cooked.remaining = frames;
}

/// The gain and its differences at `offset` in a segment that runs from one gain to another.
void Move(tZRASRCOOKED& cooked, double from, double to, int32_t curve, int64_t offset, int64_t length) noexcept {
  const auto frames = static_cast<double>(length);
  double start = from;
  double slope = (to - from) / frames;
  double sign = 1.0;
  double t = static_cast<double>(offset);
  if (curve < 0) {  // The same shape, seen from the segment's end.
    start = to;
    slope = -slope;
    sign = -1.0;
    t = static_cast<double>(length - offset);
  }
  if (curve >= 2 || curve <= -2) {
    const double bend = slope / frames;
    const double next = sign + t;
    const double square = t * t;
    cooked.gain = bend * square + start;
    cooked.gainDelta = bend * (next * next - square);
    cooked.gainDeltaDelta = 2.0 * bend;
  } else {
    cooked.gain = slope * t + start;
    cooked.gainDelta = slope * sign;
    cooked.gainDeltaDelta = 0.0;
  }
  cooked.remaining = length - offset;
}

}  // namespace
}  // namespace marlo

HRESULT ZrAudio_ASRCook(const WAVEFORMATEX* format, const tZRASR* asr, tZRASRCOOKED* cooked, int64_t position,
                        int64_t totalLength, double gain) noexcept {
  return marlo::Cook(marlo::SideOf(format), *asr, *cooked, position, totalLength, gain);
}

HRESULT ZrAudio_ASRCook(const _zrwaveformat* format, const tZRASR* asr, tZRASRCOOKED* cooked, int64_t position,
                        int64_t totalLength, double gain) noexcept {
  return marlo::Cook(marlo::SideOf(format), *asr, *cooked, position, totalLength, gain);
}

HRESULT ZrAudio_ASRReCook(tZRASRCOOKED* cooked, int64_t position) noexcept {
  using namespace marlo;
  tZRASRCOOKED& c = *cooked;
  c.position = position;
  const int64_t sustainEnd = c.attackLength + c.sustainLength;
  if (position < c.attackLength) {
    Move(c, c.attackGain, c.sustainGain, c.attackCurve, position, c.attackLength);
  } else if (position < sustainEnd) {
    Hold(c, c.sustainGain, c.sustainLength - (position - c.attackLength));
  } else if (const int64_t offset = position - sustainEnd; offset >= c.releaseLength) {
    Hold(c, c.releaseGain, INT64_MAX);
  } else {
    Move(c, c.sustainGain, c.releaseGain, c.releaseCurve, offset, c.releaseLength);
  }
  return S_OK;
}
