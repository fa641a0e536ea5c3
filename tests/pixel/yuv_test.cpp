// SPDX-License-Identifier: Apache-2.0
// Video to colour and back against the rules one pixel at a time, over layouts, field modes, levels and threads.

#include "marlo110k/yuv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pixel/gamma.h"
#include "pixel/testing/exchange_reference.h"
#include "pixel/testing/picture.h"
#include "pixel/testing/video.h"
#include "pixel/testing/yuv_reference.h"
#include "platform/base/cpu.h"

namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr plat::VectorLevel kLevels[] = {plat::VectorLevel::kPlain, plat::VectorLevel::kAvx2};

/// Restores the vector level.
struct Yuv : ::testing::Test {
  ~Yuv() override { plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512); }
};

Bgra PixelOf(const uint8_t* pixel) { return {pixel[0], pixel[1], pixel[2], pixel[3]}; }

TEST_F(Yuv, PublishedPixels) {
  struct {
    int y, u, v;
    Bgra bt601, bt709;
  } const cases[] = {{81, 90, 240, {15, 16, 235, 255}, {12, 37, 253, 255}},
                     {145, 54, 34, {17, 236, 16, 255}, {11, 202, 0, 255}},
                     {41, 240, 110, {235, 16, 16, 255}, {244, 29, 13, 255}},
                     {100, 200, 60, {225, 123, 7, 255}, {231, 118, 0, 255}}};
  for (const auto& c : cases) {
    const uint8_t luma[4] = {uint8_t(c.y), uint8_t(c.y), uint8_t(c.y), uint8_t(c.y)};
    const uint8_t u = uint8_t(c.u), v = uint8_t(c.v);
    const uint8_t packed[4] = {u, luma[0], v, luma[0]};
    uint8_t out[16];
    for (int space : {0, 1}) {
      ASSERT_EQ(S_OK, ZrYUV420ToRGBA(2, 2, out, 8, luma, 2, &u, 1, &v, 1, 0, space ? 516 : 515));
      EXPECT_EQ(space ? c.bt709 : c.bt601, PixelOf(out + 12));
      ASSERT_EQ(S_OK, ZrUYVY2RGBA(out, packed, 8, 2, 1, space ? 2 : 1));
      EXPECT_EQ(space ? c.bt709 : c.bt601, PixelOf(out + 4));
    }
  }
  struct {
    uint8_t bgr[6];
    uint8_t uyvy[4];
  } const back[] = {{{0, 0, 255, 0, 0, 255}, {84, 76, 254, 76}},
                    {{255, 0, 0, 255, 0, 0}, {254, 29, 107, 29}},
                    {{0, 0, 0, 255, 255, 255}, {128, 1, 128, 254}},
                    {{50, 100, 200, 30, 20, 10}, {110, 124, 153, 18}}};
  for (const auto& c : back) {
    uint8_t packed[4];
    ASSERT_EQ(S_OK, ZrRGB2UYVY(packed, c.bgr, 6, 4, 2, 1, 1));
    EXPECT_THAT(packed, ::testing::ElementsAreArray(c.uyvy));
  }
}

TEST_F(Yuv, SpaceFollowsSize) {
  for (const auto& [width, height, bt601] : {std::tuple{720, 480, true},
                                             {704, 718, true},
                                             {702, 480, false},
                                             {722, 480, false},
                                             {720, 720, false},
                                             {1920, 1080, false}}) {
    Video source(ZRDIB_FOURCC_UYVY, width, height);
    std::fill_n(source.bytes.data(), source.bytes.size(), uint8_t{200});
    std::vector<uint8_t> out(size_t(width) * size_t(height) * 4);
    ASSERT_EQ(S_OK, ZrUYVY2RGBA(out.data(), source.bytes.data(), width * 4, width, height, 515));
    EXPECT_EQ(ReferencePacked(200, 200, 200, bt601), PixelOf(out.data())) << width << 'x' << height;
  }
}

