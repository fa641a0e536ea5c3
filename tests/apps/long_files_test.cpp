// SPDX-License-Identifier: Apache-2.0
// Hours of sound in constant memory, and lengths around the limits of the file formats.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/host_run.h"
#include "apps/sound_bytes.h"

namespace apps_test {
namespace {

using testing::HasSubstr;

// Silence of any length that takes no room on the disk.
void MakeSparseWave64(const std::string& path, const Layout& layout, uint16_t channels, uint64_t frames) {
  Bytes front = MakeWave64(layout, 48000, channels, {});
  const uint64_t dataBytes = frames * layout.Bytes() * channels;
  const uint64_t fileBytes = (112 + dataBytes + 7) / 8 * 8;
  Set64(&front, 16, fileBytes);
  Set64(&front, 104, 24 + dataBytes);
  WriteFileBytes(path, front);
  std::filesystem::resize_file(path, fileBytes);
}

TEST(LongFiles, TenHoursOfMixStayBelow64Mebibytes) {
  Folder folder;
  std::vector<std::string> words = {"mix", folder / "out.w64"};
  for (int index = 0; index < 10; ++index) {
    const std::string path = folder / (std::to_string(index) + ".w64");
    MakeSparseWave64(path, {16}, 2, uint64_t{48000} * 3600);
    words.push_back(path + "@" + std::to_string(index) + ":-3dB");
  }
  const RunResult result = RunHost(words);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(std::filesystem::file_size(folder / "out.w64"), 112 + uint64_t{48000} * 3609 * 4);
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LT(result.peakKilobytes, 64 * 1024);
#endif
  RecordProperty("peak_kilobytes", static_cast<int>(result.peakKilobytes));
}

TEST(LongFiles, Wave64PassesFourGibibytes) {
  Folder folder;
  const uint64_t frames = (uint64_t{5} << 30) + 1;
  MakeSparseWave64(folder / "in.w64", {8}, 1, frames);
  const auto file = nlohmann::json::parse(RunHost({"info", "--json", folder / "in.w64"}).out)["files"][0];
  EXPECT_EQ(file["frames"], frames);
  EXPECT_EQ(file["chunks"][1]["bytes"], frames);
  EXPECT_TRUE(file["problems"].empty()) << file["problems"];
}

TEST(LongFiles, WaveEndsBelowFourGibibytes) {
  Folder folder;
  const Layout layout{8};
  MakeSparseWave64(folder / "in.w64", layout, 1, 1000);
  // One frame beyond what a RIFF size below 0xFFFFFFF8 can count.
  const std::string late = (folder / "in.w64") + "@89478.485";
  const RunResult refused = RunHost({"mix", folder / "out.wav", late, "--type", "pcm8"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, testing::AllOf(HasSubstr("0x8004E03A"), HasSubstr("Wave64")));
  EXPECT_THAT(folder.Names(), testing::ElementsAre("in.w64"));
}

TEST(LongFiles, RepairOfALongWaveCountsWhatItCan) {
  Folder folder;
  const std::string path = folder / "long.wav";
  Bytes front = MakeWave({16}, 48000, 2, {});
  WriteFileBytes(path, front);
  const uint64_t fileBytes = uint64_t{5} << 30;
  std::filesystem::resize_file(path, fileBytes);
  RunResult result = RunHost({"repair", path, "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const auto document = nlohmann::json::parse(result.out);
  const auto dataBytes = document["data_bytes"].get<uint64_t>();
  EXPECT_EQ(dataBytes % 4, 0u);
  EXPECT_LT(dataBytes + 36, 0xFFFFFFF8u);
  EXPECT_GE(dataBytes + 36, 0xFFFFFFF8u - 8);
  EXPECT_EQ(document["unreachable_bytes"].get<uint64_t>() + dataBytes, fileBytes - 44);
  EXPECT_EQ(nlohmann::json::parse(RunHost({"repair", path, "--json"}).out)["changes"].size(), 0u);
}

}  // namespace
}  // namespace apps_test
