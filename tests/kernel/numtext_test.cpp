// SPDX-License-Identifier: Apache-2.0
// Numbers, colours, levels and sizes, written and read.
#include "marlo110k/numtext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "marlo110k/kernel.h"
#include "platform/base/text.h"
#include "testing/locales.h"

namespace {

using testing_support::LocaleScope;

TEST(NumbersOfUsers, WholeNumbersAtTheirEnds) {
  const LocaleScope locale(testing_support::kGerman);
  char16_t text[40];
  EXPECT_EQ(11u, ZrLongToText(INT32_MIN, text, 0));
  EXPECT_EQ(u"-2147483648", std::u16string(text));
  ZrLongLongToText(INT64_MIN, text, 1);
  EXPECT_EQ(u"-9.223.372.036.854.775.808", std::u16string(text));
  ZrDWordToText(UINT32_MAX, text, 1);
  EXPECT_EQ(u"4.294.967.295", std::u16string(text));
  ZrDWordLongToText(UINT64_MAX, text, 0);
  EXPECT_EQ(u"18446744073709551615", std::u16string(text));
  EXPECT_EQ(5u, ZrDWordToTextN(1234, text, 6, 1));
  EXPECT_EQ(0u, ZrDWordToTextN(1234, text, 5, 1));
  EXPECT_EQ(0, text[0]);
  EXPECT_EQ(0u, ZrLongToTextN(1, text, 1, 0));
  EXPECT_EQ(0u, ZrLongLongToTextN(1, text, 0, 0));
}

TEST(NumbersOfUsers, Reals) {
  const LocaleScope locale(testing_support::kGerman);
  const struct {
    double value;
    uint32_t digits;
    int32_t localised;
    const char16_t* text;
  } kRows[] = {
      {0, 3, 0, u"0"},
      {-0.004, 2, 0, u"0.00"},
      {-0.005, 2, 0, u"-0.01"},
      {0.5, 0, 0, u"1"},
      {1234567.891, 2, 1, u"1.234.567,89"},
      {9.9996, 3, 0, u"10.000"},
      {1, 20, 0, u"1.000000000"},
      {-1.5, 1, 0, u"-1.5"},
      {1e22, 0, 0, u"10000000000000000000000"},
      {std::numeric_limits<double>::infinity(), 1, 0, u"0"},
  };
  for (const auto& row : kRows) {
    char16_t text[64];
    EXPECT_EQ(std::u16string(row.text).size(), ZrDoubleToText(text, row.value, row.digits, row.localised));
    EXPECT_EQ(plat::ToUtf8(row.text), plat::ToUtf8(text));
  }
  char16_t text[512];
  EXPECT_EQ(319u, ZrDoubleToTextN(text, 512, std::numeric_limits<double>::max(), 9, 0));
  EXPECT_EQ(0u, ZrDoubleToTextN(text, 4, 1.25, 2, 0));
}

TEST(NumbersOfUsers, AreReadBack) {
  const LocaleScope locale(testing_support::kFrench);
  const struct {
    const char16_t* text;
    int64_t whole;
    size_t wholeUsed;
    double localised;
    double plain;
  } kRows[] = {
      {u" 1\u202F234,5 dB", 1234, 6, 1234.5, 1},
      {u"-7.25", -7, 2, -7, -7.25},
      {u"99999999999999999999", INT64_MAX, 20, 1e20, 1e20},
      {u"-99999999999999999999", INT64_MIN, 21, -1e20, -1e20},
      {u"1,234.5", 1, 1, 1.234, 1234.5},
      {u"--5", 0, 0, 0, 0},
      {u"-", 0, 0, 0, 0},
      {u"abc", 0, 0, 0, 0},
      {u"", 0, 0, 0, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(plat::ToUtf8(row.text));
    const char16_t* end = nullptr;
    EXPECT_EQ(row.whole, ZrTextToLongLongToken(row.text, &end));
    EXPECT_EQ(row.wholeUsed, static_cast<size_t>(end - row.text));
    EXPECT_EQ(std::max<int64_t>(row.whole, 0) != 0, ZrTextToDWordLongToken(row.text, nullptr) != 0);
    EXPECT_EQ(std::clamp<int64_t>(row.whole, INT32_MIN, INT32_MAX), ZrTextToLongToken(row.text, nullptr));
    EXPECT_DOUBLE_EQ(row.localised, ZrTextToDoubleToken(row.text, nullptr, 1));
    EXPECT_DOUBLE_EQ(row.plain, ZrTextToDoubleToken(row.text, nullptr, 0));
  }
  EXPECT_EQ(UINT32_MAX, ZrTextToDWordToken(u"4294967296", nullptr));
  EXPECT_EQ(0x1Fu, ZrHexToDWordToken(u" 0X1fg", nullptr));
  EXPECT_EQ(0u, ZrHexToDWordToken(u"0x", nullptr));
  EXPECT_EQ(UINT64_MAX, ZrHexToDWordLongToken(u"123456789abcdef01", nullptr));
}

TEST(NumbersOfUsers, DefaultsAndLimits) {
  EXPECT_EQ(7, ZrTextToLongTokenEx(u"x", 7, -10, 10, nullptr));
  EXPECT_EQ(10, ZrTextToLongTokenEx(u"x", 70, -10, 10, nullptr));
  EXPECT_EQ(0, ZrTextToLongTokenEx(u"  ", 7, -10, 10, nullptr));
  EXPECT_EQ(-10, ZrTextToLongLongTokenEx(u"-11", 7, -10, 10, nullptr));
  EXPECT_EQ(3u, ZrTextToDWordTokenEx(u"0", 7, 3, 10, nullptr));
  EXPECT_EQ(10u, ZrTextToDWordLongTokenEx(u"11 x", 7, 3, 10, nullptr));
  EXPECT_EQ(0.5, ZrTextToDoubleTokenEx(u"0 dB", 0.5, -1, 1, nullptr, 0));
  EXPECT_EQ(0x20u, ZrHexToDWordTokenEx(u"FF", 1, 0, 0x20, nullptr));
  EXPECT_EQ(1u, ZrHexToDWordLongTokenEx(u"g", 1, 0, 0x20, nullptr));
}

TEST(Colors, ReadAndWritten) {
  const struct {
    const char16_t* text;
    uint32_t color;
    size_t used;
  } kRows[] = {
      {u"RGB(1,2,3)", 0x030201, 10},
      {u" rgb ( 255 , 0 , 16 )x", 0x1000FF, 21},
      {u"#ff8000", 0x0080FF, 7},
      {u"0x123456", 0x123456, 8},
      {u"255", 255, 3},
      {u"RGB(256,0,0)", 0xABC, 0},
      {u"RGB(1,2", 0xABC, 0},
      {u"#ff80", 0xABC, 0},
      {u"red", 0xABC, 0},
      {u"", 0xABC, 0},
      {u"r", 0xABC, 0},
      {u"# ff800", 0xABC, 0},
      {u"#0x1234", 0xABC, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(plat::ToUtf8(row.text));
    const char16_t* end = nullptr;
    EXPECT_EQ(row.color, ZrTextToColorrefTokenEx(row.text, 0xABC, &end));
    EXPECT_EQ(row.used, static_cast<size_t>(end - row.text));
  }
  EXPECT_EQ(0xF000F0u, ZrTextToColorref(u"none"));
  const struct {
    uint32_t color, form;
    const char16_t* text;
  } kWritten[] = {{0x0080FF, 0, u"RGB(255,128,0)"}, {0x0080FF, 1, u"#ff8000"}, {0x0080FF, 2, u"0x000080ff"},
                  {0x1000000, 0, u"0x01000000"},    {0, 2, u"0x00000000"},     {0, 1, u"#000000"}};
  for (const auto& row : kWritten) {
    char16_t text[16];
    EXPECT_EQ(std::u16string(row.text).size(), ZrColorrefToText(text, 16, row.color, row.form));
    EXPECT_EQ(plat::ToUtf8(row.text), plat::ToUtf8(text));
    EXPECT_EQ(row.color, ZrTextToColorref(text));
  }
  char16_t text[4];
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrColorrefToTextEx(text, 4, nullptr, 0, 0));
}

class Measures : public ::testing::Test {
 protected:
  LocaleScope english_{testing_support::kEnglish};
};

TEST_F(Measures, Levels) {
  const auto text = [](const char16_t* level) { return plat::ToUtf8(level); };
  EXPECT_EQ("-6.02 dB", text(ZrGetdBStringFixed(-602, 2, -9600, 1)));
  EXPECT_EQ("-Inf.", text(ZrGetdBStringFixed(-9600, 2, -9600, 1)));
  EXPECT_EQ("-12", text(ZrGetdBStringFixed(-12, 0, 0, 0)));
  EXPECT_EQ("-0.5 dB", text(ZrGetdBStringFloat(-0.5f, 1, -96, 1)));
  EXPECT_EQ("-Inf.", text(ZrGetdBStringFloat(-97, 1, -96, 0)));
  EXPECT_EQ("2 frames", text(ZrGetLabeledStringFloat(2.9f, 0, 0, u" frames")));
  EXPECT_EQ("2.000000000", text(ZrGetLabeledStringFloat(2, 30, 0, nullptr)));
  EXPECT_EQ(23u, std::u16string(ZrGetLabeledStringFixed(5, 0, 0, u" of a label that is too long")).size());
}

TEST_F(Measures, FileSizes) {
  const struct {
    int64_t bytes;
    const char* text;
  } kRows[] = {{-5, "0 B"},
               {998, "998 B"},
               {999, "0.97 KB"},
               {1024, "1.00 KB"},
               {1536, "1.50 KB"},
               {10 * 1024 + 512, "10.5 KB"},
               {0xF9BFF, "998 KB"},
               {0xF9C00, "0.97 MB"},
               {int64_t{100} << 20, "100 MB"},
               {0x3E700000, "0.97 GB"},
               {int64_t{3} << 40, "3.00 TB"},
               {int64_t{5} << 50, "5.00 PB"},
               {0x6FFFFFFFFFFFFFFF, "7.00 EB"},  // the nearest real is the whole
               {INT64_MAX, "> 9 YB"}};
  for (const auto& row : kRows) {
    char16_t text[32];
    EXPECT_EQ(std::string(row.text).size(), ZrFormatFileSize(row.bytes, text, 32, 0)) << row.text;
    EXPECT_EQ(row.text, plat::ToUtf8(text));
  }
  char16_t text[16];
  ZrFormatFileSize(1, text, 16, 1);
  EXPECT_EQ(u"1 bytes", std::u16string(text));
  EXPECT_EQ(0u, ZrFormatFileSize(1536, text, 4, 0));
  ZrFourCCToString(0x207F4152, text);
  EXPECT_EQ(u"RA. ", std::u16string(text));
}

}  // namespace
