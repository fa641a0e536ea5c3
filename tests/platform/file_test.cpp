// SPDX-License-Identifier: Apache-2.0
// File handles on disk, in memory and under injected faults; names and their removal.
#include "marlo110k/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/sys/fault_file.h"
#include "platform/sys/file_backend.h"
#include "testing/temp_folder.h"

namespace plat {
namespace {

using testing_support::TempFolder;

/// A handle that closes itself.
class Handle {
 public:
  explicit Handle(File* file) : file_(file) {}
  ~Handle() { CloseFile(file_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  operator File*() const { return file_; }
  bool IsValid() const { return file_ != kInvalidFile; }

 private:
  File* file_;
};

uint64_t Position(File* file) {
  uint64_t position = ~uint64_t{0};
  EXPECT_TRUE(SeekFile(file, 0, kSeekCurrent, &position));
  return position;
}

uint64_t Bytes(File* file) {
  uint64_t bytes = ~uint64_t{0};
  EXPECT_TRUE(GetFileBytes(file, &bytes));
  return bytes;
}

std::string Read(File* file, uint32_t bytes) {
  std::string text(bytes, '\0');
  uint32_t got = 0;
  EXPECT_TRUE(ReadFile(file, text.data(), bytes, &got));
  text.resize(got);
  return text;
}

bool Write(File* file, const std::string& text) {
  return WriteFile(file, text.data(), static_cast<uint32_t>(text.size()), nullptr);
}

constexpr uint32_t kShareAll = kShareRead | kShareWrite | kShareDelete;

TEST(OpenFile, DispositionsDecideByExistence) {
  struct Row {
    uint32_t disposition;
    uint32_t errorWhenMissing;
    uint32_t errorWhenThere;
    const char* contentAfter;  ///< Of a file that held "old".
  };
  const Row rows[] = {
      {kCreateNew, 0, 80, "old"}, {kCreateAlways, 0, 0, ""},     {kOpenExisting, 2, 0, "old"},
      {kOpenAlways, 0, 0, "old"}, {kTruncateExisting, 2, 0, ""}, {0, 87, 87, "old"},
      {6, 87, 87, "old"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.disposition);
    TempFolder folder;
    {
      Handle missing(OpenFile(folder.Name("missing").c_str(), kReadWriteAccess, kShareNone, row.disposition));
      EXPECT_EQ(missing.IsValid() ? 0 : LastError(), row.errorWhenMissing);
      EXPECT_EQ(std::filesystem::exists(folder.Path() / "missing"), row.errorWhenMissing == 0);
    }
    const std::u16string there = folder.Put("there", "old");
    {
      Handle existing(OpenFile(there.c_str(), kReadWriteAccess, kShareNone, row.disposition));
      EXPECT_EQ(existing.IsValid() ? 0 : LastError(), row.errorWhenThere);
    }
    EXPECT_EQ(folder.Get("there"), row.contentAfter);
  }
}

TEST(OpenFile, TruncatingNeedsWriteAccess) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "old");
  EXPECT_EQ(OpenFile(name.c_str(), kReadAccess, kShareAll, kTruncateExisting), kInvalidFile);
  EXPECT_EQ(LastError(), 87u);
  EXPECT_EQ(folder.Get("a"), "old");
}

TEST(OpenFile, FindsNamesWithoutRegardToCaseAndTakesBackslashes) {
  TempFolder folder;
  std::filesystem::create_directories(folder.Path() / "Sounds" / u8"Ärger");
  folder.Put("Sounds/Ärger/Take One.WAV", "one");
  const std::u16string root = folder.Path().u16string();
  for (const char16_t* tail : {u"\\sounds\\ärger\\take one.wav", u"/SOUNDS/Ärger\\Take One.WAV",
                               u"\\\\Sounds\\\\.\\ÄRGER\\..\\ärger\\TAKE ONE.wav"}) {
    Handle file(OpenFile((root + tail).c_str(), kReadAccess, kShareRead, kOpenExisting));
    ASSERT_TRUE(file.IsValid());
    EXPECT_EQ(Read(file, 10), "one");
  }
}

TEST(OpenFile, TheExactNameWinsOverOneThatDiffersInCase) {
  TempFolder folder;
  folder.Put("TAKE.wav", "upper");
  folder.Put("take.wav", "lower");
  for (const auto& [name, content] : {std::pair{"TAKE.wav", "upper"}, {"take.wav", "lower"}, {"Take.wav", "upper"}}) {
    Handle file(OpenFile(folder.Name(name).c_str(), kReadAccess, kShareRead, kOpenExisting));
    ASSERT_TRUE(file.IsValid());
    EXPECT_EQ(Read(file, 10), content) << name;
  }
}

TEST(OpenFile, CreatingOverAnotherCaseUsesTheExistingFileAndANewNameStaysAsGiven) {
  TempFolder folder;
  std::filesystem::create_directory(folder.Path() / "Sub");
  folder.Put("Sub/Old.TXT", "old");
  CloseFile(OpenFile(folder.Name("sub/OLD.txt").c_str(), kWriteAccess, kShareNone, kCreateAlways));
  CloseFile(OpenFile(folder.Name("SUB\\New File.Txt").c_str(), kWriteAccess, kShareNone, kCreateNew));
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path() / "Sub")) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"New File.Txt", "Old.TXT"}));
  EXPECT_EQ(OpenFile(folder.Name("sub/old.txt").c_str(), kWriteAccess, kShareNone, kCreateNew), kInvalidFile);
  EXPECT_EQ(LastError(), 80u);
}

