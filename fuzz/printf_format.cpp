// SPDX-License-Identifier: Apache-2.0
// Formats of any characters, as a slip of a translator could make them: nothing is read or written outside, a cut
// text is the beginning of the whole one, and the buffer ends where it was said to end.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "marlo110k/locale.h"
#include "marlo110k/printf.h"

namespace {

// A conversion takes at least two characters, so this many arguments serve every format.
constexpr size_t kFormatCharacters = 200;
constexpr size_t kArguments = kFormatCharacters / 2;
constexpr uint32_t kWholeCharacters = 300 * 1024;  // 100 texts of 1,024 characters and what stands between them
constexpr uint32_t kInserts = 99;
constexpr char16_t kGuard = 0xD00D;

// Every argument is a text that may also be printed as a number, and the reals come from their own registers first.
alignas(4) constexpr char16_t kText[] = u"text\u00E4";

void Require(bool holds) {
  if (!holds) std::abort();
}

template <size_t... kIndex>
HRESULT Print(char16_t* buffer, uint32_t size, uint32_t* written, const char16_t* format,
              std::index_sequence<kIndex...>) {
  return ZrCchPrintF(buffer, size, written, format, 0.5, -1e300, 1e-300, 1234567.0, 0.0, 1e15, -0.25, 3e8,
                     ((void)kIndex, kText)...);
}

template <size_t... kIndex>
uint32_t Compose(char16_t* buffer, uint32_t size, const char16_t* format, std::index_sequence<kIndex...>) {
  return ZrComposeStr(buffer, size, format, ((void)kIndex, kText)...);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  if (bytes < 2) return 0;
  const uint32_t size = 1 + data[0] + data[1] % 8 * 256u;
  const size_t characters = std::min((bytes - 2) / sizeof(char16_t), kFormatCharacters);
  std::vector<char16_t> format(characters + 1);
  if (characters > 0) std::memcpy(format.data(), data + 2, characters * sizeof(char16_t));

  static std::vector<char16_t> whole(kWholeCharacters);
  uint32_t length = 0;
  Print(whole.data(), kWholeCharacters, &length, format.data(), std::make_index_sequence<kArguments>());
  Require(length < kWholeCharacters && whole[length] == 0);

  std::vector<char16_t> cut(size + 1, kGuard);
  uint32_t written = 0;
  const HRESULT result = Print(cut.data(), size, &written, format.data(), std::make_index_sequence<kArguments>());
  Require(written == std::min(length, size - 1) && cut[written] == 0 && cut[size] == kGuard);
  Require(std::equal(cut.begin(), cut.begin() + written, whole.begin()));
  Require(result == S_OK || result == ZR_E_BUFFER_TOO_SMALL);

  cut.assign(size + 1, kGuard);
  const uint32_t composed = Compose(cut.data(), size, format.data(), std::make_index_sequence<kInserts>());
  Require(composed < size && cut[composed] == 0 && cut[size] == kGuard);

  cut.assign(size + 1, kGuard);
  const auto number = static_cast<uint32_t>(ZrFormatGroupDecimalNumber(format.data(), cut.data(), size, data[0] % 12));
  Require(number < size && cut[number] == 0 && cut[size] == kGuard);
  return 0;
}
