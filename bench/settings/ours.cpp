// SPDX-License-Identifier: Apache-2.0
// What does a setting cost: reading it, finding it missing, writing it?
#include <stdlib.h>

#include <cstdint>
#include <filesystem>

#include "harness/harness.h"
#include "marlo110k/metric.h"
#include "platform/sys/settings.h"
#include "settings/peers.h"

namespace {

using bench_settings::kIds;

constexpr double kReadsASecond = 1e6 / 10;        // 10 us each
constexpr double kWritesASecond = 1000.0 / 0.06;  // 1,000 in 60 ms

int value = 0;

void UseNumber(int number) { bench::Use(reinterpret_cast<const void*>(static_cast<intptr_t>(number))); }

bool CompareReads(HZRMETRIC metric, const char* title, int firstId) {
  bench::Question question(title, "reads");
  question.Ours({"ZrGetMetric",
                 [=] {
                   for (int id = 0; id < kIds; ++id) UseNumber(ZrGetMetric(metric, firstId + id));
                 },
                 kIds});
#ifdef MARLO_BENCH_GSETTINGS
  question.Peer({"GSettings key file, from its memory",
                 [] {
                   for (int id = 0; id < kIds; ++id) UseNumber(bench_settings::ReadWithGSettings(id));
                 },
                 kIds});
#else
  question.Absent("GSettings");
#endif
  question.Goal(-1, kReadsASecond);
  return question.Print();
}

bool CompareWrites(HZRMETRIC metric) {
  bench::Question question("Writing a number", "writes");
  question.Ours({"ZrSetMetric",
                 [=] {
                   for (int id = 0; id < kIds; ++id) ZrSetMetric(metric, id, ++value);
                 },
                 kIds});
#ifdef MARLO_BENCH_GSETTINGS
  question.Peer({"GSettings key file",
                 [] {
                   for (int id = 0; id < kIds; ++id) bench_settings::WriteWithGSettings(id, ++value);
                 },
                 kIds});
#else
  question.Absent("GSettings");
#endif
  question.Goal(-1, kWritesASecond);
  return question.Print(5);
}

}  // namespace

int main() {
  std::string folder = (std::filesystem::temp_directory_path() / "marlo-bench-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return 1;
  plat::UseSettings(plat::SettingsBackend::kFiles, std::filesystem::path(folder).u16string().c_str());
#ifdef MARLO_BENCH_GSETTINGS
  bench_settings::OpenGSettings(folder);
#endif
  HZRMETRIC metric = nullptr;
  bool met = ZrMetric_Open(&metric, u"Bench", 0x0B000000, u"Kernel\\Deep") == S_OK;
  for (int id = 0; id < kIds; ++id) ZrSetMetric(metric, id, id);
  met = CompareReads(metric, "Reading a number", 0) && met;
  met = CompareReads(metric, "Reading a number that is missing", 1000) && met;
  met = CompareWrites(metric) && met;
  ZrMetric_Close(metric);
#ifdef MARLO_BENCH_GSETTINGS
  bench_settings::CloseGSettings();
#endif
  plat::UseSettings(plat::SettingsBackend::kFiles, nullptr);
  std::filesystem::remove_all(folder);
  return met ? 0 : 1;
}
