// SPDX-License-Identifier: Apache-2.0
// Colours as hue, saturation and lightness.
//
// Null does nothing. Any thread.
#pragma once

#include "marlo110k/dib.h"
#include "marlo110k/export.h"

/// A colour; each value is nominally 0 to 1. Hue 1/3 is green, 2/3 blue; pure red has hue 1.
struct tZRHSL {
  double hue, saturation, lightness, alpha;
};
static_assert(sizeof(tZRHSL) == 32);

/// From an 8-bit pixel.
ZR_API void ZRRGBA_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL32* pixel) noexcept;
/// From a float pixel of 0 to 1.
ZR_API void ZRRGBAFLOAT_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL128* pixel) noexcept;
/// From an 8-bit pixel.
ZR_API void ZRDIBPIXEL_To_ZRHSL(tZRHSL* hsl, const tZRPIXEL32* pixel) noexcept;
/// From a float pixel that may lie outside 0 to 1. Where the largest and smallest channel add up to nearly 0 or
/// 2, lightness moves by half a millionth so that saturation stays defined.
ZR_API void ZRDIBPIXEL_To_ZRHSL_Float(tZRHSL* hsl, const tZRPIXEL128* pixel) noexcept;

/// To an 8-bit pixel: channels are cut, not rounded, and clamped as alpha is. A hue of 7/6 and more or -1/6 and less
/// leaves the pixel as it is, here and below.
ZR_API void ZRHSL_To_ZRRGBA(tZRPIXEL32* pixel, const tZRHSL* hsl) noexcept;
/// To a float pixel.
ZR_API void ZRHSL_To_ZRRGBAFLOAT(tZRPIXEL128* pixel, const tZRHSL* hsl) noexcept;
/// ZRHSL_To_ZRRGBA.
ZR_API void ZRHSL_To_ZRDIBPIXEL(tZRPIXEL32* pixel, const tZRHSL* hsl) noexcept;
/// The way back from ZRDIBPIXEL_To_ZRHSL_Float.
ZR_API void ZRHSL_To_ZRDIBPIXEL_Float(tZRPIXEL128* pixel, const tZRHSL* hsl) noexcept;
