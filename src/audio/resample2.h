// SPDX-License-Identifier: Apache-2.0
// State and kernels of the second resampler.
#pragma once

#include <cstddef>
#include <cstdint>

#include "audio/resample_common.h"
#include "audio/sinc_taps.h"
#include "marlo110k/resample.h"
#include "marlo110k/samples.h"

namespace marlo {

inline constexpr int kSecondTableEntries = 4000;
inline constexpr double kSecondTableScale = 4000.0 / 13;
inline constexpr int kCubicTaps = 4;
inline constexpr int kCubicNeed = 3;  ///< Frames before the first cubic output.

/// A block of memory that only grows.
class WorkBuffer {
 public:
  WorkBuffer() = default;
  ~WorkBuffer() { delete[] bytes_; }
  WorkBuffer(const WorkBuffer&) = delete;
  WorkBuffer& operator=(const WorkBuffer&) = delete;
  /// @return at least `bytes` bytes, null when memory is short.
  void* Need(size_t bytes) noexcept;

 private:
  uint8_t* bytes_ = nullptr;
  size_t size_ = 0;
};

/// Place of the next output within its source frame: num-ths of a frame without drift, or a real number.
struct StreamPosition {
  bool isRational = false;
  int64_t num = 1;  ///< Ratio num / den.
  int64_t den = 1;
  int64_t rational = 0;  ///< In 1 / num frames.
  double real = 0;
  double inverse = 1;

  double Fraction() const { return isRational ? static_cast<double>(rational) / static_cast<double>(num) : real; }
  /// Moves on by one output. @return source frames that must come before it.
  int64_t Advance() {
    if (isRational) {
      rational += den;
      const int64_t frames = rational / num;
      rational %= num;
      return frames;
    }
    real += inverse;
    const int64_t frames = FloorPosition(real);
    real -= static_cast<double>(frames);
    return frames;
  }
};

}  // namespace marlo

struct tZRRESAMPLE2 {
  uint32_t sampleType = 0;
  int32_t channels = 0;
  uint32_t mode = 0;
  uint32_t filterCode = 0;
  uint32_t flags = 0;
  double ratio = 1;
  marlo::StreamPosition position;
  /// Position of the linear mode relative to the next block: from behind the kept last frame (-1) on. In num-ths
  /// when rational.
  int64_t linearRational = 0;
  double linearReal = 0;
  double lastFrame[marlo::kMaxResampleChannels] = {};
  int64_t framesNeeded = 0;  ///< Source frames before the next output of a ring mode.
  int64_t tailLeft = 0;      ///< Frames of silence that a flush may still feed.
  bool ringStarted = false;
  int32_t ringHead = 0;
  double* ring = nullptr;                   ///< kSincTaps frames, newest first, standing twice.
  marlo::SincEntry* sincEntries = nullptr;  ///< kSecondTableEntries and one that repeats the last value.
  uint32_t workType = 0;
  uint32_t workFrameBytes = 0;
  uint32_t frameBytes = 0;
  ZRAUDIOCOPYFUNCTION copyIn = nullptr;
  ZRAUDIOCOPYFUNCTION copyOut = nullptr;
  marlo::WorkBuffer inBuffer;
  marlo::WorkBuffer outBuffer;
  marlo::ChannelFilter filter;
  int64_t srcPos = 0;
  int64_t dstPos = 0;

  bool GoesDown() const { return ratio < 1; }
  /// Going down by a whole number every position is whole, and lines through them are exact.
  bool IsWholeInverse() const;
  marlo::SincTable Table() const { return {sincEntries, marlo::kSecondTableScale, marlo::kSecondTableEntries - 1}; }
  uint32_t ModeInUse() const { return GoesDown() && IsWholeInverse() ? ZRRESAMPLE2_LINEAR : mode; }
};

namespace marlo {

/// What a kernel call takes and gives.
struct KernelCall {
  const void* source;
  int64_t sourceFrames;
  void* dest;
  int64_t destFrames;
  bool flush;
  int64_t taken;
  int64_t made;
};

/// Runs the kernel of the mode in use on the work type. @return false when there is none.
bool RunKernel(tZRRESAMPLE2& state, uint32_t mode, uint32_t type, KernelCall& call) noexcept;

}  // namespace marlo
