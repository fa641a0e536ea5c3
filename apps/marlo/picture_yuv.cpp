// SPDX-License-Identifier: Apache-2.0
// marlo picture yuv: video frames without a header, to and from pictures and each other.
#include <optional>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "picture.h"
#include "video_frame.h"
#include "whole_file.h"

namespace host {
namespace {

struct Choice {
  const char* text;
  int32_t value;
};

constexpr Choice kMatrices[] = {{"601", ZRYUV_BT601}, {"709", ZRYUV_BT709}};
constexpr Choice kFields[] = {{"upper", 1}, {"lower", 2}};
constexpr Choice kShrinks[] = {{"2", 1}, {"4", 2}, {"8", 3}};

/// The value behind an option's text; 0 without the option.
int32_t ChoiceOf(const Arguments& arguments, const char* option, std::span<const Choice> choices) {
  const std::string* text = arguments.Value(option);
  if (text == nullptr) return 0;
  for (const Choice& choice : choices) {
    if (*text == choice.text) return choice.value;
  }
  throw UsageError("\"" + *text + "\" can't be the value of " + option + ".");
}

const VideoFormat* FormatOption(const Arguments& arguments, const char* option) {
  const std::string* name = arguments.Value(option);
  return name != nullptr ? &ParseVideoFormat(*name) : nullptr;
}

std::optional<VideoFrame> FrameOfInput(const Arguments& arguments, const VideoFormat* raw) {
  const std::string* size = arguments.Value("--size");
  if ((raw != nullptr) != (size != nullptr)) throw UsageError("--raw and --size go together.");
  if (raw == nullptr) return std::nullopt;
  const PictureSize pixels = ParsePictureSize(*size);
  return ReadVideoFrame(arguments.Positionals()[1], *raw, pixels.width, pixels.height);
}

void WriteFrame(const std::string& path, const VideoFrame& frame) {
  WriteWholeFile(path, frame.bytes.data(), frame.bytes.size());
}

}  // namespace

int RunPictureYuv(const Arguments& arguments) {
  if (arguments.Positionals().size() != 2) throw UsageError("yuv takes one file.");
  const std::string& path = arguments.Positionals()[1];
  const VideoFormat* const raw = FormatOption(arguments, "--raw");
  const VideoFormat* const to = FormatOption(arguments, "--to");
  if (raw == nullptr && to == nullptr) throw UsageError("yuv takes --raw, --to or both.");
  if (to != nullptr && !to->canWrite) throw UsageError(std::string(to->name) + " can only be read.");
  const tZRYUVPARAMS params = {ChoiceOf(arguments, "--matrix", kMatrices), ChoiceOf(arguments, "--field", kFields), 0};
  const int32_t shrink = ChoiceOf(arguments, "--shrink", kShrinks);
  if (shrink != 0 && raw == nullptr) throw UsageError("--shrink is for --raw frames.");
  const std::string* outputOption = arguments.Value("-o");
  if (outputOption == nullptr) throw UsageError("The output is missing: -o OUT.");
  const std::string output = to != nullptr ? *outputOption : OutputOfPicture(arguments);

  const std::optional<VideoFrame> frame = FrameOfInput(arguments, raw);
  VideoFrame result;
  if (frame && to != nullptr && shrink == 0 && Rearrange(*frame, *to, path, &result)) {
    WriteFrame(output, result);
    return kFine;
  }
  const Image image = frame ? ImageOfFrame(*frame, params, shrink, path) : ReadImageFile(path).image;
  if (to != nullptr) {
    WriteFrame(output, FrameOfImage(image, *to, params, path));
  } else {
    WriteImageFile(output, image);
  }
  return kFine;
}

}  // namespace host
