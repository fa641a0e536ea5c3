// SPDX-License-Identifier: Apache-2.0
// What does reading a text in the user's language cost: by a random id, by the same id, by a descriptor?
#include <random>
#include <vector>

#include "harness/harness.h"
#include "kernel/strings.h"
#include "lang/peers.h"
#include "marlo110k/lang.h"
#include "platform/base/text.h"
#include "platform/sys/module.h"

namespace {

constexpr uint32_t kStrings = 939;
constexpr double kReads = 10000;

std::vector<uint32_t> RandomIds() {
  std::mt19937 engine(1);
  std::vector<uint32_t> ids(static_cast<size_t>(kReads));
  for (uint32_t& id : ids) id = 1 + static_cast<uint32_t>(engine() % kStrings);
  return ids;
}

void AddIcu(bench::Question* question, const std::vector<uint32_t>& ids) {
#ifdef MARLO_BENCH_ICU
  question->Peer({"ICU message format",
                  [&ids] {
                    for (const uint32_t id : ids) bench::Use(bench_lang::FormatWithIcu(id - 1));
                  },
                  kReads});
#else
  question->Absent("ICU message format");
#endif
}

}  // namespace

int main() {
  plat::Module* module = plat::LoadDataModule(plat::FromUtf8(MARLO_BENCH_STRINGS).c_str());
  HZRLANG language = nullptr;
  if (module == nullptr || FAILED(ZrLang_Open(&language, module, 0x409, 0))) return 1;
  if (*ZrGetString(language, kStrings) == 0) return 1;
  const std::vector<uint32_t> ids = RandomIds();
  const std::vector<uint32_t> same(ids.size(), 500);

  bench::Question random("String by one of 939 ids", "strings");
  random.Ours({"ZrGetString, random id",
               [&] {
                 for (const uint32_t id : ids) bench::Use(ZrGetString(language, id));
               },
               kReads});
  AddIcu(&random, ids);
  random.Goal(-1, 1e9 / 100);
  bool met = random.Print();

  bench::Question repeated("String by the same id", "strings");
  repeated.Ours({"ZrGetString, same id",
                 [&] {
                   for (const uint32_t id : same) bench::Use(ZrGetString(language, id));
                 },
                 kReads});
  AddIcu(&repeated, same);
  repeated.Goal(-1, 1e9 / 40);
  met = repeated.Print() && met;

  bench::Question descriptor("Text by descriptor", "texts");
  descriptor.Ours({"ZrGetString, descriptor",
                   [&] {
                     for (const uint32_t id : ids) {
                       bench::Use(ZrGetString(language, &marlo::catalogue[id % marlo::kTexts]));
                     }
                   },
                   kReads});
  AddIcu(&descriptor, ids);
  descriptor.Goal(-1, 1e9 / 5);
  met = descriptor.Print() && met;

  ZrLang_Close(language);
  plat::UnloadModule(module);
  return met ? 0 : 1;
}
