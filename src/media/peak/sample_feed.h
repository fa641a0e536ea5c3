// SPDX-License-Identifier: Apache-2.0
// Brings a stream's samples to the kernel that makes peaks of them.
#pragma once

#include "marlo110k/peak.h"
#include "marlo110k/samples.h"
#include "media/peak/minmax.h"

namespace marlo::peak {

/// A step that no phase reaches: the peak takes all frames there are.
inline constexpr int64_t kNeverComplete = INT64_MAX / 2;

/// Bytes of a block of samples on the stack.
inline constexpr uint32_t kSampleBlockBytes = 0x18000;

/// Bytes of a sample; 0 for an unknown type.
uint32_t SampleBytes(uint32_t sampleType) noexcept;

/// Samples of one type on their way to one type of peak: the kernel, and the conversion to what the kernel takes.
/// Big-endian samples become their little-endian twins, other types without a kernel the peak type itself; neither
/// takes more room than before.
struct SampleRoute {
  ZRAUDIOPEAKMINMAXFUNCTION kernel = nullptr;
  ZRAUDIOCOPYFUNCTION convert = nullptr;  ///< Null when samples need none.
  uint32_t kernelType = ZRSAMPLETYPE_NONE;
  uint32_t sampleBytes = 0;  ///< Before the conversion.
  uint32_t kernelBytes = 0;  ///< Behind it.

  /// @return false when there is no way.
  bool Find(uint32_t peakType, uint32_t sampleType) noexcept;
  /// As SampleFeed::Complete.
  void Complete(void* dest, int64_t destIndex, const void* behind, int64_t* phase, uint32_t channels,
                tZRAUDIOPEAK_SAMPLESMINMAX* running) const noexcept;
};

/// A stream with a route.
class SampleFeed {
 public:
  /// @return E_FAIL for more channels than are provided for, ZR_E_UNSUPPORTED_MEDIA for samples of no known type.
  HRESULT Begin(CZrAudioPeakStreamReader* reader, uint32_t peakType) noexcept;

  const SampleRoute& Route() const noexcept { return route_; }
  uint32_t Channels() const noexcept { return channels_; }
  /// Frames that fit a block.
  int64_t BlockFrames() const noexcept { return kSampleBlockBytes / frameBytes_; }

  /// Fills a block with up to `frames` frames in the kernel's type. What the stream can't give there is silence.
  /// @param left frames that will be wanted from `position` on, this block's included.
  HRESULT Read(int64_t position, int64_t left, void* block, int64_t frames, int64_t* framesRead) noexcept;

  /// Stores the begun peak as it is, by its last frame again, which changes nothing.
  /// @param behind behind the last frame that was used, where the kernel left it.
  void Complete(void* dest, int64_t destIndex, const void* behind, int64_t* phase,
                tZRAUDIOPEAK_SAMPLESMINMAX* running) const noexcept {
    route_.Complete(dest, destIndex, behind, phase, channels_, running);
  }

 private:
  CZrAudioPeakStreamReader* reader_ = nullptr;
  SampleRoute route_;
  uint32_t channels_ = 0;
  uint32_t frameBytes_ = 1;
};

}  // namespace marlo::peak
