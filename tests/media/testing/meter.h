// SPDX-License-Identifier: Apache-2.0
// A mono float meter buffer at 48 kHz that goes with the test.
#pragma once

#include <memory>
#include <vector>

#include "marlo110k/meterbuffer.h"

namespace media_testing {

struct FreeMeter {
  void operator()(CZRPeakBuffer* buffer) const { buffer->DeleteSelf(1); }
};
using Meter = std::unique_ptr<CZRPeakBuffer, FreeMeter>;

inline Meter MakeMeter(uint32_t records, uint32_t rate = 48000) {
  _zrwaveformat format{};
  format.Init(rate, ZRSAMPLETYPE_FLOAT32, 1, 0, kZrWaveFormatFixedBytes);
  CZRPeakBuffer* buffer = nullptr;
  ZRCreateMemoryListPeakBuffer(&buffer, &format, records);
  return Meter(buffer);
}

}  // namespace media_testing
