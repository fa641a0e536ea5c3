// SPDX-License-Identifier: Apache-2.0
// The settings' files: many processes, a kill at any moment, damage, folders that can't be written.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "marlo110k/metric.h"
#include "platform/sys/settings.h"
#include "testing/random.h"
#include "testing/temp_folder.h"

namespace {

using plat::SettingsBackend;
using plat::SettingsTree;

/// A running settings_writer and its standard output.
class Writer {
 public:
  Writer(const std::string& folder, const std::string& id, const std::string& count) {
    int ends[2];
    EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
    std::array<std::string, 4> words = {MARLO_SETTINGS_WRITER, folder, id, count};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    EXPECT_EQ(0, posix_spawn(&process_, words[0].c_str(), &actions, nullptr, arguments, environ));
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }
  ~Writer() { fclose(output_); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  /// The next acknowledged number; 0 at the end.
  int Next() {
    int number = 0;
    return std::fscanf(output_, "%d", &number) == 1 ? number : 0;
  }
  void Kill() const { kill(process_, SIGKILL); }
  int Wait() const {
    int status = 0;
    waitpid(process_, &status, 0);
    return status;
  }

 private:
  pid_t process_ = 0;
  std::FILE* output_ = nullptr;
};

std::u16string Name(int number) { return u"name" + std::u16string(1, static_cast<char16_t>(0x4E00 + number)); }

class SettingsFiles : public testing::Test {
 protected:
  SettingsFiles() { plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str()); }
  ~SettingsFiles() override {
    plat::CloseSettingsKey(key_);
    plat::UseSettings(SettingsBackend::kFiles, nullptr);
  }
  void Open() { ASSERT_EQ(0U, plat::CreateSettingsKey(SettingsTree::kUser, u"Shared\\Key", &key_)); }
  int32_t Number(const char16_t* name) {
    int32_t number = 0;
    uint32_t bytes = sizeof number;
    return plat::QuerySetting(key_, name, nullptr, &number, &bytes) == 0 ? number : -1;
  }
  uint32_t Put(const char16_t* name, int32_t number) {
    return plat::SetSetting(key_, name, plat::kSettingNumber, &number, sizeof number);
  }
  std::string Shared() {
    std::string data(3001, '\0');
    uint32_t bytes = 3001;
    EXPECT_EQ(0U, plat::QuerySetting(key_, u"shared", nullptr, data.data(), &bytes));
    data.resize(bytes);
    return data;
  }
  size_t KeptFiles() const {
    size_t kept = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
      const std::string name = entry.path().filename().string();
      if (name.find("damaged") != std::string::npos && !name.ends_with("-wal")) ++kept;
    }
    return kept;
  }

  testing_support::TempFolder folder_;
  plat::SettingsKey* key_ = nullptr;
};

TEST_F(SettingsFiles, FourProcessesUnderOneKey) {
  {
    // All four also race for making the file and the key.
    Writer a(folder_.Path(), "1", "250"), b(folder_.Path(), "2", "250"), c(folder_.Path(), "3", "250"),
        d(folder_.Path(), "4", "250");
    for (Writer* writer : {&a, &b, &c, &d}) {
      while (writer->Next() != 0) continue;
      EXPECT_EQ(0, writer->Wait());
    }
  }
  Open();
  for (const char16_t* name : {u"1", u"2", u"3", u"4"}) EXPECT_EQ(250, Number(name));
  const std::string shared = Shared();
  EXPECT_EQ(std::string(3000, shared[0]), shared) << "one writer's value, whole";
  EXPECT_EQ(0U, KeptFiles());
}

TEST_F(SettingsFiles, AnotherProcessIsSeenAtOnce) {
  Open();
  ASSERT_EQ(0U, Put(u"9", 0));
  Writer writer(folder_.Path(), "9", "20");
  while (const int number = writer.Next()) EXPECT_GE(Number(u"9"), number);
  EXPECT_EQ(0, writer.Wait());
  EXPECT_EQ(20, Number(u"9"));
}

TEST_F(SettingsFiles, AKillLosesNothingThatStood) {
  testing_support::Random random(3);
  SCOPED_TRACE(random.Label());
  for (int round = 0; round < 8; ++round) {
    Writer writer(folder_.Path(), "7", "1000000");
    int acknowledged = 0;
    const int wanted = static_cast<int>(random.Between(1, 40));
    while (acknowledged < wanted) {
      acknowledged = writer.Next();
      ASSERT_NE(0, acknowledged) << "the writer has ended by itself";
    }
    writer.Kill();
    while (const int number = writer.Next()) acknowledged = number;
    EXPECT_TRUE(WIFSIGNALED(writer.Wait()));
    Open();
    EXPECT_GE(Number(u"7"), acknowledged);
    EXPECT_LE(Number(u"7"), acknowledged + 1) << "more than the one write on its way";
    EXPECT_EQ(std::string(3000, '7'), Shared());
    plat::CloseSettingsKey(key_);
    key_ = nullptr;
  }
  EXPECT_EQ(0U, KeptFiles());
}

