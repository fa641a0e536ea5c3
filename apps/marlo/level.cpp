// SPDX-License-Identifier: Apache-2.0
// marlo level: peak and RMS of every channel, over the whole file and over windows.
#include <algorithm>
#include <cstdio>

#include "audio_reader.h"
#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "level_meter.h"
#include "numbers.h"
#include "progress.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo level FILE [--window S] [--json]\n"
    "\n"
    "Measures the peak and the RMS of every channel, in decibels below full scale. A channel is called\n"
    "clipped when three samples in a row are at full scale, or in a float file when one is above it.\n"
    "\n"
    "options:\n"
    "  --window S  also measure every S seconds of the file\n"
    "  --json      levels as numbers (1 is full scale), in a JSON document\n"
    "\n"
    "example:\n"
    "  marlo level interview.wav --window 10\n";

constexpr Option kOptions[] = {{"--window", true}, {"--json", false}};

// So many windows fit into memory as a list; more of them nobody reads.
constexpr int64_t kMostWindows = 1'000'000;

Json JsonOf(const LevelMeter& meter, int64_t startFrame) {
  Json channels = Json::array();
  for (const ChannelLevel& level : meter.Channels()) {
    channels.push_back({{"peak", level.peak},
                        {"peak_frame", startFrame + level.peakFrame},
                        {"rms", level.Rms(meter.Frames())},
                        {"clipped", level.clipped}});
  }
  return Json{{"start_frame", startFrame}, {"frames", meter.Frames()}, {"channels", channels}};
}

void Print(const LevelMeter& meter, int64_t startFrame, uint32_t rate) {
  for (size_t channel = 0; channel < meter.Channels().size(); ++channel) {
    const ChannelLevel& level = meter.Channels()[channel];
    std::printf("%12.3f %8zu %12s %12.3f %12s%s\n", static_cast<double>(startFrame) / rate, channel,
                TextOfLevel(level.peak).text, static_cast<double>(startFrame + level.peakFrame) / rate,
                TextOfLevel(level.Rms(meter.Frames())).text, level.clipped ? "  clipped" : "");
  }
}

int RunLevel(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("The command takes one file.");
  std::optional<double> windowSeconds;
  if (const std::string* text = arguments.Value("--window")) {
    windowSeconds = ParseSeconds(*text);
    if (!windowSeconds || *windowSeconds == 0) throw UsageError("\"" + *text + "\" is no length in seconds above 0.");
  }
  const bool json = arguments.Has("--json");

  AudioReader reader(arguments.Positionals()[0]);
  const _zrwaveformat& format = reader.Format();
  const int64_t windowFrames =
      windowSeconds ? std::max<int64_t>(FramesFromSeconds(*windowSeconds, format.samplesPerSec), 1) : 0;
  if (windowFrames != 0 && reader.Frames() / windowFrames >= kMostWindows) {
    throw UsageError("The file has more than a million windows of that length.");
  }

  LevelMeter whole(format);
  std::optional<LevelMeter> window;
  if (windowFrames != 0) window.emplace(format);
  Json windows = Json::array();
  std::vector<uint8_t> samples(size_t{BlockFrames(format.channels)} * format.blockAlign);
  Progress progress(reader.Frames());
  int64_t position = 0;
  if (!json) std::printf("%12s %8s %12s %12s %12s\n", "start s", "channel", "peak", "at s", "RMS");
  while (reader.FramesLeft() > 0) {
    int64_t most = BlockFrames(format.channels);
    if (window) most = std::min(most, windowFrames - window->Frames());
    const uint32_t frames = reader.Read(samples.data(), static_cast<uint32_t>(most));
    whole.Add(samples.data(), frames);
    position += frames;
    if (window) {
      window->Add(samples.data(), frames);
      if (window->Frames() == windowFrames || reader.FramesLeft() == 0) {
        const int64_t start = position - window->Frames();
        if (json) {
          windows.push_back(JsonOf(*window, start));
        } else {
          Print(*window, start, format.samplesPerSec);
        }
        window.emplace(format);
      }
    }
    progress.Update(position);
  }

  if (json) {
    Json document{{"file", reader.Path()}, {"rate", format.samplesPerSec}, {"whole", JsonOf(whole, 0)}};
    if (windowFrames != 0) document["windows"] = windows;
    PrintJson(document);
  } else {
    if (window) std::printf("whole file:\n");
    Print(whole, 0, format.samplesPerSec);
  }
  return kFine;
}

}  // namespace

extern const Command kLevelCommand;
const Command kLevelCommand = {"level", "measure peaks and RMS", kHelp, kOptions, RunLevel};

}  // namespace host
