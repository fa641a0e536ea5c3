// SPDX-License-Identifier: Apache-2.0
// Log files: what a line looks like, and what happens when a file has reached its size.
#include "marlo110k/log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/base/text.h"
#include "platform/sys/thread.h"

namespace {

class Log : public ::testing::Test {
 protected:
  Log() {
    char pattern[] = "/tmp/marlo_log_XXXXXX";
    folder_ = mkdtemp(pattern);
    path_ = folder_ + "/scan.log";
  }
  ~Log() override {
    unlink(path_.c_str());
    unlink(Previous().c_str());
    rmdir(Previous().c_str());
    rmdir(folder_.c_str());
  }
  std::string Previous() const { return path_ + ".previous"; }
  std::u16string WidePath() const { return plat::FromUtf8(path_.c_str()); }
  static std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string folder_;
  std::string path_;
};

TEST_F(Log, KindsAndPrefixes) {
  CLog log;
  EXPECT_EQ(std::u16string(), log.GetLogFileName());
  EXPECT_EQ(ZrCode(0x8004E01B), log.Write(LOG_ERROR, u"", 0, u"too early"));
  EXPECT_EQ(E_INVALIDARG, log.Init(nullptr, LOG_ERROR));
  EXPECT_EQ(E_INVALIDARG, log.Init(WidePath().c_str(), 0));
  EXPECT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR | LOG_WARNING | LOG_DEBUG));
  EXPECT_EQ(WidePath(), log.GetLogFileName());
  EXPECT_EQ(S_OK, log.Write(LOG_ERROR, u"", 0, u"%d of %s", 1, u"Grün"));
  EXPECT_EQ(S_OK, log.Write(LOG_WARNING, u"", 0, u"two"));
  EXPECT_EQ(S_OK, log.Write(LOG_INFORMATION, u"", 0, u"not asked for"));
  EXPECT_EQ(S_OK, log.Write(LOG_DEBUG, u"", 0, u"three"));
  EXPECT_EQ(S_OK, log.Write(LOG_ERROR | LOG_INFORMATION, u"", 0, u"four"));
  EXPECT_EQ("ERR 1 of Grün\nWARNtwo\nDBG three\n????four\n", Contents(path_));
  log.Shutdown();
  EXPECT_EQ(ZrCode(0x8004E01B), log.Write(LOG_ERROR, u"", 0, u"too late"));
  EXPECT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR));
  EXPECT_EQ(S_OK, log.Write(LOG_ERROR, u"", 0, u"again"));
  EXPECT_EQ("ERR 1 of Grün\nWARNtwo\nDBG three\n????four\nERR again\n", Contents(path_));
}

TEST_F(Log, TimeAndSource) {
  CLog log;
  ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR | LOG_TIME | LOG_SOURCE));
  log.Write(LOG_ERROR, u"C:\\src\\scan.cpp", 42, u"x");
  log.Write(LOG_ERROR, u"/src/a_rather_long_name.cpp", 123456, u"y");
  log.Write(LOG_ERROR, nullptr, -1, u"z");
  const std::string text = Contents(path_);
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, consumed = 0;
  ASSERT_EQ(6, std::sscanf(text.c_str(), "ERR  %4d-%2d-%2d %2d:%2d:%2d%n", &year, &month, &day, &hour, &minute, &second,
                           &consumed))
      << text;
  EXPECT_EQ(24, consumed);  // every field has its full width
  EXPECT_GE(year, 2024);
  EXPECT_EQ("       scan.cpp(  42): x\n", text.substr(25, 25));
  EXPECT_NE(std::string::npos, text.find(" a_rather_long_name.cpp(123456): y\n"));
  EXPECT_NE(std::string::npos, text.find(" " + std::string(15, ' ') + "(  -1): z\n"));
}

