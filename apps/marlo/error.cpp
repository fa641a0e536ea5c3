// SPDX-License-Identifier: Apache-2.0
// marlo error: what a result code means, as a message box would say it.
#include <charconv>
#include <cstdio>
#include <optional>

#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "marlo110k/errors.h"
#include "numbers.h"
#include "unicode.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo error CODE [--context N] [--argument TEXT] [--json]\n"
    "\n"
    "Tells what a result code of the library means, as the message of the operation that failed. A negative\n"
    "code stands behind \"--\".\n"
    "\n"
    "options:\n"
    "  --context N      number of the operation, 0 to 57; 5 is the loading of a project file\n"
    "  --argument TEXT  what the operation was about, a file name for example\n"
    "  --json           code and message as one JSON document\n"
    "\n"
    "example:\n"
    "  marlo error 0x8004E00A --context 5 --argument song.veg\n";

constexpr Option kOptions[] = {{"--context", true}, {"--argument", true}, {"--json", false}};

/// "0x8004E00A", "2147942414" or "-2147024882".
std::optional<HRESULT> ParseCode(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  int64_t code = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, code, hexadecimal ? 16 : 10);
  const bool fits = code >= INT32_MIN && code <= int64_t{UINT32_MAX} && !(hexadecimal && code < 0);
  if (error != std::errc() || stop != end || !fits) return std::nullopt;
  return ZrCode(static_cast<uint32_t>(code));
}

int RunError(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("The command takes one code.");
  const std::string& word = arguments.Positionals()[0];
  const std::optional<HRESULT> code = ParseCode(word);
  if (!code) throw UsageError("\"" + word + "\" is no 32-bit code.");
  uint64_t context = 0;
  if (const std::string* text = arguments.Value("--context")) {
    const std::optional<uint64_t> number = ParseCount(*text);
    // Larger numbers would be taken for the address of a text.
    constexpr uint64_t kLargestContext = 0xFFFF;
    if (!number || *number > kLargestContext) throw UsageError("\"" + *text + "\" is no number of an operation.");
    context = *number;
  }
  const std::string* argument = arguments.Value("--argument");
  const std::u16string wideArgument = ToUtf16(argument != nullptr ? *argument : "");
  const std::string message = ToUtf8(ZrErrorHandler_GetErrorMessage(context, *code, wideArgument.c_str()));
  if (arguments.Has("--json")) {
    PrintJson(Json{
        {"code", CodeText(*code)}, {"known", ZrErrorHandler_GetHresultString(*code) != nullptr}, {"message", message}});
  } else {
    std::printf("%s\n", message.c_str());
  }
  return kFine;
}

}  // namespace

extern const Command kErrorCommand;
const Command kErrorCommand = {"error", "tell what a result code means", kHelp, kOptions, RunError};

}  // namespace host
