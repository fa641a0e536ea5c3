// SPDX-License-Identifier: Apache-2.0
// Repair of damaged Wave and Wave64 files: which fields are kept, where the samples are found, what is overwritten.
#include <gtest/gtest.h>

#include "marlo110k/wavefile.h"
#include "media/testing/image.h"

using namespace media_testing;

namespace {

/// A front with JUNK, damaged as the test says, then samples.
Image DamagedWav(const Image& format, uint32_t headerBytes, size_t sampleBytes) {
  Image image;
  image.Fill(20, 0xDD).Add(format);  // RIFF header and format header are gone.
  if (headerBytes > 46) image.Text("JUNK").U32(headerBytes - 54).Fill(headerBytes - 54, 0xAA);
  return image.Text("data").U32(0).Ramp(sampleBytes);
}

/// The repaired file.
Image RepairedWav(const Image& format, uint32_t headerBytes, uint32_t dataBytes, const Image& samples) {
  Image image;
  image.Text("RIFF").U32(dataBytes + headerBytes - 8).Text("WAVE").Chunk("fmt ", format);
  if (headerBytes > 46) image.Text("JUNK").U32(headerBytes - 54).Fill(headerBytes - 54);
  return image.Text("data").U32(dataBytes).Add(samples);
}

TEST(FixTrashedWav, RecomputesTheDataSizeInWholeFrames) {
  const Image format = Image().Format(1, 2, 48000, 24);
  for (const uint32_t headerBytes : {46u, 54u, 4096u}) {
    for (const uint32_t sampleBytes : {0u, 5u, 6u, 100u}) {
      const MemoryFile file(DamagedWav(format, headerBytes, sampleBytes));
      file.MoveTo(3);
      EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 1 << 16), S_OK);
      EXPECT_EQ(file.Position(), 3u);
      EXPECT_EQ(file.Bytes(), RepairedWav(format, headerBytes, sampleBytes / 6 * 6, Image().Ramp(sampleBytes)).Bytes());
    }
  }
}

TEST(FixTrashedWav, KeepsWhatItCanBelieve) {
  struct Row {
    const char* name;
    WAVEFORMATEX found;
    WAVEFORMATEX repaired;
  };
  // Without defaults: PCM, stereo, 44,100 Hz, 16 bits. Derived fields and extra bytes are always made new.
  const Row rows[] = {
      {"good", {1, 1, 48000, 1, 1, 24, 7}, {1, 1, 48000, 144000, 3, 24, 0}},
      {"rate 0", {1, 1, 0, 0, 0, 8, 0}, {1, 1, 44100, 44100, 1, 8, 0}},
      {"rate 1999", {1, 1, 1999, 0, 0, 8, 0}, {1, 1, 44100, 44100, 1, 8, 0}},
      {"rate 2000", {1, 1, 2000, 0, 0, 8, 0}, {1, 1, 2000, 2000, 1, 8, 0}},
      {"rate 192000", {1, 1, 192000, 0, 0, 8, 0}, {1, 1, 192000, 192000, 1, 8, 0}},
      {"rate 192001", {1, 1, 192001, 0, 0, 8, 0}, {1, 1, 44100, 44100, 1, 8, 0}},
      {"no channels", {1, 0, 8000, 0, 0, 16, 0}, {1, 2, 8000, 32000, 4, 16, 0}},
      {"3 channels", {1, 3, 8000, 0, 0, 16, 0}, {1, 2, 8000, 32000, 4, 16, 0}},
      {"other tag", {2, 1, 8000, 0, 0, 4, 0}, {1, 1, 8000, 16000, 2, 16, 0}},
      {"extensible tag", {0xFFFE, 1, 8000, 0, 0, 32, 22}, {1, 1, 8000, 32000, 4, 32, 0}},
      {"20 bits", {1, 1, 8000, 0, 0, 20, 0}, {1, 1, 8000, 16000, 2, 16, 0}},
      {"64-bit PCM", {1, 1, 8000, 0, 0, 64, 0}, {1, 1, 8000, 16000, 2, 16, 0}},
      {"float 32", {3, 2, 8000, 0, 0, 32, 0}, {3, 2, 8000, 64000, 8, 32, 0}},
      {"float 64", {3, 2, 8000, 0, 0, 64, 0}, {3, 2, 8000, 128000, 16, 64, 0}},
      {"float 16", {3, 2, 8000, 0, 0, 16, 0}, {3, 2, 8000, 64000, 8, 32, 0}},
  };
  for (const Row& row : rows) {
    const MemoryFile file(DamagedWav(Image().Raw(&row.found, 18), 46, 192));
    EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 1000), S_OK) << row.name;
    EXPECT_EQ(file.Bytes(), RepairedWav(Image().Raw(&row.repaired, 18), 46, 192, Image().Ramp(192)).Bytes())
        << row.name;
  }
}

