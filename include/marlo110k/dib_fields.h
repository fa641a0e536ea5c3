// SPDX-License-Identifier: Apache-2.0
// Fields of interlaced pictures. Field 1 is the rows 0, 2, 4, ... from the top, field 0 the others.
//
// Pictures are bottom-up, rectangles count from the top. All calls run on the calling thread but for
// ZrDibCopyInterlace, which spreads rows over the processors. [any thread; one call at a time writes a picture]
#pragma once

#include <cstdint>

#include "marlo110k/dib.h"

/// Copies the rows of one field from one picture into another.
/// @return E_POINTER for a null descriptor, E_NOTIMPL for pictures of different width, height or depth.
ZR_API HRESULT ZrDibMergeFields(const BITMAPINFOHEADER* dstHeader, void* dstBits, int32_t dstStride,
                                const BITMAPINFOHEADER* srcHeader, const void* srcBits, int32_t srcStride,
                                int32_t field) noexcept;
/// The same with columns, for a picture that lies on its side: pixels of 4 or 16 bytes. Columns start at 1 when the
/// field is the complement of the width's lowest bit, else at 0.
/// @return as ZrDibMergeFields; E_NOTIMPL for other pixels.
ZR_API HRESULT ZrDibMergeFieldsRotated(const BITMAPINFOHEADER* dstHeader, void* dstBits, int32_t dstStride,
                                       const BITMAPINFOHEADER* srcHeader, const void* srcBits, int32_t srcStride,
                                       int32_t field) noexcept;
/// Smooths with the binomial 3x3 filter into a destination of the same size, which must be other memory; edges repeat.
/// @return E_NOTIMPL for a pixel width other than 4 and 16, E_POINTER for null bits, else as ZrDibPrepareCopy.
ZR_API HRESULT ZrDibFieldBlend(void* dstBits, const RECT* dstBounds, int32_t dstStride, const RECT* dstRect,
                               const void* srcBits, const RECT* srcBounds, int32_t srcStride, const RECT* srcRect,
                               int32_t bytesPerPixel) noexcept;
/// Smooths vertically in place with 1, 2, 1; edges repeat. @param reserved not read.
/// @return E_NOTIMPL for a pixel width other than 4 and 16, E_POINTER for null bits, E_OUTOFMEMORY.
ZR_API HRESULT ZrDibInterlaceFilter(void* bits, int32_t width, int32_t height, int32_t stride, const RECT* rect,
                                    int32_t reserved, int32_t bytesPerPixel) noexcept;
/// Copies the rows of one field through the pixel exchange; every other row becomes the mean of its neighbours in the
/// source.
/// @param flags ZRDIB_FLAGS. @return E_POINTER for a null descriptor; E_NOTIMPL for different sizes; 0 when nothing is
/// visible; else as ZrXCHGGetFunctionPointers.
ZR_API HRESULT ZrDibCopyInterlace(const BITMAPINFOHEADER* dstHeader, void* dstBits, const RECT* dstRect,
                                  int32_t dstStride, const BITMAPINFOHEADER* srcHeader, const void* srcBits,
                                  const RECT* srcRect, int32_t srcStride, int32_t field, uint32_t flags) noexcept;
