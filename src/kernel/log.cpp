// SPDX-License-Identifier: Apache-2.0
// Writes log files that roll over at their maximum size.
#include "marlo110k/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "kernel/file_name.h"
#include "marlo110k/printf.h"
#include "platform/base/clock.h"
#include "platform/base/text.h"
#include "platform/sys/file_backend.h"

namespace marlo {
namespace {

constexpr HRESULT kNotInitialised = ZrCode(0x8004E01B);
constexpr uint32_t kKinds = 0xFFFF;
constexpr uint32_t kTextCharacters = 1024;
constexpr char16_t kPreviousSuffix[] = u".previous";

const char* PrefixOf(uint32_t type) noexcept {
  switch (type & kKinds) {
    case LOG_ERROR:
      return "ERR ";
    case LOG_WARNING:
      return "WARN";
    case LOG_INFORMATION:
      return "INFO";
    case LOG_DEBUG:
      return "DBG ";
    default:
      return "????";
  }
}

uint32_t FileShareOf(uint32_t share) noexcept {
  switch (share) {
    case ZRLOG_DENYALL:
      return plat::kShareNone;
    case ZRLOG_DENYWRITE:
      return plat::kShareRead;
    case ZRLOG_DENYREAD:
      return plat::kShareWrite;
    default:
      return plat::kShareRead | plat::kShareWrite;
  }
}

}  // namespace
}  // namespace marlo

CLog::CLog() noexcept { plat::InitializeLock(&lock_); }

CLog::CLog(const CLog& other) noexcept {
  plat::InitializeLock(&lock_);
  TakeSettings(other);
}

CLog& CLog::operator=(const CLog& other) noexcept {
  if (this == &other) return *this;
  Shutdown();
  TakeSettings(other);
  return *this;
}

CLog::~CLog() {
  Shutdown();
  plat::DeleteLock(&lock_);
}

void* CLog::DeleteSelf(uint32_t flags) noexcept {
  constexpr uint32_t kFreeMemory = 1;
  CLog::~CLog();
  if ((flags & kFreeMemory) != 0) ::operator delete(this);
  // The slot's contract gives the address back, whatever stands there now.
  return this;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

void CLog::TakeSettings(const CLog& other) noexcept {
  const plat::LockGuard guard(&other.lock_);
  flags_ = other.flags_;
  maximumBytes_ = other.maximumBytes_;
  share_ = other.share_;
  std::memcpy(path_, other.path_, sizeof path_);
  std::memcpy(previousPath_, other.previousPath_, sizeof previousPath_);
}

HRESULT CLog::Init(const char16_t* path, uint32_t flags, int32_t maximumBytes, uint32_t share) noexcept {
  const plat::LockGuard guard(&lock_);
  if (path == nullptr || flags == 0) return E_INVALIDARG;
  if (plat::TextLength(path) + std::size(marlo::kPreviousSuffix) > kPathCharacters) return E_INVALIDARG;
  Close();
  const size_t characters = plat::CopyText(path_, kPathCharacters, path);
  plat::CopyText(previousPath_, kPathCharacters, path);
  plat::CopyText(previousPath_ + characters, kPathCharacters - characters, marlo::kPreviousSuffix);
  flags_ = flags;
  maximumBytes_ = maximumBytes;
  share_ = share;
  return Open();
}

HRESULT CLog::Open() noexcept {
  file_ = plat::OpenFile(path_, plat::kReadWriteAccess, marlo::FileShareOf(share_), plat::kOpenAlways);
  initialised_ = file_ != plat::kInvalidFile ? 1 : 0;
  return initialised_ != 0 ? S_OK : ZR_E_FILE_OPEN;
}

void CLog::Close() noexcept {
  if (file_ != plat::kInvalidFile) plat::CloseFile(file_);
  file_ = plat::kInvalidFile;
  initialised_ = 0;
}

HRESULT CLog::RollOver() noexcept {
  Close();
  // A log that can't be renamed goes on growing under its own name: lines are worth more than the limit.
  plat::RemoveFile(previousPath_);
  plat::MoveFileOver(path_, previousPath_);
  return Open();
}

HRESULT CLog::WriteLine(const char* bytes, uint32_t count) noexcept {
  // Appending: other writers may have made the file longer. Nothing is buffered on this side, so a line that was
  // written outlives the process.
  if (!plat::SeekFile(file_, 0, plat::kSeekEnd, nullptr)) return ZR_E_FILE_WRITE;
  return plat::WriteFile(file_, bytes, count, nullptr) ? S_OK : ZR_E_FILE_WRITE;
}

HRESULT CLog::Write(uint32_t type, const char16_t* sourceFile, int32_t line, const char16_t* format, ...) noexcept {
  const plat::LockGuard guard(&lock_);
  if (initialised_ == 0) return marlo::kNotInitialised;
  if ((type & flags_ & marlo::kKinds) == 0) return S_OK;
  uint64_t position = 0;
  if (maximumBytes_ > 0 && plat::SeekFile(file_, 0, plat::kSeekEnd, &position) &&
      position >= static_cast<uint64_t>(maximumBytes_)) {
    const HRESULT result = RollOver();
    if (FAILED(result)) return result;
  }

  char16_t text[marlo::kTextCharacters];
  va_list arguments;
  va_start(arguments, format);
  ZrNVPrintF(text, marlo::kTextCharacters, nullptr, format, arguments);
  va_end(arguments);
  try {
    std::string bytes = marlo::PrefixOf(type);
    char part[64];
    if ((flags_ & LOG_TIME) != 0) {
      const plat::LocalTime now = plat::GetLocalTime();
      std::snprintf(part, sizeof part, " %02d-%02d-%02d %02d:%02d:%02d ", now.year, now.month, now.day, now.hour,
                    now.minute, now.second);
      bytes += part;
    }
    if ((flags_ & LOG_SOURCE) != 0) {
      constexpr size_t kNameWidth = 15;
      const std::string name = plat::ToUtf8(marlo::FileNameOf(sourceFile != nullptr ? sourceFile : u""));
      if (name.size() < kNameWidth) bytes.append(kNameWidth - name.size(), ' ');
      std::snprintf(part, sizeof part, "(%4d): ", line);
      bytes.append(name).append(part);
    }
    bytes.append(plat::ToUtf8(text)).append("\n");
    return WriteLine(bytes.data(), static_cast<uint32_t>(bytes.size()));
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

void CLog::Shutdown() noexcept {
  const plat::LockGuard guard(&lock_);
  Close();
}

const char16_t* CLog::GetLogFileName() const noexcept { return path_; }
