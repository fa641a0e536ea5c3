// SPDX-License-Identifier: Apache-2.0
// Every pair of pixel types against the table of their channels; the working forms, samplers and blends.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marlo110k/dib_copy.h"
#include "pixel/testing/exchange_reference.h"
#include "pixel/testing/picture.h"

namespace {

using ::testing::ElementsAre;
using testing_support::Picture;
using testing_support::Random;
using testing_support::ReferenceRead;
using testing_support::ReferenceWrite;
using testing_support::Words;

bool IsFloat(int32_t type) { return type == 22 || type == 32; }
bool IsByteType(int32_t type) { return type == 24 || type == 27 || type == 28 || type == 29; }

std::vector<RGBQUAD> RandomPalette(Random& random, int count) {
  std::vector<RGBQUAD> palette(static_cast<size_t>(count));
  for (RGBQUAD& color : palette) {
    const uint64_t bits = random.Bits();
    color = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits >> 16), 0};
  }
  return palette;
}

void Fill(Picture& picture, int32_t type, Random& random) {
  if (IsFloat(type)) {
    picture.RandomizeFloats(random, -0.2, 1.2);
  } else {
    picture.Randomize(random);
  }
}

/// A picture with a palette of 200 or 16 colours where its type wants one: some indices have no entry.
std::unique_ptr<Picture> Make(int32_t type, int32_t width, int32_t height, Random& random, bool guardAtStart) {
  const int colors = type == 23 ? 16 : type == 24 ? 200 : 0;
  const std::vector<RGBQUAD> palette = RandomPalette(random, colors);
  const int32_t extra = 16 * static_cast<int32_t>(random.Between(0, 1));
  return std::make_unique<Picture>(type, width, height, extra, guardAtStart, colors ? palette.data() : nullptr, colors);
}

/// The palette of a picture, black where it has no entry.
std::vector<RGBQUAD> PaletteOf(Picture& picture) {
  std::vector<RGBQUAD> palette(256);
  std::memcpy(palette.data(), picture.header() + 1, picture.header()->biClrUsed * 4);
  return palette;
}

/// The unscaled copies with a rule of their own.
bool HasFastPath(int32_t dst, int32_t src, int32_t bits) {
  if (src == 32 && (dst == 27 || dst == 28 || dst == 29)) return true;
  if (dst == 32 && (src == 27 || src == 28 || src == 29)) return true;
  if (src == 27 && (dst == 28 || dst == 29)) return true;
  return src == dst && bits > 8;
}

