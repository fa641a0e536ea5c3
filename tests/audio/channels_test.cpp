// SPDX-License-Identifier: Apache-2.0
// Tests of channel moves, silence, changes of the channel count and reversal, for every type, against plain
// loops over bytes.
#include "marlo110k/channels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "audio/testing/guarded_buffer.h"
#include "audio/testing/plain_samples.h"
#include "testing/random.h"

namespace {

using testing_support::GuardedBuffer;
using testing_support::kPlainTypes;
using testing_support::PlainType;
using testing_support::Random;
using testing_support::ReadFraction;
using testing_support::ReadInteger;
using testing_support::RecordOf;
using testing_support::WfxOf;
using testing_support::WriteFraction;
using testing_support::WriteInteger;

using Bytes = std::vector<uint8_t>;

/// Random samples of a type; now and then a value at an end of the range.
Bytes RandomSamples(Random& random, const PlainType& type, size_t samples) {
  const auto size = static_cast<size_t>(type.bytes);
  Bytes bytes(samples * size);
  for (size_t index = 0; index < samples; ++index) {
    double value = random.Real(-1.0, 1.0);
    if (random.Between(0, 7) == 0) value = random.Between(0, 1) ? 1.0 : -1.0;
    if (type.isFloat() && random.Between(0, 15) == 0) value *= 3;
    WriteFraction(type, bytes.data() + index * size, value);
  }
  return bytes;
}

Bytes Sample(const PlainType& type, const Bytes& bytes, size_t index) {
  const auto size = static_cast<ptrdiff_t>(type.bytes);
  const auto first = bytes.begin() + static_cast<ptrdiff_t>(index) * size;
  return {first, first + size};
}

void PutSample(const PlainType& type, Bytes& bytes, size_t index, const Bytes& sample) {
  std::copy(sample.begin(), sample.end(), bytes.begin() + static_cast<ptrdiff_t>(index) * type.bytes);
}

/// Runs `body` for every type, several channel counts and frame counts around the tails of unrolled loops.
template <class Body>
void ForEveryShape(uint64_t seed, std::initializer_list<size_t> channelCounts, Body body) {
  Random random(seed);
  SCOPED_TRACE(random.Label());
  for (const PlainType& type : kPlainTypes) {
    for (size_t channels : channelCounts) {
      for (size_t frames : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 33, 100}) {
        SCOPED_TRACE(std::string(type.name) + ", " + std::to_string(channels) + " channels, " + std::to_string(frames) +
                     " frames");
        body(random, type, channels, frames);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(FillSilence, ByTypeAndByTag) {
  for (const PlainType& type : kPlainTypes) {
    for (size_t channels : {1, 2, 5}) {
      const uint8_t silence = type.type == 16 ? 0x80 : 0;
      const size_t bytes = 7 * channels * static_cast<size_t>(type.bytes);
      const _zrwaveformat record = RecordOf(type, channels);
      const WAVEFORMATEX wfx = WfxOf(type, channels);
      GuardedBuffer byType(bytes, 3), byTag(bytes, 5);
      EXPECT_EQ(ZrAudio_FillSilence(&record, byType.Data(), 7), S_OK);
      EXPECT_EQ(ZrAudio_FillSilence(&wfx, byTag.Data(), 7), S_OK);
      EXPECT_EQ(byType.Copy(), Bytes(bytes, silence)) << type.name;
      EXPECT_EQ(byTag.Copy(), Bytes(bytes, silence)) << type.name;
      EXPECT_TRUE(byType.Intact() && byTag.Intact());
    }
  }
}

TEST(FillSilence, TagsDecideWithoutAType) {
  const struct {
    const char* name;
    uint16_t tag, bits;
    HRESULT result;
    int byte;  ///< -1: untouched
  } rows[] = {{"big-endian 8 bits", 0xFE02, 8, S_OK, 0x80},
              {"signed 8 bits", 0xFE01, 8, S_OK, 0},
              {"float 8 bits", 3, 8, S_OK, 0},
              {"12 bits", 1, 12, S_OK, 0},
              {"right-aligned", 0xFE03, 16, E_FAIL, -1},
              {"ADPCM", 2, 4, E_FAIL, -1},
              {"none", 0, 16, E_FAIL, -1}};
  for (const auto& row : rows) {
    const WAVEFORMATEX wfx = {row.tag, 2, 48000, 192000, 4, row.bits, 0};
    GuardedBuffer buffer(12);
    EXPECT_EQ(ZrAudio_FillSilence(&wfx, buffer.Data(), 3), row.result) << row.name;
    EXPECT_EQ(buffer.Copy(), Bytes(12, row.byte < 0 ? GuardedBuffer::kPattern : static_cast<uint8_t>(row.byte)))
        << row.name;
    EXPECT_EQ(ZrAudio_FillSilence(&wfx, buffer.Data(), 0), S_OK) << row.name;
  }
  const struct {
    const char* name;
    uint32_t subTag;
    uint16_t bits;
    int byte;
  } extensible[] = {{"PCM 8", 1, 8, 0x80},
                    {"PCM 16", 1, 16, 0},
                    {"float", 3, 32, 0},
                    {"float of 8 bits", 3, 8, 0},
                    {"big-endian", 0xFE02, 8, -1}};
  for (const auto& row : extensible) {
    WAVEFORMATEXTENSIBLE wfext = {};
    wfext.Format = {0xFFFE, 2, 48000, 0, 4, row.bits, 22};
    wfext.SubFormat = {row.subTag, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
    GuardedBuffer buffer(12);
    EXPECT_EQ(ZrAudio_FillSilence(&wfext.Format, buffer.Data(), 3), S_OK) << row.name;
    EXPECT_EQ(buffer.Copy(), Bytes(12, row.byte < 0 ? GuardedBuffer::kPattern : static_cast<uint8_t>(row.byte)))
        << row.name;
  }
  _zrwaveformat compressed;
  compressed.InitAsWfx(0x55, 48000, 0, 2, 0, 32);
  EXPECT_EQ(ZrAudio_FillSilence(&compressed, nullptr, 3), E_FAIL);
  EXPECT_EQ(ZrAudio_FillSilence(static_cast<const _zrwaveformat*>(nullptr), nullptr, 3), E_FAIL);
  EXPECT_EQ(ZrAudio_FillSilence(static_cast<const WAVEFORMATEX*>(nullptr), nullptr, 3), E_FAIL);
}

TEST(MuteChannel, LeavesTheOthers) {
  ForEveryShape(31, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    for (size_t channel = 0; channel < channels; ++channel) {
      Bytes expected = source;
      const Bytes silence(static_cast<size_t>(type.bytes), type.offset ? 0x80 : 0);
      for (size_t frame = 0; frame < frames; ++frame) PutSample(type, expected, frame * channels + channel, silence);
      const auto index = static_cast<uint32_t>(channel);
      const auto count = static_cast<int64_t>(frames);
      for (int way = 0; way < 5; ++way) {
        GuardedBuffer buffer(source.size(), 1 + channel);
        buffer.Fill(source);
        HRESULT result = E_UNEXPECTED;
        if (way == 0) result = ZrAudio_MuteChannel(buffer.Data(), &record, index, count);
        if (way == 1) result = ZrAudio_MuteChannel(buffer.Data(), &wfx, index, count);
        if (way == 2) {
          result = ZrAudio_MuteChannel(buffer.Data(), type.type, static_cast<uint32_t>(channels), index, count);
        }
        if (way == 3) result = ZrAudio_FillSilenceChannel(&record, buffer.Data(), index, count);
        if (way == 4) result = ZrAudio_FillSilenceChannel(&wfx, buffer.Data(), index, count);
        ASSERT_EQ(result, S_OK);
        ASSERT_TRUE(buffer.Intact() && buffer.Copy() == expected) << way;
      }
    }
    GuardedBuffer buffer(source.size());
    EXPECT_EQ(ZrAudio_MuteChannel(buffer.Data(), &record, static_cast<uint32_t>(channels), 1), E_FAIL);
    EXPECT_EQ(ZrAudio_FillSilenceChannel(&wfx, buffer.Data(), 0xFFFFFFFF, 1), E_FAIL);
  });
}

TEST(FillWithSample, RepeatsOrConvertsOrSilences) {
  Random random(32);
  SCOPED_TRACE(random.Label());
  const std::vector<uint32_t> sources = {17, 18, 32, 33, 48};
  const std::vector<uint32_t> dests = {17, 18, 19, 32, 33, 48};
  for (const PlainType& from : kPlainTypes) {
    for (const PlainType& to : kPlainTypes) {
      for (size_t channels : {1, 2, 3}) {
        SCOPED_TRACE(std::string(from.name) + " to " + to.name + ", " + std::to_string(channels));
        const Bytes frame = RandomSamples(random, from, channels);
        const bool converts = channels == 2 && std::count(sources.begin(), sources.end(), from.type) &&
                              std::count(dests.begin(), dests.end(), to.type);
        Bytes one;
        for (size_t channel = 0; channel < channels; ++channel) {
          Bytes sample(static_cast<size_t>(to.bytes), to.offset ? 0x80 : 0);
          if (converts) {
            WriteFraction(to, sample.data(), ReadFraction(from, Sample(from, frame, channel).data()));
          }
          if (from.type == to.type) sample = Sample(from, frame, channel);
          one.insert(one.end(), sample.begin(), sample.end());
        }
        const _zrwaveformat source = RecordOf(from, channels), dest = RecordOf(to, channels);
        const WAVEFORMATEX sourceWfx = WfxOf(from, channels), destWfx = WfxOf(to, channels);
        for (size_t frames : {1, 2, 3, 13, 64}) {
          Bytes expected;
          for (size_t index = 0; index < frames; ++index) expected.insert(expected.end(), one.begin(), one.end());
          GuardedBuffer first(expected.size()), second(expected.size());
          ASSERT_EQ(ZrAudio_FillWithSample(&dest, first.Data(), &source, frame.data(), static_cast<int64_t>(frames)),
                    S_OK);
          ASSERT_EQ(
              ZrAudio_FillWithSample(&destWfx, second.Data(), &sourceWfx, frame.data(), static_cast<int64_t>(frames)),
              S_OK);
          ASSERT_TRUE(first.Intact() && first.Copy() == expected);
          ASSERT_TRUE(second.Intact() && second.Copy() == expected);
        }
      }
    }
  }
  // Unlike channel counts: a frame of one channel isn't read as a frame of two.
  const _zrwaveformat mono = RecordOf(kPlainTypes[1], 1), stereo = RecordOf(kPlainTypes[1], 2);
  const Bytes sample = {1, 2};
  GuardedBuffer dest(8);
  EXPECT_EQ(ZrAudio_FillWithSample(&stereo, dest.Data(), &mono, sample.data(), 2), S_OK);
  EXPECT_EQ(dest.Copy(), Bytes(8, 0));
}

TEST(CopyChannelToChannel, InPlaceUpToFloat64) {
  ForEveryShape(33, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    for (size_t from = 0; from < channels; ++from) {
      for (size_t to = 0; to < channels; ++to) {
        Bytes expected = source;
        const bool served = type.type <= 33 || channels == 1;
        for (size_t frame = 0; frame < frames && served; ++frame) {
          PutSample(type, expected, frame * channels + to, Sample(type, source, frame * channels + from));
        }
        GuardedBuffer first(source.size()), second(source.size());
        first.Fill(source);
        second.Fill(source);
        const HRESULT result = served ? S_OK : E_FAIL;
        ASSERT_EQ(ZrAudio_CopyChannelToChannel(first.Data(), &record, static_cast<uint32_t>(from),
                                               static_cast<uint32_t>(to), static_cast<int64_t>(frames)),
                  result);
        ASSERT_EQ(ZrAudio_CopyChannelToChannel(second.Data(), &wfx, static_cast<uint32_t>(from),
                                               static_cast<uint32_t>(to), static_cast<int64_t>(frames)),
                  result);
        ASSERT_TRUE(first.Intact() && first.Copy() == expected);
        ASSERT_TRUE(second.Intact() && second.Copy() == expected);
      }
    }
    if (channels == 1) return;
    GuardedBuffer buffer(source.size());
    EXPECT_EQ(ZrAudio_CopyChannelToChannel(buffer.Data(), &record, 0, static_cast<uint32_t>(channels), 1), E_FAIL);
    EXPECT_EQ(ZrAudio_CopyChannelToChannel(buffer.Data(), &record, static_cast<uint32_t>(channels), 0, 1), E_FAIL);
  });
}

TEST(SwapStereoChannels, FirstTwoOfEveryFrame) {
  ForEveryShape(34, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    Bytes expected = source;
    for (size_t frame = 0; frame < frames && channels > 1; ++frame) {
      PutSample(type, expected, frame * channels, Sample(type, source, frame * channels + 1));
      PutSample(type, expected, frame * channels + 1, Sample(type, source, frame * channels));
    }
    const auto count = static_cast<int64_t>(frames);
    for (int way = 0; way < 6; ++way) {
      GuardedBuffer buffer(source.size(), 3);
      if (way < 4) buffer.Fill(source);
      HRESULT result = E_UNEXPECTED;
      if (way == 0) result = ZrAudio_SwapStereoChannels(buffer.Data(), &record, count);
      if (way == 1) result = ZrAudio_SwapStereoChannels(buffer.Data(), &wfx, count);
      if (way == 2) result = ZrAudio_CopySwapStereoChannels(buffer.Data(), buffer.Data(), &record, count);
      if (way == 3) result = ZrAudio_CopySwapStereoChannels(buffer.Data(), buffer.Data(), &wfx, count);
      if (way == 4) result = ZrAudio_CopySwapStereoChannels(buffer.Data(), source.data(), &record, count);
      if (way == 5) result = ZrAudio_CopySwapStereoChannels(buffer.Data(), source.data(), &wfx, count);
      ASSERT_EQ(result, S_OK);
      const bool untouched = way >= 4 && channels == 1;
      ASSERT_EQ(buffer.Copy(), untouched ? Bytes(source.size(), GuardedBuffer::kPattern) : expected) << way;
      ASSERT_TRUE(buffer.Intact());
    }
  });
}

TEST(ExtractAndInsert, RoundTripAndInPlace) {
  ForEveryShape(35, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    const auto count = static_cast<int64_t>(frames);
    const auto channelCount = static_cast<uint32_t>(channels);
    GuardedBuffer rebuilt(source.size());
    for (uint32_t channel = 0; channel < channelCount; ++channel) {
      Bytes expected(frames * static_cast<size_t>(type.bytes));
      for (size_t frame = 0; frame < frames; ++frame) {
        PutSample(type, expected, frame, Sample(type, source, frame * channels + channel));
      }
      for (int way = 0; way < 4; ++way) {
        GuardedBuffer mono(expected.size(), 1);
        GuardedBuffer inPlace(source.size());
        inPlace.Fill(source);
        uint8_t* dest = way == 3 ? inPlace.Data() : mono.Data();
        const void* from = way == 3 ? inPlace.Data() : source.data();
        HRESULT result = E_UNEXPECTED;
        if (way == 0) result = ZrAudio_ExtractChannel(dest, channel, from, &record, count);
        if (way == 1) result = ZrAudio_ExtractChannel(dest, channel, from, &wfx, count);
        if (way >= 2) result = ZrAudio_ExtractChannel(dest, channel, from, type.type, channelCount, count);
        ASSERT_EQ(result, S_OK);
        ASSERT_EQ(Bytes(dest, dest + expected.size()), expected) << way;
        ASSERT_TRUE(mono.Intact() && inPlace.Intact());
      }
      ASSERT_EQ(ZrAudio_InsertChannel(rebuilt.Data(), type.type, channelCount, channel, expected.data(), count), S_OK);
    }
    ASSERT_TRUE(rebuilt.Intact() && rebuilt.Copy() == source);
    EXPECT_EQ(ZrAudio_ExtractChannel(rebuilt.Data(), channelCount, source.data(), &record, count), E_FAIL);
    EXPECT_EQ(ZrAudio_InsertChannel(rebuilt.Data(), type.type, channelCount, channelCount, source.data(), count),
              E_FAIL);
  });
}

TEST(ExtractChannelPair, AdjacentChannels) {
  ForEveryShape(36, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    const auto count = static_cast<int64_t>(frames);
    for (size_t first = 0; first < channels + 2; ++first) {
      const bool there = first + 1 < channels;
      const size_t pairBytes = frames * 2 * static_cast<size_t>(type.bytes);
      Bytes expected(pairBytes, GuardedBuffer::kPattern);
      for (size_t index = 0; index < 2 * frames && there; ++index) {
        PutSample(type, expected, index, Sample(type, source, index / 2 * channels + first + index % 2));
      }
      GuardedBuffer byType(pairBytes), byWfx(pairBytes);
      const HRESULT result = there ? S_OK : E_FAIL;
      const auto index = static_cast<uint32_t>(first);
      ASSERT_EQ(ZrAudio_ExtractChannelPair(byType.Data(), index, source.data(), &record, count), result);
      ASSERT_EQ(ZrAudio_ExtractChannelPair(byWfx.Data(), index, source.data(), &wfx, count), result);
      ASSERT_TRUE(byType.Intact() && byType.Copy() == expected);
      ASSERT_TRUE(byWfx.Intact() && byWfx.Copy() == expected);
    }
  });
}

