// SPDX-License-Identifier: Apache-2.0
// A peak file of media above 4 GiB.
#include <gtest/gtest.h>

#include <filesystem>

#include "media/testing/peak_media.h"
#include "platform/sys/file_backend.h"

using namespace media_testing;
using testing_support::TempFolder;

namespace {

TEST(PeakFile, MediaAbove4GiB) {
  // A sparse Wave64 file of 5 GiB of 16-bit silence in 32 channels, with loud frames behind 4 GiB and at the end.
  const TempFolder folder;
  constexpr uint64_t kDataBytes = 5ull << 30;
  constexpr int64_t kFrames = kDataBytes / 64;
  const Image format = Chunk64(AudioLabel("fmt "), Image().Format(1, 32, 48000, 16));
  Image front;
  front.Add(RiffLabel()).U64(40 + format.Size() + 24 + kDataBytes).Add(AudioLabel("wave")).Add(format);
  front.Add(AudioLabel("data")).U64(24 + kDataBytes);
  const std::u16string media = folder.Put("a.w64", {reinterpret_cast<const char*>(front.Data()), front.Size()});
  std::filesystem::resize_file(folder.Path() / "a.w64", front.Size() + kDataBytes);
  plat::File* file = plat::OpenFile(media.c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
  constexpr int64_t kLoud[] = {(int64_t{1} << 26) + 12345, kFrames - 1};
  const int16_t loud = 100 << 8;
  for (const int64_t frame : kLoud) {
    plat::SeekFile(file, static_cast<int64_t>(front.Size()) + frame * 64 + 62, plat::kSeekStart, nullptr);
    plat::WriteFile(file, &loud, sizeof loud, nullptr);
  }
  plat::CloseFile(file);
  const Peak peak = OpenPeak(media, 0x10000);
  ASSERT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
  const std::vector<int> stored = StoredSteps(folder.Get("a.w64.zrk"));
  ASSERT_EQ(stored.size(), 1280u * 64);
  for (size_t value = 0; value < stored.size(); ++value) {
    const size_t entry = value / 64;
    const bool isLoud = value % 64 == 63 && (entry == kLoud[0] >> 16 || entry == 1279);
    ASSERT_EQ(stored[value], isLoud ? 100 : 0) << value;
  }
  // Samples behind 4 GiB.
  int8_t view[10 * 64];
  ASSERT_EQ(peak->ReadPeaks(kLoud[0] - 5, 10, ZRSAMPLETYPE_PCM8SIGNED, view, 10, nullptr), S_OK);
  EXPECT_EQ(view[5 * 64 + 63], 100);
}

}  // namespace
