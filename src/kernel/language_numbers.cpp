// SPDX-License-Identifier: Apache-2.0
// What a language number says: its row in the table of languages, its abbreviation, its direction, its order of names.
#include <cstring>

#include "kernel/kernel_state.h"
#include "kernel/language.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

constexpr uint32_t kPrimaryMask = 0x3FF;
constexpr uint32_t kChinese = 0x04;
constexpr uint32_t kEnglish = 0x09;
constexpr uint32_t kPortuguese = 0x16;
constexpr uint32_t kJapaneseLcid = 0x0411;
constexpr size_t kWordCharacters = 3;

constexpr uint32_t kLanguages[kZrLangSlots] = {0x0409, 0x0411, 0x0407, 0x040A, 0x040C, 0x0804, 0x0404, 0x0406, 0x040B,
                                               0x0410, 0x0412, 0x0413, 0x0414, 0x0416, 0x0816, 0x0419, 0x041D, 0x0415};

struct Abbreviation {
  uint32_t lcid;
  char16_t text[4];
};

constexpr Abbreviation kAbbreviations[] = {
    {0x0401, u"ARA"}, {0x0402, u"BGR"}, {0x0403, u"CAT"}, {0x0404, u"CHT"}, {0x0405, u"CSY"}, {0x0406, u"DAN"},
    {0x0407, u"DEU"}, {0x0408, u"ELL"}, {0x0409, u"ENU"}, {0x040A, u"ESP"}, {0x040B, u"FIN"}, {0x040C, u"FRA"},
    {0x040D, u"HEB"}, {0x040E, u"HUN"}, {0x040F, u"ISL"}, {0x0410, u"ITA"}, {0x0411, u"JPN"}, {0x0412, u"KOR"},
    {0x0413, u"NLD"}, {0x0414, u"NOR"}, {0x0415, u"PLK"}, {0x0416, u"PTB"}, {0x0418, u"ROM"}, {0x0419, u"RUS"},
    {0x041A, u"HRV"}, {0x041B, u"SKY"}, {0x041D, u"SVE"}, {0x041E, u"THA"}, {0x041F, u"TRK"}, {0x0420, u"URD"},
    {0x0421, u"IND"}, {0x0422, u"UKR"}, {0x0424, u"SLV"}, {0x0425, u"ETI"}, {0x0426, u"LVI"}, {0x0427, u"LTH"},
    {0x0429, u"FAR"}, {0x042A, u"VIT"}, {0x0804, u"CHS"}, {0x0816, u"PTG"},
};

struct LanguageAndCountry {
  uint32_t primary;
  const char16_t* text;
};

constexpr LanguageAndCountry kLanguagesAndCountries[] = {
    {0x07, u"de-DE"}, {0x0A, u"es-ES"}, {0x0C, u"fr-FR"}, {0x11, u"ja-JP"}, {0x19, u"ru-RU"}};

char16_t languageWord[kWordCharacters + 1] = u"ENU";

}  // namespace

std::span<const uint32_t> LanguageTable() noexcept { return kLanguages; }

const char16_t* LanguageAbbreviation(uint32_t conditionedLcid) noexcept {
  for (const Abbreviation& row : kAbbreviations) {
    if (row.lcid == conditionedLcid) return row.text;
  }
  return nullptr;
}

const char16_t* LanguageWord() noexcept { return languageWord; }

}  // namespace marlo

using namespace marlo;

uint32_t ZrLang_GetConditionedLCID(uint32_t lcid) noexcept {
  const uint32_t primary = lcid & kPrimaryMask;
  const uint32_t sub = (lcid & 0xFFFF) >> 10;
  if (primary == kPortuguese) return lcid;
  if (primary != kChinese) return primary | 0x400;
  return sub == 1 || sub == 3 || sub == 5 ? 0x404 : 0x804;  // Taiwan, Hong Kong, Macau
}

bool ZrLang_UseRTL(uint32_t lcid) noexcept {
  for (const uint32_t primary : {0x01U, 0x0DU, 0x20U, 0x29U}) {
    if ((lcid & kPrimaryMask) == primary) return true;
  }
  return false;
}

bool ZrLang_IsLCIDEnglish(uint32_t lcid) noexcept { return (lcid & kPrimaryMask) == kEnglish; }

bool ZrLang_IsNameOrderReversed(HZRLANG language) noexcept {
  return language != nullptr && ZrLang_GetLCID(language) == kJapaneseLcid;
}

uint32_t ZrLang_LocalizeUserName(HZRLANG language, const char16_t* first, const char16_t* last, char16_t* buffer,
                                 uint32_t size) noexcept {
  if (buffer == nullptr || size == 0) return 0;
  const bool isReversed = ZrLang_IsNameOrderReversed(language);
  size_t characters = 0;
  for (const char16_t* part : {isReversed ? last : first, u" ", isReversed ? first : last}) {
    characters += plat::CopyText(buffer + characters, size - characters, part);
  }
  return static_cast<uint32_t>(characters);
}

int32_t ZrLang_GetLangAbbrev(HZRLANG language, char16_t* buffer, uint32_t size) noexcept {
  if (language == nullptr) return 0;
  const char16_t* text = LanguageAbbreviation(ZrLang_GetConditionedLCID(ZrLang_GetLCID(language)));
  if (buffer != nullptr) plat::CopyText(buffer, size, text != nullptr ? text : u"");
  return text != nullptr ? 1 : 0;
}

int32_t ZrLang_GetLangllCC(HZRLANG language, char16_t* buffer, uint32_t size) noexcept {
  const uint32_t primary = language != nullptr ? ZrLang_GetLCID(language) & kPrimaryMask : 0;
  const char16_t* text = nullptr;
  for (const LanguageAndCountry& row : kLanguagesAndCountries) {
    if (row.primary == primary) text = row.text;
  }
  if (buffer != nullptr) plat::CopyText(buffer, size, text != nullptr ? text : u"");
  return text != nullptr ? 0 : 1;
}

void ZrSetLangID(const char16_t* text) noexcept {
  if (text == nullptr || *text == 0) text = u"ENU";
  plat::CopyText(languageWord, kWordCharacters + 1, text);
}

uint32_t ZrLang_GetSlotLCID(uint32_t slot) noexcept {
  return slot >= 1 && slot <= kZrLangSlots ? kLanguages[slot - 1] : 0;
}
