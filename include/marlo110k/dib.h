// SPDX-License-Identifier: Apache-2.0
// The picture model: pixel types, descriptors, allocation, and the prepare functions that turn two
// descriptors and optional rectangles into the clipped record that a pixel kernel runs on.
//
// A picture is a BITMAPINFOHEADER, then its colour table or masks, then its pixels; the pixels may also lie
// elsewhere and then come as a separate pointer (null: those behind the descriptor). Rows are stored
// bottom-up, rectangles count from the top. A stride of 0 means the computed row length; any other is taken
// as it is and may be negative. Float pixels lie on 4-byte boundaries. A null rectangle is the whole picture.
// Descriptors and records carry no locks: any thread, one at a time for what is written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/picture.h"
#include "marlo110k/export.h"

// ---- Pixel types -----------------------------------------------------------------------------------

/// Layout of a pixel. Types 16 to 32 are exchange types, 64 to 68 video layouts for colour conversion only.
/// The numbers are stored and passed between modules.
enum tZRPIXELTYPE : int32_t {
  ZRPIXEL_UNKNOWN = 0,
  ZRPIXEL_RGB1 = 16,      ///< 1-bit index, most significant bit leftmost; the palette isn't used.
  ZRPIXEL_GRAY1 = 17,     ///< 1-bit gray.
  ZRPIXEL_GRAY2 = 18,     ///< 2-bit gray.
  ZRPIXEL_GRAY4 = 19,     ///< 4-bit gray.
  ZRPIXEL_GRAY8 = 20,     ///< 8-bit gray.
  ZRPIXEL_GRAY16 = 21,    ///< 16-bit gray.
  ZRPIXEL_GRAY32F = 22,   ///< Float gray, nominally 0 to 1.
  ZRPIXEL_PAL4 = 23,      ///< 4-bit palette index, high nibble leftmost.
  ZRPIXEL_PAL8 = 24,      ///< 8-bit palette index.
  ZRPIXEL_RGB555 = 25,    ///< Blue in bits 0 to 4, green 5 to 9, red 10 to 14.
  ZRPIXEL_RGB565 = 26,    ///< Blue in bits 0 to 4, green 5 to 10, red 11 to 15.
  ZRPIXEL_RGB24 = 27,     ///< Bytes B, G, R.
  ZRPIXEL_RGB32 = 28,     ///< Bytes B, G, R and one that exchange reads as opaque.
  ZRPIXEL_RGBA32 = 29,    ///< tZRPIXEL32.
  ZRPIXEL_RGB10 = 30,     ///< Blue in bits 0 to 9, green 10 to 19, red 20 to 29, alpha 30 and 31.
  ZRPIXEL_RGBA64 = 31,    ///< tZRPIXEL64.
  ZRPIXEL_RGBA128F = 32,  ///< tZRPIXEL128.
  ZRPIXEL_UYVY = 64,      ///< Packed 4:2:2.
  ZRPIXEL_YUYV = 65,      ///< Packed 4:2:2.
  ZRPIXEL_Y41B = 66,      ///< Planar 4:1:1.
  ZRPIXEL_I420 = 67,      ///< Planar 4:2:0.
  ZRPIXEL_V210 = 68,      ///< Packed 10-bit 4:2:2.
};

/// Values of biCompression beside BI_RGB and BI_BITFIELDS: four letters, the first in the low byte.
inline constexpr uint32_t ZRDIB_FOURCC_ZRDB = 0x4244525A;  ///< True colour with meaningful alpha.
inline constexpr uint32_t ZRDIB_FOURCC_ZRGS = 0x5347525A;  ///< Grayscale.
inline constexpr uint32_t ZRDIB_FOURCC_UYVY = 0x59565955;
inline constexpr uint32_t ZRDIB_FOURCC_YUYV = 0x56595559;
inline constexpr uint32_t ZRDIB_FOURCC_Y41B = 0x42313459;
inline constexpr uint32_t ZRDIB_FOURCC_I420 = 0x30323449;
inline constexpr uint32_t ZRDIB_FOURCC_V210 = 0x30313276;

