// SPDX-License-Identifier: Apache-2.0
// What does a position cost that a display shows at every refresh, in each format, and reading it back?
#include <string>

#include "harness/harness.h"
#include "marlo110k/timetext.h"
#include "timetext/peers.h"

namespace {

constexpr int kTexts = 1000;
constexpr uint32_t kCapacity = 64;
constexpr int64_t kStepTicks = 36'615'123;
constexpr double kMostNanoseconds = 500;

_zrposfmt Format(uint32_t format) { return {format, 48000, 29.97, 120, 0, 4, 4, 960}; }

bench::Contender Show(uint32_t format) {
  return {"ZrNanoTimeToTextN",
          [format] {
            const _zrposfmt position = Format(format);
            char16_t text[kCapacity];
            for (int i = 0; i < kTexts; ++i) {
              ZrNanoTimeToTextN(text, kCapacity, &position, i * kStepTicks, 0);
              bench::Use(text);
            }
          },
          kTexts};
}

bench::Contender Read(uint32_t format) {
  return {"ZrTextToNanoTimeToken",
          [format] {
            const _zrposfmt position = Format(format);
            char16_t text[kCapacity];
            ZrNanoTimeToTextN(text, kCapacity, &position, 1234 * kStepTicks, 0);
            for (int i = 0; i < kTexts; ++i) {
              const int64_t ticks = ZrTextToNanoTimeToken(text, &position, 0, nullptr);
              bench::Use(&ticks);
            }
          },
          kTexts};
}

void AddFmt(bench::Question* question) {
#ifdef MARLO_BENCH_FMT
  question->Peer({"libfmt, clock",
                  [] {
                    char text[kCapacity];
                    for (int i = 0; i < kTexts; ++i) {
                      bench_timetext::ClockWithFmt(text, kCapacity, i * kStepTicks);
                      bench::Use(text);
                    }
                  },
                  kTexts});
#else
  question->Absent("libfmt");
#endif
}

}  // namespace

int main() {
  bool met = true;
  for (uint32_t format = ZRPOS_SAMPLES; format <= ZRPOS_CLOCK; ++format) {
    bench::Question question("Position to text, format " + std::to_string(format), "texts");
    question.Ours(Show(format));
    AddFmt(&question);
    question.Goal(-1, 1e9 / kMostNanoseconds);
    met = question.Print() && met;
  }
  for (const uint32_t format : {ZRPOS_SAMPLES, ZRPOS_TIME, ZRPOS_MEASURES, ZRPOS_SMPTE2997DROP}) {
    bench::Question question("Text to position, format " + std::to_string(format), "texts");
    question.Ours(Read(format));
    AddFmt(&question);
    question.Goal(-1, 1e9 / kMostNanoseconds);
    met = question.Print() && met;
  }
  return met ? 0 : 1;
}
