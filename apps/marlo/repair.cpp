// SPDX-License-Identifier: Apache-2.0
// marlo repair: recordings whose writer died, as careful as can be.
#include <cstdio>

#include "audio_reader.h"
#include "command.h"
#include "errors.h"
#include "file_copy.h"
#include "front_repair.h"
#include "json_output.h"
#include "numbers.h"
#include "size_plan.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo repair FILE [--dry-run] [--format RATE,CHANNELS,TYPE] [--limit BYTES] [--no-backup]\n"
    "                    [--json]\n"
    "\n"
    "Makes a recording readable whose writer didn't live to finish it. The chunks are walked first: where\n"
    "they lead to the samples only size fields are corrected, in whole frames, and a sound file is not\n"
    "even opened for writing. Only where the front of a Wave or Wave64 file can't be read, a new front is\n"
    "written over it, after the whole file was copied to FILE.broken.\n"
    "\n"
    "options:\n"
    "  --dry-run    tell what would be done; the file is opened for reading only\n"
    "  --format RATE,CHANNELS,TYPE\n"
    "               for a new front: what to state where the old one makes no sense, such as\n"
    "               48000,2,pcm24; without it 44100,2,pcm16\n"
    "  --limit BYTES\n"
    "               for a new front: the samples begin within so many bytes (at most 64 MiB). Where\n"
    "               nothing shows their start they are taken to begin there, and what is before is lost.\n"
    "  --no-backup  make no FILE.broken\n"
    "  --json       tell what was done as JSON\n"
    "\n"
    "example:\n"
    "  marlo repair crashed.wav --dry-run\n";

constexpr Option kOptions[] = {
    {"--dry-run", false}, {"--format", true}, {"--limit", true}, {"--no-backup", false}, {"--json", false}};

struct Wishes {
  std::string path;
  bool dryRun;
  bool backup;
  bool json;
  std::optional<WAVEFORMATEX> format;
  std::optional<uint64_t> limit;
};

WAVEFORMATEX ParseFormat(const std::string& text) {
  const size_t first = text.find(',');
  const size_t second = first == std::string::npos ? first : text.find(',', first + 1);
  if (second != std::string::npos) {
    const std::string_view view = text;
    const std::optional<uint64_t> rate = ParseCount(view.substr(0, first));
    const std::optional<uint64_t> channels = ParseCount(view.substr(first + 1, second - first - 1));
    const std::optional<ZRSAMPLETYPE> type = SampleTypeOfName(view.substr(second + 1));
    if (rate && *rate >= 1 && *rate <= 1'000'000 && channels && *channels >= 1 && *channels <= 256 && type) {
      WAVEFORMATEX format{};
      ZrAudio_InitWfx(&format, static_cast<uint32_t>(*rate), *type, static_cast<uint16_t>(*channels));
      return format;
    }
  }
  throw UsageError("\"" + text + "\" is no format such as 48000,2,pcm24.");
}

Wishes ReadWishes(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("The command takes one file.");
  Wishes wishes{arguments.Positionals()[0],
                arguments.Has("--dry-run"),
                !arguments.Has("--no-backup"),
                arguments.Has("--json"),
                std::nullopt,
                std::nullopt};
  if (const std::string* text = arguments.Value("--format")) wishes.format = ParseFormat(*text);
  if (const std::string* text = arguments.Value("--limit")) {
    wishes.limit = ParseCount(*text);
    if (!wishes.limit || *wishes.limit == 0 || *wishes.limit > 64u << 20) {
      throw UsageError("\"" + *text + "\" is no number of bytes from 1 to 67108864.");
    }
  }
  return wishes;
}

OpenFile ForRepair(const std::string& path) {
  return OpenFile(path, plat::kReadWriteAccess, plat::kShareNone, plat::kOpenExisting);
}

