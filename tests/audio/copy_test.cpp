// SPDX-License-Identifier: Apache-2.0
// The copy functions against the reference, against each other, in place, and at the edges of the rules.
#include "audio/copy.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <memory>
#include <vector>

#include "audio/sample_data.h"
#include "platform/base/fpu.h"

using namespace sample_reference;

namespace {

constexpr float kGains[] = {1.0f, 0.5f, 0.1f, -1.7f, 3.3f, 0.0f};

bool IsServed(uint32_t dest, uint32_t source) { return source != 48 || (dest != 64 && dest != 65); }

/// FLOAT32 into PCM16 may differ outside of 2^31 in its vector members.
bool OverflowsDiffer(uint32_t dest, uint32_t source) { return dest == 17 && source == 32; }

/// Runs `copy` over samples and compares each with the reference.
void ExpectReference(ZRAUDIOCOPYFUNCTION copy, uint32_t dest, uint32_t source, const std::vector<uint8_t>& samples,
                     float gain) {
  const Layout& to = LayoutOf(dest);
  const Layout& from = LayoutOf(source);
  const auto count = static_cast<int64_t>(samples.size()) / from.bytes;
  std::vector<uint8_t> result(static_cast<size_t>(count * to.bytes));
  copy(result.data(), samples.data(), count, gain);
  int failures = 0;
  for (int64_t n = 0; n < count && failures < 5; ++n) {
    uint8_t expected[8] = {};
    const uint8_t* sample = samples.data() + n * from.bytes;
    CopySample(dest, expected, source, sample, gain);
    const uint8_t* actual = result.data() + n * to.bytes;
    if (std::memcmp(expected, actual, static_cast<size_t>(to.bytes)) != 0) {
      ++failures;
      ADD_FAILURE() << PairName(dest, source) << " gain " << gain << " sample " << n << ": " << Hex(sample, from.bytes)
                    << "gives " << Hex(actual, to.bytes) << "not " << Hex(expected, to.bytes);
    }
  }
}

TEST(CopyPairs, ServeAllButTwo) {
  const ProcessorScope scope;
  for (const Members members : kEveryKind) {
    Allow(members);
    int served = 0;
    for (const uint32_t dest : kMemoryTypes) {
      for (const uint32_t source : kMemoryTypes) {
        const bool given = ZrAudio_GetCopyFunction2(dest, source) != nullptr;
        EXPECT_EQ(given, IsServed(dest, source)) << PairName(dest, source) << NameOf(members);
        served += given;
      }
    }
    EXPECT_EQ(served, 119);
    for (const uint32_t other : {0u, 15u, 34u, 67u, 128u, 129u}) {
      EXPECT_EQ(ZrAudio_GetCopyFunction2(17, other), nullptr);
      EXPECT_EQ(ZrAudio_GetCopyFunction2(other, 17), nullptr);
    }
  }
}

TEST(CopyExact, EveryValueOf8And16Bits) {
  const ProcessorScope scope;
  for (const uint32_t source : {16u, 49u, 17u, 64u}) {
    const std::vector<uint8_t> samples = AllValues(source);
    for (const uint32_t dest : kMemoryTypes) {
      for (const Members members : {Members::kPlain, Members::kAll}) {
        Allow(members);
        for (const float gain : {1.0f, 0.1f, -1.7f}) {
          ExpectReference(ZrAudio_GetCopyFunction2(dest, source), dest, source, samples, gain);
        }
      }
    }
  }
}

TEST(CopyExact, HardSamplesOfEveryPairAndGain) {
  const ProcessorScope scope;
  testing_support::Random random(2201);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : kMemoryTypes) {
    const std::vector<uint8_t> samples = HardSamples(source, 3000, random, true);
    for (const uint32_t dest : kMemoryTypes) {
      if (!IsServed(dest, source)) continue;
      for (const Members members : kEveryKind) {
        Allow(members);
        if (OverflowsDiffer(dest, source) && members != Members::kPlain) continue;
        for (const float gain : kGains) {
          if (gain == 0.0f && IsFloat(source)) continue;  // An infinity times 0 isn't a sample.
          ExpectReference(ZrAudio_GetCopyFunction2(dest, source), dest, source, samples, gain);
        }
      }
    }
  }
}

