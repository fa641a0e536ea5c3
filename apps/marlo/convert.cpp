// SPDX-License-Identifier: Apache-2.0
// marlo convert: another file format, sample type, rate, order of channels or gain.
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
#include "rate_converter.h"
#include "sample_converter.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo convert IN OUT [--type T] [--channels MAP] [--gain DB] [--json]\n"
    "                     [--rate R [--resampler NAME] [--filter 0..3]]\n"
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
    "  --rate R        frames per second of OUT, 1 to 1000000\n"
    "  --resampler NAME\n"
    "                  linear            straight lines, no filter\n"
    "                  linear-filtered   straight lines\n"
    "                  sinc              windowed sinc of 25 taps\n"
    "                  2-linear, 2-cubic, 2-sinc (the default)\n"
    "                                    straight lines, a smoothing cubic spline and the sinc with a finer\n"
    "                                    table, on a position that doesn't drift\n"
    "  --filter N      low-pass at the lower rate's half, 0 for none. For linear-filtered and sinc it is of\n"
    "                  order 2, 4 or 6 and ripples by 0.5 dB; for the others flat, of order 4, 8 or 11. 2 by\n"
    "                  default. It delays by a few frames; nothing else does, and no frame is lost.\n"
    "  --json          tell what was written as JSON\n"
    "\n"
    "example:\n"
    "  marlo convert talk-48k.wav talk-44k.wav --rate 44100\n"
    "  marlo convert field.w64 field.wav --type pcm24 --channels 1,0 --gain -3\n";

constexpr Option kOptions[] = {{"--type", true},      {"--channels", true}, {"--gain", true}, {"--rate", true},
                               {"--resampler", true}, {"--filter", true},   {"--json", false}};

constexpr uint64_t kMostRate = 1'000'000;

/// What the options say about the rate of the result.
struct RateChoice {
  uint32_t rate;
  const ResamplerKind* kind;
  uint32_t filter;
};

std::optional<RateChoice> RateOf(const Arguments& arguments) {
  const std::string* rateText = arguments.Value("--rate");
  const std::string* kindText = arguments.Value("--resampler");
  const std::string* filterText = arguments.Value("--filter");
  if (!rateText) {
    if (kindText || filterText) throw UsageError("--resampler and --filter need --rate.");
    return std::nullopt;
  }
  const std::optional<uint64_t> rate = ParseCount(*rateText);
  if (!rate || *rate == 0 || *rate > kMostRate) throw UsageError("\"" + *rateText + "\" is no rate from 1 to 1000000.");
  const std::string kindName = kindText ? *kindText : "2-sinc";
  const ResamplerKind* kind = ResamplerOfName(kindName);
  if (!kind) throw UsageError("\"" + kindName + "\" is no resampler; see --help for their names.");
  const std::string filterName = filterText ? *filterText : kind->takesFilter ? "2" : "0";
  const std::optional<uint64_t> filter = ParseCount(filterName);
  if (!filter || *filter > 3) throw UsageError("\"" + filterName + "\" is no filter from 0 to 3.");
  if (*filter != 0 && !kind->takesFilter) throw UsageError("The resampler linear has no filter.");
  return RateChoice{static_cast<uint32_t>(*rate), kind, static_cast<uint32_t>(*filter)};
}

/// Doubles where the source has more than 24 bits, else floats: what the resamplers work on without loss.
ZRSAMPLETYPE WorkingType(ZRSAMPLETYPE source) {
  const bool wide = source == ZRSAMPLETYPE_PCM32 || source == ZRSAMPLETYPE_PCM32BE || source == ZRSAMPLETYPE_FLOAT64;
  return wide ? ZRSAMPLETYPE_FLOAT64 : ZRSAMPLETYPE_FLOAT32;
}

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

  std::optional<RateChoice> resampling = RateOf(arguments);

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
  if (resampling && resampling->rate == source.samplesPerSec) resampling.reset();
  const uint32_t rate = resampling ? resampling->rate : source.samplesPerSec;
  const _zrwaveformat target = MakeFormat(rate, type, channels, mask);
  const _zrwaveformat converted = MakeFormat(rate, type, source.channels, mask);
  const _zrwaveformat working =
      resampling ? MakeFormat(source.samplesPerSec, WorkingType(reader.Type()), source.channels, mask) : converted;

  AudioWriter writer(outputPath, container, target,
                     static_cast<int64_t>(static_cast<double>(reader.Frames()) * rate / source.samplesPerSec));
  SampleConverter converter(source, working, static_cast<float>(*gain));
  std::optional<RateConverter> rateConverter;
  std::optional<SampleConverter> lastConverter;
  if (resampling) {
    rateConverter.emplace(working, rate, *resampling->kind, resampling->filter);
    _zrwaveformat resampled = working;
    resampled.samplesPerSec = rate;
    lastConverter.emplace(resampled, converted, 1.0f);
  }
  const uint32_t block = BlockFrames(std::max(channels, source.channels));
  std::vector<uint8_t> samples(size_t{block} * source.blockAlign);
  std::vector<uint8_t> mapped;
  int64_t written = 0;
  const auto write = [&](const void* result, uint32_t frames) {
    if (map) {
      mapped.resize(size_t{frames} * target.blockAlign);
      Check(ZrAudio_FillSilence(&target, mapped.data(), frames), outputPath);
      Check(ZrAudio_CopyChannels(&target, mapped.data(), &converted, result, frames, map->destinations.data()),
            outputPath);
      result = mapped.data();
    }
    writer.Write(result, frames);
    written += frames;
  };
  const auto writeResampled = [&] {
    while (const uint32_t made = rateConverter->Next()) {
      write(lastConverter->Convert(rateConverter->Samples(), made), made);
    }
  };
  Progress progress(reader.Frames());
  while (const uint32_t frames = reader.Read(samples.data(), block)) {
    const void* result = converter.Convert(samples.data(), frames);
    if (rateConverter) {
      rateConverter->Feed(result, frames);
      writeResampled();
    } else {
      write(result, frames);
    }
    progress.Update(reader.Frames() - reader.FramesLeft());
  }
  if (rateConverter) {
    rateConverter->Finish();
    writeResampled();
  }
  writer.Finish();

  if (arguments.Has("--json")) {
    PrintJson(Json{{"output", outputPath},
                   {"container", NameOf(container)},
                   {"type", NameOf(type)},
                   {"rate", rate},
                   {"channels", channels},
                   {"frames", written}});
  }
  return kFine;
}

}  // namespace

extern const Command kConvertCommand;
const Command kConvertCommand = {"convert", "change file format, sample type, rate, channels or gain", kHelp, kOptions,
                                 RunConvert};

}  // namespace host
