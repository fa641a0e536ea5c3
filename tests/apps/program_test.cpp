// SPDX-License-Identifier: Apache-2.0
// The program's manners: help, exit codes, messages, and no half-written files.
#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"

namespace apps_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCommands[] = {"convert", "filter", "info", "level", "mix", "picture", "repair"};

TEST(Program, HelpEverywhereWithAnExample) {
  const RunResult top = RunHost({"--help"});
  EXPECT_EQ(top.exitCode, 0);
  EXPECT_THAT(top.out, HasSubstr("exit codes: 0 fine, 1 failed"));
  for (const char* command : kCommands) {
    EXPECT_THAT(top.out, HasSubstr(std::string("  ") + command));
    const RunResult help = RunHost({command, "x", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.err.empty());
    EXPECT_THAT(help.out, testing::AllOf(HasSubstr(std::string("usage: marlo ") + command),
                                         HasSubstr("example:\n  marlo " + std::string(command) + " ")));
  }
}

TEST(Program, WrongUsageEndsWithTwo) {
  EXPECT_EQ(RunHost({}).exitCode, 2);
  EXPECT_EQ(RunHost({"dance"}).exitCode, 2);
  EXPECT_EQ(RunHost({"--json"}).exitCode, 2);
  for (const char* command : kCommands) {
    const RunResult none = RunHost({command});
    EXPECT_EQ(none.exitCode, 2) << command;
    EXPECT_THAT(none.err, HasSubstr("--help"));
    EXPECT_EQ(RunHost({command, "--no-such-option", "a", "b"}).exitCode, 2) << command;
  }
  EXPECT_EQ(RunHost({"info", "\xFF.wav"}).exitCode, 2);
}

TEST(Program, FailuresEndWithOneAndSayCodeAndReason) {
  Folder folder;
  WriteFileBytes(folder / "text.wav", Bytes(100, 'x'));
  Bytes compressed = MakeWave({16}, 48000, 1, Bytes(100));
  compressed[20] = 2;  // A compressed format.
  WriteFileBytes(folder / "adpcm.wav", compressed);
  Bytes cut = MakeWave({16}, 48000, 1, Bytes(100));
  cut.resize(100);
  WriteFileBytes(folder / "cut.wav", cut);
  const std::vector<std::string> before = folder.Names();
  struct Row {
    const char* file;
    const char* code;
    const char* sentence;
  };
  for (const Row& row : {Row{"none.wav", "0x8004E007", "doesn't exist"},
                         {"text.wav", "0x8004E00B", "unknown format"},
                         {"adpcm.wav", "0x8004E016", "unsupported format"},
                         {"cut.wav", "0x8004E008", "marlo repair"}}) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"level", folder / row.file},
                                                  {"convert", folder / row.file, folder / "out.wav"},
                                                  {"mix", folder / "out.wav", folder / row.file}}) {
      const RunResult result = RunHost(words);
      EXPECT_EQ(result.exitCode, 1) << words[0];
      EXPECT_THAT(result.err, testing::AllOf(HasSubstr(row.file), HasSubstr(row.code), HasSubstr(row.sentence)));
      EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
  }
  EXPECT_EQ(folder.Names(), before);
}

TEST(Program, ExistingOutputSurvivesAFailedRun) {
  Folder folder;
  Bytes cut = MakeWave({16}, 48000, 1, Bytes(1'000'000));
  cut.resize(900'000);
  WriteFileBytes(folder / "cut.wav", cut);
  WriteFileBytes(folder / "out.wav", {1, 2, 3});
  EXPECT_EQ(RunHost({"convert", folder / "cut.wav", folder / "out.wav"}).exitCode, 1);
  EXPECT_THAT(ReadFileBytes(folder / "out.wav"), ElementsAre(1, 2, 3));
  EXPECT_THAT(folder.Names(), ElementsAre("cut.wav", "out.wav"));
}

TEST(Program, OutputsThatAreNoPlainFilesAreRefused) {
  Folder folder;
  WriteFileBytes(folder / "a.wav", MakeWave({16}, 48000, 1, Bytes(10)));
  std::filesystem::create_directory(folder / "folder.wav");
  EXPECT_EQ(RunHost({"convert", folder / "a.wav", folder / "folder.wav"}).exitCode, 1);
  EXPECT_EQ(RunHost({"convert", folder / "a.wav", folder / "no/such/out.wav"}).exitCode, 1);
  // A link stays one; the file behind it gets the samples.
  WriteFileBytes(folder / "target.wav", {1});
  std::filesystem::create_symlink("target.wav", folder / "link.wav");
  EXPECT_EQ(RunHost({"convert", folder / "a.wav", folder / "link.wav"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
  EXPECT_EQ(ReadFileBytes(folder / "target.wav").size(), 56u);
  // The library finds names without regard to case, but a file of another name isn't overwritten.
  EXPECT_EQ(RunHost({"convert", folder / "a.wav", folder / "TARGET.wav"}).exitCode, 1);
  EXPECT_EQ(RunHost({"convert", folder / "link.wav", folder / "A.wav"}).exitCode, 1);
}

TEST(Program, FullDiskIsAFailureWithItsCode) {
  Folder folder;
  WriteFileBytes(folder / "a.wav", MakeWave({16}, 48000, 1, Bytes(10)));
  const RunResult result =
      RunProgram({"bash", "-c", "\"$@\" > /dev/full", "-", MARLO_PROGRAM, "info", folder / "a.wav"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("0x8004E009"));
}

// Interrupted in the middle of a long conversion: no output, no temporary file, exit code 1.
TEST(Program, InterruptedRunLeavesNothing) {
  Folder folder;
  // A sparse Wave64 file of an hour of silence is read in a second or more.
  Bytes front = MakeWave64({16}, 48000, 2, {});
  const uint64_t dataBytes = uint64_t{48000} * 3600 * 4;
  Set64(&front, 16, 112 + dataBytes);
  Set64(&front, 104, 24 + dataBytes);
  WriteFileBytes(folder / "long.w64", front);
  std::filesystem::resize_file(folder / "long.w64", 112 + dataBytes);
  // The shell waits for the temporary file to appear, then interrupts.
  const RunResult result = RunProgram({"bash", "-c",
                                       "\"$1\" convert \"$2/long.w64\" \"$2/out.w64\" --type float64 & child=$!\n"
                                       "until ls \"$2\"/*.part >/dev/null 2>&1 || ! kill -0 $child; do :; done\n"
                                       "kill -TERM $child; wait $child",
                                       "-", MARLO_PROGRAM, folder / "."});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, HasSubstr("The operation was cancelled by the user. (0x8004E00C)"));
  EXPECT_THAT(folder.Names(), ElementsAre("long.w64"));
}

}  // namespace
}  // namespace apps_test
