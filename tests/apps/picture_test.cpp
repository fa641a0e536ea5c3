// SPDX-License-Identifier: Apache-2.0
// marlo picture on real files: pixels as another program reads and writes them, and broken files.
#include <gmock/gmock.h>

#include <algorithm>

#include "apps/host_run.h"
#include "apps/picture_files.h"
#include "canvas.h"
#include "picture_layer.h"

namespace apps_test {
namespace {

TEST_F(Picture, PixelsSurviveFiles) {
  // Row order, channel order and the ends of the range.
  const Bytes pixels = {255, 255, 255, 255, 0, 0, 0, 255, 255, 0, 0, 255, 0, 255, 0, 255, 1, 2, 3, 128, 9, 9, 9, 255};
  MakePicture(folder / "a.png", "2x3", pixels);
  ASSERT_EQ(RunHost({"picture", "convert", folder / "a.png", "-o", folder / "b.png"}).exitCode, 0);
  EXPECT_EQ(PixelsOf(folder / "b.png"), pixels);
  EXPECT_THAT(RunHost({"picture", "info", folder / "a.png"}).out,
              testing::HasSubstr("PNG, 2 x 3 pixels, with transparent parts"));

  // A large black half and a white one: JPEG keeps them exactly.
  Bytes halves(4 * 32 * 32, 255);
  for (size_t pixel = 0; pixel < 16 * 32; ++pixel)
    halves[4 * pixel] = halves[4 * pixel + 1] = halves[4 * pixel + 2] = 0;
  MakePicture(folder / "h.png", "32x32", halves);
  ASSERT_EQ(RunHost({"picture", "convert", folder / "h.png", "-o", folder / "h.jpg"}).exitCode, 0);
  ASSERT_EQ(RunHost({"picture", "convert", folder / "h.jpg", "-o", folder / "back.png"}).exitCode, 0);
  EXPECT_EQ(PixelsOf(folder / "back.png"), halves);
  EXPECT_THAT(RunHost({"picture", "info", folder / "h.jpg"}).out, testing::HasSubstr("JPEG, 32 x 32 pixels, opaque"));
}

TEST_F(Picture, CompositeOverAtAPlace) {
  // A base of 2 x 2 of one colour; a half-transparent pixel of 200 over its bottom right.
  MakePicture(folder / "base.png", "2x2", {40, 80, 120, 255, 40, 80, 120, 255, 40, 80, 120, 255, 40, 80, 120, 255});
  MakePicture(folder / "dot.png", "1x1", {200, 0, 100, 128});
  ASSERT_EQ(RunHost({"picture", "composite", folder / "base.png", folder / "dot.png@1,1", "-o", folder / "o.png"}).err,
            "");
  const Bytes pixels = PixelsOf(folder / "o.png");
  ASSERT_EQ(pixels.size(), 16u);
  EXPECT_THAT(Bytes(pixels.begin(), pixels.begin() + 4), testing::ElementsAre(40, 80, 120, 255));
  const double alpha = 128 / 255.0;
  const double straight[] = {200, 0, 100};
  for (size_t channel = 0; channel < 3; ++channel) {
    EXPECT_NEAR(pixels[12 + channel], straight[channel] * alpha + pixels[channel] * (1 - alpha), 1.5) << channel;
  }
  EXPECT_EQ(pixels[15], 255);
}

TEST_F(Picture, CompositeInSixteenBits) {
  MakePicture(folder / "base.png", "2x1", {0, 50, 100, 255, 255, 255, 255, 255});
  MakePicture(folder / "dot.png", "1x1", {200, 0, 100, 255});
  ASSERT_EQ(RunHost({"picture", "composite", folder / "base.png", folder / "dot.png:opacity=0.3", "--type", "rgba16",
                     "-o", folder / "o.png"})
                .err,
            "");
  const RunResult decoded = RunProgram(
      {"ffmpeg", "-v", "error", "-i", folder / "o.png", "-f", "rawvideo", "-pix_fmt", "rgba64le", folder / "o.raw"});
  ASSERT_EQ(decoded.exitCode, 0) << decoded.err;
  const Bytes words = ReadFileBytes(folder / "o.raw");
  ASSERT_EQ(words.size(), 16u);
  const double expected[] = {0.3 * 200, 0.7 * 50, 0.7 * 100 + 0.3 * 100, 255, 255, 255, 255, 255};
  for (size_t index = 0; index < 8; ++index) {
    EXPECT_NEAR(words[2 * index] + 256 * words[2 * index + 1], 257 * expected[index], 2) << index;
  }
}

TEST_F(Picture, ScaleKeepsColourAtTransparentEdges) {
  // The transparent half is green; none of it may show.
  MakePicture(folder / "edge.png", "2x1", {255, 0, 0, 255, 0, 255, 0, 0});
  for (const char* filter : {"bilinear", "bicubic"}) {
    ASSERT_EQ(RunHost({"picture", "scale", folder / "edge.png", "--size", "8x1", "--filter", filter, "-o",
                       folder / "wide.png"})
                  .exitCode,
              0);
    const Bytes pixels = PixelsOf(folder / "wide.png");
    ASSERT_EQ(pixels.size(), 32u);
    EXPECT_EQ(pixels[0], 255);
    for (size_t pixel = 0; pixel < 8; ++pixel) EXPECT_EQ(pixels[4 * pixel + 1], 0) << filter << pixel;
  }
}

TEST_F(Picture, BrokenFiles) {
  ASSERT_EQ(RunHost({"picture", "testcard", "-o", folder / "a.png"}).exitCode, 0);
  ASSERT_EQ(RunHost({"picture", "testcard", "-o", folder / "a.jpg"}).exitCode, 0);
  const Bytes png = ReadFileBytes(folder / "a.png");
  const Bytes jpeg = ReadFileBytes(folder / "a.jpg");
  Bytes flipped = png;
  flipped[flipped.size() / 2] ^= 0x55;
  // The frame header's sizes follow its marker, length and depth.
  Bytes wild = jpeg;
  for (size_t at = 2; at + 9 < wild.size(); ++at) {
    if (wild[at] == 0xFF && wild[at + 1] == 0xC0) {
      std::fill_n(wild.begin() + static_cast<ptrdiff_t>(at) + 5, 4, uint8_t{0xF0});
      break;
    }
  }
  // A header of a million by a million pixels, with its right check sum, and the start of its data.
  const Bytes wildPng = {0x89, 'P',  'N',  'G',  13,   10, 26, 10, 0,  0,   0,   13,  'I', 'H',
                         'D',  'R',  0,    15,   66,   64, 0,  15, 66, 64,  8,   6,   0,   0,
                         0,    0x5C, 0x6D, 0x38, 0x7D, 0,  0,  0,  0,  'I', 'D', 'A', 'T'};
  const struct {
    const char* name;
    Bytes bytes;
    const char* code;
  } kRows[] = {
      {"cut.png", Bytes(png.begin(), png.begin() + static_cast<ptrdiff_t>(png.size() / 2)), "0x8004E008"},
      {"flipped.png", flipped, "0x8004E008"},
      {"cut.jpg", Bytes(jpeg.begin(), jpeg.begin() + static_cast<ptrdiff_t>(jpeg.size() / 2)), "0x8004E008"},
      {"wild.jpg", wild, "0x8004E03A"},
      {"wild.png", wildPng, "0x8004E03A"},
      {"text.png", {'t', 'e', 'x', 't'}, "0x8004E00B"},
      {"empty.png", {}, "0x8004E00B"},
  };
  for (const auto& row : kRows) {
    WriteFileBytes(folder / row.name, row.bytes);
    const RunResult result = RunHost({"picture", "convert", folder / row.name, "-o", folder / "never.png"});
    EXPECT_EQ(result.exitCode, 1) << row.name;
    EXPECT_THAT(result.err, testing::HasSubstr(row.code)) << row.name;
    EXPECT_LT(result.peakKilobytes, 100 * 1024) << row.name;
  }
  EXPECT_THAT(folder.Names(), testing::Not(testing::Contains("never.png")));
}

TEST(PictureWords, WrongUsage) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"sharpen"},
                                                {"info"},
                                                {"info", "a.png", "-o", "b.png"},
                                                {"convert", "a.png"},
                                                {"convert", "a.png", "-o", "b.gif"},
                                                {"scale", "a.png", "--size", "0x4", "-o", "b.png"},
                                                {"scale", "a.png", "--size", "4x4", "--filter", "x", "-o", "b.png"},
                                                {"composite", "a.png", "b.png:opacity=1.1", "-o", "c.png"},
                                                {"composite", "a.png", "b.png", "--type", "rgba16", "-o", "c.jpg"},
                                                {"fade", "a.png", "b.png", "--weight", "1.5", "-o", "c.png"},
                                                {"fade", "a.png", "--color", "F0", "--weight", "1", "-o", "c.png"},
                                                {"fields", "turn", "a.png", "-o", "c.png"},
                                                {"fields", "weave", "a.png", "-o", "c.png"},
                                                {"composite", "a.png", "b.png:mode=13", "-o", "c.png"}}) {
    std::vector<std::string> line = {"picture"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_EQ(RunHost(line).exitCode, 2) << testing::PrintToString(words);
  }
}

