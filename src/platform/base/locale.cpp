// SPDX-License-Identifier: Apache-2.0
// Locale facts from ICU, completed by what it doesn't hold: list separators and telephone prefixes.
#include "platform/base/locale.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/ulocdata.h>
#include <unicode/unum.h>

#include <cstdlib>
#include <cstring>

#include "platform/base/text.h"

namespace plat {
namespace {

constexpr char kDefaultLocale[] = "en_US";

struct Override {
  bool active;
  LocaleFacts facts;
};
constinit Override override{};

struct CountryRow {
  char country[3];
  uint32_t prefix;
};
constexpr CountryRow kCountries[] = {
    {"AT", 43}, {"AU", 61},  {"BE", 32}, {"BR", 55}, {"CA", 1},   {"CH", 41}, {"CN", 86}, {"DE", 49},  {"DK", 45},
    {"ES", 34}, {"FI", 358}, {"FR", 33}, {"GB", 44}, {"IE", 353}, {"IT", 39}, {"JP", 81}, {"KR", 82},  {"MX", 52},
    {"NL", 31}, {"NO", 47},  {"NZ", 64}, {"PL", 48}, {"PT", 351}, {"RU", 7},  {"SE", 46}, {"TW", 886}, {"US", 1},
};

/// The environment's locale without what names no conventions: the C locale stands for the default.
const char* EnvironmentLocale() noexcept {
  for (const char* variable : {"LC_ALL", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == 0) continue;
    const bool isC = std::strcmp(value, "POSIX") == 0 || (value[0] == 'C' && (value[1] == 0 || value[1] == '.'));
    return isC ? kDefaultLocale : value;
  }
  return kDefaultLocale;
}

void ReadNumberFacts(const char* id, LocaleFacts* facts) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  UNumberFormat* format = unum_open(UNUM_DECIMAL, nullptr, 0, id, nullptr, &status);
  if (U_FAILURE(status)) return;
  const auto read = [&](UNumberFormatSymbol symbol, char16_t* text) {
    char16_t value[kLocaleSignCharacters * 2] = {};
    UErrorCode symbolStatus = U_ZERO_ERROR;
    unum_getSymbol(format, symbol, value, kLocaleSignCharacters * 2, &symbolStatus);
    if (U_SUCCESS(symbolStatus)) CopyText(text, kLocaleSignCharacters, value);
  };
  read(UNUM_MINUS_SIGN_SYMBOL, facts->negativeSign);
  read(UNUM_GROUPING_SEPARATOR_SYMBOL, facts->thousandsSeparator);
  read(UNUM_DECIMAL_SEPARATOR_SYMBOL, facts->decimalSeparator);
  const int32_t grouping = unum_getAttribute(format, UNUM_GROUPING_SIZE);
  if (grouping >= 0 && grouping <= 9) facts->grouping = static_cast<uint32_t>(grouping);
  unum_close(format);
}

/// The time separator is what stands between the hours and the minutes of the short time pattern.
void ReadTimeSeparator(const char* id, LocaleFacts* facts) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  UDateFormat* format = udat_open(UDAT_SHORT, UDAT_NONE, id, u"UTC", 3, nullptr, 0, &status);
  if (U_FAILURE(status)) return;
  char16_t pattern[64] = {};
  udat_toPattern(format, 0, pattern, 63, &status);
  udat_close(format);
  if (U_FAILURE(status)) return;
  const auto isHour = [](char16_t c) { return c == u'H' || c == u'h' || c == u'K' || c == u'k'; };
  const char16_t* cursor = pattern;
  while (*cursor != 0 && !isHour(*cursor)) ++cursor;
  while (isHour(*cursor)) ++cursor;
  char16_t separator[kLocaleSignCharacters] = {};
  for (size_t i = 0; i + 1 < kLocaleSignCharacters && cursor[i] != 0 && cursor[i] != u'm'; ++i)
    separator[i] = cursor[i];
  if (separator[0] != 0) CopyText(facts->timeSeparator, kLocaleSignCharacters, separator);
}

void ReadNames(const char* id, LocaleFacts* facts) noexcept {
  constexpr int32_t kRoom = kLocaleNameCharacters - 1;  // the last place keeps the terminator
  UErrorCode status = U_ZERO_ERROR;
  uloc_getDisplayName(id, id, facts->languageName, kRoom, &status);
  status = U_ZERO_ERROR;
  uloc_getDisplayLanguage(id, "en", facts->englishLanguageName, kRoom, &status);
  status = U_ZERO_ERROR;
  uloc_getDisplayCountry(id, id, facts->countryName, kRoom, &status);
  status = U_ZERO_ERROR;
  uloc_getDisplayCountry(id, "en", facts->englishCountryName, kRoom, &status);
}

}  // namespace

LocaleFacts NamedLocale(const char* name) noexcept {
  char id[ULOC_FULLNAME_CAPACITY] = {};
  UErrorCode status = U_ZERO_ERROR;
  char bare[ULOC_FULLNAME_CAPACITY] = {};  // without the encoding and the modifier
  std::strncpy(bare, name, sizeof bare - 1);
  bare[std::strcspn(bare, ".@")] = 0;
  uloc_getBaseName(bare, id, ULOC_FULLNAME_CAPACITY - 1, &status);
  if (U_FAILURE(status) || id[0] == 0) std::memcpy(id, kDefaultLocale, sizeof kDefaultLocale);

  LocaleFacts facts;
  facts.lcid = uloc_getLCID(id);
  CopyText(facts.negativeSign, kLocaleSignCharacters, u"-");
  CopyText(facts.thousandsSeparator, kLocaleSignCharacters, u",");
  CopyText(facts.decimalSeparator, kLocaleSignCharacters, u".");
  CopyText(facts.timeSeparator, kLocaleSignCharacters, u":");
  facts.grouping = 3;
  facts.fractionDigits = 2;
  facts.leadingZero = true;
  ReadNumberFacts(id, &facts);
  ReadTimeSeparator(id, &facts);
  ReadNames(id, &facts);
  // A list must not be torn apart by decimal commas.
  CopyText(facts.listSeparator, kLocaleSignCharacters, facts.decimalSeparator[0] == u',' ? u";" : u",");

  char country[ULOC_COUNTRY_CAPACITY] = {};
  status = U_ZERO_ERROR;
  uloc_getCountry(id, country, ULOC_COUNTRY_CAPACITY - 1, &status);
  for (const CountryRow& row : kCountries) {
    if (std::strcmp(row.country, country) == 0) facts.countryNumber = row.prefix;
  }
  status = U_ZERO_ERROR;
  const UMeasurementSystem system = ulocdata_getMeasurementSystem(id, &status);
  facts.measureSystem = U_SUCCESS(status) && system == UMS_US ? 1 : 0;
  return facts;
}

LocaleFacts UserLocale() noexcept { return override.active ? override.facts : NamedLocale(EnvironmentLocale()); }

void OverrideUserLocale(const LocaleFacts* facts) noexcept {
  override.active = facts != nullptr;
  if (facts != nullptr) override.facts = *facts;
}

}  // namespace plat
