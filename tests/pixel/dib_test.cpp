// SPDX-License-Identifier: Apache-2.0
// Descriptors, pixel types, palettes and video sizes.

#include "marlo110k/dib.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "marlo110k/dib_copy.h"
#include "marlo110k/yuv.h"
#include "platform/base/memory.h"
#include "testing/random.h"

namespace {

using ::testing::ElementsAre;
using testing_support::Random;

struct TypeFacts {
  int32_t type;
  int32_t bits;
  uint32_t compression;
  uint8_t depths[4];
  bool isVideo;
};

constexpr TypeFacts kFacts[] = {
    {16, 1, 0, {0, 0, 0, 1}, false},
    {17, 1, 0x5347525A, {0, 0, 0, 1}, false},
    {18, 2, 0x5347525A, {0, 0, 0, 2}, false},
    {19, 4, 0x5347525A, {0, 0, 0, 4}, false},
    {20, 8, 0x5347525A, {0, 0, 0, 8}, false},
    {21, 16, 0x5347525A, {0, 0, 0, 16}, false},
    {22, 32, 0x5347525A, {0, 0, 0, 32}, false},
    {23, 4, 0, {8, 8, 8, 0}, false},
    {24, 8, 0, {8, 8, 8, 0}, false},
    {25, 16, 0, {5, 5, 5, 1}, false},
    {26, 16, 3, {5, 6, 5, 0}, false},
    {27, 24, 0, {8, 8, 8, 0}, false},
    {28, 32, 0, {8, 8, 8, 8}, false},
    {29, 32, 0x4244525A, {8, 8, 8, 8}, false},
    {30, 32, 3, {10, 10, 10, 2}, false},
    {31, 64, 0x4244525A, {16, 16, 16, 16}, false},
    {32, 128, 0x4244525A, {32, 32, 32, 32}, false},
    {64, 16, 0x59565955, {}, true},
    {65, 16, 0x56595559, {}, true},
    {66, 12, 0x42313459, {}, true},
    {67, 12, 0x30323449, {}, true},
    {68, 20, 0x30313276, {}, true},
};

/// A descriptor with room for masks or a table.
struct Roomy {
  BITMAPINFOHEADER header;
  uint8_t room[1024];
};

TEST(PixelType, EveryTypeSurvivesItsDescriptor) {
  for (const TypeFacts& facts : kFacts) {
    SCOPED_TRACE(facts.type);
    Roomy roomy = {};
    ASSERT_EQ(0, ZrVideo_InitBitmapInfo(&roomy.header, facts.type, 16, 4, nullptr, 0, nullptr));
    EXPECT_EQ(facts.type, ZrGetPixelType(&roomy.header));
    EXPECT_EQ(facts.bits, roomy.header.biBitCount);
    EXPECT_EQ(facts.compression, roomy.header.biCompression);
    EXPECT_EQ(40u, roomy.header.biSize);
    uint8_t depths[4] = {9, 9, 9, 9};
    EXPECT_EQ(facts.isVideo ? 0 : facts.bits, ZrGetPixelBitsPerChannel(facts.type, depths));
    EXPECT_THAT(depths, ::testing::ElementsAreArray(facts.depths));
    tZRPIXELATTRIBS attribs;
    EXPECT_EQ(facts.bits, ZrPixelTypeToBitAttribs(facts.type, nullptr, &attribs, 64, nullptr));
    EXPECT_EQ(facts.compression == ZRDIB_FOURCC_ZRGS ? 4096 : -1, attribs.colorKind);
    EXPECT_EQ(64u, attribs.size);
    EXPECT_EQ(-1, attribs.unset);
    EXPECT_EQ(1.0, attribs.aspect);
    EXPECT_EQ(0, ZrPixelTypeToBitAttribs(facts.type, nullptr, &attribs, 63, nullptr));
    EXPECT_EQ(facts.isVideo ? 1 : 0, ZrVideo_IsCompressed(&roomy.header));
  }
  for (int32_t type : {-1, 0, 15, 33, 63, 69}) {
    uint8_t depths[4] = {9, 9, 9, 9};
    EXPECT_EQ(0, ZrGetPixelBitsPerChannel(type, depths));
    EXPECT_THAT(depths, ElementsAre(0, 0, 0, 0));
    Roomy roomy = {};
    EXPECT_EQ(E_INVALIDARG, ZrVideo_InitBitmapInfo(&roomy.header, type, 1, 1, nullptr, 0, nullptr));
  }
}

TEST(PixelType, DescriptorsBesideTheTable) {
  struct Case {
    uint32_t compression;
    uint16_t bits;
    uint32_t masks[3];
    int32_t type;
    int32_t compressed;
  };
  const Case cases[] = {
      {BI_RGB, 2, {}, 0, 1},
      {BI_RGB, 64, {}, 0, 1},
      {ZRDIB_FOURCC_ZRDB, 24, {}, 27, 0},
      {ZRDIB_FOURCC_ZRDB, 8, {}, 0, 1},
      {ZRDIB_FOURCC_ZRGS, 24, {}, 0, 1},
      {BI_BITFIELDS, 16, {0x7C00, 0x3E0, 0x1F}, 25, 0},
      {BI_BITFIELDS, 16, {0x1F, 0x7E0, 0xF800}, 26, 0},  // Masks are counted, not placed.
      {BI_BITFIELDS, 32, {0xFF0000, 0xFF00, 0xFF}, 28, 0},
      {BI_BITFIELDS, 16, {0xFF0000, 0xFF00, 0xFF}, 0, 1},
      {BI_BITFIELDS, 24, {0xFF0000, 0xFF00, 0xFF}, 0, 1},
      {1, 8, {}, 0, 1},  // Run-length coded.
      {ZRDIB_FOURCC_V210, 77, {}, 68, 1},
  };
  for (const Case& c : cases) {
    Roomy roomy = {};
    roomy.header.biSize = 40;
    roomy.header.biCompression = c.compression;
    roomy.header.biBitCount = c.bits;
    std::memcpy(roomy.room, c.masks, sizeof c.masks);
    EXPECT_EQ(c.type, ZrGetPixelType(&roomy.header)) << c.compression << " " << c.bits;
    EXPECT_EQ(c.compressed, ZrVideo_IsCompressed(&roomy.header)) << c.compression << " " << c.bits;
  }
  EXPECT_EQ(0, ZrGetPixelType(nullptr));
}

TEST(PixelType, BitMasksAndChannels) {
  EXPECT_EQ(0u, ZrCreateBitMask(3, 0));
  EXPECT_EQ(0xF800u, ZrCreateBitMask(11, 5));
  EXPECT_EQ(0xFFFFFFFFu, ZrCreateBitMask(0, 32));
  EXPECT_EQ(0xFFFFFFF0u, ZrCreateBitMask(4, 40));
  EXPECT_EQ(0u, ZrCreateBitMask(32, 5));
  EXPECT_EQ(32, ZrCountBits(0xFFFFFFFF));
  EXPECT_EQ(2, ZrCountBits(0x80000001));
  EXPECT_EQ(12, GetByteOffsetFromChannelEnum(3, 16));
  EXPECT_EQ(2, GetByteOffsetFromChannelEnum(2, 4));
  EXPECT_EQ(0, GetByteOffsetFromChannelEnum(4, 16));
  EXPECT_EQ(0, GetByteOffsetFromChannelEnum(-1, 16));
}

TEST(DibAlloc, SizesTablesAndPixels) {
  struct Case {
    int32_t type, width, height, clrUsed;
    bool palette;
    uint32_t headerBytes, imageBytes, biClrUsed;
  };
  const Case cases[] = {
      {29, 1920, 1080, 0, false, 40, 8294400, 0},
      {27, 3, 2, 0, false, 40, 24, 0},
      {27, 5, 1, 0, false, 40, 16, 0},
      {16, 1, 1, 0, false, 44, 4, 1},
      {17, 33, 1, 0, false, 44, 8, 1},
      {24, 5, 2, 0, false, 40 + 255 * 4, 16, 255},
      {20, 5, 2, 0, false, 40 + 255 * 4, 16, 255},
      {24, 5, 2, 16, true, 40 + 64, 16, 16},
      {24, 5, 2, 0, true, 40 + 1024, 16, 0},  // The pixels' place follows from no entries: a full table.
      {24, 5, 2, -7, false, 40 + 255 * 4, 16, 255},
      {26, 2, 2, 5, false, 52, 8, 0},
      {32, 3, 1, 0, false, 40, 48, 0},
      {66, 4, 2, 0, false, 40, 16, 0},  // Not among the layouts with sizes of their own: rows of 32 bits.
      {67, 720, 480, 0, false, 40, 518400, 0},
      {68, 1280, 2, 0, false, 40, 3456 * 2, 0},
      {29, 0, 7, 0, false, 40, 0, 0},
  };
  RGBQUAD palette[16];
  for (int index = 0; index < 16; ++index) palette[index] = {1, 2, 3, static_cast<uint8_t>(index)};
  const int64_t before = plat::LiveBlocks();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.type);
    BITMAPINFOHEADER* dib = nullptr;
    ASSERT_EQ(0, ZrDibAlloc(&dib, c.type, c.width, c.height, c.palette ? palette : nullptr, c.clrUsed, 0, 77));
    uint32_t headerBytes = 0, imageBytes = 0;
    EXPECT_EQ(0, ZrDibInfo(&headerBytes, &imageBytes, nullptr, c.type, c.width, c.height, c.palette ? palette : nullptr,
                           c.clrUsed));
    EXPECT_EQ(c.headerBytes, headerBytes);
    EXPECT_EQ(c.imageBytes, imageBytes);
    EXPECT_EQ(c.imageBytes, dib->biSizeImage);
    EXPECT_EQ(c.biClrUsed, dib->biClrUsed);
    EXPECT_EQ(headerBytes + imageBytes, plat::BlockBytes(dib));
    if (c.clrUsed == 16) {
      EXPECT_EQ(0, std::memcmp(palette, dib + 1, sizeof palette));
    }
    EXPECT_EQ(0, ZrDibFree(dib, 0));
  }
  EXPECT_EQ(before, plat::LiveBlocks());
  EXPECT_EQ(0, ZrDibFree(nullptr, 0));
}

