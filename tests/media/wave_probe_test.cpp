// SPDX-License-Identifier: Apache-2.0
// Reading and changing the format of Wave, Wave64 and AIFF files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>

#include "marlo110k/iff.h"
#include "marlo110k/wavefile.h"
#include "media/testing/image.h"

using namespace media_testing;

namespace {

struct Probe {
  WAVEFORMATEX format;
  int64_t frames;
  int64_t dataOffset;
};

std::optional<Probe> Get(const DiskFile& file) {
  Probe probe = {{}, -77, -78};
  const std::unique_ptr<WAVEFORMATEX, decltype(&std::free)> format(
      ZrGetFileWfx(file.Path(), &probe.frames, &probe.dataOffset), &std::free);
  if (format == nullptr) {
    EXPECT_EQ(probe.frames, -77) << "left as it was";
    EXPECT_EQ(probe.dataOffset, -78);
    return std::nullopt;
  }
  probe.format = *format;
  return probe;
}

std::optional<Probe> Get(const Image& image) { return Get(DiskFile(image)); }

Image Wav(const Image& format, const Image& data) {
  const Image chunks = Image().Chunk("fmt ", format).Chunk("data", data);
  return Image().Text("RIFF").U32(static_cast<uint32_t>(chunks.Size() + 4)).Text("WAVE").Add(chunks);
}

Image W64(const Image& format, const Image& data) {
  Image chunks = Chunk64(AudioLabel("fmt "), format);
  chunks.Add(Chunk64(AudioLabel("data"), data));
  return Image().Add(RiffLabel()).U64(chunks.Size() + 40).Add(AudioLabel("wave")).Add(chunks);
}

TEST(GetFileWfx, ReadsWhatTheInitializeCallsWrite) {
  const WAVEFORMATEX formats[] = {{1, 1, 8000, 8000, 1, 8, 0},      {1, 2, 44100, 176400, 4, 16, 0},
                                  {1, 6, 48000, 864000, 18, 24, 0}, {1, 2, 192000, 1536000, 8, 32, 0},
                                  {3, 2, 96000, 768000, 8, 32, 0},  {3, 1, 96000, 768000, 8, 64, 0}};
  const DiskFile file;
  for (const WAVEFORMATEX& format : formats) {
    struct Row {
      HRESULT result;
      int64_t offset;
    };
    const auto check = [&](HRESULT result, int64_t offset) {
      EXPECT_EQ(result, S_OK);
      const auto probe = Get(file);
      ASSERT_TRUE(probe.has_value());
      EXPECT_EQ(std::memcmp(&probe->format, &format, sizeof format), 0);
      EXPECT_EQ(probe->frames, 0);
      EXPECT_EQ(probe->dataOffset, offset);
    };
    check(ZrInitializeWav(file.Path(), &format, ZRWAVEFILE_ALWAYS), 46);
    check(ZrInitializeWavWithJunk(file.Path(), &format, ZRWAVEFILE_ALWAYS, 4096), 4096);
    check(ZrInitializeWav64(file.Path(), &format, ZRWAVEFILE_ALWAYS), 112);
    check(ZrInitializeWav64WithJunk(file.Path(), &format, ZRWAVEFILE_ALWAYS, 4096), 4096);
  }
}

TEST(GetFileWfx, MendsPcm) {
  struct Row {
    const char* name;
    Image format;
    uint16_t bits;
    uint16_t blockAlign;
    int64_t frames;  // Of 24 bytes; -1 for no result.
  };
  const Row rows[] = {
      {"20 bits in 3 bytes", Image().U16(1).U16(2).U32(44100).U32(0).U16(6).U16(20).U16(0), 24, 6, 4},
      {"block align wrong", Image().U16(1).U16(2).U32(44100).U32(0).U16(9).U16(16).U16(0), 16, 4, 6},
      {"12 bits", Image().U16(1).U16(2).U32(44100).U32(0).U16(4).U16(12).U16(0), 12, 2, 12},
      {"16-byte format", Image().U16(1).U16(1).U32(44100).U32(0).U16(2).U16(16), 16, 2, 12},
      {"2-byte format", Image().U16(1), 0, 0, -1},
      {"no channels", Image().Format(1, 0, 44100, 16), 0, 0, -1},
      {"no bits", Image().Format(1, 2, 44100, 0), 0, 0, -1},
      {"float", Image().Format(3, 2, 44100, 32), 32, 8, 3},
      {"float, block align wrong", Image().U16(3).U16(2).U32(44100).U32(0).U16(9).U16(32).U16(0), 0, 0, -1},
      {"compressed", Image().Format(0x55, 2, 44100, 0, 12).Fill(12), 0, 0, -1},
      {"empty", Image(), 0, 0, -1},
  };
  for (const Row& row : rows) {
    for (const bool isW64 : {false, true}) {
      const auto probe = Get(isW64 ? W64(row.format, Image().Ramp(24)) : Wav(row.format, Image().Ramp(24)));
      ASSERT_EQ(probe.has_value(), row.frames >= 0) << row.name;
      if (!probe) continue;
      EXPECT_EQ(+probe->format.wBitsPerSample, row.bits) << row.name;
      EXPECT_EQ(+probe->format.nBlockAlign, row.blockAlign) << row.name;
      EXPECT_EQ(probe->frames, row.frames) << row.name;
    }
  }
}

Image Extensible(uint16_t subTag) {
  Image image = Image().Format(0xFFFE, 2, 44100, 16, 22).U16(16).U32(3).U16(subTag);
  return image.Raw({0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71});
}

TEST(GetFileWfx, KeepsExtraBytesThatAreThere) {
  const DiskFile file(Wav(Extensible(1), Image().Ramp(16)));
  int64_t frames = 0;
  int64_t offset = 0;
  WAVEFORMATEX* format = ZrGetFileWfx(file.Path(), &frames, &offset);
  ASSERT_NE(format, nullptr);
  EXPECT_EQ(std::memcmp(format, Extensible(1).Data(), 40), 0);
  EXPECT_EQ(frames, 4);
  EXPECT_EQ(offset, 12 + 48 + 8);
  std::free(format);
  format = ZrGetFileWfx(file.Path(), nullptr, nullptr);
  EXPECT_NE(format, nullptr);
  std::free(format);
  EXPECT_FALSE(Get(Wav(Extensible(0x55), Image().Ramp(16))).has_value()) << "compressed inside";

  // A count of extra bytes that the chunk doesn't hold: the sub-format is missing, and nothing is read behind.
  EXPECT_FALSE(Get(Wav(Image().Format(0xFFFE, 2, 44100, 16, 22), Image().Ramp(16))).has_value());
  file.Write(Wav(Image().Format(1, 2, 44100, 16, 0xFFFF).Fill(3), Image().Ramp(16)));
  format = ZrGetFileWfx(file.Path(), nullptr, nullptr);
  ASSERT_NE(format, nullptr);
  EXPECT_EQ(+format->cbSize, 3);
  std::free(format);
}

TEST(GetFileWfx, TakesLongFormatChunks) {
  const auto format = [](size_t bytes) { return Image().Format(1, 2, 44100, 16).Fill(bytes - 18); };
  EXPECT_TRUE(Get(W64(format(4096), Image().Ramp(16))).has_value());
  EXPECT_FALSE(Get(W64(format(4097), Image().Ramp(16))).has_value());
  EXPECT_TRUE(Get(Wav(format(4097), Image().Ramp(16))).has_value());
  const auto probe = Get(Wav(format(100001), Image().Ramp(16)));
  ASSERT_TRUE(probe.has_value()) << "longer than any format";
  EXPECT_EQ(probe->dataOffset, 12 + 8 + 100002 + 8);
  EXPECT_EQ(probe->frames, 4);
}

TEST(GetFileWfx, DeclaredSizesAreTakenAsTheyStandAndCostNothing) {
  const auto head = [](uint32_t fmt) { return Image().Text("RIFF").U32(100).Text("WAVE").Text("fmt ").U32(fmt); };
  for (const uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 19u}) {
    EXPECT_FALSE(Get(head(size).Add(Image().Format(1, 2, 44100, 16)))) << size;
  }
  const auto streamed = Get(head(18).Add(Image().Format(1, 2, 44100, 16)).Text("data").U32(0xFFFFFFFF).Fill(8));
  ASSERT_TRUE(streamed.has_value());
  EXPECT_EQ(streamed->frames, 0xFFFFFFFF / 4);
  Image w64 = W64(Image().Format(1, 2, 44100, 16), {});
  for (int i = 0; i < 8; ++i) w64[104 + static_cast<size_t>(i)] = i < 7 ? 0xFF : 0x7F;  // The data field: 2^63 - 1.
  const auto large = Get(w64);
  ASSERT_TRUE(large.has_value());
  EXPECT_EQ(large->frames, (INT64_MAX - 24) / 4);
}

