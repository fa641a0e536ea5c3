// SPDX-License-Identifier: Apache-2.0
// Copies between any two exchange pixel types, and the pixel exchange they stand on.
//
// Pictures, rectangles and strides are as dib.h says; `bounds` is a picture's rectangle in pixels for calls
// that work on bare 4-byte or 16-byte pixels. All calls are for any thread; one picture is written by one
// call at a time. Large pictures are spread over the processors inside the call.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/dib.h"

// ---- Exchange record -------------------------------------------------------------------------------

/// A gamma curve: linear near 0, a power segment above, odd-symmetric below 0.
struct tZRGAMMACURVE {
  uint32_t power;  ///< 1: x^g * (offset + 1) - offset; 0: ((x + offset) * scale)^g.
  float gamma;
  float threshold;
  float offset;
  float scale;
  float linearSlope;  ///< 0 in a record without a curve.
  int32_t tableMax;
  float* table;        ///< tableMax + 2 entries, or null.
  uint8_t* byteTable;  ///< tableMax + 2 entries, or null.
};
static_assert(sizeof(tZRGAMMACURVE) == 48 && offsetof(tZRGAMMACURVE, table) == 32);

/// A blend operation as the exchange runs it.
struct tZRDIBBLENDOP {
  int32_t op;
  float red, green, blue, alpha;  ///< The key or colour.
  float tolerance;
  float weight;
  float weight2;
  int32_t twoStage;
  float lowThreshold;
  float highThreshold;
  const uint16_t* lookup;  ///< 256 words for op 15, indexed by the high byte of the distance; may be null.
};
static_assert(sizeof(tZRDIBBLENDOP) == 56 && offsetof(tZRDIBBLENDOP, lookup) == 48);

/// Forms of a working pixel.
enum ZRXCHG_FORM : int32_t {
  ZRXCHG_BYTES = 0,   ///< tZRPIXEL32.
  ZRXCHG_WORDS = 1,   ///< tZRPIXEL64.
  ZRXCHG_FLOATS = 2,  ///< tZRPIXEL128.
};

/// Four working pixels in the record's form.
union tZRXCHGSLOTS {
  tZRPIXEL32 bytes[4];
  tZRPIXEL64 words[4];
  tZRPIXEL128 floats[4];
};

struct tZRDIBXCHGPARAMS;
using ZRXCHGPIXELFN = void (*)(tZRDIBXCHGPARAMS* exchange);
/// Works on one or four destination pixels of the record's form, in place.
using ZRXCHGBLENDFN = void (*)(const tZRDIBXCHGPARAMS* exchange, void* destination, const void* source);
/// Offsets from the pixel under the read cursor, in 18.14; rows are readNextRow apart.
using ZRXCHGBOXFN = void (*)(tZRDIBXCHGPARAMS* exchange, int32_t startX, int32_t startY, int32_t endX, int32_t endY);

/// Functions and cursors of an exchange between two types. The record holds cursors: one a thread.
/// ZrXCHGGetFunctionPointers fills it except for cursors, palettes and quantizer, which the caller sets. A
/// palette pointer must reach 256 (type 24) or 16 (type 23) entries.
struct tZRDIBXCHGPARAMS {
  uint32_t flags;
  int32_t srcType;
  int32_t dstType;
  ZRXCHGPIXELFN read;              ///< One pixel into slot 0; the cursor advances.
  ZRXCHGPIXELFN write;             ///< Slot 0 to the write cursor, which advances.
  ZRXCHGPIXELFN readInterpolated;  ///< Slot 0 from the fractional position; the cursor stays.
  ZRXCHGPIXELFN readAreaFour;      ///< Not used: null.
  ZRXCHGPIXELFN readFour;          ///< Four pixels into the four slots.
  ZRXCHGPIXELFN writeFour;
  ZRXCHGPIXELFN readVertical;  ///< As readInterpolated along y only.
  ZRXCHGBLENDFN blend;         ///< Null without a blend request.
  ZRXCHGBLENDFN blendFour;
  ZRXCHGPIXELFN blendPrepare;      ///< Not used: null.
  ZRXCHGPIXELFN blendPrepareFour;  ///< Not used: null.
  ZRXCHGBOXFN readBox;             ///< Mean of the whole pixels of a rectangle; type 27 in byte form only, else null.
  int32_t form;                    ///< A ZRXCHG_FORM.
  tZRXCHGSLOTS slots;
  const uint8_t* readCursor;
  int32_t readBit;  ///< Bits of the cursor's byte before the pixel.
  uint8_t* writeCursor;
  int32_t writeBit;
  int32_t readNextRow;  ///< Bytes to the next source row; 0 on the last.
  int32_t fractionX;    ///< 14 bits.
  int32_t fractionY;
  uint8_t featherWidth;
  const RGBQUAD* srcPalette;
  const RGBQUAD* dstPalette;
  const uint8_t* quantizer;
  tZRDIBBLENDOP blendParams;
  tZRGAMMACURVE gammaToFloat;
  tZRGAMMACURVE gammaFromFloat;
};

