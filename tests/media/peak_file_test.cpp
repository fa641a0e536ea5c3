// SPDX-License-Identifier: Apache-2.0
// Peak files against scans of the samples: building, updating, reading columns from every source.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>

#include "media/peak/audio_peak.h"
#include "media/testing/peak_media.h"

using namespace media_testing;
using testing_support::Random;
using testing_support::TempFolder;

namespace {

constexpr MediaType k16Bit = {"16", 1, 16};

void SetMediaTime(const std::filesystem::path& path, int64_t seconds) {
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(PeakFile, EntriesOfEveryTypeEqualAScan) {
  Random random(343);
  SCOPED_TRACE(random.Label());
  const TempFolder folder;
  for (const MediaType& type : kMediaTypes) {
    for (const uint16_t channels : {uint16_t{1}, uint16_t{2}, uint16_t{3}}) {
      for (const int64_t frames : {1, 63, 701, 4096, 30011}) {
        const Steps steps = RandomSteps(random, static_cast<size_t>(frames) * channels);
        const std::u16string media = folder.Put("a.WAV", WaveOf(type, channels, steps));
        for (const int interval : {64, 256, 1000, 40000}) {
          const uint32_t flags = (random.Bits() % 2 != 0 ? ZRAUDIOPEAK_16BIT : 0u) | ZRAUDIOPEAK_REBUILD;
          SCOPED_TRACE(std::string(type.name) + ", channels " + std::to_string(channels) + ", frames " +
                       std::to_string(frames) + ", interval " + std::to_string(interval));
          ASSERT_EQ(OpenPeak(media, interval)->BuildPeaks(flags, nullptr), S_OK);
          HRESULT created = 99;
          const Peak peak = OpenPeak(media, interval, 0, -1, &created);
          EXPECT_EQ(created, S_OK);
          const int64_t entries = (frames + interval - 1) / interval;
          ASSERT_EQ(StoredSteps(folder.Get("a.zrk")), ScanSpread(steps, channels, entries));
        }
      }
    }
  }
}

TEST(PeakFile, HeaderNamesAndValidity) {
  const TempFolder folder;
  const std::u16string media = folder.Put("take.wav", WaveOf(k16Bit, 1, Steps(1000, 5)));
  SetMediaTime(folder.Path() / "take.wav", 1700000001);
  HRESULT created = 99;
  Peak peak = OpenPeak(media, 0x1000001, 0, -1, &created);
  EXPECT_EQ(created, S_FALSE);
  ASSERT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_16BIT, nullptr), S_OK);
  char16_t name[300];
  ASSERT_EQ(peak->GetPeakFileName(name, 300), S_OK);
  EXPECT_EQ(name, folder.Name("take.zrk"));
  tZRAUDIOPEAK_HEADER header;
  peak->GetPeakHeader(&header, sizeof header);
  // 2023-11-14 22:13:21 UTC: hours << 11 | minutes << 5 | seconds / 2, and years from 1980 << 9 | month << 5 | day.
  EXPECT_EQ(uint32_t{header.mediaTimeUtc}, (22u << 11 | 13u << 5 | 10u) << 16 | 43u << 9 | 11u << 5 | 14u);
  EXPECT_EQ(uint32_t{header.interval}, 256u);
  EXPECT_EQ(folder.Get("take.zrk").size(), 64u + 16);

  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_16BIT, nullptr), ZR_S_PEAKS_VALID);
  SetMediaTime(folder.Path() / "take.wav", 1700000005);
  EXPECT_EQ(peak->IsPeakFileValid(), 0);
  EXPECT_EQ(peak->Flush(), S_OK);
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
  // A longer medium of the same time.
  peak = nullptr;
  folder.Put("take.wav", WaveOf(k16Bit, 1, Steps(1001, 5)));
  SetMediaTime(folder.Path() / "take.wav", 1700000005);
  peak = OpenPeak(media, 256);
  EXPECT_EQ(peak->IsPeakFileValid(), 0);
  EXPECT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_16BIT, nullptr), ZR_S_PEAKS_VALID);
  EXPECT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_16BIT | ZRAUDIOPEAK_REPLACE8BIT, nullptr), S_OK);

  ASSERT_EQ(ZrAudioPeak_CreateInstance(nullptr, nullptr, u"x", nullptr, 0, 0, 0), E_POINTER);
  peak = OpenPeak(folder.Name("nothing.wav"), 256, 0, -1, &created);
  EXPECT_EQ(created, ZR_E_FILE_OPEN);
  EXPECT_EQ(peak, nullptr);
}