// Values that were worked out by hand from the rules.
TEST(CopyExact, WorkedValues) {
  const ProcessorScope scope;
  struct Row {
    const char* what;
    uint32_t dest, source;
    double from, to;
    float gain = 1.0f;
  };
  constexpr Row kRows[] = {
      {"full negative is -1.0", 32, 17, -32768, -1.0},
      {"1.0 is the highest value", 17, 32, 1.0, 32767},
      {"-1.0 is the lowest", 17, 32, -1.0, -32768},
      {"the clamp comes before the rounding", 17, 33, 32767.6 / 32768, 32767},
      {"a wider integer is a shift", 18, 17, 32767, 8388352},
      {"and comes back", 17, 18, 8388352, 32767},
      {"a value beyond the last step clamps", 17, 18, 8388607, 32767},
      {"a tie goes to the even 0", 17, 18, 128, 0},
      {"a tie goes to the even 2", 17, 18, 384, 2},
      {"silence", 32, 16, 0, 0.0},
      {"16 to 8: tie to 0", 49, 17, 128, 0},
      {"16 to 8: tie to 2", 49, 17, 384, 2},
      {"16 to 8: tie to 0 from below", 49, 17, -128, 0},
      {"16 to 8: tie to -2", 49, 17, -384, -2},
      {"16 to 8: 640", 49, 17, 640, 2},
      {"16 to 8: clamp", 49, 17, 32767, 127},
      {"the same with offset", 16, 17, -384, -2},
      {"gain 0.5: 1.5 is a tie", 17, 17, 3, 2, 0.5f},
      {"gain 0.5: 2.5 is a tie", 17, 17, 5, 2, 0.5f},
      {"gain 0.5: -1.5 is a tie", 17, 17, -3, -2, 0.5f},
      {"gain 0.5: 16383.5 is a tie", 17, 17, 32767, 16384, 0.5f},
      {"infinity clamps", 18, 32, INFINITY, 8388607},
      {"minus infinity clamps", 19, 32, -INFINITY, -2147483648.0},
  };
  for (const Members members : kEveryKind) {
    Allow(members);
    for (const Row& row : kRows) {
      uint8_t source[8] = {};
      uint8_t dest[8] = {};
      IsFloat(row.source) ? PutFloat(row.source, source, row.from)
                          : PutRaw(row.source, source, static_cast<int64_t>(row.from));
      ZrAudio_GetCopyFunction2(row.dest, row.source)(dest, source, 1, row.gain);
      const double got = IsFloat(row.dest) ? FloatOf(row.dest, dest) : static_cast<double>(RawOf(row.dest, dest));
      EXPECT_EQ(got, row.to) << row.what << ", " << NameOf(members);
    }
  }
}

// 0x3F20AA00 times 0.1f rounds up to the single whose scaled value is the tie 2056.5; in double it would lie
// above the tie and give 2057.
TEST(CopyExact, Float32GainIsSingle) {
  const ProcessorScope scope;
  const auto source = std::bit_cast<float>(0x3F20AA00u);
  for (const Members members : kEveryKind) {
    Allow(members);
    int16_t dest = 0;
    ZrAudio_GetCopyFunction2(17, 32)(&dest, &source, 1, 0.1f);
    EXPECT_EQ(dest, 2056) << NameOf(members);
  }
}

TEST(CopyMembers, SameBitsForEveryTailAndAlignment) {
  const ProcessorScope scope;
  testing_support::Random random(2202);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : kMemoryTypes) {
    const size_t sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
    const std::vector<uint8_t> samples = HardSamples(source, 80, random);
    for (const uint32_t dest : kMemoryTypes) {
      if (!IsServed(dest, source)) continue;
      const size_t destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      const auto plain = marlo::CopyMemberPlain(dest, source);
      for (const Members members : {Members::kSse2, Members::kAll}) {
        Allow(members);
        const auto chosen = ZrAudio_GetCopyFunction2(dest, source);
        if (chosen == plain) continue;
        for (size_t count = 0; count <= 67; ++count) {
          for (size_t offset = 0; offset < 8; ++offset) {
            const float gain = (count + offset) % 2 ? 1.0f : 0.37f;
            // Whole samples on one side, odd bytes on the other now and then.
            const size_t destOffset = offset * destBytes + (count % 5 == 4 ? 1 : 0);
            const size_t sourceOffset = (7 - offset) * sourceBytes + (count % 7 == 6 ? 1 : 0);
            Guarded from(sourceOffset, count * sourceBytes);
            Guarded expected(destOffset, count * destBytes);
            Guarded actual(destOffset, count * destBytes);
            if (count != 0) std::memcpy(from.data(), samples.data(), count * sourceBytes);
            // Above 2^31 the published members may differ: see below.
            if (OverflowsDiffer(dest, source)) {
              for (size_t n = 0; n < count; ++n) {
                if (std::abs(FloatOf(32, from.data() + 4 * n)) > 60000) PutFloat(32, from.data() + 4 * n, 2.5);
              }
            }
            plain(expected.data(), from.data(), static_cast<int64_t>(count), gain);
            chosen(actual.data(), from.data(), static_cast<int64_t>(count), gain);
            ASSERT_TRUE(actual.Untouched()) << PairName(dest, source) << " count " << count << " offset " << offset;
            ASSERT_EQ(std::memcmp(expected.data(), actual.data(), count * destBytes), 0)
                << PairName(dest, source) << ' ' << NameOf(members) << " count " << count << " offset " << offset;
          }
        }
      }
    }
  }
}

