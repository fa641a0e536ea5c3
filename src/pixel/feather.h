// SPDX-License-Identifier: Apache-2.0
// Feathered edges of a copy: how far each pixel moves toward what is in the destination.
#pragma once

#include <algorithm>
#include <cstdint>

#include "marlo110k/dib_copy.h"
#include "pixel/blendops.h"
#include "pixel/geometry.h"

namespace marlo::pixel {

/// Weights by distance from the picture's real edges: what clipping took off counts as passed.
class Feather {
 public:
  explicit Feather(const tZRDIBGENERICPARAMS& record) noexcept
      : flags_(record.flags), rows_(record.dstHeight), columns_(record.dstWidth) {
    width_ = static_cast<int32_t>((record.flags & ZRDIB_FEATHER_WIDTH_MASK) >> 16);
    left_ = record.srcInsets[0];
    right_ = record.srcInsets[2];
    // Memory starts at the picture's bottom.
    firstRows_ = record.srcInsets[3];
    lastRows_ = record.srcInsets[1];
    if (record.scaled) {
      width_ = Scaled(width_, std::max(record.srcStepX, record.srcStepY));
      left_ = Scaled(left_, record.srcStepX);
      right_ = Scaled(right_, record.srcStepX);
      firstRows_ = Scaled(firstRows_, record.srcStepY);
      lastRows_ = Scaled(lastRows_, record.srcStepY);
    }
    unit_ = width_ > 0 ? 65535 / (static_cast<int64_t>(width_) + 1) : 0;
  }

  bool IsEmpty() const noexcept { return unit_ == 0; }

  /// 0 to 65535 for a pixel; rows in memory order.
  int32_t WeightAt(int32_t row, int32_t column) const noexcept {
    int64_t distance = 0;
    const auto take = [&](uint32_t flag, int64_t candidate) {
      if (flags_ & flag) distance = std::max(distance, candidate);
    };
    take(ZRDIB_FEATHER_FIRST_ROWS, int64_t{width_} - row - firstRows_);
    take(ZRDIB_FEATHER_LAST_ROWS, int64_t{row} - lastRows_ - (int64_t{rows_} - width_) + 1);
    take(ZRDIB_FEATHER_LEFT, int64_t{width_} - column - left_);
    take(ZRDIB_FEATHER_RIGHT, int64_t{column} - right_ - (int64_t{columns_} - width_) + 1);
    return static_cast<int32_t>(std::min<int64_t>(distance * unit_, 65535));
  }

  static tZRPIXEL64 Mix(const tZRPIXEL64& source, const tZRPIXEL64& below, int32_t weight) noexcept {
    return Moved(source, below, weight);
  }
  static tZRPIXEL32 Mix(const tZRPIXEL32& source, const tZRPIXEL32& below, int32_t weight) noexcept {
    return Moved(source, below, weight >> 8);
  }
  static tZRPIXEL128 Mix(const tZRPIXEL128& source, const tZRPIXEL128& below, int32_t weight) noexcept {
    return Moved(source, below, static_cast<float>(weight) * (1.0f / 65535.0f));
  }

 private:
  static int32_t Scaled(int32_t value, int32_t step) noexcept { return Saturate(int64_t{value} * step / kOne); }

  uint32_t flags_;
  int32_t rows_;
  int32_t columns_;
  int32_t width_;
  int32_t left_;
  int32_t right_;
  int32_t firstRows_;
  int32_t lastRows_;
  int64_t unit_;
};

}  // namespace marlo::pixel
