// SPDX-License-Identifier: Apache-2.0
// Time codes: hours, minutes, seconds and frames of a day, and the counts and times they stand for.
//
// Time is counted in units of 100 ns, 10,000,000 a second. All functions are pure and take records that exist; a null
// record gives 0 or does nothing. [any thread]
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/export.h"

/// The kinds of time code. Drop-frame code leaves out the numbers of frames 0 and 1 in every minute that 10 doesn't
/// divide, so that its clock keeps step with the day.
enum ZRSMPTETYPE : uint32_t {
  ZRSMPTE_30 = 1,            ///< 30 frames a second.
  ZRSMPTE_2997_DROP = 2,     ///< 30000/1001 frames a second, counted by 30, drop-frame.
  ZRSMPTE_25 = 3,            ///< 25 frames a second.
  ZRSMPTE_24 = 4,            ///< 24 frames a second.
  ZRSMPTE_2997_NONDROP = 5,  ///< 30000/1001 frames a second, counted by 30.
  ZRSMPTE_2398 = 6,          ///< 24000/1001 frames a second, counted by 24.
};

/// A time code.
struct _smpteval {
  uint32_t type;  ///< A value of ZRSMPTETYPE.
  uint32_t hours;
  uint32_t minutes;
  uint32_t seconds;
  uint32_t frames;
  uint32_t reserved;  ///< Cleared where a record is filled; nothing reads it.
};
static_assert(sizeof(_smpteval) == 24);
static_assert(offsetof(_smpteval, frames) == 16);

/// Stores the time code of a frame of the day; a count of more than a day wraps. The type stays.
/// @return the count within the day; 0, with a cleared time code, for an unknown type.
ZR_API uint32_t ZRSMPTE_FrameCountToSMPTE(_smpteval* record, uint32_t frameCount) noexcept;
/// @return the frame of a time code; one that drop-frame code leaves out counts as the next that exists. 0 for an
/// unknown type.
ZR_API uint32_t ZRSMPTE_SMPTEToFrameCount(const _smpteval* record) noexcept;
/// Adds the frames of another time code, which may be of another type; the sum wraps at 24 hours.
ZR_API void ZRSMPTE_AddSMPTE(_smpteval* record, const _smpteval* other) noexcept;
/// Subtracts the frames of another time code; a negative difference comes back from the top of the day.
ZR_API void ZRSMPTE_SubtractSMPTE(_smpteval* record, const _smpteval* other) noexcept;
/// Stores the time code of a time in 100-ns units, at the type's real rate; a negative time comes back from the top of
/// the day.
ZR_API void ZRSMPTE_NanoToSMPTE(int64_t nanoTicks, _smpteval* record) noexcept;
/// @return the time of a time code in 100-ns units, at the type's real rate.
ZR_API int64_t ZRSMPTE_SMPTEToNanos(const _smpteval* record) noexcept;
/// @return the time in 100-ns units of fields that count `rate` frames a second; the type isn't read.
ZR_API int64_t ZRSMPTE_SmpteLikeToNanos(double rate, const _smpteval* record) noexcept;
/// Compares hours, minutes, seconds and frames; the types may differ. @return 1, 0 or -1.
ZR_API int32_t ZRSMPTE_SMPTECompare(const _smpteval* left, const _smpteval* right) noexcept;
/// Goes one frame on; the day wraps. An unknown type counts by 30.
ZR_API void ZRSMPTE_IncrementByFrame(_smpteval* record) noexcept;
/// Goes one frame back; 00:00:00:00 gives the last frame of the day. An unknown type counts by 30.
ZR_API void ZRSMPTE_DeccrementByFrame(_smpteval* record) noexcept;
/// Reads up to four numbers of two digits, whatever stands between them. They stand right-aligned: "5" is frame 5 and
/// "1:02:" is one minute, two seconds and no frame. Fields that are too large carry. The type is the record's.
/// @return the first character left unread, null when all was read.
ZR_API const char16_t* ZRSMPTE_TextToSMPTE(const char16_t* text, _smpteval* record) noexcept;
