// SPDX-License-Identifier: Apache-2.0
// What each pixel type means in a descriptor, and which type a descriptor means.

#include <bit>
#include <cstring>

#include "marlo110k/dib.h"
#include "pixel/descriptor.h"

namespace {

constexpr int32_t kColorKindGray = 4096;
constexpr uint32_t kAttribsBytes = sizeof(tZRPIXELATTRIBS);

/// The masks of a BI_BITFIELDS type.
struct Masks {
  uint32_t red, green, blue;
};
constexpr Masks kNoMasks = {};
constexpr Masks kMasks565 = {0xF800, 0x07E0, 0x001F};
constexpr Masks kMasksRgb10 = {0x3FF00000, 0x000FFC00, 0x000003FF};

/// A pixel type. `depths` are red, green, blue, alpha; a gray type has its depth in the last.
struct TypeRow {
  int32_t type;
  int32_t bitCount;
  uint32_t compression;
  uint8_t depths[4];
  Masks masks;
};

constexpr TypeRow kTypes[] = {
    {ZRPIXEL_RGB1, 1, BI_RGB, {0, 0, 0, 1}, kNoMasks},
    {ZRPIXEL_GRAY1, 1, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 1}, kNoMasks},
    {ZRPIXEL_GRAY2, 2, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 2}, kNoMasks},
    {ZRPIXEL_GRAY4, 4, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 4}, kNoMasks},
    {ZRPIXEL_GRAY8, 8, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 8}, kNoMasks},
    {ZRPIXEL_GRAY16, 16, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 16}, kNoMasks},
    {ZRPIXEL_GRAY32F, 32, ZRDIB_FOURCC_ZRGS, {0, 0, 0, 32}, kNoMasks},
    {ZRPIXEL_PAL4, 4, BI_RGB, {8, 8, 8, 0}, kNoMasks},
    {ZRPIXEL_PAL8, 8, BI_RGB, {8, 8, 8, 0}, kNoMasks},
    {ZRPIXEL_RGB555, 16, BI_RGB, {5, 5, 5, 1}, kNoMasks},
    {ZRPIXEL_RGB565, 16, BI_BITFIELDS, {5, 6, 5, 0}, kMasks565},
    {ZRPIXEL_RGB24, 24, BI_RGB, {8, 8, 8, 0}, kNoMasks},
    {ZRPIXEL_RGB32, 32, BI_RGB, {8, 8, 8, 8}, kNoMasks},
    {ZRPIXEL_RGBA32, 32, ZRDIB_FOURCC_ZRDB, {8, 8, 8, 8}, kNoMasks},
    {ZRPIXEL_RGB10, 32, BI_BITFIELDS, {10, 10, 10, 2}, kMasksRgb10},
    {ZRPIXEL_RGBA64, 64, ZRDIB_FOURCC_ZRDB, {16, 16, 16, 16}, kNoMasks},
    {ZRPIXEL_RGBA128F, 128, ZRDIB_FOURCC_ZRDB, {32, 32, 32, 32}, kNoMasks},
    {ZRPIXEL_UYVY, 16, ZRDIB_FOURCC_UYVY, {}, kNoMasks},
    {ZRPIXEL_YUYV, 16, ZRDIB_FOURCC_YUYV, {}, kNoMasks},
    {ZRPIXEL_Y41B, 12, ZRDIB_FOURCC_Y41B, {}, kNoMasks},
    {ZRPIXEL_I420, 12, ZRDIB_FOURCC_I420, {}, kNoMasks},
    {ZRPIXEL_V210, 20, ZRDIB_FOURCC_V210, {}, kNoMasks},
};