TEST(FixTrashedWav, TakesTheRestFromTheDefaults) {
  struct Row {
    const char* name;
    WAVEFORMATEX found;
    WAVEFORMATEX defaults;
    WAVEFORMATEX repaired;  // Tag 0: refused.
  };
  const Row rows[] = {
      {"all", {9, 9, 9, 9, 9, 9, 9}, {3, 6, 96000, 1, 1, 64, 0}, {3, 6, 96000, 96000 * 48, 48, 64, 0}},
      {"bits held to 32", {9, 1, 8000, 0, 0, 9, 0}, {1, 1, 8000, 0, 0, 64, 0}, {1, 1, 8000, 32000, 4, 32, 0}},
      {"float with small defaults", {3, 1, 8000, 0, 0, 9, 0}, {1, 1, 1, 0, 0, 32, 0}, {3, 1, 8000, 32000, 4, 32, 0}},
      {"float with large defaults", {3, 1, 8000, 0, 0, 9, 0}, {1, 1, 1, 0, 0, 33, 0}, {3, 1, 8000, 64000, 8, 64, 0}},
      {"20-bit defaults", {1, 1, 8000, 0, 0, 9, 0}, {1, 1, 8000, 0, 0, 20, 0}, {}},
      {"defaults of no bits", {1, 1, 8000, 0, 0, 9, 0}, {1, 1, 8000, 0, 0, 0, 0}, {}},
      {"defaults of no channels", {1, 9, 8000, 0, 0, 16, 0}, {1, 0, 8000, 0, 0, 16, 0}, {}},
  };
  for (const Row& row : rows) {
    const Image image = DamagedWav(Image().Raw(&row.found, 18), 46, 192);
    const MemoryFile file(image);
    const bool refused = row.repaired.wFormatTag == 0;
    EXPECT_EQ(ZrFixTrashedWav(file, &row.defaults, 1000), refused ? ZR_E_UNSUPPORTED_MEDIA : S_OK) << row.name;
    EXPECT_EQ(file.Bytes(),
              refused ? image.Bytes() : RepairedWav(Image().Raw(&row.repaired, 18), 46, 192, Image().Ramp(192)).Bytes())
        << row.name;
  }
  _zrwaveformat format = {};
  format.Init(8000, ZRSAMPLETYPE_PCM8, 1, 0, sizeof format);
  const MemoryFile file(DamagedWav(Image().Fill(18), 46, 4));
  EXPECT_EQ(ZrFixTrashedWav(file, &format, 1000), S_OK);
  EXPECT_EQ(file.Bytes(), RepairedWav(Image().Format(1, 1, 8000, 8), 46, 4, Image().Ramp(4)).Bytes());
  EXPECT_EQ(ZrFixTrashedWav(file, static_cast<const _zrwaveformat*>(nullptr), 1000), S_OK);
}

TEST(FixTrashedWav, ScansBytesWhereTheChunksAreGone) {
  const Image format = Image().Format(1, 2, 44100, 16);
  // The label at every place around the block border: blocks begin at 38 and at 38 + 4092.
  for (const size_t label : {38u, 40u, 1000u, 4126u, 4128u, 4130u, 4132u, 4134u, 4136u, 8222u, 8224u, 8226u}) {
    Image image;
    image.Fill(20, 0xDD).Add(format).Fill(label - 38, 0xDD).Text("data").U32(5).Ramp(40);
    const MemoryFile file(image);
    const auto start = static_cast<uint32_t>(label + 8);
    const HRESULT expected = start == 48 ? ZR_E_BAD_STREAM : S_OK;
    EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 1 << 16), expected) << label;
    EXPECT_EQ(file.Bytes(), FAILED(expected) ? image.Bytes() : RepairedWav(format, start, 40, Image().Ramp(40)).Bytes())
        << label;
  }
}

TEST(FixTrashedWav, RefusesPlacesThatNoFrontFits) {
  const Image format = Image().Format(1, 2, 44100, 16);
  for (const size_t gap : {1u, 2u, 3u, 5u, 6u, 7u, 9u}) {  // The samples begin at 46 + gap.
    Image image;
    image.Fill(20, 0xDD).Add(format).Fill(gap, 0xDD).Text("data").U32(0).Ramp(40);
    const MemoryFile file(image);
    EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 1000), ZR_E_BAD_STREAM) << gap;
    EXPECT_EQ(file.Bytes(), image.Bytes()) << gap;
  }
}

