// SPDX-License-Identifier: Apache-2.0
// Writes positions.
#include "marlo110k/timetext.h"

#include <limits>

#include "kernel/time_arithmetic.h"
#include "kernel/timetext_table.h"
#include "marlo110k/printf.h"

namespace marlo {
namespace {

// A caller who knows the buffer to be large enough.
constexpr uint32_t kUnbounded = INT32_MAX;

template <class... Values>
int32_t Put(char16_t* destination, uint32_t size, const char16_t* text, Values... values) noexcept {
  uint32_t written = 0;
  ZrCchPrintF(destination, size, &written, text, values...);
  return static_cast<int32_t>(written);
}

double Seconds(int64_t ticks) noexcept { return static_cast<double>(ticks) / kTicksPerSecond; }

// Lifts a frame's own time, which was cut to whole units, back over the frame's start.
double Frames(int64_t ticks, double rate) noexcept {
  constexpr double kTolerance = 0.00001;
  return Seconds(ticks) * rate + kTolerance;
}

int32_t PutReal(char16_t* destination, uint32_t size, const char16_t* text, double value) noexcept {
  constexpr char16_t kWhole[] = u"$.0f";
  for (size_t i = 0; text[i] == kWhole[i]; ++i) {
    if (text[i] == 0) return Put(destination, size, u"$I64d", Truncate(value));
  }
  return Put(destination, size, text, value);
}

int32_t PutClock(char16_t* destination, uint32_t size, const char16_t* text, int64_t ticks, double rate) noexcept {
  _smpteval clock{};
  ZrNanoTimeToHMSF(ticks, &clock, rate);
  return Put(destination, size, text, clock.hours, clock.minutes, clock.seconds, clock.frames);
}

int32_t PutShortestClock(char16_t* destination, uint32_t size, int64_t ticks) noexcept {
  _smpteval clock{};
  ZrNanoTimeToHMSF(ticks, &clock, 1000);
  if (clock.hours != 0) {
    return Put(destination, size, u"%u$:%02u$:%02u", clock.hours, clock.minutes, clock.seconds);
  }
  return Put(destination, size, clock.minutes < 10 ? u"%u$:%02u" : u"%02u$:%02u", clock.minutes, clock.seconds);
}

/// Counted from 0 or from 1; the largest count stays.
int32_t Counted(int32_t value, bool fromOne) noexcept {
  return value == std::numeric_limits<int32_t>::max() ? value : value + (fromOne ? 1 : 0);
}

int32_t PutMusic(char16_t* destination, uint32_t size, const _zrposfmt& format, const char16_t* text, int64_t ticks,
                 bool fromOne) noexcept {
  int32_t measures = 0;
  int32_t beats = 0;
  int32_t musicTicks = 0;
  ZrNanoTimeToMeasures(ticks, &format, &measures, &beats, &musicTicks);
  return Put(destination, size, text, Counted(measures, fromOne), Counted(beats, fromOne), musicTicks);
}

int32_t PutFeet(char16_t* destination, uint32_t size, const char16_t* text, int64_t ticks, double rate,
                int64_t framesPerFoot) noexcept {
  const int64_t frames = RoundDown(Frames(ticks, rate));
  return Put(destination, size, text, frames / framesPerFoot, frames % framesPerFoot);
}

int32_t PutCode(char16_t* destination, uint32_t size, const char16_t* text, int64_t ticks, uint32_t type) noexcept {
  _smpteval code{};
  code.type = type;
  ZrNanoTimeToHMSF(ticks, &code, 0);
  return Put(destination, size, text, code.hours, code.minutes, code.seconds, code.frames);
}

// `text` is null for the format's own.
int32_t PutPosition(char16_t* destination, uint32_t size, const _zrposfmt* position, int64_t ticks,
                    const char16_t* text, uint32_t flags) noexcept {
  if (destination == nullptr || position == nullptr || size == 0) return 0;
  const _zrposfmt& format = *position;
  const bool isLength = (flags & ZRPOSF_LENGTH) != 0;
  if (!isLength) ticks = AddTicks(ticks, Negate(format.zeroOffset));
  if (ticks < 0) {
    if (size == 1) {
      *destination = 0;
      return 0;
    }
    *destination = u'-';
    const _zrposfmt fromZero = {format.format,    format.sampleRate,      format.frameRate,   format.tempo, 0,
                                format.beatValue, format.beatsPerMeasure, format.ticksPerBeat};
    return 1 + PutPosition(destination + 1, size - 1, &fromZero, Negate(ticks), text, flags);
  }
  if (format.format == ZRPOS_CLOCK && text == nullptr) return PutShortestClock(destination, size, ticks);
  const PositionFormat& row = PositionFormatOf(format.format);
  if (text == nullptr) text = (flags & ZRPOSF_SHORT) != 0 ? row.shortText : row.fullText;
  if (row.codeType != 0) return PutCode(destination, size, text, ticks, row.codeType);
  switch (format.format) {
    case ZRPOS_SAMPLES:
      return Put(destination, size, text, Truncate(Seconds(ticks) * format.sampleRate + 0.5));
    case ZRPOS_TIME:
    case ZRPOS_CLOCK:
      return PutClock(destination, size, text, ticks, 1000);
    case ZRPOS_SECONDS:
      return PutReal(destination, size, text, Seconds(ticks));
    case ZRPOS_TIMEFRAMES:
      return PutClock(destination, size, text, ticks, format.frameRate);
    case ZRPOS_FRAMES:
      return PutReal(destination, size, text, Frames(ticks, format.frameRate));
    case ZRPOS_MEASURES:
    case ZRPOS_MEASURESFROM0:
      return PutMusic(destination, size, format, text, ticks, format.format == ZRPOS_MEASURES && !isLength);
    case ZRPOS_MICROSECONDS:
      return Put(destination, size, text, static_cast<int64_t>((static_cast<uint64_t>(ticks) + 5) / 10));
    case ZRPOS_BEATS:
      return PutReal(destination, size, text, static_cast<double>(ticks) * format.tempo / 60 / kTicksPerSecond);
    case ZRPOS_FEET40:
      return PutFeet(destination, size, text, ticks, format.frameRate, 40);
    case ZRPOS_FEET16:
      return PutFeet(destination, size, text, ticks, format.frameRate, 16);
    case ZRPOS_CDFRAMES:
      return PutClock(destination, size, text, ticks, 75);
    default:
      return Put(destination, size, text, ticks);
  }
}

}  // namespace
}  // namespace marlo

