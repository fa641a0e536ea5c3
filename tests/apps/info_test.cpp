// SPDX-License-Identifier: Apache-2.0
// What the program tells about files, sound and broken.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"

namespace apps_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

json Info(const std::string& path) {
  const RunResult result = RunHost({"info", "--json", path});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return json::parse(result.out)["files"][0];
}

TEST(Info, FormatLengthAndChunksOfEveryKind) {
  Folder folder;
  const Layout layout{24};
  Bytes wave = MakeExtensibleWave(layout, 96000, 4, 0x33, Bytes(12 * 25));
  Bytes entries;
  PutText(&entries, "INFOINAM");
  Put32(&entries, 3);
  PutText(&entries, "abc");
  entries.push_back(0);
  PutText(&entries, "ISFT");
  Put32(&entries, 2);
  PutText(&entries, "xy");
  AppendChunk(&wave, "LIST", entries);
  WriteFileBytes(folder / "a.wav", wave);
  json file = Info(folder / "a.wav");
  EXPECT_EQ(file["container"], "wave");
  EXPECT_EQ(file["type"], "pcm24");
  EXPECT_EQ(file["description"], "96,000 Hz, 24 Bit, 2/2 (L, R, Ls, Rs), PCM");
  EXPECT_EQ(file["rate"], 96000);
  EXPECT_EQ(file["channels"], 4);
  EXPECT_EQ(file["channel_mask"], 0x33);
  EXPECT_EQ(file["frames"], 25);
  EXPECT_EQ(file["data_offset"], 68);
  EXPECT_EQ(file["file_bytes"], wave.size());
  EXPECT_EQ(file["problems"].size(), 0u) << file["problems"];
  ASSERT_EQ(file["chunks"].size(), 3u);
  EXPECT_EQ(file["chunks"][1], (json{{"id", "data"}, {"offset", 60}, {"bytes", 300}}));
  const json& list = file["chunks"][2];
  EXPECT_EQ(list["list_type"], "INFO");
  EXPECT_EQ(list["offset"], 368);
  ASSERT_EQ(list["chunks"].size(), 2u);
  EXPECT_EQ(list["chunks"][0], (json{{"id", "INAM"}, {"offset", 380}, {"bytes", 3}}));
  EXPECT_EQ(list["chunks"][1], (json{{"id", "ISFT"}, {"offset", 392}, {"bytes", 2}}));

  WriteFileBytes(folder / "b.w64", MakeWave64({16}, 44100, 2, Bytes(400)));
  file = Info(folder / "b.w64");
  EXPECT_EQ(file["container"], "wave64");
  EXPECT_EQ(file["frames"], 100);
  EXPECT_EQ(file["chunks"][1], (json{{"id", "data"}, {"offset", 88}, {"bytes", 400}}));
  EXPECT_EQ(file["problems"].size(), 0u) << file["problems"];

  WriteFileBytes(folder / "c.aiff", MakeAiff({16, false, true}, 2, Bytes(400)));
  file = Info(folder / "c.aiff");
  EXPECT_EQ(file["container"], "aiff");
  EXPECT_EQ(file["type"], "pcm16be");
  EXPECT_EQ(file["rate"], 48000);
  EXPECT_EQ(file["frames"], 100);
  EXPECT_EQ(file["data_offset"], 54);
  EXPECT_EQ(file["problems"].size(), 0u) << file["problems"];
}

TEST(Info, SaysWhatIsBroken) {
  Folder folder;
  const Bytes sound = MakeWave({16}, 48000, 2, Bytes(4000, 0xF1));
  struct Row {
    const char* name;
    Bytes bytes;
    const char* problem;
  };
  Bytes longer = sound;
  Set32(&longer, 40, 9000);
  Bytes unfinished = sound;
  Set32(&unfinished, 40, 0);
  Set32(&unfinished, 4, 36);
  Bytes shortForm = sound;
  Set32(&shortForm, 4, 100);
  Bytes noData = sound;
  std::copy_n("JUNK", 4, noData.begin() + 36);
  Bytes badFormat = sound;
  badFormat[32] = badFormat[33] = 0;  // A frame of no bytes.
  for (const Row& row : {Row{"longer", longer, "The data size says 9000 where the file has 4000."},
                         {"unfinished", unfinished, "The data size says 0 where the file has 4000."},
                         {"shortForm", shortForm, "The RIFF size says 108 where the file has 4044."},
                         {"noData", noData, "No samples were found"},
                         {"badFormat", badFormat, "makes no sense"},
                         {"cut", Bytes(sound.begin(), sound.begin() + 16), "No format was found"}}) {
    WriteFileBytes(folder / row.name, row.bytes);
    EXPECT_THAT(Info(folder / row.name)["problems"].dump(), HasSubstr(row.problem)) << row.name;
    EXPECT_EQ(ReadFileBytes(folder / row.name), row.bytes);
  }
}

TEST(Info, OneBadFileDoesNotHideTheOthers) {
  Folder folder;
  WriteFileBytes(folder / "good.wav", MakeWave({16}, 48000, 1, Bytes(10)));
  WriteFileBytes(folder / "text.wav", Bytes(100, 'x'));
  const RunResult result = RunHost({"info", folder / "text.wav", folder / "none.wav", folder / "good.wav"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.err, testing::AllOf(HasSubstr("text.wav"), HasSubstr("0x8004E00B"), HasSubstr("none.wav"),
                                         HasSubstr("0x8004E007")));
  EXPECT_THAT(result.out, HasSubstr("good.wav: wave, 48,000 Hz, 16 Bit, Mono, PCM, 5 frames"));
}

TEST(Info, NamesOfHostileChunksStayPrintable) {
  Folder folder;
  Bytes wave = MakeWave({16}, 48000, 1, Bytes(10));
  AppendChunk(&wave, "a\"\\b", Bytes(2));
  AppendChunk(&wave, "\x1B[2J", Bytes(2));  // Would clear a terminal; also ends the walk.
  WriteFileBytes(folder / "h.wav", wave);
  const RunResult text = RunHost({"info", folder / "h.wav"});
  EXPECT_EQ(text.out.find('\x1B'), std::string::npos);
  EXPECT_EQ(Info(folder / "h.wav")["chunks"][2]["id"], "a\"\\b");
}

}  // namespace
}  // namespace apps_test