TEST(FixTrashedWav, OverwritesUpToTheLimitWhenThereIsNoData) {
  const Image format = Image().Format(1, 2, 44100, 16);
  Image image;
  image.Fill(20, 0xDD).Add(format).Fill(10000 - 38, 0xDD);
  const auto expected = [&](uint32_t limit) {
    return RepairedWav(format, limit, (10000 - limit) / 4 * 4, Image().Fill(10000 - limit, 0xDD)).Bytes();
  };
  for (const uint32_t limit : {54u, 100u, 4096u, 4134u, 9000u, 10000u}) {
    const MemoryFile file(image);
    EXPECT_EQ(ZrFixTrashedWav(file, nullptr, limit), S_OK) << limit;
    EXPECT_EQ(file.Bytes(), expected(limit)) << limit;
  }
  const MemoryFile whole(image);
  EXPECT_EQ(ZrFixTrashedWav(whole, nullptr, 0xFFFFFFFF), S_OK) << "held to the file";
  EXPECT_EQ(whole.Bytes(), expected(10000));
  for (const uint32_t limit : {0u, 45u, 53u, 4095u}) {
    const MemoryFile file(image);
    EXPECT_EQ(ZrFixTrashedWav(file, nullptr, limit), ZR_E_BAD_STREAM) << limit;
    EXPECT_EQ(file.Bytes(), image.Bytes()) << limit;
  }
}

TEST(FixTrashedWav, NeverDestroysAFileWithAShortFormatChunk) {
  // As most programs write it: 44 bytes, then samples.
  Image image;
  image.Text("RIFF").U32(36 + 5000).Text("WAVE").Text("fmt ").U32(16);
  image.U16(1).U16(2).U32(44100).U32(176400).U16(4).U16(16).Text("data").U32(5000).Ramp(5000);
  const MemoryFile file(image);
  EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 1 << 16), ZR_E_BAD_STREAM);
  EXPECT_EQ(file.Bytes(), image.Bytes());

  // With a chunk between there is room for the new front.
  Image roomy;
  roomy.Raw(image.Data(), 36).Chunk("LIST", Image().Text("INFO").Fill(10)).Raw(image.Data() + 36, 5008);
  const MemoryFile second(roomy);
  EXPECT_EQ(ZrFixTrashedWav(second, nullptr, 1 << 16), S_OK);
  EXPECT_EQ(second.Bytes(), RepairedWav(Image().Format(1, 2, 44100, 16), 66, 5000, Image().Ramp(5000)).Bytes());

  // 16 without chunks from there on is a damaged front like any other.
  Image damaged = DamagedWav(Image().Format(1, 2, 44100, 16), 54, 8);
  damaged[16] = 16;
  damaged[17] = damaged[18] = damaged[19] = 0;
  const MemoryFile third(damaged);
  EXPECT_EQ(ZrFixTrashedWav(third, nullptr, 1 << 16), S_OK);
  EXPECT_EQ(third.Bytes(), RepairedWav(Image().Format(1, 2, 44100, 16), 54, 8, Image().Ramp(8)).Bytes());
}

TEST(FixTrashedWav, AtEveryTruncationFailsOrGivesAWholeFront) {
  const Image whole = DamagedWav(Image().Format(1, 2, 44100, 16), 60, 20);
  for (size_t length = 0; length <= whole.Size(); ++length) {
    const MemoryFile file(Image().Raw(whole.Data(), length));
    const HRESULT result = ZrFixTrashedWav(file, nullptr, 1 << 16);
    if (length < 38) {
      EXPECT_EQ(result, ZR_E_FILE_READ) << length;
    }
    if (FAILED(result)) {
      EXPECT_EQ(file.Bytes(), Image().Raw(whole.Data(), length).Bytes()) << length;
      continue;
    }
    // The label is enough: its size is written new, even where the file ended before it.
    const size_t start = length >= 56 ? 60 : length;
    EXPECT_EQ(file.Length(), std::max(length, start)) << length;
    EXPECT_EQ(std::memcmp(file.Bytes().data() + start - 8, "data", 4), 0) << length;
  }
}

