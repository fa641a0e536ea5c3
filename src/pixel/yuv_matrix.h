// SPDX-License-Identifier: Apache-2.0
// The matrices between video and colour, and which of them a picture takes.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/yuv.h"

namespace marlo::pixel {

enum class ColorSpace { kBt601, kBt709 };

/// 704 to 720 columns below 720 rows are standard definition.
inline ColorSpace SpaceBySize(int32_t width, int32_t height) noexcept {
  return height < 720 && width >= 704 && width <= 720 ? ColorSpace::kBt601 : ColorSpace::kBt709;
}
inline ColorSpace SpaceOf(int32_t code, int32_t width, int32_t height) noexcept {
  if (code == ZRYUV_BT601) return ColorSpace::kBt601;
  return code == ZRYUV_BT709 ? ColorSpace::kBt709 : SpaceBySize(width, height);
}
inline ColorSpace PackedSpaceOf(int32_t code, int32_t width, int32_t height) noexcept {
  if (code == ZRUYVY_BT601) return ColorSpace::kBt601;
  return code == ZRUYVY_BT709 ? ColorSpace::kBt709 : SpaceBySize(width, height);
}

/// The published coefficients; channels stand in memory order: blue, green, red.
struct Coefficients {
  double luma[3];
  double u[3];
  double v[3];
  double uToBlue, uToGreen, vToGreen, vToRed;
};
inline constexpr Coefficients kBt601 = {
    {0.114, 0.587, 0.299}, {0.5, -0.3313, -0.1687}, {-0.0813, -0.4187, 0.5}, 1.772, -0.34413, -0.71414, 1.402};
inline constexpr Coefficients kBt709 = {
    {0.0722, 0.7152, 0.2126}, {0.5, -0.3854, -0.1146}, {-0.0458, -0.4542, 0.5}, 1.8556, -0.1873, -0.4681, 1.5748};
inline const Coefficients& CoefficientsOf(ColorSpace space) noexcept {
  return space == ColorSpace::kBt601 ? kBt601 : kBt709;
}
/// Chroma spans 224 codes where luma spans 219; bytes leave luma as it is.
inline constexpr double kChromaToLuma = 219.0 / 224.0;

/// From chroma less 128 to what is added to luma, in fixed point with `shift` fraction bits.
struct DecodeMatrix {
  int32_t uToBlue, uToGreen, vToGreen, vToRed;
  int32_t shift;
};
/// Planar pictures. The integers are published as they stand: -5510 isn't -0.34413 to the last place.
inline const DecodeMatrix& PlanarDecode(ColorSpace space) noexcept {
  static constexpr DecodeMatrix kMatrix[] = {{28384, -5510, -11437, 22458, 14}, {29725, -2995, -7493, 25229, 14}};
  return kMatrix[static_cast<int>(space)];
}
/// Packed pictures.
inline const DecodeMatrix& PackedDecode(ColorSpace space) noexcept {
  static constexpr DecodeMatrix kMatrix[] = {{7096, -1378, -2860, 5614, 12}, {7431, -750, -1875, 6306, 12}};
  return kMatrix[static_cast<int>(space)];
}

/// From colour in 4096ths: luma of one pixel, chroma of the sum of two. Channels are blue, green, red.
struct PackedEncodeMatrix {
  int16_t luma[3];
  int16_t u[3];
  int16_t v[3];
};
inline const PackedEncodeMatrix& PackedEncode(ColorSpace space) noexcept {
  static constexpr PackedEncodeMatrix kMatrix[] = {{{467, 2404, 1225}, {1047, -694, -353}, {-170, -877, 1047}},
                                                   {{296, 2929, 871}, {1047, -807, -240}, {-96, -951, 1047}}};
  return kMatrix[static_cast<int>(space)];
}

/// The published coefficients in ten-thousandths, in which they are whole.
struct DecimalMatrix {
  int16_t luma[3];
  int16_t u[3];
  int16_t v[3];
};
inline constexpr int32_t kDecimalOne = 10000;
inline const DecimalMatrix& DecimalEncode(ColorSpace space) noexcept {
  static constexpr DecimalMatrix kMatrix[] = {{{1140, 5870, 2990}, {5000, -3313, -1687}, {-813, -4187, 5000}},
                                              {{722, 7152, 2126}, {5000, -3854, -1146}, {-458, -4542, 5000}}};
  return kMatrix[static_cast<int>(space)];
}

inline uint8_t ClampedByte(int32_t value) noexcept { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

}  // namespace marlo::pixel
