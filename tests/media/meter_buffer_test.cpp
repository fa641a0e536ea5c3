// SPDX-License-Identifier: Apache-2.0
// Levels come out at the position at which their audio is heard.
#include <gtest/gtest.h>

#include <cmath>

#include "media/testing/meter.h"

using namespace media_testing;

namespace {

/// Writes a block whose slices of 512 frames have these peaks.
void WriteSlices(CZRPeakBuffer* meter, int64_t position, const std::vector<float>& peaks, int32_t reverse = 0,
                 int32_t mark = 0) {
  std::vector<float> samples;
  for (const float peak : peaks) {
    samples.resize(samples.size() + 511, 0.0f);
    samples.push_back(-peak);
  }
  meter->Writer()->WritePeaks(position, samples.data(), static_cast<int64_t>(samples.size()), 0, reverse, mark, 0, 0);
}

float PeakAt(CZRPeakBuffer* meter, int64_t position, uint32_t* clip = nullptr) {
  float peak = 9;
  uint32_t clipped = 9;
  EXPECT_EQ(meter->ReadPeaks(position, &peak, &clipped), S_OK);
  if (clip != nullptr) *clip = clipped;
  return peak;
}

TEST(MeterBuffer, PeaksFollowThePosition) {
  const Meter meter = MakeMeter(16);
  WriteSlices(meter.get(), 0, {0.25f, 0.5f, 0.125f, 1.0f, 1.0000001f});
  EXPECT_EQ(PeakAt(meter.get(), 511), 0.0f);
  EXPECT_EQ(PeakAt(meter.get(), 1024), 0.5f);
  EXPECT_EQ(PeakAt(meter.get(), 1024), 0.5f);
  EXPECT_EQ(PeakAt(meter.get(), 1536), 0.125f);
  uint32_t clipped = 9;
  EXPECT_EQ(PeakAt(meter.get(), 2048, &clipped), 1.0f);
  EXPECT_EQ(clipped, 0u);
  EXPECT_EQ(PeakAt(meter.get(), 2560, &clipped), 1.0000001f);
  EXPECT_EQ(clipped, 1u);
  meter->Writer()->WritePeaks(2560, nullptr, 512, 0, 0, 0, 1, 0);
  EXPECT_EQ(PeakAt(meter.get(), 3072), 0.0f);
  // At 64 ms the frame is 3072; 15360 is 320 ms.
  WriteSlices(meter.get(), 14848, {0.75f});
  float peak = 0;
  EXPECT_EQ(meter->ReadPeaksAtTime(3'199'000, &peak, &clipped), S_OK);
  EXPECT_EQ(peak, 0.0f);
  EXPECT_EQ(meter->ReadPeaksAtTime(3'200'000, &peak, &clipped), S_OK);
  EXPECT_EQ(peak, 0.75f);
  const float loud[] = {0.1f, -0.9f, 0.2f};
  meter->Writer()->WritePeaks(0, loud, 3, 0, 0, 0, 0, 1);
  EXPECT_EQ(PeakAt(meter.get(), 0), 0.9f);
  meter->Writer()->Reset();
  EXPECT_EQ(PeakAt(meter.get(), 0), 0.0f);
}

TEST(MeterBuffer, JumpsReversesAndTrims) {
  const Meter meter = MakeMeter(16);
  // A jump back: what was written before isn't shown at the new place, nor later.
  WriteSlices(meter.get(), 100'000, {0.9f, 0.9f});
  WriteSlices(meter.get(), 0, {0.25f, 0.5f}, 0, 1);
  EXPECT_EQ(PeakAt(meter.get(), 512), 0.25f);
  EXPECT_EQ(PeakAt(meter.get(), 1024), 0.5f);
  // A jump forwards past what is still unread.
  WriteSlices(meter.get(), 1024, {0.9f});
  WriteSlices(meter.get(), 200'000, {0.25f}, 0, 1);
  EXPECT_EQ(PeakAt(meter.get(), 200'512), 0.25f);
  // Backwards, the later slice is heard first; what runs forwards falls away.
  WriteSlices(meter.get(), 200'512, {0.9f});
  WriteSlices(meter.get(), 1024, {0.25f, 0.5f}, 1);
  EXPECT_EQ(PeakAt(meter.get(), 2048), 0.5f);
  EXPECT_EQ(PeakAt(meter.get(), 1536), 0.25f);
  // Forwards again; a trim drops what ends behind it.
  WriteSlices(meter.get(), 0, {0.25f, 0.5f, 0.9f});
  meter->Writer()->Trim(1024);
  EXPECT_EQ(PeakAt(meter.get(), 5000), 0.5f);
  // A full ring drops what comes.
  WriteSlices(meter.get(), 0, std::vector<float>(16, 0.25f));
  WriteSlices(meter.get(), 16 * 512, {0.9f});
  EXPECT_EQ(PeakAt(meter.get(), 100'000), 0.25f);
}

TEST(MeterBuffer, PowerOfTheWindow) {
  const struct {
    uint32_t rate, mode;
    int64_t window, slice;
  } rows[] = {{48000, 0, 14400, 512}, {44100, 0, 13230, 512}, {48000, 1, 240, 120},
              {44100, 1, 221, 110},   {22050, 2, 221, 110},   {48000, 99, 14400, 512}};
  for (const auto& row : rows) {
    const Meter meter = MakeMeter(200, row.rate);
    const int64_t least = row.window - row.window % row.slice;
    std::vector<float> samples(static_cast<size_t>(3 * row.window), 0.5f);
    for (size_t at = 0; at < samples.size(); at += 2) samples[at] = -0.25f;
    float value = 7;
    for (const uint32_t type : {1u, 0u}) {
      meter->SetPowerMode(type, row.mode);
      if (row.mode != 0 || type == 0) {
        EXPECT_EQ(meter->ReadPower(-1, &value), S_FALSE);
      }
      meter->WritePower(0, samples.data(), least - 1, 0, 0, 0, 0);
      EXPECT_EQ(meter->ReadPower(-1, &value), S_OK);
      EXPECT_EQ(value, 0.0f);
      meter->WritePower(least - 1, samples.data(), 1, 0, 0, 0, 0);
      EXPECT_EQ(meter->ReadPower(least, &value), S_OK);
      // Half the samples are 0.5 and half 0.25 in size; an odd count is off by one sample.
      const double expected = type == 1 ? std::sqrt((0.25 + 0.0625) / 2) : 0.375;
      EXPECT_NEAR(value, expected, 0.002) << row.rate << " mode " << row.mode;
      // Two windows on, in silence, nothing of it is left.
      meter->WritePower(least, samples.data(), 2 * row.window, 0, 0, 0, 1);
      EXPECT_EQ(meter->ReadPowerAtTime(-1, &value), S_OK);
      EXPECT_EQ(value, 0.0f);
      meter->ResetPower();
    }
  }
}

TEST(MeterBuffer, Refusals) {
  CZRPeakBuffer* buffer = nullptr;
  _zrwaveformat format{};
  format.Init(48000, ZRSAMPLETYPE_FLOAT32, 9, 0, kZrWaveFormatFixedBytes);
  EXPECT_EQ(ZRCreateMemoryListPeakBuffer(&buffer, &format, 16), E_INVALIDARG);
  EXPECT_EQ(ZRCreateMemoryListPeakBuffer(&buffer, nullptr, 1025), E_INVALIDARG);
  for (const uint32_t records : {0u, 1024u}) {
    ASSERT_EQ(ZRCreateMemoryListPeakBuffer(&buffer, nullptr, records), S_OK);
    const Meter meter(buffer);
    float value = 7;
    uint32_t clipped = 7;
    EXPECT_EQ(meter->GetFormat(&format), E_UNEXPECTED);
    EXPECT_EQ(meter->ReadPeaks(0, &value, &clipped), S_FALSE);
    EXPECT_EQ(meter->ReadPower(0, &value), S_FALSE);
    format.Init(48000, ZRSAMPLETYPE_FLOAT32, 1, 0, kZrWaveFormatFixedBytes);
    EXPECT_EQ(meter->Writer()->SetFormat(&format), S_OK);
    const float samples[] = {0.5f};
    EXPECT_EQ(meter->WritePower(0, samples, 1, 0, 0, 0, 0), S_OK);
    EXPECT_EQ(meter->ReadPower(-1, &value), S_OK);
    WriteSlices(meter.get(), 0, {0.5f});
    EXPECT_EQ(PeakAt(meter.get(), 512), records == 0 ? 0.0f : 0.5f);
  }
}

}  // namespace
