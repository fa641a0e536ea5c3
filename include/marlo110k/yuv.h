// SPDX-License-Identifier: Apache-2.0
// Video pictures in luma and chroma, to 8-bit and float colour and back.
//
// 8-bit colour is studio range here: luma passes unchanged, black is 16 and white 235. Float colour is studio
// range (0 to 255 stand for 0 to 1) where a gamma argument is 0, and full range (16 to 235) for any other.
// Video pictures are stored top-down, colour pictures bottom-up; functions with explicit planes write the first
// row to the destination pointer and go on by its stride. Strides are bytes and may be negative. The matrix is
// chosen by the picture's size unless a code names it: BT.601 for 704 to 720 columns below 720 rows, else
// BT.709. Any thread; what runs on several processors inside the call is said.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/contract/picture.h"
#include "marlo110k/export.h"

/// Values of biCompression that only the functions here know.
inline constexpr uint32_t ZRYUV_FOURCC_IYUV = 0x56555949;
inline constexpr uint32_t ZRYUV_FOURCC_YV12 = 0x32315659;

/// Colour spaces of all functions but the packed family; any other value chooses by size.
enum ZRYUV_COLORSPACE : int32_t {
  ZRYUV_BT601 = 515,
  ZRYUV_BT709 = 516,
};
/// Colour spaces of ZrUYVY2RGBA and its kin; any other value chooses by size.
enum ZRUYVY_COLORSPACE : int32_t {
  ZRUYVY_BT601 = 1,
  ZRUYVY_BT709 = 2,
};

/// What a video picture doesn't say itself.
struct tZRYUVPARAMS {
  int32_t colorSpace;  ///< A ZRYUV_COLORSPACE.
  int32_t fieldMode;   ///< 1 upper, 2 lower field first: interlaced chroma in 4:2:0. Any other: progressive.
  double gamma;        ///< Display exponent of the video; 0 is 2.2222222222222223, others are clamped to 0.5 to 4.
};
static_assert(sizeof(tZRYUVPARAMS) == 16 && offsetof(tZRYUVPARAMS, gamma) == 8);

/// Size and planes of a video picture by its compression and size ("UYVY", "YUYV", "v210", "Y41B", "I420",
/// "IYUV", "YV12").
/// @param offsets may be null; bytes of a luma row, offset of U, bytes of a U row, offset of V, bytes of a V
/// row, with zeros where the layout has no planes.
/// @return bytes of the picture; 0 with zero offsets for null, another compression, a size below one pixel or
/// a picture of 4 GiB or more. [any thread]
ZR_API uint32_t ZrYUVImageBytesAndOffsets(const BITMAPINFOHEADER* header, uint32_t offsets[5]) noexcept;

/// Converts a video picture to colour. "UYVY", "YUYV", "I420" and "v210" go to float pixels (type 32) and to
/// 4-byte pixels (any other type). `scale` 1 to 3 makes a picture smaller by 2, 4 or 8: "UYVY" and "YUYV" by
/// leaving out pixels, "I420" by averaging (1 and 2 only); 4-byte destinations only.
/// @param gamma range and display exponent of float colour. A video exponent that differs turns float colour
/// by a curve; bytes have no curve.
/// @param dstStride 0 takes the computed row length.
/// @param planes as ZrYUVImageBytesAndOffsets gives them; null computes them.
/// @param flags no effect.
/// @return E_POINTER for null; E_FAIL for a format or scale without a conversion; E_INVALIDARG for a
/// destination that isn't the source's size divided by the scale, an odd width, an odd height of "I420" and
/// rows that are too short. Float and reduced pictures use several processors.
ZR_API HRESULT ZrYUV_YUVToRGB(const BITMAPINFOHEADER* dstHeader, double gamma, void* dstBits, int32_t dstStride,
                              const BITMAPINFOHEADER* srcHeader, const tZRYUVPARAMS* params, const void* srcBits,
                              const uint32_t planes[5], int32_t scale, uint32_t flags) noexcept;
/// The other way, with ordered dither. Sources are float pixels (type 32) or 4-byte pixels (28 and 29);
/// samples stay within 1 to 254, 10-bit ones within 4 to 1019.
/// @param scale 0 only.
/// @return as ZrYUV_YUVToRGB; E_FAIL also for another source type. Uses several processors.
ZR_API HRESULT ZrYUV_RGBToYUV(const BITMAPINFOHEADER* dstHeader, const tZRYUVPARAMS* params, void* dstBits,
                              const uint32_t dstPlanes[5], const BITMAPINFOHEADER* srcHeader, double srcGamma,
                              const void* srcBits, int32_t srcStride, int32_t scale, uint32_t flags) noexcept;
/// Rearranges "I420" or "IYUV" to "YV12" or "UYVY" (one chroma line for two rows). Another pair of formats
/// does nothing and gives S_OK.
/// @return E_POINTER for any null, planes included; E_INVALIDARG for sizes that differ or are odd.
ZR_API HRESULT ZrYUV_YUVToYUV(const BITMAPINFOHEADER* dstHeader, void* dstBits, const uint32_t dstPlanes[5],
                              const BITMAPINFOHEADER* srcHeader, const void* srcBits,
                              const uint32_t srcPlanes[5]) noexcept;
