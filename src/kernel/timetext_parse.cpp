// SPDX-License-Identifier: Apache-2.0
// Reads positions.
#include <algorithm>
#include <string_view>

#include "kernel/digit_groups.h"
#include "kernel/internationals.h"
#include "kernel/number_token.h"
#include "kernel/time_arithmetic.h"
#include "kernel/timetext_table.h"

namespace marlo {
namespace {

constexpr double kLeastTicks = -0x1p62;
constexpr double kMostTicks = 0x1p61;
constexpr double kLeastSeconds = -461'168'601'842.0;
constexpr double kMostSeconds = 230'584'300'921.0;

/// What is read, with where the reading stopped.
struct Reading {
  int64_t ticks;
  const char16_t* end;
};

bool Equal(const tZRLOCALESIGN& left, const tZRLOCALESIGN& right) noexcept {
  return std::u16string_view(left.text, left.length) == std::u16string_view(right.text, right.length);
}

// The thousands separator, unless it is what sets a measure, a beat and a tick apart: then no group has one.
const tZRLOCALESIGN* ThousandsOfMusic() noexcept {
  const tZRLOCALESIGN& sign = internationals.thousandsSeparator;
  return Equal(sign, internationals.measureToBeat) || Equal(sign, internationals.beatToTick) ? nullptr : &sign;
}

// Reads groups that stand left-aligned; what isn't there is 0.
template <size_t kCount>
const char16_t* ReadFromLeft(const char16_t* text, const tZRLOCALESIGN* thousandsSeparator, int64_t (&values)[kCount],
                             size_t count = kCount) noexcept {
  DigitGroups groups(text, {.trailingZeros = false, .pairs = false, .thousandsSeparator = thousandsSeparator});
  DigitGroup group;
  for (size_t i = 0; i < count && groups.Next(&group); ++i) values[i] = group.Value();
  return groups.End();
}

// Hours, minutes, seconds and the last group as it was typed; right-aligned.
struct ClockText {
  int64_t fields[3] = {};
  DigitGroup last{};
  const char16_t* end;

