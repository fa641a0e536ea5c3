// SPDX-License-Identifier: Apache-2.0
// Facts of the system that hosts ask for: version, display depth, version resources of files.
//
// The version told is the one whose behaviour the library offers (platform 2, version 6.1, service pack 1,
// 64-bit), not that of the machine below. All calls are for any thread.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"

/// Rows of ZrOSVersionOK.
enum ZROSVERSION : uint32_t {
  ZROS_95 = 0,
  ZROS_98 = 1,
  ZROS_98SE = 2,
  ZROS_NT4 = 4,
  ZROS_2000 = 5,
  ZROS_XP = 6,
  ZROS_VISTA = 7,
  ZROS_7 = 8,
  ZROS_8 = 9,
};

/// 1 on platform id 1, else 0; read once at start.
ZR_API int32_t ZrIsWin95() noexcept;
/// 1.
ZR_API int32_t ZrIsOS64Bit() noexcept;
/// 1 when the primary display has 16 or more bits a pixel. Cached; ZrKernel_UserPrefChanges reads it again.
ZR_API int32_t ZrIsHighColor() noexcept;
/// 1 when every display has. Cached likewise.
ZR_API int32_t ZrIsAllMonitorsHighColor() noexcept;
/// 1 when the system is of the row's platform and not older than the row.
/// @param which a row of ZROSVERSION; others give 0.
/// @param servicePack what the service pack must at least be when the version is the row's own.
ZR_API int32_t ZrOSVersionOK(uint32_t which, uint32_t servicePack) noexcept;
/// Writes the system's name, cut to fit `size` characters.
/// @return 1, or 0 for a system without a name ("Unknown 2-10.0 (64-bit)") or a null buffer.
ZR_API int32_t ZrGetOS(char16_t* buffer, uint32_t size) noexcept;
/// Reads one value ("CompanyName" and the like) of a file's version resource, in the first of its languages.
/// @param size of `buffer` in characters; a longer value is cut.
/// @return S_OK, or ZR_E_NOT_FOUND when the file, its resource or the value is missing.
ZR_API HRESULT ZrVersion_GetString(const char16_t* file, const char16_t* key, char16_t* buffer, uint32_t size) noexcept;
