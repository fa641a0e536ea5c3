// SPDX-License-Identifier: Apache-2.0
// Audio formats in words, in English and with the separators of German.
#include <gtest/gtest.h>

#include <string>

#include "marlo110k/formattext.h"
#include "platform/base/text.h"
#include "testing/locales.h"

namespace {

using testing_support::LocaleScope;

class FormatText : public ::testing::Test {
 protected:
  LocaleScope english_{testing_support::kEnglish};
};

_zrwaveformat Pcm(uint32_t rate, uint32_t type, uint16_t channels, uint32_t mask = 0) {
  _zrwaveformat format;
  format.Init(rate, type, channels, mask, sizeof format);
  return format;
}

_zrwaveformat Compressed(uint16_t tag, uint32_t rate, uint16_t bits, uint16_t channels, uint32_t bytesPerSecond) {
  _zrwaveformat format;
  format.InitAsWfx(tag, rate, bits, channels, 0, sizeof format);
  format.avgBytesPerSec = bytesPerSecond;
  return format;
}

std::u16string Text(const _zrwaveformat& format, uint32_t flags) {
  char16_t buffer[256];
  EXPECT_EQ(buffer, ZrAudio_GetFormatText(&format, buffer, 256, flags));
  return buffer;
}

TEST_F(FormatText, SampleTypesAndDepths) {
  const struct {
    uint32_t type;
    const char16_t* name;
    const char16_t* depth;
    const char16_t* precision;
  } kRows[] = {
      {16, u"8 Bit", u"8 Bit", u"8 Bit"},
      {17, u"16 Bit", u"16 Bit", u"16 Bit"},
      {18, u"24 Bit", u"24 Bit", u"24 Bit"},
      {19, u"32 Bit", u"32 Bit", u"32 Bit"},
      {32, u"32 Bit (IEEE Float)", u"32 Bit", u"24 Bit"},
      {33, u"64 Bit (IEEE Float)", u"64 Bit", u"53 Bit"},
      {48, u"24 Bit (Unpacked)", u"24 Bit", u"24 Bit"},
      {49, u"8 Bit (Signed)", u"8 Bit", u"8 Bit"},
      {64, u"16 Bit (MAC)", u"16 Bit", u"16 Bit"},
      {65, u"24 Bit (MAC)", u"24 Bit", u"24 Bit"},
      {66, u"32 Bit (MAC)", u"32 Bit", u"32 Bit"},
      {128, u"16 Bit (RA)", u"32 Bit", u"16 Bit"},
      {129, u"24 Bit (RA)", u"32 Bit", u"24 Bit"},
      {0, u"", u"", u""},
      {20, u"", u"", u""},
  };
  for (const auto& row : kRows) {
    char16_t buffer[64];
    EXPECT_EQ(std::u16string(row.name), ZrAudio_GetSampleTypeText(row.type, buffer, 64)) << row.type;
    EXPECT_EQ(std::u16string(row.depth), ZrAudio_GetBitDepthText(row.type, buffer, 64, 0)) << row.type;
    EXPECT_EQ(std::u16string(row.precision), ZrAudio_GetBitDepthText(row.type, buffer, 64, 1)) << row.type;
  }
  char16_t small[5];
  EXPECT_EQ(std::u16string(u"16 B"), ZrAudio_GetSampleTypeText(17, small, 5));
  EXPECT_EQ(nullptr, ZrAudio_GetSampleTypeText(17, nullptr, 5));
}

TEST_F(FormatText, Channels) {
  const struct {
    uint32_t channels;
    uint32_t mask;
    const char16_t* text;
  } kRows[] = {
      {1, 0, u"Mono"},
      {2, 0, u"Stereo"},
      {2, 3, u"Stereo"},
      {6, 0x3F, u"5.1"},
      {6, 0x60F, u"5.1"},
      {8, 0xFF, u"7.1"},
      {1, 4, u"1/0 (C)"},
      {2, 0xC, u"1/0 (C) + LFE"},
      {3, 0xB, u"2/0 (L, R) + LFE"},
      {3, 7, u"3/0 (L, C, R)"},
      {4, 0xF, u"3/0 (L, C, R) + LFE"},
      {3, 0x13, u"2/1 (L, R, Ls)"},
      {4, 0x1B, u"2/1 (L, R, Ls) + LFE"},
      {4, 0x17, u"3/1 (L, C, R, Ls)"},
      {5, 0x1F, u"3/1 (L, C, R, Ls) + LFE"},
      {4, 0x33, u"2/2 (L, R, Ls, Rs)"},
      {5, 0x3B, u"2/2 (L, R, Ls, Rs) + LFE"},
      {5, 0x37, u"3/2 (L, C, R, Ls, Rs)"},
      {6, 0, u"6 Channel"},
      {1, 1, u"1 Channel"},
      {8, 0x63F, u"8 Channel"},
      {0, 0, u"0 Channel"},
  };
  for (const auto& row : kRows) {
    char16_t buffer[64];
    EXPECT_EQ(std::u16string(row.text), ZrAudio_GetChannelsText(row.channels, row.mask, buffer, 64));
  }
}

TEST_F(FormatText, CompressionNames) {
  const struct {
    uint16_t tag;
    int32_t shortName;
    int32_t result;
    const char16_t* text;
  } kRows[] = {
      {0x55, 0, 0, u"MPEG Layer 3"},
      {0x55, 1, 0, u"MP3"},
      {1, 0, 0, u"PCM"},  // no long name
      {3, 0, 0, u"IEEE Float"},
      {0x674F, 0, 0, u"Ogg Vorbis 1"},
      {0x674F, 1, 0, u"Ogg"},  // by its alias
      {0xFF, 0, 0, u"AAC"},    // an alias has the short name of its family only
      {0x40, 1, 0, u"ADPCM"},
      {0xFFCA, 1, 0, u"DV"},
      {0xFE03, 0, 0, u"PCM Right Aligned"},
      {0x1234, 1, 1, u"0x4660"},
      {0x1234, 0, 1, u"'0x4660' Compression"},
      {0, 1, 1, u"0x0"},
      {0xFFFF, 1, 1, u"0x65535"},
  };
  for (const auto& row : kRows) {
    char16_t buffer[64];
    EXPECT_EQ(row.result, ZrAudio_GetCompressionTypeName(row.tag, buffer, 64, row.shortName)) << row.tag;
    EXPECT_EQ(std::u16string(row.text), buffer) << row.tag;
  }
}

TEST_F(FormatText, TagsAndAttributes) {
  char16_t buffer[64];
  EXPECT_EQ(S_OK, ZrAudio_GetTagText(0xFE02, buffer, 64));
  EXPECT_EQ(std::u16string(u"PCM (big endian)"), buffer);
  EXPECT_EQ(E_FAIL, ZrAudio_GetTagText(0x55, buffer, 64));
  EXPECT_EQ(std::u16string(u"Unknown"), buffer);

  const struct {
    _zrwaveformat format;
    HRESULT result;
    const char16_t* text;
  } kRows[] = {
      {Pcm(44100, ZRSAMPLETYPE_PCM16, 2), S_OK, u"44,100 Hz, 16 Bit, Stereo"},
      {Pcm(44100, ZRSAMPLETYPE_PCM24, 1, 1), S_OK, u"44,100 Hz, 24 Bit, Mono"},
      {Pcm(192000, ZRSAMPLETYPE_FLOAT32, 6, 0x3F), S_OK, u"192,000 Hz, 32 Bit (IEEE Float), 5.1"},
      {Pcm(48000, ZRSAMPLETYPE_PCM16, 8, 0x63F), S_OK, u"48,000 Hz, 16 Bit, 7.1"},
      {Pcm(48000, ZRSAMPLETYPE_PCM16, 6), S_OK, u"48,000 Hz, 16 Bit, 6 Channel"},
      {Pcm(48000, ZRSAMPLETYPE_PCM16, 4, 0x33), S_OK, u"48,000 Hz, 16 Bit, 4 Channel"},
      {Compressed(0x55, 44100, 0, 2, 16000), E_FAIL, u"Unknown"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.result, ZrAudio_GetAttribsText(&row.format, buffer, 64));
    EXPECT_EQ(std::u16string(row.text), buffer);
  }
  EXPECT_EQ(E_FAIL, ZrAudio_GetAttribsText(static_cast<const WAVEFORMATEX*>(nullptr), buffer, 64));
}

TEST_F(FormatText, WholeFormats) {
  const _zrwaveformat cd = Pcm(44100, ZRSAMPLETYPE_PCM16, 2);
  const _zrwaveformat real = Pcm(96000, ZRSAMPLETYPE_FLOAT32, 6, 0x3F);
  const _zrwaveformat mp3 = Compressed(0x55, 44100, 0, 2, 16000);
  const _zrwaveformat adpcm = Compressed(2, 22050, 4, 1, 11155);
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo, PCM", Text(cd, 0));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo", Text(cd, 2));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo", Text(cd, 4));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo, PCM", Text(cd, 1 | 8 | 16 | 32));
  EXPECT_EQ(u"96,000 Hz, 32 Bit (IEEE Float), 5.1, IEEE Float", Text(real, 8));
  EXPECT_EQ(u"96,000 Hz, 24 Bit, 5.1", Text(real, 2));
  EXPECT_EQ(u"44,100 Hz, Stereo, MP3", Text(mp3, 0));
  EXPECT_EQ(u"44,100 Hz, Stereo, MPEG Layer 3", Text(mp3, 8));
  EXPECT_EQ(u"128 Kbps, 44,100 Hz, Stereo, MP3", Text(mp3, 32));
  EXPECT_EQ(u"Unknown", Text(mp3, 16));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo, PCM", Text(mp3, 1));
  EXPECT_EQ(u"44,100 Hz, 16 Bit, Stereo, PCM", Text(mp3, 1 | 16));
  EXPECT_EQ(u"89.2 Kbps, 22,050 Hz, 4 Bit, Mono, ADPCM", Text(adpcm, 32));
  EXPECT_EQ(u"44,100 Hz, 24 Bit, Mono, PCM", Text(Compressed(0x163, 44100, 24, 1, 0), 1));
  EXPECT_EQ(u"8,000 Hz, Mono", Text(Compressed(0x1234, 8000, 0, 1, 0), 0));  // an unknown name is left out
  char16_t buffer[32];
  EXPECT_EQ(std::u16string(u""), ZrAudio_GetFormatText(nullptr, buffer, 32, 0));
  EXPECT_EQ(std::u16string(u"44,100 Hz"), ZrAudio_GetFormatText(&cd, buffer, 10, 0));

  const LocaleScope german(testing_support::kGerman);
  EXPECT_EQ(u"89,2 Kbps; 22.050 Hz; 4 Bit; Mono; ADPCM", Text(adpcm, 32));
}

TEST_F(FormatText, BitRateUnits) {
  const struct {
    uint32_t bytesPerSecond;
    const char16_t* text;
  } kRows[] = {
      {1, u"8 bps"},
      {249, u"1,992 bps"},
      {250, u"2 Kbps"},
      {7050, u"56.4 Kbps"},
      {12494, u"100 Kbps"},   // 99.952
      {12430, u"99.4 Kbps"},  // 99.44
      {249999, u"2,000 Kbps"},
      {250000, u"2 Mbps"},
      {1250000, u"10 Mbps"},
      {0xFFFFFFFF, u"34.4 Gbps"},
      {312500000, u"2.5 Gbps"},
  };
  for (const auto& row : kRows) {
    const std::u16string text = Text(Compressed(0x55, 8000, 0, 1, row.bytesPerSecond), 32 | 4);
    EXPECT_EQ(row.text + std::u16string(u", 8,000 Hz, Mono"), text);
  }
  // A bit rate that is the PCM rate anyway isn't told.
  EXPECT_EQ(u"8,000 Hz, 4 Bit, Mono, ADPCM", Text(Compressed(2, 8000, 4, 1, 4000), 32));
}

}  // namespace
