// SPDX-License-Identifier: Apache-2.0
// Video layouts with separate luma and chroma.
#pragma once

#include <cstdint>

#include "marlo110k/contract/picture.h"
#include "marlo110k/export.h"

/// Size and planes of a video picture by its compression and size ("UYVY", "YUYV", "v210", "Y41B", "I420",
/// "IYUV", "YV12").
/// @param offsets may be null; bytes of a luma row, offset of U, bytes of a U row, offset of V, bytes of a V
/// row, with zeros where the layout has no planes.
/// @return bytes of the picture; 0 with zero offsets for null, another compression, a size below one pixel or
/// a picture of 4 GiB or more. [any thread]
ZR_API uint32_t ZrYUVImageBytesAndOffsets(const BITMAPINFOHEADER* header, uint32_t offsets[5]) noexcept;
