// SPDX-License-Identifier: Apache-2.0
// The international record, its selectors, and numbers in the user's form.
#include "marlo110k/locale.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "marlo110k/printf.h"
#include "platform/base/text.h"
#include "testing/locales.h"

namespace {

using testing_support::LocaleScope;

std::u16string Whole(const char16_t* text) {
  char16_t buffer[256];
  const int32_t written = ZrFormatNumber(text, buffer, 256);
  EXPECT_EQ(written, static_cast<int32_t>(plat::TextLength(buffer)));
  return buffer;
}
std::u16string Decimal(const char16_t* text) {
  char16_t buffer[256];
  ZrFormatDecimalNumber(text, buffer, 256);
  return buffer;
}
std::u16string Grouped(const char16_t* text, int32_t digits) {
  char16_t buffer[256];
  ZrFormatGroupDecimalNumber(text, buffer, 256, digits);
  return buffer;
}

TEST(NumberText, GroupsWholeNumbers) {
  const LocaleScope scope(testing_support::kEnglish);
  const struct {
    const char16_t* text;
    const char16_t* grouped;
  } kRows[] = {
      {u"0", u"0"},
      {u"12", u"12"},
      {u"123", u"123"},
      {u"1234", u"1,234"},
      {u"123456", u"123,456"},
      {u"1234567", u"1,234,567"},
      {u"-1", u"-1"},
      {u"-1234", u"-1,234"},
      {u"00123", u"00123"},
      {u"001234", u"001,234"},
      {u"  1234", u"  1,234"},
      {u"000", u"000"},
      {u"1234.4", u"1,234"},
      {u"1234.5", u"1,235"},
      {u"999.5", u"1,000"},
      {u"99.5", u"100"},
      {u"", u""},
      {u"-", u"-"},
      {u"abc", u"abc"},
      {u"12abc", u"12abc"},
      {u"1234  ", u"1,234  "},
      {u"1e5", u"1e5"},
      {u"inf", u"inf"},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.grouped, Whole(row.text)) << plat::ToUtf8(row.text);
}

TEST(NumberText, DecimalsAndGroups) {
  const LocaleScope scope(testing_support::kGerman);
  EXPECT_EQ(u"1234567,50", Decimal(u"1234567.50"));
  EXPECT_EQ(u"-0,5", Decimal(u"-0.5"));
  EXPECT_EQ(u"00,5", Decimal(u"00.5"));
  EXPECT_EQ(u"5", Decimal(u"5."));
  EXPECT_EQ(u"0,5", Decimal(u".5"));
  EXPECT_EQ(u"1.234.567,50", Grouped(u"1234567.50", -1));
  EXPECT_EQ(u"1.234.567,50", Grouped(u"1234567.50", -2));
  EXPECT_EQ(u"1.234.568", Grouped(u"1234567.50", 0));
  EXPECT_EQ(u"1.234.567,5", Grouped(u"1234567.50", 1));
  EXPECT_EQ(u"1.234.567,5000", Grouped(u"1234567.50", 4));
  EXPECT_EQ(u"0,00", Grouped(u"0", 2));
  EXPECT_EQ(u"1.000,00", Grouped(u"999.995", 2));
  EXPECT_EQ(u"1,24", Grouped(u"1.235", 2));
  EXPECT_EQ(u"1,23", Grouped(u"1.2349", 2));
  EXPECT_EQ(u"-10,0", Grouped(u"-9.96", 1));
  EXPECT_EQ(u"0,2", Grouped(u"0.19", 1));
}

TEST(NumberText, LocaleWithoutLeadingZeroOrGroups) {
  plat::LocaleFacts facts = testing_support::kEnglish;
  facts.leadingZero = false;
  facts.grouping = 0;
  const LocaleScope scope(facts);
  EXPECT_EQ(u".5", Decimal(u"0.5"));
  EXPECT_EQ(u"-.5", Decimal(u"-.5"));
  EXPECT_EQ(u"0", Decimal(u"0"));
  EXPECT_EQ(u"1234567.5", Grouped(u"1234567.5", -1));
}

TEST(NumberText, CutsAndBadArguments) {
  const LocaleScope scope(testing_support::kEnglish);
  char16_t buffer[8] = u"~~~~~~~";
  EXPECT_EQ(3, ZrFormatNumber(u"1234567", buffer, 4));
  EXPECT_EQ(std::u16string(u"1,2"), buffer);
  EXPECT_EQ(u'~', buffer[4]);
  EXPECT_EQ(0, ZrFormatNumber(u"1", buffer, 1));
  EXPECT_EQ(0, buffer[0]);
  EXPECT_EQ(0, ZrFormatNumber(u"1", nullptr, 4));
  EXPECT_EQ(0, ZrFormatNumber(u"1", buffer, 0));
  EXPECT_EQ(0, ZrFormatNumber(nullptr, buffer, 4));
}

TEST(Internationals, RecordAndSelectors) {
  const LocaleScope scope(testing_support::kFrench);
  tZRINTERNATIONALS record;
  std::memset(&record, 0xEE, sizeof record);
  EXPECT_EQ(S_OK, ZrLang_GetInternationals(&record, 4000));
  EXPECT_EQ(796U, record.size);
  EXPECT_EQ(0x040CU, record.systemLcid);
  EXPECT_EQ(33U, record.countryNumber);
  EXPECT_EQ(std::u16string(u"France"), record.englishCountryName.text);
  EXPECT_EQ(6U, record.englishCountryName.length);
  EXPECT_EQ(1U, record.thousandsSeparator.length);
  EXPECT_EQ(0x202F, record.thousandsSeparator.text[0]);
  EXPECT_EQ(3U, record.grouping);
  EXPECT_EQ(0U, record.measureSystem);
  for (const uint8_t byte : record.reserved) EXPECT_EQ(0, byte);

  const struct {
    uint32_t selector;
    const char16_t* text;
  } kTexts[] = {{2, u"français (France)"},
                {3, u"French"},
                {24, u","},
                {40, u";"},
                {60, u":"},
                {100, u":"},
                {101, u"."},
                {102, u","},
                {120, u"."},
                {121, u"."}};
  for (const auto& row : kTexts) {
    char16_t buffer[64];
    const std::u16string expected = row.text;
    EXPECT_EQ(expected.size(), ZrGetInat(row.selector, buffer)) << row.selector;
    EXPECT_EQ(expected, buffer);
    EXPECT_EQ(0U, ZrGetInat(row.selector, nullptr));
    EXPECT_EQ(0U, ZrGetInatN(row.selector, buffer, 1));
    EXPECT_EQ(0, buffer[0]);
  }
  EXPECT_EQ(0x040CU, ZrGetInat(0, nullptr));
  EXPECT_EQ(0x040CU, ZrGetInat(1, nullptr));
  EXPECT_EQ(33U, ZrGetInat(4, nullptr));
  char16_t buffer[64] = u"~";
  for (const uint32_t selector : {5U, 23U, 103U, 0xFFFFFFFFU}) EXPECT_EQ(0U, ZrGetInat(selector, buffer));
  EXPECT_EQ(u'~', buffer[0]);
}

TEST(Internationals, PartialCopyStoresItsSize) {
  const LocaleScope scope(testing_support::kEnglish);
  tZRINTERNATIONALS record;
  std::memset(&record, 0xEE, sizeof record);
  EXPECT_EQ(S_OK, ZrLang_GetInternationals(&record, 8));
  EXPECT_EQ(8U, record.size);
  EXPECT_EQ(0x0409U, record.systemLcid);
  EXPECT_EQ(0xEEEEEEEEU, record.languageNumber);
}

TEST(Internationals, EqualSeparatorsAreToldApart) {
  for (const bool comma : {false, true}) {
    plat::LocaleFacts facts = testing_support::kEnglish;
    facts.thousandsSeparator[0] = facts.decimalSeparator[0] = comma ? u',' : u'.';
    const LocaleScope scope(facts);
    char16_t buffer[64];
    EXPECT_EQ(1U, ZrGetInat(24, buffer));
    EXPECT_EQ(comma ? u'.' : u',', buffer[0]);
  }
}

TEST(LocaleFacts, FromTheUnicodeTables) {
  const struct {
    const char* name;
    const plat::LocaleFacts* expected;
  } kRows[] = {{"en_US.UTF-8", &testing_support::kEnglish},
               {"de-DE", &testing_support::kGerman},
               {"fr_FR", &testing_support::kFrench},
               {"ja-JP", &testing_support::kJapanese},
               {"sv_SE.UTF-8@euro", &testing_support::kSwedish}};
  for (const auto& row : kRows) {
    const plat::LocaleFacts facts = plat::NamedLocale(row.name);
    EXPECT_EQ(row.expected->lcid, facts.lcid) << row.name;
    EXPECT_EQ(row.expected->countryNumber, facts.countryNumber) << row.name;
    EXPECT_EQ(std::u16string(row.expected->decimalSeparator), facts.decimalSeparator) << row.name;
    EXPECT_EQ(std::u16string(row.expected->thousandsSeparator), facts.thousandsSeparator) << row.name;
    EXPECT_EQ(std::u16string(row.expected->listSeparator), facts.listSeparator) << row.name;
    EXPECT_EQ(std::u16string(row.expected->timeSeparator), facts.timeSeparator) << row.name;
    EXPECT_EQ(std::u16string(row.expected->negativeSign), facts.negativeSign) << row.name;
    EXPECT_EQ(std::u16string(row.expected->englishLanguageName), facts.englishLanguageName) << row.name;
    EXPECT_EQ(row.expected->measureSystem, facts.measureSystem) << row.name;
    EXPECT_EQ(3U, facts.grouping) << row.name;
  }
  EXPECT_EQ(0x0409U, plat::NamedLocale("").lcid);
}

}  // namespace
