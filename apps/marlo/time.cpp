// SPDX-License-Identifier: Apache-2.0
// marlo time: a position from one format into another.
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

#include "command.h"
#include "errors.h"
#include "marlo110k/timetext.h"
#include "numbers.h"
#include "unicode.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo time TEXT --from NAME --to NAME [options]\n"
    "\n"
    "Reads a position in one format and shows it in another, with the separators of the user's locale.\n"
    "A position below 0 stands behind \"--\", as the last word.\n"
    "\n"
    "formats:\n"
    "  samples              at --rate\n"
    "  time                 hours, minutes, seconds, milliseconds\n"
    "  seconds              with three decimals\n"
    "  time-frames          hours, minutes, seconds, frames at --frame-rate\n"
    "  frames               at --frame-rate\n"
    "  measures             measures, beats, ticks, the first being 1.1.000\n"
    "  measures-0           measures, beats, ticks, the first being 0.0.000\n"
    "  beats                at --tempo; shown only\n"
    "  smpte-30             time code of 30 frames a second\n"
    "  smpte-29.97          of 30000/1001, without dropped numbers\n"
    "  smpte-29.97-drop     of 30000/1001, with dropped numbers\n"
    "  smpte-25, smpte-24   of 25 and 24\n"
    "  smpte-23.976         of 24000/1001\n"
    "  cd-frames            hours, minutes, seconds, frames of 1/75 s\n"
    "  feet-16, feet-40     feet and frames at --frame-rate, 16 or 40 frames a foot\n"
    "  nano                 units of 100 ns\n"
    "  microseconds\n"
    "  clock                as few fields as a clock needs; shown only\n"
    "\n"
    "options:\n"
    "  --from NAME      format of TEXT\n"
    "  --to NAME        format to show\n"
    "  --rate R         samples a second (48000)\n"
    "  --frame-rate F   frames a second (24)\n"
    "  --tempo B        beats a minute (120)\n"
    "  --meter N/M      time signature (4/4); a beat has 960 ticks\n"
    "  --short          without the smallest field, both ways\n"
    "\n"
    "example:\n"
    "  marlo time 00:01:00:02 --from smpte-29.97-drop --to samples\n";

constexpr Option kOptions[] = {{"--from", true},  {"--to", true},    {"--rate", true},  {"--frame-rate", true},
                               {"--tempo", true}, {"--meter", true}, {"--short", false}};

// In the order of the formats' numbers.
constexpr const char* kFormatNames[] = {"samples",  "time",        "seconds",      "time-frames",      "frames",
                                        "measures", "smpte-29.97", "smpte-30",     "smpte-29.97-drop", "smpte-25",
                                        "smpte-24", "nano",        "microseconds", "measures-0",       "beats",
                                        "feet-40",  "feet-16",     "cd-frames",    "smpte-23.976",     "clock"};

uint32_t FormatOf(const Arguments& arguments, const char* option) {
  const std::string* name = arguments.Value(option);
  if (name == nullptr) throw UsageError(std::string("The command needs \"") + option + "\" with a format.");
  for (uint32_t i = 0; i < std::size(kFormatNames); ++i) {
    if (*name == kFormatNames[i]) return i;
  }
  throw UsageError("\"" + *name + "\" is no format; --help lists them.");
}

double RateOf(const Arguments& arguments, const char* option, double otherwise) {
  const std::string* text = arguments.Value(option);
  if (text == nullptr) return otherwise;
  const auto rate = ParseNumber(*text);
  if (!rate || *rate < 0.01 || *rate > 1e6) throw UsageError("\"" + *text + "\" is no rate from 0.01 to 1000000.");
  return *rate;
}

void ReadRates(const Arguments& arguments, _zrposfmt* format) {
  if (const std::string* text = arguments.Value("--rate")) {
    const auto rate = ParseCount(*text);
    if (!rate || *rate == 0 || *rate > UINT32_MAX) throw UsageError("\"" + *text + "\" is no sample rate.");
    format->sampleRate = static_cast<uint32_t>(*rate);
  }
  format->frameRate = RateOf(arguments, "--frame-rate", format->frameRate);
  format->tempo = RateOf(arguments, "--tempo", format->tempo);
  if (const std::string* text = arguments.Value("--meter")) {
    const size_t slash = text->find('/');
    const std::string_view meter = *text;
    const auto beats = ParseCount(meter.substr(0, slash));
    const auto value = slash == std::string::npos ? std::nullopt : ParseCount(meter.substr(slash + 1));
    if (!beats || !value || *beats == 0 || *beats > 256 || *value == 0 || *value > 256) {
      throw UsageError("\"" + *text + "\" is no time signature such as 3/4.");
    }
    format->beatsPerMeasure = static_cast<uint16_t>(*beats);
    format->beatValue = static_cast<uint16_t>(*value);
  }
}

int RunTime(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("The command takes one position.");
  const std::string& typed = arguments.Positionals()[0];
  _zrposfmt format = {FormatOf(arguments, "--from"), 48000, 24, 120, 0, 4, 4, 960};
  if (format.format == ZRPOS_BEATS || format.format == ZRPOS_CLOCK) {
    throw UsageError("Positions in beats and of the short clock are shown only.");
  }
  ReadRates(arguments, &format);
  const uint32_t to = FormatOf(arguments, "--to");
  const uint32_t flags = arguments.Has("--short") ? ZRPOSF_SHORT : 0u;
  const std::u16string text = ToUtf16(typed);
  const char16_t* end = nullptr;
  const int64_t ticks = ZrTextToNanoTimeToken(text.c_str(), &format, flags, &end);
  while (*end == u' ') ++end;
  if (typed.empty() || *end != 0) throw UsageError("\"" + typed + "\" is no position in this format.");
  format.format = to;
  char16_t shown[128];
  const int32_t characters = ZrNanoTimeToTextExN(shown, std::size(shown), &format, ticks, flags);
  std::printf("%s\n", ToUtf8({shown, static_cast<size_t>(characters)}).c_str());
  return kFine;
}

}  // namespace

extern const Command kTimeCommand;
const Command kTimeCommand = {"time", "convert positions between formats", kHelp, kOptions, RunTime};

}  // namespace host
