// SPDX-License-Identifier: Apache-2.0
// UTF-16 text, code pages and scaled division.
#include "platform/base/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "platform/base/codepage.h"
#include "testing/random.h"

namespace plat {
namespace {

int Sign(int value) { return (value > 0) - (value < 0); }

TEST(CopyText, CutsToTheCapacityAndAlwaysTerminates) {
  char16_t buffer[5];
  for (size_t capacity = 0; capacity <= 5; ++capacity) {
    std::fill(buffer, buffer + 5, u'#');
    const size_t written = CopyText(buffer, capacity, u"abc");
    EXPECT_EQ(written, capacity == 0 ? 0 : std::min<size_t>(3, capacity - 1));
    if (capacity == 0) {
      EXPECT_EQ(buffer[0], u'#');
    } else {
      EXPECT_EQ(std::u16string(buffer), std::u16string(u"abc").substr(0, written));
    }
    if (capacity < 5) {
      EXPECT_EQ(buffer[capacity], u'#');
    }
  }
  EXPECT_EQ(CopyText(buffer, 5, nullptr), 0u);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(TextLength(nullptr), 0u);
}

TEST(CompareText, OrdersByCodeUnitAndNoCaseByFolding) {
  struct Row {
    const char16_t* left;
    const char16_t* right;
    int exact;
    int noCase;
  };
  const Row rows[] = {
      {u"", u"", 0, 0},
      {u"", u"a", -1, -1},
      {u"abc", u"ABC", 1, 0},
      {u"abc", u"ABD", 1, -1},
      {u"Zebra", u"apple", -1, 1},
      {u"_", u"a", -1, -1},  // U+005F stands before the lower-case letters it is compared with.
      {u"Äbc", u"äBC", -1, 0},
      {u"straße", u"STRASSE", 1, 1},              // Simple folding keeps lengths: ß is not ss.
      {u"ΣΑΣ", u"σας", -1, 0},                    // Both small sigmas fold to one.
      {u"\xD801\xDC00", u"\xD801\xDC28", -1, 0},  // Deseret capital and small long I.
      {u"\xFFFD", u"\xD801\xDC00", 1, -1},        // No case compares code points, exact code units.
      {u"a\xD800", u"A\xD800", 1, 0},
      {u"a\xD800", u"a", 1, 1},
      {nullptr, u"", -1, -1},
      {nullptr, nullptr, 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.left == nullptr ? "null" : ToUtf8(row.left));
    EXPECT_EQ(Sign(CompareText(row.left, row.right)), row.exact);
    EXPECT_EQ(Sign(CompareText(row.right, row.left)), -row.exact);
    EXPECT_EQ(Sign(CompareTextNoCase(row.left, row.right)), row.noCase);
    EXPECT_EQ(Sign(CompareTextNoCase(row.right, row.left)), -row.noCase);
  }
}

TEST(UpperCase, MapsSingleCharactersAndLeavesTheRest) {
  EXPECT_EQ(UpperCase(u'q'), u'Q');
  EXPECT_EQ(UpperCase(u'ä'), u'Ä');
  EXPECT_EQ(UpperCase(u'ÿ'), u'Ÿ');
  EXPECT_EQ(UpperCase(u'я'), u'Я');
  EXPECT_EQ(UpperCase(u'ß'), u'ß');
  EXPECT_EQ(UpperCase(u'{'), u'{');
  EXPECT_EQ(UpperCase(0xD801), 0xD801);
}

TEST(Utf8, GoesThereAndBackForEveryCodePoint) {
  for (char32_t point = 1; point <= 0x10FFFF; ++point) {
    if (point >= 0xD800 && point <= 0xDFFF) continue;
    std::u16string text;
    if (point < 0x10000) {
      text.push_back(static_cast<char16_t>(point));
    } else {
      text.push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 | (point & 0x3FF)));
    }
    const std::string bytes = ToUtf8(text.c_str());
    ASSERT_EQ(bytes.size(), point < 0x80 ? 1u : point < 0x800 ? 2u : point < 0x10000 ? 3u : 4u);
    ASSERT_EQ(FromUtf8(bytes.c_str()), text) << std::hex << static_cast<uint32_t>(point);
  }
}

TEST(Utf8, BadInputBecomesReplacementCharacters) {
  struct Row {
    const char* bytes;
    const char16_t* text;
  };
  // Examples of the replacement practice of Unicode 15, table 3-8 and its neighbours.
  const Row rows[] = {
      {"a\xF1\x80\x80\xE1\x80\xC2"
       "b\x80"
       "c\x80\xBF"
       "d",
       u"a\xFFFD\xFFFD\xFFFD"
       u"b\xFFFD"
       u"c\xFFFD\xFFFD"
       u"d"},
      {"\xC0\xAF", u"\xFFFD\xFFFD"},
      {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},
      {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"\xE2\x82", u"\xFFFD"},
      {"\xFF", u"\xFFFD"},
  };
  for (const Row& row : rows) EXPECT_EQ(FromUtf8(row.bytes), row.text) << row.bytes;
  EXPECT_EQ(ToUtf8(u"x\xD800y\xDC00"), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8(nullptr), "");
  EXPECT_EQ(FromUtf8(nullptr), u"");
}