TEST(OpenFile, HostileNamesGiveTheirErrors) {
  TempFolder folder;
  folder.Put("file", "x");
  std::filesystem::create_directory(folder.Path() / "folder");
  ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0666), 0);
  const std::u16string root = folder.Path().u16string() + u"/";
  struct Row {
    std::u16string path;
    uint32_t error;
  };
  const Row rows[] = {
      {u"", 3},
      {root + u"no folder/file", 3},
      {root + u"file/below", 3},
      {root + u"missing/", 3},
      {root + u"missing", 2},
      {root + u"folder", 5},
      {root + u"pipe", 5},
      {root + u"bad" + std::u16string(1, 0xD800) + u"name", 123},
      {root + u"bad" + std::u16string(1, 0xDC00), 123},
      {root + std::u16string(256, u'n'), 206},
      {root + std::u16string(40'000, u'n'), 206},
      {std::u16string(20'000, u'/') + u"missing", 206},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(OpenFile(row.path.c_str(), kReadAccess, kShareAll, kOpenExisting), kInvalidFile);
    EXPECT_EQ(LastError(), row.error) << row.path.size() << " characters";
  }
  EXPECT_EQ(OpenFile(nullptr, kReadAccess, kShareAll, kOpenExisting), kInvalidFile);
  EXPECT_EQ(LastError(), 3u);
  EXPECT_EQ(OpenFile((root + u"missing/").c_str(), kWriteAccess, kShareNone, kCreateAlways), kInvalidFile);
  EXPECT_EQ(LastError(), 3u);
}

TEST(File, ReadsAndWritesMoveThePositionAndAShortReadIsASuccess) {
  TempFolder folder;
  Handle file(OpenFile(folder.Name("a").c_str(), kReadWriteAccess, kShareNone, kCreateNew));
  uint32_t count = 99;
  EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count));
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(Position(file), 10u);
  EXPECT_TRUE(SeekFile(file, -4, kSeekEnd, nullptr));
  EXPECT_EQ(Read(file, 100), "6789");
  EXPECT_EQ(Read(file, 100), "");
  EXPECT_TRUE(SeekFile(file, -7, kSeekCurrent, nullptr));
  char two[2];
  EXPECT_EQ(ZrReadFile(file, two, 2, nullptr), 1);
  EXPECT_EQ(std::string(two, 2), "34");
  EXPECT_TRUE(WriteFile(file, nullptr, 0, &count));
  EXPECT_EQ(count, 0u);
  EXPECT_TRUE(FlushFile(file));
}

TEST(File, SeekRefusesPlacesBeforeTheStartAndKeepsThePosition) {
  Handle file(OpenMemoryFile("abc", 3, 3));
  EXPECT_TRUE(SeekFile(file, 2, kSeekStart, nullptr));
  EXPECT_FALSE(SeekFile(file, -3, kSeekCurrent, nullptr));
  EXPECT_EQ(LastError(), 131u);
  EXPECT_FALSE(SeekFile(file, -4, kSeekEnd, nullptr));
  EXPECT_EQ(LastError(), 131u);
  EXPECT_FALSE(SeekFile(file, 0, 3, nullptr));
  EXPECT_EQ(LastError(), 87u);
  EXPECT_TRUE(SeekFile(file, INT64_MAX, kSeekStart, nullptr));
  EXPECT_FALSE(SeekFile(file, 1, kSeekCurrent, nullptr));
  EXPECT_TRUE(SeekFile(file, 1, kSeekStart, nullptr));
  EXPECT_EQ(Read(file, 9), "bc");
}

TEST(File, SetEndCutsAndExtendsSparsely) {
  TempFolder folder;
  Handle file(OpenFile(folder.Name("a").c_str(), kReadWriteAccess, kShareNone, kCreateNew));
  Write(file, "abcdef");
  SeekFile(file, 2, kSeekStart, nullptr);
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(Bytes(file), 2u);
  constexpr int64_t kFar = 0x1'4000'0001;  // Above 4 GiB.
  SeekFile(file, kFar, kSeekStart, nullptr);
  EXPECT_TRUE(Write(file, "far"));
  EXPECT_EQ(Bytes(file), static_cast<uint64_t>(kFar) + 3);
  SeekFile(file, -5, kSeekEnd, nullptr);
  EXPECT_EQ(Read(file, 10), std::string("\0\0far", 5));
  SeekFile(file, 0, kSeekStart, nullptr);
  EXPECT_EQ(Read(file, 3), std::string("ab\0", 3));
}

TEST(File, AccessIsCheckedOnEachCall) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  char byte = 0;
  Handle reader(OpenFile(name.c_str(), kReadAccess, kShareAll, kOpenExisting));
  EXPECT_FALSE(Write(reader, "x"));
  EXPECT_EQ(LastError(), 5u);
  EXPECT_FALSE(SetEndOfFile(reader));
  Handle writer(OpenFile(name.c_str(), kWriteAccess, kShareAll, kOpenExisting));
  EXPECT_FALSE(ReadFile(writer, &byte, 1, nullptr));
  EXPECT_EQ(LastError(), 5u);
  EXPECT_EQ(folder.Get("a"), "text");
}

