// SPDX-License-Identifier: Apache-2.0
// The repair command on files: what it writes, what it leaves alone, and what it refuses.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"

namespace apps_test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

Bytes Samples(size_t count) {
  Bytes samples;
  for (size_t index = 0; index < count; ++index) samples.push_back(static_cast<uint8_t>(0x80 | index * 7));
  return samples;
}

// A front of 46 bytes as the library writes it, with its samples.
Bytes LibraryWave(const Bytes& samples) {
  Bytes bytes = MakeWave({16}, 48000, 2, samples);
  bytes[16] = 18;
  bytes.insert(bytes.begin() + 36, 2, 0);
  Set32(&bytes, 4, static_cast<uint32_t>(bytes.size() - 8));
  return bytes;
}

TEST(Repair, SoundFilesAreNotTouched) {
  Folder folder;
  const std::string path = folder / "a.wav";
  const Bytes sound = LibraryWave(Samples(400));
  WriteFileBytes(path, sound);
  const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1000);
  std::filesystem::last_write_time(path, longAgo);
  const auto stamp = std::filesystem::last_write_time(path);
  const RunResult result = RunHost({"repair", path, "--json"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(json::parse(result.out)["state"], "sound");
  EXPECT_EQ(ReadFileBytes(path), sound);
  EXPECT_EQ(std::filesystem::last_write_time(path), stamp);
  EXPECT_THAT(folder.Names(), ElementsAre("a.wav"));
}

TEST(Repair, SizesAreCorrectedWithoutABackup) {
  Folder folder;
  const std::string path = folder / "a.wav";
  Bytes broken = LibraryWave(Samples(402));
  Set32(&broken, 4, 38);
  Set32(&broken, 42, 0);
  WriteFileBytes(path, broken);

  RunResult result = RunHost({"repair", path, "--dry-run", "--json"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(json::parse(result.out)["state"], "repairable");
  EXPECT_EQ(json::parse(result.out)["data_bytes"], 400);
  EXPECT_EQ(ReadFileBytes(path), broken);

  result = RunHost({"repair", path, "--json"});
  EXPECT_EQ(result.exitCode, 0);
  const json document = json::parse(result.out);
  EXPECT_EQ(document["state"], "repaired");
  EXPECT_EQ(document["method"], "sizes");
  EXPECT_TRUE(document["backup"].is_null());
  EXPECT_THAT(document["changes"], ElementsAre(json{{"field", "data size"}, {"before", 0}, {"after", 400}},
                                               json{{"field", "RIFF size"}, {"before", 46}, {"after", 446}}));
  Bytes expected = broken;
  Set32(&expected, 4, 438);
  Set32(&expected, 42, 400);
  EXPECT_EQ(ReadFileBytes(path), expected);
  EXPECT_THAT(folder.Names(), ElementsAre("a.wav"));
}

struct Front {
  const char* name;
  Bytes sound;
  size_t samplesAt;
};

// A front whose format label is gone: the walk fails, the samples' label is still there.
std::vector<Front> BrokenFronts() {
  Bytes wave = LibraryWave(Samples(400));
  Bytes wave64 = MakeWave64({16}, 48000, 2, Samples(400));
  std::fill_n(wave.begin() + 12, 4, 0);
  std::fill_n(wave64.begin() + 40, 16, 0);
  return {{"a.wav", wave, 46}, {"a.w64", wave64, 112}};
}

TEST(Repair, FrontIsReplacedAfterACopy) {
  for (const Front& front : BrokenFronts()) {
    SCOPED_TRACE(front.name);
    Folder folder;
    const std::string path = folder / front.name;
    WriteFileBytes(path, front.sound);

    RunResult result = RunHost({"repair", path, "--dry-run", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(json::parse(result.out)["method"], "front");
    EXPECT_EQ(json::parse(result.out)["data_offset"], front.samplesAt);
    EXPECT_EQ(ReadFileBytes(path), front.sound);
    EXPECT_THAT(folder.Names(), ElementsAre(front.name));

    result = RunHost({"repair", path, "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const json document = json::parse(result.out);
    EXPECT_EQ(document["data_bytes"], 400);
    EXPECT_EQ(document["backup"], path + ".broken");
    EXPECT_EQ(ReadFileBytes(path + ".broken"), front.sound);
    const Bytes after = ReadFileBytes(path);
    ASSERT_EQ(after.size(), front.sound.size());
    EXPECT_TRUE(std::equal(after.begin() + static_cast<int64_t>(front.samplesAt), after.end(),
                           front.sound.begin() + static_cast<int64_t>(front.samplesAt)));
    EXPECT_EQ(json::parse(RunHost({"repair", path, "--json"}).out)["state"], "sound");

    // A copy that is there already is worth more than the repair.
    WriteFileBytes(path, front.sound);
    const Bytes copy = ReadFileBytes(path + ".broken");
    result = RunHost({"repair", path});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, testing::AllOf(HasSubstr(".broken"), HasSubstr("exists")));
    EXPECT_EQ(ReadFileBytes(path), front.sound);
    EXPECT_EQ(ReadFileBytes(path + ".broken"), copy);
    EXPECT_EQ(RunHost({"repair", path, "--no-backup"}).exitCode, 0);
    EXPECT_EQ(ReadFileBytes(path), after);
  }
}

TEST(Repair, FormatFillsWhatTheFrontLost) {
  Folder folder;
  const std::string path = folder / "a.wav";
  Bytes broken = LibraryWave(Samples(400));
  std::fill_n(broken.begin(), 38, 0);  // Only the data label is left.
  WriteFileBytes(path, broken);
  const RunResult result = RunHost({"repair", path, "--format", "96000,1,pcm24", "--json", "--no-backup"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const json document = json::parse(result.out);
  EXPECT_EQ(document["rate"], 96000);
  EXPECT_EQ(document["channels"], 1);
  EXPECT_EQ(document["type"], "pcm24");
  EXPECT_EQ(document["data_bytes"], 399);
  const Bytes after = ReadFileBytes(path);
  EXPECT_EQ(Get32(after, 24), 96000u);
  EXPECT_EQ(Get32(after, 42), 399u);
  EXPECT_TRUE(std::equal(after.begin() + 46, after.end(), broken.begin() + 46));
}

TEST(Repair, NoStartOfSamplesMeansNoRepairWithoutALimit) {
  Folder folder;
  const std::string path = folder / "a.wav";
  Bytes broken = LibraryWave(Samples(1000));
  std::fill_n(broken.begin(), 46, 0);
  WriteFileBytes(path, broken);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"repair", path}, {"repair", path, "--dry-run"}}) {
    const RunResult result = RunHost(words);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, testing::AllOf(HasSubstr("0x8004E00A"), HasSubstr("--limit")));
    EXPECT_EQ(ReadFileBytes(path), broken);
    EXPECT_THAT(folder.Names(), ElementsAre("a.wav"));
  }
  ASSERT_EQ(RunHost({"repair", path, "--limit", "46", "--format", "48000,2,pcm16"}).exitCode, 0);
  EXPECT_EQ(ReadFileBytes(path), LibraryWave(Samples(1000)));
  // A front of 50 bytes can't be made.
  WriteFileBytes(path, broken);
  EXPECT_EQ(RunHost({"repair", path, "--limit", "50", "--no-backup"}).exitCode, 1);
  EXPECT_EQ(ReadFileBytes(path), broken);
}

TEST(Repair, OtherFilesAreLeftAlone) {
  Folder folder;
  struct Row {
    const char* name;
    const char* head;
  };
  for (const Row& row : {Row{"a.wav",
                             "RIFF\x10\x20\x30\x40"
                             "AVI LIST"},
                         {"b.wav", "RF64\xFF\xFF\xFF\xFFWAVEds64"},
                         {"c.wav", "fLaC...."},
                         {"d.txt", "data data data"},
                         {"e.aiff", "FORM....AIFFCOMM"},
                         {"f.wav", "OggS...."},
                         {"g.mp3", "RIFF....XXXX"}}) {
    Bytes bytes;
    PutText(&bytes, row.head);
    bytes.resize(60);
    PutText(&bytes, "data");
    bytes.resize(2000, 0xAB);
    WriteFileBytes(folder / row.name, bytes);
    const RunResult result = RunHost({"repair", folder / row.name, "--limit", "100"});
    EXPECT_EQ(result.exitCode, 1) << row.name;
    EXPECT_EQ(ReadFileBytes(folder / row.name), bytes) << row.name;
  }
  EXPECT_EQ(folder.Names().size(), 7u);
  WriteFileBytes(folder / "empty.wav", {});
  EXPECT_EQ(RunHost({"repair", folder / "empty.wav"}).exitCode, 1);
  EXPECT_EQ(RunHost({"repair", folder / "none.wav"}).exitCode, 1);
  for (const char* format : {"48000", "48000,2", "0,2,pcm16", "48000,0,pcm16", "48000,2,mp3", "48000,2,pcm16,"}) {
    EXPECT_EQ(RunHost({"repair", folder / "empty.wav", "--format", format}).exitCode, 2) << format;
  }
}

// A 44-byte front has no room for the one that the library would write, but here only sizes are wrong.
TEST(Repair, RecordingsOfOtherPrograms) {
  if (!HasProgram("sox")) GTEST_SKIP() << "sox isn't installed";
  Folder folder;
  for (const char* extension : {"wav", "aiff", "w64"}) {
    SCOPED_TRACE(extension);
    const std::string path = folder / (std::string("tone.") + extension);
    ASSERT_EQ(
        RunProgram({"sox", "-n", "-r", "48000", "-b", "16", "-c", "2", path, "synth", "1", "sine", "440"}).exitCode, 0);
    const Bytes whole = ReadFileBytes(path);
    std::filesystem::resize_file(path, whole.size() / 2 + 1);
    ASSERT_EQ(RunHost({"level", path}).exitCode, 1);
    ASSERT_EQ(RunHost({"repair", path}).exitCode, 0);
    const json file = json::parse(RunHost({"info", "--json", path}).out)["files"][0];
    EXPECT_EQ(file["problems"].size(), 0u) << file["problems"];
    const auto offset = file["data_offset"].get<size_t>();
    EXPECT_EQ(file["frames"], (whole.size() / 2 + 1 - offset) / 4);
    const Bytes after = ReadFileBytes(path);
    EXPECT_TRUE(std::equal(after.begin() + static_cast<int64_t>(offset), after.end(),
                           whole.begin() + static_cast<int64_t>(offset)));
    EXPECT_EQ(RunProgram({"sox", path, "-n", "stat"}).exitCode, 0);
  }
}

}  // namespace
}  // namespace apps_test
