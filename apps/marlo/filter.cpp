// SPDX-License-Identifier: Apache-2.0
// marlo filter: designs a recursive filter, shows it and runs it over a file.
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

#include "audio_reader.h"
#include "audio_writer.h"
#include "command.h"
#include "errors.h"
#include "filter_design.h"
#include "image_file.h"
#include "json_output.h"
#include "numbers.h"
#include "progress.h"
#include "response_plot.h"
#include "sample_converter.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo filter [IN OUT] --kind K --freq HZ [--family F] [--order N] [--width OCTAVES]\n"
    "                    [--q Q] [--gain DB] [--rate R] [--type T] [--json] [--png PLOT]\n"
    "\n"
    "Designs a filter, shows its poles, zeros and response, and with IN and OUT runs it over every channel\n"
    "of IN. The extension of OUT chooses the format.\n"
    "\n"
    "options:\n"
    "  --kind K        low, high, band or stop, of a family and an order; notch or peak, a resonator of one\n"
    "                  pole pair; low-shelf-cut, low-shelf-boost, high-shelf-cut, high-shelf-boost or bell:\n"
    "                  the coefficients of real-time gain controls, shown only\n"
    "  --freq HZ       corner, or centre of a band\n"
    "  --family F      butterworth (the default), chebyshev (0.5 dB of ripple) or bessel\n"
    "  --order N       1 to 15 (bessel: 10); 4 without it. A band has twice as many poles\n"
    "  --width OCTAVES of band and stop; 1 without it\n"
    "  --q Q           of notch, peak, shelves and bell; 1 without it\n"
    "  --gain DB       change what passes by so much instead of taking away the rest\n"
    "  --rate R        for a design without a file; 48000 without it\n"
    "  --type T        sample type of OUT; without it that of IN\n"
    "  --json          tell it as JSON\n"
    "  --png PLOT      draw the response into a PNG file; not for shelves and bell\n"
    "\n"
    "example:\n"
    "  marlo filter --kind low --freq 8000 --family chebyshev --order 6 --rate 44100 --png low.png\n"
    "  marlo filter hum.wav clean.wav --kind notch --freq 50 --q 10\n";

constexpr Option kOptions[] = {{"--kind", true},  {"--freq", true},  {"--family", true}, {"--order", true},
                               {"--width", true}, {"--q", true},     {"--gain", true},   {"--rate", true},
                               {"--type", true},  {"--json", false}, {"--png", true}};

double NumberOption(const Arguments& arguments, const char* name, double otherwise, double least, double most) {
  const std::string* text = arguments.Value(name);
  if (!text) return otherwise;
  const std::optional<double> value = ParseNumber(*text);
  if (!value || *value < least || *value > most) {
    throw UsageError("\"" + *text + "\" can't be the value of " + name + ".");
  }
  return *value;
}

FilterRequest RequestOf(const Arguments& arguments) {
  if (!arguments.Has("--kind") || !arguments.Has("--freq")) throw UsageError("The command needs --kind and --freq.");
  FilterRequest request;
  request.kind = *arguments.Value("--kind");
  if (const std::string* family = arguments.Value("--family")) request.family = *family;
  request.order = static_cast<uint32_t>(NumberOption(arguments, "--order", request.order, 1, 15));
  request.frequency = NumberOption(arguments, "--freq", 0, 1e-3, 1e6);
  request.octaves = NumberOption(arguments, "--width", request.octaves, 1e-3, 20);
  request.q = NumberOption(arguments, "--q", request.q, 1e-3, 1e4);
  request.gainDb = NumberOption(arguments, "--gain", 0, -200, 200);
  CheckFilterRequest(request);
  return request;
}

double Decibels(double factor) { return 20 * std::log10(factor); }

/// Frequencies of the table: thirds of octaves around 1 kHz, as far as half the rate.
std::vector<double> TableFrequencies(uint32_t rate) {
  std::vector<double> frequencies;
  for (int third = -17; third < 40; ++third) {
    const double frequency = 1000 * std::exp2(third / 3.0);
    if (2 * frequency <= rate) frequencies.push_back(frequency);
  }
  return frequencies;
}

Json JsonOf(const tZRIIR_COMPLEX* roots, uint32_t count) {
  Json list = Json::array();
  for (uint32_t index = 0; index < count; ++index) list.push_back({roots[index].re, roots[index].im});
  return list;
}

void Print(const char* name, const tZRIIR_COMPLEX* roots, uint32_t count) {
  for (uint32_t index = 0; index < count; ++index) {
    const double radius = std::hypot(roots[index].re, roots[index].im);
    std::printf("%-6s %+.12f %+.12fi   radius %.9f\n", name, roots[index].re, roots[index].im, radius);
  }
}

Json JsonOf(const CZrIIR& filter, uint32_t rate) {
  const tZRIIR_POLYNOMIAL& roots = *filter.getPolynomial(1);
  Json sections = Json::array();
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    const tZRIIR_BIQUAD& section = *filter.getBiquad(index);
    sections.push_back(
        {{"b0", section.b0}, {"b1", section.b1}, {"b2", section.b2}, {"a1", section.a1}, {"a2", section.a2}});
  }
  Json response = Json::array();
  for (const double frequency : TableFrequencies(rate)) {
    const std::complex<double> value = ResponseAt(filter, frequency / rate);
    response.push_back({{"frequency", frequency}, {"factor", std::abs(value)}, {"phase", std::arg(value)}});
  }
  return Json{{"rate", rate},
              {"gain", filter.getGain()},
              {"dry", filter.getDry()},
              {"poles", JsonOf(roots.poles, roots.numPoles)},
              {"zeros", JsonOf(roots.zeros, roots.numZeros)},
              {"sections", sections},
              {"response", response}};
}