TEST(GetFileWfx, TruncatedAnywhereGivesAFormatOnlyWithADataHeader) {
  const Image wav = Wav(Image().Format(1, 2, 44100, 16), Image().Ramp(4));
  for (size_t length = 0; length <= wav.Size(); ++length) {
    EXPECT_EQ(Get(Image().Raw(wav.Data(), length)).has_value(), length >= 46) << length;
  }
  const Image w64 = W64(Image().Format(1, 2, 44100, 16), Image().Ramp(4));
  for (size_t length = 0; length <= w64.Size(); ++length) {
    EXPECT_EQ(Get(Image().Raw(w64.Data(), length)).has_value(), length >= 112) << length;
  }
}

TEST(FileIs, AnswersByKindAndCompression) {
  struct Row {
    const char* name;
    Image image;
    int32_t wave, waveAny, w64, w64Any, aiff;
  };
  const Image pcm = Image().Format(1, 2, 44100, 16);
  const Image mp3 = Image().Format(0x55, 2, 44100, 0, 12).Fill(12);
  const Image bits20 = Image().U16(1).U16(2).U32(44100).U32(264600).U16(6).U16(20).U16(0);
  const Image noData = Image().Text("RIFF").U32(30).Text("WAVE").Chunk("fmt ", pcm);
  const Image rifx = Image().Text("RIFX").U32(30).Text("WAVE").Chunk("fmt ", pcm);
  const Image avi = Image().Text("RIFF").U32(30).Text("AVI ").Chunk("fmt ", pcm);
  const Image cut = Image().Text("RIFF").U32(30).Text("WAVE").Text("fmt ").U32(18).Fill(17);
  const Image aiff = Image().Text("FORM").Be(4, 4).Text("AIFF");
  Image w64Short;
  w64Short.Add(RiffLabel()).U64(100).Add(AudioLabel("wave")).Add(Chunk64(AudioLabel("fmt "), pcm));
  Image w64Cut;
  w64Cut.Add(RiffLabel()).U64(100).Add(AudioLabel("wave")).Add(AudioLabel("fmt ")).U64(42).Fill(17);
  Image w64Other;
  w64Other.Add(RiffLabel()).U64(100).Add(AudioLabel("fmt ")).Add(Chunk64(AudioLabel("fmt "), pcm));
  const Row rows[] = {
      {"wave", Wav(pcm, {}), 1, 1, 0, 0, 0},
      {"wave without data", noData, 1, 1, 0, 0, 0},
      {"compressed", Wav(mp3, {}), 0, 1, 0, 0, 0},
      {"20 bits count as compressed here", Wav(bits20, {}), 0, 1, 0, 0, 0},
      {"other id", rifx, 0, 0, 0, 0, 0},
      {"other form", avi, 0, 0, 0, 0, 0},
      {"cut off", cut, 0, 0, 0, 0, 0},
      {"wave64", W64(pcm, {}), 0, 0, 1, 1, 0},
      {"wave64 without data", w64Short, 0, 0, 1, 1, 0},
      {"wave64 compressed", W64(mp3, {}), 0, 0, 0, 1, 0},
      {"wave64 cut off", w64Cut, 0, 0, 0, 0, 0},
      {"wave64 of another form", w64Other, 0, 0, 0, 0, 0},
      {"aiff", aiff, 0, 0, 0, 0, 1},
      {"empty", Image(), 0, 0, 0, 0, 0},
  };
  for (const Row& row : rows) {
    const DiskFile file(row.image);
    EXPECT_EQ(ZrFileIsWave(file.Path(), 0), row.wave) << row.name;
    EXPECT_EQ(ZrFileIsWave(file.Path(), 1), row.waveAny) << row.name;
    EXPECT_EQ(ZrFileIsWave64(file.Path(), 0), row.w64) << row.name;
    EXPECT_EQ(ZrFileIsWave64(file.Path(), 1), row.w64Any) << row.name;
    EXPECT_EQ(ZrFileIsAiff(file.Path()), row.aiff) << row.name;
  }
  EXPECT_EQ(ZrFileIsWave(u"/nonexistent", 1), 0);
  EXPECT_EQ(ZrFileIsWave64(nullptr, 1), 0);
  EXPECT_EQ(ZrFileIsAiff(u"/nonexistent"), 0);
  EXPECT_EQ(ZrGetFileWfx(u"/nonexistent", nullptr, nullptr), nullptr);
}

