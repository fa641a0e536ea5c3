// SPDX-License-Identifier: Apache-2.0
// Wave devices: headers on their way through the stepped and the file-paced backend.
#include "marlo110k/platform/wave.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <numeric>

#include "marlo110k/platform/file.h"
#include "platform/base/clock.h"
#include "platform/base/text.h"
#include "platform/media/wave_device.h"
#include "platform/media/wave_stepped.h"

namespace {

using plat::WaveDirection;

constexpr WAVEFORMATEX kStereo16{WAVE_FORMAT_PCM, 2, 48000, 192000, 4, 16, 0};

struct Buffer {
  explicit Buffer(uint32_t frames) : data(frames * 4) {
    header.lpData = data.data();
    header.dwBufferLength = frames * 4;
  }
  std::vector<uint8_t> data;
  WAVEHDR header{};
};

class WaveDevices : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(plat::UseWaveBackend(&backend)); }
  void TearDown() override {
    plat::CloseWaitable(event);
    EXPECT_TRUE(plat::UseWaveBackend(nullptr));
  }
  void Open(WaveDirection direction) {
    ASSERT_EQ(plat::OpenWaveDevice(direction, 0, &kStereo16, event, &device), plat::kWaveOk);
    EXPECT_EQ(plat::WaitOne(event, 0), plat::kWaitObject0) << "opening is told";
  }
  /// Before the buffers go.
  void Close() {
    EXPECT_EQ(plat::ResetWaveDevice(device), plat::kWaveOk);
    EXPECT_EQ(plat::CloseWaveDevice(device), plat::kWaveOk);
  }
  uint32_t Position(plat::WaveTime unit) {
    uint32_t position = 0;
    EXPECT_EQ(plat::GetWavePosition(device, unit, &position), plat::kWaveOk);
    return position;
  }

  plat::WaveStepped backend;
  plat::Waitable* event = plat::CreateEvent(false, false);
  plat::WaveDevice* device = nullptr;
};

TEST_F(WaveDevices, AnOutputPlaysItsHeadersInOrderAndGivesThemBack) {
  plat::SteppedDevice& stepped = backend.AddDevice(WaveDirection::kOut);
  stepped.firstPosition = 0xFFFFFFFF;  // The sample position wraps with the first frame.
  Open(WaveDirection::kOut);
  EXPECT_EQ(plat::PauseWaveDevice(device), plat::kWaveOk) << "also before the first header";
  Buffer first(100), empty(0), second(50);
  std::iota(first.data.begin(), first.data.end(), uint8_t{1});
  std::iota(second.data.begin(), second.data.end(), uint8_t{77});
  empty.header.lpData = first.data.data();
  EXPECT_EQ(plat::QueueWaveHeader(device, &first.header), plat::kWaveUnprepared);
  for (Buffer* buffer : {&first, &empty, &second}) {
    ASSERT_EQ(plat::PrepareWaveHeader(device, &buffer->header), plat::kWaveOk);
    ASSERT_EQ(plat::QueueWaveHeader(device, &buffer->header), plat::kWaveOk);
    EXPECT_EQ(buffer->header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_INQUEUE});
  }
  EXPECT_EQ(plat::QueueWaveHeader(device, &first.header), plat::kWaveStillPlaying);
  EXPECT_EQ(plat::UnprepareWaveHeader(device, &first.header), plat::kWaveStillPlaying);
  EXPECT_EQ(plat::CloseWaveDevice(device), plat::kWaveStillPlaying);
  EXPECT_FALSE(plat::UseWaveBackend(nullptr)) << "a device is open";

  backend.Step(10);
  EXPECT_TRUE(stepped.data.empty()) << "paused";
  EXPECT_EQ(plat::StartWaveDevice(device), plat::kWaveOk);
  backend.Step(99);
  EXPECT_EQ(first.header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_INQUEUE});
  EXPECT_EQ(plat::WaitOne(event, 0), plat::kWaitTimeout);
  EXPECT_EQ(Position(plat::WaveTime::kSamples), 98u);
  backend.Step(2);
  EXPECT_EQ(first.header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_DONE});
  EXPECT_EQ(empty.header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_DONE});
  EXPECT_EQ(plat::WaitOne(event, 0), plat::kWaitObject0);
  backend.Step(60);
  EXPECT_EQ(stepped.starvedFrames, 11u);
  std::vector<uint8_t> expected = first.data;
  expected.insert(expected.end(), second.data.begin(), second.data.end());
  EXPECT_EQ(stepped.data, expected);
  EXPECT_EQ(Position(plat::WaveTime::kBytes), static_cast<uint32_t>(4 * (0xFFFFFFFFull + 150)));

  ASSERT_EQ(plat::QueueWaveHeader(device, &first.header), plat::kWaveOk);
  backend.Step(1);
  EXPECT_EQ(plat::ResetWaveDevice(device), plat::kWaveOk);
  EXPECT_EQ(first.header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_DONE}) << "a reset gives all back";
  EXPECT_EQ(Position(plat::WaveTime::kSamples), 0xFFFFFFFFu);
  ASSERT_EQ(plat::QueueWaveHeader(device, &second.header), plat::kWaveOk);
  backend.Step(1);
  EXPECT_EQ(Position(plat::WaveTime::kSamples), 0u) << "an output plays on after a reset";
  Close();
}

