// SPDX-License-Identifier: Apache-2.0
// Files that claim to hold a version resource: whatever stands in them, the readers end, stay inside and cut values
// to the buffer.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/base/text.h"
#include "platform/sys/module.h"
#include "platform/sys/resource_image.h"
#include "platform/sys/versioninfo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const int descriptor = memfd_create("input", MFD_CLOEXEC);
  if (descriptor < 0 || write(descriptor, data, bytes) != static_cast<ssize_t>(bytes)) std::abort();
  const std::u16string path = plat::FromUtf8(("/proc/self/fd/" + std::to_string(descriptor)).c_str());

  uint16_t language = 0;
  uint16_t codePage = 0;
  plat::VersionTranslation(path.c_str(), &language, &codePage);
  for (const char16_t* subBlock : {u"\\StringFileInfo\\040904B0\\ProductName", u"", u"\\", u"\\VarFileInfo"}) {
    char16_t buffer[9];
    buffer[8] = 0xD00D;
    if (plat::VersionValue(path.c_str(), subBlock, buffer, 8) && plat::TextLength(buffer) > 7) std::abort();
    if (buffer[8] != 0xD00D) std::abort();
  }
  const uint32_t bits = plat::ModuleBits(path.c_str());
  if (bits != 0 && bits != 32 && bits != 64) std::abort();

  std::vector<uint8_t> resources;
  if (plat::ReadResources(path.c_str(), &resources)) {
    plat::ResourceWalk walk(resources.data(), resources.size());
    plat::ResourceEntry entry;
    const uint8_t* end = resources.data() + resources.size();
    size_t entries = 0;
    while (walk.Next(&entry)) {
      if (entry.data + entry.bytes > end || entry.data < resources.data()) std::abort();
      if (++entries > resources.size() / 13 + 1) std::abort();
    }
  }
  close(descriptor);
  return 0;
}