using namespace marlo;

int32_t ZrNanoTimeToText(char16_t* destination, const _zrposfmt* format, int64_t ticks, int32_t shortText) noexcept {
  return ZrNanoTimeToTextN(destination, kUnbounded, format, ticks, shortText);
}

int32_t ZrNanoTimeToTextN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                          int32_t shortText) noexcept {
  return PutPosition(destination, size, format, ticks, nullptr, shortText != 0 ? uint32_t{ZRPOSF_SHORT} : 0);
}

int32_t ZrNanoTimeToTextEx(char16_t* destination, const _zrposfmt* format, int64_t ticks, uint32_t flags) noexcept {
  return PutPosition(destination, kUnbounded, format, ticks, nullptr, flags);
}

int32_t ZrNanoTimeToTextExN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                            uint32_t flags) noexcept {
  return PutPosition(destination, size, format, ticks, nullptr, flags);
}

int32_t ZrNanoTimeToTextFormat(char16_t* destination, const _zrposfmt* format, int64_t ticks,
                               const char16_t* formatText, uint32_t flags) noexcept {
  return ZrNanoTimeToTextFormatN(destination, kUnbounded, format, ticks, formatText, flags);
}

int32_t ZrNanoTimeToTextFormatN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                                const char16_t* formatText, uint32_t flags) noexcept {
  return PutPosition(destination, size, format, ticks, formatText, flags);
}