TEST(Exchange, EveryPairFollowsTheTables) {
  Random random(6801);
  SCOPED_TRACE(random.Label());
  int compared = 0;
  for (int32_t srcType = 16; srcType <= 32; ++srcType) {
    for (int32_t dstType = 16; dstType <= 32; ++dstType) {
      for (uint32_t quality : {0u, 3u, 4u}) {
        SCOPED_TRACE(std::to_string(srcType) + " to " + std::to_string(dstType) + " at " + std::to_string(quality));
        auto src = Make(srcType, 23, 5, random, true);
        auto dst = Make(dstType, 21, 7, random, false);
        Fill(*src, srcType, random);
        Fill(*dst, dstType, random);
        if (HasFastPath(dstType, srcType, src->header()->biBitCount)) continue;
        const RECT srcRect = {3, 1, 17, 4}, dstRect = {5, 2, 19, 5};
        const bool words = quality == 4 || !(IsByteType(srcType) && IsByteType(dstType));
        uint8_t* quantizer = nullptr;
        if (dst->header()->biClrUsed && (dstType == 23 || dstType == 24)) {
          ASSERT_EQ(0, ZrDibCreateColorQuantizer(&quantizer, dst->header()));
        }
        // Bytes go up by 256 and come down by 256, so that the byte form is the word form at quality 0; only
        // a palette's colours, which the word form never multiplies by 257, are the same in both.
        const bool by257 = words && quality >= 3;
        const std::vector<RGBQUAD> palette = PaletteOf(*src);
        std::vector<uint8_t> expected = dst->Copy();
        for (int32_t y = 0; y < 3; ++y) {
          const uint8_t* from = src->top(1 + y);
          uint8_t* to = expected.data() + (dst->top(2 + y) - dst->bits());
          for (int32_t x = 0; x < 14; ++x) {
            ReferenceWrite(dstType, to, 5 + x, ReferenceRead(srcType, from, 3 + x, by257, palette.data()), quantizer);
          }
        }
        ASSERT_EQ(0, ZrDibCopy(dst->header(), dst->bits(), &dstRect, dst->stride(), src->header(), src->bits(),
                               &srcRect, src->stride(), quality, 0, 0));
        ASSERT_EQ(expected, dst->Copy());
        ZrDibFreeColorQuantizer(quantizer);
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 750);
}

TEST(Exchange, OneBitTurnsAtHalfOfThreeChannels) {
  Picture src(ZRPIXEL_RGBA64, 2, 1), dst(ZRPIXEL_GRAY1, 2, 1);
  const uint16_t words[8] = {0x7FFF, 0x8000, 0x8000, 0, 0x7FFE, 0x8000, 0x8000, 0};
  std::memcpy(src.bits(), words, sizeof words);
  ASSERT_EQ(0, ZrDibCopy(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, 0, 0, 0));
  EXPECT_EQ(0x80, dst.bits()[0]);  // 0x17FFF and 0x17FFE.
}

TEST(Exchange, FormsAndRefusals) {
  struct Case {
    int32_t dst, src;
    uint32_t flags;
    int32_t form;
    uint32_t kept;
  };
  const Case cases[] = {
      {29, 28, 0, ZRXCHG_BYTES, 0},
      {24, 27, 3, ZRXCHG_BYTES, 0x1E0},
      {29, 28, 4, ZRXCHG_WORDS, 0x1F0},
      {29, 28, 0x10, ZRXCHG_WORDS, 0x10},
      {32, 32, 0, ZRXCHG_FLOATS, 0},
      {32, 32, 0x10, ZRXCHG_WORDS, 0x10},
      {32, 29, 0, ZRXCHG_WORDS, 0x10},
      {29, 22, 1, ZRXCHG_WORDS, 0x190},
      {31, 29, 2, ZRXCHG_WORDS, 0x1D0},
      {29, 29, 0xFF0FFE05, ZRXCHG_BYTES, 0x70FF000},
      {29, 29, 0x00FF002F, ZRXCHG_BYTES, 0xFF0020},
  };
  for (const Case& c : cases) {
    tZRDIBXCHGPARAMS exchange;
    ASSERT_EQ(0, ZrXCHGGetFunctionPointers(c.dst, c.src, c.flags, &exchange, nullptr, 0, 0));
    EXPECT_EQ(c.form, exchange.form) << c.dst << " " << c.src << " " << c.flags;
    EXPECT_EQ(c.kept, exchange.flags) << c.dst << " " << c.src << " " << c.flags;
  }
  tZRDIBXCHGPARAMS exchange;
  EXPECT_EQ(E_POINTER, ZrXCHGGetFunctionPointers(29, 29, 0, nullptr, nullptr, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrXCHGGetFunctionPointers(33, 29, 0, &exchange, nullptr, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrXCHGGetFunctionPointers(29, 15, 0, &exchange, nullptr, 0, 0));
  tZRDIBBLENDOP op = {};
  op.op = 20;
  EXPECT_EQ(E_NOTIMPL, ZrXCHGGetFunctionPointers(29, 29, 0, &exchange, &op, 0, 0));
  op.op = 1;
  EXPECT_EQ(E_NOTIMPL, ZrXCHGGetFunctionPointers(32, 32, 0, &exchange, &op, 0, 0));
}

TEST(Exchange, CurvesOnlyWhereFloatsMeetAnotherGamma) {
  tZRDIBXCHGPARAMS exchange;
  const auto curves = [&](int32_t dst, int32_t src, double dstGamma, double srcGamma) {
    ZrXCHGGetFunctionPointers(dst, src, 0, &exchange, nullptr, dstGamma, srcGamma);
    return std::make_pair(exchange.gammaToFloat.linearSlope != 0, exchange.gammaFromFloat.linearSlope != 0);
  };
  EXPECT_EQ(std::make_pair(true, false), curves(32, 29, 1, 0));
  EXPECT_EQ(std::make_pair(false, true), curves(29, 32, 1, 0));
  EXPECT_EQ(std::make_pair(false, true), curves(22, 32, 1, 0));
  EXPECT_EQ(std::make_pair(false, false), curves(29, 28, 1, 0));
  EXPECT_EQ(std::make_pair(false, false), curves(32, 29, 0, 2.2222222222222223));
  EXPECT_EQ(std::make_pair(false, false), curves(32, 29, 9, 4));  // Both are 4 after clamping.
}

TEST(Exchange, BoxMeansOfWholePixels) {
  // A 4x3 picture of 24 bits whose value is ten times the row plus the column.
  std::vector<uint8_t> pixels;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) pixels.insert(pixels.end(), 3, static_cast<uint8_t>(10 * row + column));
  }
  tZRDIBXCHGPARAMS exchange;
  ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 27, 0, &exchange, nullptr, 0, 0));
  exchange.readCursor = pixels.data();
  exchange.readNextRow = 12;
  struct Case {
    double left, top, right, bottom;
    int value;
  };
  for (const Case& c : {Case{0, 0, 4, 3, 11}, Case{0.5, 0.5, 3.5, 2.5, 11}, Case{0.1, 1, 3, 2, 11},
                        Case{1.2, 1.2, 1.8, 1.9, 11}, Case{2, 0, 4, 1, 2}}) {
    const auto fixed = [](double value) { return static_cast<int32_t>(value * 16384); };
    exchange.readBox(&exchange, fixed(c.left), fixed(c.top), fixed(c.right), fixed(c.bottom));
    EXPECT_EQ(c.value, exchange.slots.bytes[0].g) << c.left << " " << c.top;
    EXPECT_EQ(255, exchange.slots.bytes[0].a);
  }
  ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 29, 0, &exchange, nullptr, 0, 0));
  EXPECT_EQ(nullptr, exchange.readBox);
}

