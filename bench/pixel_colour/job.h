// SPDX-License-Identifier: Apache-2.0
// One conversion that ours and the peers do on the same buffers, and the error against exact arithmetic.
#pragma once

#include <cstdint>
#include <vector>

#include "harness/harness.h"

namespace bench {

enum class Layout { kBgra, kUyvy, kI420 };

/// Luma levels of colour: ours leaves luma as it is, peers stretch 16 to 235 over a byte.
enum class Levels { kStudio, kFull };

/// A picture without gaps; I420 is Y, U, V.
struct Job {
  Layout from, to;
  int width, height;
  std::vector<uint8_t> src;
  int64_t Pixels() const { return int64_t{width} * height; }
};
size_t Bytes(Layout layout, int64_t pixels);
Job MakeJob(Layout from, Layout to, int width, int height);

/// Largest difference of a result from BT.709 in double, in steps of a byte; chroma of several pixels is their
/// mean.
double MaxError(const Job& job, Levels levels, const std::vector<uint8_t>& result);

// Each adds its peer to a question, or names it absent. `dst` is the peer's while it runs.
void AddLibyuv(Question* question, const Job& job, std::vector<uint8_t>* dst);
void AddSwscale(Question* question, const Job& job, std::vector<uint8_t>* dst);

}  // namespace bench
