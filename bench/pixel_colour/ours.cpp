// SPDX-License-Identifier: Apache-2.0
// Video in bytes to 4-byte pixels and back beside the peers, one thread; 10-bit cut to bytes.

#include <algorithm>
#include <cstring>
#include <string>

#include "marlo110k/dib.h"
#include "marlo110k/yuv.h"
#include "pixel_colour/job.h"
#include "platform/parallel/rows.h"

namespace bench {

namespace {

struct Shape {
  const char* name;
  Layout from, to;
  double swscaleGoal, libyuvGoal;  ///< Ratios.
  double rate, stretch;            ///< Pixels a second.
};
constexpr Shape kShapes[] = {
    {"I420 to BGRA", Layout::kI420, Layout::kBgra, 1.0, 0.7, 0, 0},
    {"UYVY to BGRA", Layout::kUyvy, Layout::kBgra, 1.0, 0.7, 0, 0},
    {"BGRA to UYVY", Layout::kBgra, Layout::kUyvy, 0, 0, 2.5e9, 0},
    {"BGRA to I420, ours with dither", Layout::kBgra, Layout::kI420, 0, 0, 0.8e9, 1.5e9},
};
struct Size {
  const char* name;
  int width, height;
};
constexpr Size kSizes[] = {{"320x180, in cache", 320, 180}, {"1080p", 1920, 1080}, {"4K", 3840, 2160}};

void Convert(const Job& job, std::vector<uint8_t>* dst) {
  const int w = job.width, h = job.height;
  const int64_t pixels = job.Pixels();
  const uint8_t* const src = job.src.data();
  if (job.from == Layout::kI420) {
    ZrYUV420ToRGBA(w, h, dst->data(), w * 4, src, w, src + pixels, w / 2, src + pixels * 5 / 4, w / 2, 0, ZRYUV_BT709);
  } else if (job.from == Layout::kUyvy) {
    ZrUYVY2RGBA(dst->data(), src, w * 4, w, h, ZRUYVY_BT709);
  } else if (job.to == Layout::kUyvy) {
    ZrRGBA2UYVY(dst->data(), src, w * 4, w * 2, w, h, ZRUYVY_BT709);
  } else {
    BITMAPINFOHEADER color = {}, video = {};
    ZrVideo_InitBitmapInfo(&color, ZRPIXEL_RGBA32, w, h, nullptr, 0, nullptr);
    ZrVideo_InitBitmapInfo(&video, ZRPIXEL_I420, w, h, nullptr, 0, nullptr);
    const tZRYUVPARAMS params = {ZRYUV_BT709, 0, 0.0};
    ZrYUV_RGBToYUV(&video, &params, dst->data(), nullptr, &color, 0.0, src, 0, 0, 0);
  }
}

/// Colour pictures are bottom-up for the conversions by header: the result against a source turned over.
double OurError(Job job, const std::vector<uint8_t>& dst) {
  if (job.from == Layout::kBgra && job.to == Layout::kI420) {
    const size_t row = static_cast<size_t>(job.width) * 4;
    for (size_t top = 0, low = static_cast<size_t>(job.height) - 1; top < low; ++top, --low) {
      std::swap_ranges(job.src.begin() + static_cast<int64_t>(top * row),
                       job.src.begin() + static_cast<int64_t>((top + 1) * row),
                       job.src.begin() + static_cast<int64_t>(low * row));
    }
  }
  return MaxError(job, Levels::kStudio, dst);
}

void AskShape(const Shape& shape, const Size& size) {
  const Job job = MakeJob(shape.from, shape.to, size.width, size.height);
  std::vector<uint8_t> dst(Bytes(job.to, job.Pixels())), libyuv, swscale;
  Convert(job, &dst);
  Question question(std::string(shape.name) + ", " + size.name, "pixel");
  question.Ours({"ours", [&] { Convert(job, &dst); }, static_cast<double>(job.Pixels()), OurError(job, dst)});
  AddSwscale(&question, job, &swscale);
  if (shape.swscaleGoal > 0 && !swscale.empty()) question.Goal(0, shape.swscaleGoal);
  AddLibyuv(&question, job, &libyuv);
  if (shape.libyuvGoal > 0 && !libyuv.empty()) question.Goal(swscale.empty() ? 0 : 1, shape.libyuvGoal);
  if (shape.rate > 0) question.Goal(-1, shape.rate, shape.stretch);
  question.Print();
}

void AskTenBit(const Size& size) {
  const int rowBytes = (size.width + 47) / 48 * 128;
  const std::vector<uint8_t> src(static_cast<size_t>(rowBytes) * static_cast<size_t>(size.height), 77);
  std::vector<uint8_t> dst(Bytes(Layout::kUyvy, int64_t{size.width} * size.height));
  Question question(std::string("v210 to UYVY, ") + size.name, "pixel");
  question.Ours({"ours",
                 [&] { ZrYUV_v210_TO_UYVY(dst.data(), src.data(), size.width * 2, rowBytes, size.width, size.height); },
                 static_cast<double>(size.width) * size.height});
  question.Absent("a peer: neither has this pair");
  question.Goal(-1, 2e9);
  question.Print();
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  plat::SetParallelThreads(1);
  for (const bench::Size& size : bench::kSizes) {
    for (const bench::Shape& shape : bench::kShapes) {
      if (argc < 2 || std::strstr(shape.name, argv[1])) bench::AskShape(shape, size);
    }
    if (argc < 2 || std::strstr("v210 to UYVY", argv[1])) bench::AskTenBit(size);
  }
  return 0;
}
