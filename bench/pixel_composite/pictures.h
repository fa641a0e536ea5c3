// SPDX-License-Identifier: Apache-2.0
// The pictures that all contenders of a size work on, and what the peers answer.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "harness/harness.h"

namespace bench {

/// A premultiplied source and a destination of 8-bit BGRA.
struct Pictures {
  int width;
  int height;
  std::vector<uint8_t> src;
  std::vector<uint8_t> dst;
  double Pixels() const { return static_cast<double>(width) * height; }
};

/// Premultiplied over at full opacity.
void AddPixmanOver(Question* question, std::shared_ptr<Pictures> pictures);
/// The mean of two pictures.
void AddLibyuvFade(Question* question, std::shared_ptr<Pictures> pictures);
/// Colour times alpha.
void AddLibyuvPremultiply(Question* question, std::shared_ptr<Pictures> pictures);

}  // namespace bench