TEST(CopyChannelToAll, EveryPairOfCountsInPlace) {
  ForEveryShape(37, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    for (size_t destChannels : {1, 2, 5}) {
      const _zrwaveformat from = RecordOf(type, channels), to = RecordOf(type, destChannels);
      const WAVEFORMATEX fromWfx = WfxOf(type, channels), toWfx = WfxOf(type, destChannels);
      for (uint32_t channel = 0; channel < channels; ++channel) {
        Bytes expected(frames * destChannels * static_cast<size_t>(type.bytes));
        for (size_t index = 0; index < frames * destChannels; ++index) {
          PutSample(type, expected, index, Sample(type, source, index / destChannels * channels + channel));
        }
        GuardedBuffer dest(std::max(expected.size(), source.size()));
        dest.Fill(source);
        ASSERT_EQ(ZrAudio_CopyChannelToAll(dest.Data(), dest.Data(), &from, &to, channel, static_cast<int64_t>(frames)),
                  S_OK);
        ASSERT_TRUE(dest.Intact() && std::equal(expected.begin(), expected.end(), dest.Data()));
        GuardedBuffer other(expected.size());
        ASSERT_EQ(ZrAudio_CopyChannelToAll(other.Data(), source.data(), &fromWfx, &toWfx, channel,
                                           static_cast<int64_t>(frames)),
                  S_OK);
        ASSERT_TRUE(other.Intact() && other.Copy() == expected);
      }
      GuardedBuffer untouched(16);
      EXPECT_EQ(
          ZrAudio_CopyChannelToAll(untouched.Data(), source.data(), &from, &to, static_cast<uint32_t>(channels), 1),
          E_FAIL);
      const _zrwaveformat otherType = RecordOf(kPlainTypes[type.type == 17 ? 2 : 1], destChannels);
      EXPECT_EQ(ZrAudio_CopyChannelToAll(untouched.Data(), source.data(), &from, &otherType, 0, 1), E_NOTIMPL);
      EXPECT_EQ(untouched.Copy(), Bytes(16, GuardedBuffer::kPattern));
    }
  });
}