TEST(MulDiv, RoundsHalfAwayFromZeroAsWideArithmeticDoes) {
  testing_support::Random random(7);
  SCOPED_TRACE(random.Label());
  const int32_t edges[] = {
      0, 1, -1, 2, -2, 3, 7, 10'000, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()};
  const auto pick = [&] {
    return random.Between(0, 3) == 0 ? edges[random.Between(0, 9)]
                                     : static_cast<int32_t>(random.Bits() >> random.Between(32, 63));
  };
  for (int i = 0; i < 200'000; ++i) {
    const int32_t value = pick();
    const int32_t multiplier = pick();
    const int32_t divisor = pick();
    int64_t expected = -1;
    if (divisor != 0) {
      // Twice the quotient, rounded towards zero after adding one half away from zero.
      const __int128 product = static_cast<__int128>(value) * multiplier;
      const bool negative = (product < 0) != (divisor < 0) && product != 0;
      const __int128 top = product < 0 ? -product : product;
      const __int128 bottom = divisor < 0 ? -static_cast<__int128>(divisor) : divisor;
      const __int128 magnitude = (2 * top + bottom) / (2 * bottom);
      const __int128 result = negative ? -magnitude : magnitude;
      const bool fits = result >= std::numeric_limits<int32_t>::min() && result <= std::numeric_limits<int32_t>::max();
      expected = fits ? static_cast<int64_t>(result) : -1;
    }
    ASSERT_EQ(MulDiv(value, multiplier, divisor), expected) << value << " " << multiplier << " " << divisor;
  }
}

// ---- Code pages ------------------------------------------------------------------------------------

/// Puts the page back.
struct PageScope {
  explicit PageScope(uint32_t page) { EXPECT_TRUE(SetAnsiPage(page)) << page; }
  ~PageScope() { SetAnsiPage(1252); }
};

TEST(AnsiPage, EveryByteOfEverySingleBytePageComesBack) {
  std::string bytes(256, '\0');
  for (size_t i = 0; i < 256; ++i) bytes[i] = static_cast<char>(i);
  for (uint32_t page = 1250; page <= 1258; ++page) {
    PageScope scope(page);
    EXPECT_EQ(AnsiPage(), page);
    std::u16string text(256, u'\0');
    ASSERT_EQ(FromAnsi(bytes.data(), 256, text.data(), 256), 256u);
    std::string back(256, '\0');
    ASSERT_EQ(ToAnsi(text.data(), 256, back.data(), 256), 256u);
    EXPECT_EQ(back, bytes) << page;
  }
}

TEST(AnsiPage, KnownCharactersHaveTheirBytes) {
  struct Row {
    uint32_t page;
    char16_t character;
    uint8_t byte;
  };
  const Row rows[] = {
      {1252, u'€', 0x80}, {1252, u'Ÿ', 0x9F}, {1252, u'ä', 0xE4}, {1252, 0x81, 0x81}, {1252, u'Я', '?'},
      {1251, u'Я', 0xDF}, {1251, u'ä', '?'},  {1250, u'ł', 0xB3}, {1253, u'Ω', 0xD9}, {1254, u'ğ', 0xF0},
      {1255, u'א', 0xE0}, {1256, u'ب', 0xC8}, {1257, u'ž', 0xFE}, {1258, u'₫', 0xFE},
  };
  for (const Row& row : rows) {
    PageScope scope(row.page);
    char byte = 0;
    EXPECT_EQ(ToAnsi(&row.character, 1, &byte, 1), 1u);
    EXPECT_EQ(static_cast<uint8_t>(byte), row.byte) << row.page;
  }
}

TEST(AnsiPage, SizesBoundBothSidesAndUnmappableUnitsBecomeQuestionMarks) {
  char bytes[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(ToAnsi(u"a\xD83D\xDE00z", 4, bytes, 3), 3u);
  EXPECT_EQ(std::string(bytes, 4), "a??#");
  char16_t text[3] = {u'#', u'#', u'#'};
  EXPECT_EQ(FromAnsi("abc", 3, text, 2), 2u);
  EXPECT_EQ(std::u16string(text, 3), u"ab#");
  EXPECT_EQ(ToAnsi(u"", 0, bytes, 4), 0u);
}

TEST(AnsiPage, UnknownPagesAreRefusedAndTheDoubleBytePageConverts) {
  EXPECT_FALSE(SetAnsiPage(1249));
  EXPECT_FALSE(SetAnsiPage(1259));
  EXPECT_FALSE(SetAnsiPage(65001));
  EXPECT_EQ(AnsiPage(), 1252u);
  PageScope scope(932);
  char bytes[8];
  const size_t count = ToAnsi(u"a日", 2, bytes, 8);
  EXPECT_EQ(std::string(bytes, count), "a\x93\xFA");
  char16_t text[8];
  EXPECT_EQ(FromAnsi(bytes, count, text, 8), 2u);
  EXPECT_EQ(std::u16string(text, 2), u"a日");
}

}  // namespace
}  // namespace plat
