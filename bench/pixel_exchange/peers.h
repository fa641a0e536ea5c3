// SPDX-License-Identifier: Apache-2.0
// What exchange is measured beside.
#pragma once

#include <cstdint>
#include <vector>

#include "harness/harness.h"

namespace bench {

/// OpenCV's change of depth between bytes and floats of four channels, or its absence by name.
void AddOpenCv(Question* question, bool toFloats, int width, int height, const std::vector<uint8_t>& src,
               std::vector<uint8_t>* dst);

}  // namespace bench
