// SPDX-License-Identifier: Apache-2.0
// Peaks as columns with soft edges; closer than a frame a pixel, the curve between the samples.
#include "waveform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "canvas.h"
#include "errors.h"
#include "marlo110k/waveformat.h"

namespace host {
namespace {

constexpr tZRPIXEL32 kBackground = {28, 24, 22, 255};
constexpr tZRPIXEL32 kLane = {40, 34, 31, 255};
constexpr tZRPIXEL32 kGrid = {62, 54, 50, 255};
constexpr tZRPIXEL32 kZeroLine = {104, 94, 88, 255};
constexpr tZRPIXEL32 kWave = {230, 190, 92, 255};
constexpr tZRPIXEL32 kClipped = {80, 80, 240, 255};
constexpr tZRPIXEL32 kText = {190, 184, 180, 255};

constexpr int32_t kScaleWidth = 40;
constexpr int32_t kLaneGap = 2;
/// A silent stretch still shows as a line of this many pixels.
constexpr double kLeastThickness = 1.0;
/// Pixels from sample to sample from which on each is marked.
constexpr double kMarkedSpacing = 6;

/// The smallest and the largest value in each column of pixels; columns behind the data are missing.
struct Columns {
  std::vector<float> pairs;  ///< Column by column, channel by channel.
  int32_t count = 0;
};

struct Lane {
  int32_t top;
  int32_t height;

  double YOf(double value) const { return top + (1 - value) * (height - 1) / 2.0 + 0.5; }
};

uint8_t Blend(uint8_t below, uint8_t above, double share) {
  return static_cast<uint8_t>(std::lround(below + (above - below) * share));
}

/// Fills one column of pixels between two heights; the ends cover their pixels in part.
void FillSpan(Image* image, int32_t x, const Lane& lane, double top, double bottom, tZRPIXEL32 color) {
  top = std::max<double>(top, lane.top);
  bottom = std::min<double>(bottom, lane.top + lane.height);
  for (auto y = static_cast<int32_t>(std::floor(top)); y < bottom; ++y) {
    const double share = std::min<double>(bottom, y + 1) - std::max<double>(top, y);
    tZRPIXEL32& pixel = image->Row(y)[x];
    pixel = {Blend(pixel.b, color.b, share), Blend(pixel.g, color.g, share), Blend(pixel.r, color.r, share), 255};
  }
}

/// The columns of the curve through single samples.
Columns ColumnsOfCurve(const std::vector<float>& samples, size_t channels, int32_t width, int64_t count) {
  Columns columns;
  const auto have = static_cast<int64_t>(samples.size() / channels);
  if (have == 0) return columns;
  const auto valueAt = [&](double frame, size_t channel) {
    const double place = std::clamp(frame, 0.0, static_cast<double>(have - 1));
    const auto left = static_cast<int64_t>(place);
    const int64_t right = std::min(left + 1, have - 1);
    const double share = place - static_cast<double>(left);
    return (1 - share) * samples[static_cast<size_t>(left) * channels + channel] +
           share * samples[static_cast<size_t>(right) * channels + channel];
  };
  const double framesPerPixel = static_cast<double>(count) / width;
  columns.count = static_cast<int32_t>(std::min<int64_t>(width, have * width / count));
  for (int32_t x = 0; x < columns.count; ++x) {
    const double from = x * framesPerPixel;
    const double to = from + framesPerPixel;
    for (size_t channel = 0; channel < channels; ++channel) {
      const double begin = valueAt(from, channel);
      const double end = valueAt(to, channel);
      double low = std::min(begin, end);
      double high = std::max(begin, end);
      // At less than a frame a pixel at most one sample lies inside.
      const double inside = valueAt(std::ceil(from), channel);
      if (std::ceil(from) < to) {
        low = std::min(low, inside);
        high = std::max(high, inside);
      }
      columns.pairs.push_back(static_cast<float>(low));
      columns.pairs.push_back(static_cast<float>(high));
    }
  }
  return columns;
}

void DrawScale(Canvas* canvas, const Lane& lane, int32_t width) {
  canvas->FillRect(kScaleWidth, lane.top, width - kScaleWidth, lane.height, kLane);
  double lastLabel = -1e9;
  for (const int decibels : {0, -3, -6, -12, -18, -24, -36}) {
    const double level = std::pow(10.0, decibels / 20.0);
    const auto upper = static_cast<int32_t>(lane.YOf(level));
    const auto lower = static_cast<int32_t>(lane.YOf(-level));
    canvas->FillRect(kScaleWidth, upper, width - kScaleWidth, 1, kGrid);
    canvas->FillRect(kScaleWidth, lower, width - kScaleWidth, 1, kGrid);
    // Labels that would touch their neighbours are left out.
    const bool room =
        upper - lastLabel >= kCharacterHeight + 2 && lane.top + lane.height / 2 - upper >= kCharacterHeight;
    if (!room) continue;
    lastLabel = upper;
    const std::string text = std::to_string(decibels);
    const int64_t left = kScaleWidth - 6 - Canvas::TextWidth(text);
    const int32_t textTop = std::max(upper - kCharacterHeight / 2 + 1, lane.top);
    canvas->Text(left, textTop, text, kText);
    if (decibels != 0) canvas->Text(left, lower - kCharacterHeight / 2 + 1, text, kText);
  }
  const auto middle = static_cast<int32_t>(lane.YOf(0));
  canvas->FillRect(kScaleWidth, middle, width - kScaleWidth, 1, kZeroLine);
  canvas->Text(2, middle - kCharacterHeight / 2 + 1, "-INF", kText);
}

/// The smallest usual step of at least so many seconds.
double RulerStep(double least) {
  constexpr double kMinutes[] = {60, 120, 300, 600, 1200, 1800, 3600, 7200, 14400, 21600, 43200, 86400};
  if (least > 30) {
    for (const double step : kMinutes) {
      if (step >= least) return step;
    }
    return std::ceil(least / 86400) * 86400;
  }
  if (least > 20) return 30;
  const double decade = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * decade >= least) return factor * decade;
  }
  return 10 * decade;
}