/// Cuts 10-bit 4:2:2 to bytes: the low two bits of each sample are dropped.
/// @return E_POINTER for null; E_INVALIDARG for an empty picture, an odd width, a destination stride below
/// width * 2 or a source stride below width * 8 / 6.
ZR_API HRESULT ZrYUV_v210_TO_UYVY(void* dst, const void* src, int32_t dstStride, int32_t srcStride, int32_t width,
                                  int32_t height) noexcept;

/// "UYVY" rows without gaps to 4-byte pixels with alpha 255.
/// @param colorSpace a ZRUYVY_COLORSPACE.
/// @return E_POINTER for null; E_INVALIDARG for an empty picture, an odd width or a stride below one row.
ZR_API HRESULT ZrUYVY2RGBA(void* dst, const void* src, int32_t dstStride, int32_t width, int32_t height,
                           int32_t colorSpace) noexcept;
/// ZrUYVY2RGBA to 3-byte pixels.
ZR_API HRESULT ZrUYVY2RGB(void* dst, const void* src, int32_t dstStride, int32_t width, int32_t height,
                          int32_t colorSpace) noexcept;
/// 4-byte pixels to "UYVY", without dither; 0 and 255 are never written. Codes as ZrUYVY2RGBA.
ZR_API HRESULT ZrRGBA2UYVY(void* dst, const void* src, int32_t srcStride, int32_t dstStride, int32_t width,
                           int32_t height, int32_t colorSpace) noexcept;
/// ZrRGBA2UYVY from 3-byte pixels.
ZR_API HRESULT ZrRGB2UYVY(void* dst, const void* src, int32_t srcStride, int32_t dstStride, int32_t width,
                          int32_t height, int32_t colorSpace) noexcept;

/// Planar 4:2:0 to 4-byte pixels with alpha 255. Each chroma sample serves two columns and two rows: neighbours,
/// or in field modes 1 and 2 rows 0 and 2, then 1 and 3 of each four (two rows left over are neighbours).
/// @param colorSpace a ZRYUV_COLORSPACE.
/// @return E_POINTER for null; E_INVALIDARG for an empty picture, an odd size or a stride below one row.
ZR_API HRESULT ZrYUV420ToRGBA(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                              int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                              int32_t fieldMode, int32_t colorSpace) noexcept;
/// Half width and full height; `width` and `height` are the source's here and below.
ZR_API HRESULT ZrYUV420ToRGBA_HalfHorz(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                       int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                       int32_t fieldMode, int32_t colorSpace) noexcept;
/// Half size from both fields: the average of 2x2 luma and of two chroma lines. No field mode applies.
ZR_API HRESULT ZrYUV420ToRGBA_Half_BlendFields(int32_t width, int32_t height, void* dst, int32_t dstStride,
                                               const void* y, int32_t yStride, const void* u, int32_t uStride,
                                               const void* v, int32_t vStride, int32_t fieldMode,
                                               int32_t colorSpace) noexcept;
/// Half size: both fields blended, or in field mode 1 the even rows alone, in 2 the odd rows alone.
ZR_API HRESULT ZrYUV420ToRGBA_Half(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                   int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                   int32_t fieldMode, int32_t colorSpace) noexcept;
/// Quarter width and half height, both fields blended. No field mode applies; the width of the quarter forms is
/// a multiple of 4.
ZR_API HRESULT ZrYUV420ToRGBA_QuarterHorz_HalfVert_BlendFields(int32_t width, int32_t height, void* dst,
                                                               int32_t dstStride, const void* y, int32_t yStride,
                                                               const void* u, int32_t uStride, const void* v,
                                                               int32_t vStride, int32_t fieldMode,
                                                               int32_t colorSpace) noexcept;
/// Quarter size, both fields blended. No field mode applies; a height's last two rows beyond a multiple of 4
/// are left out.
ZR_API HRESULT ZrYUV420ToRGBA_Quarter_BlendFields(int32_t width, int32_t height, void* dst, int32_t dstStride,
                                                  const void* y, int32_t yStride, const void* u, int32_t uStride,
                                                  const void* v, int32_t vStride, int32_t fieldMode,
                                                  int32_t colorSpace) noexcept;
/// Quarter size: both fields blended, or in field mode 1 the even rows alone, in 2 the odd rows alone.
ZR_API HRESULT ZrYUV420ToRGBA_Quarter(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                      int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                      int32_t fieldMode, int32_t colorSpace) noexcept;
/// Planar 4:2:2 to 4-byte pixels with alpha 255; codes as ZrYUV420ToRGBA, any height.
ZR_API HRESULT ZrYUV422PlanarToRGBA(int32_t width, int32_t height, void* dst, int32_t dstStride, const void* y,
                                    int32_t yStride, const void* u, int32_t uStride, const void* v, int32_t vStride,
                                    int32_t colorSpace) noexcept;
