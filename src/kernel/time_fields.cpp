// SPDX-License-Identifier: Apache-2.0
// Splits times into the fields of a clock and of a bar of music, and puts them together again.
#include <algorithm>

#include "kernel/time_arithmetic.h"
#include "marlo110k/printf.h"
#include "marlo110k/timetext.h"

namespace marlo {
namespace {

constexpr uint32_t kSecondsPerDay = 86'400;

bool IsTimeCode(const _smpteval& record) noexcept { return record.type >= ZRSMPTE_30 && record.type <= ZRSMPTE_2398; }

void SplitClock(int64_t ticks, _smpteval* record, double rate) noexcept {
  constexpr double kLeastRate = 0.01;  // a rate at or below it has no frames to round to
  constexpr double kTolerance = 1.5e-8;
  double seconds = static_cast<double>(ticks) * 1e-7;
  if (rate > kLeastRate) seconds += 0.5 / rate;
  if (seconds < 0) seconds -= std::floor(seconds / kSecondsPerDay) * kSecondsPerDay;
  auto whole = static_cast<uint64_t>(seconds);
  double frames = std::floor((seconds - static_cast<double>(whole)) * rate + kTolerance);
  // The tolerance may complete a second: the clock then goes on, for there is no frame of that number.
  if (rate >= 1 && frames >= rate) {
    frames = 0;
    ++whole;
  }
  *record = {record->type,
             static_cast<uint32_t>(whole / 3600 % 24),
             static_cast<uint32_t>(whole / 60 % 60),
             static_cast<uint32_t>(whole % 60),
             static_cast<uint32_t>(std::max<int64_t>(Truncate(frames), 0)),
             0};
}

// A part is at most what its divisor leaves, so only the measures can be large.
int32_t TakeWhole(double* value) noexcept {
  const int64_t whole = Truncate(*value);
  *value -= static_cast<double>(whole);
  return static_cast<int32_t>(std::clamp<int64_t>(whole, INT32_MIN, INT32_MAX));
}

}  // namespace
}  // namespace marlo

using namespace marlo;

void ZrNanoTimeToHMSF(int64_t ticks, _smpteval* record, double rate) noexcept {
  if (record == nullptr) return;
  if (IsTimeCode(*record)) {
    ZRSMPTE_NanoToSMPTE(ticks, record);
  } else {
    SplitClock(ticks, record, rate);
  }
}

int64_t ZrHMSFToNanoTime(const _smpteval* record, double rate) noexcept {
  if (record == nullptr) return 0;
  if (IsTimeCode(*record)) return ZRSMPTE_SMPTEToNanos(record);
  const double seconds = record->hours * 3600.0 + record->minutes * 60.0 + record->seconds + record->frames / rate;
  return Truncate(seconds * kTicksPerSecond + 0.5);
}

void ZrNanoTimeToMeasures(int64_t ticks, const _zrposfmt* format, int32_t* measures, int32_t* beats,
                          int32_t* musicTicks) noexcept {
  if (format == nullptr) return;
  constexpr double kMinutesPerTick = 1.6666666666666665e-9;
  // In measures, not in ticks: so large a bar shows tick 1 at 0 that 20,000 ticks or more fit into it.
  constexpr double kTolerance = 0.00005;
  double rest = static_cast<double>(ticks) * format->tempo / format->beatsPerMeasure * kMinutesPerTick + kTolerance;
  const int32_t wholeMeasures = TakeWhole(&rest);
  rest *= format->beatsPerMeasure;
  const int32_t wholeBeats = TakeWhole(&rest);
  rest *= format->ticksPerBeat;
  if (measures != nullptr) *measures = wholeMeasures;
  if (beats != nullptr) *beats = wholeBeats;
  if (musicTicks != nullptr) *musicTicks = TakeWhole(&rest);
}

int32_t ZrMeasuresAndTicksToText(char16_t* destination, const _zrposfmt* format, int32_t measures, int32_t musicTicks,
                                 int32_t oneBased, int32_t noTicks, uint32_t tickDivisor) noexcept {
  if (destination == nullptr || format == nullptr) return 0;
  const int64_t beatValue = std::max<int64_t>(format->beatValue, 1);
  const int64_t ticksPerBeat = std::max<int64_t>(int64_t{format->ticksPerBeat} * 4 / beatValue, 1);
  int64_t shownMeasures = measures;
  int64_t ticks = musicTicks;
  if (ticks < 0) {
    ticks += int64_t{format->beatsPerMeasure} * format->ticksPerBeat * 4 / beatValue;
    --shownMeasures;
  }
  int64_t beats = ticks / ticksPerBeat % std::max<int64_t>(format->beatsPerMeasure, 1);
  const int64_t rest = ticks % ticksPerBeat / std::max<uint32_t>(tickDivisor, 1);
  if (oneBased != 0) {
    if (shownMeasures >= 0) ++shownMeasures;
    ++beats;
  }
  const auto measure = static_cast<int32_t>(shownMeasures);
  const auto beat = static_cast<uint32_t>(beats);
  if (noTicks != 0) return ZrPrintF(destination, u"%d$&:%1u", measure, beat);
  return ZrPrintF(destination, u"%d$&:%u$&.%03u", measure, beat, static_cast<uint32_t>(rest));
}

int32_t ZrTicksToText(char16_t* destination, const _zrposfmt* format, int64_t musicTicks, int32_t oneBased,
                      int32_t noTicks, uint32_t tickDivisor) noexcept {
  if (format == nullptr) return 0;
  const int64_t perMeasure = std::max<int64_t>(int64_t{format->beatsPerMeasure} * format->ticksPerBeat, 1);
  int64_t measures = musicTicks / perMeasure;
  int64_t rest = musicTicks % perMeasure;
  if (rest < 0) {
    rest += perMeasure;
    --measures;
  }
  return ZrMeasuresAndTicksToText(destination, format, static_cast<int32_t>(measures), static_cast<int32_t>(rest),
                                  oneBased, noTicks, tickDivisor);
}