  // A lone number without a separator in front goes to the seconds if `loneIsSeconds`.
  ClockText(const char16_t* text, bool hasLast, bool loneIsSeconds) noexcept {
    DigitGroups groups(text, {.trailingZeros = true, .pairs = false});
    DigitGroup read[4];
    uint32_t count = 0;
    while (count < (hasLast ? 4u : 3u) && groups.Next(&read[count])) ++count;
    end = groups.End();
    if (count == 0) return;
    if (hasLast && !(loneIsSeconds && count == 1 && !groups.StartsWithSeparator())) last = read[--count];
    for (uint32_t i = 0; i < count; ++i) fields[3 - count + i] = read[i].Value();
  }
};

// Three digits of a fraction; those that aren't there are 0, those behind are cut.
int64_t Milliseconds(const DigitGroup& group) noexcept {
  int64_t value = 0;
  for (uint32_t i = 0; i < 3; ++i) value = value * 10 + (i < group.characters ? group.start[i] - u'0' : 0);
  return value;
}

Reading ReadCode(const char16_t* text, uint32_t type) noexcept {
  _smpteval code{};
  code.type = type;
  const char16_t* end = ZRSMPTE_TextToSMPTE(text, &code);
  if (end == nullptr) {
    for (end = text; *end != 0;) ++end;
  }
  return {ZrHMSFToNanoTime(&code, 75), end};
}

Reading ReadValue(const char16_t* text, const _zrposfmt& format, uint32_t flags) noexcept {
  Reading reading{0, text};
  const int32_t shortText = (flags & ZRPOSF_SHORT) != 0;
  if (format.format > ZRPOS_CLOCK) return reading;
  if (const uint32_t type = PositionFormatOf(format.format).codeType; type != 0) return ReadCode(text, type);
  switch (format.format) {
    case ZRPOS_SAMPLES: {
      const auto samples = static_cast<double>(ReadSigned(text, NumberForm::kLocale, &reading.end));
      if (format.sampleRate == 0) break;
      const double rate = format.sampleRate;
      const double held =
          std::clamp(samples, kLeastTicks / kTicksPerSecond * rate, kMostTicks / kTicksPerSecond * rate);
      reading.ticks = Truncate(held * kTicksPerSecond / rate + 0.5);
      break;
    }
    case ZRPOS_TIME:
      reading.ticks = ZrTextToTimeToken(text, &format, shortText, &reading.end) * 10'000;
      break;
    case ZRPOS_SECONDS: {
      const double seconds = ReadReal(text, NumberForm::kLocale, &reading.end);
      reading.ticks = Truncate(std::clamp(seconds, kLeastSeconds, kMostSeconds) * kTicksPerSecond);
      break;
    }
    case ZRPOS_TIMEFRAMES:
      reading.ticks = ZrTextToHMSFToken(text, &format, shortText, &reading.end);
      break;
    case ZRPOS_FRAMES: {
      const double frames = std::clamp(ReadReal(text, NumberForm::kLocale, &reading.end), kLeastSeconds, kMostSeconds);
      reading.ticks = Truncate(frames / format.frameRate * kTicksPerSecond + 0.5);
      break;
    }
    case ZRPOS_MEASURES:
    case ZRPOS_MEASURESFROM0:
      reading.ticks = ZrTextToMusicTimeToken(text, &format, flags, &reading.end);
      break;
    case ZRPOS_NANO:
      reading.ticks = ReadSigned(text, NumberForm::kLocale, &reading.end);
      break;
    case ZRPOS_MICROSECONDS: {
      constexpr int64_t kMost = INT64_MAX / 10;
      reading.ticks = std::clamp(ReadSigned(text, NumberForm::kLocale, &reading.end), -kMost, kMost) * 10;
      break;
    }
    case ZRPOS_FEET40:
    case ZRPOS_FEET16:
      reading.ticks = ZrTextToFeetAndFramesToken(text, &format, format.format == ZRPOS_FEET40, &reading.end);
      break;
    case ZRPOS_CDFRAMES:
      return ReadCode(text, 0);
    default:  // beats and the shortest clock are shown only
      break;
  }
  return reading;
}

Reading ReadPosition(const char16_t* text, const _zrposfmt& format, uint32_t flags, int64_t defaultTicks) noexcept {
  const char16_t* start = SkipBlanks(text);
  const bool negative = *start == u'-';
  if (negative) ++start;
  Reading reading = *start == 0 ? Reading{defaultTicks, start} : ReadValue(start, format, flags);
  if (negative) reading.ticks = Negate(reading.ticks);
  if ((flags & ZRPOSF_LENGTH) == 0) reading.ticks = AddTicks(reading.ticks, format.zeroOffset);
  return reading;
}

void StoreEnd(const char16_t** end, const char16_t* value) noexcept {
  if (end != nullptr) *end = value;
}

void Store(int32_t* output, int64_t value) noexcept {
  if (output != nullptr) *output = static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

// Musical fields are held so that their products stay within 64 bits.
int64_t HoldField(int64_t value) noexcept { return std::min<int64_t>(value, INT32_MAX); }

// Sums of products of a field, a rate and a count, of up to 79 bits.
int64_t WeighedSum(double beats, double ticksPerBeat, double multiplier, double ticks) noexcept {
  return Truncate(beats * ticksPerBeat + multiplier * ticks);
}

}  // namespace
}  // namespace marlo

using namespace marlo;

int64_t ZrTextToNanoTimeToken(const char16_t* text, const _zrposfmt* format, uint32_t flags,
                              const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr || format == nullptr) return 0;
  const Reading reading = ReadPosition(text, *format, flags, 0);
  StoreEnd(end, reading.end);
  return reading.ticks;
}

int64_t ZrTextToNanoTimeTokenEx(const char16_t* text, const _zrposfmt* format, uint32_t flags, int64_t defaultTicks,
                                int64_t minimumTicks, int64_t maximumTicks, const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr || format == nullptr || end == nullptr) return defaultTicks;
  Reading reading = ReadPosition(text, *format, flags, defaultTicks);
  *end = reading.end;
  if (reading.ticks == 0 && *SkipBlanks(reading.end) != 0) reading.ticks = defaultTicks;
  if (reading.ticks < minimumTicks) return minimumTicks;
  return reading.ticks > maximumTicks ? maximumTicks : reading.ticks;
}

int64_t ZrTextToTimeToken(const char16_t* text, const _zrposfmt*, int32_t shortText, const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr) return 0;
  const ClockText clock(text, shortText == 0, true);
  StoreEnd(end, clock.end);
  // Within what a time in 100-ns units can hold twice over.
  constexpr int64_t kMost = (int64_t{1} << 62) / 10'000;
  const auto& [hours, minutes, seconds] = clock.fields;
  return std::min(((hours * 60 + minutes) * 60 + seconds) * 1000 + Milliseconds(clock.last), kMost);
}