TEST(PeakFile, EmptyMedia) {
  const TempFolder folder;
  const Peak peak = OpenPeak(folder.Put("a.wav", WaveOf(k16Bit, 2, {})), 256, 0, 256);
  ASSERT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
  EXPECT_EQ(folder.Get("a.zrk").size(), 64u);
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
  int8_t columns[40];
  int32_t read = 99;
  EXPECT_EQ(peak->ReadPeaks(0, 10000, ZRSAMPLETYPE_PCM8SIGNED, columns, 10, &read), S_OK);
  EXPECT_EQ(read, 0);
}

/// Columns of a view in steps, from any output type.
std::vector<int> ReadColumns(IZrAudioPeak* peak, int64_t first, int64_t count, uint32_t type, int32_t columns,
                             size_t channels) {
  std::vector<float> buffer(static_cast<size_t>(columns) * channels * 2 + 1, 77.0f);
  int32_t read = 0;
  EXPECT_EQ(peak->ReadPeaks(first, count, type, buffer.data(), columns, &read), S_OK);
  std::vector<int> steps;
  for (size_t value = 0; value < static_cast<size_t>(read) * channels * 2; ++value) {
    if (type == ZRSAMPLETYPE_FLOAT32) {
      steps.push_back(static_cast<int>(std::lrint(buffer[value] * 128)));
    } else if (type == ZRSAMPLETYPE_PCM8SIGNED) {
      steps.push_back(reinterpret_cast<const int8_t*>(buffer.data())[value]);
    } else {
      steps.push_back(reinterpret_cast<const int16_t*>(buffer.data())[value] >> 8);
    }
  }
  EXPECT_EQ(buffer.back(), 77.0f);
  return steps;
}

TEST(PeakRead, ColumnsOfEverySourceAndType) {
  Random random(344);
  SCOPED_TRACE(random.Label());
  const TempFolder folder;
  constexpr size_t kChannels = 2;
  constexpr int64_t kFrames = 100'000;
  const Steps steps = RandomSteps(random, kFrames * kChannels);
  const std::u16string media = folder.Put("a.wav", WaveOf(k16Bit, kChannels, steps));
  for (const uint32_t bits : {0u, 1u}) {
    ASSERT_EQ(OpenPeak(media, 250)->BuildPeaks(bits | ZRAUDIOPEAK_REBUILD, nullptr), S_OK);
    const std::vector<int> stored = StoredSteps(folder.Get("a.zrk"));  // 400 whole entries.
    for (const bool mapped : {true, false}) {
      const Peak peak = OpenPeak(media, 250);
      static_cast<marlo::peak::AudioPeak*>(peak.get())->SetMapView(mapped);
      for (int round = 0; round < 60; ++round) {
        const int64_t first = random.Between(0, kFrames);
        const int64_t count = random.Between(1, kFrames);
        const auto columns = static_cast<int32_t>(random.Between(1, 600));
        const uint32_t types[] = {0, ZRSAMPLETYPE_PCM16, ZRSAMPLETYPE_FLOAT32, ZRSAMPLETYPE_PCM8SIGNED};
        std::vector<int> expected;
        const int64_t end = std::min(first + count, kFrames);
        if (count / columns >= 250) {
          for (int64_t column = 0; column < columns; ++column) {
            const int64_t from = (first + column * count / columns) / 250;
            const int64_t to = std::min<int64_t>((first + (column + 1) * count / columns) / 250, 399);
            if (from > 399) break;
            for (size_t value = 0; value < 2 * kChannels; ++value) {
              int merged = stored[static_cast<size_t>(from) * 2 * kChannels + value];
              for (int64_t entry = from; entry <= to; ++entry) {
                const int other = stored[static_cast<size_t>(entry) * 2 * kChannels + value];
                merged = value % 2 == 0 ? std::min(merged, other) : std::max(merged, other);
              }
              expected.push_back(merged);
            }
          }
        } else if (count <= columns) {
          for (int64_t frame = first; frame < end; ++frame) ScanInto(expected, steps, kChannels, frame, frame + 1);
        } else if (end == first + count) {
          const auto begin = steps.begin() + first * static_cast<int64_t>(kChannels);
          expected = ScanSpread(Steps(begin, begin + count * static_cast<int64_t>(kChannels)), kChannels, columns);
        } else {
          continue;
        }
        EXPECT_EQ(ReadColumns(peak.get(), first, count, types[round % 4], columns, kChannels), expected)
            << first << ", " << count << " in " << columns << (mapped ? "" : " by seeks");
      }
    }
  }
}