TEST(File, BadHandlesFailEverywhere) {
  for (File* bad : {static_cast<File*>(nullptr), kInvalidFile}) {
    uint32_t count = 7;
    uint64_t bytes = 0;
    char byte = 0;
    SetLastError(0);
    EXPECT_FALSE(ReadFile(bad, &byte, 1, &count));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(LastError(), 6u);
    EXPECT_FALSE(WriteFile(bad, &byte, 1, nullptr));
    EXPECT_FALSE(SeekFile(bad, 0, kSeekStart, nullptr));
    EXPECT_FALSE(SetEndOfFile(bad));
    EXPECT_FALSE(GetFileBytes(bad, &bytes));
    EXPECT_FALSE(FlushFile(bad));
    EXPECT_EQ(ZrReadFile(bad, &byte, 1, nullptr), 0);
    CloseFile(bad);
  }
}

TEST(File, AReadOnlyFileRefusesWritersAndRemoval) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  chmod((folder.Path() / "a").c_str(), 0444);
  EXPECT_EQ(OpenFile(name.c_str(), kWriteAccess, kShareAll, kOpenExisting), kInvalidFile);
  EXPECT_EQ(LastError(), 5u);
  EXPECT_EQ(OpenFile(name.c_str(), kReadAccess, kShareAll, kCreateAlways), kInvalidFile);
  EXPECT_EQ(LastError(), 5u);
  EXPECT_FALSE(RemoveFile(name.c_str()));
  EXPECT_EQ(LastError(), 5u);
  EXPECT_FALSE(MoveFileOver(folder.Put("b", "new").c_str(), name.c_str()));
  EXPECT_EQ(LastError(), 5u);
  EXPECT_EQ(folder.Get("a"), "text");
}

TEST(File, AFullDiskGives112) {
  if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full here";
  Handle file(OpenFile(u"/dev/full", kWriteAccess, kShareAll, kOpenExisting));
  ASSERT_TRUE(file.IsValid());
  uint32_t count = 9;
  EXPECT_FALSE(WriteFile(file, "x", 1, &count));
  EXPECT_EQ(LastError(), 112u);
  EXPECT_EQ(count, 0u);
}

// ---- Share modes -----------------------------------------------------------------------------------

TEST(ShareMode, TwoHandlesMeetByTheTableOfAccessAndShare) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  int refused = 0;
  for (uint32_t firstAccess = 1; firstAccess <= 3; ++firstAccess) {
    for (uint32_t firstShare = 0; firstShare <= 3; ++firstShare) {
      for (uint32_t secondAccess = 1; secondAccess <= 3; ++secondAccess) {
        for (uint32_t secondShare = 0; secondShare <= 3; ++secondShare) {
          Handle first(OpenFile(name.c_str(), firstAccess, firstShare, kOpenExisting));
          ASSERT_TRUE(first.IsValid());
          const bool allowed = (secondAccess & ~firstShare) == 0 && (firstAccess & ~secondShare) == 0;
          Handle second(OpenFile(name.c_str(), secondAccess, secondShare, kOpenExisting));
          EXPECT_EQ(second.IsValid(), allowed)
              << firstAccess << "/" << firstShare << " then " << secondAccess << "/" << secondShare;
          if (!allowed) {
            EXPECT_EQ(LastError(), 32u);
            ++refused;
          }
        }
      }
    }
  }
  EXPECT_EQ(refused, 144 - 25);  // 5 x 5: for each pair of accesses the shares that hold the other's access.
}

