// SPDX-License-Identifier: Apache-2.0
// The scalers' rules written down one pixel at a time, without tables, lines or tricks.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "marlo110k/dib.h"

namespace testing_support {

/// A picture seen from its top row.
template <typename Channel>
struct View {
  uint8_t* top;
  int32_t stride;
  Channel Get(int32_t column, int32_t row, int32_t channel) const {
    Channel value;
    std::memcpy(&value, top + int64_t{row} * stride + (int64_t{column} * 4 + channel) * int64_t{sizeof(Channel)},
                sizeof value);
    return value;
  }
  void Set(int32_t column, int32_t row, int32_t channel, Channel value) const {
    std::memcpy(top + int64_t{row} * stride + (int64_t{column} * 4 + channel) * int64_t{sizeof(Channel)}, &value,
                sizeof value);
  }
};

inline void CubicWeights(double t, double weights[4]) {
  const double u0 = 1 + t, u2 = 1 - t, u3 = 2 - t;
  weights[0] = ((-0.5 * u0 + 2.5) * u0 - 4) * u0 + 2;
  weights[1] = (1.5 * t - 2.5) * t * t + 1;
  weights[2] = (1.5 * u2 - 2.5) * u2 * u2 + 1;
  weights[3] = ((-0.5 * u3 + 2.5) * u3 - 4) * u3 + 2;
}

/// One axis of the reference: for each destination pixel the source pixels and weights, in 18.14.
struct ReferenceAxis {
  struct Tap {
    int32_t pixel;
    int64_t weight14;
    double weight;
  };
  struct Pixel {
    int32_t index;
    int32_t coverage;
    std::vector<Tap> taps;
  };
  bool box = false;
  int64_t length = 0;
  std::vector<Pixel> pixels;

  ReferenceAxis(int32_t dstStart, int32_t dstEnd, int32_t finalStart, int32_t step, int32_t clippedStart,
                int32_t clippedEnd, bool cubic, bool area) {
    box = area && step > 16384;
    length = step;
    const int32_t firstPixel = dstStart / 16384;
    const int32_t lastPixel = (dstEnd + 16383) / 16384 - 1;
    const int32_t low = clippedStart / 16384;
    const int32_t high = (clippedEnd + 16383) / 16384 - 1;
    int64_t position = box ? finalStart : int64_t{finalStart} + step / 2 + 8192;
    for (int32_t index = firstPixel; index <= lastPixel; ++index) {
      int32_t coverage = 16384;
      if (firstPixel == lastPixel) {
        coverage = dstEnd - dstStart;
      } else if (index == firstPixel) {
        coverage = (firstPixel + 1) * 16384 - dstStart;
      } else if (index == lastPixel) {
        coverage = dstEnd - lastPixel * 16384;
      }
      Pixel pixel = {index, coverage, {}};
      const auto add = [&](int64_t at, int64_t weight14, double weight) {
        pixel.taps.push_back({static_cast<int32_t>(std::clamp<int64_t>(at, low, high)), weight14, weight});
      };
      const int64_t base = position >> 14;
      const int64_t fraction = position & 16383;
      if (box) {
        for (int64_t at = base; at * 16384 < position + step; ++at) {
          const int64_t part =
              std::min<int64_t>((at + 1) * 16384, position + step) - std::max<int64_t>(at * 16384, position);
          add(at, part, static_cast<double>(part) / 16384);
        }
      } else if (cubic) {
        double weights[4], table[4];
        CubicWeights(static_cast<double>(fraction >> 2) / 4096, weights);
        for (int tap = 0; tap < 4; ++tap) table[tap] = std::trunc(weights[tap] * 16384);
        for (int tap = 0; tap < 4; ++tap) add(base - 2 + tap, static_cast<int64_t>(table[tap]), weights[tap]);
      } else {
        add(base - 1, 16384 - fraction, static_cast<double>(16384 - fraction) / 16384);
        add(base, fraction, static_cast<double>(fraction) / 16384);
      }
      pixels.push_back(pixel);
      position += index == firstPixel ? int64_t{step} * coverage / 16384 : step;
    }
  }
};

/// Scales by a prepared record. 8-bit results are exact, float ones are computed in double.
template <typename Channel>
void ReferenceScale(const tZRDIBSUBPIXELPARAMS& record, bool cubic, bool area, bool noEdgeBlend) {
  const ReferenceAxis xs(record.dstClipped.left, record.dstClipped.right, record.srcFinal.left, record.stepX,
                         record.srcClipped.left, record.srcClipped.right, cubic, area);
  const ReferenceAxis ys(record.dstClipped.top, record.dstClipped.bottom, record.srcFinal.top, record.stepY,
                         record.srcClipped.top, record.srcClipped.bottom, cubic, area);
  const View<Channel> dst = {record.dstTop, record.dstTopStride};
  const View<Channel> src = {const_cast<uint8_t*>(record.srcTop), record.srcTopStride};
  for (const auto& y : ys.pixels) {
    for (const auto& x : xs.pixels) {
      const int32_t coverage = static_cast<int32_t>(int64_t{x.coverage} * y.coverage / 16384);
      for (int channel = 0; channel < 4; ++channel) {
        const Channel below = dst.Get(x.index, y.index, channel);
        if constexpr (sizeof(Channel) == 1) {
          int64_t value = 0;
          if (xs.box && ys.box) {
            for (const auto& ty : y.taps) {
              for (const auto& tx : x.taps) {
                value += src.Get(tx.pixel, ty.pixel, channel) * (tx.weight14 * ty.weight14 / 16384);
              }
            }
            value /= xs.length * ys.length / 16384;
          } else {
            for (const auto& tx : x.taps) {
              int64_t column = 0;
              for (const auto& ty : y.taps) column += src.Get(tx.pixel, ty.pixel, channel) * ty.weight14;
              column = ys.box ? column / ys.length : (column + 8192) / 16384;
              value += column * tx.weight14;
            }
            value = xs.box ? value / xs.length : (value + 8192) / 16384;
          }
          int32_t result = static_cast<int32_t>(std::clamp<int64_t>(value, 0, 255));
          if (coverage != 16384 && !noEdgeBlend) {
            const int32_t alpha = (coverage * 255 / 16384) & 255;
            const int32_t t = (result - below) * alpha + 128;
            result = std::clamp(below + ((t + (t >> 8)) >> 8), 0, 255);
          }
          dst.Set(x.index, y.index, channel, static_cast<uint8_t>(result));
        } else {
          double value = 0;
          for (const auto& ty : y.taps) {
            for (const auto& tx : x.taps) value += src.Get(tx.pixel, ty.pixel, channel) * tx.weight * ty.weight;
          }
          if (xs.box) value *= 16384.0 / static_cast<double>(xs.length);
          if (ys.box) value *= 16384.0 / static_cast<double>(ys.length);
          if (coverage != 16384 && !noEdgeBlend) value = below + (value - below) * coverage / 16384.0;
          dst.Set(x.index, y.index, channel, static_cast<float>(value));
        }
      }
    }
  }
}

}  // namespace testing_support
