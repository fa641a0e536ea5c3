// SPDX-License-Identifier: Apache-2.0
// The processor's abilities, and the masks that choose among the members of a kernel family.
//
// Masks are meant for start-up, before kernels are looked up: a function that a getter already gave
// doesn't change. All calls are for any thread.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

/// Bits of the processor word. MMX is never in the usable word and AVX only in the hardware word, on any
/// machine: members of those kinds don't exist.
enum ZRCPU : uint32_t {
  ZRCPU_CLASS = 0x0000000F,
  ZRCPU_MMX = 0x00000010,
  ZRCPU_SSE = 0x00000020,
  ZRCPU_SSE2 = 0x00000040,
  ZRCPU_SSE3 = 0x00000080,
  ZRCPU_SSSE3 = 0x00000100,
  ZRCPU_SSE41 = 0x00000200,
  ZRCPU_SSE42 = 0x00000400,
  ZRCPU_AVX = 0x00000800,
  ZRCPU_FEATURES = 0x00000FF0,
  ZRCPU_CMOV = 0x00001000,
  ZRCPU_FCMOV = 0x00002000,
  ZRCPU_TSC = 0x00004000,
  ZRCPU_DAZ = 0x00020000,
};

/// (Allow mask and usable word and filter) or the class override. A filter of 0 means all bits. The class
/// override shows whatever the filter is: test single bits with `&`, never by truth.
ZR_API uint32_t ZrGetCPUSupport(uint32_t filter) noexcept;
/// What the operating system lets run, and the filter (0: all). The masks don't apply.
ZR_API uint32_t ZrGetOSSupport(uint32_t filter) noexcept;
/// Allow mask and hardware word and filter (0: all): for a display of the system's facts.
ZR_API uint32_t ZrGetCPUHardwareSupport(uint32_t filter) noexcept;
/// Processors that the system reported at detection.
ZR_API uint32_t ZrGetProcessorCount() noexcept;
/// Sets bits in the allow mask. @return 1.
ZR_API int32_t ZrAllowCPUSupport(uint32_t bits) noexcept;
/// Clears bits in the allow mask. @return 1.
ZR_API int32_t ZrDisallowCPUSupport(uint32_t bits) noexcept;
/// Replaces the feature field (0xFF0) of the allow mask. @return 0, changing nothing, when `bits` holds
/// anything outside that field.
ZR_API int32_t ZrOnlyAllowCPUSupport(uint32_t bits) noexcept;
/// Hides the detected class and sets one by the allow mask (not by the processor): 6 with SSE2, 5 with SSE,
/// 4 with MMX, else 0. @return 1.
ZR_API int32_t ZrSetCPUClassBySupport() noexcept;
/// Writes the four bytes of a register value, lowest first, as characters and a terminator (5 in all); a
/// byte outside 32 to 126 becomes 0.
ZR_API void ZrFourCCToStringCPU(uint32_t value, char16_t* text) noexcept;
/// The vendor string, 12 characters without white space at its ends.
/// @return E_FAIL for fewer than 13 characters of room.
ZR_API HRESULT ZrGetCPUVendorString(char16_t* buffer, uint32_t characters) noexcept;
/// The brand string, at most 48 characters. @return E_FAIL for fewer than 49 characters of room or a
/// processor without one.
ZR_API HRESULT ZrGetCPUBrandString(char16_t* buffer, uint32_t characters) noexcept;
/// Strips characters up to U+0020 from both ends, in place. Null does nothing. @return `text`.
ZR_API char16_t* ZrStripWhiteSpace(char16_t* text) noexcept;
