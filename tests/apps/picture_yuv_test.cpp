// SPDX-License-Identifier: Apache-2.0
// Raw video frames of the program as another program shows and makes them.
#include <gmock/gmock.h>

#include "apps/picture_files.h"

namespace apps_test {
namespace {

constexpr size_t kWidth = 48;
constexpr size_t kHeight = 16;
const char kSize[] = "48x16";
constexpr uint8_t kColors[][4] = {{0, 0, 0, 255}, {255, 255, 255, 255}, {220, 40, 90, 255}};

/// Three squares: black, white and a colour.
Bytes Squares() {
  Bytes pixels;
  for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
    const uint8_t* color = kColors[pixel % kWidth / kHeight];
    pixels.insert(pixels.end(), color, color + 4);
  }
  return pixels;
}

/// Compares the means of the squares' inner quarters, which dither leaves alone.
void ExpectSquares(const Bytes& pixels, size_t shrink, double tolerance, const std::string& what) {
  const size_t width = kWidth / shrink;
  ASSERT_EQ(pixels.size(), 4 * width * kHeight / shrink) << what;
  for (size_t square = 0; square < 3; ++square) {
    for (size_t channel = 0; channel < 4; ++channel) {
      double sum = 0;
      for (size_t y = 4 / shrink; y < 12 / shrink; ++y) {
        for (size_t x = 4 / shrink; x < 12 / shrink; ++x) {
          sum += pixels[4 * (y * width + 16 / shrink * square + x) + channel];
        }
      }
      const double mean = sum * static_cast<double>(shrink * shrink) / 64;
      EXPECT_NEAR(mean, kColors[square][channel], square == 2 ? 1.5 : tolerance) << what << ' ' << square << channel;
    }
  }
}

/// The words that tell ffmpeg of a raw frame.
std::vector<std::string> RawWords(const std::string& format) {
  if (format == "v210") return {"-f", "v210", "-video_size", kSize};
  const std::string name = format == "uyvy"   ? "uyvy422"
                           : format == "yuyv" ? "yuyv422"
                           : format == "i420" ? "yuv420p"
                           : format == "y41b" ? "yuv411p"
                                              : format;
  return {"-f", "rawvideo", "-pix_fmt", name, "-video_size", kSize};
}

Bytes Shown(const std::string& path, const std::string& format, const std::string& matrix) {
  std::vector<std::string> words = {"ffmpeg", "-v", "error", "-y"};
  for (const std::string& word : RawWords(format)) words.push_back(word);
  words.insert(words.end(), {"-i", path});
  if (format != "bgra")
    words.insert(words.end(),
                 {"-vf", "scale=in_range=tv:flags=accurate_rnd+full_chroma_int:in_color_matrix=" + matrix});
  words.insert(words.end(), {"-f", "rawvideo", "-pix_fmt", "rgba", path + ".out"});
  const RunResult result = RunProgram(words);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return ReadFileBytes(path + ".out");
}

void MakeFrame(const std::string& picture, const std::string& path, const std::string& format) {
  std::vector<std::string> words = {
      "ffmpeg", "-v",      "error", "-y",
      "-i",     picture,   "-vf",   "scale=out_range=tv:flags=accurate_rnd+full_chroma_int:out_color_matrix=bt709",
      "-f",     "rawvideo"};
  if (format == "v210") {
    words.insert(words.end(), {"-c:v", "v210"});
  } else {
    words.insert(words.end(), {"-pix_fmt", RawWords(format)[3]});
  }
  words.push_back(path);
  const RunResult result = RunProgram(words);
  ASSERT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(Picture, FramesShowRight) {
  MakePicture(folder / "a.png", kSize, Squares());
  for (const char* format : {"uyvy", "yuyv", "i420", "v210", "bgra"}) {
    for (const char* matrix : {"601", "709"}) {
      const std::string frame = folder / format;
      ASSERT_EQ(RunHost({"picture", "yuv", folder / "a.png", "--to", format, "--matrix", matrix, "-o", frame}).err, "");
      ExpectSquares(Shown(frame, format, std::string("bt") + matrix), 1, 0, std::string(format) + matrix);
    }
  }
}

TEST_F(Picture, FramesReadRight) {
  MakePicture(folder / "a.png", kSize, Squares());
  for (const std::string format : {"uyvy", "yuyv", "i420", "v210", "yuv422p", "bgra"}) {
    const std::string frame = folder / format;
    MakeFrame(folder / "a.png", frame, format);
    ASSERT_EQ(RunHost({"picture", "yuv", frame, "--raw", format, "--size", kSize, "-o", folder / "o.png"}).err, "");
    ExpectSquares(PixelsOf(folder / "o.png"), 1, 0, format);
    if (format != "uyvy" && format != "yuyv" && format != "i420") continue;
    ASSERT_EQ(
        RunHost({"picture", "yuv", frame, "--raw", format, "--size", kSize, "--shrink", "4", "-o", folder / "o.png"})
            .err,
        "");
    ExpectSquares(PixelsOf(folder / "o.png"), 4, 1, format + " shrunk");
  }
}

TEST_F(Picture, FramesRearranged) {
  // Samples that differ everywhere: orders and planes show.
  Bytes planar(kWidth * kHeight * 3 / 2);
  for (size_t index = 0; index < planar.size(); ++index) planar[index] = static_cast<uint8_t>(16 + index * 7 % 200);
  const std::string i420 = folder / "i420";
  WriteFileBytes(i420, planar);
  const auto turned = [&](const std::string& path, const char* from, const char* to) {
    EXPECT_EQ(RunHost({"picture", "yuv", path, "--raw", from, "--size", kSize, "--to", to, "-o", folder / to}).err, "");
    return ReadFileBytes(folder / to);
  };
  const Bytes swapped = turned(i420, "i420", "yv12");
  ASSERT_EQ(swapped.size(), planar.size());
  constexpr size_t kLuma = kWidth * kHeight;
  constexpr size_t kChroma = kLuma / 4;
  EXPECT_TRUE(std::equal(planar.begin(), planar.begin() + kLuma, swapped.begin()));
  EXPECT_TRUE(std::equal(planar.begin() + kLuma, planar.begin() + kLuma + kChroma, swapped.begin() + kLuma + kChroma));
  EXPECT_TRUE(std::equal(planar.begin() + kLuma + kChroma, planar.end(), swapped.begin() + kLuma));
  const Bytes packed = turned(folder / "yv12", "yv12", "uyvy");
  ASSERT_EQ(packed.size(), 2 * kLuma);
  for (size_t y = 0; y < kHeight; ++y) {
    for (size_t pair = 0; pair < kWidth / 2; ++pair) {
      const uint8_t* group = &packed[2 * kWidth * y + 4 * pair];
      const size_t chroma = y / 2 * (kWidth / 2) + pair;
      EXPECT_EQ(group[0], planar[kLuma + chroma]);
      EXPECT_EQ(group[2], planar[kLuma + kChroma + chroma]);
      EXPECT_EQ(group[3], planar[kWidth * y + 2 * pair + 1]);
    }
  }
  // Ten bits of another program's making lose two.
  const RunResult made =
      RunProgram({"ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "uyvy422", "-video_size", kSize, "-i",
                  folder / "uyvy", "-pix_fmt", "yuv422p10", "-f", "rawvideo", "-c:v", "v210", folder / "v210"});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  EXPECT_EQ(turned(folder / "v210", "v210", "uyvy"), packed);
}

TEST_F(Picture, FramesThatCannotBe) {
  WriteFileBytes(folder / "frame", Bytes(2 * kWidth * kHeight - 1));
  WriteFileBytes(folder / "y41b", Bytes(kWidth * kHeight * 3 / 2));
  WriteFileBytes(folder / "odd", Bytes(2 * 3 * 2));
  const struct {
    const char* name;
    const char* format;
    const char* size;
    const char* code;
  } kRows[] = {
      {"frame", "uyvy", kSize, "0x8004E008"},  // A byte too short.
      {"frame", "i420", "131071x131071", "0x8004E03A"},
      {"y41b", "y41b", kSize, "0x80004005"},
      {"odd", "uyvy", "3x2", "0x80070057"},
  };
  for (const auto& row : kRows) {
    const RunResult result = RunHost(
        {"picture", "yuv", folder / row.name, "--raw", row.format, "--size", row.size, "-o", folder / "never.png"});
    EXPECT_EQ(result.exitCode, 1) << row.name;
    EXPECT_THAT(result.err, testing::HasSubstr(row.code)) << row.name;
  }
  EXPECT_THAT(folder.Names(), testing::Not(testing::Contains("never.png")));
  for (const std::vector<std::string>& words : {std::vector<std::string>{"a.png", "-o", "b"},
                                                {"a", "--raw", "uyvy", "-o", "b.png"},
                                                {"a.png", "--to", "y41b", "-o", "b"},
                                                {"a.png", "--to", "uyvy", "--shrink", "2", "-o", "b"}}) {
    std::vector<std::string> line = {"picture", "yuv"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_EQ(RunHost(line).exitCode, 2) << testing::PrintToString(words);
  }
}

}  // namespace
}  // namespace apps_test