TEST_F(Log, RollsOver) {
  {
    CLog log;
    ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR, 20));
    for (int line = 0; line < 3; ++line) log.Write(LOG_ERROR, u"", 0, u"line %d", line);  // 11 bytes each
    EXPECT_EQ("ERR line 2\n", Contents(path_));
    EXPECT_EQ("ERR line 0\nERR line 1\n", Contents(Previous()));
    log.Write(LOG_ERROR, u"", 0, u"line 3");
    log.Write(LOG_ERROR, u"", 0, u"line 4");
    EXPECT_EQ("ERR line 4\n", Contents(path_));
    EXPECT_EQ("ERR line 2\nERR line 3\n", Contents(Previous()));
  }
  // The size of an older session counts.
  std::ofstream(path_, std::ios::binary) << std::string(20, 'o');
  CLog log;
  ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR, 20));
  log.Write(LOG_ERROR, u"", 0, u"new");
  EXPECT_EQ("ERR new\n", Contents(path_));
  EXPECT_EQ(std::string(20, 'o'), Contents(Previous()));
}

TEST_F(Log, FailedRollOverStaysUnusable) {
  CLog log;
  ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR, 5));
  log.Write(LOG_ERROR, u"", 0, u"long enough");
  // Something that can't be opened takes the log's place as soon as it was renamed away.
  unlink(path_.c_str());
  ASSERT_EQ(0, mkdir(path_.c_str(), 0755));
  EXPECT_EQ(S_OK, log.Write(LOG_INFORMATION, u"", 0, u"not asked for"));
  ASSERT_EQ(0, mkdir(Previous().c_str(), 0755));
  ASSERT_EQ(0, mkdir((Previous() + "/full").c_str(), 0755));
  EXPECT_EQ(ZR_E_FILE_OPEN, log.Write(LOG_ERROR, u"", 0, u"rolls over"));
  EXPECT_EQ(ZrCode(0x8004E01B), log.Write(LOG_ERROR, u"", 0, u"after it"));
  rmdir((Previous() + "/full").c_str());
  rmdir(Previous().c_str());
  rmdir(path_.c_str());
  EXPECT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR));
}

TEST_F(Log, BadPaths) {
  CLog log;
  EXPECT_EQ(ZR_E_FILE_OPEN, log.Init((plat::FromUtf8(folder_.c_str()) + u"/no/such/folder.log").c_str(), LOG_ERROR));
  EXPECT_EQ(ZrCode(0x8004E01B), log.Write(LOG_ERROR, u"", 0, u"x"));
  EXPECT_EQ(E_INVALIDARG, log.Init(std::u16string(251, u'x').c_str(), LOG_ERROR));
  EXPECT_EQ(E_INVALIDARG, log.Init(std::u16string(5000, u'x').c_str(), LOG_ERROR));
}

TEST_F(Log, LongLinesAreCut) {
  CLog log;
  ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR));
  const std::u16string text(5000, u'x');
  EXPECT_EQ(S_OK, log.Write(LOG_ERROR, u"", 0, u"%s", text.c_str()));
  EXPECT_EQ("ERR " + std::string(1023, 'x') + "\n", Contents(path_));
}

TEST_F(Log, DeleteSelfClosesTheFile) {
  CLog* log = new CLog;
  ASSERT_EQ(S_OK, log->Init(WidePath().c_str(), LOG_ERROR, -1, ZRLOG_DENYALL));
  CLog second;
  EXPECT_EQ(ZR_E_FILE_OPEN, second.Init(WidePath().c_str(), LOG_ERROR));
  EXPECT_EQ(log, log->DeleteSelf(1));
  EXPECT_EQ(S_OK, second.Init(WidePath().c_str(), LOG_ERROR));
}

TEST_F(Log, CopiesShareSettingsOnly) {
  CLog log;
  ASSERT_EQ(S_OK, log.Init(WidePath().c_str(), LOG_ERROR));
  {
    CLog copy(log);
    EXPECT_EQ(WidePath(), copy.GetLogFileName());
    EXPECT_EQ(ZrCode(0x8004E01B), copy.Write(LOG_ERROR, u"", 0, u"x"));
    CLog assigned;
    assigned = log;
    EXPECT_EQ(WidePath(), assigned.GetLogFileName());
  }
  EXPECT_EQ(S_OK, log.Write(LOG_ERROR, u"", 0, u"still open"));
  EXPECT_EQ("ERR still open\n", Contents(path_));
}

}  // namespace