TEST(FixTrashedWav, DoesNotReadBehindTheLimit) {
  // A sparse file of 10 GiB: the scan must end with the limit, and the front can tell of 4 GiB at most.
  const DiskFile disk(Image().Fill(20).Add(Image().Format(1, 2, 44100, 16)));
  plat::File* file = disk.Open();
  ASSERT_TRUE(plat::SeekFile(file, 10ll << 30, plat::kSeekStart, nullptr));
  ASSERT_TRUE(plat::SetEndOfFile(file));
  EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 4096), S_OK);
  ASSERT_TRUE(plat::SeekFile(file, 0, plat::kSeekStart, nullptr));
  uint32_t words[3];
  EXPECT_TRUE(plat::ReadFile(file, words, sizeof words, nullptr));
  EXPECT_EQ(words[1], 0xFFFFFFFFu / 4 * 4 - 8) << "data of whole frames to 4 GiB, and 4096 - 8";
  plat::CloseFile(file);
}

// ---- Wave64 ----------------------------------------------------------------------------------------

Image DamagedW64(const Image& format, size_t headerBytes, size_t sampleBytes) {
  Image image;
  image.Fill(64, 0xDD).Add(format).Fill(6, 0xDD);
  if (headerBytes > 112) image.Add(JunkLabel()).U64(headerBytes - 112).Fill(headerBytes - 136, 0xAA);
  return image.Add(AudioLabel("data")).U64(24).Ramp(sampleBytes);
}

Image RepairedW64(const Image& format, size_t headerBytes, uint64_t dataBytes, const Image& samples) {
  Image image;
  image.Add(RiffLabel()).U64(dataBytes + headerBytes).Add(AudioLabel("wave"));
  image.Add(AudioLabel("fmt ")).U64(42).Add(format).Fill(6);
  if (headerBytes > 112) image.Add(JunkLabel()).U64(headerBytes - 112).Fill(headerBytes - 136);
  return image.Add(AudioLabel("data")).U64(dataBytes + 24).Add(samples);
}

TEST(FixTrashedW64, FollowsTheSameStepsInEights) {
  const Image format = Image().Format(3, 2, 96000, 32);
  for (const size_t headerBytes : {112u, 136u, 4096u}) {
    const MemoryFile file(DamagedW64(format, headerBytes, 37));
    file.MoveTo(3);
    EXPECT_EQ(ZrFixTrashedW64(file, nullptr, 1 << 16), S_OK);
    EXPECT_EQ(file.Position(), 3u);
    EXPECT_EQ(file.Bytes(), RepairedW64(format, headerBytes, 32, Image().Ramp(37)).Bytes()) << headerBytes;
  }
  // Without chunks: the label across the block border, which is at 88 + 4096, and at places that no front fits.
  for (const size_t label : {112u, 120u, 4080u, 4160u, 4168u, 4176u, 4184u, 4192u, 90u, 96u, 4170u}) {
    Image image;
    image.Fill(64, 0xDD).Add(format).Fill(label - 82, 0xDD).Add(AudioLabel("data")).U64(24).Ramp(32);
    const MemoryFile file(image);
    const bool fits = label % 8 == 0 && label >= 112;
    EXPECT_EQ(ZrFixTrashedW64(file, nullptr, 1 << 16), fits ? S_OK : ZR_E_BAD_STREAM) << label;
    EXPECT_EQ(file.Bytes(), fits ? RepairedW64(format, label + 24, 32, Image().Ramp(32)).Bytes() : image.Bytes())
        << label;
  }
  Image image;
  image.Fill(64, 0xDD).Add(format).Fill(5000 - 82, 0xDD);
  const MemoryFile file(image);
  EXPECT_EQ(ZrFixTrashedW64(file, nullptr, 1007), S_OK) << "the limit is rounded down to 1000";
  EXPECT_EQ(file.Bytes(), RepairedW64(format, 1000, 4000, Image().Fill(4000, 0xDD)).Bytes());
  const MemoryFile tooShort(Image().Fill(81));
  EXPECT_EQ(ZrFixTrashedW64(tooShort, nullptr, 1000), ZR_E_FILE_READ);
  _zrwaveformat zr = {};
  zr.Init(8000, ZRSAMPLETYPE_PCM8, 1, 0, sizeof zr);
  const MemoryFile defaults(DamagedW64(Image().Fill(18), 112, 4));
  EXPECT_EQ(ZrFixTrashedW64(defaults, &zr, 1000), S_OK);
  EXPECT_EQ(defaults.Bytes(), RepairedW64(Image().Format(1, 1, 8000, 8), 112, 4, Image().Ramp(4)).Bytes());
}

}  // namespace