TEST_F(Yuv, PackedRowsOfAllTailsAndBothDirections) {
  Random random(11);
  SCOPED_TRACE(random.Label());
  for (plat::VectorLevel level : kLevels) {
    plat::SetVectorLevelLimit(level);
    for (int32_t width = 2; width <= 150; width += 2) {
      for (int32_t bytes : {3, 4}) {
        Video source(ZRDIB_FOURCC_UYVY, width, 2, width % 4 == 0);
        source.Randomize(random);
        GuardedBytes out(size_t(width * bytes * 2), width % 8 == 0);
        // A negative stride starts at the last row in memory.
        ASSERT_EQ(S_OK, (bytes == 4 ? ZrUYVY2RGBA : ZrUYVY2RGB)(out.data() + width * bytes, source.bytes.data(),
                                                                -width * bytes, width, 2, width % 3));
        const bool bt601 = width % 3 == 1;
        for (int32_t x = 0; x < width * 2; ++x) {
          const auto [u, y, v] = source.At(x % width, x / width, false);
          const uint8_t* pixel = out.data() + (1 - x / width) * width * bytes + x % width * bytes;
          const Bgra expected = ReferencePacked(y, u, v, bt601);
          for (int c = 0; c < bytes; ++c) ASSERT_EQ(expected[size_t(c)], pixel[c]) << width << ' ' << x;
        }
        for (size_t index = 0; index < out.size(); ++index) out.data()[index] = uint8_t(random.Bits());
        ASSERT_EQ(S_OK, (bytes == 4 ? ZrRGBA2UYVY : ZrRGB2UYVY)(source.bytes.data(), out.data(), width * bytes,
                                                                width * 2, width, 2, width % 3));
        for (int32_t pair = 0; pair < width; ++pair) {
          const uint8_t* left = out.data() + pair * 2 * bytes;
          const auto expected = ReferenceToUyvy(left, left + bytes, bt601);
          for (int s = 0; s < 4; ++s) ASSERT_EQ(expected[size_t(s)], source.bytes.data()[pair * 4 + s]) << width;
        }
      }
    }
  }
}

using Planar = HRESULT (*)(int32_t, int32_t, void*, int32_t, const void*, int32_t, const void*, int32_t, const void*,
                           int32_t, int32_t, int32_t) noexcept;

/// A reduced form as sums: `columns` x `rows` luma; `field` keeps every second row from mode - 1 on.
struct Form {
  const char* name;
  Planar function;
  int32_t columns, rows;
  bool keepsField;
};
constexpr Form kForms[] = {{"whole", ZrYUV420ToRGBA, 1, 1, false},
                           {"half horz", ZrYUV420ToRGBA_HalfHorz, 2, 1, false},
                           {"half blend", ZrYUV420ToRGBA_Half_BlendFields, 2, 2, false},
                           {"half", ZrYUV420ToRGBA_Half, 2, 2, true},
                           {"quarter horz", ZrYUV420ToRGBA_QuarterHorz_HalfVert_BlendFields, 4, 2, false},
                           {"quarter blend", ZrYUV420ToRGBA_Quarter_BlendFields, 4, 4, false},
                           {"quarter", ZrYUV420ToRGBA_Quarter, 4, 4, true}};

int32_t Log2(int32_t count) { return count == 1 ? 0 : 1 + Log2(count / 2); }

Bgra ReferenceForm(const Form& form, const Video& source, int32_t mode, int32_t x, int32_t row) {
  const int32_t height = source.header.biHeight;
  const bool fields = mode == 1 || mode == 2, one = fields && form.keepsField;
  const int32_t rows = one ? form.rows / 2 : form.rows, step = one ? 2 : 1, first = one ? mode - 1 : 0;
  std::vector<int32_t> lines;
  const int32_t chromaLines = one ? height / 4 : height / 2;
  if (rows == 1) {
    lines = {ReferenceLine(first + row * step, height, fields)};
  } else if (rows == 2) {
    for (int32_t line : {row / 2 * 2, std::min(row / 2 * 2 + 1, chromaLines - 1)}) lines.push_back(first + line * step);
  } else {
    lines = {row * 2, row * 2 + 1};
  }
  int32_t y = 0, u = 0, v = 0, chroma = 0;
  for (int32_t r = 0; r < rows; ++r) {
    for (int32_t c = 0; c < form.columns; ++c) {
      y += source.bytes.data()[(first + (row * rows + r) * step) * source.header.biWidth + x * form.columns + c];
    }
  }
  const int32_t chromaColumns = std::max(form.columns / 2, 1);
  for (int32_t line : lines) {
    for (int32_t c = 0; c < chromaColumns; ++c, ++chroma) {
      const int32_t at = line * source.header.biWidth / 2 + (form.columns == 1 ? x / 2 : x * chromaColumns + c);
      u += source.U()[at];
      v += source.V()[at];
    }
  }
  return ReferencePlanar(y, u, v, false, Log2(rows * form.columns), Log2(chroma));
}