TEST(CopyInPlace, BothPointersAtTheStart) {
  const ProcessorScope scope;
  testing_support::Random random(2203);
  SCOPED_TRACE(random.Label());
  for (const uint32_t source : kMemoryTypes) {
    for (const uint32_t dest : kMemoryTypes) {
      if (!IsServed(dest, source)) continue;
      const auto sourceBytes = static_cast<size_t>(LayoutOf(source).bytes);
      const auto destBytes = static_cast<size_t>(LayoutOf(dest).bytes);
      for (const Members members : kEveryKind) {
        Allow(members);
        const auto copy = ZrAudio_GetCopyFunction2(dest, source);
        for (const int64_t count : {1, 2, 7, 8, 9, 16, 23, 100, 1001}) {
          for (const float gain : {1.0f, 0.37f}) {
            const std::vector<uint8_t> samples = HardSamples(source, count, random);
            std::vector<uint8_t> expected(static_cast<size_t>(count) * destBytes);
            for (size_t n = 0; n < static_cast<size_t>(count); ++n) {
              CopySample(dest, expected.data() + n * destBytes, source, samples.data() + n * sourceBytes, gain);
            }
            if (OverflowsDiffer(dest, source))
              marlo::CopyMemberPlain(17, 32)(expected.data(), samples.data(), count, gain);
            std::vector<uint8_t> buffer(samples);
            buffer.resize(std::max(samples.size(), expected.size()));
            copy(buffer.data(), buffer.data(), count, gain);
            if (OverflowsDiffer(dest, source)) {
              // Saturated either way; the rest must be the plain bits.
              for (size_t n = 0; n < static_cast<size_t>(count); ++n) {
                if (std::abs(FloatOf(32, samples.data() + 4 * n)) < 60000) continue;
                std::memcpy(buffer.data() + 2 * n, expected.data() + 2 * n, 2);
              }
            }
            buffer.resize(expected.size());
            ASSERT_EQ(buffer, expected) << PairName(dest, source) << ' ' << NameOf(members) << " count " << count;
          }
        }
      }
    }
  }
}

TEST(CopyRoundTrip, NarrowToWideAndBackIsIdentity) {
  for (const uint32_t narrow : {16u, 49u, 17u, 64u}) {
    const std::vector<uint8_t> samples = AllValues(narrow);
    const auto count = static_cast<int64_t>(samples.size()) / LayoutOf(narrow).bytes;
    for (const uint32_t wide : kMemoryTypes) {
      if (!IsFloat(wide) && LayoutOf(wide).bits < LayoutOf(narrow).bits) continue;
      if (!IsServed(narrow, wide)) continue;
      std::vector<uint8_t> there(static_cast<size_t>(count * LayoutOf(wide).bytes));
      std::vector<uint8_t> back(samples.size());
      ZrAudio_GetCopyFunction2(wide, narrow)(there.data(), samples.data(), count, 1.0f);
      ZrAudio_GetCopyFunction2(narrow, wide)(back.data(), there.data(), count, 1.0f);
      EXPECT_EQ(back, samples) << PairName(wide, narrow);
    }
  }
}

// ---- What the published vector members do differently --------------------------------------------------

