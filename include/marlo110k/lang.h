// SPDX-License-Identifier: Apache-2.0
// Texts by language: handles, string ids and string descriptors.
//
// A handle belongs to one module. Its strings come from the string tables of its language module, a file beside the
// module with the extension "LNG", or from the module itself; descriptors bring their own texts. The library has a
// handle of its own, whose language ZrLang_UpdateKernelLCID sets together with the host's.
//
// A text argument of the library may be a plain text, a string id (a number below 0x10000) or the address of a
// string descriptor, which carries one text in up to 18 languages. ZrGetStringSmart tells them apart.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

namespace plat {
struct Module;
}

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

// ---- Handles ---------------------------------------------------------------------------------------

/// Opens a language handle for a module and looks for its language module.
/// @param language receives it; must hold null.
/// @param module whose strings are asked for; the host's own, or ZrKernel_GetAppKernel's.
/// @param lcid the language wanted; 0 for that of the user.
/// @param ringCharacters size of the ring of temporary texts; at least 2048, 0 means 8192.
/// @return S_OK, ZR_S_NO_CHANGE (nothing changes) when `language` isn't null, E_OUTOFMEMORY, E_POINTER without an
/// out. A language module that is missing or damaged is no failure: the module itself serves. Free with ZrLang_Close.
/// [any thread]
ZR_API HRESULT ZrLang_Open(HZRLANG* language, plat::Module* module, uint32_t lcid, uint32_t ringCharacters) noexcept;
/// Ends a handle, its cached strings, its ring and the language module that it opened; null is allowed. [any thread,
/// while no other uses it]
ZR_API void ZrLang_Close(HZRLANG language) noexcept;
/// The module to take resources from: the language module when it is in use, else the main module. [any thread]
ZR_API plat::Module* ZrLang_InstFromLang(HZRLANG language) noexcept;
/// The language asked for, 0 when none was. [any thread]
ZR_API uint32_t ZrLang_GetLCID(HZRLANG language) noexcept;
/// Makes `module` the language module of the handle and of the library's own language. The caller keeps it loaded.
/// Cached strings and the descriptors' slot stay as they are. [settled state]
ZR_API void ZrLang_ChangeLangInst(HZRLANG language, plat::Module* module) noexcept;
/// Changes the language of the handle and of the library itself. Every pointer that ZrGetString gave for an id ends
/// here, so no other thread may be using one. Languages other than English use the language module from now on.
/// @param lcid 0 means 0x0409.
/// @return 1; 0 when the handle is null or the kernel isn't started. [settled state]
ZR_API int32_t ZrLang_UpdateKernelLCID(HZRLANG language, uint32_t lcid) noexcept;
/// Makes the handle's language the calling thread's; null clears it. [any thread]
ZR_API void ZrLang_UpdateThreadLocale(HZRLANG language) noexcept;

// ---- Language numbers: any thread ------------------------------------------------------------------

/// Reduces a number to the form of the table of languages: the first of its primary language, but traditional or
/// simplified for Chinese, and Portuguese as it is.
ZR_API uint32_t ZrLang_GetConditionedLCID(uint32_t lcid) noexcept;
/// True for Arabic, Hebrew, Urdu and Persian, which run from right to left.
ZR_API bool ZrLang_UseRTL(uint32_t lcid) noexcept;
/// True for every English.
ZR_API bool ZrLang_IsLCIDEnglish(uint32_t lcid) noexcept;
/// New windows of the process are laid out from right to left.
ZR_API void ZrLang_EnableProcessMirroring() noexcept;
/// New windows of the process are laid out from left to right.
ZR_API void ZrLang_DisableProcessMirroring() noexcept;
/// True when the handle's language (0x0411, Japanese) puts the family name first; false for null.
ZR_API bool ZrLang_IsNameOrderReversed(HZRLANG language) noexcept;
/// Writes a person's name in the language's order, with one blank between; cut to `size` characters.
/// @return the text's length.
ZR_API uint32_t ZrLang_LocalizeUserName(HZRLANG language, const char16_t* first, const char16_t* last, char16_t* buffer,
                                        uint32_t size) noexcept;
/// Writes the three-letter abbreviation of the handle's language, "DEU".
/// @return 1; 0 with an empty text for a language that has none; 0 for a null handle, with the buffer untouched.
ZR_API int32_t ZrLang_GetLangAbbrev(HZRLANG language, char16_t* buffer, uint32_t size) noexcept;
/// Writes "de-DE", "es-ES", "fr-FR", "ja-JP" or "ru-RU" by the handle's primary language.
/// @return 0; 1 with an empty text for any other language.
ZR_API int32_t ZrLang_GetLangllCC(HZRLANG language, char16_t* buffer, uint32_t size) noexcept;
/// Stores the process's language word, at most three characters; null or an empty text means "ENU". [settled state]
ZR_API void ZrSetLangID(const char16_t* text) noexcept;

// ---- The user's choice: any thread -----------------------------------------------------------------
//
// It stands as number "ULangID" in the settings key Software\\COMPANY\\PRODUCT\\MAJOR.MINOR\\Lang, or in
// Software\\COMPANY\\PRODUCT\\Lang without a version. The version is a word as ZrKernel_GetVersion gives; one below
// 1.0 counts as none. The user's settings are asked first, then the machine's. While the settings store
// can't be had, nothing is found and nothing is stored.

