// SPDX-License-Identifier: Apache-2.0
// Time codes over a whole day, and positions in every format, both directions and in four locales.
#include "marlo110k/timetext.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/base/text.h"
#include "testing/locales.h"

namespace {

using testing_support::LocaleScope;

constexpr int64_t kSecond = 10'000'000;
constexpr int64_t kHour = 3600 * kSecond;

_smpteval Code(uint32_t type, uint32_t hours, uint32_t minutes, uint32_t seconds, uint32_t frames) {
  return {type, hours, minutes, seconds, frames, 0};
}

_zrposfmt Format(uint32_t format, double frameRate = 24) { return {format, 48000, frameRate, 120, 0, 4, 4, 960}; }

// Counts a day by the rule itself: numbers 0 and 1 are left out in minutes that 10 doesn't divide.
TEST(TimeCode, EveryFrameOfADay) {
  const struct {
    uint32_t type, framesPerSecond, framesPerDay;
    double rate;
  } kRows[] = {{1, 30, 2'592'000, 30}, {2, 30, 2'589'408, 30000 / 1001.0}, {3, 25, 2'160'000, 25},
               {4, 24, 2'073'600, 24}, {5, 30, 2'592'000, 30000 / 1001.0}, {6, 24, 2'073'600, 24000 / 1001.0}};
  for (const auto& row : kRows) {
    uint32_t count = 0;
    uint32_t wrong = 0;
    _smpteval walking = Code(row.type, 0, 0, 0, 0);
    for (uint32_t second = 0; second < 86'400; ++second) {
      const uint32_t minute = second / 60;
      const bool drops = row.type == 2 && second % 60 == 0 && minute % 10 != 0;
      for (uint32_t frame = drops ? 2 : 0; frame < row.framesPerSecond; ++frame, ++count) {
        const _smpteval expected = Code(row.type, minute / 60, minute % 60, second % 60, frame);
        _smpteval code = Code(row.type, 9, 9, 9, 9);
        wrong += ZRSMPTE_FrameCountToSMPTE(&code, count) != count || ZRSMPTE_SMPTECompare(&code, &expected) != 0;
        wrong += ZRSMPTE_SMPTEToFrameCount(&expected) != count;
        const int64_t ticks = ZRSMPTE_SMPTEToNanos(&expected);
        wrong += std::abs(static_cast<double>(ticks) - count / row.rate * 1e7) > 1;
        ZRSMPTE_NanoToSMPTE(ticks, &code);
        wrong += ZRSMPTE_SMPTECompare(&code, &expected) != 0;
        wrong += ZRSMPTE_SMPTECompare(&walking, &expected) != 0;
        ZRSMPTE_IncrementByFrame(&walking);
        code = walking;
        ZRSMPTE_DeccrementByFrame(&code);
        wrong += ZRSMPTE_SMPTECompare(&code, &expected) != 0;
      }
    }
    EXPECT_EQ(0u, wrong) << "type " << row.type;
    EXPECT_EQ(row.framesPerDay, count);
    _smpteval code = Code(row.type, 1, 1, 1, 1);
    EXPECT_EQ(5u, ZRSMPTE_FrameCountToSMPTE(&code, row.framesPerDay + 5));
  }
}

TEST(TimeCode, SumsWrapAndLeftOutNumbersCountAsTheNext) {
  _smpteval code = Code(3, 0, 0, 0, 0);
  const _smpteval one = Code(3, 0, 0, 0, 1);
  ZRSMPTE_SubtractSMPTE(&code, &one);
  _smpteval expected = Code(3, 23, 59, 59, 24);
  EXPECT_EQ(0, ZRSMPTE_SMPTECompare(&code, &expected));
  ZRSMPTE_AddSMPTE(&code, &expected);
  expected = Code(3, 23, 59, 59, 23);
  EXPECT_EQ(0, ZRSMPTE_SMPTECompare(&code, &expected));
  const _smpteval leftOut = Code(2, 0, 1, 0, 0);
  EXPECT_EQ(1800u, ZRSMPTE_SMPTEToFrameCount(&leftOut));
  code = Code(1, 0x21, 59, 59, 29);  // a flag above the five bits of the hours
  ZRSMPTE_IncrementByFrame(&code);
  EXPECT_EQ(2u, code.hours);
  code = Code(7, 1, 2, 3, 4);
  EXPECT_EQ(0u, ZRSMPTE_SMPTEToFrameCount(&code));
  EXPECT_EQ(0u, ZRSMPTE_FrameCountToSMPTE(&code, 99));
  EXPECT_EQ(37'231'600'000, ZRSMPTE_SmpteLikeToNanos(25, &(code = Code(0, 1, 2, 3, 4))));
}

TEST(TimeCode, Texts) {
  const struct {
    const char16_t* text;
    uint32_t type;
    _smpteval code;
    const char16_t* left;  // null when all is read
  } kRows[] = {
      {u"1:2:3:4", 1, Code(1, 1, 2, 3, 4), nullptr}, {u"5", 1, Code(1, 0, 0, 0, 5), nullptr},
      {u"65", 1, Code(1, 0, 0, 2, 5), nullptr},      {u"01020304", 1, Code(1, 1, 2, 3, 4), nullptr},
      {u"12345", 1, Code(1, 0, 1, 24, 15), nullptr},  // 1 23 45, and 45 frames carry
      {u"01:02:", 1, Code(1, 0, 1, 2, 0), nullptr},  {u"1::", 1, Code(1, 0, 1, 0, 0), nullptr},
      {u" 1:2 ", 3, Code(3, 0, 0, 1, 2), nullptr},   {u"99:99:99:99", 4, Code(4, 4, 40, 43, 3), nullptr},
      {u"99", 0, Code(0, 0, 0, 0, 99), nullptr},     {u"1:2:3:4:5", 1, Code(1, 1, 2, 3, 4), u"5"},
      {u"take", 1, Code(1, 0, 0, 0, 0), u"take"},    {u"", 1, Code(1, 0, 0, 0, 0), nullptr},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(plat::ToUtf8(row.text));
    _smpteval code = Code(row.type, 7, 7, 7, 7);
    const char16_t* left = ZRSMPTE_TextToSMPTE(row.text, &code);
    EXPECT_EQ(row.left == nullptr, left == nullptr);
    if (row.left != nullptr && left != nullptr) {
      EXPECT_EQ(std::u16string(row.left), left);
    }
    EXPECT_EQ(0, ZRSMPTE_SMPTECompare(&code, &row.code))
        << code.hours << ' ' << code.minutes << ' ' << code.seconds << ' ' << code.frames;
    EXPECT_EQ(row.type, code.type);
  }
}

struct Shown {
  uint32_t format;
  int64_t ticks;
  const char16_t* full;
  const char16_t* shortText;
  int64_t read;  ///< What the full text reads as.
};

void CheckShown(const Shown& row) {
  SCOPED_TRACE("format " + std::to_string(row.format) + " time " + std::to_string(row.ticks));
  const _zrposfmt format = Format(row.format);
  char16_t text[64];
  EXPECT_EQ(static_cast<int32_t>(std::u16string(row.full).size()), ZrNanoTimeToText(text, &format, row.ticks, 0));
  EXPECT_EQ(plat::ToUtf8(row.full), plat::ToUtf8(text));
  const char16_t* end = nullptr;
  EXPECT_EQ(row.read, ZrTextToNanoTimeToken(text, &format, 0, &end));
  ZrNanoTimeToText(text, &format, row.ticks, 1);
  EXPECT_EQ(plat::ToUtf8(row.shortText), plat::ToUtf8(text));
}

// 1 h 1 min 1.5 s is 3661.5 s: 175,752,000 samples at 48,000, 87,876 frames at 24, 7,323 beats at 120.
constexpr int64_t kTime = 36'615'000'000;

TEST(Positions, EveryFormatInEnglish) {
  const LocaleScope locale(testing_support::kEnglish);
  const Shown kRows[] = {
      {0, kTime, u"175,752,000", u"175,752,000", kTime},
      {1, kTime, u"01:01:01.500", u"01:01:01", kTime},
      {1, 863'999'995'000, u"00:00:00.000", u"00:00:00", 0},  // rounds to the next day, never to 1000 ms
      {1, -kTime, u"-01:01:01.500", u"-01:01:01", -kTime},
      {2, kTime, u"3,661.500", u"3,661", kTime},
      {3, kTime, u"01:01:01.12", u"01:01:01", kTime},
      {4, kTime, u"87,876.000", u"87,876", kTime},
      {5, kTime, u"1,831.4.000", u"1,831.4", kTime},
      {5, 0, u"1.1.000", u"1.1", 0},
      {5, 2'500'000, u"1.1.480", u"1.1", 2'500'000},
      {6, 36'036'000'000, u"01:00:00:00", u"01:00:00:00", 36'036'000'000},
      {7, kTime, u"01:01:01:15", u"01:01:01:15", kTime},
      {8, 600'600'000, u"00:01:00;02", u"00:01:00;02", 600'600'000},      // frame 1800
      {8, 5'999'994'000, u"00:10:00;00", u"00:10:00;00", 5'999'994'000},  // frame 17982
      {9, kTime, u"01:01:01:12", u"01:01:01:12", kTime - 200'000},
      {10, kTime, u"01:01:01:12", u"01:01:01:12", kTime},
      {11, -1234567, u"-1,234,567", u"-1,234,567", -1234567},
      {12, 12345675, u"1,234,568", u"1,234,568", 12345680},
      {13, 2'500'000, u"0.0.480", u"0.0", 2'500'000},
      {14, kTime, u"7,323.000", u"7,323", 0},
      {15, kTime, u"2,196+36", u"2,196+36", kTime},
      {16, 10 * kSecond, u"15+0", u"15+0", 10 * kSecond},
      {17, kTime, u"01:01:01:38", u"01:01:01", 36'615'066'667},  // 37.5 frames round to 38
      {18, 36'036'000'000, u"01:00:00:00", u"01:00:00:00", 36'036'000'000},
      {19, kTime, u"1:01:01", u"1:01:01", 0},
      {19, 5 * kSecond, u"0:05", u"0:05", 0},
      {19, 10 * 60 * kSecond, u"10:00", u"10:00", 0},
      {20, kTime, u"36,615,000,000", u"36,615,000,000", 0},
  };
  for (const Shown& row : kRows) CheckShown(row);
}

TEST(Positions, ByTheSeparatorsOfALocale) {
  const struct {
    const plat::LocaleFacts& locale;
    const char16_t* seconds;
    const char16_t* clock;
  } kRows[] = {{testing_support::kGerman, u"3.661,500", u"01:01:01,500"},
               {testing_support::kFrench, u"3\u202F661,500", u"01:01:01,500"},
               {testing_support::kJapanese, u"3,661.500", u"01:01:01.500"}};
  for (const auto& row : kRows) {
    const LocaleScope locale(row.locale);
    CheckShown({2, kTime, row.seconds, std::u16string(row.seconds, 5).c_str(), kTime});
    CheckShown({1, kTime, row.clock, u"01:01:01", kTime});
  }
}

TEST(Positions, OffsetLengthAndBounds) {
  const LocaleScope locale(testing_support::kEnglish);
  _zrposfmt format = Format(5);
  char16_t text[64];
  ZrNanoTimeToTextEx(text, &format, kSecond / 2, ZRPOSF_LENGTH);
  EXPECT_EQ(u"0.1.000", std::u16string(text));
  format = Format(1);
  format.zeroOffset = kHour;
  ZrNanoTimeToText(text, &format, 0, 0);
  EXPECT_EQ(u"-01:00:00.000", std::u16string(text));
  EXPECT_EQ(0, ZrTextToNanoTimeToken(text, &format, 0, nullptr));
  EXPECT_EQ(-kHour, ZrTextToNanoTimeToken(text, &format, ZRPOSF_LENGTH, nullptr));
  EXPECT_EQ(4, ZrNanoTimeToTextN(text, 5, &format, 0, 0));
  EXPECT_EQ(u"-01:", std::u16string(text));
  EXPECT_EQ(0, ZrNanoTimeToTextN(text, 1, &format, 0, 0));
  EXPECT_EQ(0, ZrNanoTimeToTextN(text, 0, &format, 0, 0));
  const _zrposfmt nano = Format(11);
  ZrNanoTimeToText(text, &nano, INT64_MIN, 0);
  EXPECT_EQ(u"-9,223,372,036,854,775,807", std::u16string(text));
  ZrNanoTimeToTextFormat(text, &format, kHour + kTime, u"%u h %u", 0);
  EXPECT_EQ(u"1 h 1", std::u16string(text));
}

TEST(Positions, TypedTexts) {
  const LocaleScope locale(testing_support::kEnglish);
  const struct {
    uint32_t format;
    const char16_t* text;
    uint32_t flags;
    int64_t ticks;
    size_t used;
  } kRows[] = {
      {1, u"1:30", 0, 13'000'000, 4},  {1, u"1:30", 1, 90 * kSecond, 4},
      {1, u"90", 0, 90 * kSecond, 2},  {1, u".5", 0, 5'000'000, 2},
      {1, u"5:", 0, 5 * kSecond, 2},   {1, u"1.23456", 0, 12'340'000, 7},
      {1, u"- 2", 0, -2 * kSecond, 3}, {1, u"x", 0, 0, 0},
      {3, u"12", 0, kSecond / 2, 2},   {5, u"2.1.0 x", 0, 2 * kSecond, 5},
      {5, u"2", 0, 2 * kSecond, 1},    {5, u"2.3.7", 1, 3 * kSecond, 4},
      {13, u"1.1", 0, 25'000'000, 3},  {14, u"5", 0, 0, 0},
      {15, u"1+8", 0, 2 * kSecond, 3}, {2, u"1.5s", 0, 15'000'000, 3},
      {2, u"--5", 0, 5 * kSecond, 3},  {0, u"48,000.9", 0, kSecond, 6},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::to_string(row.format) + " " + plat::ToUtf8(row.text));
    const _zrposfmt format = Format(row.format);
    const char16_t* end = nullptr;
    EXPECT_EQ(row.ticks, ZrTextToNanoTimeToken(row.text, &format, row.flags, &end));
    EXPECT_EQ(row.used, static_cast<size_t>(end - row.text));
  }
}

TEST(Positions, DefaultAndLimits) {
  const LocaleScope locale(testing_support::kEnglish);
  const struct {
    const char16_t* text;
    int64_t zeroOffset;
    int64_t ticks;
  } kRows[] = {{u"", 10, 17}, {u"  ", 0, 7},  {u"x", 0, 7},    {u"x", 3, 3},
               {u"0", 0, 0},  {u"99", 0, 50}, {u"-99", 0, -50}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(plat::ToUtf8(row.text));
    _zrposfmt format = Format(11);
    format.zeroOffset = row.zeroOffset;
    const char16_t* end = nullptr;
    EXPECT_EQ(row.ticks, ZrTextToNanoTimeTokenEx(row.text, &format, 0, 7, -50, 50, &end));
  }
}

TEST(MusicTexts, MeasuresBeatsAndTicks) {
  const LocaleScope locale(testing_support::kEnglish);
  const _zrposfmt format = Format(5);
  char16_t text[64];
  ZrMeasuresAndTicksToText(text, &format, 0, -1, 1, 0, 1);
  EXPECT_EQ(u"-1.4.959", std::u16string(text));
  ZrTicksToText(text, &format, 3840 + 960 + 480, 1, 0, 10);
  EXPECT_EQ(u"2.2.048", std::u16string(text));
  ZrTicksToText(text, &format, -1, 0, 1, 1);
  EXPECT_EQ(u"-1.3", std::u16string(text));
  int32_t measures = 0, beats = 0, ticks = 0;
  EXPECT_EQ(5280, ZrTextToMeasuresBeatsTicks(u"2.2.048", &format, 1, 10, &measures, &beats, &ticks));
  EXPECT_EQ(1, measures);
  EXPECT_EQ(1, beats);
  EXPECT_EQ(48, ticks);
  EXPECT_EQ(-3840, ZrTextToMeasuresBeatsTicks(u"-1", &format, 1, 1, nullptr, nullptr, nullptr));
  EXPECT_EQ(2 * 960 + 30, ZrTextToBeatsTicks(u"2.10", &format, 3, nullptr, nullptr));
  EXPECT_EQ(20, ZrTextToTicks(u"10", 2, nullptr));
}

}  // namespace
