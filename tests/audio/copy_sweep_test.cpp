// SPDX-License-Identifier: Apache-2.0
// Every value of the 24-bit types through every pair. Runs with MARLO_NIGHTLY=1, else says that it doesn't.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "audio/sample_data.h"

using namespace sample_reference;

namespace {

class Sweep24 : public testing::TestWithParam<uint32_t> {};

TEST_P(Sweep24, EveryValueIntoEveryType) {
  if (std::getenv("MARLO_NIGHTLY") == nullptr) GTEST_SKIP() << "set MARLO_NIGHTLY=1 to run the sweep";
  const ProcessorScope scope;
  const uint32_t source = GetParam();
  const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
  constexpr int64_t kBlock = 1 << 16;
  std::vector<uint8_t> samples(kBlock * sourceBytes);
  std::vector<uint8_t> result(kBlock * 8);
  for (int64_t first = LowOf(24); first <= HighOf(24); first += kBlock) {
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