/// 8-bit pixel.
struct tZRPIXEL32 {
  uint8_t b, g, r, a;
};
static_assert(sizeof(tZRPIXEL32) == 4);

/// 16-bit pixel, 65535 is full.
struct tZRPIXEL64 {
  uint16_t b, g, r, a;
};
static_assert(sizeof(tZRPIXEL64) == 8);

/// Float pixel, nominally 0 to 1.
struct tZRPIXEL128 {
  float b, g, r, a;
};
static_assert(sizeof(tZRPIXEL128) == 16);

/// One pixel in 18.14 fixed point: the unit of sub-pixel rectangles and of steps.
inline constexpr int32_t kZrSubpixelOne = 16384;

/// Flags of copies, composites and blends.
enum ZRDIB_FLAGS : uint32_t {
  ZRDIB_QUALITY_MASK = 0x0000000F,       ///< 1 to 4 replace bits 4 to 8; 0 leaves them as they are.
  ZRDIB_WORD_PIXELS = 0x00000010,        ///< Force the 16-bit working form.
  ZRDIB_INTERPOLATE = 0x00000020,        ///< Sample between pixels; expand bytes by 257 rather than 256.
  ZRDIB_ACCURATE_BLEND = 0x00000040,     ///< The accurate row of the blend table.
  ZRDIB_FEATHER_LAST_ROWS = 0x00001000,  ///< Last in memory: the top of the picture.
  ZRDIB_FEATHER_FIRST_ROWS = 0x00002000,
  ZRDIB_FEATHER_LEFT = 0x00004000,
  ZRDIB_FEATHER_RIGHT = 0x00008000,
  ZRDIB_FEATHER_WIDTH_MASK = 0x00FF0000,  ///< Pixels, in bits 16 to 23.
  ZRDIB_SUBPIXEL = 0x01000000,            ///< Rectangles are in 18.14.
  ZRDIB_AREA = 0x02000000,                ///< Box filter where the picture gets smaller.
  ZRDIB_BICUBIC = 0x04000000,             ///< Bicubic instead of bilinear.
  ZRDIB_NO_EDGE_BLEND = 0x08000000,       ///< Partly covered border pixels are overwritten.
};

// ---- Records ---------------------------------------------------------------------------------------

/// What DibPrepareGenericParam makes of a copy between whole pixels. Sizes, rectangles and insets are in
/// pixels, strides in bytes, steps in 18.14.
struct tZRDIBGENERICPARAMS {
  uint32_t scaled;  ///< Non-zero when the clipped sizes differ.
  int32_t srcStartX;
  int32_t srcStartY;
  int32_t srcStepX;
  int32_t srcStepY;
  const BITMAPINFOHEADER* dstHeader;
  double dstGamma;
  uint8_t* dstBits;
  uint8_t* dstFirst;     ///< Byte of the rectangle's left pixel in its bottom row.
  int32_t dstBitOffset;  ///< Bits of that byte before the pixel.
  RECT dstRect;
  int32_t dstWidth;
  int32_t dstHeight;
  int32_t dstStride;
  const RGBQUAD* dstPalette;  ///< Null when biClrUsed is 0.
  const BITMAPINFOHEADER* srcHeader;
  double srcGamma;
  const uint8_t* srcBits;
  const uint8_t* srcFirst;
  int32_t srcBitOffset;
  RECT srcRect;
  int32_t srcWidth;
  int32_t srcHeight;
  int32_t srcStride;
  const RGBQUAD* srcPalette;
  uint8_t* quantizer;    ///< Inverse palette, for a palette destination only.
  int32_t srcInsets[4];  ///< What clipping took off the source: left, top, right, bottom.
  uint32_t flags;
};
static_assert(sizeof(tZRDIBGENERICPARAMS) == 200);
static_assert(offsetof(tZRDIBGENERICPARAMS, dstHeader) == 24 && offsetof(tZRDIBGENERICPARAMS, dstRect) == 60);
static_assert(offsetof(tZRDIBGENERICPARAMS, srcHeader) == 96 && offsetof(tZRDIBGENERICPARAMS, srcRect) == 132);
static_assert(offsetof(tZRDIBGENERICPARAMS, quantizer) == 168 && offsetof(tZRDIBGENERICPARAMS, flags) == 192);

