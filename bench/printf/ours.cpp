// SPDX-License-Identifier: Apache-2.0
// What does a short text for a user cost, against the C library and libfmt, which know no tokens?
#include <cstdio>

#include "harness/harness.h"
#include "kernel/allocation_count.h"
#include "marlo110k/locale.h"
#include "marlo110k/printf.h"
#include "printf/peers.h"

namespace {

constexpr int kTexts = 1000;
constexpr uint32_t kCapacity = 128;

bench::Contender Ours(const char* name, const char16_t* format) {
  return {name,
          [format] {
            char16_t buffer[kCapacity];
            for (int i = 0; i < kTexts; ++i) {
              ZrCchPrintF(buffer, kCapacity, nullptr, format, u"take 7", 44100 + i);
              bench::Use(buffer);
            }
          },
          kTexts};
}

bench::Contender CLibrary() {
  return {"snprintf",
          [] {
            char buffer[kCapacity];
            for (int i = 0; i < kTexts; ++i) {
              std::snprintf(buffer, kCapacity, "%s: %d %s", "take 7", 44100 + i, "Studio");
              bench::Use(buffer);
            }
          },
          kTexts};
}

void AddFmt(bench::Question* question) {
#ifdef MARLO_BENCH_FMT
  question->Peer({"libfmt",
                  [] {
                    char buffer[kCapacity];
                    for (int i = 0; i < kTexts; ++i) {
                      bench_printf::ComposeWithFmt(buffer, kCapacity, "take 7", 44100 + i, "Studio");
                      bench::Use(buffer);
                    }
                  },
                  kTexts});
#else
  question->Absent("libfmt");
#endif
}

}  // namespace

int main() {
  ZrPrintF_AddToken(u"AppName", u"Studio");
  bench::Question tokens("Text, number and token", "texts");
  tokens.Ours(Ours("ZrCchPrintF, token", u"%s: %d $(AppName)"));
  tokens.Peer(CLibrary());
  AddFmt(&tokens);
  tokens.Goal(0, 0.5);
  bool met = tokens.Print();

  bench::Question plain("Text, number and text, no token", "texts");
  plain.Ours(Ours("ZrCchPrintF, plain", u"%s: %d Studio"));
  plain.Peer(CLibrary());
  AddFmt(&plain);
  met = plain.Print() && met;

  bench::Question localised("Text and localised number with token", "texts");
  localised.Ours(Ours("ZrCchPrintF, localised", u"%s: $d $(AppName)"));
  localised.Peer(CLibrary());
  AddFmt(&localised);
  met = localised.Print() && met;

  const uint64_t allocationsBefore = bench::AllocationCount();
  char16_t buffer[kCapacity];
  for (int i = 0; i < kTexts; ++i) {
    ZrCchPrintF(buffer, kCapacity, nullptr, u"%s: $d %.3f $g $(AppName)$, %.2z $!: %I64x", u"take 7", 44100 + i,
                0.5 * i, 1e6 / (i + 1), i, int64_t{i});
    bench::Use(buffer);
  }
  const uint64_t allocations = bench::AllocationCount() - allocationsBefore;
  std::printf("Allocations of %d mixed texts: %llu (goal 0: %s)\n", kTexts,
              static_cast<unsigned long long>(allocations), allocations == 0 ? "met" : "MISSED");
  return met && allocations == 0 ? 0 : 1;
}
