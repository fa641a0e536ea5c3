// SPDX-License-Identifier: Apache-2.0
// Tests of the conversions between the format record and WAVEFORMATEX, against a reference that lays the
// bytes out by itself.
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "audio/testing/guarded_buffer.h"
#include "marlo110k/waveformat.h"
#include "platform/base/memory.h"
#include "testing/random.h"

namespace {

using testing_support::GuardedBuffer;
using testing_support::Random;

using Bytes = std::vector<uint8_t>;

void Put(Bytes& bytes, uint64_t value, size_t width) {
  for (size_t index = 0; index < width; ++index) bytes.push_back(static_cast<uint8_t>(value >> (8 * index)));
}

struct TypeFacts {
  uint32_t type, tag, bits;
};
constexpr TypeFacts kTypes[] = {{16, 1, 8},       {17, 1, 16},      {18, 1, 24},      {19, 1, 32},
                                {32, 3, 32},      {33, 3, 64},      {48, 0xFE00, 32}, {49, 0xFE01, 8},
                                {64, 0xFE02, 16}, {65, 0xFE02, 24}, {66, 0xFE02, 32}};

int SpeakerCount(uint32_t mask) {
  int count = 0;
  for (; mask; mask >>= 1) count += mask & 1;
  return count;
}

/// What the reference is told of a format.
struct Described {
  uint32_t tag, bits, channels, rate, blockAlign, average, mask;
  bool compressed, fromExtensible;
  Bytes extra;
};

/// The bytes that a conversion has to write.
Bytes Expected(const Described& format, uint32_t copyDest, size_t room) {
  if (room < 18) return {};
  const uint32_t mask = copyDest == 2 ? 0 : format.mask;
  const uint32_t standard = (1u << format.channels) - 1;
  const bool special = mask != 0 && mask != standard;
  bool extensible = false;
  if (copyDest == 0) extensible = format.fromExtensible || special;
  if (copyDest == 3) extensible = format.channels > 2;
  if (copyDest == 4) extensible = true;
  uint32_t shownMask = mask;
  if (!extensible && format.compressed) extensible = special && room >= 40 + format.extra.size();
  if (extensible && !format.compressed && mask == 0) shownMask = standard;
  if (!extensible && !format.compressed && SpeakerCount(mask) <= static_cast<int>(format.channels)) {
    extensible = format.channels > 2 ? mask != 0 : special;
  }
  if (room < 40) extensible = false;

  Bytes bytes;
  Put(bytes, extensible ? 0xFFFE : format.tag, 2);
  Put(bytes, format.channels, 2);
  Put(bytes, format.rate, 4);
  Put(bytes, format.average, 4);
  Put(bytes, format.blockAlign, 2);
  Put(bytes, format.bits, 2);
  const size_t head = extensible ? 40 : format.tag == 1 || format.tag == 3 ? 16 : 18;
  const size_t appended = std::min(format.extra.size(), room - head);
  Put(bytes, (extensible ? 22 : 0) + appended, 2);
  if (extensible) {
    Put(bytes, format.bits, 2);
    Put(bytes, shownMask, 4);
    Put(bytes, format.tag, 4);
    for (int byte : {0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}) Put(bytes, byte, 1);
  }
  if (bytes.size() < head + appended) bytes.resize(head + appended);
  std::copy_n(format.extra.begin(), appended, bytes.begin() + static_cast<ptrdiff_t>(head));
  return bytes;
}

Bytes CountingBytes(size_t count) {
  Bytes bytes;
  for (size_t index = 0; index < count; ++index) bytes.push_back(static_cast<uint8_t>(0xA0 + index));
  return bytes;
}

std::vector<Described> AllKinds(uint32_t channels, uint32_t mask) {
  std::vector<Described> kinds;
  for (bool fromExtensible : {false, true}) {
    for (const TypeFacts& facts : kTypes) {
      const uint32_t block = facts.bits / 8 * channels;
      kinds.push_back({facts.tag, facts.bits, channels, 48000, block, block * 48000, mask, false, fromExtensible, {}});
    }
    for (uint32_t tag : {0x55u, 1u, 3u, 0u}) {
      for (size_t extra : {0, 2, 3, 12, 22, 70}) {
        kinds.push_back({tag, 12, channels, 44100, 417, 16000, mask, true, fromExtensible, CountingBytes(extra)});
      }
    }
  }
  return kinds;
}

void Fill(_zrwaveformat& format, const Described& described) {
  format.InitAsWfx(static_cast<uint16_t>(described.tag), described.rate, static_cast<uint16_t>(described.bits),
                   static_cast<uint16_t>(described.channels), described.mask, sizeof(format));
  ASSERT_EQ(format.IsCompressed(), described.compressed);
  format.blockAlign = static_cast<uint16_t>(described.blockAlign);
  format.avgBytesPerSec = described.average;
  if (described.fromExtensible) format.flags |= ZRWF_FROM_EXTENSIBLE;
  format.size = 32 + static_cast<uint32_t>(described.extra.size());
  format.extraSize = static_cast<uint16_t>(described.extra.size());
  std::copy(described.extra.begin(), described.extra.end(), format.extra);
}

TEST(GeneralCopyWfx, EveryShapeRoomAndMask) {
  size_t cases = 0;
  for (uint32_t channels : {1u, 2u, 3u, 6u, 8u}) {
    const uint32_t standard = (1u << channels) - 1;
    for (uint32_t mask : {0u, standard, standard << 1, 4u, 0xFFFFu}) {
      for (const Described& described : AllKinds(channels, mask)) {
        _zrwaveformat format;
        ASSERT_NO_FATAL_FAILURE(Fill(format, described));
        for (uint32_t copyDest = 0; copyDest <= 4; ++copyDest) {
          for (uint32_t room : {0u, 17u, 18u, 20u, 25u, 39u, 40u, 42u, 51u, 62u, 110u, 136u}) {
            const Bytes expected = Expected(described, copyDest, room);
            GuardedBuffer dest(room);
            ZrAudio_GeneralCopyWfx(dest.As<WAVEFORMATEX>(), room, &format, copyDest);
            Bytes whole = expected;
            whole.resize(room, GuardedBuffer::kPattern);
            ASSERT_TRUE(dest.Intact() && dest.Copy() == whole)
                << "channels " << channels << " mask " << mask << " tag " << described.tag << " bits " << described.bits
                << " extra " << described.extra.size() << " shape " << copyDest << " room " << room
                << " from extensible " << described.fromExtensible;
            ++cases;
          }
        }
      }
    }
  }
  EXPECT_EQ(cases, 5u * 5 * 2 * (11 + 4 * 6) * 5 * 12);
}

TEST(GeneralCopyWfx, RandomFormatsComeBack) {
  Random random(21);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 20000; ++round) {
    const TypeFacts& facts = kTypes[random.Between(0, std::size(kTypes) - 1)];
    const auto channels = static_cast<uint16_t>(random.Between(1, 40));
    auto mask = static_cast<uint32_t>(random.Bits() & random.Bits() & random.Bits());
    if (random.Between(0, 2) == 0) mask = 0;
    _zrwaveformat format, back;
    format.Init(static_cast<uint32_t>(random.Between(1, 400000)), facts.type, channels, mask, 32);
    const auto copyDest = static_cast<uint32_t>(random.Between(0, 4));
    const _zrwaveformat_wfxecopyhelper wfx(&format, copyDest);
    back.Init(32, &wfx.Format);
    EXPECT_EQ(back.sampleType, facts.type);
    EXPECT_EQ(back.blockAlign, format.blockAlign);
    EXPECT_EQ(back.avgBytesPerSec, format.avgBytesPerSec);
    // The mask is lost when it is asked to be, and in a shape that only a sensible mask makes extensible.
    const bool keeps = copyDest == ZRWFCOPY_AUTO || copyDest == ZRWFCOPY_WFEXT ||
                       (copyDest != ZRWFCOPY_WFX_NOMASK && SpeakerCount(mask) <= channels) ||
                       (copyDest == ZRWFCOPY_EXT_MULTICHANNEL && channels > 2);
    if (!keeps) format.channelMask = 0;
    ASSERT_TRUE(back == format) << facts.type << " " << channels << " " << mask << " " << copyDest;
    ASSERT_TRUE(back == wfx.Format);
  }
}