/// What DibPrepareSubpixelParam and ZrPrepareSubpixelParam make of a copy between fractional rectangles.
/// All rectangles are in 18.14. The second function leaves headers, gammas and palettes 0.
struct tZRDIBSUBPIXELPARAMS {
  const BITMAPINFOHEADER* dstHeader;
  double dstGamma;
  uint8_t* dstTop;       ///< The picture's top row.
  int32_t dstTopStride;  ///< From a row to the one below it.
  const RGBQUAD* dstPalette;
  RECT dstClipped;
  RECT dstRect;  ///< As the caller gave it.
  const BITMAPINFOHEADER* srcHeader;
  double srcGamma;
  const uint8_t* srcTop;
  int32_t srcTopStride;
  const RGBQUAD* srcPalette;
  RECT srcFinal;    ///< The part of the source that the clipped destination shows.
  RECT srcClipped;  ///< The caller's source rectangle within the source.
  int32_t stepX;    ///< Source units a destination pixel, from pixel centre to pixel centre.
  int32_t stepY;
  int32_t scaleX;  ///< Source size divided by destination size.
  int32_t scaleY;
  uint8_t* quantizer;
  uint32_t flags;
};
static_assert(sizeof(tZRDIBSUBPIXELPARAMS) == 176);
static_assert(offsetof(tZRDIBSUBPIXELPARAMS, dstClipped) == 40 && offsetof(tZRDIBSUBPIXELPARAMS, srcFinal) == 112);
static_assert(offsetof(tZRDIBSUBPIXELPARAMS, stepX) == 144 && offsetof(tZRDIBSUBPIXELPARAMS, flags) == 168);

/// Two areas of equal size for code that walks pixels itself.
struct tZRDIBPLUGINPARAMS {
  const BITMAPINFOHEADER* dstHeader;
  uint8_t* dstBits;
  uint8_t* dstFirst;
  int32_t dstBitOffset;
  RECT dstRect;
  int32_t dstWidth;
  int32_t dstHeight;
  int32_t dstStride;
  const BITMAPINFOHEADER* srcHeader;
  const uint8_t* srcBits;
  const uint8_t* srcFirst;
  int32_t srcBitOffset;
  RECT srcRect;
  int32_t srcWidth;
  int32_t srcHeight;
  int32_t srcStride;
  int32_t srcInsets[4];
  uint32_t flags;
};
static_assert(sizeof(tZRDIBPLUGINPARAMS) == 136);
static_assert(offsetof(tZRDIBPLUGINPARAMS, srcHeader) == 56 && offsetof(tZRDIBPLUGINPARAMS, srcInsets) == 112);

/// Attributes of a pixel type.
struct tZRPIXELATTRIBS {
  uint32_t size;        ///< 64.
  int32_t colorKind;    ///< -1, or 4096 for grayscale.
  uint32_t reserved;    ///< 0.
  int32_t unset;        ///< -1.
  uint64_t reserved64;  ///< 0.
  double aspect;        ///< 1.0.
  uint8_t zeros[32];
};
static_assert(sizeof(tZRPIXELATTRIBS) == 64 && offsetof(tZRPIXELATTRIBS, aspect) == 24);

struct tZRCOMPOSITORFUNCS;
/// The request of a composite.
struct tZRDIBCOMPOSITEPARAMS {
  uint32_t reserved;                     ///< Free for the caller.
  int32_t mode;                          ///< 0 to 12, or -1 for a custom compositor.
  float opacity;                         ///< 0 to 1.
  const tZRCOMPOSITORFUNCS* compositor;  ///< Read for mode -1 only.
};
static_assert(sizeof(tZRDIBCOMPOSITEPARAMS) == 24 && offsetof(tZRDIBCOMPOSITEPARAMS, compositor) == 16);