TEST_F(Yuv, PlanarFormsInAllFieldModes) {
  Random random(12);
  SCOPED_TRACE(random.Label());
  for (plat::VectorLevel level : kLevels) {
    plat::SetVectorLevelLimit(level);
    for (const Form& form : kForms) {
      for (int32_t width : {4, 12, 36, 68, 132}) {
        for (int32_t height : {4, 6, 8, 10}) {
          for (int32_t mode = 0; mode < 3; ++mode) {
            Video source(ZRDIB_FOURCC_I420, width, height, mode == 1);
            source.Randomize(random);
            const int32_t outWidth = width / form.columns, outHeight = height / form.rows;
            GuardedBytes out(size_t(outWidth * outHeight * 4), mode == 2);
            ASSERT_EQ(S_OK, form.function(width, height, out.data(), outWidth * 4, source.bytes.data(), width,
                                          source.U(), width / 2, source.V(), width / 2, mode, 0));
            for (int32_t at = 0; at < outWidth * outHeight; ++at) {
              ASSERT_EQ(ReferenceForm(form, source, mode, at % outWidth, at / outWidth), PixelOf(out.data() + at * 4))
                  << form.name << ' ' << width << 'x' << height << " mode " << mode << " at " << at;
            }
          }
        }
      }
    }
  }
}

TEST_F(Yuv, TenBitsAreCut) {
  Random random(13);
  SCOPED_TRACE(random.Label());
  for (plat::VectorLevel level : kLevels) {
    plat::SetVectorLevelLimit(level);
    for (int32_t width = 2; width <= 130; width += 2) {
      // Whole words up to the last sample, with anything in the unused top bits.
      const int32_t rowBytes = (width * 2 + 2) / 3 * 4;
      GuardedBytes source(static_cast<size_t>(rowBytes) * 2), out(static_cast<size_t>(width) * 4, width % 4 == 0);
      for (size_t index = 0; index < source.size(); ++index) source.data()[index] = uint8_t(random.Bits());
      ASSERT_EQ(S_OK, ZrYUV_v210_TO_UYVY(out.data(), source.data(), width * 2, rowBytes, width, 2));
      for (int32_t sample = 0; sample < width * 4; ++sample) {
        uint32_t word;
        const int32_t at = sample % (width * 2);
        std::memcpy(&word, source.data() + sample / (width * 2) * rowBytes + at / 3 * 4, 4);
        ASSERT_EQ(word >> (at % 3 * 10 + 2) & 255, out.data()[sample]) << width << ' ' << sample;
      }
    }
  }
}

