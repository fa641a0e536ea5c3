// SPDX-License-Identifier: Apache-2.0
// Positions as text: the twenty formats in which a user reads and types a time.
//
// A time is counted in units of 100 ns, 10,000,000 a second. Texts are written by the user's conventions (locale.h) and
// read by them. Nothing fails: a text that can't be read is 0. A position format always holds rates above 0.
// [any thread, all functions]
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/export.h"
#include "marlo110k/smpte.h"

/// The formats of a position. Any other number shows the time itself.
enum ZRPOSFORMAT : uint32_t {
  ZRPOS_SAMPLES = 0,
  ZRPOS_TIME = 1,        ///< Hours, minutes, seconds, milliseconds.
  ZRPOS_SECONDS = 2,     ///< With three decimals.
  ZRPOS_TIMEFRAMES = 3,  ///< Hours, minutes, seconds and frames at the frame rate.
  ZRPOS_FRAMES = 4,      ///< Frames at the frame rate, with three decimals.
  ZRPOS_MEASURES = 5,    ///< Measures, beats and ticks, the first measure and beat being 1.
  ZRPOS_SMPTE2997NONDROP = 6,
  ZRPOS_SMPTE30 = 7,
  ZRPOS_SMPTE2997DROP = 8,
  ZRPOS_SMPTE25 = 9,
  ZRPOS_SMPTE24 = 10,
  ZRPOS_NANO = 11,           ///< Units of 100 ns.
  ZRPOS_MICROSECONDS = 12,   ///< Rounded.
  ZRPOS_MEASURESFROM0 = 13,  ///< Measures, beats and ticks, counted from 0.
  ZRPOS_BEATS = 14,          ///< With three decimals; shown only, never read.
  ZRPOS_FEET40 = 15,         ///< Feet and frames, 40 frames a foot.
  ZRPOS_FEET16 = 16,         ///< Feet and frames, 16 frames a foot.
  ZRPOS_CDFRAMES = 17,       ///< Hours, minutes, seconds and frames of 1/75 s.
  ZRPOS_SMPTE2398 = 18,
  ZRPOS_CLOCK = 19,  ///< As few fields as a clock needs; shown only, never read.
};

/// Flags of the conversions.
enum ZRPOSFLAG : uint32_t {
  ZRPOSF_SHORT = 1,   ///< The short text, without the smallest field.
  ZRPOSF_LENGTH = 2,  ///< A length: zeroOffset plays no part and ZRPOS_MEASURES counts from 0.
};

/// What a position is measured by.
struct _zrposfmt {
  uint32_t format;      ///< A value of ZRPOSFORMAT.
  uint32_t sampleRate;  ///< Samples a second.
  double frameRate;     ///< Frames a second.
  double tempo;         ///< Beats a minute.
  int64_t zeroOffset;   ///< The time, in 100-ns units, that reads as zero.
  uint16_t beatValue;   ///< The bottom number of the time signature.
  uint16_t beatsPerMeasure;
  uint32_t ticksPerBeat;
};
static_assert(sizeof(_zrposfmt) == 40);
static_assert(offsetof(_zrposfmt, zeroOffset) == 24);
static_assert(offsetof(_zrposfmt, ticksPerBeat) == 36);

// ---- To text: the result is the characters written, without the terminator; 0 for a null pointer or a size of 0 -----

/// Writes a time into a buffer large enough for it. @param shortText not 0 for the short text.
ZR_API int32_t ZrNanoTimeToText(char16_t* destination, const _zrposfmt* format, int64_t ticks,
                                int32_t shortText) noexcept;
/// The same, cut to `size` characters with the terminator.
ZR_API int32_t ZrNanoTimeToTextN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                                 int32_t shortText) noexcept;
/// Writes a time into a buffer large enough for it. @param flags of ZRPOSFLAG.
ZR_API int32_t ZrNanoTimeToTextEx(char16_t* destination, const _zrposfmt* format, int64_t ticks,
                                  uint32_t flags) noexcept;
/// The same, cut to `size` characters with the terminator.
ZR_API int32_t ZrNanoTimeToTextExN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                                   uint32_t flags) noexcept;
/// Writes a time by a format text (printf.h), which must fit what the position format gives: a 64-bit number for
/// samples, times and each of feet and frames, a real for seconds, frames and beats, 32-bit numbers otherwise. A "-"
/// stands in front of a negative time. A real with the text "$.0f" is cut, not rounded.
ZR_API int32_t ZrNanoTimeToTextFormat(char16_t* destination, const _zrposfmt* format, int64_t ticks,
                                      const char16_t* formatText, uint32_t flags) noexcept;
/// The same, cut to `size` characters with the terminator.
ZR_API int32_t ZrNanoTimeToTextFormatN(char16_t* destination, uint32_t size, const _zrposfmt* format, int64_t ticks,
                                       const char16_t* formatText, uint32_t flags) noexcept;

