// SPDX-License-Identifier: Apache-2.0
// Fronts of new Wave and Wave64 files, and fronts put over existing ones.
#include <gtest/gtest.h>

#include "marlo110k/wavefile.h"
#include "media/testing/image.h"

using namespace media_testing;

namespace {

const WAVEFORMATEX kCd = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};

Image CdFormat() { return Image().Format(1, 2, 44100, 16); }

/// A Wave front as its table says; the junk is zeros.
Image WavFront(uint32_t headerBytes, uint32_t dataBytes) {
  Image image;
  image.Text("RIFF").U32(dataBytes + headerBytes - 8).Text("WAVE").Chunk("fmt ", CdFormat());
  if (headerBytes > 46) image.Text("JUNK").U32(headerBytes - 54).Fill(headerBytes - 54);
  return image.Text("data").U32(dataBytes);
}

Image W64Front(uint64_t headerBytes, uint64_t dataBytes) {
  Image image;
  image.Add(RiffLabel()).U64(dataBytes + headerBytes).Add(AudioLabel("wave"));
  image.Add(AudioLabel("fmt ")).U64(42).Add(CdFormat()).Fill(6);
  if (headerBytes > 112) image.Add(JunkLabel()).U64(headerBytes - 112).Fill(headerBytes - 136);
  return image.Add(AudioLabel("data")).U64(dataBytes + 24);
}

TEST(InitializeWav, WritesTheTable) {
  const DiskFile file(Image().Fill(500, 9));
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_ALWAYS), S_OK);
  EXPECT_EQ(file.Bytes(), WavFront(46, 0).Bytes());
  EXPECT_EQ(ZrInitializeWav64(file.Path(), &kCd, ZRWAVEFILE_ALWAYS), S_OK);
  EXPECT_EQ(file.Bytes(), W64Front(112, 0).Bytes());

  _zrwaveformat format = {};
  format.Init(sizeof format, &kCd);
  EXPECT_EQ(ZrInitializeWav(file.Path(), &format, ZRWAVEFILE_ALWAYS), S_OK);
  EXPECT_EQ(file.Bytes(), WavFront(46, 0).Bytes());
  EXPECT_EQ(ZrInitializeWav64(file.Path(), &format, ZRWAVEFILE_ALWAYS), S_OK);
  EXPECT_EQ(file.Bytes(), W64Front(112, 0).Bytes());
  // Six channels are extensible by nature, and plain here.
  format.Init(48000, ZRSAMPLETYPE_PCM16, 6, 0x3F, sizeof format);
  EXPECT_EQ(ZrInitializeWav(file.Path(), &format, ZRWAVEFILE_ALWAYS), S_OK);
  EXPECT_EQ(file.Bytes().size(), 46u);
  EXPECT_EQ(file.Bytes()[20], 1) << "tag";
}

TEST(InitializeWavWithJunk, PutsTheSamplesWhereItIsTold) {
  const DiskFile file;
  struct Row {
    uint32_t headerSize;
    uint32_t made;  // 0: refused.
  };
  for (const Row& row : {Row{0, 0}, {46, 0}, {52, 0}, {53, 54}, {54, 54}, {55, 56}, {4096, 4096}, {5000, 5000}}) {
    const HRESULT result = ZrInitializeWavWithJunk(file.Path(), &kCd, ZRWAVEFILE_ALWAYS, row.headerSize);
    EXPECT_EQ(result, row.made == 0 ? E_INVALIDARG : S_OK) << row.headerSize;
    EXPECT_EQ(file.Bytes(), row.made == 0 ? Image().Bytes() : WavFront(row.made, 0).Bytes()) << row.headerSize;
  }
  EXPECT_EQ(ZrInitializeWavWithJunk(file.Path(), &kCd, ZRWAVEFILE_ALWAYS, 0xFFFFFFFF), E_INVALIDARG) << "wraps to 0";
}

