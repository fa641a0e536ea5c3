// SPDX-License-Identifier: Apache-2.0
// Scaling: bilinear, bicubic and area, bytes and floats, beside the peers, one thread and then two.

#include <cstdio>
#include <cstring>
#include <random>

#include "marlo110k/dib_copy.h"
#include "marlo110k/dib_scale.h"
#include "pixel_scale/job.h"
#include "platform/base/cpu.h"
#include "platform/parallel/rows.h"

namespace bench {

namespace {

/// Noise over a gradient: edges for the bicubic, no flat areas.
Job MakeJob(Method method, bool isFloat, int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  Job job = {method, isFloat, srcWidth, srcHeight, dstWidth, dstHeight, {}};
  const size_t channels = static_cast<size_t>(srcWidth) * static_cast<size_t>(srcHeight) * 4;
  std::mt19937 random(1);
  job.src.resize(channels * (isFloat ? 4 : 1));
  for (size_t index = 0; index < channels; ++index) {
    const uint8_t value = static_cast<uint8_t>(random());
    const float number = static_cast<float>(value) / 255.0f;
    if (isFloat) {
      std::memcpy(job.src.data() + index * 4, &number, 4);
    } else {
      job.src[index] = value;
    }
  }
  return job;
}

void Scale(const Job& job, std::vector<uint8_t>* dst) {
  const SIZE srcSize = {job.srcWidth, job.srcHeight};
  const SIZE dstSize = {job.dstWidth, job.dstHeight};
  const auto scaler = job.method == Method::kBicubic ? ZrDibScale_BiCubic : ZrDibScale_Bilinear;
  scaler(dst->data(), &dstSize, job.dstWidth * job.PixelBytes(), nullptr, job.src.data(), &srcSize,
         job.srcWidth * job.PixelBytes(), nullptr, job.PixelBytes(), job.method == Method::kArea ? 1 : 0, 0);
}

/// Steps are those of the prepared record; a pixel's centre lies half a step and half a pixel in.
Sampling OurSampling(const Job& job) {
  const SIZE srcSize = {job.srcWidth, job.srcHeight};
  const SIZE dstSize = {job.dstWidth, job.dstHeight};
  tZRDIBSUBPIXELPARAMS record;
  uint8_t pixel = 0;
  ZrPrepareSubpixelParam(&record, &pixel, &dstSize, 0, nullptr, &pixel, &srcSize, 0, nullptr);
  const double stepX = record.stepX / 16384.0, stepY = record.stepY / 16384.0;
  if (job.method == Method::kArea) return {0, stepX, 0, stepY};
  return {(record.stepX / 2 + 8192) / 16384.0 - 1, stepX, (record.stepY / 2 + 8192) / 16384.0 - 1, stepY};
}

struct Shape {
  const char* name;
  Method method;
  bool isFloat;
  int srcWidth, srcHeight, dstWidth, dstHeight;
  double goal, stretch;  ///< Against OpenCV.
  double pixmanGoal;
};

constexpr Shape kShapes[] = {
    {"bilinear 256x256 to 384x384, in cache", Method::kBilinear, false, 256, 256, 384, 384, 1.0, 1.3, 1.0},
    {"bilinear 1080p to 1900x1070", Method::kBilinear, false, 1920, 1080, 1900, 1070, 1.0, 1.3, 1.0},
    {"bilinear 1080p to 4K", Method::kBilinear, false, 1920, 1080, 3840, 2160, 1.0, 1.3, 1.0},
    {"bilinear 1080p to 720p", Method::kBilinear, false, 1920, 1080, 1280, 720, 1.0, 1.3, 1.0},
    {"bicubic 256x256 to 384x384, in cache", Method::kBicubic, false, 256, 256, 384, 384, 3.0, 0, 0},
    {"bicubic 1080p to 4K", Method::kBicubic, false, 1920, 1080, 3840, 2160, 3.0, 0, 0},
    {"bicubic 720p to 1080p", Method::kBicubic, false, 1280, 720, 1920, 1080, 3.0, 0, 0},
    {"area 1080p to 640x360", Method::kArea, false, 1920, 1080, 640, 360, 3.0, 5.0, 0},
    {"area 4K to 1280x720", Method::kArea, false, 3840, 2160, 1280, 720, 3.0, 5.0, 0},
    {"area 1080p to 1280x720", Method::kArea, false, 1920, 1080, 1280, 720, 3.0, 5.0, 0},
    {"float bilinear 256x256 to 384x384, in cache", Method::kBilinear, true, 256, 256, 384, 384, 1.0, 0, 0},
    {"float bilinear 1080p to 4K", Method::kBilinear, true, 1920, 1080, 3840, 2160, 1.0, 0, 0},
    {"float bicubic 1080p to 4K", Method::kBicubic, true, 1920, 1080, 3840, 2160, 1.0, 0, 0},
    {"float area 1080p to 640x360", Method::kArea, true, 1920, 1080, 640, 360, 1.0, 0, 0},
};

void AskShape(const Shape& shape) {
  const Job job =
      MakeJob(shape.method, shape.isFloat, shape.srcWidth, shape.srcHeight, shape.dstWidth, shape.dstHeight);
  std::vector<uint8_t> dst(static_cast<size_t>(job.Pixels()) * static_cast<size_t>(job.PixelBytes()));
  Scale(job, &dst);
  Question question(shape.name, "pixel");
  question.Ours({"ours", [&] { Scale(job, &dst); }, job.Pixels(), MaxError(job, OurSampling(job), dst)});
  Kept openCv, pixman, libyuv;
  AddOpenCv(&question, job, &openCv);
  question.Goal(0, shape.goal, shape.stretch);
  AddPixman(&question, job, &pixman);
  if (shape.pixmanGoal > 0) question.Goal(1, shape.pixmanGoal);
  AddLibyuv(&question, job, &libyuv);
  question.Print();
}

/// Two threads of ours against one.
void AskThreads(const Shape& shape) {
  const Job job =
      MakeJob(shape.method, shape.isFloat, shape.srcWidth, shape.srcHeight, shape.dstWidth, shape.dstHeight);
  std::vector<uint8_t> one(static_cast<size_t>(job.Pixels()) * static_cast<size_t>(job.PixelBytes()));
  std::vector<uint8_t> two = one;
  Question question(std::string(shape.name) + ", two threads", "pixel");
  const auto scaled = [&job](std::vector<uint8_t>* dst, uint32_t threads) {
    return [&job, dst, threads] {
      plat::SetParallelThreads(threads);
      Scale(job, dst);
    };
  };
  question.Ours({"ours, two threads", scaled(&two, 2), job.Pixels()});
  question.Peer({"ours, one thread", scaled(&one, 1), job.Pixels()});
  question.Goal(0, 1.8);
  question.Print();
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  plat::SetParallelThreads(1);
  for (const bench::Shape& shape : bench::kShapes) {
    if (argc < 2 || std::strstr(shape.name, argv[1])) bench::AskShape(shape);
  }
  for (const bench::Shape& shape : bench::kShapes) {
    if (shape.dstWidth >= 1280 && (argc < 2 || std::strstr(shape.name, argv[1]))) bench::AskThreads(shape);
  }
  return 0;
}