TEST(PeakRead, AlignedColumnsStartAtMultiples) {
  const TempFolder folder;
  Steps ramp(5000);
  for (size_t frame = 0; frame < ramp.size(); ++frame) ramp[frame] = static_cast<int8_t>(frame / 64);
  const Peak peak = OpenPeak(folder.Put("a.wav", WaveOf(k16Bit, 1, ramp)), 64);
  ASSERT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_16BIT, nullptr), S_OK);
  int8_t columns[40];
  int32_t read = 0;
  // Samples: 32 a column, the start 100 moves down to 96, whose step is 1.
  ASSERT_EQ(peak->ReadPeaksAligned(100, 32, ZRSAMPLETYPE_PCM8SIGNED, columns, 3, &read), S_OK);
  EXPECT_EQ(read, 3);
  EXPECT_EQ(std::vector<int>(columns, columns + 6), (std::vector<int>{1, 1, 1, 2, 2, 2}));
  // File: 128 a column. The last one takes what is left of the 79 entries.
  ASSERT_EQ(peak->ReadPeaksAligned(4900, 128, ZRSAMPLETYPE_PCM8SIGNED, columns, 9, &read), S_OK);
  EXPECT_EQ(read, 2);
  EXPECT_EQ(columns[3], 78);
  ASSERT_EQ(peak->ReadPeaksAligned(4998, 1, ZRSAMPLETYPE_PCM8SIGNED, columns, 9, &read), S_OK);
  EXPECT_EQ(read, 2);
  EXPECT_EQ(peak->ReadPeaksAligned(0, 0, 0, columns, 1, &read), E_INVALIDARG);
  EXPECT_EQ(peak->ReadPeaksAligned(0, 64, 0, columns, -1, &read), E_INVALIDARG);
  EXPECT_EQ(peak->ReadPeaks(0, 64, ZRSAMPLETYPE_PCM24, columns, 1, &read), E_UNEXPECTED);
}

TEST(PeakRead, MemoryCopyAndMemoryInstance) {
  Random random(345);
  SCOPED_TRACE(random.Label());
  const Steps steps = RandomSteps(random, 64 * 10 + 7);
  const Image samples = SamplesOf(k16Bit, steps);
  const WAVEFORMATEX format = {WAVE_FORMAT_PCM, 1, 48000, 96000, 2, 16, 0};
  IZrAudioPeak* made = nullptr;
  EXPECT_EQ(ZrAudioPeak_CreateMemoryInstance(&made, nullptr, &format, samples.Data(), 647, 64, 0), S_FALSE);
  const Peak peak(made);
  char16_t name[300];
  EXPECT_EQ(peak->GetPeakFileName(name, 300), E_FAIL);
  ASSERT_EQ(peak->BuildPeaks(0, nullptr), S_OK);
  EXPECT_EQ(peak->IsPeakFileValid(), 1);
  const std::vector<int> entries = ScanSpread(Steps(steps.begin(), steps.begin() + 640), 1, 10);
  for (const uint32_t type : {0u, 32u, 49u}) EXPECT_EQ(ReadColumns(made, 0, 640, type, 10, 1), entries);
  // Three columns of 4, 3 and 3 entries.
  std::vector<int> merged;
  for (const auto& [begin, end] : {std::pair(0, 4), {4, 7}, {7, 10}}) {
    int low = 127, high = -128;
    for (int entry = begin; entry < end; ++entry) {
      low = std::min(low, entries[static_cast<size_t>(2 * entry)]);
      high = std::max(high, entries[static_cast<size_t>(2 * entry + 1)]);
    }
    merged.insert(merged.end(), {low, high});
  }
  EXPECT_EQ(ReadColumns(made, 0, 640, 49, 3, 1), merged);
  EXPECT_EQ(ReadColumns(made, 320, 640, 49, 10, 1), std::vector<int>(entries.begin() + 10, entries.end()));
  int16_t pair[2];
  EXPECT_EQ(peak->ReadPeaks16(64000, 640, pair, 1, nullptr), E_FAIL);
  EXPECT_EQ(peak->UpdatePeaks(samples.Data(), 0, 1, 0), E_UNEXPECTED);
}

