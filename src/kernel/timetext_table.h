// SPDX-License-Identifier: Apache-2.0
// The position formats: their texts and the time codes among them.
#pragma once

#include <cstdint>

#include "marlo110k/smpte.h"
#include "marlo110k/timetext.h"

namespace marlo {

struct PositionFormat {
  const char16_t* fullText;
  const char16_t* shortText;
  uint32_t codeType = 0;  ///< Of ZRSMPTETYPE; 0 for what is no time code.
};

inline constexpr PositionFormat kPositionFormats[] = {
    {u"$I64d", u"$I64d"},                                                    // ZRPOS_SAMPLES
    {u"%02u$:%02u$:%02u$*%03u", u"%02u$:%02u$:%02u"},                        // ZRPOS_TIME
    {u"$.3f", u"$.0f"},                                                      // ZRPOS_SECONDS
    {u"%02u$:%02u$:%02u$*%02u", u"%02u$:%02u$:%02u"},                        // ZRPOS_TIMEFRAMES
    {u"$.3f", u"$.0f"},                                                      // ZRPOS_FRAMES
    {u"$u$&:%u$&.%03u", u"$u$&:%u"},                                         // ZRPOS_MEASURES
    {u"%02u:%02u:%02u:%02u", u"%02u:%02u:%02u:%02u", ZRSMPTE_2997_NONDROP},  // ZRPOS_SMPTE2997NONDROP
    {u"%02u:%02u:%02u:%02u", u"%02u:%02u:%02u:%02u", ZRSMPTE_30},            // ZRPOS_SMPTE30
    {u"%02u:%02u:%02u;%02u", u"%02u:%02u:%02u;%02u", ZRSMPTE_2997_DROP},     // ZRPOS_SMPTE2997DROP
    {u"%02u:%02u:%02u:%02u", u"%02u:%02u:%02u:%02u", ZRSMPTE_25},            // ZRPOS_SMPTE25
    {u"%02u:%02u:%02u:%02u", u"%02u:%02u:%02u:%02u", ZRSMPTE_24},            // ZRPOS_SMPTE24
    {u"$I64d", u"$I64d"},                                                    // ZRPOS_NANO
    {u"$I64d", u"$I64d"},                                                    // ZRPOS_MICROSECONDS
    {u"$u$&:%u$&.%03u", u"$u$&:%u"},                                         // ZRPOS_MEASURESFROM0
    {u"$.3f", u"$.0f"},                                                      // ZRPOS_BEATS
    {u"$I64d+$I64d", u"$I64d+$I64d"},                                        // ZRPOS_FEET40
    {u"$I64d+$I64d", u"$I64d+$I64d"},                                        // ZRPOS_FEET16
    {u"%02u:%02u:%02u:%02u", u"%02u$:%02u$:%02u"},                           // ZRPOS_CDFRAMES
    {u"%02u:%02u:%02u:%02u", u"%02u:%02u:%02u:%02u", ZRSMPTE_2398},          // ZRPOS_SMPTE2398
    {u"%02u$:%02u$:%02u", u"%02u$:%02u$:%02u"},                              // ZRPOS_CLOCK
};

inline const PositionFormat& PositionFormatOf(uint32_t format) noexcept {
  constexpr uint32_t kRows = sizeof(kPositionFormats) / sizeof(kPositionFormats[0]);
  return kPositionFormats[format < kRows ? format : ZRPOS_NANO];
}

}  // namespace marlo
