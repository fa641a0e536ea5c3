// SPDX-License-Identifier: Apache-2.0
// The button sets of message boxes.
#pragma once

#include <cstdint>

#include "marlo110k/errors.h"

namespace marlo {

/// One set's results, left to right.
struct ButtonSet {
  uint32_t set;
  uint32_t count;
  uint32_t results[5];
};

inline constexpr ButtonSet kButtonSets[] = {
    {ZRMB_OK, 1, {ZRID_OK}},
    {ZRMB_OKCANCEL, 2, {ZRID_OK, ZRID_CANCEL}},
    {ZRMB_ABORTRETRYIGNORE, 3, {ZRID_ABORT, ZRID_RETRY, ZRID_IGNORE}},
    {ZRMB_YESNOCANCEL, 3, {ZRID_YES, ZRID_NO, ZRID_CANCEL}},
    {ZRMB_YESNO, 2, {ZRID_YES, ZRID_NO}},
    {ZRMB_RETRYCANCEL, 2, {ZRID_RETRY, ZRID_CANCEL}},
    {ZRMB_YESALLNOCANCEL, 4, {ZRID_YES, ZRID_YESTOALL, ZRID_NO, ZRID_CANCEL}},
    {ZRMB_YESNODELETE, 3, {ZRID_YES, ZRID_NO, ZRID_DELETE}},
    {ZRMB_YESNONOALLCANCEL, 4, {ZRID_YES, ZRID_NO, ZRID_NOTOALL, ZRID_CANCEL}},
    {ZRMB_YESALLNONOALLCANCEL, 5, {ZRID_YES, ZRID_YESTOALL, ZRID_NO, ZRID_NOTOALL, ZRID_CANCEL}},
};

}  // namespace marlo
