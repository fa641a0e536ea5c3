// SPDX-License-Identifier: Apache-2.0
// Parses the comma list of a channel map.
#include "channel_map.h"

#include <algorithm>

#include "numbers.h"

namespace host {

std::optional<ChannelMap> ParseChannelMap(std::string_view text) {
  constexpr uint64_t kMostChannels = 256;
  ChannelMap map;
  for (;;) {
    const size_t comma = text.find(',');
    const std::string_view entry = text.substr(0, comma);
    if (entry == "-") {
      map.destinations.push_back(-1);
    } else {
      const std::optional<uint64_t> channel = ParseCount(entry);
      if (!channel || *channel >= kMostChannels) return std::nullopt;
      map.destinations.push_back(static_cast<int32_t>(*channel));
      map.destinationChannels = std::max(map.destinationChannels, static_cast<uint16_t>(*channel + 1));
    }
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
  if (map.destinationChannels == 0) return std::nullopt;
  return map;
}

}  // namespace host