/// Chooses form and functions for a pair of types. Bytes need flag bit 4 clear and both types among 24, 27,
/// 28, 29, floats both 32; everything else runs in words.
/// @param blendParams may be null.
/// @param dstGamma display exponents; 0 means 2.2222222222222223, others are clamped to 0.5 to 4.
/// @return E_POINTER for a null record, E_INVALIDARG for a type outside 16 to 32, E_NOTIMPL for an operation
/// without a function in the form.
ZR_API HRESULT ZrXCHGGetFunctionPointers(int32_t dstType, int32_t srcType, uint32_t flags, tZRDIBXCHGPARAMS* exchange,
                                         const tZRDIBBLENDOP* blendParams, double dstGamma, double srcGamma) noexcept;

// ---- Copies ----------------------------------------------------------------------------------------

/// Copies a picture into another of any size and exchange type.
/// @param flags ZRDIB_FLAGS.
/// @return ZR_E_UNSUPPORTED_MEDIA when a type lies outside 16 to 32 or nothing of a whole-pixel copy is
/// visible; 0 when nothing of a sub-pixel copy is; E_POINTER for a null descriptor; E_OUTOFMEMORY.
ZR_API HRESULT ZrDibCopy(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect, int32_t dstStride,
                         const BITMAPINFOHEADER* srcHeader, const void* srcBits, const RECT* srcRect, int32_t srcStride,
                         uint32_t flags, double dstGamma, double srcGamma) noexcept;
/// Copies rows of pixels without conversion. @return as ZrDibPrepareCopy.
ZR_API HRESULT ZrDibCopyUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                 const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                 int32_t bytesPerPixel) noexcept;
/// Copies one channel (0 to 3) of 4-byte or 16-byte pixels into another. @return as ZrDibPrepareCopy;
/// E_NOTIMPL for another pixel width, E_INVALIDARG for another channel.
ZR_API HRESULT ZrDibChannelCopyUnscaled(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                                        int32_t dstChannel, const void* srcBits, const RECT* srcBounds,
                                        int32_t srcStride, const RECT* srcRect, int32_t srcChannel,
                                        int32_t bytesPerPixel) noexcept;

// ---- Setting ---------------------------------------------------------------------------------------

/// Fills a rectangle with a colour of nominally 0 to 1 through the exchange (0.5 becomes 128 in a byte).
/// With ZRDIB_SUBPIXEL the rectangle is in 18.14 and truncated to whole pixels.
/// @return E_NOTIMPL for a type outside 16 to 32; 0 when nothing is visible.
ZR_API HRESULT ZrDibSet(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride, float red,
                        float green, float blue, float alpha, uint32_t flags) noexcept;