TEST(CopyChannelToMultiMono, BlocksSideBySideOrInterleaved) {
  ForEveryShape(38, {1, 2, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const auto size = static_cast<size_t>(type.bytes);
    const auto count = static_cast<int64_t>(frames);
    const auto channelCount = static_cast<uint32_t>(channels);
    Bytes planar(source.size());
    GuardedBuffer blocks(source.size()), woven(source.size());
    const _zrwaveformat record = RecordOf(type, channels), mono = RecordOf(type, 1);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    for (uint32_t channel = 0; channel < channelCount; ++channel) {
      for (size_t frame = 0; frame < frames; ++frame) {
        PutSample(type, planar, channel * frames + frame, Sample(type, source, frame * channels + channel));
      }
      ASSERT_EQ(ZrAudio_CopyChannelToMultiMono(blocks.Data() + channel * frames * size, &mono, source.data(), &record,
                                               channel, count),
                S_OK);
      ASSERT_EQ(
          ZrAudio_CopyChannelToMultiMono(woven.Data() + channel * size, &wfx, source.data(), &wfx, channel, count),
          S_OK);
    }
    ASSERT_TRUE(blocks.Intact() && blocks.Copy() == planar);
    ASSERT_TRUE(woven.Intact() && woven.Copy() == source);
    const _zrwaveformat otherType = RecordOf(kPlainTypes[type.type == 17 ? 2 : 1], 1);
    EXPECT_EQ(ZrAudio_CopyChannelToMultiMono(blocks.Data(), &otherType, source.data(), &record, 0, count),
              E_INVALIDARG);
    for (uint32_t unknown : {0u, 20u, 128u}) {
      EXPECT_EQ(ZrAudio_CopyChannelToMultiMono2(blocks.Data(), 1, source.data(), channelCount, 0, count, unknown),
                E_INVALIDARG);
    }
    EXPECT_EQ(
        ZrAudio_CopyChannelToMultiMono2(blocks.Data(), 1, source.data(), channelCount, channelCount, count, type.type),
        E_INVALIDARG);
    EXPECT_EQ(ZrAudio_CopyChannelToMultiMono2(blocks.Data(), 0, source.data(), channelCount, 0, count, type.type),
              E_INVALIDARG);
  });
}

