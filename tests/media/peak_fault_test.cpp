// SPDX-License-Identifier: Apache-2.0
// Peak files that are damaged, can't be made, are cancelled, shared, temporary or renamed.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>

#include "media/peak/audio_peak.h"
#include "media/testing/peak_media.h"
#include "platform/sys/fault_file.h"

using namespace media_testing;
using testing_support::TempFolder;

namespace {

constexpr MediaType k16Bit = {"16", 1, 16};

/// Ten entries of 100 frames of a ramp whose step is the number of the entry.
Steps Stairs() {
  Steps steps(1000);
  for (size_t frame = 0; frame < steps.size(); ++frame) steps[frame] = static_cast<int8_t>(frame / 100);
  return steps;
}

class Follower final : public IZrAudioPeakProgress {
 public:
  void* DeleteSelf(uint32_t) override { return this; }
  int32_t Begin(const char16_t* name, int64_t range) override {
    names.emplace_back(name);
    lastRange = range;
    if (atBegin) atBegin();
    return cancelAt >= 0 ? 1 : 0;
  }
  int32_t Step(int64_t position) override {
    lastStep = position;
    return position < cancelAt ? 1 : 0;
  }
  void End(HRESULT result) override { ends.push_back(result); }

  std::function<void()> atBegin;
  int64_t cancelAt = INT64_MAX;  ///< Negative: at Begin.
  std::vector<std::u16string> names;
  std::vector<HRESULT> ends;
  int64_t lastRange = 0;
  int64_t lastStep = 0;
};

TEST(PeakFault, DamagedFilesAreRebuiltAndReadInsideTheirBounds) {
  const TempFolder folder;
  const std::u16string media = folder.Put("a.wav", WaveOf(k16Bit, 1, Stairs()));
  ASSERT_EQ(OpenPeak(media, 100)->BuildPeaks(0, nullptr), S_OK);
  const std::string good = folder.Get("a.zrk");
  ASSERT_EQ(good.size(), 64u + 20);
  const struct {
    const char* name;
    size_t offset;
    uint32_t value;
  } rows[] = {
      {"magic", 0, 0},       {"version", 4, 2},           {"small header", 8, 63},    {"header past end", 8, 85},
      {"bits", 16, 12},      {"no channels", 20, 0},      {"other channels", 20, 2},  {"interval 63", 24, 63},
      {"interval 0", 24, 0}, {"interval", 24, 0x1000001}, {"more samples", 28, 1001}, {"negative", 32, 0x80000000},
      {"other time", 36, 77}};
  for (const auto& row : rows) {
    std::string bad = good;
    std::memcpy(bad.data() + row.offset, &row.value, 4);
    folder.Put("a.zrk", bad);
    HRESULT created = 99;
    const Peak peak = OpenPeak(media, 100, 0, -1, &created);
    EXPECT_EQ(created, S_FALSE) << row.name;
    int8_t columns[20];
    int32_t read = 0;
    EXPECT_EQ(peak->ReadPeaks(0, 1000, ZRSAMPLETYPE_PCM8SIGNED, columns, 5, &read), S_OK) << row.name;
    EXPECT_EQ(peak->BuildPeaks(0, nullptr), S_OK) << row.name;
    EXPECT_EQ(folder.Get("a.zrk"), good) << row.name;
  }

  // A longer header moves the entries.
  std::string longer = good;
  longer[8] = 70;
  folder.Put("a.zrk", longer.insert(64, 6, '\x55'));
  int8_t columns[20];
  int32_t read = 0;
  ASSERT_EQ(OpenPeak(media, 100)->ReadPeaks(0, 1000, ZRSAMPLETYPE_PCM8SIGNED, columns, 10, &read), S_OK);
  EXPECT_EQ(columns[2], 0);
  EXPECT_EQ(columns[3], 2);

  for (const size_t bytes : {0u, 63u, 64u, 65u, 66u, 71u}) {
    folder.Put("a.zrk", good.substr(0, bytes));
    for (const bool mapped : {true, false}) {
      const Peak peak = OpenPeak(media, 100);
      static_cast<marlo::peak::AudioPeak*>(peak.get())->SetMapView(mapped);
      EXPECT_EQ(peak->ReadPeaks(0, 1000, ZRSAMPLETYPE_PCM8SIGNED, columns, 10, &read), S_OK);
      // Without a header the samples serve.
      EXPECT_EQ(read, bytes < 64 ? 10 : static_cast<int32_t>(bytes - 64) / 2) << bytes;
    }
  }
}

TEST(PeakFault, FailedBuildsLeaveNoFile) {
  const TempFolder folder;
  const std::u16string media = folder.Put("a.wav", WaveOf(k16Bit, 1, Stairs()));
  const plat::FileFaults faults[] = {{.writeErrorAtCall = 1}, {.writeErrorAtCall = 2}, {.diskFullAtByte = 70}};
  for (const plat::FileFaults& fault : faults) {
    const Peak peak = OpenPeak(media, 100);
    Follower follower;
    follower.atBegin = [&] {
      plat::FaultBackend::Install(static_cast<marlo::peak::AudioPeak*>(peak.get())->Handle(), fault);
    };
    EXPECT_EQ(peak->BuildPeaks(0, &follower), ZR_E_FILE_WRITE);
    EXPECT_EQ(follower.ends, std::vector<HRESULT>{ZR_E_FILE_WRITE});
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.zrk"));
    EXPECT_EQ(peak->IsPeakFileValid(), 0);
  }
}

TEST(PeakFault, CancelledBuilds) {
  const TempFolder folder;
  constexpr int64_t kFrames = 200'000;
  const std::u16string media = folder.Put("a.wav", WaveOf(k16Bit, 1, Steps(kFrames, 1)));
  const Peak peak = OpenPeak(media, 100);
  Follower follower;
  ASSERT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_SAMPLES, &follower), S_OK);
  EXPECT_EQ(follower.names, std::vector<std::u16string>{u"a.wav"});
  EXPECT_EQ(follower.lastRange, kFrames);
  EXPECT_EQ(follower.lastStep, kFrames);
  ASSERT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_REBUILD, &follower), S_OK);
  EXPECT_EQ(follower.lastRange, 10000);
  EXPECT_EQ(follower.lastStep, 10000);

  follower = {};
  follower.cancelAt = 1000;
  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_REBUILD, &follower), ZR_E_CANCELLED);
  EXPECT_EQ(follower.ends, std::vector<HRESULT>{ZR_E_CANCELLED});
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.zrk"));
  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_KEEPPART | ZRAUDIOPEAK_SAMPLES, &follower), S_OK);
  tZRAUDIOPEAK_HEADER header;
  peak->GetPeakHeader(&header, sizeof header);
  EXPECT_EQ(int64_t{header.samples}, 0x18000 / 2);
  EXPECT_EQ(folder.Get("a.zrk").size(), 64u + (0x18000 / 2 + 99) / 100 * 2);
  EXPECT_EQ(peak->IsPeakFileValid(), 0);
  follower.cancelAt = -1;
  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_SAMPLESONLY, &follower), ZR_E_CANCELLED);
  int16_t pair[2];
  EXPECT_EQ(peak->ReadPeaks16(0, 1000, pair, 1, nullptr), S_OK);
  EXPECT_EQ(pair[1], 256);
}