TEST(InitializeWav64WithJunk, PutsTheSamplesWhereItIsTold) {
  const DiskFile file;
  struct Row {
    int64_t headerSize;
    uint64_t made;
  };
  const Row rows[] = {{INT64_MIN, 0}, {-8, 0},    {112, 0},     {128, 0},     {129, 136},
                      {136, 136},     {137, 144}, {1160, 1160}, {1161, 1168}, {4096, 4096}};
  for (const Row& row : rows) {
    const HRESULT result = ZrInitializeWav64WithJunk(file.Path(), &kCd, ZRWAVEFILE_ALWAYS, row.headerSize);
    EXPECT_EQ(result, row.made == 0 ? E_INVALIDARG : S_OK) << row.headerSize;
    EXPECT_EQ(file.Bytes(), row.made == 0 ? Image().Bytes() : W64Front(row.made, 0).Bytes()) << row.headerSize;
  }
}

TEST(Initialize, MapsTheModes) {
  const DiskFile file(Image().Fill(100));
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_NEW), ZR_E_FILE_OPEN) << "it exists";
  EXPECT_EQ(file.Bytes().size(), 100u);
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_TRUNCATE), S_OK);
  EXPECT_EQ(file.Bytes().size(), 46u) << "3 empties: not the disposition 3, which keeps the old bytes";
  file.Write(Image().Fill(100));
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_REPLACE), S_OK);
  EXPECT_EQ(file.Bytes().size(), 46u);
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, 99), ZR_E_FILE_OPEN);
  file.Remove();
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_TRUNCATE), ZR_E_FILE_OPEN);
  EXPECT_EQ(ZrInitializeWav(file.Path(), &kCd, ZRWAVEFILE_NEW), S_OK);
  EXPECT_EQ(ZrInitializeWav(u"/nonexistent/folder/file.wav", &kCd, ZRWAVEFILE_ALWAYS), ZR_E_FILE_OPEN);
  EXPECT_EQ(ZrInitializeWav(nullptr, &kCd, ZRWAVEFILE_ALWAYS), ZR_E_FILE_OPEN);
}

TEST(FrontFormat, IsCheckedBeforeTheFileIsTouched) {
  struct Row {
    const char* name;
    WAVEFORMATEX format;
    HRESULT result;
  };
  const Row rows[] = {
      {"20-bit PCM in 3 bytes", {1, 1, 44100, 132300, 3, 20, 0}, ZR_E_UNSUPPORTED_MEDIA},
      {"20-bit PCM in 2 bytes", {1, 1, 44100, 88200, 2, 20, 0}, ZR_E_UNSUPPORTED_MEDIA},
      {"wrong block align", {1, 2, 44100, 176400, 5, 16, 0}, ZR_E_UNSUPPORTED_MEDIA},
      {"block align that only wraps right", {1, 32769, 44100, 0, 2, 16, 0}, ZR_E_UNSUPPORTED_MEDIA},
      {"extra bytes", {3, 2, 44100, 352800, 8, 32, 22}, ZR_E_UNSUPPORTED_MEDIA},
      {"float with any block align", {3, 2, 44100, 0, 5, 20, 0}, S_OK},
      {"12-bit PCM in one byte", {1, 1, 44100, 44100, 1, 12, 0}, S_OK},
  };
  const Image old = Image().Fill(200, 7);
  const DiskFile file;
  for (const Row& row : rows) {
    file.Write(old);
    EXPECT_EQ(ZrInitializeWav(file.Path(), &row.format, ZRWAVEFILE_ALWAYS), row.result) << row.name;
    if (FAILED(row.result)) {
      EXPECT_EQ(file.Bytes(), old.Bytes()) << row.name;
    }
    file.Write(old);
    EXPECT_EQ(ZrInitializeWav64WithJunk(file.Path(), &row.format, ZRWAVEFILE_ALWAYS, 4096), row.result) << row.name;
    const MemoryFile open(old);
    EXPECT_EQ(ZrInsertWavHeader(open, &row.format, 0, 46), row.result) << row.name;
    EXPECT_EQ(ZrInsertW64Header(open, &row.format, 0, 47), FAILED(row.result) ? row.result : ZR_E_BAD_STREAM)
        << row.name << ": the format comes first";
  }
  const auto* none = static_cast<const WAVEFORMATEX*>(nullptr);
  const auto* noneZr = static_cast<const _zrwaveformat*>(nullptr);
  EXPECT_EQ(ZrInitializeWav(file.Path(), none, 2), E_INVALIDARG);
  EXPECT_EQ(ZrInitializeWav64(file.Path(), noneZr, 2), E_INVALIDARG);
  EXPECT_EQ(ZrInitializeWavWithJunk(file.Path(), noneZr, 2, 100), E_INVALIDARG);
  const MemoryFile open(old);
  EXPECT_EQ(ZrInsertWavHeader(open, none, 0, 46), E_INVALIDARG);
  EXPECT_EQ(ZrInsertW64Header(open, noneZr, 0, 112), E_INVALIDARG);
  EXPECT_EQ(ZrInsertWavHeader(nullptr, &kCd, 0, 46), ZR_E_FILE_READ);
}