TEST(ChannelChange, ManyToOneSumsOrAverages) {
  ForEveryShape(39, {2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    const size_t monoBytes = frames * static_cast<size_t>(type.bytes);
    Bytes sums(monoBytes), means(monoBytes);
    for (size_t frame = 0; frame < frames; ++frame) {
      double sum = 0;
      for (size_t channel = 0; channel < channels; ++channel) {
        sum += ReadFraction(type, Sample(type, source, frame * channels + channel).data());
      }
      Bytes sample(static_cast<size_t>(type.bytes));
      WriteFraction(type, sample.data(), sum);
      PutSample(type, sums, frame, sample);
      WriteFraction(type, sample.data(), sum / static_cast<double>(channels));
      PutSample(type, means, frame, sample);
    }
    const auto count = static_cast<int64_t>(frames);
    GuardedBuffer sum(monoBytes), mean(monoBytes), inPlace(source.size());
    ASSERT_EQ(ZrAudio_ChannelChange(sum.Data(), 1, source.data(), &record, count), S_OK);
    ASSERT_EQ(ZrAudio_ChannelChangeAvg(mean.Data(), 1, source.data(), &wfx, count), S_OK);
    ASSERT_TRUE(sum.Intact() && sum.Copy() == sums);
    ASSERT_TRUE(mean.Intact() && mean.Copy() == means);
    inPlace.Fill(source);
    ASSERT_EQ(ZrAudio_ChannelChange(inPlace.Data(), 1, inPlace.Data(), &wfx, count), S_OK);
    ASSERT_TRUE(inPlace.Intact() && std::equal(sums.begin(), sums.end(), inPlace.Data()));
    inPlace.Fill(source);
    ASSERT_EQ(ZrAudio_ChannelChangeAvg(inPlace.Data(), 1, inPlace.Data(), &record, count), S_OK);
    ASSERT_TRUE(std::equal(means.begin(), means.end(), inPlace.Data()));
  });
}