TEST_F(SettingsFiles, ADamagedFileIsKeptAsideAndDefaultsServe) {
  const std::string garbage(8192, 'x');
  folder_.Put("user.db", garbage);
  testing::internal::CaptureStderr();
  Open();
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("user.db.damaged-1"));
  EXPECT_EQ(garbage, folder_.Get("user.db.damaged-1"));
  EXPECT_EQ(-1, Number(u"1"));
  ASSERT_EQ(0U, Put(u"1", 5));
  EXPECT_EQ(5, Number(u"1"));

  // Damage behind the header, met in the midst of work.
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(0U, Put(Name(i).c_str(), i));
  plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
  std::string content = folder_.Get("user.db");
  ASSERT_GT(content.size(), 8192U);
  std::fill(content.begin() + 4096, content.end(), '\x5A');
  folder_.Put("user.db", content);
  testing::internal::CaptureStderr();
  EXPECT_EQ(-1, Number(u"1"));
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("user.db.damaged-2"));
  EXPECT_EQ(content, folder_.Get("user.db.damaged-2"));
  ASSERT_EQ(0U, Put(u"1", 6));
  EXPECT_EQ(6, Number(u"1"));

  // Somebody deletes the file under an open handle.
  std::filesystem::remove(folder_.Path() / "user.db");
  ASSERT_EQ(0U, Put(u"1", 7));
  EXPECT_EQ(7, Number(u"1"));
}

TEST_F(SettingsFiles, AFileOfALaterReleaseIsLeftAlone) {
  Open();
  ASSERT_EQ(0U, Put(u"1", 5));
  plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
  std::string content = folder_.Get("user.db");
  constexpr size_t kLowByteOfFormat = 63;
  ASSERT_EQ(1, content[kLowByteOfFormat]);
  content[kLowByteOfFormat] = 2;
  folder_.Put("user.db", content);
  EXPECT_EQ(-1, Number(u"1"));
  EXPECT_EQ(1009U, Put(u"1", 6));
  plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
  EXPECT_EQ(content, folder_.Get("user.db"));
  EXPECT_EQ(0U, KeptFiles());
}

TEST_F(SettingsFiles, AFileCutAnywhereServesDefaultsOrItsValues) {
  Open();
  for (int i = 0; i < 300; ++i) ASSERT_EQ(0U, Put(Name(i).c_str(), 1000));
  plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
  const std::string content = folder_.Get("user.db");
  for (size_t bytes = 0; bytes < content.size(); bytes += 1531) {
    plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
    folder_.Put("user.db", content.substr(0, bytes));
    testing::internal::CaptureStderr();
    const int32_t number = Number(Name(2).c_str());
    EXPECT_TRUE(number == -1 || number == 1000) << bytes;
    EXPECT_EQ(0U, Put(Name(2).c_str(), 8)) << bytes;
    EXPECT_EQ(8, Number(Name(2).c_str())) << bytes;
    testing::internal::GetCapturedStderr();
  }
}

TEST_F(SettingsFiles, AFolderThatCannotBeWrittenServesDefaults) {
  folder_.Put("file", "");
  const std::u16string noFolder = folder_.Name("file") + u"/below";
  plat::UseSettings(SettingsBackend::kFiles, noFolder.c_str());
  HZRMETRIC metric = nullptr;
  EXPECT_EQ(E_ACCESSDENIED, ZrMetric_Open(&metric, u"P", 0, u"K"));
  ASSERT_NE(nullptr, metric);
  EXPECT_EQ(7, ZrGetMetricEx(metric, 1, 0, 10, 7));
  EXPECT_EQ(E_FAIL, ZrSetMetric(metric, 1, 1));
  EXPECT_EQ(1, ZrRegDeleteKey(ZRREG_CURRENT_USER, u"K") + ZrDoesMetricExist(metric, 1, ZRREG_DWORD));
  ZrMetric_Close(metric);
  EXPECT_EQ("", folder_.Get("file"));
}

TEST_F(SettingsFiles, AFileThatCannotBeWrittenIsRead) {
  if (geteuid() == 0) GTEST_SKIP() << "nothing is closed to this user";
  Open();
  ASSERT_EQ(0U, Put(u"1", 5));
  plat::UseSettings(SettingsBackend::kFiles, folder_.Path().u16string().c_str());
  std::filesystem::permissions(folder_.Path() / "user.db", std::filesystem::perms::owner_read);
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  EXPECT_EQ(5, Number(u"1"));
  EXPECT_EQ(5U, Put(u"1", 6));
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms::owner_all);
}

}  // namespace