int64_t ZrTextToHMSFToken(const char16_t* text, const _zrposfmt* format, int32_t shortText,
                          const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr || format == nullptr) return 0;
  const ClockText clock(text, shortText == 0, false);
  StoreEnd(end, clock.end);
  const auto& [hours, minutes, seconds] = clock.fields;
  const double whole = static_cast<double>((hours * 60 + minutes) * 60 + seconds);
  return Truncate((whole + static_cast<double>(clock.last.Value()) / format->frameRate) * kTicksPerSecond + 0.5);
}

int64_t ZrTextToMusicTimeToken(const char16_t* text, const _zrposfmt* format, uint32_t flags,
                               const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr || format == nullptr) return 0;
  int64_t values[3] = {};
  StoreEnd(end, ReadFromLeft(text, ThousandsOfMusic(), values, (flags & ZRPOSF_SHORT) != 0 ? 2 : 3));
  auto& [measures, beats, musicTicks] = values;
  if (format->format == ZRPOS_MEASURES && (flags & ZRPOSF_LENGTH) == 0) {
    measures -= measures != 0;
    beats -= beats != 0;
  }
  const double allBeats = static_cast<double>(musicTicks) / format->ticksPerBeat +
                          static_cast<double>(format->beatsPerMeasure) * static_cast<double>(measures) +
                          static_cast<double>(beats);
  return Truncate(allBeats / format->tempo * (60 * kTicksPerSecond));
}

int64_t ZrTextToFeetAndFramesToken(const char16_t* text, const _zrposfmt* format, int32_t forty,
                                   const char16_t** end) noexcept {
  StoreEnd(end, text);
  if (text == nullptr || format == nullptr) return 0;
  int64_t values[2] = {};
  StoreEnd(end, ReadFromLeft(text, &internationals.thousandsSeparator, values));
  const int64_t frames = values[0] * (forty != 0 ? 40 : 16) + values[1];
  return RoundDown(static_cast<double>(frames) * kTicksPerSecond / format->frameRate + 0.00001);
}

int64_t ZrTextToMeasuresBeatsTicks(const char16_t* text, const _zrposfmt* format, int32_t oneBased,
                                   uint32_t tickMultiplier, int32_t* measures, int32_t* beats,
                                   int32_t* musicTicks) noexcept {
  int64_t values[3] = {};
  if (text != nullptr && format != nullptr) {
    const char16_t* start = SkipBlanks(text);
    const bool negative = *start == u'-';
    ReadFromLeft(start + negative, ThousandsOfMusic(), values);
    for (int64_t& value : values) value = HoldField(value);
    if (negative) values[0] = -values[0];
    if (oneBased != 0) {
      values[0] -= values[0] > 0;
      values[1] -= values[1] > 0;
    }
  }
  Store(measures, values[0]);
  Store(beats, values[1]);
  Store(musicTicks, values[2]);
  if (format == nullptr) return 0;
  const int64_t allBeats = format->beatsPerMeasure * values[0] + values[1];
  return WeighedSum(static_cast<double>(allBeats), format->ticksPerBeat, tickMultiplier,
                    static_cast<double>(values[2]));
}

int64_t ZrTextToBeatsTicks(const char16_t* text, const _zrposfmt* format, uint32_t tickMultiplier, int32_t* beats,
                           int32_t* musicTicks) noexcept {
  int64_t values[2] = {};
  if (text != nullptr) ReadFromLeft(text, ThousandsOfMusic(), values);
  for (int64_t& value : values) value = HoldField(value);
  Store(beats, values[0]);
  Store(musicTicks, values[1]);
  if (format == nullptr) return 0;
  return WeighedSum(static_cast<double>(values[0]), format->ticksPerBeat, tickMultiplier,
                    static_cast<double>(values[1]));
}

int64_t ZrTextToTicks(const char16_t* text, uint32_t tickMultiplier, int32_t* musicTicks) noexcept {
  int64_t values[1] = {};
  if (text != nullptr) ReadFromLeft(text, ThousandsOfMusic(), values);
  values[0] = HoldField(values[0]);
  Store(musicTicks, values[0]);
  return tickMultiplier * values[0];
}
