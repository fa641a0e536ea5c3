// SPDX-License-Identifier: Apache-2.0
// State and kernels of the first resampler.
#pragma once

#include <cstdint>

#include "audio/resample_common.h"
#include "audio/sinc_taps.h"
#include "marlo110k/resample.h"

namespace marlo {

inline constexpr int kFirstTableEntries = 1000;
inline constexpr double kFirstTableScale = 76.92307692307692;  ///< Entries per source frame.
/// Frames the ring holds: the taps, and a few that were pushed while the destination was full. With those an
/// output is centred on its own source frame however the stream is cut.
inline constexpr int kSincRingFrames = 32;
inline constexpr int kSincSpareFrames = kSincRingFrames - kSincTaps;

/// The table all instances share, built at the first use.
const SincTable& SharedSincTable() noexcept;

/// History of the sinc kernel: interleaved frames in a ring that stands twice in memory, so that any run of
/// kSincRingFrames frames is contiguous.
struct SincHistory {
  double* frames = nullptr;  ///< 2 * kSincRingFrames frames.
  int32_t head = 0;          ///< Slot of the newest frame.
  double time = 0;           ///< Source time of the newest frame, less the taps behind the centre.
  int32_t tail = 0;          ///< Frames left to give out when flushing.
  bool first = true;         ///< The ring must be primed.
};

}  // namespace marlo

struct tZRRESAMPLEINSTANCE {
  uint32_t sampleType = 0;
  int32_t channels = 0;
  int64_t srcRate = 1;  ///< Exact rates for the integer kernels.
  int64_t dstRate = 1;
  int64_t intPhase = 0;  ///< In 1 / dstRate source frames.
  double ratio = 1;
  double inverse = 1;
  double phase = 0;  ///< Source position of the next output frame relative to the next block.
  double lastFrame[marlo::kMaxResampleChannels] = {};
  marlo::ChannelFilter filter;
  bool keepSource = false;
  bool countIsDest = false;
  uint32_t quality = 0;
  uint32_t filterCode = 0;
  int64_t srcPos = 0;
  int64_t dstPos = 0;
  int64_t srcOffset = 0;
  int64_t dstOffset = 0;
  marlo::SincHistory sinc;

  bool IsFloatType() const { return sampleType == ZRSAMPLETYPE_FLOAT32 || sampleType == ZRSAMPLETYPE_FLOAT64; }
};

namespace marlo {

/// Where a linear run reads and writes: output frame n at phase + n * inverse.
struct LinearRun {
  uint32_t sampleType;
  int32_t channels;
  const void* source;
  int64_t sourceFrames;
  void* dest;
  int64_t destFrames;
  const double* lastFrame;  ///< The frame before the source, in the type's own scale.
  bool goingUp;             ///< Fill from the last frame to the first, so that a block can expand in place.
  double phase;             ///< For float types.
  double inverse;
  int64_t intPhase;  ///< For integer types: positions n * srcRate + intPhase in 1 / dstRate frames.
  int64_t srcRate;
  int64_t dstRate;
};

/// Interpolates along straight lines. @return false for an unknown type.
bool RunLinear(const LinearRun& run) noexcept;
/// Reads frame `index` of a block into doubles of the type's own scale.
void ReadFrame(uint32_t sampleType, int32_t channels, const void* source, int64_t index, double* frame) noexcept;

/// The sinc kernel with a given step. @return frames written.
int64_t RunSinc(tZRRESAMPLEINSTANCE& instance, void* dest, int64_t destFrames, const void* source, int64_t sourceFrames,
                double step) noexcept;

}  // namespace marlo
