// SPDX-License-Identifier: Apache-2.0
// Language modules: whatever stands in the file, strings stay inside the buffer and inside the file.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "kernel/module_resources.h"
#include "kernel/string_tables.h"
#include "platform/base/text.h"
#include "platform/sys/module.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const int descriptor = memfd_create("input", MFD_CLOEXEC);
  if (descriptor < 0 || write(descriptor, data, bytes) != static_cast<ssize_t>(bytes)) std::abort();
  const std::u16string path = plat::FromUtf8(("/proc/self/fd/" + std::to_string(descriptor)).c_str());
  plat::Module* const module = plat::LoadDataModule(path.c_str());
  for (uint32_t id = 0; module != nullptr && id < 48; ++id) {
    for (const uint32_t lcid : {0U, 0x407U, 0x411U}) {
      char16_t buffer[9];
      buffer[8] = 0xD00D;
      const int32_t characters = marlo::LoadTableString(module, id, lcid, buffer, 8);
      if (characters < 0 || characters > 8 || buffer[8] != 0xD00D) std::abort();
      if (characters > 0 && plat::TextLength(buffer) > 7) std::abort();
    }
    // Adopted strings stay for good, so only small files give some.
    const char16_t* adopted = bytes < 512 ? marlo::AdoptTableString(module, id, 0x407) : nullptr;
    if (adopted != nullptr && plat::TextLength(adopted) > 0xFFFF) std::abort();
  }
  marlo::ForgetModuleResources(module);
  plat::UnloadModule(module);
  close(descriptor);
  return 0;
}