TEST(PeakUpdate, PiecesGiveThePeaksOfTheWhole) {
  Random random(346);
  SCOPED_TRACE(random.Label());
  const TempFolder folder;
  constexpr int64_t kFrames = 64 * 30;
  for (const MediaType& type : kMediaTypes) {
    // The file on disk holds the final samples; the peak file starts from silence, and all but the last 100 frames are
    // brought up to date, in pieces that follow each other or, in odd rounds, come from the end.
    for (int round = 0; round < 4; ++round) {
      const Steps steps = RandomSteps(random, kFrames);
      const std::u16string media = folder.Put("a.wav", WaveOf(type, 1, steps));
      const Peak peak = OpenPeak(media, 64);
      ASSERT_EQ(peak->BuildPeaks(ZRAUDIOPEAK_REBUILD | (round < 2 ? 1u : 0u), nullptr), S_OK);
      ASSERT_EQ(peak->SetPeakLength(0), S_OK);
      std::vector<std::pair<int64_t, int64_t>> pieces;
      for (int64_t start = 0; start < kFrames - 100;) {
        const int64_t count = std::min(random.Between(1, 200), kFrames - 100 - start);
        pieces.emplace_back(start, count);
        start += count;
      }
      if (round % 2 != 0) std::reverse(pieces.begin(), pieces.end());
      for (const auto& [start, count] : pieces) {
        const Image samples = SamplesOf(type, Steps(steps.begin() + start, steps.begin() + start + count));
        ASSERT_EQ(peak->UpdatePeaks(samples.Data(), start, count, 0), S_OK);
      }
      // The 28 entries hold the frames of all 64, also those behind the last piece; an entry that was crossed within a
      // piece also holds the frame before it.
      const std::vector<int> stored = StoredSteps(folder.Get("a.zrk"));
      ASSERT_EQ(stored.size(), 29u * 2);
      for (int64_t entry = 0; entry < 29; ++entry) {
        std::vector<int> least, most;
        ScanInto(least, steps, 1, entry * 64, entry * 64 + 64);
        ScanInto(most, steps, 1, std::max<int64_t>(entry * 64 - 1, 0), entry * 64 + 64);
        const auto at = static_cast<size_t>(2 * entry);
        EXPECT_TRUE(stored[at] == least[0] || stored[at] == most[0]) << type.name << " entry " << entry;
        EXPECT_TRUE(stored[at + 1] == least[1] || stored[at + 1] == most[1]) << type.name << " entry " << entry;
      }
    }
  }
}

TEST(PeakSamples, ConvertToAnyTypeAndEndShort) {
  const TempFolder folder;
  const Steps steps = {1, -2, 3, -4, 5};
  for (const MediaType& type : kMediaTypes) {
    const Peak peak = OpenPeak(folder.Put("a.wav", WaveOf(type, 1, steps)), 64);
    int16_t narrow[9];
    double wide[9];
    uint32_t read = 0;
    ASSERT_EQ(peak->ReadSamples(1, ZRSAMPLETYPE_PCM16, narrow, 9, &read), S_OK);
    EXPECT_EQ(read, 4u);
    EXPECT_EQ(narrow[3], 5 * 256) << type.name;
    ASSERT_EQ(peak->ReadSamples(0, ZRSAMPLETYPE_FLOAT64, wide, 2, &read), S_OK);
    EXPECT_EQ(read, 2u);
    EXPECT_EQ(wide[1], -2 / 128.0) << type.name;
  }
}

}  // namespace
