// SPDX-License-Identifier: Apache-2.0
// The self-check of the copy family: every value of an integer type to a float type and back.
#pragma once

#include <cstdint>

#include "marlo110k/samples.h"

namespace marlo {

/// One way there and back.
struct CopyCheck {
  uint32_t integerType;
  uint32_t floatType;
  ZRAUDIOCOPYFUNCTION toFloat;
  ZRAUDIOCOPYFUNCTION toInteger;
};

/// Converts every value of the integer type, moves it by just under half a step up and down, clamps it to
/// -1.0 to 1.0, converts it back and compares.
/// @return S_OK, E_UNEXPECTED on the first mismatch, E_OUTOFMEMORY.
HRESULT RunCopyCheck(const CopyCheck& check) noexcept;

/// Tells of a failed check, which has the number `node`: a line of details and, with a window, a message.
void ReportCopyCheckFailure(HRESULT code, int32_t node, HZRWINDOW window) noexcept;

}  // namespace marlo
