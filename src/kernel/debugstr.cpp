// SPDX-License-Identifier: Apache-2.0
// A developer's trace output, into the file that the user's profile names.
#include <mutex>
#include <string>

#include "marlo110k/log.h"
#include "platform/base/text.h"
#include "platform/sys/profile.h"

namespace marlo {
namespace {

constexpr char16_t kSection[] = u"Debug";
constexpr size_t kPathCharacters = 260;

/// The trace file, opened by the first line that wants it.
struct TraceFile {
  std::mutex lock;
  bool tried;
  plat::File* file;
};
constinit TraceFile trace{};

plat::File* OpenTrace() noexcept {
  char16_t path[kPathCharacters];
  plat::ProfileText(plat::UserProfilePath().c_str(), kSection, u"LogToFilePath", u"", path, kPathCharacters);
  if (path[0] == 0) return plat::kInvalidFile;
  constexpr uint32_t kShare = plat::kShareRead | plat::kShareWrite;
  if (plat::CompareTextNoCase(path, u"COM1") != 0) {
    return plat::OpenFile(path, plat::kReadWriteAccess, kShare, plat::kOpenAlways);
  }
  // A device exists or it doesn't: no file of its name is made.
  plat::File* port = plat::OpenFile(path, plat::kReadWriteAccess, kShare, plat::kOpenExisting);
  if (port != plat::kInvalidFile) return port;
  return plat::OpenFile(u"AUX", plat::kReadWriteAccess, kShare, plat::kOpenExisting);
}

void WriteTrace(const std::string& bytes) noexcept {
  const std::lock_guard guard(trace.lock);
  if (!trace.tried) {
    trace.tried = true;
    trace.file = OpenTrace();
  }
  if (trace.file == plat::kInvalidFile) return;
  plat::SeekFile(trace.file, 0, plat::kSeekEnd, nullptr);
  plat::WriteFile(trace.file, bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
}

}  // namespace
}  // namespace marlo

void ZrDebugString(const char16_t* text, int32_t endOfLine, uint32_t target) noexcept {
  if (target != ZRDEBUG_FILE || text == nullptr) return;
  if (plat::ProfileInt(plat::UserProfilePath().c_str(), marlo::kSection, u"DeviceIoctl", 0) != 0) return;
  try {
    std::string bytes = plat::ToUtf8(text);
    if (endOfLine != 0) bytes += "\r\n";
    marlo::WriteTrace(bytes);
  } catch (...) {
    // A trace line is never worth a failure.
  }
}
