// SPDX-License-Identifier: Apache-2.0
// Copies block by block and compares the lengths.
#include "file_copy.h"

#include <vector>

#include "errors.h"
#include "open_file.h"
#include "progress.h"
#include "unicode.h"

namespace host {

void CopyToNewFile(plat::File* file, const std::string& path, const std::string& copyPath) {
  const int64_t fileBytes = LengthOf(file, path);
  OpenFile copy(copyPath, plat::kReadWriteAccess, plat::kShareRead, plat::kCreateNew);
  try {
    SeekTo(file, 0, path);
    Progress progress(fileBytes);
    std::vector<uint8_t> block(1u << 20);
    int64_t done = 0;
    uint32_t got = 0;
    do {
      if (!ZrReadFile(file, block.data(), static_cast<uint32_t>(block.size()), &got)) {
        throw Failure(ZR_E_FILE_READ, path);
      }
      if (!plat::WriteFile(copy.Get(), block.data(), got, nullptr)) throw WriteFailure(copyPath);
      done += got;
      progress.Update(done);
    } while (got != 0);
    if (done != fileBytes) throw Failure(ZR_E_FILE_READ, path);
    if (!plat::FlushFile(copy.Get())) throw WriteFailure(copyPath);
  } catch (...) {
    copy.Close();
    plat::RemoveFile(ToUtf16(copyPath).c_str());
    throw;
  }
}

}  // namespace host
