// SPDX-License-Identifier: Apache-2.0
// One settings handle under eight threads, while another thread takes the store away.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "marlo110k/metric.h"
#include "platform/sys/settings.h"
#include "testing/temp_folder.h"
#include "testing/worker.h"

namespace {

class SettingsThreads : public testing::TestWithParam<plat::SettingsBackend> {};

TEST_P(SettingsThreads, ValuesAreWhole) {
  const testing_support::TempFolder folder;
  const std::u16string path = folder.Path().u16string();
  plat::UseSettings(GetParam(), path.c_str());
  HZRMETRIC metric = nullptr;
  ASSERT_EQ(S_OK, ZrMetric_Open(&metric, u"P", 0, u"Shared"));
  std::atomic<int> wrong{0};
  {
    std::vector<testing_support::Worker> threads;
    for (int thread = 0; thread < 8; ++thread) {
      threads.emplace_back([&, thread] {
        const std::string own(100, static_cast<char>('a' + thread));
        for (int round = 1; round <= 40; ++round) {
          if (ZrSetMetric(metric, thread, round) != S_OK || ZrGetMetric(metric, thread) != round) ++wrong;
          ZrSetMetricBinary(metric, 100, own.data(), 100);
          std::string read(100, '\0');
          if (ZrGetMetricBinary(metric, 100, read.data(), 100) != 100) ++wrong;
          if (read != std::string(100, read[0])) ++wrong;
        }
      });
    }
    // The files are closed and opened again below the handle; their content stays.
    if (GetParam() == plat::SettingsBackend::kFiles) {
      for (int i = 0; i < 5; ++i) plat::UseSettings(GetParam(), path.c_str());
    }
  }
  EXPECT_EQ(0, wrong);
  for (int thread = 0; thread < 8; ++thread) EXPECT_EQ(40, ZrGetMetric(metric, thread));
  ZrMetric_Close(metric);
  plat::UseSettings(plat::SettingsBackend::kFiles, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Backends, SettingsThreads,
                         testing::Values(plat::SettingsBackend::kFiles, plat::SettingsBackend::kMemory));

}  // namespace