// In groups of four the conversion gives its out-of-range value, in the scalar head and tail the clamp holds.
TEST(Pcm16FromFloat32, OverflowGoesLowInGroupsOnly) {
  const ProcessorScope scope;
  for (const Members members : {Members::kSse2, Members::kAll}) {
    Allow(members);
    const auto copy = ZrAudio_GetCopyFunction2(17, 32);
    alignas(32) float source[64];
    for (float& value : source) value = 70000.0f;  // Scaled 2.29e9, above 2^31.
    for (int64_t offset = 0; offset < 4; ++offset) {
      for (const int64_t count : {3, 8, 21, 40}) {
        int16_t dest[64] = {};
        copy(dest, source + offset, count, 1.0f);
        const int64_t head = std::min<int64_t>((4 - offset) % 4, count);
        const int64_t groups = (count - head) / 4 * 4;
        for (int64_t n = 0; n < count; ++n) {
          const bool inGroup = n >= head && n < head + groups;
          EXPECT_EQ(dest[n], inGroup ? -32768 : 32767) << NameOf(members) << offset << ' ' << count << ' ' << n;
        }
      }
    }
    // Below 2^31 both saturate alike.
    for (float& value : source) value = 65535.9f;
    int16_t dest[64];
    copy(dest, source, 64, 1.0f);
    for (const int16_t value : dest) EXPECT_EQ(value, 32767);
    // A source between the 4-byte addresses goes through the plain rule.
    uint8_t bytes[65 * 4];
    for (float& value : source) value = 70000.0f;
    std::memcpy(bytes + 1, source, sizeof source);
    copy(dest, bytes + 1, 64, 1.0f);
    for (const int16_t value : dest) EXPECT_EQ(value, 32767);
  }
}

TEST(Pcm16FromFloat32, RoundingModeOfTheThreadDoesNotMatterAndStays) {
  const ProcessorScope scope;
  constexpr uint32_t kRoundUp = 0x4000;
  for (const Members members : {Members::kSse2, Members::kAll}) {
    Allow(members);
    const auto toPcm = ZrAudio_GetCopyFunction2(17, 32);
    const auto toFloat = ZrAudio_GetCopyFunction2(32, 17);
    std::vector<float> source(103, 0.25f / 32768);
    std::vector<int16_t> dest(103, 7);
    std::vector<int16_t> words(103, 12345);
    std::vector<float> expected(103);
    std::vector<float> floats(103);
    toFloat(expected.data(), words.data(), 103, 0.3f);
    {
      const plat::FloatStateGuard state(plat::kCleanFloatState | kRoundUp);
      toPcm(dest.data(), source.data(), 103, 1.0f);
      toFloat(floats.data(), words.data(), 103, 0.3f);
      EXPECT_EQ(plat::FloatState() & 0xFFC0u, plat::kCleanFloatState | kRoundUp) << NameOf(members);
    }
    EXPECT_EQ(dest, std::vector<int16_t>(103, 0)) << NameOf(members);
    EXPECT_EQ(floats, expected) << NameOf(members);
  }
}

TEST(CopyGetter, MembersFollowTheMasksAtTheCall) {
  const ProcessorScope scope;
  constexpr struct {
    uint32_t dest, source;
    bool needsSse;
  } kPublished[] = {{17, 32, false}, {32, 17, false}, {32, 33, true}, {33, 32, true}};
  for (const auto& pair : kPublished) {
    Allow(Members::kAll);
    const auto vector = ZrAudio_GetCopyFunction2(pair.dest, pair.source);
    EXPECT_NE(vector, marlo::CopyMemberPlain(pair.dest, pair.source));
    ZrDisallowCPUSupport(ZRCPU_SSE2);
    EXPECT_EQ(ZrAudio_GetCopyFunction2(pair.dest, pair.source), marlo::CopyMemberPlain(pair.dest, pair.source));
    ZrAllowCPUSupport(ZRCPU_SSE2);
    ZrDisallowCPUSupport(ZRCPU_SSE);
    EXPECT_EQ(ZrAudio_GetCopyFunction2(pair.dest, pair.source) == marlo::CopyMemberPlain(pair.dest, pair.source),
              pair.needsSse)
        << PairName(pair.dest, pair.source);
  }
  // Without SSE2 no pair has a vector member left.
  Allow(Members::kPlain);
  for (const uint32_t dest : kMemoryTypes) {
    for (const uint32_t source : kMemoryTypes) {
      EXPECT_EQ(ZrAudio_GetCopyFunction2(dest, source), marlo::CopyMemberPlain(dest, source));
    }
  }
}

}  // namespace
