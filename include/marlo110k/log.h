// SPDX-License-Identifier: Apache-2.0
// Text logs of long jobs, and a developer's trace output.
#pragma once

#include <cstdint>

#include "marlo110k/contract/hresult.h"
#include "marlo110k/export.h"
#include "marlo110k/platform/file.h"
#include "marlo110k/platform/lock.h"

/// Kinds of lines (the low word), and what each line shows.
enum LOGFLAGS : uint32_t {
  LOG_ERROR = 1,
  LOG_WARNING = 2,
  LOG_INFORMATION = 4,
  LOG_DEBUG = 8,
  LOG_TIME = 0x10000,    ///< The local date and time.
  LOG_SOURCE = 0x20000,  ///< The source file's name and line.
};

/// What others may do with an open log.
enum ZRLOG_SHARE : uint32_t {
  ZRLOG_DENYALL = 0x10,
  ZRLOG_DENYWRITE = 0x20,
  ZRLOG_DENYREAD = 0x30,
  ZRLOG_DENYNONE = 0x40,  ///< Also what 0 means.
};

/// A log file in UTF-8. When it has reached its size it goes on under a second name, with ".previous" added, and a
/// new file is begun. [any thread]
class ZR_API CLog {
 public:
  CLog() noexcept;
  /// Takes over paths and settings, but not the open file: the copy writes after an Init of its own.
  CLog(const CLog& other) noexcept;
  /// The same for a log that is there: its own file is closed first.
  CLog& operator=(const CLog& other) noexcept;
  ~CLog();
  /// Closes the log and ends the object, in the place of a virtual destructor. @param flags 1 frees its memory, as of
  /// `new CLog`.
  /// @return this.
  virtual void* DeleteSelf(uint32_t flags) noexcept;

  /// Opens the log for appending; an open one is closed first.
  /// @param path at most 259 characters, room for ".previous" included. @param flags kinds to write, and LOG_TIME,
  /// LOG_SOURCE. @param maximumBytes 0 or less for no limit. @param share a value of ZRLOG_SHARE.
  /// @return S_OK; E_INVALIDARG for a null or too long path or no flags; ZR_E_FILE_OPEN.
  HRESULT Init(const char16_t* path, uint32_t flags, int32_t maximumBytes = -1,
               uint32_t share = ZRLOG_DENYNONE) noexcept;
  /// Writes a line of one of the kinds asked for. @param type a kind. @param sourceFile may be null.
  /// @param format as for ZrPrintF, cut at 1023 characters.
  /// @return S_OK, also for a kind that isn't asked for; 0x8004E01B before Init or after a failed roll-over;
  /// ZR_E_FILE_OPEN when this line's roll-over failed; ZR_E_FILE_WRITE.
  HRESULT Write(uint32_t type, const char16_t* sourceFile, int32_t line, const char16_t* format, ...) noexcept;
  /// Closes the file. Init may follow.
  void Shutdown() noexcept;
  /// The path that Init took; empty before.
  const char16_t* GetLogFileName() const noexcept;

 private:
  static constexpr uint32_t kPathCharacters = 260;

  HRESULT Open() noexcept;
  void Close() noexcept;
  HRESULT RollOver() noexcept;
  HRESULT WriteLine(const char* bytes, uint32_t count) noexcept;
  void TakeSettings(const CLog& other) noexcept;

  int32_t initialised_ = 0;
  plat::File* file_ = plat::kInvalidFile;
  uint32_t flags_ = 0;
  int32_t maximumBytes_ = -1;
  char16_t path_[kPathCharacters] = {};
  char16_t previousPath_[kPathCharacters] = {};
  mutable plat::CriticalSection lock_ = {};
  uint32_t share_ = 0;
};

/// Where ZrDebugString writes.
enum ZRDEBUGTARGET : uint32_t {
  ZRDEBUG_FILE = 2,  ///< The file that "LogToFilePath" in section "Debug" of the user's profile names.
};

/// Writes a developer's trace. Opens the file once; without a name or when it can't be opened nothing is written.
/// Other targets need a screen and write nothing until one is attached, and so does a device control code
/// ("DeviceIoctl"). @param endOfLine non-zero adds CR LF. [any thread]
ZR_API void ZrDebugString(const char16_t* text, int32_t endOfLine, uint32_t target) noexcept;
