// SPDX-License-Identifier: Apache-2.0
// Axes are ruled at 1, 2 and 5 of each decade and at whole steps of decibels; the curve joins columns.
#include "response_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "canvas.h"
#include "filter_design.h"

namespace host {
namespace {

constexpr int32_t kWidth = 640;
constexpr int32_t kHeight = 360;
constexpr int32_t kMostDecibels = 120;
constexpr int32_t kLeastDecibels = 20;
constexpr double kSilence = -1000;

constexpr tZRPIXEL32 kPaper = {255, 255, 255, 255};
constexpr tZRPIXEL32 kInk = {40, 40, 40, 255};
constexpr tZRPIXEL32 kRule = {220, 220, 220, 255};
constexpr tZRPIXEL32 kZeroRule = {150, 150, 150, 255};
constexpr tZRPIXEL32 kCurve = {200, 60, 0, 255};

/// Rounding errors just above a multiple don't lift it to the next.
int32_t TenAbove(double decibels) { return static_cast<int32_t>(std::ceil((decibels - 1e-6) / 10)) * 10; }

/// "20", "5k".
std::string FrequencyText(double frequency) {
  char text[24];
  if (frequency >= 1000) {
    std::snprintf(text, sizeof text, "%gk", frequency / 1000);
  } else {
    std::snprintf(text, sizeof text, "%g", frequency);
  }
  return text;
}

}  // namespace

ResponsePlot::ResponsePlot(const CZrIIR& filter, uint32_t rate)
    : lowest_(std::min(10.0, rate / 2e3)), highest_(rate / 2.0) {
  for (int32_t column = kArea.left; column <= kArea.right; ++column) {
    const double part = static_cast<double>(column - kArea.left) / (kArea.right - kArea.left);
    const double frequency = lowest_ * std::pow(highest_ / lowest_, part);
    const double level = 20 * std::log10(std::abs(ResponseAt(filter, frequency / rate)));
    decibels_.push_back(level == level ? std::clamp(level, kSilence, -kSilence) : kSilence);
  }
  const auto [least, most] = std::minmax_element(decibels_.begin(), decibels_.end());
  top_ = TenAbove(*most);
  bottom_ = std::clamp(-TenAbove(-*least), top_ - kMostDecibels, top_ - kLeastDecibels);
}

int32_t ResponsePlot::ColumnOf(double frequency) const {
  const double part = std::log(frequency / lowest_) / std::log(highest_ / lowest_);
  return kArea.left + static_cast<int32_t>(std::lround(part * (kArea.right - kArea.left)));
}

int32_t ResponsePlot::RowOf(double decibels) const {
  const double part = (top_ - decibels) / (top_ - bottom_);
  return kArea.top + static_cast<int32_t>(std::lround(part * (kArea.bottom - kArea.top)));
}

void ResponsePlot::DrawFrequencyAxis(Canvas* canvas) const {
  int64_t free = 0;  // Where the next label may start.
  for (double decade = std::pow(10, std::floor(std::log10(lowest_))); decade <= highest_; decade *= 10) {
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double frequency = factor * decade;
      if (frequency < lowest_ * 0.999 || frequency > highest_) continue;
      const int32_t column = ColumnOf(frequency);
      canvas->Line(column, kArea.top, column, kArea.bottom, kRule);
      const std::string text = FrequencyText(frequency);
      const int64_t left = column - Canvas::TextWidth(text) / 2;
      if (left < free) continue;
      canvas->Text(left, kArea.bottom + 6, text, kInk);
      free = left + Canvas::TextWidth(text) + kCharacterWidth;
    }
  }
  canvas->Text(kArea.right - Canvas::TextWidth("Hz"), kArea.bottom + 8 + kCharacterHeight, "Hz", kInk);
}

void ResponsePlot::DrawLevelAxis(Canvas* canvas) const {
  const int32_t step = top_ - bottom_ > 60 ? 20 : top_ - bottom_ > 30 ? 10 : 5;
  for (int32_t level = top_; level >= bottom_; --level) {
    if (level % step != 0) continue;
    const int32_t row = RowOf(level);
    canvas->Line(kArea.left, row, kArea.right, row, level == 0 ? kZeroRule : kRule);
    const std::string text = std::to_string(level);
    canvas->Text(kArea.left - 4 - Canvas::TextWidth(text), row - kCharacterHeight / 2 + 1, text, kInk);
  }
  canvas->Text(2, kArea.bottom + 8 + kCharacterHeight, "dB", kInk);
}

Image ResponsePlot::Draw() const {
  Image image(kWidth, kHeight);
  Canvas canvas(image);
  canvas.FillRect(0, 0, kWidth, kHeight, kPaper);
  DrawFrequencyAxis(&canvas);
  DrawLevelAxis(&canvas);
  canvas.FrameRect(kArea.left, kArea.top, kArea.right - kArea.left + 1, kArea.bottom - kArea.top + 1, kInk);
  int32_t before = RowOf(std::max<double>(decibels_[0], bottom_));
  for (size_t index = 0; index < decibels_.size(); ++index) {
    // A level below the plot runs along its bottom.
    const int32_t row = RowOf(std::max<double>(decibels_[index], bottom_));
    const int32_t column = kArea.left + static_cast<int32_t>(index);
    canvas.Line(column, before, column, row, kCurve);
    before = row;
  }
  return image;
}

}  // namespace host