TEST(SetFileWfx, ReplacesTheFormatInPlace) {
  const WAVEFORMATEX format = {3, 1, 96000, 384000, 4, 32, 0};
  const DiskFile file(Wav(Image().Format(1, 2, 44100, 16), Image().Ramp(16)));
  EXPECT_EQ(ZrSetFileWfx(file.Path(), &format), S_OK);
  EXPECT_EQ(file.Bytes(), Wav(Image().Format(3, 1, 96000, 32), Image().Ramp(16)).Bytes());

  // The extra bytes of a longer chunk stay and aren't counted any more; those of the argument aren't written.
  Image expected = Wav(Extensible(1), Image().Ramp(16));
  file.Write(expected);
  WAVEFORMATEX extra = format;
  extra.cbSize = 5;
  EXPECT_EQ(ZrSetFileWfx(file.Path(), &extra), S_OK);
  std::memcpy(&expected[20], Image().Format(3, 1, 96000, 32).Data(), 18);
  EXPECT_EQ(file.Bytes(), expected.Bytes());

  _zrwaveformat zr = {};
  zr.Init(8000, ZRSAMPLETYPE_PCM24, 2, 0, sizeof zr);
  EXPECT_EQ(ZrSetFileWfx(file.Path(), &zr), S_OK);
  std::memcpy(&expected[20], Image().Format(1, 2, 8000, 24).Data(), 18);
  EXPECT_EQ(file.Bytes(), expected.Bytes());
}

