// SPDX-License-Identifier: Apache-2.0
// Profile files of any bytes: a value never passes its buffer, and the number is the text's.
#include "platform/sys/profile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/base/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const int descriptor = memfd_create("input", MFD_CLOEXEC);
  if (descriptor < 0 || write(descriptor, data, bytes) != static_cast<ssize_t>(bytes)) std::abort();
  const std::u16string path = plat::FromUtf8(("/proc/self/fd/" + std::to_string(descriptor)).c_str());
  for (const char16_t* key : {u"k", u"", u"Level"}) {
    char16_t buffer[9];
    buffer[8] = 0xD00D;
    const size_t written = plat::ProfileText(path.c_str(), u"a", key, u"default", buffer, 8);
    if (written > 7 || plat::TextLength(buffer) != written || buffer[8] != 0xD00D) std::abort();
    const int32_t number = plat::ProfileInt(path.c_str(), u"a", key, -12345);
    const bool digit = buffer[0] >= u'0' && buffer[0] <= u'9';
    if (digit && number == 0 && buffer[0] != u'0' && written < 7) std::abort();
  }
  close(descriptor);
  return 0;
}
