// SPDX-License-Identifier: Apache-2.0
// RIFF in memory: the cursor and its ends, where it differs from the file family, wave headers and info strings.
#include "marlo110k/mriff.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "media/testing/image.h"
#include "platform/base/memory.h"
#include "testing/random.h"

using namespace media_testing;

namespace {

/// A cursor over a block of its own, with room behind the data.
class Cursor {
 public:
  explicit Cursor(const Image& image, uint32_t room = 0) : block_(image.Bytes()) {
    block_.resize(image.Size() + room, 0xEE);
    EXPECT_EQ(
        mriff_Init(&cursor_, block_.data(), static_cast<uint32_t>(image.Size()), static_cast<uint32_t>(block_.size())),
        S_OK);
  }
  _tMRIFF* operator&() { return &cursor_; }
  uint32_t Position() const { return static_cast<uint32_t>(cursor_.current - cursor_.base); }
  uint32_t DataBytes() const { return static_cast<uint32_t>(cursor_.dataEnd - cursor_.base); }
  std::vector<uint8_t> Data() const { return {cursor_.base, cursor_.dataEnd}; }

 private:
  std::vector<uint8_t> block_;
  _tMRIFF cursor_ = {};
};

TEST(MriffInit, ChecksWhatItIsGiven) {
  uint8_t block[8];
  _tMRIFF cursor;
  EXPECT_EQ(mriff_Init(nullptr, block, 1, 8), E_POINTER);
  EXPECT_EQ(mriff_Init(&cursor, block, 9, 8), E_INVALIDARG);
  EXPECT_EQ(mriff_Init(&cursor, nullptr, 0, 8), E_INVALIDARG);
  EXPECT_EQ(mriff_Init(&cursor, nullptr, 0, 0), S_OK);
  EXPECT_EQ(mriff_Init(&cursor, block, 3, 8), S_OK);
  EXPECT_EQ(mriff_GetFilePointer(&cursor), block);
  EXPECT_EQ(cursor.dataEnd, block + 3);
  EXPECT_EQ(cursor.capacityEnd, block + 8);
  EXPECT_EQ(cursor.dataSize, 3u);
  EXPECT_EQ(cursor.capacity, 8u);
}

TEST(MriffSeek, IsHeldToTheData) {
  struct Row {
    int64_t offset;
    uint32_t method;
    uint32_t expected;
  };
  const Row rows[] = {{0, 0, 0}, {6, 0, 6},  {7, 0, 6},           {-1, 0, 0},        {0, 1, 4},        {1, 1, 5},
                      {3, 1, 6}, {-4, 1, 0}, {-5, 1, 0},          {0, 2, 6},         {-6, 2, 0},       {-7, 2, 0},
                      {1, 2, 6}, {5, 3, 4},  {-1, 0xFFFFFFFF, 4}, {INT64_MAX, 1, 6}, {INT64_MIN, 2, 0}};
  for (const Row& row : rows) {
    Cursor cursor(Image().Ramp(6), 4);
    EXPECT_EQ(mriff_ZrSetFilePointer(&cursor, 4, 0), 4u);
    EXPECT_EQ(mriff_ZrSetFilePointer(&cursor, row.offset, row.method), row.expected);
    EXPECT_EQ(cursor.Position(), row.expected);
    mriff_ZrSetFilePointer(&cursor, 4, 0);
    int32_t high = 5;
    EXPECT_EQ(mriff_SetFilePointer(&cursor, row.offset, &high, row.method), row.expected);
    EXPECT_EQ(high, 5);
  }
}

TEST(MriffReadAndWrite, StopAtTheirEnds) {
  Cursor cursor(Image().Ramp(6), 4);
  uint8_t buffer[8] = {};
  uint32_t count = 77;
  mriff_ZrSetFilePointer(&cursor, 3, 0);
  EXPECT_EQ(mriff_ReadFile(&cursor, buffer, 4, &count), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(std::memcmp(buffer, "\4\5\6\0", 4), 0);
  EXPECT_EQ(mriff_ReadFile(&cursor, buffer, 0, &count), 1);
  EXPECT_EQ(mriff_ReadFile(&cursor, buffer, 1, nullptr), 0);

  mriff_ZrSetFilePointer(&cursor, 3, 0);
  EXPECT_EQ(mriff_ReadData(&cursor, buffer, 4), ZR_E_FILE_READ);
  EXPECT_EQ(cursor.Position(), 6u);

  EXPECT_EQ(mriff_WriteFile(&cursor, "abcdef", 3, &count), 1);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(cursor.DataBytes(), 9u) << "the data grew";
  EXPECT_EQ(mriff_WriteFile(&cursor, "xyz", 3, &count), 1);
  EXPECT_EQ(count, 1u) << "the only sign";
  EXPECT_EQ(mriff_WriteFile(&cursor, "q", 1, nullptr), 1);
  EXPECT_EQ(cursor.Data(), Image().Ramp(6).Text("abcx").Bytes());
  EXPECT_EQ(mriff_WriteChunkHeader(&cursor, 1, 2), ZR_E_FILE_WRITE);
  mriff_ZrSetFilePointer(&cursor, 0, 0);
  EXPECT_EQ(mriff_WriteFile(&cursor, "zz", 2, nullptr), 1);
  EXPECT_EQ(cursor.DataBytes(), 10u) << "writing inside the data doesn't move its end";
}

TEST(MriffUpdateDataSize, IsHeldToTheBlock) {
  Cursor cursor(Image().Ramp(6), 4);
  EXPECT_EQ(mriff_UpdateDataSize(&cursor, 3), 3u);
  EXPECT_EQ(mriff_UpdateDataSize(&cursor, 0xFFFFFFFF), 1u);
  EXPECT_EQ(mriff_UpdateDataSize(&cursor, 1), 0u);
  EXPECT_EQ(cursor.DataBytes(), 10u);
}

TEST(MriffReadFileId, ComparesTheIdBeforeItMissesTheRest) {
  struct Row {
    Image image;
    HRESULT result;
  };
  const Row rows[] = {{Image(), ZR_E_NO_RIFF_HEADER},
                      {Image().Text("RIF"), ZR_E_NO_RIFF_HEADER},
                      {Image().Text("RIFF"), ZR_E_FILE_READ},
                      {Image().Text("RIFX").Fill(3), ZR_E_FILE_READ},
                      {Image().Text("RIFX").Fill(8), ZR_E_NO_RIFF_HEADER},
                      {Image().Text("RIFF").U32(9).Text("WAV"), ZR_E_FILE_READ},
                      {Image().Text("RIFF").U32(9).Text("WAVE"), S_OK}};
  for (const Row& row : rows) {
    Cursor cursor(row.image);
    uint32_t size = 77;
    EXPECT_EQ(mriff_ReadFileID(&cursor, &size, nullptr), row.result) << row.image.Size();
    EXPECT_EQ(size, SUCCEEDED(row.result) ? 5u : 0u) << row.image.Size();
  }
}

TEST(MriffFindInRiff, StartsAtTheCursorAndNeedsTwelveBytes) {
  const Image riff = Image().Text("RIFF").U32(4 + 12 + 8).Text("TEST").Chunk("aaaa", Image().Ramp(3)).Chunk("bbbb", {});
  Cursor cursor(Image().Fill(5).Add(riff));
  uint32_t size = 77;
  uint32_t bound = 32;
  EXPECT_EQ(mriff_FindChunkHeaderInRIFF(&cursor, ZrChunkId("aaaa"), &size, &bound), ZR_E_NO_RIFF_HEADER);
  mriff_ZrSetFilePointer(&cursor, 5, 0);
  EXPECT_EQ(mriff_FindChunkHeaderInRIFF(&cursor, ZrChunkId("aaaa"), &size, &bound), S_OK);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(bound, 12u);
  EXPECT_EQ(cursor.Position(), 25u);

  size = 77;
  bound = 11;
  mriff_ZrSetFilePointer(&cursor, 5, 0);
  EXPECT_EQ(mriff_FindChunkHeaderInRIFF(&cursor, ZrChunkId("aaaa"), &size, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 11u);
  EXPECT_EQ(cursor.Position(), 5u);
  bound = 12 + 12 + 7;
  EXPECT_EQ(mriff_FindChunkHeaderInRIFF(&cursor, ZrChunkId("bbbb"), &size, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(bound, 7u);
  EXPECT_EQ(size, 77u);
  mriff_ZrSetFilePointer(&cursor, 5, 0);
  EXPECT_EQ(mriff_FindChunkHeaderInRIFF(&cursor, ZrChunkId("bbbb"), &size, nullptr), S_OK);
}

TEST(MriffInfoString, PutsTheCursorBack) {
  Image list;
  list.Text("INFO").Chunk("INAM", Image().Text("title").Fill(1)).Chunk("IART", Image().Text("me").Fill(1));
  Cursor cursor(Image().Chunk("JUNK", Image().Ramp(4)).Chunk("LIST", list).Chunk("ICMT", Image().Text("out")));
  char buffer[8];
  std::memset(buffer, '#', sizeof buffer);
  uint32_t bound = 1000;
  EXPECT_EQ(mriff_GetInfoString(&cursor, ZrChunkId("IART"), buffer, 8, &bound), S_OK);
  EXPECT_EQ(std::memcmp(buffer, "me\0#", 4), 0);
  EXPECT_EQ(cursor.Position(), 0u);
  EXPECT_EQ(mriff_GetInfoString(&cursor, ZrChunkId("INAM"), buffer, 3, nullptr), S_OK);
  EXPECT_EQ(std::memcmp(buffer, "tit#", 4), 0);
  EXPECT_EQ(mriff_GetInfoString(&cursor, ZrChunkId("ICMT"), buffer, 8, nullptr), ZR_E_NOT_FOUND) << "not in the list";
  EXPECT_EQ(cursor.Position(), 0u);
  bound = 12;
  EXPECT_EQ(mriff_GetInfoString(&cursor, ZrChunkId("INAM"), buffer, 8, &bound), ZR_E_NOT_FOUND);
  EXPECT_EQ(cursor.Position(), 0u);
}

TEST(MriffWaveHeader, RebuildsPcmAndTrustsTheRest) {
  // Derived fields that are wrong on purpose.
  const WAVEFORMATEX pcm = {WAVE_FORMAT_PCM, 2, 48000, 1, 1, 24, 99};
  Cursor cursor(Image(), 64);
  EXPECT_EQ(mriff_WriteWaveHeader(&cursor, &pcm, 7, 12), S_OK);
  Image expected;
  expected.Text("RIFF").U32(16 + 7 + 12 + 20 + 1).Text("WAVE").Text("fmt ").U32(16);
  expected.U16(1).U16(2).U32(48000).U32(288000).U16(6).U16(24).Text("data").U32(7);
  EXPECT_EQ(cursor.Data(), expected.Bytes());
  EXPECT_EQ(cursor.Position(), 44u);

  const WAVEFORMATEX other = {0x55, 2, 48000, 16000, 1152, 0, 12};
  Cursor second(Image(), 46);
  EXPECT_EQ(mriff_WriteWaveHeader(&second, &other, 8, 0), S_OK);
  expected = Image().Text("RIFF").U32(18 + 8 + 20).Text("WAVE").Text("fmt ").U32(18);
  expected.U16(0x55).U16(2).U32(48000).U32(16000).U16(1152).U16(0).U16(12).Text("data").U32(8);
  EXPECT_EQ(second.Data(), expected.Bytes());

  for (uint32_t room = 0; room < 46; ++room) {
    Cursor small(Image(), room);
    EXPECT_EQ(mriff_WriteWaveHeader(&small, &other, 8, 0), ZR_E_FILE_WRITE) << room;
  }
  _zrwaveformat format = {};
  format.Init(48000, ZRSAMPLETYPE_FLOAT32, 1, 0, sizeof format);
  Cursor third(Image(), 46);
  EXPECT_EQ(mriff_WriteWaveHeader(&third, &format, 8, 0), S_OK);
  expected = Image().Text("RIFF").U32(46).Text("WAVE").Text("fmt ").U32(18).Format(3, 1, 48000, 32);
  EXPECT_EQ(third.Data(), expected.Text("data").U32(8).Bytes());
}

TEST(MriffGetWfx, ReadsItInEitherOrder) {
  const Image fmt = Image().Chunk("fmt ", Image().Format(1, 2, 44100, 16));
  const Image data = Image().Chunk("data", Image().Ramp(32));
  for (const bool dataFirst : {false, true}) {
    Image image;
    image.Text("RIFF").U32(static_cast<uint32_t>(4 + fmt.Size() + data.Size())).Text("WAVE");
    image.Add(dataFirst ? data : fmt).Add(dataFirst ? fmt : data);
    WAVEFORMATEX wfx;
    uint32_t dataBytes = 0;
    EXPECT_EQ(mriff_GetWfx(&wfx, image.Data(), static_cast<uint32_t>(image.Size()), &dataBytes), S_OK);
    EXPECT_EQ(std::memcmp(&wfx, Image().Format(1, 2, 44100, 16).Data(), 18), 0);
    EXPECT_EQ(dataBytes, 32u);
    _zrwaveformat format;
    EXPECT_EQ(mriff_GetWfx(&format, image.Data(), static_cast<uint32_t>(image.Size()), nullptr), S_OK);
    EXPECT_EQ(format.sampleType, ZRSAMPLETYPE_PCM16);
    EXPECT_EQ(format.channels, 2);
  }
}

TEST(MriffGetWfx, FailsInOrder) {
  const Image body = Image().Format(0xFFFE, 2, 44100, 16, 22);
  const auto image = [](const char* form, uint32_t size, const Image& chunks) {
    return Image().Text("RIFF").U32(size).Text(form).Add(chunks);
  };
  const Image good = Image().Chunk("fmt ", body).Chunk("data", Image().Fill(40));
  struct Row {
    const char* name;
    Image image;
    HRESULT result;
  };
  const Row rows[] = {
      {"no RIFF", Image().Text("RIFX").Fill(20), ZR_E_NO_RIFF_HEADER},
      {"other form", image("AVI ", 78, good), E_FAIL},
      {"RIFF of 15 bytes", image("WAVE", 15, good), ZR_E_NOT_FOUND},
      {"no fmt", image("WAVE", 60, Image().Chunk("data", Image().Fill(48))), ZR_E_NOT_FOUND},
      {"no data", image("WAVE", 60, Image().Chunk("fmt ", body).Chunk("JUNK", Image().Fill(22))), ZR_E_NOT_FOUND},
      // Twelve bytes more are taken off than the header has.
      {"11 bytes of data", image("WAVE", 4 + 26 + 8 + 11, Image().Chunk("fmt ", body).Chunk("data", Image().Fill(11))),
       ZR_E_NOT_FOUND},
      {"12 bytes of data", image("WAVE", 4 + 26 + 8 + 12, Image().Chunk("fmt ", body).Chunk("data", Image().Fill(12))),
       S_OK},
      {"fmt cut off", image("WAVE", 99, Image().Chunk("data", Image().Fill(4)).Text("fmt ").U32(18).Fill(17)),
       ZR_E_FILE_READ},
      {"good", image("WAVE", 78, good), S_OK},
  };
  for (const Row& row : rows) {
    WAVEFORMATEX wfx = {9, 9, 9, 9, 9, 9, 9};
    uint32_t dataBytes = 77;
    EXPECT_EQ(mriff_GetWfx(&wfx, row.image.Data(), static_cast<uint32_t>(row.image.Size()), &dataBytes), row.result)
        << row.name;
    EXPECT_EQ(+wfx.nChannels, SUCCEEDED(row.result) ? 2 : 9) << row.name;
    EXPECT_EQ(dataBytes == 77, FAILED(row.result)) << row.name;
  }
  // Extra bytes that the header form lost aren't read from behind it, and a short body is cleared.
  _zrwaveformat format;
  EXPECT_EQ(mriff_GetWfx(&format, rows[8].image.Data(), static_cast<uint32_t>(rows[8].image.Size()), nullptr), S_OK);
  const Image tiny = image("WAVE", 4 + 10 + 48, Image().Chunk("fmt ", Image().U16(1)).Chunk("data", Image().Fill(40)));
  WAVEFORMATEX wfx = {9, 9, 9, 9, 9, 9, 9};
  EXPECT_EQ(mriff_GetWfx(&wfx, tiny.Data(), static_cast<uint32_t>(tiny.Size()), nullptr), S_OK);
  EXPECT_EQ(+wfx.wFormatTag, 1);
  EXPECT_EQ(+wfx.nChannels, 0);
  EXPECT_EQ(mriff_GetWfx(static_cast<WAVEFORMATEX*>(nullptr), tiny.Data(), 10, nullptr), E_INVALIDARG);
  EXPECT_EQ(mriff_GetWfx(&wfx, nullptr, 10, nullptr), E_INVALIDARG);
  EXPECT_EQ(mriff_GetWfx(&wfx, nullptr, 0, nullptr), ZR_E_NO_RIFF_HEADER);
}

TEST(MriffCalls, RefuseANullCursor) {
  uint32_t word = 0;
  uint8_t buffer[4];
  tZRCHUNKDATA chunk = {};
  EXPECT_EQ(mriff_GetFilePointer(nullptr), nullptr);
  EXPECT_EQ(mriff_ZrSetFilePointer(nullptr, 0, 0), 0u);
  EXPECT_EQ(mriff_ReadFile(nullptr, buffer, 1, &word), 0);
  EXPECT_EQ(mriff_WriteFile(nullptr, buffer, 1, &word), 0);
  EXPECT_EQ(mriff_UpdateDataSize(nullptr, 1), 0u);
  EXPECT_EQ(mriff_SkipChunk(nullptr, 3), 4u);
  const HRESULT results[] = {mriff_ReadChunkHeader(nullptr, &word, &word),
                             mriff_ReadListHeader(nullptr, &word, &word),
                             mriff_ReadFileID(nullptr, &word, &word),
                             mriff_WriteChunkHeader(nullptr, 1, 1),
                             mriff_WriteListHeader(nullptr, 1, 1),
                             mriff_WriteFileID(nullptr, 1, 1),
                             mriff_ReadData(nullptr, buffer, 1),
                             mriff_ReadDataBounded(nullptr, buffer, 1, 1),
                             mriff_ReadDataAlloc(nullptr, &chunk),
                             mriff_SaveLocation(nullptr, &word),
                             mriff_RestoreLocation(nullptr, 1),
                             mriff_SeekDataStart(nullptr),
                             mriff_FindChunkHeader(nullptr, 1, &word, &word),
                             mriff_FindChunkHeaderInRIFF(nullptr, 1, &word, &word),
                             mriff_FindListChunk(nullptr, 1, &word, &word),
                             mriff_FindListChunkFromStart(nullptr, 1, &word),
                             mriff_GetNumListEntries(nullptr, &word, &word),
                             mriff_GetInfoString(nullptr, 1, buffer, 1, &word)};
  for (size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], E_INVALIDARG) << i;
}

/// Runs the same calls over a file and a block of the same bytes. Truncated everywhere and damaged, both must agree.
TEST(Mriff, AgreesWithTheFileFamilyOnDamagedImages) {
  testing_support::Random random(33);
  SCOPED_TRACE(random.Label());
  Image list;
  list.Text("INFO").Chunk("INAM", Image().Text("abc")).Chunk("IART", Image().Text("de"));
  Image chunks;
  chunks.Chunk("fmt ", Image().Format(1, 1, 8000, 8)).Chunk("LIST", list).Chunk("data", Image().Ramp(9));
  Image whole;
  whole.Text("RIFF").U32(static_cast<uint32_t>(chunks.Size() + 4)).Text("WAVE").Add(chunks);
  for (size_t round = 0; round < whole.Size() * 4; ++round) {
    Image image;
    image.Raw(whole.Data(), round % (whole.Size() + 1));
    for (auto damage = random.Between(0, 3); damage > 0 && image.Size() > 0; --damage) {
      const uint8_t values[] = {0, 1, 0x7F, 0x80, 0xFF, static_cast<uint8_t>(random.Bits())};
      image[static_cast<size_t>(random.Between(0, static_cast<int64_t>(image.Size()) - 1))] =
          values[random.Between(0, 5)];
    }
    const MemoryFile file(image);
    Cursor cursor(image);
    const auto samePlace = [&] {
      // The memory family holds skips to the data, the file family leaves the position behind the end.
      EXPECT_EQ(std::min<uint64_t>(file.Position(), image.Size()), cursor.Position());
    };
    uint32_t left = 0, right = 0, leftSize = 0, rightSize = 0;
    if (image.Size() >= 4) {
      EXPECT_EQ(riff_ReadFileID(file, &left, &leftSize), mriff_ReadFileID(&cursor, &right, &rightSize));
    }
    EXPECT_EQ(left, right);
    samePlace();
    for (const char* id : {"LIST", "data", "none"}) {
      uint32_t value = 0;
      std::memcpy(&value, id, 4);
      uint32_t leftBound = left, rightBound = left;
      file.MoveTo(12);
      mriff_SeekDataStart(&cursor);
      samePlace();
      EXPECT_EQ(riff_FindChunkHeader(file, value, &leftSize, &leftBound),
                mriff_FindChunkHeader(&cursor, value, &rightSize, &rightBound));
      EXPECT_EQ(leftBound, rightBound);
      EXPECT_EQ(leftSize, rightSize);
      samePlace();
      uint8_t leftData[16] = {}, rightData[16] = {};
      EXPECT_EQ(riff_ReadDataBounded(file, leftData, 16, leftSize),
                mriff_ReadDataBounded(&cursor, rightData, 16, rightSize));
      EXPECT_EQ(std::memcmp(leftData, rightData, 16), 0);
      samePlace();
    }
    EXPECT_EQ(riff_SeekDataStart(file), mriff_SeekDataStart(&cursor));
    EXPECT_EQ(riff_GetNumListEntries(file, &leftSize, nullptr), mriff_GetNumListEntries(&cursor, &rightSize, nullptr));
    EXPECT_EQ(leftSize, rightSize);
    if (image.Size() >= 4) {
      EXPECT_EQ(riff_FindListChunkFromStart(file, ZrChunkId("INFO"), &leftSize),
                mriff_FindListChunkFromStart(&cursor, ZrChunkId("INFO"), &rightSize));
      EXPECT_EQ(leftSize, rightSize);
      samePlace();
    }
  }
}

}  // namespace
