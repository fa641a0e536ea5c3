// SPDX-License-Identifier: Apache-2.0
// The user's conventions: read from the locale, told by selector, and put into tokens.
#include <algorithm>
#include <cstring>

#include "kernel/internationals.h"
#include "kernel/strings.h"
#include "marlo110k/printf.h"
#include "platform/base/locale.h"
#include "platform/base/text.h"

namespace marlo {
namespace {

template <class Text>
void Store(Text* field, const char16_t* text) noexcept {
  std::memset(field->text, 0, sizeof field->text);
  field->length = static_cast<uint32_t>(plat::CopyText(field->text, std::size(field->text), text));
}

tZRINTERNATIONALS RecordOf(const plat::LocaleFacts& facts) noexcept {
  tZRINTERNATIONALS record{};
  record.size = sizeof record;
  record.systemLcid = facts.lcid;
  record.languageNumber = facts.lcid;
  Store(&record.languageName, facts.languageName);
  Store(&record.englishLanguageName, facts.englishLanguageName);
  record.countryNumber = facts.countryNumber;
  Store(&record.countryName, facts.countryName);
  Store(&record.englishCountryName, facts.englishCountryName);
  Store(&record.negativeSign, facts.negativeSign);
  Store(&record.neutralNegativeSign, u"-");
  Store(&record.thousandsSeparator, facts.thousandsSeparator);
  Store(&record.decimalSeparator, facts.decimalSeparator);
  // A user can choose the same sign for both; numbers would then be unreadable.
  if (plat::CompareText(facts.decimalSeparator, facts.thousandsSeparator) == 0) {
    Store(&record.decimalSeparator, plat::CompareText(facts.thousandsSeparator, u".") == 0 ? u"," : u".");
  }
  record.grouping = facts.grouping;
  record.fractionDigits = facts.fractionDigits;
  record.leadingZero = facts.leadingZero ? 1 : 0;
  Store(&record.timeSeparator, facts.timeSeparator);
  Store(&record.listSeparator, facts.listSeparator);
  record.measureSystem = facts.measureSystem;
  Store(&record.smpteWhole, u":");
  Store(&record.smpteNonDrop, u".");
  Store(&record.smpteDrop, u",");
  Store(&record.measureToBeat, u".");
  Store(&record.beatToTick, u".");
  return record;
}

bool SetLabel(const char16_t* token, Text format, const tZRLOCALESIGN& first, const tZRLOCALESIGN& second,
              const tZRLOCALESIGN& third) noexcept {
  char16_t label[128];
  ZrCchPrintF(label, std::size(label), nullptr, KernelText(format), first.text, second.text, third.text);
  return ZrPrintF_AddToken(token, label) != 0;
}

bool SetTokens(const tZRINTERNATIONALS& record) noexcept {
  const tZRLOCALESIGN& whole = record.smpteWhole;
  const tZRLOCALESIGN& beat = record.measureToBeat;
  const tZRLOCALESIGN& tick = record.beatToTick;
  bool held = ZrPrintF_AddToken(u"SMPTE.Whole", whole.text) != 0;
  held &= ZrPrintF_AddToken(u"SMPTE.NonDrop", record.smpteNonDrop.text) != 0;
  held &= ZrPrintF_AddToken(u"SMPTE.Drop", record.smpteDrop.text) != 0;
  held &= SetLabel(u"SMPTE.Label.NonDrop", Text::kTimeTimeCode, whole, whole, record.smpteNonDrop);
  held &= SetLabel(u"SMPTE.Label.Drop", Text::kTimeTimeCode, whole, whole, record.smpteDrop);
  held &= SetLabel(u"SMPTE.Label.NonDrop.Full", Text::kTimeTimeCodeFull, whole, whole, record.smpteNonDrop);
  held &= SetLabel(u"SMPTE.Label.Drop.Full", Text::kTimeTimeCodeFull, whole, whole, record.smpteDrop);
  held &= ZrPrintF_AddToken(u"m.b", beat.text) != 0;
  held &= ZrPrintF_AddToken(u"b.t", tick.text) != 0;
  held &= SetLabel(u"MusicTime.Label", Text::kTimeMusic, beat, tick, tick);
  held &= SetLabel(u"MusicTime.Label.Full", Text::kTimeMusicFull, beat, tick, tick);
  return held;
}

/// One selector: a number, or a text of the record.
struct Convention {
  uint32_t selector;
  uint32_t tZRINTERNATIONALS::*number;
  tZRLOCALENAME tZRINTERNATIONALS::*name;
  tZRLOCALESIGN tZRINTERNATIONALS::*sign;
};

constexpr Convention Number(uint32_t selector, uint32_t tZRINTERNATIONALS::*field) {
  return {selector, field, nullptr, nullptr};
}
constexpr Convention Name(uint32_t selector, tZRLOCALENAME tZRINTERNATIONALS::*field) {
  return {selector, nullptr, field, nullptr};
}
constexpr Convention Sign(uint32_t selector, tZRLOCALESIGN tZRINTERNATIONALS::*field) {
  return {selector, nullptr, nullptr, field};
}

constexpr Convention kConventions[] = {
    Number(ZRINAT_SYSTEMLCID, &tZRINTERNATIONALS::systemLcid),
    Number(ZRINAT_LANGUAGE, &tZRINTERNATIONALS::languageNumber),
    Name(ZRINAT_LANGUAGENAME, &tZRINTERNATIONALS::languageName),
    Name(ZRINAT_ENGLISHLANGUAGENAME, &tZRINTERNATIONALS::englishLanguageName),
    Number(ZRINAT_COUNTRY, &tZRINTERNATIONALS::countryNumber),
    Sign(ZRINAT_DECIMAL, &tZRINTERNATIONALS::decimalSeparator),
    Sign(ZRINAT_LIST, &tZRINTERNATIONALS::listSeparator),
    Sign(ZRINAT_TIME, &tZRINTERNATIONALS::timeSeparator),
    Sign(ZRINAT_SMPTEWHOLE, &tZRINTERNATIONALS::smpteWhole),
    Sign(ZRINAT_SMPTENONDROP, &tZRINTERNATIONALS::smpteNonDrop),
    Sign(ZRINAT_SMPTEDROP, &tZRINTERNATIONALS::smpteDrop),
    Sign(ZRINAT_MEASURETOBEAT, &tZRINTERNATIONALS::measureToBeat),
    Sign(ZRINAT_BEATTOTICK, &tZRINTERNATIONALS::beatToTick),
};

}  // namespace

constinit tZRINTERNATIONALS internationals{};

bool LoadInternationals() noexcept {
  internationals = RecordOf(plat::UserLocale());
  return SetTokens(internationals);
}

}  // namespace marlo

HRESULT ZrLang_GetInternationals(tZRINTERNATIONALS* record, uint32_t size) noexcept {
  if (record == nullptr) {
    marlo::LoadInternationals();
    return S_OK;
  }
  const uint32_t copied = std::min<uint32_t>(size, sizeof marlo::internationals);
  std::memcpy(record, &marlo::internationals, copied);
  if (copied >= sizeof record->size) record->size = copied;
  return S_OK;
}

uint32_t ZrGetInat(uint32_t selector, char16_t* buffer) noexcept {
  return ZrGetInatN(selector, buffer, std::size(marlo::internationals.languageName.text));
}

uint32_t ZrGetInatN(uint32_t selector, char16_t* buffer, uint32_t size) noexcept {
  using marlo::internationals;
  for (const marlo::Convention& convention : marlo::kConventions) {
    if (convention.selector != selector) continue;
    if (convention.number != nullptr) return internationals.*convention.number;
    const char16_t* text =
        convention.name != nullptr ? (internationals.*convention.name).text : (internationals.*convention.sign).text;
    return buffer != nullptr ? static_cast<uint32_t>(plat::CopyText(buffer, size, text)) : 0;
  }
  return 0;
}
