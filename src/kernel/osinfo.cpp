// SPDX-License-Identifier: Apache-2.0
// Answers what hosts ask about the system: its version, its name, its displays, and version resources of files.
#include <atomic>

#include "kernel/system_facts.h"
#include "marlo110k/os.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"
#include "platform/sys/versioninfo.h"

namespace marlo {
namespace {

constexpr uint32_t kHighColorBits = 16;

constinit SystemVersion systemVersion;
constinit DisplayFacts displayFacts;

// Plain words that any thread reads.
constinit std::atomic<bool> isPlatform9x{false};
constinit std::atomic<bool> isHighColor{true};
constinit std::atomic<bool> areAllHighColor{true};

struct VersionRow {
  uint32_t which;
  uint32_t platform;
  uint32_t major;
  uint32_t minor;
  uint32_t servicePack;
};

constexpr VersionRow kVersionRows[] = {
    {ZROS_95, kPlatform9x, 4, 0, 0},    {ZROS_98, kPlatform9x, 4, 1, 0},   {ZROS_98SE, kPlatform9x, 4, 1, 1},
    {ZROS_NT4, kPlatformNt, 4, 0, 0},   {ZROS_2000, kPlatformNt, 5, 0, 0}, {ZROS_XP, kPlatformNt, 5, 1, 0},
    {ZROS_VISTA, kPlatformNt, 6, 0, 0}, {ZROS_7, kPlatformNt, 6, 1, 0},    {ZROS_8, kPlatformNt, 6, 2, 0},
};

/// Names by platform and version; the first row that fits counts. kAny fits every number.
constexpr uint32_t kAny = 0xFFFFFFFF;

struct NameRow {
  uint32_t platform;
  uint32_t major;
  uint32_t minor;
  uint32_t leastServicePack;
  const char16_t* name;
};

constexpr NameRow kNameRows[] = {
    {kPlatform9x, 4, 0, 0, u"Windows 95"},    {kPlatform9x, 4, 10, 1, u"Windows 98 SE"},
    {kPlatform9x, 4, 10, 0, u"Windows 98"},   {kPlatform9x, 4, 90, 0, u"Windows Me"},
    {kPlatformNt, 3, kAny, 0, u"Windows NT"}, {kPlatformNt, 4, kAny, 0, u"Windows NT"},
    {kPlatformNt, 5, 0, 0, u"Windows 2000"},  {kPlatformNt, 5, 1, 0, u"Windows XP"},
    {kPlatformNt, 6, 0, 0, u"Windows Vista"}, {kPlatformNt, 6, 1, 0, u"Windows 7"},
    {kPlatformNt, 6, 2, 0, u"Windows 8"},
};

const char16_t* NameOf(const SystemVersion& version) noexcept {
  for (const NameRow& row : kNameRows) {
    if (row.platform == version.platform && row.major == version.major &&
        (row.minor == kAny || row.minor == version.minor) && version.servicePack >= row.leastServicePack) {
      return row.name;
    }
  }
  return nullptr;
}

}  // namespace

SystemVersion GetSystemVersion() noexcept { return systemVersion; }

void SetSystemVersion(const SystemVersion& version) noexcept { systemVersion = version; }

void SetDisplayFacts(const DisplayFacts& facts) noexcept { displayFacts = facts; }

void RefreshDisplayFacts() noexcept {
  isHighColor.store(displayFacts.primaryBitsPerPixel >= kHighColorBits, std::memory_order_relaxed);
  areAllHighColor.store(displayFacts.leastBitsPerPixel >= kHighColorBits, std::memory_order_relaxed);
}

void RefreshPlatform() noexcept {
  isPlatform9x.store(systemVersion.platform == kPlatform9x, std::memory_order_relaxed);
}

bool VersionReaches(const SystemVersion& version, uint32_t which, uint32_t servicePack) noexcept {
  for (const VersionRow& row : kVersionRows) {
    if (row.which != which) continue;
    if (version.platform != row.platform) return false;
    if (version.major != row.major) return version.major > row.major;
    if (version.minor != row.minor) return version.minor > row.minor;
    return version.servicePack >= servicePack && version.servicePack >= row.servicePack;
  }
  return false;
}

bool SystemName(const SystemVersion& version, char16_t* buffer, size_t capacity) noexcept {
  const char16_t* name = NameOf(version);
  const char16_t* bits = u"";
  if (version.major >= 5) bits = version.is64Bit ? u" (64-bit)" : u" (32-bit)";
  if (name == nullptr) {
    ZrCchPrintF(buffer, static_cast<uint32_t>(capacity), nullptr, u"Unknown %u-%u.%u%s", version.platform,
                version.major, version.minor, bits);
    return false;
  }
  ZrCchPrintF(buffer, static_cast<uint32_t>(capacity), nullptr, u"%s%s", name, bits);
  return true;
}

}  // namespace marlo

int32_t ZrIsWin95() noexcept { return marlo::isPlatform9x.load(std::memory_order_relaxed) ? 1 : 0; }

int32_t ZrIsOS64Bit() noexcept { return 1; }

int32_t ZrIsHighColor() noexcept { return marlo::isHighColor.load(std::memory_order_relaxed) ? 1 : 0; }

int32_t ZrIsAllMonitorsHighColor() noexcept { return marlo::areAllHighColor.load(std::memory_order_relaxed) ? 1 : 0; }

int32_t ZrOSVersionOK(uint32_t which, uint32_t servicePack) noexcept {
  return marlo::VersionReaches(marlo::GetSystemVersion(), which, servicePack) ? 1 : 0;
}

int32_t ZrGetOS(char16_t* buffer, uint32_t size) noexcept {
  if (buffer == nullptr || size == 0) return 0;
  return marlo::SystemName(marlo::GetSystemVersion(), buffer, size) ? 1 : 0;
}

HRESULT ZrVersion_GetString(const char16_t* file, const char16_t* key, char16_t* buffer, uint32_t size) noexcept {
  constexpr uint32_t kSubBlockCharacters = 128;
  if (file == nullptr || key == nullptr || buffer == nullptr || size == 0) return ZR_E_NOT_FOUND;
  uint16_t language = 0;
  uint16_t codePage = 0;
  if (!plat::VersionTranslation(file, &language, &codePage)) return ZR_E_NOT_FOUND;
  char16_t subBlock[kSubBlockCharacters];
  ZrCchPrintF(subBlock, kSubBlockCharacters, nullptr, u"\\StringFileInfo\\%04X%04X\\%s", uint32_t{language},
              uint32_t{codePage}, key);
  return plat::VersionValue(file, subBlock, buffer, size) ? S_OK : ZR_E_NOT_FOUND;
}