// ---- Blend operations ------------------------------------------------------------------------------

/// One operation on one pixel in both integer forms.
struct OpCase {
  int32_t op;
  tZRPIXEL32 d, s;
  float weight, weight2, tolerance;
  tZRPIXEL32 bytes;
  tZRPIXEL64 words;
};

TEST(BlendOps, BothIntegerForms) {
  // Key (red 1, green 0.5, blue 0); words are the bytes times 257. Worked out by hand from the rules.
  const tZRPIXEL32 d = {10, 20, 30, 40}, s = {200, 100, 50, 128};
  const OpCase cases[] = {
      {0, d, s, 0, 0, 0, s, {51400, 25700, 12850, 32896}},
      {9, d, s, 0, 0, 0, s, {51400, 25700, 12850, 32896}},
      {16, d, s, 1, 1, 0, d, {2570, 5140, 7710, 10280}},
      // d + (s - d) * 128 / 256; words: + (s - d) * 32896 >> 16.
      {1, d, s, 0, 0, 0, {105, 60, 40, 84}, {27080, 15460, 10290, 21632}},
      // d * 127 / 256 + s; words: (d * 32639 >> 16) + s.
      {2, d, s, 0, 0, 0, {204, 109, 64, 147}, {52679, 28259, 16689, 38015}},
      // Weight 0.5 is 127 in bytes, 32767 in words.
      {3, d, s, 0.5f, 0, 0, {104, 59, 39, 83}, {26984, 15419, 10279, 21587}},
      // Distance from the key 200 + |100 - 127| + |50 - 255| = 432 of 255 a channel.
      {4, d, s, 0, 0, 1.6f, s, {51400, 25700, 12850, 32896}},
      {4, d, s, 0, 0, 1.8f, d, {2570, 5140, 7710, 10280}},
      {5, d, s, 0.5f, 0, 1.6f, {104, 59, 39, 83}, {26984, 15419, 10279, 21587}},
      // Near: toward d * 201 / 255 = 7, 15, 23 with the full weight 255 (of 256).
      {6, d, s, 0.5f, 1.0f, 3.0f, {8, 16, 24, 40}, {2015, 4031, 6047, 10280}},
      // d * (30 + 1) / (200 + 1) = 1, 3, 4, mixed with s by 255 / 256.
      {7, d, s, 0, 1.0f, 0.0f, {2, 4, 5, 40}, {385, 771, 1156, 10280}},
      {8, d, s, 0, 0, 0, {190, 80, 20, 88}, {48830, 20560, 5140, 22616}},
      {11, d, s, 1.0f, 0, 0, {1, 126, 254, 40}, {0, 32766, 65534, 10280}},
      {12, d, s, 1.0f, 0, 0, {54, 154, 204, 126}, {14134, 39834, 52684, 32638}},
      // Gray (200 + 100 + 50) / 3 = 116.
      {13, d, s, 1.0f, 0, 0, {115, 115, 115, 127}, {29982, 29982, 29982, 32895}},
      // (K - d) * 128 / 256 + s - K + d with K = 0, 127, 255.
      {14, d, s, 0, 0, 0, {205, 46, 0, 40}, {52679, 11940, 0, 10280}},
      // sqrt(10^2 + 107^2 + 225^2) / sqrt(3) = 143.9; words from K = 0, 32767, 65535.
      {15, d, s, 0, 0, 0, {143, 143, 143, 40}, {37029, 37029, 37029, 10280}},
      {19, d, s, 1.0f, 0, 0, {209, 119, 79, 40}, {53969, 30839, 20559, 10280}},
  };
  for (const OpCase& c : cases) {
    SCOPED_TRACE(c.op);
    tZRDIBBLENDOP op = {};
    op.op = c.op;
    op.red = 1.0f;
    op.green = 0.5f;
    op.weight = c.weight;
    op.weight2 = c.weight2;
    op.tolerance = c.tolerance;
    tZRDIBXCHGPARAMS exchange;
    ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 29, 0, &exchange, &op, 0, 0));
    tZRPIXEL32 bytes[4] = {c.d, c.d, c.d, c.d};
    const tZRPIXEL32 sources[4] = {c.s, c.s, c.s, c.s};
    exchange.blend(&exchange, bytes, sources);
    exchange.blendFour(&exchange, bytes + 0, sources);
    tZRPIXEL32 once = c.d;
    exchange.blend(&exchange, &once, &c.s);
    EXPECT_EQ(0, std::memcmp(&c.bytes, &once, 4))
        << int(once.b) << " " << int(once.g) << " " << int(once.r) << " " << int(once.a);
    EXPECT_EQ(0, std::memcmp(&bytes[1], &once, 4));

    ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 29, ZRDIB_WORD_PIXELS, &exchange, &op, 0, 0));
    const auto wide = [](const tZRPIXEL32& p) {
      return tZRPIXEL64{static_cast<uint16_t>(p.b * 257), static_cast<uint16_t>(p.g * 257),
                        static_cast<uint16_t>(p.r * 257), static_cast<uint16_t>(p.a * 257)};
    };
    tZRPIXEL64 word = wide(c.d);
    const tZRPIXEL64 source = wide(c.s);
    exchange.blend(&exchange, &word, &source);
    EXPECT_EQ(c.words.b, word.b);
    EXPECT_EQ(c.words.g, word.g);
    EXPECT_EQ(c.words.r, word.r);
    EXPECT_EQ(c.words.a, word.a);
  }
}

