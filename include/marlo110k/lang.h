// SPDX-License-Identifier: Apache-2.0
// Texts by language: handles, string ids and string descriptors.
//
// A text argument of the library may be a plain text, a string id (a number below 0x10000) or the address of a
// string descriptor, which carries one text in up to 18 languages. ZrGetStringSmart tells them apart.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/export.h"

struct ZrLanguage;
/// A language handle; null stands for the library's own language.
using HZRLANG = ZrLanguage*;

/// What tells a descriptor from a plain text.
inline constexpr uint16_t kZrLangStringMagic = 0xFFFE;
/// Languages of a full descriptor; slot 1 is English and the fallback of all others.
inline constexpr uint32_t kZrLangSlots = 18;

/// A string descriptor. It stands in writable memory on an address that 4 divides.
struct zrlang_t {
  uint16_t magic;                       ///< kZrLangStringMagic.
  uint8_t slotCount;                    ///< Slots in use, at least 1.
  uint8_t zero[5];                      ///< 0.
  const char16_t* slots[kZrLangSlots];  ///< Slots 1 to 18: a text, or a string id below 0x10000; slot 1 is a text.
  uint64_t reserved;                    ///< 0.
};
static_assert(sizeof(zrlang_t) == 160 && alignof(zrlang_t) >= 4);
static_assert(offsetof(zrlang_t, slotCount) == 2 && offsetof(zrlang_t, zero) == 3);
static_assert(offsetof(zrlang_t, slots) == 8 && offsetof(zrlang_t, reserved) == 152);

/// True when `pointer` is a descriptor's address: at least 0x10000, divisible by 4, with the magic in front. It must
/// be readable then. [any thread]
ZR_API bool IsZRLANGSTRINGID(HZRLANG language, const void* pointer) noexcept;
/// The text of a string id of the language's module; an empty text, never null, when there is none. [any thread]
/// No module brings string tables yet: every id gives the empty text.
ZR_API const char16_t* ZrGetString(HZRLANG language, uint32_t id) noexcept;
/// The text of a descriptor; null for null. [any thread]
/// Every language reads slot 1, English, until languages can be chosen.
ZR_API const char16_t* ZrGetString(HZRLANG language, const zrlang_t* descriptor) noexcept;
/// The text that `value` stands for: null for 0, the text of an id below 0x10000, of a descriptor, or else `value`
/// itself, a plain text. [any thread]
ZR_API const char16_t* ZrGetStringSmart(HZRLANG language, const void* value) noexcept;