TEST(DibAlloc, RefusesWhatItCantHold) {
  BITMAPINFOHEADER* dib = reinterpret_cast<BITMAPINFOHEADER*>(8);
  struct Case {
    int32_t type, width, height;
  };
  for (const Case& c : {Case{29, -1, 4}, Case{29, 4, -1}, Case{29, 1 << 30, 1}, Case{32, 40000, 40000},
                        Case{67, 70000, 70000}, Case{15, 1, 1}}) {
    EXPECT_EQ(E_INVALIDARG, ZrDibAlloc(&dib, c.type, c.width, c.height, nullptr, 0, 0, 0)) << c.width;
    EXPECT_EQ(nullptr, dib);
  }
  plat::FailAllocation(1);
  EXPECT_EQ(E_OUTOFMEMORY, ZrDibAlloc(&dib, 29, 4, 4, nullptr, 0, 1, 0));
  EXPECT_EQ(nullptr, dib);
  plat::FailAllocation(0);
  EXPECT_EQ(E_POINTER, ZrDibAlloc(nullptr, 29, 4, 4, nullptr, 0, 1, 0));
  EXPECT_EQ(E_INVALIDARG, ZrVideo_InitBitmapInfo(nullptr, 29, 4, 4, nullptr, 0, nullptr));
}

