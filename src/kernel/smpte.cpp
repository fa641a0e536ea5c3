// SPDX-License-Identifier: Apache-2.0
// Arithmetic of time codes.
#include "marlo110k/smpte.h"

#include <tuple>

#include "kernel/digit_groups.h"
#include "kernel/time_arithmetic.h"

namespace marlo {
namespace {

struct CodeKind {
  uint32_t framesPerSecond;
  double rate;
  uint32_t framesPerDay;
  bool drops;
};

constexpr uint32_t kTypes = 7;
constexpr CodeKind kKinds[kTypes] = {
    {0, 30, 0, false},  // no type
    {30, 30, 2'592'000, false}, {30, 29.97002997002997, 2'589'408, true},  {25, 25, 2'160'000, false},
    {24, 24, 2'073'600, false}, {30, 29.97002997002997, 2'592'000, false}, {24, 23.976023976023978, 2'073'600, false},
};

constexpr uint32_t kNominalHour = 108'000;
constexpr uint32_t kNominalTenMinutes = 18'000;
constexpr uint32_t kNominalMinute = 1'800;
constexpr uint32_t kNominalDay = 2'592'000;
constexpr uint32_t kDroppedPerHour = 108;
constexpr uint32_t kDroppedPerMinute = 2;

const CodeKind& KindOf(const _smpteval& record) noexcept { return kKinds[record.type < kTypes ? record.type : 0]; }

bool DropsAt(uint32_t minutes) noexcept { return minutes % 10 != 0; }

// The count with the left-out numbers in it. Each round may cross one more minute, so it is repeated until it settles.
uint32_t NominalCount(uint32_t count) noexcept {
  for (uint32_t dropped = 0;;) {
    const uint32_t inHour = count % kNominalHour;
    uint32_t found = count / kNominalHour * kDroppedPerHour;
    if (const uint32_t minute = inHour / kNominalMinute; minute != 0) {
      found += (minute - inHour / kNominalTenMinutes) * kDroppedPerMinute;
    }
    if (found == dropped) return count % kNominalDay;
    count += found - dropped;
    dropped = found;
  }
}

void Clear(_smpteval* record) noexcept { *record = {record->type, 0, 0, 0, 0, 0}; }

// A count of any size and sign, brought into the day.
uint32_t StoreCount(_smpteval* record, int64_t count) noexcept {
  const CodeKind& kind = KindOf(*record);
  Clear(record);
  if (kind.framesPerDay == 0) return 0;
  const int64_t wrapped = count % kind.framesPerDay;
  const auto inDay = static_cast<uint32_t>(wrapped < 0 ? wrapped + kind.framesPerDay : wrapped);
  const uint32_t frames = kind.drops ? NominalCount(inDay) : inDay;
  const uint32_t seconds = frames / kind.framesPerSecond;
  record->hours = seconds / 3600;
  record->minutes = seconds / 60 % 60;
  record->seconds = seconds % 60;
  record->frames = frames % kind.framesPerSecond;
  if (kind.drops && record->seconds == 0 && record->frames < kDroppedPerMinute && DropsAt(record->minutes)) {
    record->frames = kDroppedPerMinute;
  }
  return inDay;
}

void Carry(uint32_t* low, uint32_t* high, uint32_t limit) noexcept {
  *high += *low / limit;
  *low %= limit;
}

}  // namespace
}  // namespace marlo

using namespace marlo;

uint32_t ZRSMPTE_FrameCountToSMPTE(_smpteval* record, uint32_t frameCount) noexcept {
  return record != nullptr ? StoreCount(record, frameCount) : 0;
}

uint32_t ZRSMPTE_SMPTEToFrameCount(const _smpteval* record) noexcept {
  if (record == nullptr) return 0;
  const CodeKind& kind = KindOf(*record);
  uint32_t frames = record->frames;
  if (kind.drops && record->seconds == 0 && frames < kDroppedPerMinute && DropsAt(record->minutes)) {
    frames = kDroppedPerMinute;
  }
  if (kind.framesPerDay == 0) return 0;
  const uint32_t count =
      ((record->hours * 60 + record->minutes) * 60 + record->seconds) * kind.framesPerSecond + frames;
  if (!kind.drops) return count;
  return count - record->hours * kDroppedPerHour - (record->minutes - record->minutes / 10) * kDroppedPerMinute;
}