TEST(PeakFault, SharedAndTemporaryFiles) {
  const TempFolder folder, other;
  const std::u16string temporary = other.Path().u16string();
  const std::u16string media = folder.Put("a.wav", WaveOf(k16Bit, 1, Stairs()));
  const auto temporaryFiles = [&other] {
    return std::distance(std::filesystem::directory_iterator(other.Path()), std::filesystem::directory_iterator());
  };
  {
    // While one builds, the other finds the file taken and works on a temporary one.
    const Peak first = OpenPeak(media, 100);
    const Peak second = OpenPeak(media, 100, 0, -1, nullptr, temporary.c_str());
    Follower follower;
    follower.atBegin = [&] {
      EXPECT_EQ(second->BuildPeaks(0, nullptr), S_OK);
      EXPECT_EQ(second->IsPeakFileValid(), 1);
      EXPECT_EQ(temporaryFiles(), 1);
    };
    EXPECT_EQ(first->BuildPeaks(0, &follower), S_OK);
  }
  EXPECT_EQ(temporaryFiles(), 0);
  EXPECT_EQ(OpenPeak(media, 100)->IsPeakFileValid(), 1);
  // One that exists is used; without one the temporary one goes with its object.
  const auto open = [&](uint32_t flags) { return OpenPeak(media, 100, flags, -1, nullptr, temporary.c_str()); };
  EXPECT_EQ(open(ZRAUDIOPEAK_EXISTING)->BuildPeaks(0, nullptr), ZR_S_PEAKS_VALID);
  EXPECT_EQ(open(ZRAUDIOPEAK_READONLY)->SetPeakLength(5), E_FAIL);
  EXPECT_EQ(open(ZRAUDIOPEAK_READONLY)->Flush(), S_OK);
  ASSERT_TRUE(std::filesystem::remove(folder.Path() / "a.zrk"));
  for (const uint32_t flags : {ZRAUDIOPEAK_EXISTING, ZRAUDIOPEAK_TEMPORARY}) {
    {
      const Peak peak = open(flags);
      EXPECT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
      EXPECT_EQ(temporaryFiles(), 1);
    }
    EXPECT_EQ(temporaryFiles(), 0);
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.zrk"));
  }
  // No place at all.
  const std::u16string nowhere = other.Name("none");
  std::filesystem::create_directory(folder.Path() / "a.zrk");
  const Peak lost = OpenPeak(media, 100, 0, -1, nullptr, nowhere.c_str());
  EXPECT_EQ(lost->BuildPeaks(0, nullptr), ZR_E_FILE_CREATE);
  const Peak lostTemporary = OpenPeak(media, 100, ZRAUDIOPEAK_TEMPORARY, -1, nullptr, nowhere.c_str());
  EXPECT_EQ(lostTemporary->BuildPeaks(0, nullptr), ZR_E_FILE_OPEN);
}

