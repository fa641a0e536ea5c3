// SPDX-License-Identifier: Apache-2.0
// marlo mix: several files, each from its start time on and with its gain, into one.
#include <cstdio>

#include "audio_writer.h"
#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "mixdown.h"
#include "numbers.h"
#include "progress.h"
#include "sample_converter.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo mix OUT IN[@seconds][:gain]... [--type T] [--json]\n"
    "\n"
    "Sums the inputs into OUT, whose extension chooses the format: .wav, .w64, .aiff or .aifc. All\n"
    "inputs have one rate. OUT has as many channels as the widest input; mono goes to all of them,\n"
    "and other inputs must have as many.\n"
    "\n"
    "  @seconds  where the input begins, to the nearest frame; without it at the start\n"
    "  :gain     a factor, or decibels with dB behind it; without it 1\n"
    "Only an ending that parses counts as one: \"me@home.wav\" is a name. Protect a name such as\n"
    "\"part:2\" by writing the gain out (\"part:2:1\").\n"
    "\n"
    "options:\n"
    "  --type T  pcm8, pcm16, pcm24, pcm32, float32 or float64; AIFF holds the pcm types only. Without\n"
    "            it the type of the first input. The sum is made of doubles and converted once.\n"
    "  --json    tell what was written as JSON\n"
    "\n"
    "example:\n"
    "  marlo mix show.wav speech.wav@1.5 music.wav:-12dB --type pcm24\n";

constexpr Option kOptions[] = {{"--type", true}, {"--json", false}};

int RunMix(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.Positionals();
  if (words.size() < 2) throw UsageError("The command takes the name of the output and at least one input.");
  const std::string& outputPath = words[0];
  const Container container = ContainerOfOutput(outputPath);
  std::optional<ZRSAMPLETYPE> askedType;
  if (const std::string* name = arguments.Value("--type")) askedType = SampleTypeOfOption(*name);
  std::vector<MixInput> inputs;
  for (size_t index = 1; index < words.size(); ++index) inputs.push_back(ParseMixInput(words[index]));

  Mixdown mixdown(inputs);
  const ZRSAMPLETYPE type = RequireTypeInContainer(askedType.value_or(mixdown.FirstType()), container, outputPath);
  const _zrwaveformat target = MakeFormat(mixdown.Rate(), type, mixdown.Channels(), mixdown.ChannelMask());
  AudioWriter writer(outputPath, container, target, mixdown.Frames());
  SampleConverter converter(mixdown.Format(), target, 1.0f);
  Progress progress(mixdown.Frames());
  int64_t done = 0;
  uint32_t frames = 0;
  for (const double* sum = mixdown.Render(&frames); frames != 0; sum = mixdown.Render(&frames)) {
    writer.Write(converter.Convert(sum, frames), frames);
    progress.Update(done += frames);
  }
  writer.Finish();

  if (arguments.Has("--json")) {
    Json list = Json::array();
    for (const MixInput& input : inputs) {
      list.push_back({{"file", input.path},
                      {"start_frame", FramesFromSeconds(input.startSeconds, mixdown.Rate())},
                      {"gain", input.gain}});
    }
    PrintJson(Json{{"output", outputPath},
                   {"container", NameOf(container)},
                   {"type", NameOf(type)},
                   {"rate", mixdown.Rate()},
                   {"channels", mixdown.Channels()},
                   {"frames", mixdown.Frames()},
                   {"peak", mixdown.Peak()},
                   {"inputs", list}});
  } else if (mixdown.Peak() > 1 && type != ZRSAMPLETYPE_FLOAT32 && type != ZRSAMPLETYPE_FLOAT64) {
    std::fprintf(stderr, "marlo mix: %s: The sum reaches %s and was limited to full scale.\n", outputPath.c_str(),
                 TextOfLevel(mixdown.Peak()).text);
  }
  return kFine;
}

}  // namespace

extern const Command kMixCommand;
const Command kMixCommand = {"mix", "sum files, each with a start time and a gain", kHelp, kOptions, RunMix};

}  // namespace host
