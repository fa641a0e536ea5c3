// SPDX-License-Identifier: Apache-2.0
// Our files before other programs, and theirs before ours: what sox, ffmpeg and sndfile-convert write is read right or
// refused, and what we write, repair and edit decodes to the same samples there. A tool that is missing fails the test.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "marlo110k/iff.h"
#include "marlo110k/riff.h"
#include "marlo110k/riff64.h"
#include "marlo110k/wavefile.h"
#include "media/testing/image.h"

using media_testing::Image;

namespace {

using Bytes = std::vector<char>;

/// Whole frames whose bytes are a multiple of 8 in every format, since Wave64 writers differ in what they count.
constexpr int64_t kFrames = 4800;

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

Bytes ReadAll(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class MediaTools : public testing::Test {
 protected:
  void SetUp() override {
    const char* folder = std::getenv("MARLO_TEMP_DIR");
    folder_ = std::string(folder != nullptr ? folder : "/tmp") + "/marlo_tools_XXXXXX";
    ASSERT_NE(mkdtemp(folder_.data()), nullptr);
    // Noise that doesn't repeat, in two channels that differ.
    std::ofstream source(In("source.raw"), std::ios::binary);
    uint32_t state = 1;
    for (int64_t i = 0; i < kFrames * 4; ++i) {
      state = state * 1664525 + 1013904223;
      source.put(static_cast<char>(state >> 24));
    }
    source.close();
    Run("ffmpeg -loglevel error -f s16le -ar 48000 -ac 2 -i " + In("source.raw") + " -y " + In("source.wav"));
    if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "no source";
  }
  void TearDown() override { Run("rm -r " + folder_); }

  std::string In(const std::string& name) const { return folder_ + "/" + name; }

  /// Runs a program. @return what it printed.
  Bytes Run(const std::string& command) const {
    std::FILE* pipe = popen((command + " </dev/null 2>/dev/null").c_str(), "r");
    Bytes output;
    char block[4096];
    for (size_t got; (got = fread(block, 1, sizeof block, pipe)) > 0;) output.insert(output.end(), block, block + got);
    const int status = pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command;
    return output;
  }

  /// The samples of a file as ffmpeg decodes them to its raw format `raw`.
  Bytes Decode(const std::string& path, const std::string& raw) const {
    return Run("ffmpeg -loglevel error -i " + path + " -c:a pcm_" + raw + " -f " + raw + " -");
  }

  std::string folder_;
};

/// The samples of a file by what ZrGetFileWfx says.
Bytes OurSamples(const std::string& path, const WAVEFORMATEX& format, int64_t frames, int64_t dataOffset) {
  Bytes samples(static_cast<size_t>(frames * format.nBlockAlign));
  plat::File* file = plat::OpenFile(Wide(path).c_str(), plat::kReadAccess, plat::kShareRead, plat::kOpenExisting);
  plat::SeekFile(file, dataOffset, plat::kSeekStart, nullptr);
  uint32_t got = 0;
  EXPECT_EQ(ZrReadFile(file, samples.data(), static_cast<uint32_t>(samples.size()), &got), 1);
  EXPECT_EQ(got, samples.size());
  plat::CloseFile(file);
  return samples;
}

/// Reads a file through ZrGetFileWfx and compares everything.
void ExpectRead(const std::string& path, uint16_t tag, uint16_t bits, uint16_t channels, uint32_t rate,
                const Bytes& samples) {
  int64_t frames = 0;
  int64_t dataOffset = 0;
  WAVEFORMATEX* format = ZrGetFileWfx(Wide(path).c_str(), &frames, &dataOffset);
  ASSERT_NE(format, nullptr) << path;
  EXPECT_EQ(ZrAudio_GetWaveFormatTag(format), tag) << path;
  EXPECT_EQ(+format->wBitsPerSample, bits) << path;
  EXPECT_EQ(+format->nChannels, channels) << path;
  EXPECT_EQ(+format->nSamplesPerSec, rate) << path;
  EXPECT_EQ(frames, kFrames) << path;
  EXPECT_EQ(OurSamples(path, *format, frames, dataOffset), samples) << path;
  std::free(format);
}

TEST_F(MediaTools, WriteFilesThatWeRead) {
  struct Row {
    const char* name;  ///< With the extension, by which some tools choose.
    const char* tool;  ///< "f" ffmpeg, "s" sox, "n" sndfile-convert; options follow.
    uint16_t tag;
    uint16_t bits;
    uint16_t channels;
    const char* raw;
  };
  const Row rows[] = {
      {"f8.wav", "f -c:a pcm_u8", 1, 8, 2, "u8"},
      {"f16.wav", "f -c:a pcm_s16le", 1, 16, 2, "s16le"},
      {"f24.wav", "f -c:a pcm_s24le", 1, 24, 2, "s24le"},
      {"f32.wav", "f -c:a pcm_s32le", 1, 32, 2, "s32le"},
      {"fflt.wav", "f -c:a pcm_f32le", 3, 32, 2, "f32le"},
      {"fdbl.wav", "f -c:a pcm_f64le", 3, 64, 2, "f64le"},
      {"f51.wav", "f -c:a pcm_s24le -ac 6", 1, 24, 6, "s24le"},
      {"fmono.wav", "f -c:a pcm_s16le -ac 1", 1, 16, 1, "s16le"},
      {"f16.w64", "f -c:a pcm_s16le", 1, 16, 2, "s16le"},
      {"f24.w64", "f -c:a pcm_s24le", 1, 24, 2, "s24le"},
      {"fflt.w64", "f -c:a pcm_f32le", 3, 32, 2, "f32le"},
      {"f8.aiff", "f -c:a pcm_s8", 0xFE01, 8, 2, "s8"},
      {"f16.aiff", "f -c:a pcm_s16be", 0xFE02, 16, 2, "s16be"},
      {"f24.aiff", "f -c:a pcm_s24be", 0xFE02, 24, 2, "s24be"},
      {"f32.aiff", "f -c:a pcm_s32be", 0xFE02, 32, 2, "s32be"},
      {"fsowt.aiff", "f -c:a pcm_s16le", 1, 16, 2, "s16le"},
      {"s8.wav", "s -b 8 -e unsigned", 1, 8, 2, "u8"},
      {"s16.wav", "s -b 16", 1, 16, 2, "s16le"},
      {"s24.wav", "s -b 24", 1, 24, 2, "s24le"},
      {"s32.wav", "s -b 32", 1, 32, 2, "s32le"},
      {"sflt.wav", "s -b 32 -e float", 3, 32, 2, "f32le"},
      {"s16.aiff", "s -b 16", 0xFE02, 16, 2, "s16be"},
      {"s24.aifc", "s -b 24", 0xFE02, 24, 2, "s24be"},
      {"n8.wav", "n -pcmu8", 1, 8, 2, "u8"},
      {"n16.wav", "n -pcm16", 1, 16, 2, "s16le"},
      {"n24.wavex", "n -pcm24", 1, 24, 2, "s24le"},
      {"n32.wavex", "n -pcm32", 1, 32, 2, "s32le"},
      {"nflt.wavex", "n -float32", 3, 32, 2, "f32le"},
      {"ndbl.wavex", "n -float64", 3, 64, 2, "f64le"},
      {"n16.w64", "n -pcm16", 1, 16, 2, "s16le"},
      {"n24.w64", "n -pcm24", 1, 24, 2, "s24le"},
      {"nflt.w64", "n -float32", 3, 32, 2, "f32le"},
      {"n8.aif", "n -pcms8", 0xFE01, 8, 2, "s8"},
      {"n16.aif", "n -pcm16", 0xFE02, 16, 2, "s16be"},
      {"n24.aif", "n -pcm24", 0xFE02, 24, 2, "s24be"},
      {"nsowt.aif", "n -endian=little -pcm16", 1, 16, 2, "s16le"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string options = row.tool + 2;
    const std::string out = In(row.name);
    const std::string in = In("source.wav");
    switch (row.tool[0]) {
      case 'f':
        Run("ffmpeg -loglevel error -i " + in + " " + options + " -y " + out);
        break;
      case 's':
        Run("sox -D " + in + " " + options + " " + out);
        break;
      default:
        Run("sndfile-convert " + options + " " + in + " " + out);
    }
    ExpectRead(out, row.tag, row.bits, row.channels, 48000, Decode(out, row.raw));
    const bool isAiff = row.tag >= 0xFE00 || out.find("aif") != std::string::npos;
    const bool isW64 = out.find(".w64") != std::string::npos;
    EXPECT_EQ(ZrFileIsAiff(Wide(out).c_str()), isAiff ? 1 : 0);
    EXPECT_EQ(ZrFileIsWave(Wide(out).c_str(), 0), isAiff || isW64 ? 0 : 1);
    EXPECT_EQ(ZrFileIsWave64(Wide(out).c_str(), 0), isW64 ? 1 : 0);
  }
}

TEST_F(MediaTools, WriteFilesThatWeRefuse) {
  struct Row {
    const char* name;
    const char* command;  ///< Options of ffmpeg, or of sndfile-convert when they begin with a plus.
    int32_t isAnyWave;
  };
  const Row rows[] = {
      {"ima.wav", "-c:a adpcm_ima_wav", 1},
      {"ulaw.wav", "-c:a pcm_mulaw", 1},
      {"alaw.wav", "-c:a pcm_alaw", 1},
      {"rf64.wav", "-c:a pcm_s16le -rf64 always", 0},
      {"flt.aiff", "-c:a pcm_f32be", 0},
      {"ulaw.aiff", "-c:a pcm_mulaw", 0},
      {"a.caf", "-c:a pcm_s16le", 0},
      {"a.au", "-c:a pcm_s16be", 0},
      {"n.rf64", "+-pcm16", 0},
      {"ms.wav", "+-ms-adpcm", 1},
      {"mono.wav", "-c:a adpcm_ms -ac 1", 1},
      {"a.flac", "-c:a flac", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string out = In(row.name);
    if (row.command[0] == '+') {
      Run("sndfile-convert " + std::string(row.command + 1) + " " + In("source.wav") + " " + out);
    } else {
      Run("ffmpeg -loglevel error -i " + In("source.wav") + " " + row.command + " -y " + out);
    }
    EXPECT_FALSE(ReadAll(out).empty());
    int64_t frames = -1;
    EXPECT_EQ(ZrGetFileWfx(Wide(out).c_str(), &frames, nullptr), nullptr);
    EXPECT_EQ(frames, -1);
    EXPECT_EQ(ZrFileIsWave(Wide(out).c_str(), 0), 0);
    EXPECT_EQ(ZrFileIsWave(Wide(out).c_str(), 1), row.isAnyWave);
  }
}

enum class Kind { kWav, kWavJunk, kW64, kW64Junk };

/// Makes a front and streams samples behind it as a recorder does, sizes last.
void WriteOurs(const std::string& path, Kind kind, const WAVEFORMATEX& format, const Bytes& samples) {
  const std::u16string wide = Wide(path);
  const auto bytes = static_cast<uint32_t>(samples.size());
  HRESULT result = S_OK;
  switch (kind) {
    case Kind::kWav:
      result = ZrInitializeWav(wide.c_str(), &format, ZRWAVEFILE_ALWAYS);
      break;
    case Kind::kWavJunk:
      result = ZrInitializeWavWithJunk(wide.c_str(), &format, ZRWAVEFILE_ALWAYS, 4096);
      break;
    case Kind::kW64:
      result = ZrInitializeWav64(wide.c_str(), &format, ZRWAVEFILE_ALWAYS);
      break;
    case Kind::kW64Junk:
      result = ZrInitializeWav64WithJunk(wide.c_str(), &format, ZRWAVEFILE_ALWAYS, 4096);
      break;
  }
  ASSERT_EQ(result, S_OK);
  plat::File* file = plat::OpenFile(wide.c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
  uint64_t dataStart = 0;
  ASSERT_TRUE(plat::SeekFile(file, 0, plat::kSeekEnd, &dataStart));
  if (kind == Kind::kWav || kind == Kind::kWavJunk) {
    EXPECT_TRUE(plat::WriteFile(file, samples.data(), bytes, nullptr));
    EXPECT_EQ(riff_UpdateRIFFSize(file, bytes), S_OK);
    EXPECT_EQ(riff_RestoreLocation(file, static_cast<uint32_t>(dataStart - 8)), S_OK);
    EXPECT_EQ(riff_WriteChunkHeader(file, ZrChunkId("data"), bytes), S_OK);
  } else {
    uint64_t total = 0;
    EXPECT_EQ(riff64_WriteData(file, samples.data(), bytes, &total), S_OK);
    EXPECT_EQ(riff64_UpdateRIFFSize(file, static_cast<int64_t>(total)), S_OK);
    EXPECT_EQ(riff64_RestoreLocation(file, dataStart - 24), S_OK);
    EXPECT_EQ(riff64_WriteChunkHeader(file, &kZrLabelData, bytes), S_OK);
  }
  plat::CloseFile(file);
}

TEST_F(MediaTools, ReadFilesThatWeWrite) {
  struct Row {
    const char* raw;
    const char* codec;
    uint16_t tag;
    uint16_t bits;
    uint16_t channels;
    uint32_t rate;
  };
  const Row rows[] = {
      {"u8", "pcm_u8", 1, 8, 2, 8000},          {"s16le", "pcm_s16le", 1, 16, 1, 44100},
      {"s16le", "pcm_s16le", 1, 16, 2, 48000},  {"s24le", "pcm_s24le", 1, 24, 6, 96000},
      {"s32le", "pcm_s32le", 1, 32, 2, 192000}, {"f32le", "pcm_f32le", 3, 32, 2, 48000},
      {"f64le", "pcm_f64le", 3, 64, 8, 48000},
  };
  for (const Row& row : rows) {
    const Bytes samples = Run("ffmpeg -loglevel error -i " + In("source.wav") + " -ar 48000 -ac " +
                              std::to_string(row.channels) + " -c:a pcm_" + row.raw + " -f " + row.raw + " -");
    const auto align = static_cast<uint16_t>(row.bits / 8 * row.channels);
    ASSERT_EQ(samples.size(), static_cast<size_t>(kFrames * align));
    const WAVEFORMATEX format = {row.tag, row.channels, row.rate, row.rate * align, align, row.bits, 0};
    const struct {
      Kind kind;
      const char* name;
    } kinds[] = {{Kind::kWav, "o.wav"}, {Kind::kWavJunk, "oj.wav"}, {Kind::kW64, "o.w64"}, {Kind::kW64Junk, "oj.w64"}};
    for (const auto& kind : kinds) {
      SCOPED_TRACE(std::string(kind.name) + " " + row.raw);
      const std::string path = In(kind.name);
      WriteOurs(path, kind.kind, format, samples);
      const Bytes facts =
          Run("ffprobe -v error -select_streams a -show_entries stream=codec_name,sample_rate,channels,duration_ts "
              "-of csv=p=0 " +
              path);
      EXPECT_EQ(std::string(facts.begin(), facts.end()), std::string(row.codec) + "," + std::to_string(row.rate) + "," +
                                                             std::to_string(row.channels) + "," +
                                                             std::to_string(kFrames) + "\n");
      EXPECT_EQ(Decode(path, row.raw), samples);
      ExpectRead(path, row.tag, row.bits, row.channels, row.rate, samples);
      const Bytes length = Run("soxi -s " + path);
      EXPECT_EQ(std::string(length.begin(), length.end()), std::to_string(kFrames) + "\n");
    }
  }
}

/// Overwrites the start of a file, as a crash or a bad recorder leaves it.
void Damage(plat::File* file, uint32_t bytes) {
  const std::vector<uint8_t> junk(bytes, 0xDD);
  ASSERT_TRUE(plat::SeekFile(file, 0, plat::kSeekStart, nullptr));
  ASSERT_TRUE(plat::WriteFile(file, junk.data(), bytes, nullptr));
}

TEST_F(MediaTools, ReadFilesThatWeRepair) {
  const Bytes samples = ReadAll(In("source.raw"));
  const WAVEFORMATEX format = {1, 2, 48000, 192000, 4, 16, 0};
  for (const Kind kind : {Kind::kWav, Kind::kWavJunk, Kind::kW64, Kind::kW64Junk}) {
    const bool isWav = kind == Kind::kWav || kind == Kind::kWavJunk;
    const std::string path = In(isWav ? "broken.wav" : "broken.w64");
    WriteOurs(path, kind, format, samples);
    plat::File* file =
        plat::OpenFile(Wide(path).c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
    Damage(file, isWav ? 38 : 82);
    EXPECT_EQ(isWav ? ZrFixTrashedWav(file, &format, 1 << 16) : ZrFixTrashedW64(file, &format, 1 << 16), S_OK);
    plat::CloseFile(file);
    EXPECT_EQ(Decode(path, "s16le"), samples);
  }
}

TEST_F(MediaTools, ReadFilesThatWeEdit) {
  const Bytes samples = ReadAll(In("source.raw"));
  const std::string wav = In("source.wav");
  plat::File* file = plat::OpenFile(Wide(wav).c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
  uint32_t removed = 0;
  EXPECT_EQ(riff_DeleteChunk(file, ZrChunkId("INFO"), &removed, 1), S_OK);
  EXPECT_EQ(riff_FindListChunkFromStart(file, ZrChunkId("INFO"), nullptr), ZR_E_NOT_FOUND);
  plat::CloseFile(file);
  EXPECT_EQ(Decode(wav, "s16le"), samples);

  for (const char* options : {"-c:a pcm_s16be", "-c:a pcm_s16le"}) {
    const std::string aiff = In("edit.aiff");
    Run("ffmpeg -loglevel error -i " + wav + " -metadata title=Edit " + options + " -y " + aiff);
    file = plat::OpenFile(Wide(aiff).c_str(), plat::kReadWriteAccess, plat::kShareRead, plat::kOpenExisting);
    EXPECT_EQ(iff_DeleteChunk(file, ZrIffId("NAME"), &removed), S_OK);
    EXPECT_EQ(iff_FindChunkFromStart(file, ZrIffId("NAME"), nullptr), ZR_E_NOT_FOUND);
    plat::CloseFile(file);
    EXPECT_EQ(Decode(aiff, "s16le"), samples);
    const WAVEFORMATEX faster = {1, 2, 96000, 384000, 4, 16, 0};
    EXPECT_EQ(ZrSetFileWfx(Wide(aiff).c_str(), &faster), S_OK);
    const Bytes facts =
        Run("ffprobe -v error -show_entries stream=sample_rate,channels,duration_ts -of csv=p=0 " + aiff);
    EXPECT_EQ(std::string(facts.begin(), facts.end()), "96000,2," + std::to_string(kFrames) + "\n");
    EXPECT_EQ(Decode(aiff, "s16le"), samples);
  }
}

}  // namespace