void Print(const CZrIIR& filter, uint32_t rate) {
  const tZRIIR_POLYNOMIAL& roots = *filter.getPolynomial(1);
  Print("pole", roots.poles, roots.numPoles);
  Print("zero", roots.zeros, roots.numZeros);
  std::printf("%12s %12s %12s\n", "Hz", "response", "phase");
  for (const double frequency : TableFrequencies(rate)) {
    const std::complex<double> value = ResponseAt(filter, frequency / rate);
    std::printf("%12.1f %9.2f dB %8.1f deg\n", frequency, Decibels(std::abs(value)),
                std::arg(value) * 180 / std::numbers::pi);
  }
}

/// Filters a file in doubles; one filter for every two channels.
void Run(const FilterRequest& request, AudioReader* reader, ZRSAMPLETYPE type, const std::string& outputPath,
         Container container) {
  const _zrwaveformat& source = reader->Format();
  const _zrwaveformat working = MakeFormat(source.samplesPerSec, ZRSAMPLETYPE_FLOAT64, source.channels, 0);
  const _zrwaveformat target = MakeFormat(source.samplesPerSec, type, source.channels, source.channelMask);
  std::vector<std::unique_ptr<CZrIIR>> filters;
  for (uint32_t channel = 0; channel < source.channels; channel += 2) {
    filters.push_back(DesignFilter(request, source.samplesPerSec, source.channels));
  }
  AudioWriter writer(outputPath, container, target, reader->Frames());
  SampleConverter toDoubles(source, working, 1.0f), toTarget(working, target, 1.0f);
  const uint32_t block = BlockFrames(source.channels);
  std::vector<uint8_t> samples(size_t{block} * source.blockAlign);
  std::vector<double> filtered(size_t{block} * source.channels);
  Progress progress(reader->Frames());
  while (const uint32_t frames = reader->Read(samples.data(), block)) {
    const auto* doubles = static_cast<const double*>(toDoubles.Convert(samples.data(), frames));
    for (size_t pair = 0; pair < filters.size(); ++pair) {
      const uint32_t mask = 2 * pair + 1 == source.channels ? 1 : 3;
      filters[pair]->ProcessDouble(filtered.data() + 2 * pair, doubles + 2 * pair, frames, mask);
    }
    writer.Write(toTarget.Convert(filtered.data(), frames), frames);
    progress.Update(reader->Frames() - reader->FramesLeft());
  }
  writer.Finish();
}

int RunFilter(const Arguments& arguments) {
  const std::vector<std::string>& names = arguments.Positionals();
  if (names.size() != 0 && names.size() != 2) throw UsageError("The command takes IN and OUT or no name.");
  const FilterRequest request = RequestOf(arguments);
  if (!names.empty() && IsFinderKind(request.kind)) throw UsageError("This kind of filter can only be shown.");
  if (!names.empty() && arguments.Has("--rate")) throw UsageError("The rate is that of IN.");
  if (names.empty() && arguments.Has("--type")) throw UsageError("--type needs IN and OUT.");
  auto rate = static_cast<uint32_t>(NumberOption(arguments, "--rate", 48000, 1, 1e6));
  const bool json = arguments.Has("--json");
  const std::string* plotPath = arguments.Value("--png");
  if (plotPath && IsFinderKind(request.kind)) throw UsageError("This kind of filter has no plot.");
  if (plotPath) RequirePngExtension(*plotPath);

  if (IsFinderKind(request.kind)) {
    Json document = Json::object();
    for (const NamedCoefficient& coefficient : FindCoefficients(request, rate)) {
      document[coefficient.name] = coefficient.value;
      if (!json) std::printf("%-6s %+.15f\n", coefficient.name, coefficient.value);
    }
    if (json) PrintJson(Json{{"rate", rate}, {"coefficients", document}});
    return kFine;
  }
  if (!names.empty()) {
    const Container container = ContainerOfOutput(names[1]);
    const std::string* typeName = arguments.Value("--type");
    std::optional<ZRSAMPLETYPE> type;
    if (typeName) type = SampleTypeOfOption(*typeName);
    AudioReader reader(names[0]);
    rate = reader.Format().samplesPerSec;
    Run(request, &reader, RequireTypeInContainer(type.value_or(reader.Type()), container, names[1]), names[1],
        container);
  }
  const std::unique_ptr<CZrIIR> shown = DesignFilter(request, rate, 1);
  if (plotPath) WriteImageFile(*plotPath, ResponsePlot(*shown, rate).Draw());
  if (json) {
    PrintJson(JsonOf(*shown, rate));
  } else {
    Print(*shown, rate);
  }
  return kFine;
}

}  // namespace

extern const Command kFilterCommand;
const Command kFilterCommand = {"filter", "design a filter, show it and run it over a file", kHelp, kOptions,
                                RunFilter};

}  // namespace host
