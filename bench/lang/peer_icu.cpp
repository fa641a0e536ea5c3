// SPDX-License-Identifier: Apache-2.0
// ICU message formats, one a text, kept parsed.
#include <unicode/umsg.h>

#include <cstdio>
#include <vector>

#include "lang/peers.h"

namespace bench_lang {

const char16_t* FormatWithIcu(unsigned index) {
  static const std::vector<UMessageFormat*> formats = [] {
    std::vector<UMessageFormat*> made;
    for (unsigned i = 0; i < kIcuMessages; ++i) {
      char narrow[64];
      const int characters = std::snprintf(narrow, sizeof narrow, "The text of the string number %u", i + 1);
      char16_t pattern[64];
      for (int k = 0; k <= characters; ++k) pattern[k] = static_cast<unsigned char>(narrow[k]);
      UErrorCode status = U_ZERO_ERROR;
      made.push_back(umsg_open(pattern, characters, "en_US", nullptr, &status));
    }
    return made;
  }();
  static char16_t buffer[128];
  UErrorCode status = U_ZERO_ERROR;
  umsg_format(formats[index], buffer, 128, &status);
  return buffer;
}

}  // namespace bench_lang
