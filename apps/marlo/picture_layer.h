// SPDX-License-Identifier: Apache-2.0
// One picture of a composite, as the command line tells it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host {

struct PictureLayer {
  std::string path;
  double x = 0;  ///< Pixels from the left.
  double y = 0;  ///< Pixels from the top.
  std::optional<double> width;
  std::optional<double> height;
  int32_t mode = 4;  ///< A ZRCOMPOSITE.
  float opacity = 1;
};

/// Takes "PIC[@x,y[,WxH]][:mode=NAME|N][:opacity=F]" apart. Throws UsageError on an unknown mode or an opacity
/// outside 0 to 1; an ending "@..." that isn't a place belongs to the name.
PictureLayer ParsePictureLayer(const std::string& word);

}  // namespace host