const TypeRow* FindType(int32_t type) noexcept {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

/// Which type a compression and a bit count mean. Video layouts hold at any bit count (0).
struct DescriptorRow {
  uint32_t compression;
  int32_t bitCount;
  int32_t type;
};

constexpr DescriptorRow kDescriptors[] = {
    {BI_RGB, 1, ZRPIXEL_RGB1},
    {BI_RGB, 4, ZRPIXEL_PAL4},
    {BI_RGB, 8, ZRPIXEL_PAL8},
    {BI_RGB, 16, ZRPIXEL_RGB555},
    {BI_RGB, 24, ZRPIXEL_RGB24},
    {BI_RGB, 32, ZRPIXEL_RGB32},
    {ZRDIB_FOURCC_ZRDB, 24, ZRPIXEL_RGB24},
    {ZRDIB_FOURCC_ZRDB, 32, ZRPIXEL_RGBA32},
    {ZRDIB_FOURCC_ZRDB, 64, ZRPIXEL_RGBA64},
    {ZRDIB_FOURCC_ZRDB, 128, ZRPIXEL_RGBA128F},
    {ZRDIB_FOURCC_ZRGS, 1, ZRPIXEL_GRAY1},
    {ZRDIB_FOURCC_ZRGS, 2, ZRPIXEL_GRAY2},
    {ZRDIB_FOURCC_ZRGS, 4, ZRPIXEL_GRAY4},
    {ZRDIB_FOURCC_ZRGS, 8, ZRPIXEL_GRAY8},
    {ZRDIB_FOURCC_ZRGS, 16, ZRPIXEL_GRAY16},
    {ZRDIB_FOURCC_ZRGS, 32, ZRPIXEL_GRAY32F},
    {ZRDIB_FOURCC_UYVY, 0, ZRPIXEL_UYVY},
    {ZRDIB_FOURCC_YUYV, 0, ZRPIXEL_YUYV},
    {ZRDIB_FOURCC_Y41B, 0, ZRPIXEL_Y41B},
    {ZRDIB_FOURCC_I420, 0, ZRPIXEL_I420},
    {ZRDIB_FOURCC_V210, 0, ZRPIXEL_V210},
};

/// Which type a bit count and the widths of the three masks mean.
struct BitfieldsRow {
  int32_t bitCount;
  int32_t red, green, blue;
  int32_t type;
};

constexpr BitfieldsRow kBitfields[] = {
    {16, 5, 5, 5, ZRPIXEL_RGB555},
    {16, 5, 6, 5, ZRPIXEL_RGB565},
    {32, 8, 8, 8, ZRPIXEL_RGB32},
    {32, 10, 10, 10, ZRPIXEL_RGB10},
};

int32_t TypeFromMasks(const BITMAPINFOHEADER& header) noexcept {
  uint32_t masks[3];
  std::memcpy(masks, reinterpret_cast<const uint8_t*>(&header) + marlo::pixel::kHeaderBytes, sizeof masks);
  for (const BitfieldsRow& row : kBitfields) {
    if (row.bitCount == header.biBitCount && row.red == ZrCountBits(masks[0]) && row.green == ZrCountBits(masks[1]) &&
        row.blue == ZrCountBits(masks[2])) {
      return row.type;
    }
  }
  return ZRPIXEL_UNKNOWN;
}

}  // namespace

int32_t ZrGetPixelType(const BITMAPINFOHEADER* header) noexcept {
  if (!header) return ZRPIXEL_UNKNOWN;
  if (header->biCompression == BI_BITFIELDS) return TypeFromMasks(*header);
  for (const DescriptorRow& row : kDescriptors) {
    if (row.compression == header->biCompression && (row.bitCount == 0 || row.bitCount == header->biBitCount)) {
      return row.type;
    }
  }
  return ZRPIXEL_UNKNOWN;
}

int32_t ZrGetPixelBitsPerChannel(int32_t type, uint8_t bits[4]) noexcept {
  const TypeRow* row = marlo::pixel::IsExchangeType(type) ? FindType(type) : nullptr;
  if (bits) {
    for (int channel = 0; channel < 4; ++channel) bits[channel] = row ? row->depths[channel] : uint8_t{0};
  }
  return row ? row->bitCount : 0;
}

int32_t ZrPixelTypeToBitAttribs(int32_t type, uint32_t* compression, tZRPIXELATTRIBS* attribs, uint32_t attribsBytes,
                                uint32_t masks[3]) noexcept {
  const TypeRow* row = FindType(type);
  if (!row || (attribs && attribsBytes < kAttribsBytes)) return 0;
  if (compression) *compression = row->compression;
  if (attribs) {
    *attribs = {};
    attribs->size = kAttribsBytes;
    attribs->colorKind = row->compression == ZRDIB_FOURCC_ZRGS ? kColorKindGray : -1;
    attribs->unset = -1;
    attribs->aspect = 1.0;
  }
  if (masks) {
    masks[0] = row->masks.red;
    masks[1] = row->masks.green;
    masks[2] = row->masks.blue;
  }
  return row->bitCount;
}

int32_t ZrCountBits(uint32_t value) noexcept { return std::popcount(value); }

uint32_t ZrCreateBitMask(uint32_t firstBit, uint32_t count) noexcept {
  if (firstBit > 31 || count == 0) return 0;
  const uint32_t ones = count > 31 ? UINT32_MAX : (1u << count) - 1;
  return ones << firstBit;
}

int32_t GetByteOffsetFromChannelEnum(int32_t channel, int32_t bytesPerPixel) noexcept {
  return channel >= 0 && channel <= 3 ? channel * (bytesPerPixel / 4) : 0;
}

int32_t ZrVideo_IsCompressed(const BITMAPINFOHEADER* header) noexcept {
  if (!header) return 0;
  switch (header->biCompression) {
    case BI_RGB:
    case BI_BITFIELDS:
    case ZRDIB_FOURCC_ZRDB:
    case ZRDIB_FOURCC_ZRGS:
      return ZrGetPixelType(header) == ZRPIXEL_UNKNOWN ? 1 : 0;
    default:
      return 1;
  }
}