TEST(GeneralCopyWfx, RandomCompressedFormatsComeBack) {
  Random random(22);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 5000; ++round) {
    const bool special = random.Between(0, 1) == 1;
    const auto extraBytes = static_cast<size_t>(random.Between(0, 3) == 0 ? 0 : random.Between(2, 1024));
    Described described = {0x161,
                           0,
                           2,
                           44100,
                           2973,
                           20000,
                           special ? 0xCu : 0u,
                           true,
                           random.Between(0, 1) == 1,
                           CountingBytes(extraBytes)};
    _zrwaveformat format, back;
    ASSERT_NO_FATAL_FAILURE(Fill(format, described));
    const auto copyDest = static_cast<uint32_t>(random.Between(0, 4));
    if (copyDest == ZRWFCOPY_WFX_NOMASK) format.channelMask = 0;
    const int64_t blocksBefore = plat::LiveBlocks();
    WAVEFORMATEX* wfx = ZrAudio_AllocAndCopyWfx(&format, copyDest);
    ASSERT_NE(wfx, nullptr);
    const bool extensible = wfx->wFormatTag == WAVE_FORMAT_EXTENSIBLE;
    EXPECT_EQ(plat::BlockBytes(wfx), (extensible ? 40 : 18) + extraBytes);
    EXPECT_EQ(wfx->cbSize, (extensible ? 22 : 0) + extraBytes);
    back.Init(sizeof(back), wfx);
    ASSERT_TRUE(back == format) << copyDest << " " << extraBytes;
    ASSERT_TRUE(format == *wfx);

    const WAVEFORMATEX* same = wfx;
    for (uint32_t shape = 0; shape <= 4; ++shape) {
      WAVEFORMATEX* again = ZrAudio_AllocAndCopyWfx(same, shape);
      ASSERT_NE(again, nullptr);
      _zrwaveformat read;
      read.Init(sizeof(read), again);
      if (shape == ZRWFCOPY_WFX_NOMASK) read.channelMask = format.channelMask;
      ASSERT_TRUE(read == format) << copyDest << " then " << shape;
      if (shape == ZRWFCOPY_WFEXT || shape == ZRWFCOPY_WFX_NOMASK) {
        EXPECT_EQ(again->wFormatTag, shape == ZRWFCOPY_WFEXT ? WAVE_FORMAT_EXTENSIBLE : 0x161);
      }
      ZrAudio_FreeWfx(again);
    }
    ZrAudio_FreeWfx(wfx);
    ASSERT_EQ(plat::LiveBlocks(), blocksBefore);
  }
}

