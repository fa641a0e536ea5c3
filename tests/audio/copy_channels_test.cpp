// SPDX-License-Identifier: Apache-2.0
// The copy channels functions: served pairs, values between strides, and conversions in place.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "audio/copy.h"
#include "audio/sample_data.h"

using namespace sample_reference;

namespace {

bool IsServed(uint32_t dest, uint32_t source) {
  const bool destAligned = dest >= 128;
  const bool sourceAligned = source >= 128;
  if (!destAligned && !sourceAligned) return true;
  if (destAligned && sourceAligned) return false;
  const auto isOneOf = [](uint32_t type, std::initializer_list<uint32_t> types) {
    for (const uint32_t one : types) {
      if (one == type) return true;
    }
    return false;
  };
  if (destAligned) return isOneOf(source, {17, 18, 32});
  return source == 128 ? isOneOf(dest, {17, 18, 19, 32, 33, 48}) : isOneOf(dest, {17, 18, 32, 33});
}

constexpr struct {
  uint32_t destChannels, destIndex, sourceChannels, sourceIndex;
} kShapes[] = {{1, 0, 1, 0}, {2, 1, 1, 0}, {1, 0, 6, 5}, {6, 2, 2, 1}, {3, 0, 4, 3}};

TEST(CopyChannels, EveryServedPairBetweenStrides) {
  const ProcessorScope scope;
  testing_support::Random random(2220);
  SCOPED_TRACE(random.Label());
  int served = 0;
  for (const Layout& from : kLayouts) {
    for (const Layout& to : kLayouts) {
      const auto copy = ZrAudio_GetCopyChannelsFunction2(to.type, from.type);
      ASSERT_EQ(copy != nullptr, IsServed(to.type, from.type)) << PairName(to.type, from.type);
      if (!copy) continue;
      ++served;
      for (const auto& shape : kShapes) {
        for (const size_t frames : {0u, 1u, 7u, 8u, 61u}) {
          const auto samples = HardSamples(from.type, static_cast<int64_t>(frames * shape.sourceChannels), random);
          std::vector<uint8_t> before(frames * shape.destChannels * static_cast<size_t>(to.bytes));
          for (uint8_t& byte : before) byte = static_cast<uint8_t>(random.Bits());
          std::vector<uint8_t> expected(before);
          for (size_t frame = 0; frame < frames; ++frame) {
            const size_t destSample = frame * shape.destChannels + shape.destIndex;
            const size_t sourceSample = frame * shape.sourceChannels + shape.sourceIndex;
            CopySample(to.type, expected.data() + destSample * static_cast<size_t>(to.bytes), from.type,
                       samples.data() + sourceSample * static_cast<size_t>(from.bytes), 1.0f);
          }
          for (const Members members : {Members::kPlain, Members::kAll}) {
            Allow(members);
            std::vector<uint8_t> result(before);
            ZrAudio_GetCopyChannelsFunction2(to.type, from.type)(result.data(), shape.destChannels, shape.destIndex,
                                                                 samples.data(), shape.sourceChannels,
                                                                 shape.sourceIndex, static_cast<int64_t>(frames));
            ASSERT_EQ(result, expected) << PairName(to.type, from.type) << ' ' << NameOf(members);
          }
        }
      }
    }
  }
  EXPECT_EQ(served, 137);
}

TEST(CopyChannels, InPlaceIntoWiderSamples) {
  const ProcessorScope scope;
  testing_support::Random random(2221);
  SCOPED_TRACE(random.Label());
  constexpr size_t kFrames = 43;
  for (const Members members : {Members::kPlain, Members::kAll}) {
    Allow(members);
    const auto samples = HardSamples(17, kFrames, random);
    std::vector<double> expected(kFrames);
    ZrAudio_GetCopyFunction2(33, 17)(expected.data(), samples.data(), kFrames, 1.0f);
    std::vector<double> buffer(kFrames);
    std::memcpy(buffer.data(), samples.data(), samples.size());
    ZrAudio_GetCopyChannelsFunction2(33, 17)(buffer.data(), 1, 0, buffer.data(), 1, 0, kFrames);
    EXPECT_EQ(buffer, expected) << NameOf(members);
  }
}

// Moving the bytes of one type onto a wider stride in place would eat the frames ahead.
TEST(CopyChannels, SameTypeInPlaceOntoWiderStrideDoesNothing) {
  for (const uint32_t type : kMemoryTypes) {
    std::vector<uint8_t> buffer(96);
    for (size_t n = 0; n < buffer.size(); ++n) buffer[n] = static_cast<uint8_t>(n);
    const std::vector<uint8_t> before(buffer);
    ZrAudio_GetCopyChannelsFunction2(type, type)(buffer.data(), 2, 1, buffer.data(), 1, 0, 4);
    EXPECT_EQ(buffer, before) << LayoutOf(type).name;
    ZrAudio_GetCopyChannelsFunction2(type, type)(buffer.data(), 1, 0, buffer.data(), 2, 1, 2);
    EXPECT_NE(buffer, before) << "a narrower stride is served: " << LayoutOf(type).name;
  }
}

TEST(CopyChannelsGetter, Float64FromPcm16FollowsTheMask) {
  const ProcessorScope scope;
  Allow(Members::kSse2);
  EXPECT_EQ(ZrAudio_GetCopyChannelsFunction2(33, 17), marlo::CopyChannelsFloat64FromPcm16Sse2);
  ZrDisallowCPUSupport(ZRCPU_SSE2);
  EXPECT_EQ(ZrAudio_GetCopyChannelsFunction2(33, 17), marlo::CopyChannelsMemberPlain(33, 17));
}

}  // namespace