TEST(PictureWords, Layers) {
  const host::PictureLayer layer = host::ParsePictureLayer("me@home.png@-1.5,2,3x4.25:opacity=0.5:mode=multiply");
  EXPECT_EQ(layer.path, "me@home.png");
  EXPECT_EQ(layer.x, -1.5);
  EXPECT_EQ(layer.height, 4.25);
  EXPECT_EQ(layer.mode, 3);
  EXPECT_EQ(layer.opacity, 0.5f);
  EXPECT_EQ(host::ParsePictureLayer("me@home.png").path, "me@home.png");
}

TEST(Canvas, CutsToTheImageAndMirrorsLines) {
  host::Image image(5, 3);
  host::Canvas canvas(image);
  canvas.FillRect(-2, -2, 3, 3, {1, 2, 3, 255});
  canvas.Text(-3, 1, "\x80g", {0, 0, 9, 255}, 2);
  EXPECT_EQ(image.Row(0)[0].g, 2);
  EXPECT_EQ(image.Row(0)[1].a, 0);
  host::Image down(5, 3);
  host::Image up(5, 3);
  host::Canvas(down).Line(0, 0, 4, 2, {255, 255, 255, 255});
  host::Canvas(up).Line(0, 2, 4, 0, {255, 255, 255, 255});
  for (int32_t y = 0; y < 3; ++y) {
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(down.Row(y)[x].a, up.Row(2 - y)[x].a) << x << ',' << y;
  }
  EXPECT_EQ(down.Row(2)[4].a, 255);
}

}  // namespace
}  // namespace apps_test