TEST_F(Yuv, PicturesToBytesAtAllScales) {
  Random random(14);
  SCOPED_TRACE(random.Label());
  for (uint32_t layout : kLayouts) {
    for (int32_t scale = 0; scale < 4; ++scale) {
      Video source(layout, 52, 24);
      source.Randomize(random);
      Picture out(ZRPIXEL_RGB32, 52 >> scale, 24 >> scale, 8);
      const tZRYUVPARAMS params = {ZRYUV_BT601, 1, 0};
      const HRESULT result = ZrYUV_YUVToRGB(out.header(), 0, out.bits(), out.stride(), &source.header, &params,
                                            source.bytes.data(), nullptr, scale, 0);
      const bool known = layout == ZRDIB_FOURCC_V210 ? scale == 0 : layout != ZRDIB_FOURCC_I420 || scale < 3;
      ASSERT_EQ(known ? S_OK : E_FAIL, result);
      if (!known || (layout == ZRDIB_FOURCC_I420 && scale > 0)) continue;
      const double depth = layout == ZRDIB_FOURCC_V210 ? 4 : 1;
      for (int32_t at = 0; at < out.width() * out.height(); ++at) {
        const int32_t x = at % out.width(), row = at / out.width();
        const auto [u, y, v] = source.At(x << scale, row << scale, true);
        Bgra expected;
        if (layout == ZRDIB_FOURCC_I420) {
          expected = ReferencePlanar(y, u, v, true);
        } else if (scale == 0 && depth == 1) {
          expected = ReferencePacked(y, u, v, true);
        } else {
          const Published p = PublishedOf(true);
          const double cu = (u / depth - 128) * 219 / 224, cv = (v / depth - 128) * 219 / 224;
          const auto byte = [luma = y / depth](double tint) {
            return Byte(int32_t(std::floor(luma + tint + 0.5 + 1.5e-8)));
          };
          expected = {byte(cu * p.ub), byte(cu * p.ug + cv * p.vg), byte(cv * p.vr), 255};
        }
        ASSERT_EQ(expected, PixelOf(out.top(row) + x * 4)) << layout << " scale " << scale << " at " << at;
      }
    }
  }
}

TEST_F(Yuv, PicturesToFloats) {
  Random random(15);
  SCOPED_TRACE(random.Label());
  for (uint32_t layout : kLayouts) {
    // Studio range without a curve, full range without, and full range through one.
    for (const auto& [gamma, videoGamma] : {std::pair{0.0, 0.0}, {1.8, 1.8}, {1.0, 2.0}}) {
      Video source(layout, 22, 6);
      source.Randomize(random);
      Picture out(ZRPIXEL_RGBA128F, 22, 6);
      const tZRYUVPARAMS params = {0, 2, videoGamma};
      ASSERT_EQ(S_OK, ZrYUV_YUVToRGB(out.header(), gamma, out.bits(), 0, &source.header, &params, source.bytes.data(),
                                     source.planes, 0, 0));
      const double depth = layout == ZRDIB_FOURCC_V210 ? 4 : 1;
      const Published p = PublishedOf(false);
      const tZRGAMMACURVE curve = marlo::pixel::MakeGammaCurve(2.0);
      for (int32_t at = 0; at < 22 * 6; ++at) {
        const auto [u, y, v] = source.At(at % 22, at / 22, true);
        const double cScale = gamma != 0 ? 0.004464286 : 0.0038340336;
        const double luma = gamma != 0 ? (y / depth - 16) * 0.00456621 : y / depth * 0.003921569;
        const double cu = (u / depth - 128) * cScale, cv = (v / depth - 128) * cScale;
        double expected[4] = {luma + cu * p.ub, luma + cu * p.ug + cv * p.vg, luma + cv * p.vr, 1.0};
        const bool curved = gamma != videoGamma;
        for (int c = 0; c < 3 && curved; ++c)
          expected[c] = marlo::pixel::Evaluate(curve, static_cast<float>(expected[c]));
        for (int c = 0; c < 4; ++c) {
          ASSERT_NEAR(expected[c], FloatAt(out.top(at / 22), at % 22 * 4 + c), curved ? 2e-4 : 2e-6) << at << ' ' << c;
        }
      }
    }
  }
}

/// A picture's colour at (x, row) in channel order red, green, blue.
std::array<double, 3> ColorAt(Picture& picture, int32_t x, int32_t row) {
  if (ZrGetPixelType(picture.header()) == ZRPIXEL_RGBA128F) {
    return {FloatAt(picture.top(row), x * 4 + 2), FloatAt(picture.top(row), x * 4 + 1),
            FloatAt(picture.top(row), x * 4)};
  }
  const uint8_t* pixel = picture.top(row) + x * 4;
  return {double(pixel[2]), double(pixel[1]), double(pixel[0])};
}

