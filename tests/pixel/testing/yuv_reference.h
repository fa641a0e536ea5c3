// SPDX-License-Identifier: Apache-2.0
// Video rules written down one pixel at a time, with none of the library's tables.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace testing_support {

using Bgra = std::array<int32_t, 4>;

/// Published coefficients of a space; rows are red, green, blue.
struct Published {
  double y[3], u[3], v[3], vr, vg, ug, ub;
};
inline Published PublishedOf(bool bt601) {
  if (bt601) {
    return {{0.299, 0.587, 0.114}, {-0.1687, -0.3313, 0.5}, {0.5, -0.4187, -0.0813}, 1.402, -0.71414, -0.34413, 1.772};
  }
  return {{0.2126, 0.7152, 0.0722}, {-0.1146, -0.3854, 0.5}, {0.5, -0.4542, -0.0458}, 1.5748, -0.4681, -0.1873, 1.8556};
}

inline int32_t Byte(int32_t x) { return std::clamp(x, 0, 255); }

/// The planar rule over sums: `lumaLog2` and `chromaLog2` are the counts' logarithms.
inline Bgra ReferencePlanar(int32_t luma, int32_t u, int32_t v, bool bt601, int lumaLog2 = 0, int chromaLog2 = 0) {
  const int32_t ub = bt601 ? 28384 : 29725, ug = bt601 ? -5510 : -2995;
  const int32_t vg = bt601 ? -11437 : -7493, vr = bt601 ? 22458 : 25229;
  const int32_t offB = bt601 ? -3624960 : -3796608, offG = bt601 ? 2177408 : 1350656;
  const int32_t offR = bt601 ? -2866432 : -3221120;
  const int32_t count = 1 << chromaLog2, shift = 14 - lumaLog2 + chromaLog2;
  return {Byte((luma + ((u * ub + offB * count) >> shift)) >> lumaLog2),
          Byte((luma + ((u * ug + v * vg + offG * count) >> shift)) >> lumaLog2),
          Byte((luma + ((v * vr + offR * count) >> shift)) >> lumaLog2), 255};
}

inline int32_t Fixed4096(double x) { return static_cast<int32_t>(std::lround(x * 4096 + 1.5e-8)); }

inline Bgra ReferencePacked(int32_t y, int32_t u, int32_t v, bool bt601) {
  const int32_t vr = Fixed4096(bt601 ? 1.370705 : 1.539648), vg = Fixed4096(bt601 ? -0.69816 : -0.457651);
  const int32_t ug = Fixed4096(bt601 ? -0.336419 : -0.183119), ub = Fixed4096(bt601 ? 1.732446 : 1.81418);
  u -= 128, v -= 128, y *= 4096;
  return {Byte((y + u * ub + 2048) >> 12), Byte((y + v * vg + u * ug + 2048) >> 12), Byte((y + v * vr + 2048) >> 12),
          255};
}

/// U, Y, V, Y of two pixels of blue, green, red.
inline std::array<int32_t, 4> ReferenceToUyvy(const uint8_t* left, const uint8_t* right, bool bt601) {
  const Published p = PublishedOf(bt601);
  const double u[3] = {bt601 ? -0.172552 : -0.117216, bt601 ? -0.338864 : -0.394199, 0.511416};
  const double v[3] = {0.511416, bt601 ? -0.428259 : -0.46457, bt601 ? -0.083156 : -0.046846};
  std::array<int32_t, 4> result = {0x80800, 2048, 0x80800, 2048};
  for (int c = 0; c < 3; ++c) {
    const int32_t l = left[2 - c], r = right[2 - c];
    result[0] += Fixed4096(u[c] / 2) * (l + r);
    result[1] += Fixed4096(p.y[c]) * l;
    result[2] += Fixed4096(v[c] / 2) * (l + r);
    result[3] += Fixed4096(p.y[c]) * r;
  }
  for (int32_t& sample : result) sample = std::clamp(sample >> 12, 1, 254);
  return result;
}

inline double Dither16(int32_t x, int32_t y) {
  constexpr int32_t kMatrix[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  return kMatrix[y % 4][x % 4] / 16.0;
}

/// A dithered code of 8 (factor 1) or 10 (factor 4) bits; `value` is in 8-bit codes.
inline int32_t ReferenceCode(double value, int32_t x, int32_t y, int32_t factor) {
  const double high = factor == 1 ? 254.0 : 1019.0;
  const double code = std::clamp(value * factor + Dither16(x, y), 1.0 * factor, high);
  return static_cast<int32_t>(std::floor(code - 0.499999985 + 0.5));
}

/// Chroma line of a row, and rows of a chroma line, in fields or not.
inline int32_t ReferenceLine(int32_t row, int32_t height, bool fields) {
  const int32_t group = row / 4 * 4;
  if (!fields || group + 4 > height) return row / 2;
  return group / 2 + (row - group == 1 || row - group == 3);
}

}  // namespace testing_support
