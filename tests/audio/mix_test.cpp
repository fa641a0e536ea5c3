// SPDX-License-Identifier: Apache-2.0
// The mix and mix channels functions against the reference and against each other.
#include "audio/mix.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <vector>

#include "audio/sample_data.h"

using namespace sample_reference;

namespace {

constexpr uint32_t kChannelCounts[] = {1, 2, 3, 5, 6, 8, 11, 64, 65};

/// Gains for `channels` channels: exact ones, 1.0 and 0.0 among them, and awkward ones.
std::vector<double> MakeGains(uint32_t channels, testing_support::Random& random) {
  constexpr double kSpecial[] = {1.0, 0.0, 0.5, -1.0, 0.1, 1.0000001, 3.7};
  std::vector<double> gains(channels);
  for (double& gain : gains) gain = random.Between(0, 2) ? kSpecial[random.Between(0, 6)] : random.Real(-2, 2);
  return gains;
}

/// Whether the published form of FLOAT32 into FLOAT32, which takes stereo gains as singles, may run.
bool StereoGainsMayBeSingle(uint32_t dest, uint32_t source, uint32_t channels) {
  return dest == 32 && source == 32 && channels == 2;
}

TEST(MixPairs, ServeTheEightLittleEndianTypes) {
  const ProcessorScope scope;
  for (const Members members : kEveryKind) {
    Allow(members);
    for (const Layout& dest : kLayouts) {
      for (const Layout& source : kLayouts) {
        const bool served = dest.type < 64 && source.type < 64;
        EXPECT_EQ(ZrAudio_GetMixFunction2(dest.type, source.type) != nullptr, served);
        EXPECT_EQ(ZrAudio_GetMixChannelsFunction2(dest.type, source.type) != nullptr, served);
        const bool ramp = served && IsFloat(dest.type);
        EXPECT_EQ(marlo::MixRampMember(dest.type, source.type) != nullptr, ramp);
      }
    }
    EXPECT_EQ(ZrAudio_GetMixFunction2(0, 17), nullptr);
    EXPECT_EQ(ZrAudio_GetMixFunction2(17, 0), nullptr);
  }
}

// Hard samples of every pair under every kind of gain, for every tail and alignment of source and destination.
TEST(MixExact, EveryPairTailAndAlignment) {
  const ProcessorScope scope;
  testing_support::Random random(2210);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : kMixTypes) {
    for (const uint32_t dest : kMixTypes) {
      const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      for (size_t count = 0; count <= 67; ++count) {
        const uint32_t channels = kChannelCounts[static_cast<size_t>(random.Between(0, 8))];
        std::vector<double> gains = MakeGains(channels, random);
        if (StereoGainsMayBeSingle(dest, source, channels)) {
          for (double& gain : gains) gain = static_cast<double>(static_cast<float>(gain));
        }
        const std::vector<uint8_t> addends = HardSamples(source, static_cast<int64_t>(count), random);
        const std::vector<uint8_t> present = HardSamples(dest, static_cast<int64_t>(count), random);
        std::vector<uint8_t> expected(present);
        for (size_t n = 0; n < count; ++n) {
          MixSample(dest, expected.data() + n * destBytes, source, addends.data() + n * sourceBytes,
                    gains[n % channels], channels);
        }
        const auto offset = static_cast<size_t>(random.Between(0, 7));
        const size_t odd = random.Between(0, 3) == 0 ? 1 : 0;
        for (const Members members : kEveryKind) {
          Allow(members);
          Guarded from((7 - offset) * sourceBytes + odd, addends.size());
          Guarded to(offset * destBytes, present.size());
          if (count != 0) {
            std::memcpy(from.data(), addends.data(), addends.size());
            std::memcpy(to.data(), present.data(), present.size());
          }
          ZrAudio_GetMixFunction2(dest, source)(to.data(), from.data(), static_cast<int64_t>(count), channels,
                                                gains.data());
          ASSERT_TRUE(to.Untouched()) << PairName(dest, source);
          for (size_t n = 0; n < count; ++n) {
            ASSERT_EQ(std::memcmp(to.data() + n * destBytes, expected.data() + n * destBytes, destBytes), 0)
                << PairName(dest, source) << ' ' << NameOf(members) << " channels " << channels << " sample " << n
                << " of " << count << " gain " << gains[n % channels] << ": "
                << Hex(present.data() + n * destBytes, static_cast<int>(destBytes)) << "plus "
                << Hex(addends.data() + n * sourceBytes, static_cast<int>(sourceBytes)) << "gives "
                << Hex(to.data() + n * destBytes, static_cast<int>(destBytes)) << "not "
                << Hex(expected.data() + n * destBytes, static_cast<int>(destBytes));
          }
        }
      }
    }
  }
}