/// The same with a colour in memory order: blue, green, red, alpha.
ZR_API HRESULT ZrDibFillRect(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                             const float color[4], uint32_t flags) noexcept;
/// @return E_NOTIMPL, always.
ZR_API HRESULT ZrDibFillRectChannel(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                                    int32_t channel, double value, uint32_t flags) noexcept;
/// Fills 4-byte or 16-byte pixels. The colour is clamped to 0 to 1; bytes are truncated (0.5 becomes 127).
/// @return E_NOTIMPL for another pixel width.
ZR_API HRESULT ZrDibSetUnscaled(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                                double red, double green, double blue, double alpha) noexcept;
/// Sets one channel (0 to 3) of 4-byte or 16-byte pixels to `value` (clamped to 0 to 1; bytes are truncated).
/// @return E_NOTIMPL for another pixel width, E_INVALIDARG for another channel.
ZR_API HRESULT ZrDibChannelSet(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                               int32_t channel, double value) noexcept;
/// Reads one pixel in words; x and y count from the top left.
/// @return E_NOTIMPL for a type outside 16 to 32 or a place outside the picture, E_POINTER for null.
ZR_API HRESULT ZrDibGetPixel(const BITMAPINFOHEADER* header, const void* bits, int32_t stride, int32_t x, int32_t y,
                             tZRPIXEL64* pixel) noexcept;
/// Writes one pixel. @return E_NOTIMPL for the type, E_INVALIDARG for the place, E_POINTER for null.
ZR_API HRESULT ZrDibSetPixel(const BITMAPINFOHEADER* header, void* bits, int32_t stride, int32_t x, int32_t y,
                             const tZRPIXEL64* pixel) noexcept;

// ---- In place --------------------------------------------------------------------------------------

/// Mirrors a rectangle left to right, top to bottom or both; types 23 to 32.
/// @return E_NOTIMPL for another type, E_POINTER for null; 0 when nothing is visible.
ZR_API HRESULT ZrDibFlip(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride,
                         int32_t horizontal, int32_t vertical) noexcept;
/// Exchanges the first and the third channel; types 25 to 32 (a palette index has no channels: E_NOTIMPL).
ZR_API HRESULT ZrDibSwapRB(const BITMAPINFOHEADER* header, void* bits, const RECT* rect, int32_t stride) noexcept;
/// Puts the plain mean of the three colour channels of 4-byte or 16-byte pixels into all three.
/// @param flag not used. @return E_NOTIMPL for another pixel width.
ZR_API HRESULT ZrDibDesaturate(void* bits, const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel,
                               uint32_t flag) noexcept;

// ---- Transfer functions ----------------------------------------------------------------------------

/// Transfer characteristics.
enum ZRTRANSFER : int32_t {
  ZRTRANSFER_GAMMA22 = 0,
  ZRTRANSFER_GAMMA28 = 1,
  ZRTRANSFER_BT709 = 2,
  ZRTRANSFER_SMPTE240M = 3,
  ZRTRANSFER_LINEAR = 4,
  ZRTRANSFER_POWER = 5,  ///< Exponent 1 / gamma, 1 for gamma 0, in both directions.
};
/// Decodes an 8-bit picture (28, 29) into a float one (32) of the same size, alpha included.
/// @return E_INVALIDARG for other types, sizes or transfers, E_POINTER for null.
ZR_API HRESULT ZrDibLinearize_ZRRGBAFLOAT_From_RGBA(const BITMAPINFOHEADER* dstHeader, void* dstBits,
                                                    const RECT* dstRect, int32_t dstStride,
                                                    const BITMAPINFOHEADER* srcHeader, const void* srcBits,
                                                    const RECT* srcRect, int32_t srcStride, int32_t transfer,
                                                    double gamma) noexcept;
/// Encodes a float picture (32) in place, alpha included.
/// @param quantized non-zero: through 256 steps, else exactly.
ZR_API HRESULT ZrDibApplyTransferFunc_ZRRGBAFLOAT(const BITMAPINFOHEADER* header, void* bits, const RECT* rect,
                                                  int32_t stride, int32_t transfer, double gamma,
                                                  int32_t quantized) noexcept;