TEST(ShareMode, ARefusedOpenEmptiesNothingAndLeavesNoClaim) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  {
    Handle reader(OpenFile(name.c_str(), kReadAccess, kShareRead, kOpenExisting));
    EXPECT_EQ(OpenFile(name.c_str(), kWriteAccess, kShareAll, kCreateAlways), kInvalidFile);
    EXPECT_EQ(LastError(), 32u);
    EXPECT_EQ(Read(reader, 9), "text");
    Handle second(OpenFile(name.c_str(), kReadAccess, kShareRead, kOpenExisting));
    EXPECT_TRUE(second.IsValid());
  }
  Handle writer(OpenFile(name.c_str(), kReadWriteAccess, kShareNone, kOpenExisting));
  EXPECT_TRUE(writer.IsValid()) << "closing gives all claims back";
}

/// Opens in a child process. @return the error number, 0 when it could open.
uint32_t ErrorInAnotherProcess(const std::u16string& name, uint32_t access, uint32_t share) {
  const pid_t child = fork();
  if (child == 0) {
    // The handle isn't closed: the end of the process gives its claims back.
    const bool opened = OpenFile(name.c_str(), access, share, kOpenExisting) != kInvalidFile;
    _exit(opened ? 0 : static_cast<int>(LastError()));
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  return static_cast<uint32_t>(WEXITSTATUS(status));
}

TEST(ShareMode, HoldsAmongProcessesAndEndsWithThem) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  EXPECT_EQ(ErrorInAnotherProcess(name, kReadWriteAccess, kShareNone), 0u);
  Handle reader(OpenFile(name.c_str(), kReadAccess, kShareRead, kOpenExisting));
  ASSERT_TRUE(reader.IsValid()) << "the child's claims ended with it";
  EXPECT_EQ(ErrorInAnotherProcess(name, kReadAccess, kShareRead), 0u);
  EXPECT_EQ(ErrorInAnotherProcess(name, kReadAccess, kShareNone), 32u);
  EXPECT_EQ(ErrorInAnotherProcess(name, kWriteAccess, kShareAll), 32u);
}

TEST(ShareMode, RemovalAndRenamingNeedDeleteSharing) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "text");
  const std::u16string other = folder.Put("b", "other");
  {
    Handle reader(OpenFile(name.c_str(), kReadAccess, kShareRead | kShareWrite, kOpenExisting));
    EXPECT_FALSE(RemoveFile(name.c_str()));
    EXPECT_EQ(LastError(), 32u);
    EXPECT_FALSE(MoveFileOver(name.c_str(), folder.Name("c").c_str()));
    EXPECT_EQ(LastError(), 32u);
    EXPECT_FALSE(MoveFileOver(other.c_str(), name.c_str()));
    EXPECT_EQ(LastError(), 5u);
  }
  Handle reader(OpenFile(name.c_str(), kReadAccess, kShareAll, kOpenExisting));
  EXPECT_TRUE(RemoveFile(name.c_str()));
  EXPECT_EQ(Read(reader, 9), "text") << "an open handle keeps the data";
}

// ---- Memory files ----------------------------------------------------------------------------------

TEST(MemoryFile, BehavesAsADiskOfItsCapacity) {
  const std::string image = "image";
  Handle file(OpenMemoryFile(image.data(), image.size(), 8));
  EXPECT_EQ(Bytes(file), 5u);
  EXPECT_EQ(Read(file, 3), "ima");
  SeekFile(file, 6, kSeekStart, nullptr);
  uint32_t count = 0;
  EXPECT_FALSE(WriteFile(file, "xyz", 3, &count));
  EXPECT_EQ(LastError(), 112u);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(Bytes(file), 8u);
  SeekFile(file, 0, kSeekStart, nullptr);
  EXPECT_EQ(Read(file, 99), std::string("image\0xy", 8));
  SeekFile(file, 9, kSeekStart, nullptr);
  EXPECT_FALSE(SetEndOfFile(file));
  EXPECT_EQ(LastError(), 112u);
  SeekFile(file, 2, kSeekStart, nullptr);
  EXPECT_TRUE(SetEndOfFile(file));
  SeekFile(file, 4, kSeekStart, nullptr);
  EXPECT_TRUE(SetEndOfFile(file));
  SeekFile(file, 0, kSeekStart, nullptr);
  EXPECT_EQ(Read(file, 99), std::string("im\0\0", 4)) << "what was cut doesn't come back";
  EXPECT_EQ(OpenMemoryFile(image.data(), 5, 4), kInvalidFile);
}