// Every 16-bit and 8-bit value, on several present values, into each type.
TEST(MixExact, EveryValueOf8And16Bits) {
  const ProcessorScope scope;
  testing_support::Random random(2211);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : {16u, 49u, 17u}) {
    const std::vector<uint8_t> addends = AllValues(source);
    const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
    const size_t count = addends.size() / sourceBytes;
    for (const uint32_t dest : kMixTypes) {
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      const std::vector<uint8_t> present = HardSamples(dest, static_cast<int64_t>(count), random);
      const double gains[3] = {1.0, 0.1, -0.75};
      std::vector<uint8_t> expected(present);
      for (size_t n = 0; n < count; ++n) {
        MixSample(dest, expected.data() + n * destBytes, source, addends.data() + n * sourceBytes, gains[n % 3], 3);
      }
      for (const Members members : {Members::kPlain, Members::kAll}) {
        Allow(members);
        std::vector<uint8_t> result(present);
        ZrAudio_GetMixFunction2(dest, source)(result.data(), addends.data(), static_cast<int64_t>(count), 3, gains);
        EXPECT_EQ(std::memcmp(result.data(), expected.data(), expected.size()), 0)
            << PairName(dest, source) << ' ' << NameOf(members);
      }
    }
  }
}

TEST(MixEdges, SameAddressChangesNothing) {
  const ProcessorScope scope;
  testing_support::Random random(2212);
  for (const Members members : kEveryKind) {
    Allow(members);
    for (const uint32_t source : kMixTypes) {
      for (const uint32_t dest : kMixTypes) {
        alignas(32) uint8_t buffer[8 * 24];
        for (uint8_t& byte : buffer) byte = static_cast<uint8_t>(random.Bits());
        uint8_t before[sizeof buffer];
        std::memcpy(before, buffer, sizeof buffer);
        const double gains[2] = {0.7, 1.0};
        ZrAudio_GetMixFunction2(dest, source)(buffer, buffer, 24, 2, gains);
        ZrAudio_GetMixChannelsFunction2(dest, source)(buffer, 2, 1, buffer, 2, 1, 12, 0.7);
        EXPECT_EQ(std::memcmp(before, buffer, sizeof buffer), 0) << PairName(dest, source);
      }
    }
  }
}

TEST(MixEdges, GainsOneAndZeroTouchLeftSamplesOnly) {
  const ProcessorScope scope;
  constexpr size_t kSamples = 37;  // Odd: the last sample is a left one.
  const double gains[2] = {1.0, 0.0};
  for (const Members members : kEveryKind) {
    Allow(members);
    for (const uint32_t source : kMixTypes) {
      for (const uint32_t dest : kMixTypes) {
        const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
        const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
        std::vector<uint8_t> addends(kSamples * sourceBytes);
        std::vector<uint8_t> buffer(kSamples * destBytes);
        for (size_t n = 0; n < kSamples; ++n) {
          uint8_t* sample = addends.data() + n * sourceBytes;
          IsFloat(source) ? PutFloat(source, sample, 0.25)
                          : PutRaw(source, sample, int64_t{1} << (LayoutOf(source).bits - 3));
          sample = buffer.data() + n * destBytes;
          IsFloat(dest) ? PutFloat(dest, sample, 0.5) : PutRaw(dest, sample, int64_t{1} << (LayoutOf(dest).bits - 2));
        }
        ZrAudio_GetMixFunction2(dest, source)(buffer.data(), addends.data(), kSamples, 2, gains);
        for (size_t n = 0; n < kSamples; ++n) {
          EXPECT_EQ(UnitOf(dest, buffer.data() + n * destBytes), n % 2 ? 0.5 : 0.75)
              << PairName(dest, source) << ' ' << NameOf(members) << " sample " << n;
        }
      }
    }
  }
}