TEST(DibText, FormatsAndAttributes) {
  struct Case {
    uint32_t compression;
    const char16_t* text;
  };
  char16_t buffer[20];
  for (const Case& c : {Case{BI_RGB, u"RGB"}, Case{BI_BITFIELDS, u"RGB (bitfields)"}, Case{ZRDIB_FOURCC_ZRDB, u"RGBA"},
                        Case{ZRDIB_FOURCC_ZRGS, u"Grayscale"}, Case{ZRDIB_FOURCC_V210, u"v210"}}) {
    EXPECT_EQ(0, ZrVideo_GetFormatText(c.compression, buffer, 20));
    EXPECT_EQ(std::u16string(c.text), buffer);
  }
  EXPECT_EQ(0, ZrVideo_GetFormatText(BI_BITFIELDS, buffer, 6));
  EXPECT_EQ(std::u16string(u"RGB ("), buffer);
  BITMAPINFOHEADER header = {};
  header.biWidth = 1920;
  header.biHeight = 1080;
  header.biBitCount = 32;
  EXPECT_EQ(0, ZrVideo_GetAttribsText(&header, buffer, 20));
  EXPECT_EQ(std::u16string(u"1920x1080x32"), buffer);
  EXPECT_EQ(E_POINTER, ZrVideo_GetAttribsText(nullptr, buffer, 20));
  EXPECT_EQ(E_POINTER, ZrVideo_GetFormatText(0, nullptr, 20));
}

TEST(DibText, PalettesConvertInPlace) {
  RGBQUAD colors[2] = {{1, 2, 3, 9}, {4, 5, 6, 9}};
  EXPECT_EQ(0, ZrVideo_PaletteEntryFromRGBA(reinterpret_cast<PALETTEENTRY*>(colors), colors, 2));
  const PALETTEENTRY* entries = reinterpret_cast<const PALETTEENTRY*>(colors);
  EXPECT_EQ(3, entries[0].peRed);
  EXPECT_EQ(4, entries[1].peBlue);
  EXPECT_EQ(0, entries[1].peFlags);
  RGBQUAD back[2];
  EXPECT_EQ(0, ZrVideo_PaletteRGBAFromEntry(back, entries, 2));
  EXPECT_EQ(6, back[1].rgbRed);
  EXPECT_EQ(0, back[1].rgbReserved);
}