/// A caller's compositor. The 8-bit functions run on several threads at once.
struct tZRCOMPOSITORFUNCS {
  void (*pixel8)(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t opacity255);
  void (*row8)(tZRPIXEL32* destination, const tZRPIXEL32* source, int32_t opacity255, int32_t widthPixels);
  void* reserved;  ///< Free for the caller.
  void (*pixelFloat)(tZRPIXEL128* destination, const tZRPIXEL128* source, float opacity);
  void (*rowFloat)(tZRPIXEL128* destination, const tZRPIXEL128* source, float opacity, int32_t widthPixels);
};
static_assert(sizeof(tZRCOMPOSITORFUNCS) == 40);

/// The request of a keyer blend.
struct tZRDIBBLENDPARAMS {
  int32_t op;
  float red, green, blue, alpha;
  float tolerance;
  float weight;
  float weight2;
  int32_t twoStage;  ///< 1: make a matte and apply it.
  double keyRed, keyGreen, keyBlue;
  double matteRed, matteGreen, matteBlue;
  double lowThreshold;
  double highThreshold;
  double blurRadius;  ///< Pixels.
  uint32_t maskOp;
  uint32_t matteAction;
  uint32_t output;
};
static_assert(sizeof(tZRDIBBLENDPARAMS) == 128);
static_assert(offsetof(tZRDIBBLENDPARAMS, keyRed) == 40 && offsetof(tZRDIBBLENDPARAMS, blurRadius) == 104);

// ---- Types and descriptors -------------------------------------------------------------------------

/// Does nothing; kept for hosts that call it. @return 0.
ZR_API HRESULT ZrDib_Initialize() noexcept;
/// Pixel type of a descriptor, a tZRPIXELTYPE; 0 for an unknown combination or null. For BI_BITFIELDS the
/// three masks behind the descriptor are read.
ZR_API int32_t ZrGetPixelType(const BITMAPINFOHEADER* header) noexcept;
/// Depths of red, green, blue, alpha; a gray type has its depth in the fourth.
/// @return bits of the whole pixel, or 0 with four zeros for a type outside 16 to 32.
ZR_API int32_t ZrGetPixelBitsPerChannel(int32_t type, uint8_t bits[4]) noexcept;
/// How a descriptor of the type is written. Each result may be null.
/// @param attribs a tZRPIXELATTRIBS of `attribsBytes` bytes (below 64 the call fails).
/// @param masks red, green, blue; zeros unless the compression is BI_BITFIELDS.
/// @return bits of a pixel, or 0 for an unknown type.
ZR_API int32_t ZrPixelTypeToBitAttribs(int32_t type, uint32_t* compression, tZRPIXELATTRIBS* attribs,
                                       uint32_t attribsBytes, uint32_t masks[3]) noexcept;
/// Set bits of a word.
ZR_API int32_t ZrCountBits(uint32_t value) noexcept;
/// `count` ones from bit `firstBit` up; bits past 31 are dropped.
ZR_API uint32_t ZrCreateBitMask(uint32_t firstBit, uint32_t count) noexcept;
/// Bytes from a pixel's start to a channel: channels 0 to 3 in memory order, 0 for any other number.
ZR_API int32_t GetByteOffsetFromChannelEnum(int32_t channel, int32_t bytesPerPixel) noexcept;

/// Fills a descriptor. A palette of `clrUsed` entries, or the masks of a BI_BITFIELDS type, are stored behind
/// it, so `header` needs room for them. Without a palette and with clrUsed 0 a type of up to 8 bits gets
/// (1 << bits) - 1 entries: 255 for 8 bits, not 256.
/// @param imageBytes may be null.
/// @return E_INVALIDARG for null, an unknown type, a negative size, or a picture of 4 GiB or more.
ZR_API HRESULT ZrVideo_InitBitmapInfo(BITMAPINFOHEADER* header, int32_t type, int32_t width, int32_t height,
                                      const RGBQUAD* palette, int32_t clrUsed, uint32_t* imageBytes) noexcept;
/// The same, and the bytes of descriptor with table or masks. Any pointer may be null; `header` then isn't
/// filled, and if given needs room for what stands behind it.
ZR_API HRESULT ZrDibInfo(uint32_t* headerBytes, uint32_t* imageBytes, BITMAPINFOHEADER* header, int32_t type,
                         int32_t width, int32_t height, const RGBQUAD* palette, int32_t clrUsed) noexcept;
