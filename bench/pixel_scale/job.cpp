// SPDX-License-Identifier: Apache-2.0
// The exact results that contenders are held against.

#include "pixel_scale/job.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace bench {

namespace {

double Source(const Job& job, int64_t x, int64_t y, int channel) {
  x = std::clamp<int64_t>(x, 0, job.srcWidth - 1);
  y = std::clamp<int64_t>(y, 0, job.srcHeight - 1);
  const int64_t at = (y * job.srcWidth + x) * 4 + channel;
  if (!job.isFloat) return job.src[static_cast<size_t>(at)];
  float value;
  std::memcpy(&value, job.src.data() + at * 4, 4);
  return static_cast<double>(value) * 255.0;
}

double Cubic(double distance, double a) {
  const double d = std::fabs(distance);
  if (d < 1) return ((a + 2) * d - (a + 3)) * d * d + 1;
  if (d < 2) return ((a * d - 5 * a) * d + 8 * a) * d - 4 * a;
  return 0;
}

struct Tap {
  int64_t pixel;
  double weight;
};

std::vector<Tap> Taps(Method method, double position, double step, double a) {
  std::vector<Tap> taps;
  if (method == Method::kArea) {
    for (int64_t pixel = static_cast<int64_t>(std::floor(position)); static_cast<double>(pixel) < position + step;
         ++pixel) {
      const double low = std::max(position, static_cast<double>(pixel));
      const double high = std::min(position + step, static_cast<double>(pixel) + 1);
      if (high > low) taps.push_back({pixel, (high - low) / step});
    }
    return taps;
  }
  const int64_t base = static_cast<int64_t>(std::floor(position));
  const double fraction = position - static_cast<double>(base);
  if (method == Method::kBilinear) return {{base, 1 - fraction}, {base + 1, fraction}};
  for (int64_t tap = -1; tap <= 2; ++tap) taps.push_back({base + tap, Cubic(static_cast<double>(tap) - fraction, a)});
  return taps;
}

}  // namespace

Sampling CentreSampling(const Job& job, double cubicA) {
  const double stepX = static_cast<double>(job.srcWidth) / job.dstWidth;
  const double stepY = static_cast<double>(job.srcHeight) / job.dstHeight;
  const double half = job.method == Method::kArea ? 0 : 0.5;
  return {half * stepX - half, stepX, half * stepY - half, stepY, cubicA};
}

double MaxError(const Job& job, const Sampling& sampling, const std::vector<uint8_t>& result) {
  double worst = 0;
  for (int y = job.dstHeight / 3; y < job.dstHeight; y += std::max(1, job.dstHeight / 7)) {
    const auto tapsY = Taps(job.method, sampling.startY + y * sampling.stepY, sampling.stepY, sampling.cubicA);
    for (int x = 3; x < job.dstWidth - 3; ++x) {
      const auto tapsX = Taps(job.method, sampling.startX + x * sampling.stepX, sampling.stepX, sampling.cubicA);
      for (int channel = 0; channel < 4; ++channel) {
        double want = 0;
        for (const Tap& ty : tapsY) {
          for (const Tap& tx : tapsX) want += Source(job, tx.pixel, ty.pixel, channel) * tx.weight * ty.weight;
        }
        const size_t at = (static_cast<size_t>(y) * static_cast<size_t>(job.dstWidth) + static_cast<size_t>(x)) * 4 +
                          static_cast<size_t>(channel);
        double got;
        if (job.isFloat) {
          float value;
          std::memcpy(&value, result.data() + at * 4, 4);
          got = static_cast<double>(value) * 255.0;
        } else {
          got = result[at];
          want = std::clamp(want, 0.0, 255.0);
        }
        worst = std::max(worst, std::fabs(want - got));
      }
    }
  }
  return worst;
}

}  // namespace bench
