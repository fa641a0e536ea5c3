// SPDX-License-Identifier: Apache-2.0
// The values of the 24-bit types through every pair: all of them with MARLO_NIGHTLY=1, else a part of each range.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "audio/sample_data.h"

using namespace sample_reference;

namespace {

class Sweep24 : public testing::TestWithParam<uint32_t> {};

TEST_P(Sweep24, EveryValueIntoEveryType) {
  const ProcessorScope scope;
  const uint32_t source = GetParam();
  const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
  constexpr int64_t kBlock = 1 << 12;
  // By day one block in 63, and always the first and the last.
  const int64_t stride = std::getenv("MARLO_NIGHTLY") == nullptr ? 63 : 1;
  std::vector<uint8_t> samples(kBlock * sourceBytes);
  std::vector<uint8_t> result(kBlock * 8);
  const int64_t blocks = (HighOf(24) - LowOf(24) + 1) / kBlock;
  for (int64_t block = 0; block < blocks; ++block) {
    if (block % stride != 0 && block != blocks - 1) continue;
    const int64_t first = LowOf(24) + block * kBlock;
    for (int64_t n = 0; n < kBlock; ++n) {
      PutRaw(source, samples.data() + static_cast<size_t>(n) * sourceBytes, first + n);
    }
    for (const uint32_t dest : kMemoryTypes) {
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      std::vector<uint8_t> expected(kBlock * destBytes);
      bool made = false;
      for (const Members members : {Members::kPlain, Members::kAll}) {
        Allow(members);
        const auto copy = ZrAudio_GetCopyFunction2(dest, source);
        if (!copy) continue;
        if (!made) {
          for (size_t n = 0; n < kBlock; ++n) {
            CopySample(dest, expected.data() + n * destBytes, source, samples.data() + n * sourceBytes, 1.0f);
          }
          made = true;
        }
        copy(result.data(), samples.data(), kBlock, 1.0f);
        ASSERT_EQ(std::memcmp(result.data(), expected.data(), expected.size()), 0)
            << PairName(dest, source) << ' ' << NameOf(members) << " block at " << first;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Types, Sweep24, testing::Values(18u, 65u, 48u),
                         [](const auto& type) { return LayoutOf(type.param).name; });

}  // namespace