/// Flags of ZrDibAlloc.
enum ZRDIB_ALLOC : uint32_t {
  ZRDIB_ALLOC_ZEROED = 1,
};
/// Takes one block for descriptor, table and pixels. Free it with ZrDibFree.
/// @param tag a debugging value of the caller, not used.
/// @return E_POINTER for a null result pointer, E_INVALIDARG as ZrVideo_InitBitmapInfo, E_OUTOFMEMORY; the
/// result is null on failure.
ZR_API HRESULT ZrDibAlloc(BITMAPINFOHEADER** dib, int32_t type, int32_t width, int32_t height, const RGBQUAD* palette,
                          int32_t clrUsed, uint32_t flags, uint32_t tag) noexcept;
/// Frees a block of ZrDibAlloc; null is allowed. @return 0.
ZR_API HRESULT ZrDibFree(BITMAPINFOHEADER* dib, uint32_t flags) noexcept;

/// 1 for a compression that isn't plain pixels and for a descriptor of no known type; 0 for null.
ZR_API int32_t ZrVideo_IsCompressed(const BITMAPINFOHEADER* header) noexcept;
/// "RGB", "RGB (bitfields)", "RGBA", "Grayscale", or the four letters. Cut to `characters` with termination.
/// @return E_POINTER for null or no room.
ZR_API HRESULT ZrVideo_GetFormatText(uint32_t compression, char16_t* buffer, uint32_t characters) noexcept;
/// Width, height and bit count as "1920x1080x32".
ZR_API HRESULT ZrVideo_GetAttribsText(const BITMAPINFOHEADER* header, char16_t* buffer, uint32_t characters) noexcept;
/// The same from numbers.
ZR_API HRESULT ZrVideo_GetAttribsTextEx(int32_t width, int32_t height, int32_t bitCount, char16_t* buffer,
                                        uint32_t characters) noexcept;
/// Converts a colour table; the fourth byte becomes 0. The arrays may be the same memory.
ZR_API HRESULT ZrVideo_PaletteRGBAFromEntry(RGBQUAD* destination, const PALETTEENTRY* source, int32_t count) noexcept;
/// The other way.
ZR_API HRESULT ZrVideo_PaletteEntryFromRGBA(PALETTEENTRY* destination, const RGBQUAD* source, int32_t count) noexcept;

// ---- Preparing an operation ------------------------------------------------------------------------

/// Makes the inverse palette of a descriptor: 32768 bytes, indexed by (red >> 3) << 10 | (green >> 3) << 5 |
/// (blue >> 3). Colour table entry 255 is never found. The block is freed by the cleanup of the record that
/// holds it, or by ZrDibFreeColorQuantizer.
/// @return E_INVALIDARG for biClrUsed 0, E_OUTOFMEMORY.
ZR_API HRESULT ZrDibCreateColorQuantizer(uint8_t** table, const BITMAPINFOHEADER* header) noexcept;
/// Frees an inverse palette; null is allowed.
ZR_API void ZrDibFreeColorQuantizer(uint8_t* table) noexcept;

/// Clips two rectangles to their pictures. What is cut off one is taken off the other in proportion to the
/// width of the picture that cut it, not of the rectangle: a copy at scale 1 that hangs over an edge becomes a
/// scaled one. A null rectangle gives the whole picture, whatever the other's clipping took from it.
/// @param insets what was cut off the source (left, top, right, bottom); may be null.
ZR_API void ZrDibPrepareRects(const BITMAPINFOHEADER* dstHeader, RECT* outDstRect, const RECT* dstRect,
                              const BITMAPINFOHEADER* srcHeader, RECT* outSrcRect, const RECT* srcRect,
                              int32_t insets[4]) noexcept;
/// Clips one rectangle to its bounds, in pixels, and gives size and first pixel (base + top * stride + left *
/// bytesPerPixel). When nothing is visible the results stay unwritten. @return E_POINTER for null bounds.
ZR_API HRESULT ZrDibPrepareSet(int32_t* outWidth, int32_t* outHeight, uint8_t** outFirst, void* bits,
                               const RECT* bounds, int32_t stride, const RECT* rect, int32_t bytesPerPixel) noexcept;
