// SPDX-License-Identifier: Apache-2.0
// One read and one write.
#include "whole_file.h"

#include "errors.h"
#include "open_file.h"
#include "output_file.h"

namespace host {

std::vector<uint8_t> ReadWholeFile(const std::string& path) {
  // A picture within its limit of pixels seldom needs more than their 256 MiB.
  constexpr int64_t kMostFileBytes = int64_t{1} << 29;
  const OpenFile file = OpenFile::ForReading(path);
  const int64_t length = LengthOf(file.Get(), path);
  if (length > kMostFileBytes) throw Failure(ZR_E_FILE_TOO_LARGE, path);
  std::vector<uint8_t> bytes(static_cast<size_t>(length));
  uint32_t got = 0;
  if (!bytes.empty() && (!plat::ReadFile(file.Get(), bytes.data(), static_cast<uint32_t>(length), &got) ||
                         got != static_cast<uint32_t>(length))) {
    throw Failure(ZR_E_FILE_READ, path);
  }
  return bytes;
}

void WriteWholeFile(const std::string& path, const uint8_t* data, size_t bytes) {
  OutputFile output(path);
  OpenFile file(output.TemporaryPath(), plat::kWriteAccess, plat::kShareNone, plat::kCreateAlways);
  uint32_t written = 0;
  if (!plat::WriteFile(file.Get(), data, static_cast<uint32_t>(bytes), &written) || written != bytes) {
    throw WriteFailure(path);
  }
  file.Close();
  output.Commit();
}

}  // namespace host
