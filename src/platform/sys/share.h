// SPDX-License-Identifier: Apache-2.0
// Share modes among the handles of all processes that use this layer.
#pragma once

#include <cstdint>

namespace plat {

/// The right to delete or rename, beside the access bits of OpenFile.
inline constexpr uint32_t kDeleteAccess = 4;

/// Claims `access` and grants `share` to others for as long as the descriptor is open.
/// @return false when another open descriptor's claims stand against it.
bool ClaimShare(int descriptor, uint32_t access, uint32_t share) noexcept;

/// True when nobody who has the file open forbids `access`. Claims nothing.
bool MayAccess(int descriptor, uint32_t access) noexcept;

}  // namespace plat