TEST_F(Yuv, PicturesFromColour) {
  Random random(16);
  SCOPED_TRACE(random.Label());
  for (plat::VectorLevel level : kLevels) {
    plat::SetVectorLevelLimit(level);
    for (uint32_t layout : kLayouts) {
      for (int32_t type : {ZRPIXEL_RGBA32, ZRPIXEL_RGBA128F}) {
        for (int32_t width : {2, 26, 198}) {
          for (const auto& [mode, gamma] : {std::pair{0, 0.0}, {1, 2.0}, {2, 2.0}}) {
            const bool floats = type == ZRPIXEL_RGBA128F, planar = layout == ZRDIB_FOURCC_I420;
            constexpr int32_t kHeight = 10;
            Picture source(type, width, kHeight);
            source.Randomize(random);
            if (floats) source.RandomizeFloats(random, -0.1, 1.1);
            Video out(layout, width, kHeight);
            const tZRYUVPARAMS params = {ZRYUV_BT601, mode, gamma};
            ASSERT_EQ(S_OK, ZrYUV_RGBToYUV(&out.header, &params, out.bytes.data(), nullptr, source.header(), gamma,
                                           source.bits(), source.stride(), 0, 0));
            const Published p = PublishedOf(true);
            const int32_t factor = layout == ZRDIB_FOURCC_V210 ? 4 : 1;
            const bool full = gamma != 0;
            const double lumaScale = !floats ? 1 : full ? 219 : 255, offset = floats && full ? 16 : 0;
            const double pairGain = !floats ? 0.51141554 : full ? 112.0 : 255.0 * 112 / 219;
            const auto dot = [](const double* row, const std::array<double, 3>& c) {
              return row[0] * c[0] + row[1] * c[1] + row[2] * c[2];
            };
            for (int32_t at = 0; at < width * kHeight; ++at) {
              const int32_t x = at % width, row = at / width, pair = x / 2;
              const auto [u, y, v] = out.At(x, row, mode != 0);
              ASSERT_EQ(ReferenceCode(dot(p.y, ColorAt(source, x, row)) * lumaScale + offset, x, row, factor), y) << at;
              const int32_t line = planar ? ReferenceLine(row, kHeight, mode != 0) : row;
              std::array<double, 3> sum = {};
              for (int32_t other = 0; other < kHeight; ++other) {
                if ((planar ? ReferenceLine(other, kHeight, mode != 0) : other) != line) continue;
                for (int32_t column : {pair * 2, pair * 2 + 1}) {
                  const auto color = ColorAt(source, column, other);
                  for (size_t c = 0; c < 3; ++c) sum[c] += color[c];
                }
              }
              const double gain = !planar ? pairGain : floats ? pairGain / 2 : 0.25570777;
              ASSERT_EQ(ReferenceCode(dot(p.u, sum) * gain + 128, pair, line, factor), u) << layout << ' ' << at;
              ASSERT_EQ(ReferenceCode(dot(p.v, sum) * gain + 128, pair, line, factor), v) << layout << ' ' << at;
            }
          }
        }
      }
    }
  }
}

TEST_F(Yuv, PublishedFloatCodes) {
  struct {
    double gamma;
    float r, g, b;
    int32_t y, u, v;
  } const cases[] = {{1, 1, 1, 1, 235, 128, 128}, {1, 1, 0, 0, 81, 90, 240}, {1, 0, 0, 1, 40, 240, 109},
                     {0, 1, 1, 1, 254, 128, 128}, {0, 0, 0, 0, 1, 128, 128}, {0, 1, 0, 0, 76, 83, 254}};
  for (const auto& c : cases) {
    Picture source(ZRPIXEL_RGBA128F, 2, 1);
    const tZRPIXEL128 pixels[2] = {{c.b, c.g, c.r, 1}, {c.b, c.g, c.r, 1}};
    std::memcpy(source.bits(), pixels, sizeof(pixels));
    Video out(ZRDIB_FOURCC_UYVY, 2, 1);
    const tZRYUVPARAMS params = {ZRYUV_BT601, 0, c.gamma};
    ASSERT_EQ(S_OK, ZrYUV_RGBToYUV(&out.header, &params, out.bytes.data(), nullptr, source.header(), c.gamma,
                                   source.bits(), 0, 0, 0));
    EXPECT_THAT(out.At(0, 0, false), ElementsAre(c.u, c.y, c.v));
  }
}