/// Clips two rectangles of equal size to their bounds. Nothing visible is success with zero results.
/// @return E_INVALIDARG when the rectangles differ in size, or their visible parts do and can't be aligned;
/// E_POINTER for null bounds.
ZR_API HRESULT ZrDibPrepareCopy(int32_t* outWidth, int32_t* outHeight, const uint8_t** outSrcFirst,
                                uint8_t** outDstFirst, void* dstBits, const RECT* dstBounds, int32_t dstStride,
                                const RECT* dstRect, const void* srcBits, const RECT* srcBounds, int32_t srcStride,
                                const RECT* srcRect, int32_t bytesPerPixel) noexcept;
/// ZrDibPrepareCopy that also hands back the two clipped rectangles.
ZR_API HRESULT ZrDibPrepareTransform(RECT* outSrcRect, int32_t* outWidth, int32_t* outHeight,
                                     const uint8_t** outSrcFirst, uint8_t** outDstFirst, void* dstBits,
                                     const RECT* dstBounds, int32_t dstStride, const RECT* dstRect, const void* srcBits,
                                     const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                                     int32_t bytesPerPixel, RECT* outDstRect) noexcept;

/// Fills the record of a copy between whole pixels. @return 1 for work to do; 0 when a type lies outside 16 to
/// 32, nothing is visible or the quantizer can't be made. Only after 1 the cleanup is due.
ZR_API int32_t DibPrepareGenericParam(tZRDIBGENERICPARAMS* record, const BITMAPINFOHEADER* dstHeader, double dstGamma,
                                      void* dstBits, const RECT* dstRect, int32_t dstStride,
                                      const BITMAPINFOHEADER* srcHeader, double srcGamma, const void* srcBits,
                                      const RECT* srcRect, int32_t srcStride, uint32_t flags) noexcept;
/// Frees the record's quantizer.
ZR_API void DibCleanupGenericParam(tZRDIBGENERICPARAMS* record) noexcept;
/// Fills the record of a copy between rectangles in 18.14, of which each must span a whole pixel.
/// @return as DibPrepareGenericParam.
ZR_API int32_t DibPrepareSubpixelParam(tZRDIBSUBPIXELPARAMS* record, const BITMAPINFOHEADER* dstHeader, double dstGamma,
                                       void* dstBits, const RECT* dstRect, int32_t dstStride,
                                       const BITMAPINFOHEADER* srcHeader, double srcGamma, const void* srcBits,
                                       const RECT* srcRect, int32_t srcStride, uint32_t flags) noexcept;
/// Frees the record's quantizer.
ZR_API void DibCleanupSubpixelParam(tZRDIBSUBPIXELPARAMS* record) noexcept;
/// The same from bare pictures: pointers and strides are taken as given, so a bottom-up picture comes with its
/// top row and a negative stride. The destination may be as small as a sixteenth of a pixel. @return 1 or 0.
ZR_API int32_t ZrPrepareSubpixelParam(tZRDIBSUBPIXELPARAMS* record, void* dstBits, const SIZE* dstSize,
                                      int32_t dstStride, const RECT* dstRect, const void* srcBits, const SIZE* srcSize,
                                      int32_t srcStride, const RECT* srcRect) noexcept;
/// Fills the record for two areas of equal size and type (28, 29 or 32).
/// @param outIsFloat 1 for type 32. @param outEmpty 1 when nothing is visible. Both may be null.
/// @return E_POINTER for a null record or descriptor; E_INVALIDARG for other or unequal types, even 28 with
/// 29, and for unequal clipped sizes.
ZR_API HRESULT DibPreparePluginParam(tZRDIBPLUGINPARAMS* record, const BITMAPINFOHEADER* dstHeader, void* dstBits,
                                     const RECT* dstRect, int32_t dstStride, const BITMAPINFOHEADER* srcHeader,
                                     const void* srcBits, const RECT* srcRect, int32_t srcStride, uint32_t flags,
                                     int32_t* outIsFloat, int32_t* outEmpty) noexcept;
