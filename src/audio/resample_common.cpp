// SPDX-License-Identifier: Apache-2.0
// The sinc table and the filter of many channels.
#include "audio/resample_common.h"

#include <cmath>
#include <new>
#include <numbers>

namespace marlo {

double SincTableValue(int k, int entries) noexcept {
  if (k == 0) return 1.0;
  const double x = kSincCrossings * std::numbers::pi * k / entries;
  const double y = x / kSincCrossings + std::numbers::pi;
  const double window = 0.35875 - 0.48829 * std::cos(y) + 0.14128 * std::cos(2 * y) - 0.01168 * std::cos(3 * y);
  return window * std::sin(x) / x;
}

void ChannelFilter::Free() noexcept {
  delete[] filters_;
  filters_ = nullptr;
  pairs_ = channels_ = 0;
}

bool ChannelFilter::Design(uint32_t design, uint32_t order, double cutOff, int32_t channels, bool clear,
                           bool scalar) noexcept {
  const int32_t pairs = (channels + 1) / 2;
  auto* next = new (std::nothrow) CZrIIR[static_cast<size_t>(pairs)];
  if (next == nullptr) return false;
  for (int32_t pair = 0; pair < pairs; ++pair) {
    if (pair == 0) {
      next[0].Design(ZRIIR_LOWPASS, design, order, cutOff, 0, 0, static_cast<uint32_t>(channels),
                     scalar ? ZRIIR_NO_SSE2 : 0);
    } else {
      next[pair] = next[0];
    }
  }
  for (int32_t pair = 0; pair < pairs && filters_ != nullptr && !clear && channels == channels_; ++pair) {
    next[pair].SetDelayElementsFrom(&filters_[pair]);
  }
  Free();
  filters_ = next;
  pairs_ = pairs;
  channels_ = channels;
  return true;
}

void ChannelFilter::ClearDelays() noexcept {
  for (int32_t pair = 0; pair < pairs_; ++pair) filters_[pair].ResetAll();
}

template <typename Sample>
void ChannelFilter::Run(Sample* samples, int64_t frames,
                        void (CZrIIR::*process)(Sample*, const Sample*, uint32_t, uint32_t)) noexcept {
  constexpr int64_t kBlock = 1 << 30;  // The filter counts in 32 bits.
  while (frames > 0) {
    const auto block = static_cast<uint32_t>(frames < kBlock ? frames : kBlock);
    for (int32_t pair = 0; pair < pairs_; ++pair) {
      Sample* first = samples + 2 * pair;
      (filters_[pair].*process)(first, first, block, 2 * pair + 1 < channels_ ? 3 : 1);
    }
    samples += static_cast<int64_t>(block) * channels_;
    frames -= block;
  }
}

template void ChannelFilter::Run(float*, int64_t, void (CZrIIR::*)(float*, const float*, uint32_t, uint32_t)) noexcept;
template void ChannelFilter::Run(double*, int64_t,
                                 void (CZrIIR::*)(double*, const double*, uint32_t, uint32_t)) noexcept;

}  // namespace marlo
