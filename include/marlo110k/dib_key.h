// SPDX-License-Identifier: Apache-2.0
// Blending through the pixel exchange, and keying: making a matte from a picture and laying the picture through it.
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// Values of tZRDIBBLENDPARAMS::maskOp.
enum ZRKEYMASK : uint32_t {
  ZRKEYMASK_DISTANCE = 0,    ///< Distance of the colour from the key.
  ZRKEYMASK_GRAY = 1,        ///< The picture as gray.
  ZRKEYMASK_BRIGHTNESS = 2,  ///< The mean of the channels, stretched between the thresholds.
};

/// Blends a picture into another of any exchange type.
///
/// Without `twoStage` the operation `op` runs on each pixel, with the key in `red`, `green`, `blue` (0 to 1), distances
/// as sums over the channels, and weights of 0 to 1. With `twoStage` 1 a gray matte of the destination area is made
/// from the source by `maskOp` with the key in the doubles, blurred by a box of `blurRadius` pixels to each side
/// (from half a pixel on), and then either copied to the destination (`output` 1), or the source is laid through it:
/// with `matteAction` 0 the matte colour is taken out and the matte stands for the source's alpha, else the matte is
/// the weight of the move toward the source.
/// @param flags ZRDIB_FLAGS; with ZRDIB_SUBPIXEL rectangles are in 18.14 and cut to whole pixels. Quality 3 and 4 make
/// a 16-bit matte.
/// @return E_POINTER for a null descriptor or record; E_NOTIMPL for an operation that doesn't exist in the working form
/// of the types (floats have 0, 3, 9, 10, 16 and 18) or a `maskOp` above 3; E_OUTOFMEMORY; 0 when nothing is visible.
/// [any thread; spreads rows over the processors; one call at a time writes a picture]
ZR_API HRESULT ZrDibBlend(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                          const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect,
                          int32_t srcStride, const tZRDIBBLENDPARAMS* blendParams, uint32_t flags) noexcept;
