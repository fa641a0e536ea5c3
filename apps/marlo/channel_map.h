// SPDX-License-Identifier: Apache-2.0
// Where the channels of a source go: "1,0" exchanges two, "0,-" keeps the first.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace host {

struct ChannelMap {
  std::vector<int32_t> destinations;  ///< One entry a source channel; -1 for nowhere.
  uint16_t destinationChannels = 0;   ///< The highest entry, plus 1.
};

/// Reads a comma list of channel numbers from 0 and "-" for nowhere; none when it isn't one, or when
/// no channel goes anywhere.
std::optional<ChannelMap> ParseChannelMap(std::string_view text);

}  // namespace host