TEST(BlendOps, LookupAndStretch) {
  std::vector<uint16_t> lookup(256);
  for (size_t index = 0; index < 256; ++index) lookup[index] = static_cast<uint16_t>(65535 - 257 * index);
  tZRDIBBLENDOP op = {};
  op.op = 15;
  op.lookup = lookup.data();
  tZRDIBXCHGPARAMS exchange;
  ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 29, 0, &exchange, &op, 0, 0));
  tZRPIXEL32 d = {60, 60, 60, 9};
  const tZRPIXEL32 s = {};
  exchange.blend(&exchange, &d, &s);
  EXPECT_EQ(195, d.b);
  EXPECT_EQ(9, d.a);

  op = {};
  op.op = 17;
  op.lowThreshold = 0.2f;
  op.highThreshold = 0.6f;
  ASSERT_EQ(0, ZrXCHGGetFunctionPointers(29, 29, 0, &exchange, &op, 0, 0));
  // Low is 51, high 153: (mean - 51) * 255 / 102 between, full above 204.
  for (const auto& [mean, value] : {std::pair{40, 0}, {51, 0}, {102, 127}, {153, 255}, {205, 255}, {255, 255}}) {
    const uint8_t gray = static_cast<uint8_t>(mean);
    const tZRPIXEL32 source = {gray, gray, gray, 255};
    exchange.blend(&exchange, &d, &source);
    EXPECT_NEAR(value, d.g, 1) << mean;
  }
}

}  // namespace