void ZRSMPTE_AddSMPTE(_smpteval* record, const _smpteval* other) noexcept {
  if (record == nullptr) return;
  StoreCount(record, int64_t{ZRSMPTE_SMPTEToFrameCount(record)} + ZRSMPTE_SMPTEToFrameCount(other));
}

void ZRSMPTE_SubtractSMPTE(_smpteval* record, const _smpteval* other) noexcept {
  if (record == nullptr) return;
  StoreCount(record, int64_t{ZRSMPTE_SMPTEToFrameCount(record)} - ZRSMPTE_SMPTEToFrameCount(other));
}

void ZRSMPTE_NanoToSMPTE(int64_t nanoTicks, _smpteval* record) noexcept {
  if (record == nullptr) return;
  // The least that lifts a frame's own time, which was cut to whole units, back over the frame's start.
  constexpr double kTolerance = 0.000005;
  const double rate = KindOf(*record).rate;
  StoreCount(record, Truncate(static_cast<double>(nanoTicks) * rate / kTicksPerSecond + kTolerance));
}

int64_t ZRSMPTE_SMPTEToNanos(const _smpteval* record) noexcept {
  if (record == nullptr) return 0;
  return Truncate(ZRSMPTE_SMPTEToFrameCount(record) / KindOf(*record).rate * kTicksPerSecond + 0.999);
}

int64_t ZRSMPTE_SmpteLikeToNanos(double rate, const _smpteval* record) noexcept {
  if (record == nullptr) return 0;
  const double seconds = (record->hours * 60.0 + record->minutes) * 60.0 + record->seconds;
  return Truncate((seconds * rate + record->frames) / rate * kTicksPerSecond + 0.999);
}

int32_t ZRSMPTE_SMPTECompare(const _smpteval* left, const _smpteval* right) noexcept {
  if (left == nullptr || right == nullptr) return 0;
  const auto fields = [](const _smpteval& code) {
    return std::tie(code.hours, code.minutes, code.seconds, code.frames);
  };
  return fields(*left) > fields(*right) ? 1 : fields(*left) < fields(*right) ? -1 : 0;
}

void ZRSMPTE_IncrementByFrame(_smpteval* record) noexcept {
  if (record == nullptr) return;
  const CodeKind& kind = KindOf(*record);
  const uint32_t framesPerSecond = kind.framesPerSecond != 0 ? kind.framesPerSecond : 30;
  if (++record->frames < framesPerSecond) return;
  record->frames = 0;
  if (++record->seconds < 60) return;
  record->seconds = 0;
  ++record->minutes;
  if (kind.drops && DropsAt(record->minutes)) record->frames += kDroppedPerMinute;
  if (record->minutes < 60) return;
  record->minutes = 0;
  // Only the low five bits count: the field may come from a word that holds flags above them.
  record->hours = (record->hours & 31) + 1;
  if (record->hours == 24) record->hours = 0;
}

void ZRSMPTE_DeccrementByFrame(_smpteval* record) noexcept {
  if (record == nullptr) return;
  const uint32_t type = record->type;
  if (KindOf(*record).framesPerDay == 0) record->type = ZRSMPTE_30;
  StoreCount(record, int64_t{ZRSMPTE_SMPTEToFrameCount(record)} - 1);
  record->type = type;
}

const char16_t* ZRSMPTE_TextToSMPTE(const char16_t* text, _smpteval* record) noexcept {
  if (text == nullptr || record == nullptr) return nullptr;
  Clear(record);
  DigitGroups groups(text, {.trailingZeros = true, .pairs = true});
  DigitGroup group;
  for (int count = 0; count < 4 && groups.Next(&group); ++count) {
    record->hours = record->minutes;
    record->minutes = record->seconds;
    record->seconds = record->frames;
    record->frames = static_cast<uint32_t>(group.Value());
  }
  if (const uint32_t limit = KindOf(*record).framesPerSecond; limit != 0) {
    Carry(&record->frames, &record->seconds, limit);
  }
  Carry(&record->seconds, &record->minutes, 60);
  Carry(&record->minutes, &record->hours, 60);
  record->hours %= 24;
  const char16_t* end = groups.End();
  return *end == 0 ? nullptr : end;
}
