// SPDX-License-Identifier: Apache-2.0
// What both resamplers share: the rounding of positions, the windowed sinc table, the filter of many channels.
#pragma once

#include <cstdint>

#include "marlo110k/iir.h"

namespace marlo {

inline constexpr int32_t kMaxResampleChannels = 32;
inline constexpr int kSincCrossings = 13;                 ///< Zero crossings on either side.
inline constexpr int kSincTaps = 2 * kSincCrossings - 1;  ///< 25.
inline constexpr int kSincCentre = kSincCrossings - 1;    ///< Taps newer than the one an output is centred on.

// Positions gather rounding errors, so a value within 1.5e-8 of an integer counts as that integer.
inline constexpr double kAlmostHalf = 0.499999985;
inline int64_t FloorPosition(double position) noexcept {
  const double shifted = position - kAlmostHalf;
  // Nearest by the processor's conversion: the same rounding as the sum, without its range.
  return __builtin_llrint(shifted);
}
inline int64_t CeilPosition(double position) noexcept { return __builtin_llrint(position + kAlmostHalf); }

/// Entry k of `entries`: a sinc under a four-term Blackman-Harris window over the crossings of one side.
double SincTableValue(int k, int entries) noexcept;

/// One low-pass for any number of channels: a filter for each pair, since a filter holds the delays of two.
class ChannelFilter {
 public:
  ChannelFilter() = default;
  ~ChannelFilter() { Free(); }
  ChannelFilter(const ChannelFilter&) = delete;
  ChannelFilter& operator=(const ChannelFilter&) = delete;

  void Free() noexcept;
  bool IsOn() const noexcept { return filters_ != nullptr; }
  /// Designs for `channels`; the delays of the former design go on unless `clear`.
  /// @return false when memory is short.
  bool Design(uint32_t design, uint32_t order, double cutOff, int32_t channels, bool clear, bool scalar) noexcept;
  void ClearDelays() noexcept;
  void Process(float* samples, int64_t frames) noexcept { Run(samples, frames, &CZrIIR::ProcessFloat); }
  void Process(double* samples, int64_t frames) noexcept { Run(samples, frames, &CZrIIR::ProcessDouble); }

 private:
  template <typename Sample>
  void Run(Sample* samples, int64_t frames,
           void (CZrIIR::*process)(Sample*, const Sample*, uint32_t, uint32_t)) noexcept;

  CZrIIR* filters_ = nullptr;
  int32_t pairs_ = 0;
  int32_t channels_ = 0;
};

}  // namespace marlo
