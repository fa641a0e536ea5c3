// SPDX-License-Identifier: Apache-2.0
// Compiled resource files in memory: whatever stands in them, what is found lies inside.
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#include "marlo110k/resources.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const ZRRESPOOL pool{static_cast<uint32_t>(bytes), data};
  const char16_t* const names[] = {ZrResourceId(0), ZrResourceId(1), ZrResourceId(3), u"NAME", u""};
  for (const char16_t* type : {ZrResourceId(kZrDialogResource), ZrResourceId(0), u"TYPE"}) {
    for (const char16_t* name : names) {
      for (const uint32_t lcid : {0U, 0x407U}) {
        uint32_t size = 1;
        uint32_t language = 1;
        const auto* const found =
            static_cast<const uint8_t*>(ZrFindResourceInResPool(&pool, &size, name, type, lcid, &language));
        if (found == nullptr && (size != 0 || language != 0)) std::abort();
        if (found != nullptr && (found < data || found > data + bytes || size > bytes)) std::abort();
        if (found != nullptr && found + size > data + bytes) std::abort();
      }
    }
  }
  return 0;
}
