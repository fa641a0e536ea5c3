// SPDX-License-Identifier: Apache-2.0
// Resources by language: what a handle's modules hold beside strings, and compiled resource files held in memory.
//
// A type and a name are each a text, or a number below 0x10000 cast to a pointer. A lookup asks the language module for
// the handle's language while that module is in use; then a main module that is its own language module for English;
// then the main module for the thread's language, a neutral entry, an English one or the first. Names in modules count
// without regard to case. What a find or a load gives is read-only and stays until the library is unloaded. A null
// handle stands for the library's own language.
#pragma once

#include <cstddef>
#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/lang.h"

/// A found resource.
struct ZrResource;
/// A resource as a find gives it; null stands for none.
using HZRRESOURCE = const ZrResource*;

/// Types that modules hold.
enum ZrResourceType : uint16_t {
  kZrMenuResource = 4,         ///< A menu.
  kZrDialogResource = 5,       ///< A dialog's template.
  kZrStringResource = 6,       ///< Sixteen strings.
  kZrAcceleratorResource = 9,  ///< A table of accelerators.
  kZrDataResource = 10,        ///< Bytes of the author's own.
  kZrVersionResource = 16,     ///< The version.
};

/// A number as a type or a name of a resource.
inline const char16_t* ZrResourceId(uint16_t number) noexcept {
  return reinterpret_cast<const char16_t*>(static_cast<uintptr_t>(number));
}

// ---- Finds and loads: any thread -------------------------------------------------------------------

/// Finds a resource. @return null when there is none.
ZR_API HZRRESOURCE ZrFindResource(HZRLANG language, const char16_t* type, const char16_t* name) noexcept;
/// Finds the first of several names: all of them in the language module, then all of them in the main module.
/// @param index optional, receives the place of the name that was found; -1 when none was.
ZR_API HZRRESOURCE ZrFindResourceMulti(HZRLANG language, const char16_t* type, const char16_t* const* names,
                                       int32_t count, int32_t* index) noexcept;
/// The module to take a resource from: the language module when it is in use and holds the resource in the handle's
/// language, else the main module, whether it holds it or not.
ZR_API plat::Module* ZrFindResInstance(HZRLANG language, const char16_t* type, const char16_t* name) noexcept;
/// The bytes of a found resource; null for null or what no find gave.
ZR_API const void* ZrLoadResource(HZRLANG language, HZRRESOURCE resource) noexcept;
/// How many bytes a found resource has; 0 for null or what no find gave.
ZR_API uint32_t ZrSizeofResource(HZRLANG language, HZRRESOURCE resource) noexcept;
/// Finds and loads at once. @param bytes optional, receives the size. @return null, with size 0, when there is none.
ZR_API const void* ZrLoadResourceCustom(HZRLANG language, const char16_t* type, const char16_t* name,
                                        uint32_t* bytes) noexcept;
/// Writes a resource to a file, which is created, or cut to the resource's length.
/// @return S_OK; ZR_E_NOT_FOUND without such a resource; E_UNEXPECTED when it is empty; ZR_E_FILE_OPEN;
/// ZR_E_FILE_WRITE.
ZR_API HRESULT ZrExtractResourceToFile(HZRLANG language, const char16_t* type, const char16_t* name,
                                       const char16_t* fileName) noexcept;
/// Writes the abbreviations of the languages in which the language module has a version resource, "DEU,FRA"; at most
/// 259 characters, cut to `size`. @param id of the version resource, 1 as a rule.
/// @return the text's length; an empty text when the language module isn't in use.
ZR_API uint32_t ZrEnumResourceLanguages(HZRLANG language, uint16_t id, char16_t* buffer, uint32_t size) noexcept;

/// A key and the command it gives.
struct ZrAccelerator {
  uint16_t flags;     ///< 1 a virtual key, 2 doesn't show in the menu, 4 shift, 8 control, 0x10 alt, 0x80 the last one.
  uint16_t key;       ///< A character, or a virtual key.
  uint16_t command;   ///< What it gives.
  uint16_t reserved;  ///< 0.
};
static_assert(sizeof(ZrAccelerator) == 8);

/// Loads a table of accelerators. @param count receives how many it has. @return null, with count 0, without any.
ZR_API const ZrAccelerator* ZrLoadAccelerators(HZRLANG language, const char16_t* name, uint32_t* count) noexcept;

// ---- Pictures: any thread --------------------------------------------------------------------------
//
// The library has no window controls yet and so nothing that a picture could be shown in: each of these gives null.

/// A picture for a control.
struct ZrControlPicture;

/// A bitmap of the main module. @return null.
ZR_API ZrControlPicture* ZrLoadBitmap(HZRLANG language, const char16_t* name) noexcept;
/// An icon of the main module. @return null.
ZR_API ZrControlPicture* ZrLoadIcon(HZRLANG language, const char16_t* name) noexcept;
/// A cursor of the main module, or the system's for a number from 32512 on. @return null.
ZR_API ZrControlPicture* ZrLoadCursor(HZRLANG language, const char16_t* name) noexcept;
/// A bitmap (0), icon (1) or cursor (2) of the main module in a size in pixels. @return null.
ZR_API ZrControlPicture* ZrLoadImage(HZRLANG language, const char16_t* name, uint32_t type, int32_t width,
                                     int32_t height, uint32_t flags) noexcept;
/// A row of pictures of one width. @return null.
ZR_API ZrControlPicture* ZrImageList_LoadImage(HZRLANG language, const char16_t* name, int32_t width, int32_t grow,
                                               uint32_t maskColor, uint32_t type, uint32_t flags) noexcept;

// ---- Pools -----------------------------------------------------------------------------------------

/// A compiled resource file in memory. The caller keeps the bytes.
struct ZRRESPOOL {
  uint32_t bytes;       ///< Below 32 it holds no resources.
  const uint8_t* data;  ///< Entries, one behind the other.
};
static_assert(sizeof(ZRRESPOOL) == 16 && offsetof(ZRRESPOOL, data) == 8);

/// Finds a resource in a pool; texts count with regard to case. An entry of the wanted language is taken at once; else
/// the last one of the library's own language, or the first of any. What is damaged ends the search.
/// @param bytes optional, receives the size. @param lcid wanted; 0 for the library's own language; when that isn't set
/// either, the first entry is taken. @param foundLcid optional, receives the language in the form of the table of
/// languages.
/// @return the data inside the pool; null, with 0 in the others, when there is none. [any thread]
ZR_API const void* ZrFindResourceInResPool(const ZRRESPOOL* pool, uint32_t* bytes, const char16_t* name,
                                           const char16_t* type, uint32_t lcid, uint32_t* foundLcid) noexcept;
/// The same for a dialog's template. [any thread]
ZR_API const void* ZrFindDialogTemplateInResPool(const ZRRESPOOL* pool, uint32_t* bytes, const char16_t* name,
                                                 uint32_t lcid) noexcept;
