// SPDX-License-Identifier: Apache-2.0
// One scaling that ours and the peers do on the same buffers, and the error against exact arithmetic.
#pragma once

#include <cstdint>
#include <vector>

#include "harness/harness.h"

namespace bench {

enum class Method { kBilinear, kBicubic, kArea };

/// Four channels a pixel, bytes or floats; rows without gaps.
struct Job {
  Method method;
  bool isFloat;
  int srcWidth, srcHeight, dstWidth, dstHeight;
  std::vector<uint8_t> src;  ///< Also the floats' memory.
  int PixelBytes() const { return isFloat ? 16 : 4; }
  double Pixels() const { return static_cast<double>(dstWidth) * dstHeight; }
};

/// Where a contender samples: source coordinate (pixel centres at whole numbers) of destination pixel n is
/// start + n * step; for boxes, the box's left edge.
struct Sampling {
  double startX, stepX, startY, stepY;
  double cubicA = -0.5;
};
/// Samples at the centres of pixels of equal pictures.
Sampling CentreSampling(const Job& job, double cubicA);

/// Largest difference of a result from the same samples in double, over some rows; in steps of a byte, or of
/// 1/255 for floats.
double MaxError(const Job& job, const Sampling& sampling, const std::vector<uint8_t>& result);

// Each adds its peer to a question, or names it absent. `kept` holds the peer's buffers while it runs.
struct Kept {
  std::vector<uint8_t> dst;
};
void AddOpenCv(Question* question, const Job& job, Kept* kept);
void AddPixman(Question* question, const Job& job, Kept* kept);
void AddLibyuv(Question* question, const Job& job, Kept* kept);

}  // namespace bench
