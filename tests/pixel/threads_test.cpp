// SPDX-License-Identifier: Apache-2.0
// The same bits with any number of threads and vector level, and several calls at once.

#include <gtest/gtest.h>

#include <thread>

#include "marlo110k/dib_composite.h"
#include "marlo110k/dib_copy.h"
#include "marlo110k/dib_scale.h"
#include "pixel/testing/picture.h"
#include "platform/base/cpu.h"
#include "platform/parallel/rows.h"

namespace {

using testing_support::Picture;
using testing_support::Random;

/// One call whose rows are spread over threads: pictures are large enough for seven.
struct Operation {
  const char* name;
  int32_t dstType, srcType;
  int32_t dstWidth, dstHeight, srcWidth, srcHeight;
  uint32_t flags;
  double dstGamma;
};

constexpr Operation kOperations[] = {
    {"block", 31, 31, 700, 700, 700, 700, 0, 0},
    {"dither", 29, 32, 700, 700, 700, 700, 3, 0},
    {"gamma table", 27, 32, 700, 700, 700, 700, 3, 1},
    {"byte table", 29, 32, 700, 700, 700, 700, 0, 1},
    {"to floats", 32, 28, 700, 700, 700, 700, 0, 0},
    {"float gamma", 32, 32, 700, 700, 700, 700, 0, 1},
    {"exchange", 18, 31, 701, 700, 701, 700, 3, 0},
    {"palette", 24, 27, 700, 700, 700, 700, 0, 0},
    {"feather", 31, 29, 700, 700, 700, 700, ZRDIB_FEATHER_LEFT | ZRDIB_FEATHER_FIRST_ROWS | (40u << 16), 0},
    {"sampled", 25, 26, 703, 600, 500, 700, 3, 0},
    {"bilinear", 29, 29, 800, 700, 501, 403, 3, 0},
    {"bicubic", 29, 28, 800, 700, 501, 403, 3 | ZRDIB_BICUBIC, 0},
    {"area", 29, 29, 640, 560, 1501, 1203, 3 | ZRDIB_AREA, 0},
    {"float bicubic", 32, 32, 700, 600, 301, 203, 3 | ZRDIB_BICUBIC, 0},
    {"float area", 32, 32, 500, 600, 801, 703, 3 | ZRDIB_AREA, 0},
};

std::unique_ptr<Picture> Make(int32_t type, int32_t width, int32_t height) {
  RGBQUAD palette[64];
  for (int index = 0; index < 64; ++index) {
    palette[index] = {static_cast<uint8_t>(index % 4 * 85), static_cast<uint8_t>(index / 4 % 4 * 85),
                      static_cast<uint8_t>(index / 16 * 85), 0};
  }
  return std::make_unique<Picture>(type, width, height, 0, false, type == 24 ? palette : nullptr, type == 24 ? 64 : 0);
}

std::unique_ptr<Picture> MakeSource(const Operation& operation, uint64_t seed) {
  Random random(seed);
  auto source = Make(operation.srcType, operation.srcWidth, operation.srcHeight);
  if (operation.srcType == 32) {
    source->RandomizeFloats(random, -0.1, 1.1);
  } else {
    source->Randomize(random);
  }
  return source;
}

HRESULT Perform(const Operation& operation, Picture& dst, Picture& src) {
  return ZrDibCopy(dst.header(), dst.bits(), nullptr, 0, src.header(), src.bits(), nullptr, 0, operation.flags,
                   operation.dstGamma, 0);
}

struct PixelThreads : ::testing::Test {
  ~PixelThreads() override {
    plat::SetVectorLevelLimit(plat::VectorLevel::kAvx512);
    plat::SetParallelThreads(0);
  }
};

TEST_F(PixelThreads, SameBitsWithAnyCountAndLevel) {
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    auto src = MakeSource(operation, 6810);
    auto dst = Make(operation.dstType, operation.dstWidth, operation.dstHeight);
    std::vector<uint8_t> expected;
    for (plat::VectorLevel level :
         {plat::VectorLevel::kPlain, plat::VectorLevel::kSse2, plat::VectorLevel::kAvx2, plat::VectorLevel::kAvx512}) {
      plat::SetVectorLevelLimit(level);
      for (uint32_t threads : {1u, 2u, 7u}) {
        plat::SetParallelThreads(threads);
        std::fill_n(dst->bits(), dst->size(), uint8_t{0x5A});
        ASSERT_EQ(0, Perform(operation, *dst, *src));
        if (expected.empty()) expected = dst->Copy();
        ASSERT_TRUE(expected == dst->Copy()) << "threads " << threads << " level " << static_cast<uint32_t>(level);
      }
    }
  }
}

TEST_F(PixelThreads, CompositesAreTheSameWithAnyCountAndLevel) {
  for (const int32_t type : {29, 32}) {
    Picture src(type, 700, 500), start(type, 700, 500);
    Random random(6270);
    SCOPED_TRACE(random.Label());
    if (type == 32) {
      src.RandomizeFloats(random, -0.1, 1.1);
      start.RandomizeFloats(random, -0.1, 1.1);
    } else {
      src.Randomize(random);
      start.Randomize(random);
    }
    const RECT fraction{5000, 9000, 699 * 16384 + 77, 499 * 16384 + 5};
    for (int32_t mode = 0; mode < 13; ++mode) {
      for (const bool subpixel : {false, true}) {
        std::vector<uint8_t> expected;
        for (plat::VectorLevel level :
             {plat::VectorLevel::kPlain, plat::VectorLevel::kSse2, plat::VectorLevel::kAvx2}) {
          plat::SetVectorLevelLimit(level);
          for (uint32_t threads : {1u, 2u, 7u}) {
            plat::SetParallelThreads(threads);
            Picture dst(type, 700, 500);
            std::memcpy(dst.bits(), start.bits(), start.size());
            const tZRDIBCOMPOSITEPARAMS params{0, mode, 0.6f, nullptr};
            ASSERT_EQ(0, ZrDibComposite(dst.header(), dst.bits(), subpixel ? &fraction : nullptr, 0, src.header(),
                                        src.bits(), nullptr, 0, &params, subpixel ? ZRDIB_SUBPIXEL : 0u));
            if (expected.empty()) expected = dst.Copy();
            ASSERT_TRUE(expected == dst.Copy()) << "type " << type << " mode " << mode << " threads " << threads;
          }
        }
      }
    }
  }
}

TEST_F(PixelThreads, CallsAtOnceDontMeet) {
  // First uses of the shared tables meet here too: this program runs each test in a process of its own.
  plat::SetParallelThreads(3);
  constexpr int kCallers = 4;
  std::vector<std::thread> callers;
  std::vector<int> failures(kCallers, 0);
  for (int caller = 0; caller < kCallers; ++caller) {
    callers.emplace_back([&failures, caller] {
      for (const Operation& operation : kOperations) {
        auto src = MakeSource(operation, 6811);
        auto dst = Make(operation.dstType, operation.dstWidth, operation.dstHeight);
        auto again = Make(operation.dstType, operation.dstWidth, operation.dstHeight);
        failures[static_cast<size_t>(caller)] += Perform(operation, *dst, *src) != 0;
        failures[static_cast<size_t>(caller)] += Perform(operation, *again, *src) != 0;
        failures[static_cast<size_t>(caller)] += dst->Copy() != again->Copy();
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(std::vector<int>(kCallers, 0), failures);
}

}  // namespace
