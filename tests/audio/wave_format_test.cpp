// SPDX-License-Identifier: Apache-2.0
// Tests of sample types, of the format record and of the questions on WAVEFORMATEX.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "audio/testing/guarded_buffer.h"
#include "marlo110k/waveformat.h"

namespace {

using testing_support::GuardedBuffer;

WAVEFORMATEX Wfx(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits, uint16_t blockAlign, uint16_t cbSize) {
  return {tag, channels, rate, rate * blockAlign, blockAlign, bits, cbSize};
}

WAVEFORMATEXTENSIBLE Wfext(uint16_t subTag, uint16_t channels, uint16_t bits, uint16_t validBits, uint32_t mask) {
  WAVEFORMATEXTENSIBLE wfext = {};
  wfext.Format = Wfx(WAVE_FORMAT_EXTENSIBLE, channels, 48000, bits, static_cast<uint16_t>(channels * (bits / 8)), 22);
  wfext.Samples.wValidBitsPerSample = validBits;
  wfext.dwChannelMask = mask;
  wfext.SubFormat = {subTag, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
  return wfext;
}

/// A WAVEFORMATEX with extra bytes 1, 2, 3, ... behind a head.
template <typename Head>
std::vector<uint8_t> WithExtra(Head head, size_t extraBytes) {
  std::vector<uint8_t> bytes(sizeof(Head) + extraBytes);
  reinterpret_cast<WAVEFORMATEX*>(&head)->cbSize =
      static_cast<uint16_t>(sizeof(Head) - sizeof(WAVEFORMATEX) + extraBytes);
  std::memcpy(bytes.data(), &head, sizeof(head));
  for (size_t index = 0; index < extraBytes; ++index) bytes[sizeof(Head) + index] = static_cast<uint8_t>(index + 1);
  return bytes;
}

const WAVEFORMATEX* AsWfx(const std::vector<uint8_t>& bytes) {
  return reinterpret_cast<const WAVEFORMATEX*>(bytes.data());
}

TEST(SampleType, SizesAndTags) {
  struct Row {
    uint32_t type;
    int bytes, bits, tag;
  };
  const Row rows[] = {{16, 1, 8, 1},       {17, 2, 16, 1},      {18, 3, 24, 1},      {19, 4, 32, 1},
                      {32, 4, 32, 3},      {33, 8, 64, 3},      {48, 4, 32, 0xFE00}, {49, 1, 8, 0xFE01},
                      {64, 2, 16, 0xFE02}, {65, 3, 24, 0xFE02}, {66, 4, 32, 0xFE02}};
  uint32_t next = 0;
  for (uint32_t type = 0; type < 300; ++type) {
    const bool known = next < std::size(rows) && rows[next].type == type;
    const Row expected = known ? rows[next++] : Row{type, 0, 0, 0};
    EXPECT_EQ(ZrAudio_BytesFromSampleType(type), expected.bytes) << type;
    EXPECT_EQ(ZrAudio_BitsFromSampleType(type), expected.bits) << type;
    EXPECT_EQ(ZrAudio_FormatTagFromSampleType(type), expected.tag) << type;
  }
  EXPECT_EQ(next, std::size(rows));
}

TEST(SampleType, FromTagAndBits) {
  struct Row {
    int tag, bits;
    uint32_t type;
  };
  const Row rows[] = {
      {1, 8, 16},       {1, 16, 17},      {1, 20, 18},      {1, 24, 18},       {1, 32, 19},
      {3, 32, 32},      {3, 64, 33},      {0xFE00, 24, 48}, {0xFE00, 32, 48},  {0xFE01, 8, 49},
      {0xFE01, 16, 17}, {0xFE01, 20, 18}, {0xFE01, 24, 18}, {0xFE01, 32, 19},  {0xFE02, 8, 16},
      {0xFE02, 16, 64}, {0xFE02, 24, 65}, {0xFE02, 32, 66}, {0xFE03, 16, 128}, {0xFE03, 24, 129},
  };
  size_t hits = 0;
  for (int tag : {0, 1, 2, 3, 4, 0x55, 0xFDFF, 0xFE00, 0xFE01, 0xFE02, 0xFE03, 0xFE04, 0xFFFE, 0xFFFF}) {
    for (int bits = 0; bits <= 130; ++bits) {
      uint32_t expected = 0;
      for (const Row& row : rows) {
        if (row.tag == tag && row.bits == bits) expected = row.type;
      }
      hits += expected != 0;
      EXPECT_EQ(ZrAudio_GetSampleType2(static_cast<uint16_t>(tag), static_cast<uint16_t>(bits)), expected)
          << tag << " " << bits;
    }
  }
  EXPECT_EQ(hits, std::size(rows));
}

TEST(SampleType, ExtensibleFormats) {
  const auto typeOf = [](WAVEFORMATEXTENSIBLE wfext) { return ZrAudio_GetSampleType(&wfext.Format); };
  EXPECT_EQ(typeOf(Wfext(1, 2, 32, 24, 3)), ZRSAMPLETYPE_PCM24UNPACKED);
  EXPECT_EQ(typeOf(Wfext(1, 2, 32, 32, 3)), ZRSAMPLETYPE_PCM32);
  EXPECT_EQ(typeOf(Wfext(1, 2, 32, 20, 3)), ZRSAMPLETYPE_PCM32);
  EXPECT_EQ(typeOf(Wfext(1, 2, 24, 24, 3)), ZRSAMPLETYPE_PCM24);
  EXPECT_EQ(typeOf(Wfext(3, 2, 32, 24, 3)), ZRSAMPLETYPE_FLOAT32) << "valid bits only matter to PCM";
  EXPECT_EQ(typeOf(Wfext(0xFE02, 2, 16, 16, 3)), ZRSAMPLETYPE_PCM16BE);
  EXPECT_EQ(typeOf(Wfext(0x55, 2, 16, 16, 3)), 0u);
  for (size_t byte = 2; byte < 16; ++byte) {
    WAVEFORMATEXTENSIBLE wfext = Wfext(1, 2, 16, 16, 3);
    reinterpret_cast<uint8_t*>(&wfext)[24 + byte] ^= 0x10;
    EXPECT_EQ(typeOf(wfext), 0u) << byte;
    EXPECT_EQ(ZrAudio_GetWaveFormatTag(&wfext.Format), 0) << byte;
    EXPECT_EQ(ZrAudio_IsCompressed(&wfext.Format), 1) << byte;
    uint16_t tag = 77;
    EXPECT_EQ(ZrAudio_GetFormatTagExtensible(&wfext, &tag), 0);
    EXPECT_EQ(tag, 77);
  }
  // The tag alone, without the 22 bytes behind it, says nothing; they may not exist.
  std::vector<uint8_t> head(18);
  const WAVEFORMATEX cut = Wfx(WAVE_FORMAT_EXTENSIBLE, 2, 48000, 16, 4, 0);
  std::memcpy(head.data(), &cut, sizeof(cut));
  EXPECT_EQ(ZrAudio_GetSampleType(AsWfx(head)), 0u);
  EXPECT_EQ(ZrAudio_GetWaveFormatTag(AsWfx(head)), WAVE_FORMAT_EXTENSIBLE);
  EXPECT_EQ(ZrAudio_IsCompressed(AsWfx(head)), 1);
  EXPECT_EQ(ZrAudio_GetSampleType(nullptr), 0u);
}

TEST(FormatTag, CanonicalForms) {
  const struct {
    uint16_t canonical;
    std::vector<uint16_t> aliases;
  } rows[] = {{0x0002, {0x14, 0x17, 0x40}},
              {0xFFCA, {0xD8}},
              {0xA106, {0xFF, 0x180, 0x4143, 0x706D}},
              {0x0216, {0x215}},
              {0x2002, {0x2003}},
              {0x6771, {0x674F, 0x6750, 0x6751, 0x676F, 0x6770}}};
  uint32_t changed = 0;
  for (uint32_t tag = 0; tag <= 0xFFFF; ++tag) {
    changed += ZrAudio_ConvertToCanonicalWaveFormatTag(static_cast<uint16_t>(tag)) != tag;
  }
  EXPECT_EQ(changed, 15u);
  for (const auto& row : rows) {
    for (uint16_t alias : row.aliases) EXPECT_EQ(ZrAudio_ConvertToCanonicalWaveFormatTag(alias), row.canonical);
  }
}

TEST(FixBadWfx, TouchesTagOneOnly) {
  const struct {
    const char* name;
    uint16_t tag, channels, bits, block;
    int32_t result;
    uint16_t newBits, newBlock;
  } rows[] = {
      {"right", 1, 2, 16, 4, 0, 16, 4},
      {"20 bits in three bytes", 1, 2, 20, 6, 1, 24, 6},
      {"20 bits in five half bytes", 1, 2, 20, 5, 1, 24, 6},
      {"wrong block", 1, 6, 24, 16, 1, 24, 18},
      {"12 bits in two bytes", 1, 2, 12, 4, 1, 12, 2},
      {"float", 3, 2, 32, 4, 0, 32, 4},
      {"signed 20", 0xFE01, 2, 20, 5, 0, 20, 5},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WAVEFORMATEX wfx = Wfx(row.tag, row.channels, 48000, row.bits, row.block, 0);
    const uint32_t rate = wfx.nAvgBytesPerSec;
    EXPECT_EQ(ZrAudio_FixBadWfx(&wfx), row.result);
    EXPECT_EQ(wfx.wBitsPerSample, row.newBits);
    EXPECT_EQ(wfx.nBlockAlign, row.newBlock);
    EXPECT_EQ(wfx.nAvgBytesPerSec, rate);
    EXPECT_EQ(ZrAudio_FixBadWfx(&wfx), 0) << "once is enough";
  }
}

TEST(IsCompressed, PlainFormats) {
  const struct {
    uint16_t tag, bits, block;
    int32_t result;
  } rows[] = {{1, 16, 4, 0},      {1, 16, 5, 1},     {1, 20, 6, 1},      {1, 20, 4, 0},      {3, 32, 8, 0},
              {0xFE00, 32, 8, 0}, {0xFE01, 8, 2, 0}, {0xFE02, 24, 6, 0}, {0xFE03, 16, 8, 1}, {0xFE03, 16, 4, 1},
              {2, 4, 1024, 1},    {0x55, 0, 1, 1},   {0, 16, 4, 1}};
  for (const auto& row : rows) {
    const WAVEFORMATEX wfx = Wfx(row.tag, 2, 48000, row.bits, row.block, 0);
    EXPECT_EQ(ZrAudio_IsCompressed(&wfx), row.result) << row.tag << " " << row.bits << " " << row.block;
  }
  const WAVEFORMATEXTENSIBLE pcm = Wfext(1, 6, 16, 16, 0x3F);
  EXPECT_EQ(ZrAudio_IsCompressed(&pcm.Format), 0);
  const WAVEFORMATEXTENSIBLE unpacked = Wfext(0xFE00, 6, 32, 32, 0x3F);
  EXPECT_EQ(ZrAudio_IsCompressed(&unpacked.Format), 1) << "only PCM and float SubFormats count";
}

TEST(InitWfxFlex, MaskDecidesTheShape) {
  const struct {
    const char* name;
    uint16_t channels;
    uint32_t mask, room;
    bool extensible;
  } rows[] = {
      {"mono, none", 1, 0, 40, false},
      {"mono, default", 1, 1, 40, false},
      {"mono, centre", 1, 4, 40, true},
      {"mono, too many speakers", 1, 3, 40, false},
      {"stereo, default", 2, 3, 40, false},
      {"stereo, other", 2, 0xC, 40, true},
      {"stereo, other, little room", 2, 0xC, 39, false},
      {"three, none", 3, 0, 40, false},
      {"three, default", 3, 7, 40, true},
      {"six, default", 6, 0x3F, 40, true},
      {"six, fewer speakers than channels", 6, 0x3, 40, true},
      {"six, too many speakers", 6, 0xFF, 40, false},
      {"forty, all", 40, 0xFFFFFFFF, 40, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    GuardedBuffer dest(row.room);
    ZrAudio_InitWfxFlex(dest.As<WAVEFORMATEX>(), 3, 48000, 32, row.channels, row.mask, row.room);
    EXPECT_TRUE(dest.Intact());
    const auto* wfext = dest.As<WAVEFORMATEXTENSIBLE>();
    EXPECT_EQ(wfext->Format.nBlockAlign, row.channels * 4);
    EXPECT_EQ(wfext->Format.nAvgBytesPerSec, row.channels * 4u * 48000u);
    EXPECT_EQ(wfext->Format.wFormatTag, row.extensible ? 0xFFFE : 3);
    EXPECT_EQ(wfext->Format.cbSize, row.extensible ? 22 : 0);
    if (!row.extensible) continue;
    WAVEFORMATEXTENSIBLE expected = Wfext(3, row.channels, 32, 32, row.mask);
    EXPECT_EQ(std::memcmp(wfext, &expected, sizeof(expected)), 0);
  }
  GuardedBuffer tiny(17);
  const auto before = tiny.Copy();
  ZrAudio_InitWfxFlex(tiny.As<WAVEFORMATEX>(), 1, 48000, 16, 2, 0, 17);
  EXPECT_EQ(tiny.Copy(), before);
}

TEST(IsEqualFormat, HeadFieldsDecide) {
  const WAVEFORMATEX base = Wfx(1, 2, 48000, 16, 4, 0);
  WAVEFORMATEX other = base;
  other.nBlockAlign = 99;
  other.nAvgBytesPerSec = 1;
  other.cbSize = 3;
  EXPECT_EQ(ZrAudio_IsEqualFormat(&base, &other), 1);
  for (int field = 0; field < 4; ++field) {
    other = base;
    if (field == 0) other.nChannels = 1;
    if (field == 1) other.nSamplesPerSec = 44100;
    if (field == 2) other.wBitsPerSample = 24;
    if (field == 3) other.wFormatTag = 3;
    EXPECT_EQ(ZrAudio_IsEqualFormat(&base, &other), 0) << field;
  }
  EXPECT_EQ(ZrAudio_IsEqualFormat(&base, nullptr), 0);
}

TEST(FormatRecord, InitFromSampleType) {
  GuardedBuffer memory(48);
  auto* format = memory.As<_zrwaveformat>();
  format->Init(96000, ZRSAMPLETYPE_PCM24, 6, 0x3F, 48);
  EXPECT_TRUE(memory.Intact());
  EXPECT_EQ(format->size, 48u);
  EXPECT_EQ(format->blockAlign, 18);
  EXPECT_EQ(format->avgBytesPerSec, 18u * 96000);
  EXPECT_EQ(format->flags, 0u);
  EXPECT_EQ(std::vector<uint8_t>(memory.Data() + 32, memory.Data() + 48), std::vector<uint8_t>(16, 0));
  EXPECT_EQ(format->FormatTag(), 1);
  EXPECT_EQ(format->BitsPerSample(), 24);
  EXPECT_EQ(format->BytesPerSample(), 3);

  format->Init(96000, ZRSAMPLETYPE_FLOAT64, 2, 0, 0);
  EXPECT_EQ(format->size, 32u);
  format->channels = 3;
  format->samplesPerSec = 8000;
  EXPECT_EQ(format->UpdateBlockAlign(), 24);
  EXPECT_EQ(format->avgBytesPerSec, 24u * 8000);
  format->sampleType = 0;
  format->channels = 1;
  EXPECT_EQ(format->UpdateBlockAlign(), 24) << "without a type nothing is known";
}

TEST(FormatRecord, InitAsWfx) {
  const struct {
    uint16_t tag, bits, channels;
    uint32_t type;
    uint16_t outTag, outBits, block;
  } rows[] = {{1, 16, 2, 17, 1, 16, 4},         {1, 20, 2, 18, 1, 24, 6},
              {0xFE01, 20, 2, 18, 1, 24, 6},    {3, 32, 6, 32, 3, 32, 24},
              {0xFE01, 8, 1, 49, 0xFE01, 8, 1}, {1, 12, 3, 0, 1, 12, 4},
              {0x55, 0, 2, 0, 0x55, 0, 0},      {2, 4, 2, 0, 2, 4, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.tag) + " " + std::to_string(row.bits));
    _zrwaveformat format;
    format.InitAsWfx(row.tag, 44100, row.bits, row.channels, 0, 32);
    EXPECT_EQ(format.sampleType, row.type);
    EXPECT_EQ(format.IsCompressed(), row.type == 0);
    EXPECT_EQ(format.FormatTag(), row.outTag);
    EXPECT_EQ(format.BitsPerSample(), row.outBits);
    EXPECT_EQ(format.blockAlign, row.block);
    EXPECT_EQ(format.avgBytesPerSec, row.block * 44100u);
  }
}

TEST(FormatRecord, InitFromWfxKeepsExtraBytesAsRoomAllows) {
  const struct {
    const char* name;
    uint32_t room;
    size_t extra, kept;
  } rows[] = {{"no room", 32, 12, 0},
              {"length only", 34, 12, 0},
              {"some", 40, 12, 6},
              {"all", 46, 12, 12},
              {"odd", 128, 7, 7},
              {"more room than bytes", 128, 12, 12},
              {"most", sizeof(_zrwaveformat), 2000, 1024},
              {"none there", 128, 0, 0}};
  for (const auto& row : rows) {
    for (bool extensible : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + (extensible ? " extensible" : " plain"));
      const auto source = extensible ? WithExtra(Wfext(0x1610, 2, 16, 16, 3), row.extra)
                                     : WithExtra(Wfx(0x55, 2, 48000, 0, 1, 0), row.extra);
      GuardedBuffer memory(std::max<size_t>(row.room, 32));
      auto* format = memory.As<_zrwaveformat>();
      format->Init(row.room, AsWfx(source));
      EXPECT_TRUE(memory.Intact());
      EXPECT_TRUE(format->IsCompressed());
      EXPECT_EQ(format->formatTag, extensible ? 0x1610 : 0x55);
      EXPECT_EQ(format->flags & ZRWF_FROM_EXTENSIBLE, extensible ? 0x10u : 0u);
      EXPECT_EQ(format->channelMask, extensible ? 3u : 0u);
      ASSERT_EQ(format->size, 32 + row.kept);
      if (row.kept == 0) continue;
      EXPECT_EQ(format->extraSize, row.kept);
      for (size_t index = 0; index < row.kept; ++index) ASSERT_EQ(format->extra[index], (index + 1) % 256);
    }
  }
}

TEST(FormatRecord, InitFromWfxPutsPcmRight) {
  _zrwaveformat format;
  // A 16-byte head at the end of its memory: nothing behind it may matter.
  const WAVEFORMATEX wide = Wfx(1, 2, 48000, 20, 6, 500);
  format.Init(sizeof(format), &wide);
  EXPECT_EQ(format.sampleType, ZRSAMPLETYPE_PCM24);
  EXPECT_EQ(format.blockAlign, 6);
  EXPECT_EQ(format.size, 32u);
  const WAVEFORMATEX badBlock = Wfx(1, 2, 48000, 16, 3, 0);
  format.Init(32, &badBlock);
  EXPECT_EQ(format.blockAlign, 4);
  EXPECT_EQ(format.avgBytesPerSec, 3u * 48000) << "the average rate is taken over as it is";
  const WAVEFORMATEX odd = Wfx(1, 2, 48000, 12, 4, 500);
  format.Init(sizeof(format), &odd);
  EXPECT_TRUE(format.IsCompressed());
  EXPECT_EQ(format.FormatTag(), 1);
  EXPECT_EQ(format.size, 32u) << "tag 1 has no extra bytes, whatever cbSize says";
  const WAVEFORMATEXTENSIBLE unknown = [] {
    WAVEFORMATEXTENSIBLE wfext = Wfext(1, 2, 16, 16, 3);
    wfext.SubFormat.Data4[7] = 0;
    return wfext;
  }();
  const auto source = WithExtra(unknown, 5);
  format.Init(sizeof(format), AsWfx(source));
  EXPECT_EQ(format.sampleType, 0u);
  EXPECT_TRUE(format.IsCompressed());
  EXPECT_EQ(format.formatTag, 0);
  EXPECT_EQ(format.extraSize, 5);
}

struct EqualityRow {
  const char* name;
  void (*change)(_zrwaveformat&);
  bool equalPcm, equalCompressed;
};

const EqualityRow kEqualityRows[] = {
    {"nothing", [](_zrwaveformat&) {}, true, true},
    {"no mask", [](_zrwaveformat& f) { f.channelMask = 0; }, true, true},
    {"other mask", [](_zrwaveformat& f) { f.channelMask = 0xC; }, false, false},
    {"rate", [](_zrwaveformat& f) { ++f.samplesPerSec; }, false, false},
    {"channels", [](_zrwaveformat& f) { f.channels = 1; }, false, false},
    {"block align", [](_zrwaveformat& f) { ++f.blockAlign; }, true, true},
    {"origin", [](_zrwaveformat& f) { f.flags ^= ZRWF_FROM_EXTENSIBLE; }, true, true},
    {"average rate", [](_zrwaveformat& f) { ++f.avgBytesPerSec; }, true, false},
    {"tag", [](_zrwaveformat& f) { ++f.formatTag; }, true, false},
    {"bits", [](_zrwaveformat& f) { ++f.bitsPerSample; }, true, false},
    {"type", [](_zrwaveformat& f) { f.sampleType = ZRSAMPLETYPE_PCM24; }, false, false},
    {"compression", [](_zrwaveformat& f) { f.flags ^= ZRWF_COMPRESSED; }, false, false},
};

TEST(FormatRecord, Equality) {
  const auto source = WithExtra(Wfx(0x55, 2, 48000, 16, 1, 0), 12);
  for (const EqualityRow& row : kEqualityRows) {
    SCOPED_TRACE(row.name);
    _zrwaveformat pcm, changed;
    pcm.Init(48000, ZRSAMPLETYPE_PCM16, 2, 3, 32);
    changed.Init(48000, ZRSAMPLETYPE_PCM16, 2, 3, 32);
    row.change(changed);
    EXPECT_EQ(pcm == changed, row.equalPcm);
    EXPECT_EQ(changed == pcm, row.equalPcm);
    _zrwaveformat compressed;
    compressed.Init(sizeof(compressed), AsWfx(source));
    compressed.channelMask = 3;
    changed.Init(sizeof(changed), AsWfx(source));
    changed.channelMask = 3;
    row.change(changed);
    EXPECT_EQ(compressed == changed, row.equalCompressed);
    EXPECT_EQ(changed == compressed, row.equalCompressed);
  }
  _zrwaveformat left, right;
  left.Init(sizeof(left), AsWfx(source));
  right.Init(sizeof(right), AsWfx(source));
  right.extra[11] ^= 1;
  EXPECT_FALSE(left == right);
  right.Init(40, AsWfx(source));
  EXPECT_FALSE(left == right) << "six of twelve extra bytes";
  // 31 and 33 channels: the default mask has no bits left to shift.
  left.Init(48000, ZRSAMPLETYPE_PCM16, 33, 0xFFFFFFFF, 32);
  right.Init(48000, ZRSAMPLETYPE_PCM16, 33, 0, 32);
  EXPECT_TRUE(left == right);
}

TEST(FormatRecord, EqualityWithWfx) {
  _zrwaveformat format;
  const WAVEFORMATEX stereo = Wfx(1, 2, 48000, 16, 4, 0);
  const WAVEFORMATEXTENSIBLE wide = Wfext(1, 2, 16, 16, 3);
  for (uint32_t mask : {0u, 3u}) {
    format.Init(48000, ZRSAMPLETYPE_PCM16, 2, mask, 32);
    EXPECT_TRUE(format == stereo);
    EXPECT_TRUE(format == wide.Format);
  }
  format.Init(48000, ZRSAMPLETYPE_PCM16, 2, 0xC, 32);
  EXPECT_FALSE(format == stereo);
  EXPECT_FALSE(format == wide.Format);
  const WAVEFORMATEXTENSIBLE centre = Wfext(1, 2, 16, 16, 0xC);
  EXPECT_TRUE(format == centre.Format);
  format.Init(48000, ZRSAMPLETYPE_PCM24, 2, 0, 32);
  EXPECT_FALSE(format == stereo);

  for (size_t extra : {size_t{0}, size_t{2}, size_t{7}, size_t{12}}) {
    for (bool extensible : {false, true}) {
      SCOPED_TRACE(std::to_string(extra) + (extensible ? " extensible" : " plain"));
      auto source =
          extensible ? WithExtra(Wfext(0x1610, 2, 16, 16, 3), extra) : WithExtra(Wfx(0x55, 2, 48000, 0, 1, 0), extra);
      format.Init(sizeof(format), AsWfx(source));
      EXPECT_TRUE(format == *AsWfx(source));
      if (extra > 0) {
        source.back() ^= 1;
        EXPECT_FALSE(format == *AsWfx(source));
        source.back() ^= 1;
      }
      auto* head = reinterpret_cast<WAVEFORMATEX*>(source.data());
      ++head->nAvgBytesPerSec;
      EXPECT_FALSE(format == *head);
      --head->nAvgBytesPerSec;
      ++head->wBitsPerSample;
      EXPECT_FALSE(format == *head);
    }
  }
}

}  // namespace
