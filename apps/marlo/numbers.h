// SPDX-License-Identifier: Apache-2.0
// Numbers as people write them on a command line, accepted only when the whole text is one.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

/// A finite decimal number such as "2", "-0.5" or "1e-3".
std::optional<double> ParseNumber(std::string_view text);
/// A whole number without sign.
std::optional<uint64_t> ParseCount(std::string_view text);
/// A time in seconds, 0 to ten years.
std::optional<double> ParseSeconds(std::string_view text);
/// Decibels with or without "dB" behind the number, as a factor; -200 to 200.
std::optional<double> ParseDecibels(std::string_view text);
/// A plain number as a factor, or decibels when "dB" stands behind it, as a factor.
std::optional<double> ParseGain(std::string_view text);

/// Seconds in whole frames, to the nearest.
int64_t FramesFromSeconds(double seconds, uint32_t rate);

/// A level as text: "-6.02 dB", or "-inf dB" for silence.
struct DecibelText {
  char text[16];
};
DecibelText TextOfLevel(double level);

}  // namespace host
