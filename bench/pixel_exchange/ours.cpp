// SPDX-License-Identifier: Apache-2.0
// Copies between pixel types: bytes and floats both ways beside a peer and on two threads, then nanoseconds a pixel of
// every pair of types.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "marlo110k/dib_copy.h"
#include "pixel_exchange/peers.h"
#include "platform/parallel/rows.h"

namespace bench {

namespace {

/// A picture of any type with what its descriptor needs.
struct Picture {
  Picture(int32_t type, int width, int height) : descriptor(sizeof(BITMAPINFOHEADER) + 1024) {
    RGBQUAD palette[256];
    for (int index = 0; index < 256; ++index) {
      const uint8_t level = static_cast<uint8_t>(index);
      palette[index] = {level, level, level, 0};
    }
    ZrVideo_InitBitmapInfo(Header(), type, width, height, palette, type == ZRPIXEL_PAL4 ? 16 : 256, nullptr);
    const size_t stride = static_cast<size_t>((Header()->biBitCount * width + 31) / 32 * 4);
    bits.resize(stride * static_cast<size_t>(height));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    const bool floats = type == ZRPIXEL_RGBA128F || type == ZRPIXEL_GRAY32F;
    for (size_t index = 0; index + 4 <= bits.size(); index += 4) {
      const uint32_t word = static_cast<uint32_t>(random());
      const float value = unit(random);
      std::memcpy(&bits[index], floats ? static_cast<const void*>(&value) : &word, 4);
    }
  }
  BITMAPINFOHEADER* Header() { return static_cast<BITMAPINFOHEADER*>(static_cast<void*>(descriptor.data())); }
  std::vector<uint8_t> descriptor;
  std::vector<uint8_t> bits;
};

void Copy(Picture* dst, Picture* src, uint32_t flags, double dstGamma) {
  ZrDibCopy(dst->Header(), dst->bits.data(), nullptr, 0, src->Header(), src->bits.data(), nullptr, 0, flags, dstGamma,
            0.0);
  Use(dst->bits.data());
}

struct Size {
  const char* name;
  int width, height;
};
constexpr Size kSizes[] = {{"160x90, in cache", 160, 90}, {"1080p", 1920, 1080}, {"4K", 3840, 2160}};

struct Pair {
  const char* name;
  int32_t to, from;
  uint32_t quality;
  double dstGamma;
  bool hasPeer;
};
constexpr Pair kPairs[] = {
    {"bytes to floats", ZRPIXEL_RGBA128F, ZRPIXEL_RGBA32, 0, 0.0, true},
    {"bytes to floats, gamma", ZRPIXEL_RGBA128F, ZRPIXEL_RGBA32, 0, 1.0, false},
    {"floats to bytes, cut", ZRPIXEL_RGBA32, ZRPIXEL_RGBA128F, 0, 0.0, true},
    {"floats to bytes, dither", ZRPIXEL_RGBA32, ZRPIXEL_RGBA128F, 3, 0.0, true},
    {"floats to bytes, gamma", ZRPIXEL_RGBA32, ZRPIXEL_RGBA128F, 0, 1.0, false},
    {"floats to bytes, gamma and dither", ZRPIXEL_RGBA32, ZRPIXEL_RGBA128F, 3, 1.0, false},
    {"floats to floats, gamma", ZRPIXEL_RGBA128F, ZRPIXEL_RGBA128F, 0, 1.0, false},
};

void AskPair(const Pair& pair, const Size& size) {
  Picture src(pair.from, size.width, size.height), dst(pair.to, size.width, size.height);
  const double pixels = static_cast<double>(size.width) * size.height;
  const auto copied = [&](uint32_t threads) {
    return [&src, &dst, &pair, threads] {
      plat::SetParallelThreads(threads);
      Copy(&dst, &src, pair.quality, pair.dstGamma);
    };
  };
  std::vector<uint8_t> peer;
  Question question(std::string(pair.name) + ", " + size.name, "pixel");
  question.Ours({"ours", copied(1), pixels});
  question.Peer({"ours, two threads", copied(2), pixels});
  if (pair.hasPeer) AddOpenCv(&question, pair.to == ZRPIXEL_RGBA128F, size.width, size.height, src.bits, &peer);
  question.Print(9, 0.01);
}

/// The best of some batches, in nanoseconds a pixel.
double Nanoseconds(int32_t to, int32_t from, int width, int height) {
  Picture src(from, width, height), dst(to, width, height);
  double best = std::numeric_limits<double>::max();
  for (int batch = 0; batch < 5; ++batch) {
    const auto start = std::chrono::steady_clock::now();
    Copy(&dst, &src, 0, 0.0);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    best = std::min(best, taken.count() / (static_cast<double>(width) * height));
  }
  return best;
}

void PrintTable() {
  std::printf("nanoseconds a pixel at 640x360, one thread; rows are sources, columns destinations\n      ");
  for (int32_t to = ZRPIXEL_RGB1; to <= ZRPIXEL_RGBA128F; ++to) std::printf("%6d", to);
  for (int32_t from = ZRPIXEL_RGB1; from <= ZRPIXEL_RGBA128F; ++from) {
    std::printf("\n%6d", from);
    for (int32_t to = ZRPIXEL_RGB1; to <= ZRPIXEL_RGBA128F; ++to) std::printf("%6.2f", Nanoseconds(to, from, 640, 360));
  }
  std::printf("\n");
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  for (const bench::Size& size : bench::kSizes) {
    for (const bench::Pair& pair : bench::kPairs) {
      if (argc < 2 || std::strstr(pair.name, argv[1])) bench::AskPair(pair, size);
    }
  }
  plat::SetParallelThreads(1);
  if (argc < 2 || std::strstr("table", argv[1])) bench::PrintTable();
  return 0;
}