// Worked from the two shapes of integer sums and from the three roundings of FLOAT32.
TEST(MixExact, WorkedValues) {
  const ProcessorScope scope;
  for (const Members members : kEveryKind) {
    Allow(members);
    const auto integers = [](uint32_t dest, uint32_t source, int64_t present, int64_t addend, double gain) {
      uint8_t to[4] = {};
      uint8_t from[4] = {};
      PutRaw(dest, to, present);
      PutRaw(source, from, addend);
      ZrAudio_GetMixFunction2(dest, source)(to, from, 1, 1, &gain);
      return RawOf(dest, to);
    };
    EXPECT_EQ(integers(17, 17, 32767, 32767, 1.0), 32767);
    // Converted first: 1.5 rounds to 2. In one step: 1002.5 rounds to 1002.
    EXPECT_EQ(integers(17, 17, 1001, 3, 0.5), 1003);
    EXPECT_EQ(integers(48, 48, 1001, 3, 0.5), 1003);
    EXPECT_EQ(integers(18, 18, 1001, 3, 0.5), 1002);
    EXPECT_EQ(integers(19, 19, 1001, 3, 0.5), 1002);
    EXPECT_EQ(integers(16, 16, -100, -100, 1.0), -128);

    const auto source = std::bit_cast<float>(0x3F2E634Bu);
    const auto wide = static_cast<double>(source);
    const auto present = std::bit_cast<float>(0x3D2807A9u);
    const auto mixed = [present](uint32_t sourceType, const void* from, uint32_t channels) {
      const double gains[3] = {0.1, 0.1, 0.1};
      alignas(16) float buffer[4] = {0, present, 0, 0};  // Off the 16 bytes of the published form.
      ZrAudio_GetMixFunction2(32, sourceType)(buffer + 1, from, 1, channels, gains);
      return std::bit_cast<uint32_t>(buffer[1]);
    };
    EXPECT_EQ(mixed(32, &source, 1), 0x3DDF8676u);
    EXPECT_EQ(mixed(32, &source, 2), 0x3DDF8676u);
    EXPECT_EQ(mixed(32, &source, 3), 0x3DDF8678u);
    EXPECT_EQ(mixed(33, &wide, 1), 0x3DDF8677u);
  }
}

// On 16 bytes the stereo gains are singles, wherever a sample stands in the buffer; elsewhere the product is
// rounded from double.
TEST(MixFloat32, StereoOn16BytesMultipliesInSingle) {
  const ProcessorScope scope;
  testing_support::Random random(2213);
  SCOPED_TRACE(random.Label());
  const double gains[2] = {0.1, 0.7};
  for (const Members members : {Members::kSse2, Members::kAll}) {
    Allow(members);
    const auto mix = ZrAudio_GetMixFunction2(32, 32);
    for (int64_t count = 0; count <= 40; ++count) {
      for (const bool aligned : {true, false}) {
        alignas(32) float source[48];
        alignas(32) float dest[48];
        float expected[48];
        float* from = aligned ? source : source + 1;
        float* to = aligned ? dest : dest + 1;
        for (int64_t n = 0; n < count; ++n) {
          from[n] = static_cast<float>(random.Real(-1, 1));
          to[n] = static_cast<float>(random.Real(-1, 1));
          const double gain = gains[n % 2];
          const float product =
              aligned ? static_cast<float>(gain) * from[n] : static_cast<float>(static_cast<double>(from[n]) * gain);
          expected[n] = product + to[n];
        }
        mix(to, from, count, 2, gains);
        EXPECT_EQ(std::memcmp(to, expected, static_cast<size_t>(count) * 4), 0)
            << NameOf(members) << ' ' << count << (aligned ? " aligned" : "");
      }
    }
  }
}

TEST(MixChannels, EveryPairBetweenStrides) {
  testing_support::Random random(2214);
  SCOPED_TRACE(random.Label());
  constexpr struct {
    uint32_t destChannels, destIndex, sourceChannels, sourceIndex;
  } kShapes[] = {{1, 0, 1, 0}, {2, 1, 1, 0}, {1, 0, 6, 5}, {6, 2, 2, 1}, {3, 0, 4, 3}};
  for (const uint32_t source : kMixTypes) {
    for (const uint32_t dest : kMixTypes) {
      const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      for (const auto& shape : kShapes) {
        for (const double gain : {1.0, 0.1, -2.5}) {
          constexpr size_t kFrames = 61;
          const auto addends = HardSamples(source, kFrames * shape.sourceChannels, random);
          auto result = HardSamples(dest, kFrames * shape.destChannels, random);
          auto expected = result;
          for (size_t frame = 0; frame < kFrames; ++frame) {
            MixSample(dest, expected.data() + (frame * shape.destChannels + shape.destIndex) * destBytes, source,
                      addends.data() + (frame * shape.sourceChannels + shape.sourceIndex) * sourceBytes, gain, 1);
          }
          ZrAudio_GetMixChannelsFunction2(dest, source)(result.data(), shape.destChannels, shape.destIndex,
                                                        addends.data(), shape.sourceChannels, shape.sourceIndex,
                                                        kFrames, gain);
          EXPECT_EQ(result, expected) << PairName(dest, source) << " gain " << gain;
        }
      }
    }
  }
}

// The same address but another channel: the left channel of a buffer onto its right one.
TEST(MixChannels, WithinOneBuffer) {
  int16_t buffer[] = {100, 1, 200, 2, 300, 3};
  ZrAudio_GetMixChannelsFunction2(17, 17)(buffer, 2, 1, buffer, 2, 0, 3, 0.5);
  const int16_t expected[] = {100, 51, 200, 102, 300, 153};
  EXPECT_EQ(std::memcmp(buffer, expected, sizeof buffer), 0);
}

}  // namespace
