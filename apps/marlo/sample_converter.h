// SPDX-License-Identifier: Apache-2.0
// Converts blocks of samples between any two types, by way of doubles where no kernel does it directly.
#pragma once

#include <cstdint>
#include <vector>

#include "marlo110k/waveformat.h"

namespace host {

class SampleConverter {
 public:
  /// @param target has the channel count of `source`.
  SampleConverter(const _zrwaveformat& source, const _zrwaveformat& target, float gain);

  /// @return the converted samples, valid until the next call. Throws a Failure for a pair without a way.
  const void* Convert(const void* samples, uint32_t frames);

 private:
  _zrwaveformat source_;
  _zrwaveformat target_;
  _zrwaveformat between_;
  float gain_;
  bool twoSteps_;
  std::vector<uint8_t> betweenSamples_;
  std::vector<uint8_t> targetSamples_;
};

}  // namespace host