TEST(PeakFault, RenamedMediaTakesItsPeaksAlong) {
  const TempFolder folder;
  const Peak peak = OpenPeak(folder.Put("a.wav", WaveOf(k16Bit, 1, Stairs())), 100);
  ASSERT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
  const auto rename = [&](const char* from, const char* to) {
    std::filesystem::rename(folder.Path() / from, folder.Path() / to);
    return ZrAudioPeak_HandleMediaRename(peak.get(), folder.Name(to).c_str());
  };
  EXPECT_EQ(rename("a.wav", "b.wav"), S_OK);
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.zrk"));
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / "b.zrk"));
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
  // The new name is taken by a folder: the peak file stays what it is.
  std::filesystem::create_directory(folder.Path() / "c.zrk");
  EXPECT_EQ(rename("b.wav", "c.wav"), ZR_E_FILE_WRITE);
  char16_t name[300];
  ASSERT_EQ(peak->GetPeakFileName(name, 300), S_OK);
  EXPECT_EQ(name, folder.Name("b.zrk"));
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
}

TEST(PeakFault, MemoryCopyHasALimit) {
  const TempFolder folder;
  constexpr MediaType k8Bit = {"8", 1, 8};
  constexpr int64_t kMost = 0x20000 * 64;
  const std::u16string media = folder.Put("a.wav", WaveOf(k8Bit, 1, Steps(kMost + 64, 3)));
  const Peak peak = OpenPeak(media, 64, 0, 64);
  EXPECT_EQ(peak->BuildPeaks(0, nullptr), E_INVALIDARG);
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
  int32_t memoryInterval = 99;
  peak->GetPeakInfo(nullptr, nullptr, nullptr, &memoryInterval, nullptr);
  EXPECT_EQ(memoryInterval, 0);
  folder.Put("a.wav", WaveOf(k8Bit, 1, Steps(kMost, 3)));
  const Peak fitting = OpenPeak(media, 64, 0, 64);
  EXPECT_EQ(fitting->BuildPeaks(0, nullptr), S_OK);
  fitting->GetPeakInfo(nullptr, nullptr, nullptr, &memoryInterval, nullptr);
  EXPECT_EQ(memoryInterval, 64);
}

}  // namespace
