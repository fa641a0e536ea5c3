// SPDX-License-Identifier: Apache-2.0
// Changes the rate of a stream of float samples through one of the library's two resamplers.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "marlo110k/resample.h"
#include "marlo110k/waveformat.h"

namespace host {

/// One way of resampling, by the name that the command line uses.
struct ResamplerKind {
  const char* name;
  bool second;     ///< Of the second resampler.
  uint32_t flags;  ///< Quality or mode.
  bool takesFilter;
};

/// "linear", "linear-filtered", "sinc", "2-linear", "2-cubic", "2-sinc"; null for another name.
const ResamplerKind* ResamplerOfName(std::string_view name);

class RateConverter {
 public:
  /// @param working FLOAT32 or FLOAT64 samples at the source's rate. @param rate of the result, another one.
  /// @param filter 0 for none, 1 to 3 for the low-passes of rising order.
  RateConverter(const _zrwaveformat& working, uint32_t rate, const ResamplerKind& kind, uint32_t filter);

  /// Hands in a block, to be taken out with Next until that gives 0. It must stay until then.
  void Feed(const void* samples, uint32_t frames);
  /// Says that no more comes: Next then gives what the resampler still holds, as far as it stands for a time
  /// within the source. All blocks together give ceil(source frames * rate / source rate) frames.
  void Finish();
  /// @return frames that Samples now points to; 0 when another block is needed or all is out.
  uint32_t Next();
  const void* Samples() const { return made_.data(); }

 private:
  uint32_t NextOfFirst();
  uint32_t NextOfSecond();
  int64_t WholeResult() const;

  struct Close {
    void operator()(tZRRESAMPLEINSTANCE* instance) const { ZrAudio_ResampleClose(instance); }
    void operator()(tZRRESAMPLE2* instance) const { ZrAudio_Resample2Close(instance); }
  };
  _zrwaveformat working_;
  uint32_t rate_;
  uint32_t lookAhead_;  ///< Source frames behind the position that a result is made from.
  uint32_t mostTaken_;  ///< Source frames of one step, so that its result stays small at any ratio.
  std::unique_ptr<tZRRESAMPLEINSTANCE, Close> first_;
  std::unique_ptr<tZRRESAMPLE2, Close> second_;
  std::vector<uint8_t> made_, taken_, silence_;
  const uint8_t* source_ = nullptr;
  uint32_t sourceFrames_ = 0;
  int64_t fed_ = 0;
  int64_t given_ = 0;
  bool finishing_ = false;
};

}  // namespace host
