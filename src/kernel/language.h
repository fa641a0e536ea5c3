// SPDX-License-Identifier: Apache-2.0
// What a language handle holds, and the table of languages.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

#include "marlo110k/lang.h"
#include "marlo110k/platform/lock.h"

struct tZRLIST;

/// A language handle. The words that a change of language writes are read by any thread without the lock.
struct ZrLanguage {
  plat::Module* mainModule;
  bool lockReady;
  bool ownsLanguageModule;     ///< Opened by this handle and not replaced since.
  plat::CriticalSection lock;  ///< Guards cache and ring.
  uint32_t ringCharacters;
  uint32_t ringCursor;  ///< Where the next temporary text starts.
  char16_t* ring;
  std::atomic<bool> usesLanguageModule;
  std::atomic<plat::Module*> languageModule;  ///< The main module when there is no other.
  std::atomic<uint32_t> lcid;
  std::atomic<int32_t> slot;  ///< Of descriptors, 1 to 18; 0 until it is first asked for.
  tZRLIST* cache;             ///< Of StringRecord, sorted by id.
};

namespace marlo {

inline constexpr uint32_t kEnglishLcid = 0x0409;
inline constexpr uintptr_t kFirstAddress = 0x10000;  // what is below is a string id

/// What an id without a text gives. Never written.
inline constexpr char16_t kEmptyText[] = u"";

/// A string of the cache: its id, and behind it the terminated text.
struct StringRecord {
  uint32_t id;
  char16_t text[2];
};

/// Language numbers of the descriptors' slots, from slot 1.
std::span<const uint32_t> LanguageTable() noexcept;

/// The three-letter abbreviation of a conditioned language number; null when it has none.
const char16_t* LanguageAbbreviation(uint32_t conditionedLcid) noexcept;

/// The handle, or the library's own language for null; null outside the kernel's life.
ZrLanguage* LanguageOrKernel(HZRLANG language) noexcept;

/// Starts and ends the library's own language. @return false when it can't be opened.
bool OpenKernelLanguage(plat::Module* module) noexcept;
void CloseKernelLanguage() noexcept;

/// The path of a module's language module: its extension, with a version behind ".so", becomes "LNG".
std::u16string LanguageModulePath(const std::u16string& modulePath);

/// The calling thread's language; 0 when none was chosen.
uint32_t ThreadLcid() noexcept;
/// True while new windows are laid out from right to left.
bool IsProcessMirrored() noexcept;
/// The process's language word, "ENU" until it is set.
const char16_t* LanguageWord() noexcept;

}  // namespace marlo
