// SPDX-License-Identifier: Apache-2.0
// The composite modes written down one pixel at a time, in integers and in double.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/dib.h"

namespace testing_support {

inline int32_t Rounded255(int32_t x) { return ((x + 128) + ((x + 128) >> 8)) >> 8; }
inline int32_t Quotient255(int32_t x) { return (x + 127) / 255; }

/// Weight of modes 6 to 12 from the two alphas.
template <typename Value, typename Product>
Value WeightOfMode(int32_t mode, Value s, Value d, Value full, const Product& product) {
  switch (mode) {
    case 6:
      return full - s;
    case 7:
      return d;
    case 8:
      return full - d;
    case 9:
      return product(s, d);
    case 10:
      return full - product(s, d);
    case 11:
      return std::max(s, d);
    default:
      return std::min(s, d);
  }
}

inline tZRPIXEL32 ReferenceComposite(int32_t mode, int32_t w, tZRPIXEL32 to, tZRPIXEL32 from) {
  int32_t d[4] = {to.b, to.g, to.r, to.a};
  const int32_t s[4] = {from.b, from.g, from.r, from.a};
  const bool full = w == 16384;
  const int32_t op8 = (w * 255 + 8192) / 16384;
  int32_t k = 0;
  if (mode >= 6) {
    k = WeightOfMode<int32_t>(mode, s[3], d[3], 255, [](int32_t a, int32_t b) { return Rounded255(a * b); });
    if (!full) k = k * w / 16384;
  }
  for (int c = 0; c < 4; ++c) {
    int32_t& v = d[c];
    if (mode == 0) {
      v = full ? s[c] : v + (s[c] - v) * (w * 255 / 16384) / 256;
    } else if (mode == 1) {
      v = std::min(255, v + (full ? s[c] : (s[c] * w + 8192) >> 14));
    } else if (mode == 2) {
      if (c < 3) v = std::max(0, v - (full ? s[c] : (s[c] * w + 8192) >> 14));
    } else if (mode == 3) {
      v = Rounded255((full ? s[c] : s[c] * w / 16384) * v);
    } else if (mode <= 5 && full) {
      v = std::min(255, Rounded255(v * (255 - s[3])) + s[c]);
    } else if (mode <= 5) {
      const int32_t inverse = 255 - (mode == 4 ? Quotient255(s[3] * op8) : op8);
      v = c < 3 ? Quotient255(v * inverse) + Quotient255(std::min(s[c], s[3]) * op8)
                : Quotient255(s[3] * op8) + Quotient255(v * inverse);
    } else if (c < 3) {
      const int32_t t = k == 0 ? v : std::min(255, s[c] * 255 / k);
      v += (t - v) * k / 256;
    } else {
      v = std::min(255, v + k);
    }
  }
  return {static_cast<uint8_t>(d[0]), static_cast<uint8_t>(d[1]), static_cast<uint8_t>(d[2]),
          static_cast<uint8_t>(d[3])};
}

inline void ReferenceComposite(int32_t mode, double op, double d[4], const double s[4]) {
  double k = 0;
  if (mode >= 6) k = op * WeightOfMode<double>(mode, s[3], d[3], 1.0, [](double a, double b) { return a * b; });
  for (int c = 0; c < 4; ++c) {
    double& v = d[c];
    if (mode == 0) {
      v += (s[c] - v) * op;
    } else if (mode == 1) {
      v += s[c] * op;
    } else if (mode == 2) {
      if (c < 3) v -= s[c] * op;
    } else if (mode == 3) {
      v *= s[c] * op;
    } else if (mode == 4 || (mode == 5 && op == 1)) {
      v = (1 - op * s[3]) * v + op * s[c];
    } else if (mode == 5) {
      v = (1 - op) * v + op * s[c];
    } else if (c < 3) {
      v += ((k == 0 ? v : s[c] / k) - v) * k;
    } else {
      v += k;
    }
    if (c == 3 && (mode == 1 || mode >= 6)) v = std::clamp(v, 0.0, 1.0);
  }
}

}  // namespace testing_support