/// Reads the choice of a product of "Orlu Works". @param lcid written only when a value was read.
/// @param withoutVersion non-zero leaves the version out. @return 1 when a value was read, else 0.
ZR_API int32_t ZrLang_LoadUserLCIDMetric(const char16_t* product, uint32_t version, uint32_t* lcid,
                                         int32_t withoutVersion) noexcept;
/// The same for any company.
ZR_API int32_t ZrLang_LoadUserLCIDMetricAppReg(const char16_t* product, uint32_t version, uint32_t* lcid,
                                               const char16_t* company) noexcept;
/// Stores the choice in the user's settings. @return 1 when it was stored, else 0.
ZR_API int32_t ZrLang_SaveUserLCIDMetric(const char16_t* product, uint32_t version, uint32_t lcid,
                                         int32_t withoutVersion) noexcept;
/// The same for any company.
ZR_API int32_t ZrLang_SaveUserLCIDMetricAppReg(const char16_t* product, uint32_t version, uint32_t lcid,
                                               const char16_t* company) noexcept;

// ---- Strings ---------------------------------------------------------------------------------------

/// True when `pointer` is a descriptor's address: at least 0x10000, divisible by 4, with the magic in front. It must
/// be readable then. [any thread]
ZR_API bool IsZRLANGSTRINGID(HZRLANG language, const void* pointer) noexcept;
/// The text of a string id, cut at 1024 characters; an empty text, never null, when there is none. It is good until the
/// language changes. [any thread]
ZR_API const char16_t* ZrGetString(HZRLANG language, uint32_t id) noexcept;
/// The text of a descriptor in the handle's language; null for null. A slot that holds a string id is replaced by what
/// it stands for as it is first read, and an empty one by the English text. [any thread]
ZR_API const char16_t* ZrGetString(HZRLANG language, const zrlang_t* descriptor) noexcept;
/// The text that `value` stands for: null for 0, the text of an id below 0x10000, of a descriptor, or else `value`
/// itself, a plain text. [any thread]
ZR_API const char16_t* ZrGetStringSmart(HZRLANG language, const void* value) noexcept;
/// Copies the text of an id, without the translator's mark "^*" in front.
/// @param size of `buffer` in characters. A longer text is cut and terminated, but counts as `size` characters.
/// @return the characters of the text; 0 when there is none. [any thread]
ZR_API int32_t ZrLoadString(HZRLANG language, uint32_t id, char16_t* buffer, int32_t size) noexcept;
/// Copies the text of a descriptor, without the mark. @return the characters stored. [any thread]
ZR_API int32_t ZrLoadString(HZRLANG language, const zrlang_t* descriptor, char16_t* buffer, int32_t size) noexcept;

// ---- The ring of temporary texts: any thread; a text is whole until the ring has gone round ---------

/// A scratch area. @param characters wanted, 1024 at most; a caller that thinks in bytes takes more room than it needs.
/// With 0 it holds the empty text. @return null when the handle has no ring.
ZR_API char16_t* ZrGetTempStringBuffer(HZRLANG language, uint32_t characters) noexcept;
/// A text in the ANSI code page; null when the handle has no ring. Cut where the ring ends.
ZR_API const char* ZrGetMultiByteFromPrintString(HZRLANG language, const char16_t* text) noexcept;
/// A text from the ANSI code page; the empty text for null, an empty one, or without a ring. Cut where the ring ends.
ZR_API const char16_t* ZrGetPrintFromMultiByteString(HZRLANG language, const char* text) noexcept;
/// `text` itself while the handle has a ring, else the empty text.
ZR_API const char16_t* ZrGetWideFromPrintString(HZRLANG language, const char16_t* text) noexcept;
/// `text` itself while the handle has a ring, else the empty text.
ZR_API const char16_t* ZrGetPrintFromWideString(HZRLANG language, const char16_t* text) noexcept;

// ---- Character sets: any thread --------------------------------------------------------------------

/// True when a valid pair of a double-byte character stands within `bytes` or before the first 0. Always false while
/// the ANSI code page is a single-byte one.
ZR_API bool ZrLang_DetectMultiByteCharacters(const uint8_t* text, uint32_t bytes) noexcept;
/// Guesses the code page of a text. @param codePage receives it, 0 when it isn't certain.
/// @return S_OK, or ZR_E_NO_CODEPAGE.
ZR_API HRESULT ZrLang_DetectPossibleCodepage(const uint8_t* text, uint32_t bytes, uint32_t* codePage) noexcept;

// ---- The library's own texts -----------------------------------------------------------------------

/// The descriptor of one of the library's own texts. @param index from 0. @param name optional, receives the name by
/// which translations know the text. @return null behind the last one. [any thread]
ZR_API const zrlang_t* ZrLang_GetCatalogueText(uint32_t index, const char16_t** name) noexcept;
/// A row of the table of languages. @param slot 1 to 18. @return its language number, 0 for any other slot. [any
/// thread]
ZR_API uint32_t ZrLang_GetSlotLCID(uint32_t slot) noexcept;
