// SPDX-License-Identifier: Apache-2.0
// marlo peaks: builds or checks the peak file of a sound file, and draws its waveform.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "json_output.h"
#include "marlo110k/peak.h"
#include "marlo110k/waveformat.h"
#include "numbers.h"
#include "output_file.h"
#include "progress.h"
#include "unicode.h"
#include "waveform.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo peaks FILE [--interval N] [--bits 8|16] [--out PEAKS] [--rebuild] [--json]\n"
    "                        [--png OUT.png [--width W] [--height H] [--from S] [--to S]]\n"
    "\n"
    "Makes the peak file of a Wave, Wave64 or AIFF file: the smallest and the largest sample of every N\n"
    "frames, from which an editor draws hours of audio at once. A peak file that still fits the sound file\n"
    "stays; one of a file that has changed is built again.\n"
    "\n"
    "options:\n"
    "  --interval N  frames a peak, 64 to 16777216; 256 without it\n"
    "  --bits 8|16   of a peak's values; 16 without it\n"
    "  --out PEAKS   write the peak file under this name instead of beside the sound file\n"
    "  --rebuild     build even when the peak file fits\n"
    "  --png OUT     draw the waveform, every channel, with a scale in dB and a ruler of time\n"
    "  --width W     of the picture in pixels; 1600 without it\n"
    "  --height H    the same; 200 a channel without it\n"
    "  --from S      second at which the picture begins; 0 without it\n"
    "  --to S        second at which it ends; without it the end of the file\n"
    "  --json        tell it as JSON\n"
    "\n"
    "example:\n"
    "  marlo peaks concert.wav --png concert.png --from 60 --to 90\n";

constexpr Option kOptions[] = {{"--interval", true}, {"--bits", true},  {"--out", true},    {"--rebuild", false},
                               {"--png", true},      {"--width", true}, {"--height", true}, {"--from", true},
                               {"--to", true},       {"--json", false}};

constexpr int32_t kUsualInterval = 256;
constexpr int32_t kUsualWidth = 1600;
constexpr int32_t kUsualLaneHeight = 200;
constexpr int32_t kMostSide = 32768;

struct ReleasePeak {
  void operator()(IZrAudioPeak* peak) const { peak->Release(); }
};
using Peak = std::unique_ptr<IZrAudioPeak, ReleasePeak>;

/// Shows a build; an interrupt cancels it.
class BuildProgress final : public IZrAudioPeakProgress {
 public:
  explicit BuildProgress(int64_t frames) : progress_(frames) {}
  void* DeleteSelf(uint32_t /*flags*/) override { return this; }
  int32_t Begin(const char16_t* /*name*/, int64_t /*range*/) override { return Step(0); }
  int32_t Step(int64_t position) override {
    try {
      progress_.Update(position);
      return 1;
    } catch (const Failure&) {
      return 0;
    }
  }
  void End(HRESULT /*result*/) override {}

 private:
  Progress progress_;
};

std::optional<int32_t> CountOption(const Arguments& arguments, const char* name, int32_t least, int32_t most) {
  const std::string* text = arguments.Value(name);
  if (text == nullptr) return std::nullopt;
  const std::optional<uint64_t> value = ParseCount(*text);
  if (!value || *value < static_cast<uint64_t>(least) || *value > static_cast<uint64_t>(most)) {
    throw UsageError(std::string(name) + " takes a number from " + std::to_string(least) + " to " +
                     std::to_string(most) + ".");
  }
  return static_cast<int32_t>(*value);
}

/// What the command line asks for.
struct Request {
  std::string file;
  std::optional<int32_t> interval;
  std::optional<int32_t> bits;
  bool rebuild;
  const std::string* out;
  const std::string* png;
  int32_t width;
  std::optional<int32_t> height;
  std::optional<double> from;
  std::optional<double> to;
};

std::optional<double> SecondsOption(const Arguments& arguments, const char* name) {
  const std::string* text = arguments.Value(name);
  if (text == nullptr) return std::nullopt;
  const std::optional<double> seconds = ParseSeconds(*text);
  if (!seconds) throw UsageError("\"" + *text + "\" is no time in seconds.");
  return seconds;
}

Request RequestOf(const Arguments& arguments) {
  if (arguments.Positionals().size() != 1) throw UsageError("The command takes one file.");
  Request request = {};
  request.file = arguments.Positionals()[0];
  request.interval = CountOption(arguments, "--interval", kZrAudioPeakMinInterval, kZrAudioPeakMaxInterval);
  request.bits = CountOption(arguments, "--bits", 8, 16);
  if (request.bits && *request.bits != 8 && *request.bits != 16) throw UsageError("--bits takes 8 or 16.");
  request.rebuild = arguments.Has("--rebuild");
  request.out = arguments.Value("--out");
  request.png = arguments.Value("--png");
  request.width = CountOption(arguments, "--width", kLeastWaveformWidth, kMostSide).value_or(kUsualWidth);
  request.height = CountOption(arguments, "--height", kLeastLaneHeight, kMostSide);
  request.from = SecondsOption(arguments, "--from");
  request.to = SecondsOption(arguments, "--to");
  if (request.png != nullptr) {
    RequireImageExtension(*request.png);
  } else {
    for (const char* name : {"--width", "--height", "--from", "--to"}) {
      if (arguments.Has(name)) throw UsageError(std::string(name) + " needs --png.");
    }
  }
  return request;
}