TEST_F(WaveDevices, AnInputFillsItsHeaders) {
  plat::SteppedDevice& stepped = backend.AddDevice(WaveDirection::kIn);
  stepped.data.resize(150 * 4);
  std::iota(stepped.data.begin(), stepped.data.end(), uint8_t{3});
  Open(WaveDirection::kIn);
  Buffer first(100), second(100);
  for (Buffer* buffer : {&first, &second}) {
    ASSERT_EQ(plat::PrepareWaveHeader(device, &buffer->header), plat::kWaveOk);
    ASSERT_EQ(plat::QueueWaveHeader(device, &buffer->header), plat::kWaveOk);
  }
  backend.Step(5);
  EXPECT_EQ(stepped.recorded, 0u) << "an input waits for its start";
  EXPECT_EQ(plat::StartWaveDevice(device), plat::kWaveOk);
  backend.Step(120);
  EXPECT_EQ(first.header.dwBytesRecorded, 400u);
  EXPECT_EQ(plat::PauseWaveDevice(device), plat::kWaveOk);
  EXPECT_EQ(second.header.dwFlags, uint32_t{WHDR_PREPARED | WHDR_DONE}) << "stopping gives the open one back";
  EXPECT_EQ(second.header.dwBytesRecorded, 80u);
  EXPECT_TRUE(std::equal(first.data.begin(), first.data.end(), stepped.data.begin()));
  EXPECT_TRUE(std::equal(second.data.begin(), second.data.begin() + 80, stepped.data.begin() + 400));
  Close();
}

TEST_F(WaveDevices, FailuresHaveTheirCodes) {
  plat::SteppedDevice& stepped = backend.AddDevice(WaveDirection::kOut);
  stepped.accepts = [](const WAVEFORMATEX& format) { return format.nChannels == 2; };
  stepped.openResult = plat::kWaveAllocated;
  stepped.openFailures = 1;
  WAVEFORMATEX mono = kStereo16;
  mono.nChannels = 1;
  EXPECT_EQ(plat::TestWaveFormat(WaveDirection::kOut, 0, &mono), plat::kWaveBadFormat);
  EXPECT_EQ(plat::TestWaveFormat(WaveDirection::kOut, 1, &kStereo16), plat::kWaveBadDevice);
  EXPECT_EQ(plat::TestWaveFormat(WaveDirection::kIn, plat::kWaveMapper, &kStereo16), plat::kWaveBadDevice);
  EXPECT_EQ(plat::OpenWaveDevice(WaveDirection::kOut, 0, &kStereo16, event, &device), plat::kWaveAllocated);
  EXPECT_EQ(device, nullptr);
  EXPECT_EQ(plat::OpenWaveDevice(WaveDirection::kOut, 0, &kStereo16, event, &device), plat::kWaveOk);
  backend.Unplug(WaveDirection::kOut, 0);
  plat::WaveDevice* second = nullptr;
  EXPECT_EQ(plat::OpenWaveDevice(WaveDirection::kOut, 0, &kStereo16, event, &second), plat::kWaveNoDriver);
  EXPECT_EQ(plat::GetWavePosition(nullptr, plat::WaveTime::kBytes, nullptr), plat::kWaveBadHandle);
  EXPECT_EQ(plat::PrepareWaveHeader(device, nullptr), plat::kWaveBadParameter);
  Close();
}

