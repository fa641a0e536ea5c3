// SPDX-License-Identifier: Apache-2.0
// Version and display of the system as the library presents it, settable where a test or a screen knows better.
#pragma once

#include <cstddef>
#include <cstdint>

namespace marlo {

inline constexpr uint32_t kPlatform9x = 1;
inline constexpr uint32_t kPlatformNt = 2;

/// The version whose behaviour the library offers its hosts.
struct SystemVersion {
  uint32_t platform = kPlatformNt;
  uint32_t major = 6;
  uint32_t minor = 1;
  uint32_t servicePack = 1;
  bool is64Bit = true;
};

struct DisplayFacts {
  uint32_t primaryBitsPerPixel = 32;
  uint32_t leastBitsPerPixel = 32;  ///< Of all displays.
};

SystemVersion GetSystemVersion() noexcept;
/// Before threads use it.
void SetSystemVersion(const SystemVersion& version) noexcept;

/// What the next RefreshDisplayFacts reads.
void SetDisplayFacts(const DisplayFacts& facts) noexcept;
/// Reads the displays again into the cache of the two colour questions.
void RefreshDisplayFacts() noexcept;

/// Caches the answer of ZrIsWin95.
void RefreshPlatform() noexcept;

/// The rule of ZrOSVersionOK for any version.
bool VersionReaches(const SystemVersion& version, uint32_t which, uint32_t servicePack) noexcept;
/// The rule of ZrGetOS for any version. @return false for a version without a name.
bool SystemName(const SystemVersion& version, char16_t* buffer, size_t capacity) noexcept;

}  // namespace marlo
