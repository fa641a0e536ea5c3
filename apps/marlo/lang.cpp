// SPDX-License-Identifier: Apache-2.0
// marlo lang: the languages of the library, and its texts in each of them.
#include "marlo110k/lang.h"

#include <charconv>
#include <cstdio>
#include <optional>
#include <string>

#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "marlo110k/kernel.h"
#include "unicode.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo lang list [--texts] [--json]\n"
    "       marlo lang show ID|NAME [--lcid N]\n"
    "\n"
    "Lists the languages of the library with the number of texts that each has of its own, or the names of the\n"
    "texts; shows one text, by its name or by its number in the library's language module.\n"
    "\n"
    "options:\n"
    "  --texts   names and English texts instead of languages\n"
    "  --json    one JSON document\n"
    "  --lcid N  number of the language, 0x407 or 1031 for German; without it the user's\n"
    "\n"
    "example:\n"
    "  marlo lang show error.8004E00A --lcid 0x411\n";

constexpr Option kOptions[] = {{"--texts", false}, {"--json", false}, {"--lcid", true}};

/// A handle on the library's own module.
class Language {
 public:
  explicit Language(uint32_t lcid) {
    const HRESULT result = ZrLang_Open(&language_, ZrKernel_GetAppKernel(), lcid, 0);
    if (FAILED(result)) throw Failure(result, "");
    if (lcid != 0) Choose(lcid);
  }
  ~Language() { ZrLang_Close(language_); }
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;

  void Choose(uint32_t lcid) { ZrLang_UpdateKernelLCID(language_, lcid); }
  HZRLANG Handle() const { return language_; }

 private:
  HZRLANG language_ = nullptr;
};

std::optional<uint32_t> ParseNumber32(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

uint32_t OwnTexts(uint32_t slot) {
  uint32_t count = 0;
  for (uint32_t i = 0; const zrlang_t* text = ZrLang_GetCatalogueText(i, nullptr); ++i) {
    const char16_t* own = text->slots[slot - 1];
    // A slot that was read before it had a text of its own has taken the English one.
    if (own != nullptr && (slot == 1 || own != text->slots[0])) ++count;
  }
  return count;
}

void ListLanguages(bool asJson) {
  Language language(0);
  Json rows = Json::array();
  for (uint32_t slot = 1; slot <= kZrLangSlots; ++slot) {
    const uint32_t lcid = ZrLang_GetSlotLCID(slot);
    char number[8];
    std::snprintf(number, sizeof number, "0x%04X", lcid);
    char16_t abbreviation[8] = {};
    const uint32_t texts = OwnTexts(slot);
    language.Choose(lcid);
    ZrLang_GetLangAbbrev(language.Handle(), abbreviation, 8);
    const std::string word = ToUtf8(abbreviation);
    if (!asJson) std::printf("%2u  %s  %s  %u texts\n", slot, number, word.c_str(), texts);
    rows.push_back(Json{{"slot", slot}, {"lcid", number}, {"abbreviation", word}, {"texts", texts}});
  }
  if (asJson) PrintJson(Json{{"languages", rows}});
}

/// Texts hold line feeds; a list has one a line.
std::string OnOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) line += c == '\n' ? std::string("\\n") : std::string(1, c);
  return line;
}

void ListTexts(bool asJson) {
  Json rows = Json::array();
  const char16_t* name = nullptr;
  for (uint32_t i = 0; const zrlang_t* text = ZrLang_GetCatalogueText(i, &name); ++i) {
    const std::string english = ToUtf8(text->slots[0]);
    if (!asJson) std::printf("%s = %s\n", ToUtf8(name).c_str(), OnOneLine(english).c_str());
    rows.push_back(Json{{"name", ToUtf8(name)}, {"text", english}});
  }
  if (asJson) PrintJson(Json{{"texts", rows}});
}

const char16_t* FindText(HZRLANG language, const std::string& word) {
  if (const std::optional<uint32_t> id = ParseNumber32(word)) {
    if (*id > 0xFFFF) throw UsageError("\"" + word + "\" is no number of a text.");
    const char16_t* text = ZrGetString(language, *id);
    return *text != 0 ? text : nullptr;
  }
  const std::u16string wanted = ToUtf16(word);
  const char16_t* name = nullptr;
  for (uint32_t i = 0; const zrlang_t* text = ZrLang_GetCatalogueText(i, &name); ++i) {
    if (wanted == name) return ZrGetString(language, text);
  }
  return nullptr;
}

void ShowText(const std::string& word, const std::string* lcidText) {
  uint32_t lcid = 0;
  if (lcidText != nullptr) {
    const std::optional<uint32_t> number = ParseNumber32(*lcidText);
    if (!number) throw UsageError("\"" + *lcidText + "\" is no number of a language.");
    lcid = *number;
  }
  const Language language(lcid);
  const char16_t* text = FindText(language.Handle(), word);
  if (text == nullptr) throw Failure(ZR_E_NOT_FOUND, word);
  std::printf("%s\n", ToUtf8(text).c_str());
}

int RunLang(const Arguments& arguments) {
  const auto& words = arguments.Positionals();
  if (words.size() == 1 && words[0] == "list") {
    if (arguments.Has("--texts")) {
      ListTexts(arguments.Has("--json"));
    } else {
      ListLanguages(arguments.Has("--json"));
    }
  } else if (words.size() == 2 && words[0] == "show") {
    ShowText(words[1], arguments.Value("--lcid"));
  } else {
    throw UsageError("The command takes \"list\", or \"show\" and a text.");
  }
  return kFine;
}

}  // namespace

extern const Command kLangCommand;
const Command kLangCommand = {"lang", "list languages, show texts", kHelp, kOptions, RunLang};

}  // namespace host
