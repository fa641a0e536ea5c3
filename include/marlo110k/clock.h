// SPDX-License-Identifier: Apache-2.0
// Milliseconds and microseconds of the kernel's clock, which starts when the library is loaded.
//
// All divisions truncate. A base is a value of the counter, as the Delta functions store it; a base of the
// caller's own starts with one Delta call whose result is thrown away. All calls are for any thread, a base for
// one thread at a time.
#pragma once

#include <cstdint>

#include "marlo110k/export.h"

/// Milliseconds since the clock was started.
ZR_API int64_t ZrGetMillisec() noexcept;
/// Microseconds since the clock was started.
ZR_API int64_t ZrGetMicrosec() noexcept;
/// Milliseconds since the counter stood at `*base`; 0 for null.
ZR_API int64_t ZrGetMillisecEx(const int64_t* base) noexcept;
/// Microseconds since the counter stood at `*base`; 0 for null.
ZR_API int64_t ZrGetMicrosecEx(const int64_t* base) noexcept;
/// Milliseconds since `*base`, which then takes the present counter; 0 for null.
ZR_API int64_t ZrDeltaMillisecEx(int64_t* base) noexcept;
/// Microseconds since `*base`, which then takes the present counter; 0 for null.
ZR_API int64_t ZrDeltaMicrosecEx(int64_t* base) noexcept;