TEST(AllocAndCopyWfx, BytewiseWhenTheShapeFits) {
  // Extra bytes of tag 1 and a wrong block align only survive a copy of bytes.
  Bytes plain;
  Put(plain, 1, 2);
  Put(plain, 2, 2);
  Put(plain, 48000, 4);
  Put(plain, 1, 4);
  Put(plain, 3, 2);
  Put(plain, 16, 2);
  Put(plain, 4, 2);
  Put(plain, 0x0DF0ADBA, 4);
  const auto* source = reinterpret_cast<const WAVEFORMATEX*>(plain.data());
  for (uint32_t copyDest : {0u, 1u, 2u}) {
    WAVEFORMATEX* copy = ZrAudio_AllocAndCopyWfx(source, copyDest);
    EXPECT_EQ(plat::BlockBytes(copy), plain.size());
    EXPECT_EQ(std::memcmp(copy, plain.data(), plain.size()), 0);
    ZrAudio_FreeWfx(copy);
  }
  WAVEFORMATEX* extensible = ZrAudio_AllocAndCopyWfx(source, ZRWFCOPY_WFEXT);
  EXPECT_EQ(plat::BlockBytes(extensible), 40u);
  EXPECT_EQ(extensible->nBlockAlign, 4);
  Bytes first(reinterpret_cast<uint8_t*>(extensible), reinterpret_cast<uint8_t*>(extensible) + 40);
  WAVEFORMATEX* again = ZrAudio_AllocAndCopyWfx(extensible, ZRWFCOPY_WFEXT);
  EXPECT_EQ(std::memcmp(again, first.data(), 40), 0);
  ZrAudio_FreeWfx(again);
  ZrAudio_FreeWfx(extensible);
  ZrAudio_FreeWfx(nullptr);
  EXPECT_EQ(ZrAudio_AllocAndCopyWfx(static_cast<const WAVEFORMATEX*>(nullptr), 0), nullptr);
  EXPECT_EQ(ZrAudio_AllocAndCopyWfx(static_cast<const _zrwaveformat*>(nullptr), 0), nullptr);
}

