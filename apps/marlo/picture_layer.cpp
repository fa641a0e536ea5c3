// SPDX-License-Identifier: Apache-2.0
// Endings are taken off the word from the right until one doesn't parse.
#include "picture_layer.h"

#include <cmath>
#include <iterator>

#include "errors.h"
#include "numbers.h"

namespace host {
namespace {

// In the order of ZRCOMPOSITE.
constexpr const char* kModeNames[] = {"source",
                                      "add",
                                      "subtract",
                                      "multiply",
                                      "over",
                                      "over-fade",
                                      "inverse-source",
                                      "destination",
                                      "inverse-destination",
                                      "product",
                                      "inverse-product",
                                      "maximum",
                                      "minimum"};

int32_t ParseMode(const std::string& text) {
  constexpr int32_t kModes = static_cast<int32_t>(std::size(kModeNames));
  for (int32_t mode = 0; mode < kModes; ++mode) {
    if (text == kModeNames[mode]) return mode;
  }
  const std::optional<uint64_t> number = ParseCount(text);
  if (!number || *number >= uint64_t{kModes}) throw UsageError("There is no mode \"" + text + "\".");
  return static_cast<int32_t>(*number);
}

float ParseOpacity(const std::string& text) {
  const std::optional<double> value = ParseNumber(text);
  if (!value || *value < 0 || *value > 1) throw UsageError("\"" + text + "\" is no opacity from 0 to 1.");
  return static_cast<float>(*value);
}

/// A number whose place in 18.14 fixed point has room.
std::optional<double> ParsePlace(const std::string& text) {
  constexpr double kFarthest = 65535;
  const std::optional<double> value = ParseNumber(text);
  return value && std::fabs(*value) <= kFarthest ? value : std::nullopt;
}

/// "x,y" or "x,y,WxH". False when the text is neither.
bool ParsePlacement(const std::string& text, PictureLayer* layer) {
  const size_t first = text.find(',');
  if (first == std::string::npos) return false;
  const size_t second = text.find(',', first + 1);
  const size_t yLength = second == std::string::npos ? std::string::npos : second - first - 1;
  const std::optional<double> x = ParsePlace(text.substr(0, first));
  const std::optional<double> y = ParsePlace(text.substr(first + 1, yLength));
  if (!x || !y) return false;
  if (second != std::string::npos) {
    const std::string size = text.substr(second + 1);
    const size_t cross = size.find('x');
    if (cross == std::string::npos) return false;
    layer->width = ParsePlace(size.substr(0, cross));
    layer->height = ParsePlace(size.substr(cross + 1));
    if (!layer->width || !layer->height || *layer->width <= 0 || *layer->height <= 0) return false;
  }
  layer->x = *x;
  layer->y = *y;
  return true;
}

}  // namespace

PictureLayer ParsePictureLayer(const std::string& word) {
  PictureLayer layer;
  layer.path = word;
  for (size_t colon = word.rfind(':'); colon != std::string::npos && colon > 0; colon = layer.path.rfind(':')) {
    const std::string ending = layer.path.substr(colon + 1);
    if (ending.starts_with("mode=")) {
      layer.mode = ParseMode(ending.substr(5));
    } else if (ending.starts_with("opacity=")) {
      layer.opacity = ParseOpacity(ending.substr(8));
    } else {
      break;
    }
    layer.path.resize(colon);
  }
  const size_t at = layer.path.rfind('@');
  if (at == std::string::npos || at == 0) return layer;
  PictureLayer placed = layer;
  if (!ParsePlacement(layer.path.substr(at + 1), &placed)) return layer;
  placed.path.resize(at);
  return placed;
}

}  // namespace host