tZRAUDIOPEAK_HEADER HeaderOf(IZrAudioPeak* peak) {
  tZRAUDIOPEAK_HEADER header;
  peak->GetPeakHeader(&header, sizeof header);
  return header;
}

/// With a name of its own the peak file is built as a temporary one in that name's folder, and copied when it is whole.
Peak OpenPeak(const Request& request, bool* fits) {
  const std::u16string media = ToUtf16(request.file);
  std::u16string folder;
  if (request.out != nullptr) {
    folder = ToUtf16(std::filesystem::absolute(*request.out).parent_path().string());
  }
  IZrAudioPeak* made = nullptr;
  const HRESULT created = ZrAudioPeak_CreateInstance(
      &made, nullptr, media.c_str(), request.out != nullptr ? folder.c_str() : nullptr,
      request.interval.value_or(kUsualInterval), -1, request.out != nullptr ? ZRAUDIOPEAK_TEMPORARY : 0u);
  if (created == ZR_E_FILE_OPEN && std::filesystem::exists(request.file)) {
    throw Failure(ZR_E_UNKNOWN_FORMAT, request.file);
  }
  Check(created, request.file);
  *fits = created == S_OK;
  return Peak(made);
}

/// @return true when it was built, false when the one that stands there fits.
bool Build(const Request& request, IZrAudioPeak* peak, bool fits) {
  const tZRAUDIOPEAK_HEADER header = HeaderOf(peak);
  const bool asAsked = fits && (!request.interval || header.interval == static_cast<uint32_t>(*request.interval)) &&
                       (!request.bits || header.bits == static_cast<uint32_t>(*request.bits));
  uint32_t flags = ZRAUDIOPEAK_SAMPLES;
  if (request.bits.value_or(16) == 16) flags |= ZRAUDIOPEAK_16BIT;
  if (!asAsked || request.rebuild) flags |= ZRAUDIOPEAK_REBUILD;
  CZrAudioPeakStreamReader* reader = nullptr;
  Check(peak->GetStreamReader(&reader), request.file);
  BuildProgress progress(reader->GetLength());
  const HRESULT built = peak->BuildPeaks(flags, &progress);
  Check(built, request.file);
  return built != ZR_S_PEAKS_VALID;
}

std::string PeakPath(IZrAudioPeak* peak, const std::string& subject) {
  char16_t path[1024];
  Check(peak->GetPeakFileName(path, 1024), subject);
  return ToUtf8(path);
}

void CopyTo(const std::string& path, IZrAudioPeak* peak) {
  OutputFile output(path);
  std::error_code error;
  std::filesystem::copy_file(PeakPath(peak, path), output.TemporaryPath(),
                             std::filesystem::copy_options::overwrite_existing, error);
  if (error) throw Failure(ZR_E_FILE_WRITE, path, error.message());
  output.Commit();
}

void Draw(const Request& request, IZrAudioPeak* peak) {
  CZrAudioPeakStreamReader* reader = nullptr;
  Check(peak->GetStreamReader(&reader), request.file);
  const WAVEFORMATEX& format = *reader->GetFormat();
  const int64_t length = reader->GetLength();
  WaveformView view = {};
  view.first = FramesFromSeconds(request.from.value_or(0), format.nSamplesPerSec);
  const int64_t end = request.to ? std::min(FramesFromSeconds(*request.to, format.nSamplesPerSec), length) : length;
  view.count = end - view.first;
  if (view.count < 1) throw UsageError("There is no sound between --from and --to.");
  view.width = request.width;
  view.height =
      request.height.value_or(std::min(format.nChannels * kUsualLaneHeight + kWaveformRulerHeight, kMostSide));
  if (view.height < format.nChannels * kLeastLaneHeight + kWaveformRulerHeight) {
    throw UsageError("The picture has no room for " + std::to_string(format.nChannels) + " channels.");
  }
  WriteImageFile(*request.png, DrawWaveform(peak, view, request.file.c_str()));
}

int RunPeaks(const Arguments& arguments) {
  const Request request = RequestOf(arguments);
  bool fits = false;
  const Peak peak = OpenPeak(request, &fits);
  const bool built = Build(request, peak.get(), fits);
  if (request.out != nullptr) CopyTo(*request.out, peak.get());
  if (request.png != nullptr) Draw(request, peak.get());

  const tZRAUDIOPEAK_HEADER header = HeaderOf(peak.get());
  const std::string path = request.out != nullptr ? *request.out : PeakPath(peak.get(), request.file);
  const int64_t entries = (header.samples + header.interval - 1) / header.interval;
  if (arguments.Has("--json")) {
    Json document{{"file", request.file},
                  {"peak_file", path},
                  {"built", built},
                  {"bits", header.bits},
                  {"channels", header.channels},
                  {"interval", header.interval},
                  {"frames", int64_t{header.samples}},
                  {"entries", entries}};
    if (request.png != nullptr) document["picture"] = *request.png;
    PrintJson(document);
  } else {
    std::printf("%s: %s, %lld peaks of %u frames in %u bits, %u channels\n", path.c_str(), built ? "built" : "fits",
                static_cast<long long>(entries), header.interval, header.bits, header.channels);
  }
  return kFine;
}

}  // namespace

extern const Command kPeaksCommand;
const Command kPeaksCommand = {"peaks", "make the peak file of a sound file, draw its waveform", kHelp, kOptions,
                               RunPeaks};

}  // namespace host