/// "1:02:03.25" with as many decimals as the step needs.
std::string RulerText(double seconds, double step) {
  const int decimals = std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 0, 6);
  const double unit = std::pow(10.0, decimals);
  const auto whole = static_cast<int64_t>(std::llround(seconds * unit));
  const auto scale = static_cast<int64_t>(unit);
  const int64_t full = whole / scale;
  char text[48];
  std::snprintf(text, sizeof text, "%lld:%02d:%02d", static_cast<long long>(full / 3600),
                static_cast<int>(full / 60 % 60), static_cast<int>(full % 60));
  std::string result = full >= 3600 ? text : text + 2;
  if (decimals > 0) {
    std::snprintf(text, sizeof text, ".%0*lld", decimals, static_cast<long long>(whole % scale));
    result += text;
  }
  return result;
}

void DrawRuler(Canvas* canvas, const WaveformView& view, uint32_t rate) {
  const int32_t top = view.height - kWaveformRulerHeight;
  const int32_t plot = view.width - kScaleWidth;
  const double from = static_cast<double>(view.first) / rate;
  const double length = static_cast<double>(view.count) / rate;
  constexpr double kLabelPixels = 90;
  const double step = RulerStep(std::max(length * kLabelPixels / plot, 1e-6));
  const auto xOf = [&](double seconds) {
    return kScaleWidth + static_cast<int32_t>(std::lround((seconds - from) / length * plot));
  };
  canvas->FillRect(kScaleWidth, top, plot, 1, kText);
  for (auto tick = static_cast<int64_t>(std::ceil(from / step * 5 - 1e-6));; ++tick) {
    const double seconds = static_cast<double>(tick) * step / 5;
    const int32_t x = xOf(seconds);
    if (x >= view.width) break;
    const bool named = tick % 5 == 0;
    canvas->FillRect(x, top, 1, named ? 8 : 4, kText);
    if (!named) continue;
    const std::string text = RulerText(seconds, step);
    if (x + 3 + Canvas::TextWidth(text) < view.width) canvas->Text(x + 3, top + 10, text, kText);
  }
}

}  // namespace

Image DrawWaveform(IZrAudioPeak* peak, const WaveformView& view, const char* subject) {
  CZrAudioPeakStreamReader* reader = nullptr;
  Check(peak->GetStreamReader(&reader), subject);
  const WAVEFORMATEX& format = *reader->GetFormat();
  const size_t channels = format.nChannels;
  const int32_t plot = view.width - kScaleWidth;

  Columns columns;
  std::vector<float> samples;
  if (view.count > plot) {
    columns.pairs.resize(static_cast<size_t>(plot) * channels * 2);
    Check(peak->ReadPeaks(view.first, view.count, ZRSAMPLETYPE_FLOAT32, columns.pairs.data(), plot, &columns.count),
          subject);
  } else {
    samples.resize(static_cast<size_t>(view.count) * channels);
    uint32_t frames = 0;
    Check(
        peak->ReadSamples(view.first, ZRSAMPLETYPE_FLOAT32, samples.data(), static_cast<uint32_t>(view.count), &frames),
        subject);
    samples.resize(frames * channels);
    columns = ColumnsOfCurve(samples, channels, plot, view.count);
  }

  Image image(view.width, view.height);
  Canvas canvas(image);
  canvas.FillRect(0, 0, view.width, view.height, kBackground);
  const int32_t room = view.height - kWaveformRulerHeight;
  for (size_t channel = 0; channel < channels; ++channel) {
    const auto edge = [&](size_t index) { return static_cast<int32_t>(static_cast<int64_t>(index) * room / channels); };
    const Lane lane = {edge(channel), edge(channel + 1) - edge(channel) - kLaneGap};
    DrawScale(&canvas, lane, view.width);
    for (int32_t x = 0; x < columns.count; ++x) {
      const float* pair = &columns.pairs[(static_cast<size_t>(x) * channels + channel) * 2];
      double top = lane.YOf(pair[1]);
      double bottom = lane.YOf(pair[0]);
      const double missing = std::max(kLeastThickness - (bottom - top), 0.0) / 2;
      top -= missing;
      bottom += missing;
      // Float samples may pass full scale.
      const bool clipped = pair[0] < -1 || pair[1] > 1;
      FillSpan(&image, kScaleWidth + x, lane, top, bottom, clipped ? kClipped : kWave);
    }
    const double spacing = static_cast<double>(plot) / static_cast<double>(view.count);
    if (spacing < kMarkedSpacing) continue;
    for (size_t frame = 0; frame < samples.size() / channels; ++frame) {
      const auto x = kScaleWidth + static_cast<int64_t>(static_cast<double>(frame) * spacing);
      const auto y = static_cast<int64_t>(lane.YOf(samples[frame * channels + channel]));
      canvas.FillRect(x - 1, y - 1, 3, 3, kWave);
    }
  }
  DrawRuler(&canvas, view, format.nSamplesPerSec);
  return image;
}

}  // namespace host