TEST(InsertHeader, WritesTheFrontAndNothingBehindIt) {
  struct Row {
    size_t fileBytes;
    uint32_t headerSize;
    HRESULT result;
  };
  const Row wav[] = {{300, 46, S_OK},
                     {300, 54, S_OK},
                     {300, 200, S_OK},
                     {46, 46, S_OK},
                     {46, 54, S_OK},
                     {45, 46, ZR_E_BAD_STREAM},
                     {300, 44, ZR_E_BAD_STREAM},
                     {300, 47, ZR_E_BAD_STREAM},
                     {300, 48, ZR_E_BAD_STREAM},
                     {300, 52, ZR_E_BAD_STREAM},
                     {300, 55, ZR_E_BAD_STREAM},
                     {300, 0, ZR_E_BAD_STREAM}};
  for (const Row& row : wav) {
    const Image old = Image().Fill(row.fileBytes, 7);
    const MemoryFile file(old);
    file.MoveTo(33);
    EXPECT_EQ(ZrInsertWavHeader(file, &kCd, 1000, row.headerSize), row.result) << row.headerSize;
    EXPECT_EQ(file.Position(), 33u);
    Image expected = old;
    if (SUCCEEDED(row.result)) {
      expected = WavFront(row.headerSize, 1000);
      if (row.fileBytes > row.headerSize) expected.Fill(row.fileBytes - row.headerSize, 7);
    }
    EXPECT_EQ(file.Bytes(), expected.Bytes()) << row.headerSize;
  }
  const Row w64[] = {{300, 112, S_OK},
                     {300, 136, S_OK},
                     {300, 200, S_OK},
                     {112, 112, S_OK},
                     {111, 112, ZR_E_BAD_STREAM},
                     {300, 104, ZR_E_BAD_STREAM},
                     {300, 113, ZR_E_BAD_STREAM},
                     {300, 120, ZR_E_BAD_STREAM},
                     {300, 128, ZR_E_BAD_STREAM},
                     {300, 140, ZR_E_BAD_STREAM}};
  for (const Row& row : w64) {
    const Image old = Image().Fill(row.fileBytes, 7);
    const MemoryFile file(old);
    file.MoveTo(33);
    EXPECT_EQ(ZrInsertW64Header(file, &kCd, 0x200000000, row.headerSize), row.result) << row.headerSize;
    EXPECT_EQ(file.Position(), 33u);
    Image expected = old;
    if (SUCCEEDED(row.result)) {
      expected = W64Front(row.headerSize, 0x200000000).Fill(row.fileBytes - row.headerSize, 7);
    }
    EXPECT_EQ(file.Bytes(), expected.Bytes()) << row.headerSize;
  }
}

TEST(InsertHeader, LeavesAFileOpenedForReadingAlone) {
  const Image old = Image().Fill(300, 7);
  const DiskFile disk(old);
  plat::File* file = disk.Open(plat::kReadAccess);
  EXPECT_EQ(ZrInsertWavHeader(file, &kCd, 0, 46), ZR_E_FILE_WRITE);
  EXPECT_EQ(ZrInsertW64Header(file, &kCd, 0, 112), ZR_E_FILE_WRITE);
  EXPECT_EQ(ZrFixTrashedWav(file, nullptr, 300), ZR_E_FILE_WRITE);
  plat::CloseFile(file);
  EXPECT_EQ(disk.Bytes(), old.Bytes());
}

}  // namespace