TEST(ChannelChange, OneToManyInPlaceAndEqualCounts) {
  ForEveryShape(40, {1, 2, 5}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes mono = RandomSamples(random, type, frames);
    const _zrwaveformat record = RecordOf(type, 1);
    const WAVEFORMATEX wfx = WfxOf(type, 1);
    Bytes expected(mono.size() * channels);
    for (size_t index = 0; index < frames * channels; ++index) {
      PutSample(type, expected, index, Sample(type, mono, index / channels));
    }
    const auto count = static_cast<int64_t>(frames);
    const auto destChannels = static_cast<uint32_t>(channels);
    for (int way = 0; way < 4; ++way) {
      GuardedBuffer dest(expected.size());
      if (way < 2) dest.Fill(mono);
      const void* source = way < 2 ? dest.Data() : mono.data();
      const HRESULT result = way % 2 ? ZrAudio_ChannelChangeAvg(dest.Data(), destChannels, source, &wfx, count)
                                     : ZrAudio_ChannelChange(dest.Data(), destChannels, source, &record, count);
      ASSERT_EQ(result, S_OK);
      ASSERT_TRUE(dest.Intact() && dest.Copy() == expected) << way;
    }
  });
}

TEST(ChannelChange, KnownFramesAndRefusals) {
  const PlainType& pcm16 = kPlainTypes[1];
  const WAVEFORMATEX stereo = WfxOf(pcm16, 2);
  const auto folded = [&](int16_t left, int16_t right, bool mean) {
    const int16_t frame[2] = {left, right};
    int16_t result = 0;
    EXPECT_EQ((mean ? ZrAudio_ChannelChangeAvg(&result, 1, frame, &stereo, 1)
                    : ZrAudio_ChannelChange(&result, 1, frame, &stereo, 1)),
              S_OK);
    return result;
  };
  EXPECT_EQ(folded(32767, 32767, false), 32767);
  EXPECT_EQ(folded(-32768, -32768, false), -32768);
  EXPECT_EQ(folded(10000, 20000, true), 15000);
  // A mean of a half goes to the even neighbour here, and towards zero by ZrAudio_MonoChannel.
  const int16_t halves[][4] = {{1, 2, 2, 1}, {2, 3, 2, 2}, {-1, -2, -2, -1}, {-2, -3, -2, -2}};
  for (const auto& row : halves) {
    EXPECT_EQ(folded(row[0], row[1], true), row[2]);
    int16_t frame[2] = {row[0], row[1]};
    EXPECT_EQ(ZrAudio_MonoChannel(frame, frame, &stereo, 1), S_OK);
    EXPECT_EQ(frame[0], row[3]);
    EXPECT_EQ(frame[1], row[3]);
  }
  GuardedBuffer dest(64);
  EXPECT_EQ(ZrAudio_ChannelChange(dest.Data(), 5, dest.Data(), &stereo, 2), E_FAIL);
  EXPECT_EQ(ZrAudio_ChannelChange(dest.Data(), 0, dest.Data(), &stereo, 2), E_FAIL);
  EXPECT_EQ(ZrAudio_ChannelChange(dest.Data(), 5, dest.Data(), &stereo, 0), S_OK);
  _zrwaveformat compressed;
  compressed.InitAsWfx(0x55, 48000, 0, 2, 0, 32);
  EXPECT_EQ(ZrAudio_ChannelChange(dest.Data(), 1, dest.Data(), &compressed, 2), E_FAIL);
  EXPECT_EQ(ZrAudio_MonoChannel(dest.Data(), dest.Data(), &compressed, 2), E_FAIL);
  compressed.channels = 1;
  EXPECT_EQ(ZrAudio_ChannelChange(dest.Data(), 2, dest.Data(), &compressed, 2), E_FAIL);
  EXPECT_EQ(dest.Copy(), Bytes(64, GuardedBuffer::kPattern));
}