std::vector<uint8_t> FileBytes(const std::string& path) {
  plat::File* file = plat::OpenFile(plat::FromUtf8(path.c_str()).c_str(), plat::kReadAccess,
                                    plat::kShareRead | plat::kShareWrite, plat::kOpenExisting);
  uint64_t bytes = 0;
  plat::GetFileBytes(file, &bytes);
  std::vector<uint8_t> content(bytes);
  EXPECT_TRUE(plat::ReadFile(file, content.data(), static_cast<uint32_t>(bytes), nullptr));
  plat::CloseFile(file);
  return content;
}

TEST(WaveFile, PlaysAtTheClocksPaceIntoAReadableFile) {
  char folder[] = "/tmp/marlo-wave-XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const std::string path = std::string(folder) + "/played.wav";
  plat::FakeClock clock;
  ASSERT_TRUE(plat::ChooseWaveBackend(("file:" + path).c_str()));
  EXPECT_STREQ(plat::WaveBackendName(), "file");
  EXPECT_EQ(plat::CountWaveDevices(WaveDirection::kIn), 0u);
  plat::Waitable* event = plat::CreateEvent(false, false);
  plat::WaveDevice* device = nullptr;
  ASSERT_EQ(plat::OpenWaveDevice(WaveDirection::kOut, plat::kWaveMapper, &kStereo16, event, &device), plat::kWaveOk);
  plat::WaitOne(event, plat::kInfinite);
  Buffer buffer(4800);
  for (size_t byte = 0; byte < buffer.data.size(); ++byte)
    buffer.data[byte] = static_cast<uint8_t>(byte * 7 + byte / 256);
  ASSERT_EQ(plat::PrepareWaveHeader(device, &buffer.header), plat::kWaveOk);
  ASSERT_EQ(plat::QueueWaveHeader(device, &buffer.header), plat::kWaveOk);
  uint32_t position = 0;
  for (uint32_t ms = 25; ms <= 75; ms += 25) {
    clock.StepMilliseconds(25);
    plat::GetWavePosition(device, plat::WaveTime::kSamples, &position);
    EXPECT_EQ(position, 48 * ms);
  }
  plat::PauseWaveDevice(device);
  clock.StepMilliseconds(1000);
  plat::GetWavePosition(device, plat::WaveTime::kSamples, &position);
  EXPECT_EQ(position, 3600u);
  std::vector<uint8_t> file = FileBytes(path);
  ASSERT_EQ(file.size(), 46u + 3600 * 4) << "readable while it plays";
  plat::StartWaveDevice(device);
  clock.StepMilliseconds(60);
  EXPECT_EQ(plat::WaitOne(event, plat::kInfinite), plat::kWaitObject0);
  EXPECT_EQ(plat::CloseWaveDevice(device), plat::kWaveOk);
  plat::CloseWaitable(event);

  file = FileBytes(path);
  ASSERT_EQ(file.size(), 46u + 4800 * 4);
  EXPECT_EQ(std::memcmp(file.data() + 46, buffer.data.data(), 4800 * 4), 0);
  const auto word = [&](size_t at) {
    uint32_t value;
    std::memcpy(&value, &file[at], 4);
    return value;
  };
  EXPECT_EQ(word(4), file.size() - 8);
  EXPECT_EQ(word(42), 4800u * 4);
  EXPECT_EQ(std::memcmp(&file[20], &kStereo16, sizeof kStereo16), 0);

  EXPECT_FALSE(plat::ChooseWaveBackend("file:"));
  EXPECT_FALSE(plat::ChooseWaveBackend("tape"));
  EXPECT_STREQ(plat::WaveBackendName(), "file") << "a wrong word changes nothing";
  EXPECT_TRUE(plat::ChooseWaveBackend("null"));
  EXPECT_EQ(plat::CountWaveDevices(WaveDirection::kOut), 0u);
  EXPECT_EQ(plat::OpenWaveDevice(WaveDirection::kOut, plat::kWaveMapper, &kStereo16, nullptr, &device),
            plat::kWaveBadDevice);
  EXPECT_EQ(std::system(("rm -r " + std::string(folder)).c_str()), 0);
}

}  // namespace