TEST_F(Yuv, PlanesRearranged) {
  Random random(18);
  Video source(ZRDIB_FOURCC_I420, 6, 4), planar(ZRYUV_FOURCC_YV12, 6, 4), packed(ZRDIB_FOURCC_UYVY, 6, 4);
  source.Randomize(random);
  for (Video* out : {&planar, &packed}) {
    ASSERT_EQ(S_OK, ZrYUV_YUVToYUV(&out->header, out->bytes.data(), out->planes, &source.header, source.bytes.data(),
                                   source.planes));
  }
  planar.header.biCompression = ZRDIB_FOURCC_I420;  // Its planes say where they are.
  for (int32_t at = 0; at < 24; ++at) {
    EXPECT_EQ(source.At(at % 6, at / 6, false), planar.At(at % 6, at / 6, false));
    EXPECT_EQ(source.At(at % 6, at / 6, false), packed.At(at % 6, at / 6, false));
  }
  const std::vector<uint8_t> before(packed.bytes.data(), packed.bytes.data() + packed.bytes.size());
  EXPECT_EQ(S_OK, ZrYUV_YUVToYUV(&source.header, source.bytes.data(), source.planes, &packed.header,
                                 packed.bytes.data(), packed.planes));
  EXPECT_EQ(E_POINTER, ZrYUV_YUVToYUV(&packed.header, packed.bytes.data(), nullptr, &source.header, source.bytes.data(),
                                      source.planes));
  --source.header.biHeight;
  EXPECT_EQ(E_INVALIDARG, ZrYUV_YUVToYUV(&packed.header, packed.bytes.data(), packed.planes, &source.header,
                                         source.bytes.data(), source.planes));
  EXPECT_EQ(before, std::vector<uint8_t>(packed.bytes.data(), packed.bytes.data() + packed.bytes.size()));
}

