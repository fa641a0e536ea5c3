// SPDX-License-Identifier: Apache-2.0
// Tokens and logs under eight threads: every text is whole, every line stands alone.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "marlo110k/log.h"
#include "marlo110k/printf.h"
#include "platform/base/text.h"

namespace {

constexpr int kThreads = 8;

void RunThreads(void (*work)(int thread, void* data), void* data) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i, data);
  for (std::thread& thread : threads) thread.join();
}

TEST(TokenThreads, ReadersSeeWholeValues) {
  ZrPrintF_AddToken(u"Shared", u"aaaaaaaaaaaaaaaaaaaa");
  std::atomic<int> torn{0};
  RunThreads(
      [](int thread, void* data) {
        char16_t name[16];
        ZrPrintF(name, u"Own%d", thread);
        for (int round = 0; round < 2000; ++round) {
          if (thread < 3) {
            const std::u16string value(static_cast<size_t>(5 + round % 40), static_cast<char16_t>(u'a' + thread));
            ZrPrintF_AddToken(u"Shared", value.c_str());
            ZrPrintF_AddToken(name, value.c_str());
            if (round % 5 == 0) ZrPrintF_DeleteToken(name);
          } else {
            char16_t text[64];
            ZrCchPrintF(text, 64, nullptr, u"$(Shared)");
            for (const char16_t* c = text; *c != 0; ++c) {
              if (*c != text[0]) static_cast<std::atomic<int>*>(data)->fetch_add(1);
            }
          }
        }
        ZrPrintF_DeleteToken(name);
      },
      &torn);
  EXPECT_EQ(0, torn.load());
  EXPECT_EQ(1, ZrPrintF_DeleteToken(u"Shared"));
  EXPECT_EQ(0, ZrPrintF_DeleteToken(u"Own0"));
}

TEST(LogThreads, LinesStayWhole) {
  char pattern[] = "/tmp/marlo_log_XXXXXX";
  const std::string folder = mkdtemp(pattern);
  const std::string path = folder + "/threads.log";
  constexpr int kLines = 200;
  {
    CLog log;
    ASSERT_EQ(S_OK, log.Init(plat::FromUtf8(path.c_str()).c_str(), LOG_ERROR));
    RunThreads(
        [](int thread, void* data) {
          for (int line = 0; line < kLines; ++line) {
            static_cast<CLog*>(data)->Write(LOG_ERROR, u"", 0, u"thread %d line %d end", thread, line);
          }
        },
        &log);
  }
  std::ifstream file(path);
  std::vector<int> next(kThreads, 0);
  int lines = 0;
  for (std::string text; std::getline(file, text); ++lines) {
    int thread = -1, line = -1, consumed = 0;
    ASSERT_EQ(2, std::sscanf(text.c_str(), "ERR thread %d line %d end%n", &thread, &line, &consumed)) << text;
    EXPECT_EQ(static_cast<int>(text.size()), consumed);
    EXPECT_EQ(next[static_cast<size_t>(thread)]++, line);  // each thread's lines keep their order
  }
  EXPECT_EQ(kThreads * kLines, lines);
  unlink(path.c_str());
  rmdir(folder.c_str());
}

}  // namespace