// ---- Times in fields -------------------------------------------------------------------------------

/// Splits a time. A record of a type of ZRSMPTETYPE becomes its time code; any other is read off a clock that rounds to
/// `rate` frames a second, hours modulo 24.
ZR_API void ZrNanoTimeToHMSF(int64_t ticks, _smpteval* record, double rate) noexcept;
/// @return the time of such a record in 100-ns units.
ZR_API int64_t ZrHMSFToNanoTime(const _smpteval* record, double rate) noexcept;
/// Splits a time into measures, beats and ticks counted from 0; outputs may be null.
ZR_API void ZrNanoTimeToMeasures(int64_t ticks, const _zrposfmt* format, int32_t* measures, int32_t* beats,
                                 int32_t* musicTicks) noexcept;

// ---- From text: `end`, where given, receives the first character not used ---------------------------

/// Reads a time. @param flags of ZRPOSFLAG. @return 100-ns units.
ZR_API int64_t ZrTextToNanoTimeToken(const char16_t* text, const _zrposfmt* format, uint32_t flags,
                                     const char16_t** end) noexcept;
/// Reads a time and holds it between bounds. An empty text is the default measured from the zero offset; a result of 0
/// with text left over is the default itself.
/// @param end required.
ZR_API int64_t ZrTextToNanoTimeTokenEx(const char16_t* text, const _zrposfmt* format, uint32_t flags,
                                       int64_t defaultTicks, int64_t minimumTicks, int64_t maximumTicks,
                                       const char16_t** end) noexcept;
/// Reads hours, minutes, seconds and a fraction, right-aligned; a single number is seconds.
/// @param shortText not 0: there is no fraction. @return milliseconds.
ZR_API int64_t ZrTextToTimeToken(const char16_t* text, const _zrposfmt* format, int32_t shortText,
                                 const char16_t** end) noexcept;
/// Reads hours, minutes, seconds and frames at the frame rate, right-aligned.
/// @param shortText not 0: there are no frames. @return 100-ns units.
ZR_API int64_t ZrTextToHMSFToken(const char16_t* text, const _zrposfmt* format, int32_t shortText,
                                 const char16_t** end) noexcept;
/// Reads measures, beats and ticks; the short text has no ticks. @return 100-ns units.
ZR_API int64_t ZrTextToMusicTimeToken(const char16_t* text, const _zrposfmt* format, uint32_t flags,
                                      const char16_t** end) noexcept;
/// Reads feet and frames. @param forty not 0 for 40 frames a foot, else 16. @return 100-ns units.
ZR_API int64_t ZrTextToFeetAndFramesToken(const char16_t* text, const _zrposfmt* format, int32_t forty,
                                          const char16_t** end) noexcept;

// ---- Measures, beats and ticks ---------------------------------------------------------------------

/// Writes a measure and the ticks within it, into a buffer large enough; negative ticks are taken from the measure
/// before. A beat has ticksPerBeat * 4 / beatValue ticks.
/// @param oneBased not 0 counts from 1. @param noTicks not 0 leaves the ticks out.
/// @param tickDivisor what the shown ticks are divided by; 0 stands for 1.
/// @return the characters written.
ZR_API int32_t ZrMeasuresAndTicksToText(char16_t* destination, const _zrposfmt* format, int32_t measures,
                                        int32_t musicTicks, int32_t oneBased, int32_t noTicks,
                                        uint32_t tickDivisor) noexcept;
/// The same for a total, whose measures have beatsPerMeasure * ticksPerBeat ticks whatever the beat's value is.
ZR_API int32_t ZrTicksToText(char16_t* destination, const _zrposfmt* format, int64_t musicTicks, int32_t oneBased,
                             int32_t noTicks, uint32_t tickDivisor) noexcept;
/// Reads an optional "-", measures, beats and ticks; outputs may be null.
/// @return (beatsPerMeasure * measures + beats) * ticksPerBeat + tickMultiplier * ticks.
ZR_API int64_t ZrTextToMeasuresBeatsTicks(const char16_t* text, const _zrposfmt* format, int32_t oneBased,
                                          uint32_t tickMultiplier, int32_t* measures, int32_t* beats,
                                          int32_t* musicTicks) noexcept;
/// Reads beats and ticks; outputs may be null. @return ticksPerBeat * beats + tickMultiplier * ticks.
ZR_API int64_t ZrTextToBeatsTicks(const char16_t* text, const _zrposfmt* format, uint32_t tickMultiplier,
                                  int32_t* beats, int32_t* musicTicks) noexcept;
/// Reads ticks; the output may be null. @return tickMultiplier * ticks.
ZR_API int64_t ZrTextToTicks(const char16_t* text, uint32_t tickMultiplier, int32_t* musicTicks) noexcept;
