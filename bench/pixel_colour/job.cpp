// SPDX-License-Identifier: Apache-2.0
// The exact results that contenders are held against.

#include "pixel_colour/job.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace bench {

namespace {

/// Where a pixel's samples stand.
struct Places {
  size_t luma, u, v;
};
Places PlacesOf(Layout layout, int width, int height, int x, int y) {
  const size_t w = static_cast<size_t>(width), at = static_cast<size_t>(y) * w + static_cast<size_t>(x);
  if (layout == Layout::kUyvy) return {at * 2 + 1, at / 2 * 4, at / 2 * 4 + 2};
  const size_t pixels = w * static_cast<size_t>(height);
  const size_t chroma = static_cast<size_t>(y / 2) * (w / 2) + static_cast<size_t>(x / 2);
  return {at, pixels + chroma, pixels * 5 / 4 + chroma};
}

double DecodeError(const Job& job, Levels levels, const uint8_t* pixel, int x, int y) {
  const Places places = PlacesOf(job.from, job.width, job.height, x, y);
  const double luma = job.src[places.luma], u = job.src[places.u] - 128.0, v = job.src[places.v] - 128.0;
  const double offset = levels == Levels::kFull ? 16 : 0, scale = levels == Levels::kFull ? 255.0 / 219 : 1;
  const double chroma = scale * 219 / 224;
  const double want[3] = {(luma - offset) * scale + u * chroma * 1.8556,
                          (luma - offset) * scale - u * chroma * 0.1873 - v * chroma * 0.4681,
                          (luma - offset) * scale + v * chroma * 1.5748};
  double worst = 0;
  for (int c = 0; c < 3; ++c) worst = std::max(worst, std::fabs(std::clamp(want[c], 0.0, 255.0) - pixel[c]));
  return worst;
}

double EncodeError(const Job& job, Levels levels, const std::vector<uint8_t>& result, int x, int y) {
  const Places places = PlacesOf(job.to, job.width, job.height, x, y);
  const double scale = levels == Levels::kFull ? 219.0 / 255 : 1, offset = levels == Levels::kFull ? 16 : 0;
  const auto channel = [&](int column, int row, int c) {
    const int64_t at = (int64_t{row} * job.width + column) * 4 + c;
    return static_cast<double>(job.src[static_cast<size_t>(at)]);
  };
  const double luma = 0.0722 * channel(x, y, 0) + 0.7152 * channel(x, y, 1) + 0.2126 * channel(x, y, 2);
  double mean[3] = {};
  const int rows = job.to == Layout::kI420 ? 2 : 1;
  for (int c = 0; c < 3; ++c) {
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < 2; ++column) {
        mean[c] += channel(x / 2 * 2 + column, y / rows * rows + row, c) / (2 * rows);
      }
    }
  }
  const double gain = scale * 224 / 219;
  const double u = (0.5 * mean[0] - 0.3854 * mean[1] - 0.1146 * mean[2]) * gain + 128;
  const double v = (-0.0458 * mean[0] - 0.4542 * mean[1] + 0.5 * mean[2]) * gain + 128;
  return std::max({std::fabs(std::clamp(luma * scale + offset, 1.0, 254.0) - result[places.luma]),
                   std::fabs(std::clamp(u, 1.0, 254.0) - result[places.u]),
                   std::fabs(std::clamp(v, 1.0, 254.0) - result[places.v])});
}

}  // namespace

size_t Bytes(Layout layout, int64_t pixels) {
  const size_t count = static_cast<size_t>(pixels);
  return layout == Layout::kBgra ? count * 4 : layout == Layout::kUyvy ? count * 2 : count * 3 / 2;
}

Job MakeJob(Layout from, Layout to, int width, int height) {
  Job job = {from, to, width, height, {}};
  job.src.resize(Bytes(from, job.Pixels()));
  std::mt19937 random(1);
  for (uint8_t& value : job.src) value = static_cast<uint8_t>(random());
  return job;
}

double MaxError(const Job& job, Levels levels, const std::vector<uint8_t>& result) {
  double worst = 0;
  for (int y = 0; y < job.height; y += 7) {
    for (int x = 0; x < job.width; ++x) {
      const size_t at = (static_cast<size_t>(y) * static_cast<size_t>(job.width) + static_cast<size_t>(x)) * 4;
      worst = std::max(worst, job.to == Layout::kBgra ? DecodeError(job, levels, result.data() + at, x, y)
                                                      : EncodeError(job, levels, result, x, y));
    }
  }
  return worst;
}

}  // namespace bench