TEST_F(Yuv, BadSizes) {
  uint8_t bytes[64] = {};
  constexpr int32_t kHuge = INT32_MAX - 1;
  struct {
    int32_t stride, width, height;
  } const bad[] = {{8, 0, 1},  {8, 2, 0}, {8, -2, 1}, {8, 2, -1},
                   {12, 3, 1}, {7, 2, 1}, {-7, 2, 1}, {INT32_MAX, kHuge, 1}};
  for (const auto& c : bad) {
    EXPECT_EQ(E_INVALIDARG, ZrUYVY2RGBA(bytes, bytes, c.stride, c.width, c.height, 0));
    EXPECT_EQ(E_INVALIDARG, ZrRGBA2UYVY(bytes, bytes, c.stride, INT32_MAX, c.width, c.height, 0));
    EXPECT_EQ(E_INVALIDARG, ZrYUV422PlanarToRGBA(c.width, c.height, bytes, c.stride, bytes, INT32_MAX, bytes, INT32_MAX,
                                                 bytes, INT32_MAX, 0));
    EXPECT_EQ(E_INVALIDARG, ZrYUV420ToRGBA(c.width, c.height * 2, bytes, c.stride, bytes, INT32_MAX, bytes, INT32_MAX,
                                           bytes, INT32_MAX, 0, 0));
  }
  EXPECT_EQ(E_INVALIDARG, ZrRGBA2UYVY(bytes, bytes, 8, 3, 2, 1, 0));
  EXPECT_EQ(E_INVALIDARG, ZrYUV420ToRGBA(2, 1, bytes, 8, bytes, 2, bytes, 1, bytes, 1, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrYUV420ToRGBA(4, 2, bytes, 16, bytes, 4, bytes, 1, bytes, 2, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrYUV420ToRGBA_Quarter(6, 4, bytes, 64, bytes, 6, bytes, 3, bytes, 3, 0, 0));
  EXPECT_EQ(E_POINTER, ZrYUV420ToRGBA(0, 0, bytes, 8, bytes, 2, nullptr, 1, bytes, 1, 0, 0));
  EXPECT_EQ(E_POINTER, ZrUYVY2RGB(nullptr, bytes, 0, 0, 0, 0));
  for (const auto& [dst, src, width, height] :
       {std::tuple{11, 16, 6, 1}, {12, 7, 6, 1}, {-12, 16, 6, 1}, {12, 16, 5, 1}, {12, 16, 6, 0}}) {
    EXPECT_EQ(E_INVALIDARG, ZrYUV_v210_TO_UYVY(bytes, bytes, dst, src, width, height));
  }
  EXPECT_EQ(E_POINTER, ZrYUV_v210_TO_UYVY(bytes, nullptr, 12, 16, 6, 1));
}

TEST_F(Yuv, BadPictures) {
  uint8_t bytes[256] = {};
  const tZRYUVPARAMS params = {};
  Picture color(ZRPIXEL_RGBA32, 4, 4), gray(ZRPIXEL_GRAY8, 4, 4);
  const BITMAPINFOHEADER video = Header(ZRDIB_FOURCC_I420, 4, 4);
  struct {
    HRESULT expected;
    BITMAPINFOHEADER video;
    int32_t stride, scale;
  } const cases[] = {{S_OK, video, 16, 0},
                     {E_FAIL, video, 16, -1},
                     {E_FAIL, Header(ZRDIB_FOURCC_Y41B, 4, 4), 16, 0},
                     {E_FAIL, Header(ZRYUV_FOURCC_YV12, 4, 4), 16, 0},
                     {E_INVALIDARG, Header(ZRDIB_FOURCC_I420, 6, 4), 16, 0},
                     {E_INVALIDARG, Header(ZRDIB_FOURCC_I420, 4, 3), 16, 0},
                     {E_INVALIDARG, Header(ZRDIB_FOURCC_UYVY, 3, 4), 16, 0},
                     {E_INVALIDARG, Header(ZRDIB_FOURCC_UYVY, -4, 4), 16, 0},
                     {E_INVALIDARG, Header(ZRDIB_FOURCC_V210, INT32_MAX - 1, INT32_MAX), 16, 0},
                     {E_INVALIDARG, video, 12, 0},
                     {E_INVALIDARG, video, -16, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected,
              ZrYUV_YUVToRGB(color.header(), 0, color.bits(), c.stride, &c.video, &params, bytes, nullptr, c.scale, 0));
    EXPECT_EQ(c.expected,
              ZrYUV_RGBToYUV(&c.video, &params, bytes, nullptr, color.header(), 0, color.bits(), c.stride, c.scale, 0));
  }
  const uint32_t narrow[5] = {4, 16, 1, 20, 2};
  EXPECT_EQ(E_INVALIDARG, ZrYUV_RGBToYUV(&video, &params, bytes, narrow, color.header(), 0, color.bits(), 0, 0, 0));
  EXPECT_EQ(E_FAIL, ZrYUV_RGBToYUV(&video, &params, bytes, nullptr, color.header(), 0, color.bits(), 0, 1, 0));
  EXPECT_EQ(E_FAIL, ZrYUV_RGBToYUV(&video, &params, bytes, nullptr, gray.header(), 0, gray.bits(), 0, 0, 0));
  EXPECT_EQ(E_INVALIDARG, ZrYUV_YUVToRGB(gray.header(), 0, gray.bits(), 0, &video, &params, bytes, nullptr, 0, 0));
  EXPECT_EQ(E_POINTER, ZrYUV_YUVToRGB(color.header(), 0, color.bits(), 0, &video, nullptr, bytes, nullptr, 9, 0));
  EXPECT_EQ(E_POINTER, ZrYUV_RGBToYUV(&video, &params, nullptr, nullptr, color.header(), 0, color.bits(), 0, 0, 0));
}

}  // namespace