void CorrectSizes(const Wishes& wishes, const SoundLayout& layout, const SizePlan& plan) {
  const char* state = plan.changes.empty() ? "sound" : wishes.dryRun ? "repairable" : "repaired";
  if (!plan.changes.empty() && !wishes.dryRun) {
    const OpenFile file = ForRepair(wishes.path);
    ApplyPlan(file.Get(), layout, plan, wishes.path);
  }
  if (wishes.json) {
    Json changes = Json::array();
    for (const SizeChange& change : plan.changes) {
      changes.push_back({{"field", NameOf(layout, change)}, {"before", change.before}, {"after", change.after}});
    }
    PrintJson(Json{{"file", wishes.path},
                   {"container", NameOf(layout.form.container)},
                   {"state", state},
                   {"method", plan.changes.empty() ? "none" : "sizes"},
                   {"data_offset", layout.sampleOffset},
                   {"data_bytes", plan.sampleBytes},
                   {"unreachable_bytes", plan.unreachableBytes},
                   {"changes", changes},
                   {"backup", nullptr}});
    return;
  }
  std::printf("%s: %s\n", wishes.path.c_str(), state);
  for (const SizeChange& change : plan.changes) {
    std::printf("  %s: %llu %s %llu\n", NameOf(layout, change).c_str(), static_cast<unsigned long long>(change.before),
                wishes.dryRun ? "should be" : "is now", static_cast<unsigned long long>(change.after));
  }
  if (plan.unreachableBytes != 0) {
    std::printf("  %llu bytes of samples at the end are more than the file format can count\n",
                static_cast<unsigned long long>(plan.unreachableBytes));
  }
}

void ReplaceFront(const Wishes& wishes, OpenFile file, const std::string& reason) {
  const Container container = ContainerOfBrokenFile(file.Get(), wishes.path);
  const FrontRepair repair = RehearseFrontRepair(file.Get(), container, wishes.format, wishes.limit, wishes.path);
  const bool copies = wishes.backup && !wishes.dryRun;
  const std::string backupPath = wishes.path + ".broken";
  if (copies) CopyToNewFile(file.Get(), wishes.path, backupPath);
  file.Close();
  if (!wishes.dryRun) {
    const OpenFile writable = ForRepair(wishes.path);
    ApplyFrontRepair(writable.Get(), repair, wishes.path);
  }
  const WAVEFORMATEX& format = repair.format;
  const char* type = NameOf(ZrAudio_GetSampleType(&format));
  const char* state = wishes.dryRun ? "repairable" : "repaired";
  if (wishes.json) {
    PrintJson(Json{{"file", wishes.path},
                   {"container", NameOf(container)},
                   {"state", state},
                   {"method", "front"},
                   {"data_offset", repair.dataOffset},
                   {"data_bytes", repair.dataBytes},
                   {"unreachable_bytes", 0},
                   {"changes", Json::array()},
                   {"rate", uint32_t{format.nSamplesPerSec}},
                   {"channels", uint16_t{format.nChannels}},
                   {"type", type},
                   {"backup", copies ? Json(backupPath) : Json(nullptr)}});
    return;
  }
  std::printf("%s: %s\n  %s\n", wishes.path.c_str(), state, reason.c_str());
  std::printf("  %s front of %lld bytes: %s, %u Hz, %u channels, %llu bytes of samples\n",
              wishes.dryRun ? "It would get a" : "It has a new", static_cast<long long>(repair.dataOffset), type,
              uint32_t{format.nSamplesPerSec}, unsigned{format.nChannels},
              static_cast<unsigned long long>(repair.dataBytes));
  if (copies) std::printf("  The file as it was is %s.\n", backupPath.c_str());
}

int RunRepair(const Arguments& arguments) {
  const Wishes wishes = ReadWishes(arguments);
  OpenFile file = OpenFile::ForReading(wishes.path);
  const int64_t fileBytes = LengthOf(file.Get(), wishes.path);
  std::string reason;
  const std::optional<SoundLayout> layout = FindSound(file.Get(), fileBytes, &reason);
  if (!layout) {
    ReplaceFront(wishes, std::move(file), reason);
    return kFine;
  }
  const SizePlan plan = PlanSizes(file.Get(), fileBytes, *layout);
  file.Close();
  CorrectSizes(wishes, *layout, plan);
  return kFine;
}

}  // namespace

extern const Command kRepairCommand;
const Command kRepairCommand = {"repair", "make an unfinished recording readable", kHelp, kOptions, RunRepair};

}  // namespace host
