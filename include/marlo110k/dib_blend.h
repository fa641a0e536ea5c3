// SPDX-License-Identifier: Apache-2.0
// Blends of two pictures, or of a picture and a colour, and work on single channels.
//
// The calls with `bounds` work on bare rows: 4-byte pixels have four 8-bit channels, 16-byte pixels four floats;
// another pixel width gives E_NOTIMPL. Colours in arrays stand in memory order (blue, green, red, alpha) and are
// nominally 0 to 1. 8-bit products are divided by 256, toward zero, so a full blend of bytes stays one step short.
// Null bits give E_POINTER, other failures are those of ZrDibPrepareCopy; nothing visible is a success. All calls run
// on the calling thread; one picture is written by one call at a time. [any thread]
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// Lays a source that isn't premultiplied over the destination: d += (s - d) * s.a in all four channels.
/// @param matte three doubles: the source was flattened on this colour, which is taken out; alpha then stays. Null
/// for none.
ZR_API HRESULT ZrDibOver(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                         const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                         int32_t bytesPerPixel, const double matte[3]) noexcept;
/// Lays the source under the destination: s + (d - s) * d.a in all four channels.
ZR_API HRESULT ZrDibUnder(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                          const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                          int32_t bytesPerPixel) noexcept;
/// Moves all four channels toward the source by `alpha`, which is cut to 0 to 1.
ZR_API HRESULT ZrDibAbsoluteAlphaValueBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride,
                                            const RECT* dstRect, const void* srcBits, const RECT* srcBounds,
                                            int32_t srcStride, const RECT* srcRect, int32_t bytesPerPixel,
                                            double alpha) noexcept;
/// Moves all four channels toward the source by `alpha` times the source's alpha.
ZR_API HRESULT ZrDibRelativeAlphaValueBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride,
                                            const RECT* dstRect, const void* srcBits, const RECT* srcBounds,
                                            int32_t srcStride, const RECT* srcRect, int32_t bytesPerPixel,
                                            double alpha) noexcept;
/// The weighted sum of both in all four channels. Bytes are cut to 255 only when the weights sum to more than 1 (sums
/// of negative weights keep their low byte), floats to 1 always. Weights are cut to -100 to 100, NaN counts as 0.
ZR_API HRESULT ZrDibWeightedCrossFade(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                      double dstWeight, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                                      const RECT* srcRect, double srcWeight, int32_t bytesPerPixel) noexcept;

/// Blends one pixel, a tZRPIXEL32 or tZRPIXEL128, in place.
using ZRDIBPIXELFN = void (*)(void* destination, const void* source, void* context);
/// Blends one channel, a byte or a float, in place.
using ZRDIBCHANNELFN = void (*)(void* destination, const void* source, void* context);
/// Works on one channel in place.
using ZRDIBINPLACEFN = void (*)(void* channel, void* context);

/// Calls a function for every pixel, from the first row in memory on. @return E_POINTER for a null function.
ZR_API HRESULT ZrDibCustomBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                int32_t bytesPerPixel, ZRDIBPIXELFN function, void* context) noexcept;
/// Calls a function for one channel of every pixel. @return E_POINTER for a null function, E_INVALIDARG for a channel
/// outside 0 to 3.
ZR_API HRESULT ZrDibChannelOp(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                              int32_t dstChannel, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                              const RECT* srcRect, int32_t srcChannel, int32_t bytesPerPixel, ZRDIBCHANNELFN function,
                              void* context) noexcept;
/// The same on one picture.
ZR_API HRESULT ZrDibChannelInPlaceOp(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                                     int32_t bytesPerPixel, int32_t channel, ZRDIBINPLACEFN function,
                                     void* context) noexcept;

/// Moves a picture of type 28, 29 or 32 toward a colour.
/// @param rect null: the whole picture. In pixels, or with ZRDIB_SUBPIXEL in 18.14: pixels that it covers in part are
/// moved in part. @param color four doubles. @param weight 0 to 1, cut to it. @param colorOnly non-zero keeps alpha.
/// @return E_NOTIMPL for another type, E_POINTER for a null descriptor or colour; 0 when nothing is visible.
ZR_API HRESULT ZrDibFadeToColor(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                                const double color[4], double weight, int32_t colorOnly, uint32_t flags) noexcept;
/// Moves the colour channels toward a colour by the colour's alpha. @return E_POINTER for a null colour.
ZR_API HRESULT ZrDibBlendWithColor(void* bits, const RECT* bounds, int32_t stride, const RECT* rect,
                                   int32_t bytesPerPixel, const double color[4]) noexcept;
