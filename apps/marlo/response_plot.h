// SPDX-License-Identifier: Apache-2.0
// The magnitude response of a filter as a picture: decibels over a logarithmic frequency axis.
#pragma once

#include <cstdint>
#include <vector>

#include "image.h"
#include "marlo110k/iir.h"

namespace host {

class Canvas;

class ResponsePlot {
 public:
  /// The plot inside its picture of 640 x 360; the right column and the bottom row are part of it.
  static constexpr RECT kArea = {44, 12, 628, 332};

  /// Computes the response of a filter at `rate` for every column.
  ResponsePlot(const CZrIIR& filter, uint32_t rate);

  Image Draw() const;

 private:
  int32_t ColumnOf(double frequency) const;
  int32_t RowOf(double decibels) const;
  void DrawFrequencyAxis(Canvas* canvas) const;
  void DrawLevelAxis(Canvas* canvas) const;

  double lowest_;  ///< Ends of the axis in hertz: 10, or less at low rates, and half the rate.
  double highest_;
  int32_t top_;  ///< Multiples of 10 dB around the response, at most 120 dB apart.
  int32_t bottom_;
  std::vector<double> decibels_;  ///< One a column.
};

}  // namespace host