TEST(MonoChannel, MeanInEveryChannelInPlace) {
  ForEveryShape(41, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    Bytes expected = source;
    for (size_t frame = 0; frame < frames && channels > 1; ++frame) {
      Bytes mean(static_cast<size_t>(type.bytes));
      if (type.isFloat()) {
        double sum = 0;
        for (size_t channel = 0; channel < channels; ++channel) {
          sum += ReadFraction(type, Sample(type, source, frame * channels + channel).data());
        }
        WriteFraction(type, mean.data(), sum / static_cast<double>(channels));
      } else {
        int64_t sum = 0;
        for (size_t channel = 0; channel < channels; ++channel) {
          sum += ReadInteger(type, Sample(type, source, frame * channels + channel).data());
        }
        WriteInteger(type, mean.data(), sum / static_cast<int64_t>(channels));
      }
      for (size_t channel = 0; channel < channels; ++channel)
        PutSample(type, expected, frame * channels + channel, mean);
    }
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    GuardedBuffer inPlace(source.size(), 2), apart(source.size());
    inPlace.Fill(source);
    ASSERT_EQ(ZrAudio_MonoChannel(inPlace.Data(), inPlace.Data(), &record, static_cast<int64_t>(frames)), S_OK);
    ASSERT_EQ(ZrAudio_MonoChannel(apart.Data(), source.data(), &wfx, static_cast<int64_t>(frames)), S_OK);
    ASSERT_TRUE(inPlace.Intact() && inPlace.Copy() == expected);
    ASSERT_TRUE(apart.Intact() && apart.Copy() == expected);
  });
}

