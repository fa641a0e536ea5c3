// SPDX-License-Identifier: Apache-2.0
// 128-bit identifiers of interfaces, classes and formats.
#pragma once

#include <cstdint>
#include <cstring>

/// A globally unique id in memory order: the first three fields little-endian, the rest as bytes.
struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using CLSID = GUID;
using REFIID = const GUID&;
using REFCLSID = const GUID&;

/// Two ids are equal when all of their 16 bytes are.
inline bool operator==(const GUID& left, const GUID& right) noexcept {
  return std::memcmp(&left, &right, sizeof(GUID)) == 0;
}
/// The opposite of ==.
inline bool operator!=(const GUID& left, const GUID& right) noexcept { return !(left == right); }