// ---- Injected faults -------------------------------------------------------------------------------

TEST(FaultFile, FaultsComeWhereTheyWereOrdered) {
  Handle file(OpenMemoryFile("0123456789", 10, 100));
  FaultBackend* fault = FaultBackend::Install(file, {});
  EXPECT_EQ(Read(file, 4), "0123");
  fault->faults.readErrorAtCall = 2;
  char byte = 0;
  EXPECT_FALSE(ReadFile(file, &byte, 1, nullptr));
  EXPECT_EQ(LastError(), 1117u);
  EXPECT_EQ(Position(file), 4u) << "a failed read doesn't move";
  fault->faults.shortReadsAfterCalls = 2;
  fault->faults.shortBytes = 2;
  EXPECT_EQ(Read(file, 4), "45");
  fault->faults.diskFullAtByte = 8;
  uint32_t count = 0;
  EXPECT_FALSE(WriteFile(file, "abcd", 4, &count));
  EXPECT_EQ(LastError(), 112u);
  EXPECT_EQ(count, 2u);
  EXPECT_FALSE(WriteFile(file, "e", 1, &count));
  EXPECT_EQ(count, 0u);
  SeekFile(file, 0, kSeekStart, nullptr);
  fault->faults.shortReadsAfterCalls = FileFaults::kNever;
  EXPECT_EQ(Read(file, 99), "012345ab89");
  fault->faults.failSize = true;
  EXPECT_FALSE(SeekFile(file, 0, kSeekEnd, nullptr));
  EXPECT_FALSE(SetEndOfFile(file));
  fault->faults.failFlush = true;
  EXPECT_FALSE(FlushFile(file));
}

// ---- Names -----------------------------------------------------------------------------------------

TEST(Names, MovingReplacesInOneStepAndChangesCase) {
  TempFolder folder;
  const std::u16string from = folder.Put("From.txt", "new");
  folder.Put("To.txt", "old");
  EXPECT_TRUE(MoveFileOver(folder.Name("FROM.TXT").c_str(), folder.Name("to.TXT").c_str()));
  EXPECT_EQ(folder.Get("To.txt"), "new");
  EXPECT_FALSE(FileExists(from.c_str()));
  EXPECT_EQ(LastError(), 2u);
  EXPECT_TRUE(MoveFileOver(folder.Name("to.txt").c_str(), folder.Name("TO.Txt").c_str()));
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / "TO.Txt"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "To.txt"));
  EXPECT_FALSE(MoveFileOver(from.c_str(), folder.Name("x").c_str()));
  EXPECT_EQ(LastError(), 2u);
  EXPECT_FALSE(MoveFileOver(folder.Name("to.txt").c_str(), folder.Name("none/x").c_str()));
  EXPECT_EQ(LastError(), 3u);
  EXPECT_TRUE(RemoveFile(folder.Name("to.txt").c_str()));
  EXPECT_FALSE(RemoveFile(folder.Name("to.txt").c_str()));
  EXPECT_EQ(LastError(), 2u);
  EXPECT_FALSE(RemoveFile(folder.Path().u16string().c_str())) << "a folder is no file";
  EXPECT_FALSE(FileExists(folder.Path().u16string().c_str()));
}

TEST(Names, WriteTimeCountsHundredNanosecondsFrom1601) {
  TempFolder folder;
  const std::u16string name = folder.Put("a", "x");
  // 2000-01-01 00:00:00 UTC is 12,591,158,400 seconds after 1601-01-01 (145,731 days).
  const timespec times[2] = {{946'684'800, 0}, {946'684'800, 123'456'700}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder.Path() / "a").c_str(), times, 0), 0);
  uint64_t ticks = 0;
  EXPECT_TRUE(GetFileWriteTime(name.c_str(), &ticks));
  EXPECT_EQ(ticks, 125'911'584'000'000'000u + 1'234'567u);
  EXPECT_FALSE(GetFileWriteTime(folder.Name("none").c_str(), &ticks));
}

}  // namespace
}  // namespace plat