TEST(Reverse, FramesKeepTheirChannels) {
  ForEveryShape(42, {1, 2, 3, 6}, [](Random& random, const PlainType& type, size_t channels, size_t frames) {
    const Bytes source = RandomSamples(random, type, frames * channels);
    const _zrwaveformat record = RecordOf(type, channels);
    const WAVEFORMATEX wfx = WfxOf(type, channels);
    Bytes expected(source.size());
    for (size_t index = 0; index < frames * channels; ++index) {
      PutSample(type, expected, index,
                Sample(type, source, (frames - 1 - index / channels) * channels + index % channels));
    }
    const auto count = static_cast<int64_t>(frames);
    GuardedBuffer inPlace(source.size()), apart(source.size());
    inPlace.Fill(source);
    ASSERT_EQ(ZrAudio_Reverse(&record, inPlace.Data(), &record, inPlace.Data(), count, 1.0f), S_OK);
    ASSERT_EQ(ZrAudio_Reverse(&wfx, apart.Data(), &wfx, source.data(), count, 1.0f), S_OK);
    ASSERT_TRUE(inPlace.Intact() && inPlace.Copy() == expected);
    ASSERT_TRUE(apart.Intact() && apart.Copy() == expected);

    // Into a wider type, at half the level, within one buffer.
    const PlainType& wide = kPlainTypes[5];
    const _zrwaveformat wideRecord = RecordOf(wide, channels);
    GuardedBuffer converted(frames * channels * 8);
    converted.Fill(source);
    ASSERT_EQ(ZrAudio_Reverse(&wideRecord, converted.Data(), &record, converted.Data(), count, 0.5f), S_OK);
    ASSERT_TRUE(converted.Intact());
    for (size_t index = 0; index < frames * channels; ++index) {
      const Bytes sample = Sample(type, expected, index);
      ASSERT_EQ(ReadFraction(wide, converted.Data() + 8 * index), ReadFraction(type, sample.data()) * 0.5) << index;
    }
  });
  const _zrwaveformat big = RecordOf(kPlainTypes[8], 1), unpacked = RecordOf(kPlainTypes[6], 1);
  GuardedBuffer dest(16);
  EXPECT_EQ(ZrAudio_Reverse(&big, dest.Data(), &unpacked, dest.Data(), 2, 1.0f), E_NOTIMPL);
  EXPECT_EQ(ZrAudio_Reverse(&big, dest.Data(), &unpacked, dest.Data(), 0, 1.0f), S_OK);
  _zrwaveformat compressed;
  compressed.InitAsWfx(0x55, 48000, 0, 2, 0, 32);
  EXPECT_EQ(ZrAudio_Reverse(&compressed, dest.Data(), &compressed, dest.Data(), 2, 1.0f), E_FAIL);
  EXPECT_EQ(dest.Copy(), Bytes(16, GuardedBuffer::kPattern));
}

}  // namespace