TEST(AllocAndCopyWfx, MemoryShortGivesNull) {
  _zrwaveformat format;
  format.Init(48000, ZRSAMPLETYPE_PCM16, 6, 0x3F, 32);
  plat::FailAllocation(1);
  EXPECT_EQ(ZrAudio_AllocAndCopyWfx(&format, ZRWFCOPY_AUTO), nullptr);
  const _zrwaveformat_wfxcopyhelper wfx(&format);
  plat::FailAllocation(1);
  EXPECT_EQ(ZrAudio_AllocAndCopyWfx(&wfx, ZRWFCOPY_AUTO), nullptr);
  plat::FailAllocation(0);
}

TEST(GeneralCopyZrWaveFormat, ExtraBytesGoWholeOrNotAtAll) {
  const struct {
    size_t extra;
    uint32_t room;
    bool kept;
  } rows[] = {{0, 32, false},     {0, 64, false},      {2, 35, false},  {2, 36, true},   {7, 41, true},
              {12, 45, false},    {12, 44, false},     {12, 46, true},  {12, 34, false}, {12, 32, false},
              {1024, 1058, true}, {1024, 1057, false}, {12, 20, false}, {12, 0, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.extra) + " into " + std::to_string(row.room));
    _zrwaveformat format;
    ASSERT_NO_FATAL_FAILURE(Fill(format, {0x55, 0, 2, 44100, 1, 16000, 3, true, false, CountingBytes(row.extra)}));
    GuardedBuffer dest(row.room);
    ZrAudio_GeneralCopyZrWaveFormat(dest.As<_zrwaveformat>(), row.room, &format, ZRWFCOPY_AUTO);
    EXPECT_TRUE(dest.Intact());
    Bytes expected(reinterpret_cast<uint8_t*>(&format), reinterpret_cast<uint8_t*>(&format) + 32);
    expected[0] = static_cast<uint8_t>(32 + (row.kept ? row.extra : 0));
    expected[1] = static_cast<uint8_t>((32 + (row.kept ? row.extra : 0)) >> 8);
    if (row.kept) {
      Put(expected, row.extra, 2);
      expected.insert(expected.end(), format.extra, format.extra + row.extra);
    }
    expected.resize(row.room);
    EXPECT_EQ(dest.Copy(), expected);
  }
}

TEST(CopyWfx, KeepsNinetyFourExtraBytes) {
  Bytes source;
  Put(source, 0x55, 2);
  Put(source, 2, 2);
  Put(source, 44100, 4);
  Put(source, 16000, 4);
  Put(source, 1, 2);
  Put(source, 0, 2);
  Put(source, 200, 2);
  const Bytes extra = CountingBytes(200);
  source.insert(source.end(), extra.begin(), extra.end());
  const auto* wfx = reinterpret_cast<const WAVEFORMATEX*>(source.data());
  GuardedBuffer dest(300);
  ZrAudio_CopyWfx(dest.As<WAVEFORMATEX>(), 300, wfx, ZRWFCOPY_WFX);
  EXPECT_EQ(dest.As<WAVEFORMATEX>()->cbSize, 94);
  EXPECT_EQ(std::memcmp(dest.Data() + 18, extra.data(), 94), 0);
  EXPECT_EQ(dest.Data()[18 + 94], GuardedBuffer::kPattern);

  GuardedBuffer wide(40);
  ZrAudio_CopyWfExt(wide.As<WAVEFORMATEXTENSIBLE>(), wfx, ZRWFCOPY_WFEXT);
  EXPECT_TRUE(wide.Intact());
  EXPECT_EQ(wide.As<WAVEFORMATEXTENSIBLE>()->Format.wFormatTag, WAVE_FORMAT_EXTENSIBLE);
  EXPECT_EQ(wide.As<WAVEFORMATEXTENSIBLE>()->Format.cbSize, 22);
  EXPECT_EQ(wide.As<WAVEFORMATEXTENSIBLE>()->SubFormat.Data1, 0x55u);

  const _zrwaveformat_wfxplus plus([&] {
    static _zrwaveformat format;
    format.Init(sizeof(format), wfx);
    return &format;
  }());
  EXPECT_EQ(plus.Format.cbSize, 118);
  EXPECT_EQ(std::memcmp(reinterpret_cast<const uint8_t*>(&plus) + 18, extra.data(), 118), 0);
}