Image Aiff(uint16_t channels, uint32_t frames, uint16_t bits, std::initializer_list<uint8_t> rate, bool isAifc) {
  Image common = Image().Be(channels, 2).Be(frames, 4).Be(bits, 2).Raw(rate);
  if (isAifc) common.Text("sowt").Fill(2);
  Image image = Image().Text("FORM").Be(1000, 4).Text(isAifc ? "AIFC" : "AIFF");
  image.Text("COMM").Be(common.Size(), 4).Add(common);
  return image.Text("SSND").Be(8 + 32, 4).Fill(8).Ramp(32);
}

TEST(SetFileWfx, RewritesTheCommonChunkOfAnAiff) {
  const WAVEFORMATEX format = {1, 1, 96000, 192000, 2, 16, 0};
  for (const bool isAifc : {false, true}) {
    // A frame count that is more than there is stays too: the file isn't cut to what it holds now.
    const DiskFile file(Aiff(2, 1000, 16, {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}, isAifc));
    EXPECT_EQ(ZrSetFileWfx(file.Path(), &format), S_OK);
    EXPECT_EQ(file.Bytes(), Aiff(1, 1000, 16, {0x40, 0x0F, 0xBB, 0x80, 0, 0, 0, 0, 0, 0}, isAifc).Bytes());
  }
}

TEST(SetFileWfx, FailsInOrderAndLeavesTheFile) {
  const WAVEFORMATEX pcm = {1, 1, 96000, 192000, 2, 16, 0};
  const WAVEFORMATEX bits20 = {1, 1, 96000, 288000, 3, 20, 0};
  const WAVEFORMATEX flt = {3, 1, 96000, 384000, 4, 32, 0};
  Image shortCommon = Image().Text("FORM").Be(1000, 4).Text("AIFF").Text("COMM").Be(16, 4);
  shortCommon.Be(2, 2).Be(1, 4).Be(16, 2).Raw({0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0}).Text("SSND").Be(8, 4).Fill(8);
  struct Row {
    const char* name;
    Image image;
    const WAVEFORMATEX* format;
    HRESULT result;
  };
  const Row rows[] = {
      {"null", Wav(Image().Format(1, 2, 44100, 16), {}), nullptr, E_INVALIDARG},
      {"20 bits", Wav(Image().Format(1, 2, 44100, 16), {}), &bits20, ZR_E_UNSUPPORTED_MEDIA},
      {"16-byte format chunk", Wav(Image().U16(1).U16(2).U32(44100).U32(176400).U16(4).U16(16), {}), &pcm,
       ZR_E_BAD_STREAM},
      {"compressed", Wav(Image().Format(0x55, 2, 44100, 0), {}), &pcm, ZR_E_UNKNOWN_FORMAT},
      {"wave64", W64(Image().Format(1, 2, 44100, 16), {}), &pcm, ZR_E_UNKNOWN_FORMAT},
      {"empty", Image(), &pcm, ZR_E_UNKNOWN_FORMAT},
      {"float into AIFF", Aiff(2, 1, 16, {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}, false), &flt,
       ZR_E_UNSUPPORTED_FILE},
      {"16-byte common chunk", shortCommon, &pcm, ZR_E_BAD_STREAM},
  };
  for (const Row& row : rows) {
    const DiskFile file(row.image);
    EXPECT_EQ(ZrSetFileWfx(file.Path(), row.format), row.result) << row.name;
    EXPECT_EQ(file.Bytes(), row.image.Bytes()) << row.name;
  }
  EXPECT_EQ(ZrSetFileWfx(u"/nonexistent", &pcm), ZR_E_FILE_OPEN);
  EXPECT_EQ(ZrSetFileWfx(u"/nonexistent", static_cast<const _zrwaveformat*>(nullptr)), E_INVALIDARG);
}

}  // namespace