TEST(YuvSize, PlanesOfEveryLayout) {
  struct Case {
    const char* fourCc;
    int32_t width, height;
    uint32_t bytes;
    uint32_t offsets[5];
  };
  const Case cases[] = {
      {"I420", 720, 480, 518400, {720, 345600, 360, 432000, 360}},
      {"IYUV", 720, 480, 518400, {720, 345600, 360, 432000, 360}},
      {"YV12", 720, 480, 518400, {720, 432000, 360, 345600, 360}},
      {"Y41B", 720, 480, 518400, {720, 345600, 180, 432000, 180}},
      {"UYVY", 720, 480, 691200, {1440, 0, 0, 0, 0}},
      {"YUYV", 3, 1, 6, {6, 0, 0, 0, 0}},
      {"v210", 1, 3, 384, {128, 0, 0, 0, 0}},
      {"v210", 48, 1, 128, {128, 0, 0, 0, 0}},
      {"v210", 49, 1, 256, {256, 0, 0, 0, 0}},
      {"v210", 1920, 1, 5120, {5120, 0, 0, 0, 0}},
      {"ZRDB", 4, 4, 0, {0, 0, 0, 0, 0}},
      {"I420", 0, 4, 0, {0, 0, 0, 0, 0}},
      {"UYVY", 1 << 20, 1 << 20, 0, {0, 0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    BITMAPINFOHEADER header = {};
    std::memcpy(&header.biCompression, c.fourCc, 4);
    header.biWidth = c.width;
    header.biHeight = c.height;
    uint32_t offsets[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(c.bytes, ZrYUVImageBytesAndOffsets(&header, offsets)) << c.fourCc << c.width;
    EXPECT_THAT(offsets, ::testing::ElementsAreArray(c.offsets)) << c.fourCc << c.width;
  }
}

/// The rule as it is told: whole generations over the whole cube.
std::vector<uint8_t> ReferenceQuantizer(const RGBQUAD* palette, int count) {
  std::vector<uint8_t> map(32768, 255);
  std::vector<int> generations(32768, 0);
  for (int index = 0; index < count; ++index) {
    const size_t cell = static_cast<size_t>((palette[index].rgbRed >> 3) << 10 | (palette[index].rgbGreen >> 3) << 5 |
                                            palette[index].rgbBlue >> 3);
    if (map[cell] != 255) continue;
    map[cell] = static_cast<uint8_t>(index);
    generations[cell] = 1;
  }
  bool progress = true;
  for (int generation = 1; progress; ++generation) {
    progress = false;
    for (int r = 0; r < 32; ++r) {
      for (int g = 0; g < 32; ++g) {
        for (int b = 0; b < 32; ++b) {
          const size_t cell = static_cast<size_t>(r << 10 | g << 5 | b);
          if (generations[cell] != generation || map[cell] == 255) continue;
          const int moves[6][3] = {{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
          for (const auto& move : moves) {
            const int nr = r + move[0], ng = g + move[1], nb = b + move[2];
            if (nr < 0 || ng < 0 || nb < 0 || nr > 31 || ng > 31 || nb > 31) continue;
            const size_t next = static_cast<size_t>(nr << 10 | ng << 5 | nb);
            if (map[next] != 255) continue;
            map[next] = map[cell];
            generations[next] = generation + 1;
            progress = true;
          }
        }
      }
    }
  }
  return map;
}

TEST(Quantizer, FollowsTheGenerations) {
  Random random(6101);
  SCOPED_TRACE(random.Label());
  for (int count : {1, 2, 16, 200, 256}) {
    Roomy roomy = {};
    RGBQUAD palette[256];
    for (RGBQUAD& color : palette) {
      const uint64_t bits = random.Bits();
      color = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits >> 16), 0};
    }
    ASSERT_EQ(0, ZrVideo_InitBitmapInfo(&roomy.header, ZRPIXEL_PAL8, 1, 1, palette, count, nullptr));
    uint8_t* table = nullptr;
    ASSERT_EQ(0, ZrDibCreateColorQuantizer(&table, &roomy.header));
    const std::vector<uint8_t> expected = ReferenceQuantizer(palette, count);
    EXPECT_EQ(expected, std::vector<uint8_t>(table, table + 32768)) << count;
    ZrDibFreeColorQuantizer(table);
  }
  Roomy empty = {};
  empty.header.biSize = 40;
  uint8_t* table = nullptr;
  EXPECT_EQ(E_INVALIDARG, ZrDibCreateColorQuantizer(&table, &empty.header));
  empty.header.biClrUsed = 1;
  plat::FailAllocation(1);
  EXPECT_EQ(E_OUTOFMEMORY, ZrDibCreateColorQuantizer(&table, &empty.header));
  plat::FailAllocation(0);
}

}  // namespace