TEST(CopyWfxToWfExt, BytesOfTheSourceAndNoMore) {
  Bytes source(18 + 60, 0x11);
  for (size_t extra : {0, 1, 22, 60}) {
    reinterpret_cast<WAVEFORMATEX*>(source.data())->cbSize = static_cast<uint16_t>(extra);
    GuardedBuffer dest(40);
    ZrAudio_CopyWfxToWfExt(reinterpret_cast<const WAVEFORMATEX*>(source.data()), dest.As<WAVEFORMATEXTENSIBLE>());
    const size_t copied = std::min<size_t>(18 + extra, 40);
    Bytes expected(source.begin(), source.begin() + static_cast<ptrdiff_t>(copied));
    expected.resize(40, GuardedBuffer::kPattern);
    EXPECT_EQ(dest.Copy(), expected) << extra;
    EXPECT_TRUE(dest.Intact());
  }
}

TEST(CopyWfExtToWfx, PlainFormsOfPcmAndFloat) {
  _zrwaveformat format;
  for (const TypeFacts& facts : kTypes) {
    format.Init(48000, facts.type, 6, 0x3F, 32);
    const _zrwaveformat_wfxecopyhelper wfext(&format, ZRWFCOPY_WFEXT);
    GuardedBuffer dest(18);
    const Bytes untouched = dest.Copy();
    ZrAudio_CopyWfExtToWfx(&wfext, dest.As<WAVEFORMATEX>());
    EXPECT_TRUE(dest.Intact());
    if (facts.tag == 1 || facts.tag == 3) {
      const _zrwaveformat_wfxcopyhelper plain(&format, ZRWFCOPY_WFX);
      EXPECT_EQ(std::memcmp(dest.Data(), &plain, 18), 0) << facts.type;
    } else {
      EXPECT_EQ(dest.Copy(), untouched) << facts.type;
    }
  }
  WAVEFORMATEXTENSIBLE head = {};
  head.Format = {0x55, 2, 44100, 16000, 1, 0, 12};
  WAVEFORMATEX copy;
  ZrAudio_CopyWfExtToWfx(&head, &copy);
  EXPECT_EQ(std::memcmp(&copy, &head, 18), 0);
}

TEST(WaveFormat, NullsAreHarmless) {
  _zrwaveformat format;
  format.Init(48000, ZRSAMPLETYPE_PCM16, 2, 0, 32);
  GuardedBuffer dest(64);
  const Bytes before = dest.Copy();
  ZrAudio_GeneralCopyWfx(nullptr, 64, &format, 0);
  ZrAudio_GeneralCopyWfx(dest.As<WAVEFORMATEX>(), 64, nullptr, 0);
  ZrAudio_GeneralCopyZrWaveFormat(nullptr, 64, &format, 0);
  ZrAudio_GeneralCopyZrWaveFormat(dest.As<_zrwaveformat>(), 64, nullptr, 0);
  ZrAudio_CopyWfx(dest.As<WAVEFORMATEX>(), 64, nullptr, 0);
  ZrAudio_CopyWfExt(dest.As<WAVEFORMATEXTENSIBLE>(), nullptr, 0);
  ZrAudio_CopyWfxToWfExt(nullptr, dest.As<WAVEFORMATEXTENSIBLE>());
  ZrAudio_CopyWfExtToWfx(nullptr, dest.As<WAVEFORMATEX>());
  ZrAudio_InitWfx(nullptr, 1, 17, 1);
  EXPECT_EQ(ZrAudio_FixBadWfx(nullptr), 0);
  EXPECT_EQ(ZrAudio_GetWaveFormatTag(nullptr), 0);
  EXPECT_EQ(dest.Copy(), before);
  format.Init(32, nullptr);
  EXPECT_EQ(format.size, 32u);
  EXPECT_EQ(format.samplesPerSec, 0u);
}

}  // namespace
