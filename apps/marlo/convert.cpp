// SPDX-License-Identifier: Apache-2.0
// marlo convert: another file format, sample type, order of channels or gain.
#include <vector>

#include "audio_reader.h"
#include "audio_writer.h"
#include "channel_map.h"
#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "marlo110k/channels.h"
#include "marlo110k/samples.h"
#include "numbers.h"
#include "progress.h"
#include "sample_converter.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo convert IN OUT [--type T] [--channels MAP] [--gain DB] [--json]\n"
    "\n"
    "Writes the samples of IN to OUT; the extension of OUT chooses the format: .wav, .w64, .aiff or\n"
    ".aifc (AIFF with little-endian samples). OUT appears when it is complete.\n"
    "\n"
    "options:\n"
    "  --type T        pcm8, pcm16, pcm24, pcm32, float32 or float64; AIFF holds the pcm types only.\n"
    "                  Without it the type of IN stays.\n"
    "  --channels MAP  a comma list with one entry for each channel of IN: the channel of OUT, from 0,\n"
    "                  or - for nowhere. Channels of OUT that get nothing are silent; of two that go to\n"
    "                  one place the later stays.\n"
    "  --gain DB       in decibels; samples that pass full scale are limited to it in the pcm types\n"
    "  --json          tell what was written as JSON\n"
    "\n"
    "example:\n"
    "  marlo convert field.w64 field.wav --type pcm24 --channels 1,0 --gain -3\n";

constexpr Option kOptions[] = {{"--type", true}, {"--channels", true}, {"--gain", true}, {"--json", false}};

int RunConvert(const Arguments& arguments) {
  if (arguments.Positionals().size() != 2) throw UsageError("The command takes two names: IN and OUT.");
  const std::string& inputPath = arguments.Positionals()[0];
  const std::string& outputPath = arguments.Positionals()[1];
  const Container container = ContainerOfOutput(outputPath);
  const std::string* typeName = arguments.Value("--type");
  const std::string* mapText = arguments.Value("--channels");
  const std::string* gainText = arguments.Value("--gain");
  std::optional<ZRSAMPLETYPE> askedType;
  if (typeName) askedType = SampleTypeOfOption(*typeName);
  std::optional<ChannelMap> map;
  if (mapText && !(map = ParseChannelMap(*mapText))) {
    throw UsageError("\"" + *mapText + "\" is no list of channel numbers and dashes such as 1,0 or 0,-.");
  }
  std::optional<double> gain = 1.0;
  if (gainText && !(gain = ParseDecibels(*gainText))) {
    throw UsageError("\"" + *gainText + "\" is no gain in decibels.");
  }

  AudioReader reader(inputPath);
  const _zrwaveformat& source = reader.Format();
  if (map && map->destinations.size() != source.channels) {
    throw UsageError("--channels needs " + std::to_string(source.channels) + " entries, one for each channel of " +
                     inputPath + ".");
  }
  const ZRSAMPLETYPE type = RequireTypeInContainer(askedType.value_or(reader.Type()), container, outputPath);
  const uint16_t channels = map ? map->destinationChannels : source.channels;
  // The speakers are those of the source while there are as many; else nothing is known about them.
  const uint32_t mask = channels == source.channels ? source.channelMask : 0;
  const _zrwaveformat target = MakeFormat(source.samplesPerSec, type, channels, mask);
  const _zrwaveformat converted = MakeFormat(source.samplesPerSec, type, source.channels, mask);

  AudioWriter writer(outputPath, container, target, reader.Frames());
  SampleConverter converter(source, converted, static_cast<float>(*gain));
  const uint32_t block = BlockFrames(std::max(channels, source.channels));
  std::vector<uint8_t> samples(size_t{block} * source.blockAlign);
  std::vector<uint8_t> mapped(map ? size_t{block} * target.blockAlign : 0);
  Progress progress(reader.Frames());
  while (const uint32_t frames = reader.Read(samples.data(), block)) {
    const void* result = converter.Convert(samples.data(), frames);
    if (map) {
      Check(ZrAudio_FillSilence(&target, mapped.data(), frames), outputPath);
      Check(ZrAudio_CopyChannels(&target, mapped.data(), &converted, result, frames, map->destinations.data()),
            outputPath);
      result = mapped.data();
    }
    writer.Write(result, frames);
    progress.Update(reader.Frames() - reader.FramesLeft());
  }
  writer.Finish();

  if (arguments.Has("--json")) {
    PrintJson(Json{{"output", outputPath},
                   {"container", NameOf(container)},
                   {"type", NameOf(type)},
                   {"rate", source.samplesPerSec},
                   {"channels", channels},
                   {"frames", reader.Frames()}});
  }
  return kFine;
}

}  // namespace

extern const Command kConvertCommand;
const Command kConvertCommand = {"convert", "change file format, sample type, channels or gain", kHelp, kOptions,
                                 RunConvert};

}  // namespace host
