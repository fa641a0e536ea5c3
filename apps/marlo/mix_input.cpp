// SPDX-License-Identifier: Apache-2.0
// The suffixes of a mix input, read from the right.
#include "mix_input.h"

#include <optional>
#include <string_view>

#include "numbers.h"

namespace host {
namespace {

// Takes "<mark><number>" off the end of `text` when it parses and leaves a name.
std::optional<double> TakeSuffix(std::string& text, char mark, std::optional<double> (*parse)(std::string_view)) {
  const size_t place = text.rfind(mark);
  if (place == std::string::npos || place == 0) return std::nullopt;
  const std::optional<double> value = parse(std::string_view(text).substr(place + 1));
  if (value) text.resize(place);
  return value;
}

}  // namespace

MixInput ParseMixInput(const std::string& text) {
  MixInput input;
  input.path = text;
  if (const auto gain = TakeSuffix(input.path, ':', ParseGain)) input.gain = *gain;
  if (const auto seconds = TakeSuffix(input.path, '@', ParseSeconds)) input.startSeconds = *seconds;
  return input;
}

}  // namespace host
