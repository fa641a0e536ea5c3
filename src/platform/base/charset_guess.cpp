// SPDX-License-Identifier: Apache-2.0
// Character sets as ICU's detector ranks them.
#include "platform/base/charset_guess.h"

#include <unicode/ucsdet.h>

#include <algorithm>
#include <cstring>

namespace plat {
namespace {

constexpr int32_t kMostCandidates = 10;

struct CodePageRow {
  const char* name;
  uint32_t number;
};

constexpr CodePageRow kCodePages[] = {
    {"UTF-8", 65001},       {"UTF-16LE", 1200},     {"UTF-16BE", 1201},     {"Shift_JIS", 932},
    {"EUC-JP", 51932},      {"ISO-2022-JP", 50220}, {"EUC-KR", 51949},      {"ISO-2022-KR", 50225},
    {"GB18030", 54936},     {"Big5", 950},          {"KOI8-R", 20866},      {"ISO-8859-1", 28591},
    {"ISO-8859-2", 28592},  {"ISO-8859-5", 28595},  {"ISO-8859-6", 28596},  {"ISO-8859-7", 28597},
    {"ISO-8859-8", 28598},  {"ISO-8859-9", 28599},  {"windows-1250", 1250}, {"windows-1251", 1251},
    {"windows-1252", 1252}, {"windows-1253", 1253}, {"windows-1254", 1254}, {"windows-1255", 1255},
    {"windows-1256", 1256},
};

uint32_t CodePageOf(const char* name) noexcept {
  for (const CodePageRow& row : kCodePages) {
    if (name != nullptr && std::strcmp(row.name, name) == 0) return row.number;
  }
  return 0;
}

}  // namespace

CharsetGuess GuessCharset(const uint8_t* text, uint32_t bytes) noexcept {
  CharsetGuess best;
  if (text == nullptr || bytes == 0 || bytes > INT32_MAX) return best;
  UErrorCode status = U_ZERO_ERROR;
  UCharsetDetector* detector = ucsdet_open(&status);
  ucsdet_setText(detector, reinterpret_cast<const char*>(text), static_cast<int32_t>(bytes), &status);
  int32_t found = 0;
  const UCharsetMatch** matches = ucsdet_detectAll(detector, &found, &status);
  for (int32_t i = 0; U_SUCCESS(status) && i < std::min(found, kMostCandidates); ++i) {
    const int32_t confidence = ucsdet_getConfidence(matches[i], &status);
    if (confidence > best.confidence) best = {CodePageOf(ucsdet_getName(matches[i], &status)), confidence};
  }
  ucsdet_close(detector);
  return best;
}

}  // namespace plat
